#pragma once
// Qv::NamedObjectsNamespace: process-wide objects found by name, so that every
// module loaded into the process shares one instance (an allocation pool, a
// flag). Objects are made on first request and live until the process ends.

#include <cstddef>

namespace Qv {

class NamedObjectsNamespace {
public:
    // The process-wide namespace.
    static NamedObjectsNamespace& global();

    // The block named `name`, `size` bytes zero-filled when first asked for.
    // Every later request with the same name returns the same block.
    void* findOrCreate(const char* name, std::size_t size);

    template <typename T>
    T* object(const char* name)
    {
        return static_cast<T*>(findOrCreate(name, sizeof(T)));
    }
};

} // namespace Qv
