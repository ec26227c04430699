#include "tela/core/SettingsFile.h"

#include "tela/core/AtomicFile.h"
#include "tela/core/Config.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/OS.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace {

constexpr int MAX_CORRUPT_COPIES = 100;

struct ApplicationName {
    std::mutex mutex;
    WString name; // null until an application gives one
};

ApplicationName& application_name()
{
    // Never destroyed: settings may be looked up from other statics' destructors.
    static Qv::NeverDestroyed<ApplicationName> instance;
    return *instance;
}

// One directory level, whatever the name holds: no separators, and not "."
// or "..", which would name the configuration home or its parent.
String directory_name_for(const WString& wide)
{
    String name = toUTF8(wide);
    if (name.empty())
        return String("Tela");
    std::string cleaned(name.view());
    for (char& c : cleaned)
        if (c == '/')
            c = '_';
    if (cleaned.find_first_not_of('.') == std::string::npos)
        return String("Tela");
    return String(cleaned.data(), cleaned.size());
}

// The first of <path>.corrupt, .corrupt.1, ... that is free; a null string
// when all are taken.
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
// replacing an earlier bad copy. False when it is still at `path`.
bool set_aside(const String& path, const String& error, const char* what)
{
    const String aside = free_corrupt_name(path);
    if (!aside.isNull() && std::rename(path.c_str(), aside.c_str()) == 0) {
        murl_printf("%s %s is not a JSON object (%s); using defaults, the file is kept as %s\n", what, path.c_str(),
                    error.c_str(), aside.c_str());
        return true;
    }
    murl_printf("%s %s is not a JSON object (%s) and cannot be set aside; using defaults, and the file is left as "
                "it is\n",
                what, path.c_str(), error.c_str());
    return false;
}

} // namespace

Qv::SettingsObject Qv::loadSettingsObject(const String& path, const char* what)
{
    SettingsObject result;
    String text;
    errno = 0;
    if (!Qv::readFile(path.view(), text)) {
        const int error = errno;
        // Nothing there: a first run. Anything else is the user's file that
        // we failed to take in, and writing over it would lose it.
        if (error == ENOENT || error == ENOTDIR)
            return result;
        murl_printf("%s %s cannot be read (%s); using defaults, and the file is left as it is\n", what, path.c_str(),
                    error ? std::strerror(error) : "read error");
        result.writable = false;
        return result;
    }
    JSON::ParseResult parsed = JSON::parse(text.view());
    if (!parsed.ok() || !parsed.value.is_object()) {
        result.writable = set_aside(path, parsed.ok() ? String("not an object") : parsed.error, what);
        return result;
    }
    result.values = std::move(parsed.value);
    return result;
}

String Qv::defaultSettingsDirectory()
{
    WString name;
    {
        ApplicationName& stored = application_name();
        std::lock_guard lock(stored.mutex);
        name = stored.name;
    }
    if (name.empty())
        name = OS()->fileSystem()->applicationName();
    const String application = directory_name_for(name);
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    char path[4096];
    if (xdg && *xdg)
        std::snprintf(path, sizeof path, "%s/%s", xdg, application.c_str());
    else if (home && *home)
        std::snprintf(path, sizeof path, "%s/.config/%s", home, application.c_str());
    else
        std::snprintf(path, sizeof path, "./%s", application.c_str());
    return String(path);
}

WString Qv::givenApplicationName()
{
    ApplicationName& stored = application_name();
    std::lock_guard lock(stored.mutex);
    return stored.name;
}

void Qv::setApplicationName(const WString& name)
{
    {
        ApplicationName& stored = application_name();
        std::lock_guard lock(stored.mutex);
        if (stored.name == name)
            return;
        stored.name = name;
    }
    // Outside our lock: the configuration takes its own, and calls back here
    // for the directory while holding it.
    Qv::settingsDirectoryMoved();
}
