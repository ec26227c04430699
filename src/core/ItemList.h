#pragma once
// ItemList: an ordered set of items with the lock that guards it. The set is
// plain: whoever reads or changes `members` holds `lock` for the whole use.

#include "core/CriticalSection.h"
#include "core/Memory.h"

template <typename T>
struct ItemList {
    CriticalSection lock;
    Qv::Set<T> members;
};
