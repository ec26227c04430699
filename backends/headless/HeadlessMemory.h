// HeadlessMemory: the heap over malloc, counting live blocks and bytes so that tests can
// see that everything the library allocated went back.
#pragma once

#include "tela/platform/iMemoryService.h"

#include <atomic>
#include <cstdint>

namespace Headless {

class Memory final : public iMemoryService {
public:
    void* allocate(std::size_t bytes) override;
    void release(void* block) override;

    std::int64_t liveBlocks() const { return m_live_blocks.load(std::memory_order_relaxed); }
    std::int64_t liveBytes() const { return m_live_bytes.load(std::memory_order_relaxed); }

private:
    std::atomic<std::int64_t> m_live_blocks { 0 };
    std::atomic<std::int64_t> m_live_bytes { 0 };
};

} // namespace Headless
