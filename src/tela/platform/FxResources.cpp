#include "tela/platform/FxResources.h"

#include "tela/platform/OS.h"
#include "tela/platform/iImagingService.h"

Qv::FxResources::Manager& Qv::FxResources::Manager::instance()
{
    // Never destroyed: a frame may still be drawn while statics go away.
    alignas(Manager) static unsigned char storage[sizeof(Manager)];
    static Manager* manager = ::new (storage) Manager();
    return *manager;
}

Qv::Ptr<iShaderEffect> Qv::FxResources::Manager::findShader(const String& name)
{
    return OS()->imaging()->findShader(name);
}
