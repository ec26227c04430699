#pragma once
// The JSON files that hold settings (config.json, preferences.json) are read
// the same way:
// - a missing file is an empty object, silently;
// - a file that is not a JSON object, or is nested deeper than JSON::MAX_DEPTH,
//   is reported once (by name and error, never its contents), treated as
//   empty, and renamed aside to <name>.corrupt (or .corrupt.1, .corrupt.2, ...
//   when an earlier one is there);
// - a file that is there but cannot be read, or a bad one that cannot be
//   renamed aside, is reported once, treated as empty, and must not be
//   written: `writable` says so. The user's text is never written over.

#include "tela/core/Json.h"
#include "tela/core/LightweightString.h"

namespace Qv {

struct SettingsObject {
    JSON::Value values = JSON::Value::object(); // always an object
    bool writable = true; // false: something the user may need is still at the path
};

// `what` names the file in messages, e.g. "Configuration file".
SettingsObject loadSettingsObject(const String& path, const char* what);

// Where settings files live: $XDG_CONFIG_HOME/<application name>, else
// $HOME/.config/<application name>, else ./<application name>.
String defaultSettingsDirectory();

// The application name settings are kept under. Qv::Application's constructor
// sets it; until then, or when it is empty, the file-system service's name is
// used, and "Tela" when that is empty too. A '/' in the name becomes '_', so
// the directory is always one level below the configuration home.
// Configuration already read from the old place is read again from the new.
void setApplicationName(const WString& name);
// The name the application gave, null when none was given yet: what a
// platform reports as the application's name.
WString givenApplicationName();

} // namespace Qv
