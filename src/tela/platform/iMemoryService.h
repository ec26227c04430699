// iMemoryService: the one heap of the library. Every block it hands out goes back
// through release(), never through any other heap.
#pragma once

#include <cstddef>

class iMemoryService {
public:
    virtual void reserved0() {}
    virtual void* allocate(std::size_t bytes) = 0;   // null when out of memory
    virtual void reserved2() {}
    virtual void release(void* block) = 0;           // null is ignored
protected:
    ~iMemoryService() = default;
};
