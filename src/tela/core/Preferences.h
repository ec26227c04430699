#pragma once
// EditorPreferences: the user's choices that the library keeps between runs
// (the window colour, the default font, window placement), as text values in
// preferences.json beside config.json.
//
// - The file is read on first use and again when the settings directory
//   changes; a bad file is set aside as config.json is (SettingsFile.h).
// - Every change is written at once, atomically: a crash mid-write leaves the
//   old file. A write that fails is reported; the value still holds for this
//   run.
// - A file that is there but could not be read (or a bad one that could not
//   be set aside) is never written: changes then hold for this run only, and
//   the one report is the loader's.
// - Main thread only, like the rest of the user interface state.

#include "tela/core/Json.h"
#include "tela/core/LightweightString.h"

class EditorPreferences {
public:
    // The text stored under `key`, or `fallback` when there is none or the
    // stored value is not text.
    String getPreference(const char* key, const String& fallback = String());
    // Stores `value` under `key` and writes the file; false when the file was
    // not written (the value still holds for this run).
    bool setPreference(const char* key, const String& value);

private:
    void load_if_needed();

    bool m_loaded = false;
    bool m_writable = true; // false: the file there must be left alone
    String m_directory;   // where m_values came from
    JSON::Value m_values;
};

EditorPreferences& prefs();
