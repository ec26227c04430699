#pragma once
// Qv::FxResources::Manager: finds the pixel programs by name, and owns the
// lock that keeps shader work, a whole composited frame included, on one
// thread at a time.

#include "core/CriticalSection.h"
#include "core/LightweightString.h"
#include "core/Ptr.h"
#include "platform/iShaderEffect.h"

namespace Qv::FxResources {

class Manager {
public:
    static Manager& instance();

    // Null when the platform has no program of that name.
    Qv::Ptr<iShaderEffect> findShader(const String& name);
    CriticalSection& frameLock() { return m_frame_lock; }

private:
    CriticalSection m_frame_lock;
};

} // namespace Qv::FxResources
