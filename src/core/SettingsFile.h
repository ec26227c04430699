#pragma once
// The JSON files that hold settings (config.json, preferences.json) are read
// the same way: a missing file is an empty object, silently; a file that is
// not a JSON object is reported once, treated as empty, and renamed aside to
// <name>.corrupt (or .corrupt.1, .corrupt.2, ... when an earlier one is
// there), so the user's text is never written over.

#include "core/Json.h"
#include "core/LightweightString.h"

namespace Qv {

// `what` names the file in messages, e.g. "Configuration file".
JSON::Value loadSettingsObject(const String& path, const char* what);

// Where settings files live: $XDG_CONFIG_HOME/<application name>, else
// $HOME/.config/<application name>, else ./<application name>. The
// application name comes from the file-system service, "Tela" when it has none.
String defaultSettingsDirectory();

} // namespace Qv
