#include "headless/HeadlessAtomics.h"

#include <atomic>

std::int32_t Headless::Atomics::atomicIncrement(std::int32_t* value)
{
    return std::atomic_ref<std::int32_t>(*value).fetch_add(1) + 1;
}

std::int32_t Headless::Atomics::atomicDecrement(std::int32_t* value)
{
    return std::atomic_ref<std::int32_t>(*value).fetch_sub(1) - 1;
}

void* Headless::Atomics::atomicCompareExchangePointer(void** destination, void* newValue, void* expected)
{
    std::atomic_ref<void*>(*destination).compare_exchange_strong(expected, newValue);
    return expected;   // on failure compare_exchange wrote the value it found here
}
