#include "tela/platform/FxResources.h"

#include "tela/core/NeverDestroyed.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/OS.h"

Qv::FxResources::Manager& Qv::FxResources::Manager::instance()
{
    // Never destroyed: a frame may still be drawn while statics go away.
    static Qv::NeverDestroyed<Manager> manager;
    return *manager;
}

Qv::Ptr<iShaderEffect> Qv::FxResources::Manager::findShader(const String& name)
{
    return OS()->imaging()->findShader(name);
}
