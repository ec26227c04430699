#pragma once
// MemoryBlock: one block from the memory seam, released with its owner. A
// request of 0 bytes still gets a block, so the pointer is null only when
// memory ran out.

#include "tela/core/Memory.h"

#include <cstddef>
#include <cstdint>

namespace Headless {

class MemoryBlock {
public:
    explicit MemoryBlock(std::size_t bytes) : m_bytes(static_cast<std::uint8_t*>(Qv::allocate(bytes ? bytes : 4))) {}
    ~MemoryBlock() { Qv::release(m_bytes); }
    MemoryBlock(const MemoryBlock&) = delete;
    MemoryBlock& operator=(const MemoryBlock&) = delete;

    std::uint8_t* get() const { return m_bytes; }

private:
    std::uint8_t* m_bytes;
};

} // namespace Headless
