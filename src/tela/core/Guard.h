#pragma once
// Qv::Guard: a counted token whose last release ends something, typically a
// listener's registration. Identified: anything carrying an IdStamp.

#include "tela/core/IdStamp.h"
#include "tela/core/RefCount.h"

namespace Qv {

class Guard : public virtual iObject {
public:
    ~Guard() override = default;
};

class Identified {
public:
    Identified() : m_stamp(IdStamp::fresh()) {}
    const IdStamp& stamp() const { return m_stamp; }

private:
    IdStamp m_stamp;
};

} // namespace Qv
