#include "core/Config.h"

#include "core/AtomicFile.h"
#include "core/Json.h"
#include "core/LightweightString.h"
#include "core/Log.h"
#include "platform/OS.h"
#include "platform/iFileSystemService.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {

struct ConfigurationFile {
    std::mutex mutex;
    bool loaded = false;
    std::string directoryOverride;
    JSON::Value values;
};

ConfigurationFile& configuration()
{
    // Never destroyed: lookups may come from other statics' destructors.
    alignas(ConfigurationFile) static unsigned char storage[sizeof(ConfigurationFile)];
    static ConfigurationFile* instance = ::new (storage) ConfigurationFile();
    return *instance;
}

std::string default_directory()
{
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const String name = toUTF8(OS()->fileSystem()->applicationName());
    const char* application = name.empty() ? "Tela" : name.c_str();
    // One formatted write: GCC 12 misreads chains of string appends at -O3.
    char path[4096];
    if (xdg && *xdg)
        std::snprintf(path, sizeof path, "%s/%s", xdg, application);
    else if (home && *home)
        std::snprintf(path, sizeof path, "%s/.config/%s", home, application);
    else
        std::snprintf(path, sizeof path, "./%s", application);
    return std::string(path);
}

// Called with the mutex held.
void load(ConfigurationFile& file)
{
    file.loaded = true;
    file.values = JSON::Value::object();
    const std::string directory = file.directoryOverride.empty() ? default_directory() : file.directoryOverride;
    std::string path = directory;
    path.append("/config.json");
    std::string text;
    if (!Qv::readFile(path, text))
        return; // no file: every setting takes its default
    JSON::ParseResult parsed = JSON::parse(text);
    if (!parsed.ok() || !parsed.value.is_object()) {
        // Keep the user's file for them to mend; never write over it.
        std::string aside = path;
        aside.append(".corrupt");
        const bool moved = std::rename(path.c_str(), aside.c_str()) == 0;
        murl_printf("Configuration file %s is not a JSON object; using defaults%s%s\n", path.c_str(),
                    moved ? ", the file is kept as " : "", moved ? aside.c_str() : "");
        return;
    }
    file.values = std::move(parsed.value);
}

// The number stored under `key`, if there is one.
bool lookup(const char* key, double& out)
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    if (!file.loaded)
        load(file);
    if (!key)
        return false;
    const auto found = file.values.find(key);
    if (found == file.values.end() || !found->is_number())
        return false;
    out = found->get<double>();
    return std::isfinite(out);
}

} // namespace

int config_int(const char* key, int defaultValue, int minValue, int maxValue)
{
    double value;
    if (!lookup(key, value))
        return defaultValue;
    if (value < minValue)
        return minValue;
    if (value > maxValue)
        return maxValue;
    return static_cast<int>(value);
}

double config_double(const char* key, double defaultValue)
{
    double value;
    return lookup(key, value) ? value : defaultValue;
}

void Qv::reloadConfigurationFrom(const std::string& directory)
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    file.directoryOverride = directory;
    file.loaded = false;
}

std::string Qv::configurationDirectory()
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    return file.directoryOverride.empty() ? default_directory() : file.directoryOverride;
}
