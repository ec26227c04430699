#pragma once
// Configuration: integer and real settings with defaults, read from
// config.json in the settings directory (see SettingsFile.h for where that is
// and what happens to a file that is not a JSON object). The file is read
// once, on the first lookup from any thread, under a lock; the library never
// writes it.

#include <climits>
#include <string_view>

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"

// The number stored under `key`, truncated towards zero, or `defaultValue`
// when it is missing or not a number. A stored value outside
// [minValue, maxValue] is clamped into it; the default is returned as given.
// Bounds the wrong way round are reported and give the default.
int config_int(const char* key, int defaultValue, int minValue = INT_MIN, int maxValue = INT_MAX);
// The number stored under `key`, or `defaultValue`.
double config_double(const char* key, double defaultValue);
// The text stored under `key`, or `defaultValue` when it is missing or not text.
String config_string(const char* key, const String& defaultValue);

// The settings seen as a registry of named values, the form the library's
// older modules read them in. Two registries: GlobalConfig() over
// config.json, and UserConfig() over the user's preferences.json, which is
// read afresh at each call (its values are few and rarely read, and
// EditorPreferences may have written it since). Keys are member names taken
// as they stand: "Configuration\FrequentlyUsedBitmaps" is one name, written
// with a doubled backslash in the JSON file.
class RegistryConfig {
public:
    enum class Source { Configuration, UserPreferences };
    explicit RegistryConfig(Source source = Source::Configuration) : m_source(source) {}

    // The text under `key`, or `defaultValue` when it is missing or not text.
    String getValue(const char* key, const String& defaultValue) const;
    // true or false, or a number (non-zero is true); otherwise `defaultValue`.
    bool getBool(const char* key, bool defaultValue) const;
    // The texts of a multi-value key: an array of strings (items that are not
    // text are skipped), or a single string as one value. Empty when missing.
    Qv::Vector<String> getMultipleValues(const char* key) const;

private:
    Source m_source;
};
RegistryConfig& GlobalConfig();
RegistryConfig& UserConfig();

namespace Qv {
// Test hook: forgets what was read, so the next lookup reads
// `directory`/config.json (an empty directory: the usual place again).
void reloadConfigurationFrom(std::string_view directory);
// Where the configuration file is looked for.
String configurationDirectory();
// Goes up each time the configuration is read afresh, so that values a module
// reads once can be read again after a test reloads.
unsigned configurationGeneration();
// The default settings directory may have moved (the application's name was
// given): configuration read from there is read again at the next lookup.
void settingsDirectoryMoved();
} // namespace Qv
