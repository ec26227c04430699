#include "tela/app/Diagnostics.h"

#include <atomic>

namespace {
std::atomic<int> debug_level { 0 };
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
