// The pool behind Event's operator new and delete.
//
// Free records sit on a stack threaded through Event::link. Pushes are
// lock-free compare-and-swaps. Pops are serialised by the low bit of the head
// word, which records are aligned enough never to use: with two concurrent
// pops a record could be popped, pushed back and popped again between another
// pop's read of the head and its swap (the ABA problem), and the swap would
// then install a link that is no longer free. With one pop at a time the head
// can only change by pushes, which the swap notices. Keeping that bit in the
// head itself, rather than in a flag beside it, lets the pop that clears it
// also take the record: a pop costs a read, a swap that sets the bit, one that
// takes the record and clears it, and the count.
//
// Each operation asks OS() for the atomics service once and keeps it for its
// own length only.
//
// The stack and the fill flag are named objects of the process, so every
// module that links the library shares one pool.

#include "tela/events/Event.h"

#include "tela/core/Memory.h"
#include "tela/core/NamedObjects.h"
#include "tela/platform/iAtomicsService.h"
#include "tela/platform/OS.h"

#include <cstdint>
#include <cstdio>
#include <new>
#include <thread>
#include <typeinfo>

namespace {

constexpr int PREALLOCATED = 40;
constexpr std::uintptr_t POPPING = 1; // low bit of the head: a pop is under way

static_assert(alignof(Event) > POPPING, "the head's low bit must be free in record addresses");

struct FreeStack {
    void* head;             // Event*, with POPPING while a pop is under way
    std::int32_t freeCount;
    std::int32_t recordCount; // every record the pool has made
};

struct Pool {
    FreeStack* stack;
    void** filled;
};

Pool& pool()
{
    static Pool shared = [] {
        const char* type_name = typeid(Event).name();
        char flag_name[512];
        std::snprintf(flag_name, sizeof flag_name, "PreallocDone_%s", type_name);
        Qv::NamedObjectsNamespace& names = Qv::NamedObjectsNamespace::global();
        return Pool{names.object<FreeStack>(type_name), names.object<void*>(flag_name)};
    }();
    return shared;
}

std::uintptr_t bits(void* head)
{
    return reinterpret_cast<std::uintptr_t>(head);
}

Event* record_of(void* head)
{
    return reinterpret_cast<Event*>(bits(head) & ~POPPING);
}

void* with_bit(void* head, std::uintptr_t bit)
{
    return reinterpret_cast<void*>(bits(head) | bit);
}

void* load_pointer(iAtomicsService& atomics, void** slot)
{
    // A swap that never succeeds is an atomic read.
    return atomics.atomicCompareExchangePointer(slot, nullptr, nullptr);
}

void push(iAtomicsService& atomics, FreeStack& stack, Event* record)
{
    void* head = load_pointer(atomics, &stack.head);
    for (;;) {
        // A pop under way keeps its bit: the record goes under it.
        record->link = record_of(head);
        void* found = atomics.atomicCompareExchangePointer(&stack.head, with_bit(record, bits(head) & POPPING), head);
        if (found == head)
            break;
        head = found;
    }
    atomics.atomicIncrement(&stack.freeCount);
}

Event* pop(iAtomicsService& atomics, FreeStack& stack)
{
    void* head = load_pointer(atomics, &stack.head);
    for (;;) {
        if (!head)
            return nullptr; // empty, and no pop under way could make it otherwise
        if (bits(head) & POPPING) {
            std::this_thread::yield();
            head = load_pointer(atomics, &stack.head);
            continue;
        }
        void* found = atomics.atomicCompareExchangePointer(&stack.head, with_bit(head, POPPING), head);
        if (found == head)
            break;
        head = found;
    }
    // Ours to pop: the head changes now only by pushes, which leave records on
    // top of it (never an empty stack) and keep the bit. Take whatever is on
    // top; its link is stable, since only a pop could take it.
    void* locked = with_bit(head, POPPING);
    for (;;) {
        Event* record = record_of(locked);
        void* found = atomics.atomicCompareExchangePointer(&stack.head, record->link, locked);
        if (found == locked) {
            atomics.atomicDecrement(&stack.freeCount);
            return record;
        }
        locked = found;
    }
}

void* new_record(iAtomicsService& atomics, FreeStack& stack)
{
    void* block = Qv::allocate(sizeof(Event));
    if (block)
        atomics.atomicIncrement(&stack.recordCount);
    return block;
}

// Only the first module to allocate fills the pool. The flag is never
// cleared, so a module that has seen it set needs never look again.
bool fill_unless_filled(iAtomicsService& atomics, const Pool& shared)
{
    static int s_filled_token;
    if (load_pointer(atomics, shared.filled) == nullptr &&
        atomics.atomicCompareExchangePointer(shared.filled, &s_filled_token, nullptr) == nullptr) {
        for (int i = 0; i < PREALLOCATED; ++i)
            if (void* block = new_record(atomics, *shared.stack))
                push(atomics, *shared.stack, static_cast<Event*>(block));
    }
    return true;
}

} // namespace

void* Event::operator new(std::size_t size)
{
    if (size != sizeof(Event)) {
        void* block = Qv::allocate(size);
        if (!block)
            throw std::bad_alloc();
        return block;
    }
    Pool& shared = pool();
    iAtomicsService& atomics = *OS()->atomics();
    static const bool s_filled = fill_unless_filled(atomics, shared);
    (void)s_filled;
    if (Event* record = pop(atomics, *shared.stack))
        return record;
    void* block = new_record(atomics, *shared.stack); // the pool grows without limit
    if (!block)
        throw std::bad_alloc();
    return block;
}

void Event::operator delete(void* block, std::size_t size) noexcept
{
    if (!block)
        return;
    if (size != sizeof(Event)) {
        Qv::release(block);
        return;
    }
    push(*OS()->atomics(), *pool().stack, static_cast<Event*>(block));
}

std::size_t Event::poolRecordCount()
{
    return static_cast<std::size_t>(pool().stack->recordCount);
}

std::size_t Event::poolFreeCount()
{
    return static_cast<std::size_t>(pool().stack->freeCount);
}
