#include "tela/core/Memory.h"

#include "tela/platform/iMemoryService.h"
#include "tela/platform/OS.h"

void* Qv::allocate(std::size_t bytes)
{
    return OS()->memory()->allocate(bytes);
}

void Qv::release(void* block)
{
    if (block)
        OS()->memory()->release(block);
}

void* Qv::HeapObject::operator new(std::size_t bytes)
{
    void* block = Qv::allocate(bytes);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void* Qv::HeapObject::operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return Qv::allocate(bytes);
}

void Qv::HeapObject::operator delete(void* block) noexcept
{
    Qv::release(block);
}

void Qv::HeapObject::operator delete(void* block, const std::nothrow_t&) noexcept
{
    Qv::release(block);
}
