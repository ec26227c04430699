#pragma once
// Configuration: integer and real settings with defaults, read from
// $XDG_CONFIG_HOME/<application name>/config.json (or ~/.config/...). The file
// is read once, on the first lookup. A corrupt file is reported once, treated
// as empty and set aside as config.json.corrupt, never overwritten.

#include <climits>
#include <string>

// The value of `key`, or `defaultValue` when it is missing or not a number;
// a value outside [minValue, maxValue] is clamped into it.
int config_int(const char* key, int defaultValue, int minValue = INT_MIN, int maxValue = INT_MAX);
double config_double(const char* key, double defaultValue);

namespace Qv {
// Forgets what was read, so the next lookup reads `directory`/config.json
// (empty: the usual place again). For tests.
void reloadConfigurationFrom(const std::string& directory);
// Where the configuration file is looked for.
std::string configurationDirectory();
} // namespace Qv
