#include "tela/app/Diagnostics.h"

#include "tela/core/Log.h"

#include <atomic>

namespace {
std::atomic<int> debug_level { 0 };
}

namespace {

// True when the text asks for no argument: its only conversions are "%%".
bool needs_no_arguments(const char* format)
{
    for (const char* c = format; *c; ++c)
        if (*c == '%' && *++c != '%')
            return false;
    return true;
}

} // namespace

void tela_splat(const char* message)
{
    if (!message)
        return;
    if (!needs_no_arguments(message)) {
        // There are no arguments to give: formatting would read past them.
        murl_printf("%s", message);
        return;
    }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    murl_printf(message);
#pragma GCC diagnostic pop
}

void tela_set_debug(int level)
{
    debug_level.store(level, std::memory_order_relaxed);
}

int tela_debug_level()
{
    return debug_level.load(std::memory_order_relaxed);
}

const char* telaDllVersionStr()
{
    return "Tela 0.1.0";
}
