#include "tela/core/Config.h"

#include "tela/core/Json.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/SettingsFile.h"

#include <cmath>
#include <mutex>

namespace {

struct ConfigurationFile {
    std::mutex mutex;
    bool loaded = false;
    unsigned generation = 0;
    String directoryOverride;
    JSON::Value values;
};

ConfigurationFile& configuration()
{
    // Never destroyed: lookups may come from other statics' destructors.
    static Qv::NeverDestroyed<ConfigurationFile> instance;
    return *instance;
}

String directory_of(const ConfigurationFile& file)
{
    return file.directoryOverride.empty() ? Qv::defaultSettingsDirectory() : file.directoryOverride;
}

// Called with the mutex held.
void load(ConfigurationFile& file)
{
    file.loaded = true;
    String path = directory_of(file);
    path += std::string_view("/config.json");
    // The library never writes this file, so one it could not read needs no guarding.
    file.values = Qv::loadSettingsObject(path, "Configuration file").values;
}

// Calls read(element) with the value stored under `key` in config.json (an
// element that does not exist when there is none), under the lock.
template <typename Read>
auto with_configuration_value(const char* key, Read&& read)
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    if (!file.loaded)
        load(file);
    return read(key ? JSON::Element(&file.values)[key] : JSON::Element());
}

// The same over the user's preferences.json, read now.
template <typename Read>
auto with_preferences_value(const char* key, Read&& read)
{
    String path = Qv::configurationDirectory();
    path += std::string_view("/preferences.json");
    const Qv::SettingsObject preferences = Qv::loadSettingsObject(path, "Preferences file");
    return read(key ? JSON::Element(&preferences.values)[key] : JSON::Element());
}

// The number stored under `key`, if there is one.
bool lookup(const char* key, double& out)
{
    return with_configuration_value(key, [&](const JSON::Element& value) {
        if (!value.isNumber())
            return false;
        out = value.getDouble();
        return std::isfinite(out);
    });
}

// The text stored under `key`, if there is some.
bool lookup(const char* key, String& out)
{
    return with_configuration_value(key, [&](const JSON::Element& value) {
        if (!value.isString())
            return false;
        out = value.getString();
        return true;
    });
}

bool read_bool(const JSON::Element& value, bool defaultValue)
{
    if (value.isBool())
        return value.getBool(defaultValue);
    if (value.isNumber())
        return value.getDouble() != 0.0;
    return defaultValue;
}

Qv::Vector<String> read_multiple(const JSON::Element& value)
{
    Qv::Vector<String> values;
    if (value.isString())
        values.push_back(value.getString());
    for (std::size_t index = 0; index < (value.isArray() ? value.size() : 0); ++index) {
        if (value[index].isString())
            values.push_back(value[index].getString());
    }
    return values;
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

String config_string(const char* key, const String& defaultValue)
{
    String value;
    return lookup(key, value) ? value : defaultValue;
}

String RegistryConfig::getValue(const char* key, const String& defaultValue) const
{
    const auto read = [&](const JSON::Element& value) { return value.getString(defaultValue); };
    if (m_source == Source::Configuration)
        return with_configuration_value(key, read);
    return with_preferences_value(key, read);
}

bool RegistryConfig::getBool(const char* key, bool defaultValue) const
{
    const auto read = [&](const JSON::Element& value) { return read_bool(value, defaultValue); };
    if (m_source == Source::Configuration)
        return with_configuration_value(key, read);
    return with_preferences_value(key, read);
}

Qv::Vector<String> RegistryConfig::getMultipleValues(const char* key) const
{
    if (m_source == Source::Configuration)
        return with_configuration_value(key, read_multiple);
    return with_preferences_value(key, read_multiple);
}

RegistryConfig& GlobalConfig()
{
    static RegistryConfig registry(RegistryConfig::Source::Configuration);
    return registry;
}

RegistryConfig& UserConfig()
{
    static RegistryConfig registry(RegistryConfig::Source::UserPreferences);
    return registry;
}

void Qv::reloadConfigurationFrom(std::string_view directory)
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    file.directoryOverride = String(directory.data(), directory.size());
    file.loaded = false;
    ++file.generation;
}

unsigned Qv::configurationGeneration()
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    return file.generation;
}

String Qv::configurationDirectory()
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    return directory_of(file);
}

void Qv::settingsDirectoryMoved()
{
    ConfigurationFile& file = configuration();
    std::lock_guard lock(file.mutex);
    if (!file.directoryOverride.empty() || !file.loaded)
        return;
    file.loaded = false;
    ++file.generation;
}
