#include "tela/core/Ptr.h"

#include "tela/platform/iAtomicsService.h"
#include "tela/platform/OS.h"

std::int32_t Qv::atomicIncrement(std::int32_t* counter)
{
    return OS()->atomics()->atomicIncrement(counter);
}

std::int32_t Qv::atomicDecrement(std::int32_t* counter)
{
    return OS()->atomics()->atomicDecrement(counter);
}
