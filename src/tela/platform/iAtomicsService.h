// iAtomicsService: the only atomic operations the library uses. Each is a full barrier.
#pragma once

#include <cstdint>

class iAtomicsService {
public:
    virtual void reserved0() {}
    virtual void reserved1() {}
    virtual std::int32_t atomicIncrement(std::int32_t* value) = 0;   // returns the new value
    virtual void reserved3() {}
    virtual std::int32_t atomicDecrement(std::int32_t* value) = 0;   // returns the new value
    virtual void reserved5() {}
    virtual void reserved6() {}
    virtual void reserved7() {}
    virtual void reserved8() {}
    // Stores newValue when *destination equals expected; returns what was found.
    virtual void* atomicCompareExchangePointer(void** destination, void* newValue, void* expected) = 0;
protected:
    ~iAtomicsService() = default;
};
