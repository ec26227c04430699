// RefCount.h: the bases of every counted object.
//
// An object held by Qv::Ptr derives from iObject, which derives virtually from
// Qv::InternalRefCount (the 32-bit counter) and iVirtual (the virtual destructor).
// Objects start at zero and are counted only by Qv::Ptr.
#pragma once

#include "tela/core/Memory.h"

#include <cstdint>

class iVirtual {
public:
    virtual ~iVirtual() = default;
};

namespace Qv {

class InternalRefCount : public HeapObject {
public:
    InternalRefCount() = default;
    // A copy is a new object: it starts uncounted.
    InternalRefCount(const InternalRefCount&) : m_refCount(0) {}
    InternalRefCount& operator=(const InternalRefCount&) { return *this; }
    virtual ~InternalRefCount() = default;

    std::int32_t* refCountKey() { return &m_refCount; }
    std::int32_t refCount() const { return m_refCount; }

private:
    std::int32_t m_refCount = 0;
};

} // namespace Qv

class iObject : public virtual Qv::InternalRefCount, public virtual iVirtual {
public:
    ~iObject() override = default;
};
