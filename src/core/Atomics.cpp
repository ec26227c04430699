#include "core/Ptr.h"

#include "platform/OS.h"
#include "platform/iAtomicsService.h"

std::int32_t Qv::atomicIncrement(std::int32_t* counter)
{
    return OS()->atomics()->atomicIncrement(counter);
}

std::int32_t Qv::atomicDecrement(std::int32_t* counter)
{
    return OS()->atomics()->atomicDecrement(counter);
}
