// HeadlessAtomics: the atomic operations over std::atomic_ref, each sequentially consistent.
#pragma once

#include "tela/platform/iAtomicsService.h"

namespace Headless {

class Atomics final : public iAtomicsService {
public:
    std::int32_t atomicIncrement(std::int32_t* value) override;
    std::int32_t atomicDecrement(std::int32_t* value) override;
    void* atomicCompareExchangePointer(void** destination, void* newValue, void* expected) override;
};

} // namespace Headless
