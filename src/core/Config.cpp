#include "core/Config.h"

#include "core/AtomicFile.h"
#include "core/Json.h"
#include "core/Log.h"
#include "platform/OS.h"
#include "platform/iFileSystemService.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace {

constexpr int MAX_CORRUPT_COPIES = 100;

struct ConfigurationFile {
    std::mutex mutex;
    bool loaded = false;
    String directoryOverride;
    JSON::Value values;
};

ConfigurationFile& configuration()
{
    // Never destroyed: lookups may come from other statics' destructors.
    alignas(ConfigurationFile) static unsigned char storage[sizeof(ConfigurationFile)];
    static ConfigurationFile* instance = ::new (storage) ConfigurationFile();
    return *instance;
}

String default_directory()
{
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    const String name = toUTF8(OS()->fileSystem()->applicationName());
    const char* application = name.empty() ? "Tela" : name.c_str();
    char path[4096];
    if (xdg && *xdg)
        std::snprintf(path, sizeof path, "%s/%s", xdg, application);
    else if (home && *home)
        std::snprintf(path, sizeof path, "%s/.config/%s", home, application);
    else
        std::snprintf(path, sizeof path, "./%s", application);
    return String(path);
}

String directory_of(const ConfigurationFile& file)
{
    return file.directoryOverride.empty() ? default_directory() : file.directoryOverride;
}

// The first of config.json.corrupt, .corrupt.1, ... that is free; a null
// string when all are taken.
String free_corrupt_name(const String& path)
{
    for (int copy = 0; copy < MAX_CORRUPT_COPIES; ++copy) {
        char suffix[32];
        if (copy == 0)
            std::snprintf(suffix, sizeof suffix, ".corrupt");
        else
            std::snprintf(suffix, sizeof suffix, ".corrupt.%d", copy);
        String candidate(path);
        candidate += std::string_view(suffix);
        if (::access(candidate.c_str(), F_OK) != 0)
            return candidate;
    }
    return String();
}

// Moves a bad file out of the way so the next run starts clean, without ever
// replacing an earlier bad copy.
void set_aside(const String& path, const String& error)
{
    const String aside = free_corrupt_name(path);
    if (!aside.isNull() && std::rename(path.c_str(), aside.c_str()) == 0) {
        murl_printf("Configuration file %s is not a JSON object (%s); using defaults, the file is kept as %s\n",
                    path.c_str(), error.c_str(), aside.c_str());
        return;
    }
    murl_printf("Configuration file %s is not a JSON object (%s); using defaults\n", path.c_str(), error.c_str());
}

// Called with the mutex held.
void load(ConfigurationFile& file)
{
    file.loaded = true;
    file.values = JSON::Value::object();
    String path = directory_of(file);
    path += std::string_view("/config.json");
    String text;
    errno = 0;
    if (!Qv::readFile(path.view(), text)) {
        if (errno != ENOENT)
            murl_printf("Configuration file %s cannot be read: using defaults\n", path.c_str());
        return;
    }
    JSON::ParseResult parsed = JSON::parse(text.view());
    if (!parsed.ok() || !parsed.value.is_object()) {
        set_aside(path, parsed.ok() ? String("not an object") : parsed.error);
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
    const JSON::Element value = JSON::Element(&file.values)[key];
    if (!value.isNumber())
        return false;
    out = value.getDouble();
    return std::isfinite(out);
}

} // namespace

int config_int(const char* key, int defaultValue, int minValue, int maxValue)
{
    if (minValue > maxValue) {
        murl_printf("config_int: bounds of %s are the wrong way round\n", key ? key : "(null)");
        return defaultValue;
    }
    double value;
    if (!lookup(key, value))
        return defaultValue;
    // Compare as doubles: converting an out-of-range double to int is undefined.
    if (value <= minValue)
        return minValue;
    if (value >= maxValue)
        return maxValue;
    return static_cast<int>(value);
}

double config_double(const char* key, double defaultValue)
{
    double value;
    return lookup(key, value) ? value : defaultValue;
}

void Qv::reloadConfigurationFrom(std::string_view directory)
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    file.directoryOverride = String(directory.data(), directory.size());
    file.loaded = false;
}

String Qv::configurationDirectory()
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    return directory_of(file);
}
