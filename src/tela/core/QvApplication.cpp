#include "tela/core/QvApplication.h"

#include "tela/core/SettingsFile.h"

Qv::Application::Application(const WString& name, const WString& version) : m_name(name), m_version(version)
{
    // Each program keeps its settings apart from every other's.
    setApplicationName(name);
}

WString Qv::Application::getUserDataPath() const
{
    return fromUTF8(defaultSettingsDirectory());
}

WString Qv::Application::getLogsPath() const
{
    return fromUTF8(defaultSettingsDirectory() + String("/logs"));
}

void Qv::Application::atShutdown(Shutdown::Callback callback, int priority)
{
    Shutdown::addCallback(callback, priority);
}

void Qv::Application::shutdown()
{
    Shutdown::runCallbacks(Shutdown::eNormalExit);
}
