// LiveBlocks: the headless heap's count of live blocks, for leak checks around a scope.
#pragma once

#include "headless/HeadlessServices.h"

inline std::int64_t live_blocks()
{
    return Headless::services().memory()->liveBlocks();
}
