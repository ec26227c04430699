#include "tela/core/Preferences.h"

#include "tela/core/AtomicFile.h"
#include "tela/core/Config.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/SettingsFile.h"

#include <string>
#include <sys/stat.h>

namespace {

String preferences_path(const String& directory)
{
    String path(directory);
    path += std::string_view("/preferences.json");
    return path;
}

// The settings directory may not exist on a first run. Failures are left to
// show in the write that follows.
void make_directories(const String& directory)
{
    std::string path(directory.c_str());
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), 0755);
    ::mkdir(path.c_str(), 0755);
}

} // namespace

void EditorPreferences::load_if_needed()
{
    // Tests point the settings at a directory of their own; follow them.
    const String directory = Qv::configurationDirectory();
    if (m_loaded && directory == m_directory)
        return;
    m_loaded = true;
    m_directory = directory;
    Qv::SettingsObject loaded = Qv::loadSettingsObject(preferences_path(directory), "Preferences file");
    m_values = std::move(loaded.values);
    m_writable = loaded.writable;
}

String EditorPreferences::getPreference(const char* key, const String& fallback)
{
    if (!key)
        return fallback;
    load_if_needed();
    return JSON::Element(&m_values)[key].getString(fallback);
}

bool EditorPreferences::setPreference(const char* key, const String& value)
{
    if (!key)
        return false;
    load_if_needed();
    m_values[key] = value.c_str();
    // The file there could not be taken in; the loader has said so, and
    // writing would replace what the user has with only this run's changes.
    if (!m_writable)
        return false;
    make_directories(m_directory);
    const String path = preferences_path(m_directory);
    const String text = JSON::pretty(m_values);
    std::string error;
    if (!Qv::writeFileAtomically(path.view(), text.view(), &error)) {
        murl_printf("Preferences file %s cannot be written (%s); the change holds until the application ends\n",
                    path.c_str(), error.c_str());
        return false;
    }
    return true;
}

EditorPreferences& prefs()
{
    // Never destroyed: shut-down code may still read preferences.
    static Qv::NeverDestroyed<EditorPreferences> instance;
    return *instance;
}
