#pragma once
// ItemList: an ordered set of pointers with the lock that guards it. The set is
// plain: whoever reads or changes `members` holds `lock` for the whole use.
// Lookups are the common use (every checked send asks whether its target is
// still alive), so the set keeps its pointers in sorted runs rather than in
// the nodes of a tree.

#include "tela/core/CriticalSection.h"
#include "tela/core/SortedPointerSet.h"

template <typename T>
struct ItemList {
    CriticalSection lock;
    SortedPointerSet<T> members;
};
