#include "headless/HeadlessMemory.h"

#include <cstdlib>
#include <cstring>

namespace {
// Each block carries its size in a header as wide as max_align_t, so that the block
// handed out keeps malloc's alignment.
constexpr std::size_t HEADER_BYTES = alignof(std::max_align_t);
static_assert(HEADER_BYTES >= sizeof(std::size_t));
}

void* Headless::Memory::allocate(std::size_t bytes)
{
    if (bytes > SIZE_MAX - HEADER_BYTES)
        return nullptr;
    auto* raw = static_cast<unsigned char*>(std::malloc(bytes + HEADER_BYTES));
    if (!raw)
        return nullptr;
    std::memcpy(raw, &bytes, sizeof bytes);
    m_live_blocks.fetch_add(1, std::memory_order_relaxed);
    m_live_bytes.fetch_add(static_cast<std::int64_t>(bytes), std::memory_order_relaxed);
    return raw + HEADER_BYTES;
}

void Headless::Memory::release(void* block)
{
    if (!block)
        return;
    auto* raw = static_cast<unsigned char*>(block) - HEADER_BYTES;
    std::size_t bytes = 0;
    std::memcpy(&bytes, raw, sizeof bytes);
    m_live_blocks.fetch_sub(1, std::memory_order_relaxed);
    m_live_bytes.fetch_sub(static_cast<std::int64_t>(bytes), std::memory_order_relaxed);
    std::free(raw);
}
