#pragma once
// Qv::Application: what every program has, whatever its user interface: a
// name, a version, where its data and logs go, and the shut-down callbacks.

#include "tela/core/LightweightString.h"
#include "tela/core/Shutdown.h"

namespace Qv {

class Application {
public:
    // `name` also names the settings directory (SettingsFile.h).
    Application(const WString& name, const WString& version);
    virtual ~Application() = default;
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    virtual WString getVersion() const { return m_version; }
    // The settings directory, and "logs" inside it.
    virtual WString getLogsPath() const;
    virtual WString getUserDataPath() const;
    const WString& name() const { return m_name; }

    // Runs at shut-down, highest priority first.
    static void atShutdown(Shutdown::Callback callback, int priority);
    // Runs the shut-down callbacks for a normal exit.
    virtual void shutdown();

private:
    WString m_name;
    WString m_version;
};

} // namespace Qv
