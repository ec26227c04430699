#pragma once
// Configuration: integer and real settings with defaults, read from
// $XDG_CONFIG_HOME/<application name>/config.json (else $HOME/.config/...,
// else ./<application name>); the application name comes from the file-system
// service, "Tela" when it has none.
//
// - The file is read once, on the first lookup from any thread, under a lock.
// - A missing file means every setting takes its default, silently.
// - A file that is not a JSON object is reported once, treated as empty and
//   renamed aside to config.json.corrupt (or .corrupt.1, .corrupt.2, ... when
//   an earlier one is there): the user's text is never written over.

#include <climits>
#include <string_view>

#include "core/LightweightString.h"

// The number stored under `key`, truncated towards zero, or `defaultValue`
// when it is missing or not a number. A stored value outside
// [minValue, maxValue] is clamped into it; the default is returned as given.
// Bounds the wrong way round are reported and give the default.
int config_int(const char* key, int defaultValue, int minValue = INT_MIN, int maxValue = INT_MAX);
// The number stored under `key`, or `defaultValue`.
double config_double(const char* key, double defaultValue);

namespace Qv {
// Test hook: forgets what was read, so the next lookup reads
// `directory`/config.json (an empty directory: the usual place again).
void reloadConfigurationFrom(std::string_view directory);
// Where the configuration file is looked for.
String configurationDirectory();
} // namespace Qv
