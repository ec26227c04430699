// The pool behind Event's operator new and delete.
//
// Free records sit on a stack threaded through Event::link. Pushes are
// lock-free compare-and-swaps. Pops are serialised by a small spin flag: with
// two concurrent pops a record could be popped, pushed back and popped again
// between another pop's read of the head and its swap (the ABA problem), and
// the swap would then install a link that is no longer free. With one pop at
// a time the head can only change by pushes, which the swap notices.
//
// The stack and the fill flag are named objects of the process, so every
// module that links the library shares one pool.

#include "tela/events/Event.h"

#include "tela/core/Memory.h"
#include "tela/core/NamedObjects.h"
#include "tela/platform/OS.h"
#include "tela/platform/iAtomicsService.h"

#include <cstdio>
#include <new>
#include <thread>
#include <typeinfo>

namespace {

constexpr int kPreallocated = 40;

struct FreeStack {
    void* head;             // Event*
    std::int32_t freeCount;
    std::int32_t recordCount; // every record the pool has made
    void* popping;          // non-null while a pop is under way
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

void* load_pointer(void** slot)
{
    // A swap that never succeeds is an atomic read.
    return OS()->atomics()->atomicCompareExchangePointer(slot, nullptr, nullptr);
}

void push(FreeStack& stack, Event* record)
{
    iAtomicsService* atomics = OS()->atomics();
    void* head = load_pointer(&stack.head);
    for (;;) {
        record->link = static_cast<Event*>(head);
        void* found = atomics->atomicCompareExchangePointer(&stack.head, record, head);
        if (found == head)
            break;
        head = found;
    }
    atomics->atomicIncrement(&stack.freeCount);
}

Event* pop(FreeStack& stack)
{
    iAtomicsService* atomics = OS()->atomics();
    static int s_token;
    while (atomics->atomicCompareExchangePointer(&stack.popping, &s_token, nullptr) != nullptr)
        std::this_thread::yield();
    Event* record = nullptr;
    void* head = load_pointer(&stack.head);
    while (head) {
        Event* candidate = static_cast<Event*>(head);
        void* found = atomics->atomicCompareExchangePointer(&stack.head, candidate->link, head);
        if (found == head) {
            record = candidate;
            atomics->atomicDecrement(&stack.freeCount);
            break;
        }
        head = found;
    }
    atomics->atomicCompareExchangePointer(&stack.popping, nullptr, &s_token);
    return record;
}

void* new_record(FreeStack& stack)
{
    void* block = Qv::allocate(sizeof(Event));
    if (block)
        OS()->atomics()->atomicIncrement(&stack.recordCount);
    return block;
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
    iAtomicsService* atomics = OS()->atomics();
    // Only the first module to allocate fills the pool.
    static int s_filled_token;
    if (load_pointer(shared.filled) == nullptr &&
        atomics->atomicCompareExchangePointer(shared.filled, &s_filled_token, nullptr) == nullptr) {
        for (int i = 0; i < kPreallocated; ++i)
            if (void* block = new_record(*shared.stack))
                push(*shared.stack, static_cast<Event*>(block));
    }
    if (Event* record = pop(*shared.stack))
        return record;
    void* block = new_record(*shared.stack); // the pool grows without limit
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
    push(*pool().stack, static_cast<Event*>(block));
}

std::size_t Event::poolRecordCount()
{
    return static_cast<std::size_t>(pool().stack->recordCount);
}

std::size_t Event::poolFreeCount()
{
    return static_cast<std::size_t>(pool().stack->freeCount);
}
