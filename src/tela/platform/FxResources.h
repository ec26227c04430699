#pragma once
// Qv::FxResources::Manager: finds the pixel programs by name, and owns the
// lock that keeps shader work, a whole composited frame included, on one
// thread at a time.

#include "tela/core/CriticalSection.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/iShaderEffect.h"

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
