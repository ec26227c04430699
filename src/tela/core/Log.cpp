#include "tela/core/Log.h"

#include "tela/core/Memory.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace {
std::mutex sink_mutex;
Qv::LogSinkRecord current_sink;
std::atomic<bool> synchronous_logging { false };
}

void murl_vprintf(const char* format, va_list arguments)
{
    char small[512];
    va_list copy;
    va_copy(copy, arguments);
    const int needed = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (needed < 0)
        return;

    const char* text = small;
    char* large = nullptr;
    if (static_cast<size_t>(needed) >= sizeof small) {
        // Long reports are rare; they are written once through a temporary block.
        large = static_cast<char*>(Qv::allocate(static_cast<size_t>(needed) + 1));
        if (!large)
            return;
        std::vsnprintf(large, static_cast<size_t>(needed) + 1, format, arguments);
        text = large;
    }

    {
        std::lock_guard lock(sink_mutex);
        if (current_sink.sink)
            current_sink.sink(text, current_sink.context);
        else
            std::fputs(text, stderr);
        if (synchronous_logging.load(std::memory_order_relaxed))
            std::fflush(stderr);
    }
    Qv::release(large);
}

void murl_printf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    murl_vprintf(format, arguments);
    va_end(arguments);
}

void LogBoth(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    murl_vprintf(format, arguments);
    va_end(arguments);
}

Qv::LogSinkRecord Qv::setLogSink(LogSinkRecord record)
{
    std::lock_guard lock(sink_mutex);
    const LogSinkRecord previous = current_sink;
    current_sink = record;
    return previous;
}

void setSynchronousLogging(bool synchronous)
{
    {
        // Whatever was written before the change reaches its file first.
        std::lock_guard lock(sink_mutex);
        std::fflush(stderr);
    }
    synchronous_logging.store(synchronous, std::memory_order_relaxed);
}

bool synchronousLogging()
{
    return synchronous_logging.load(std::memory_order_relaxed);
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

void zeb_splat(const char* text)
{
    if (text)
        murl_printf("%s\n", text);
}
