#include "core/SettingsFile.h"

#include "core/AtomicFile.h"
#include "core/Log.h"
#include "platform/OS.h"
#include "platform/iFileSystemService.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int MAX_CORRUPT_COPIES = 100;

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
// replacing an earlier bad copy.
void set_aside(const String& path, const String& error, const char* what)
{
    const String aside = free_corrupt_name(path);
    if (!aside.isNull() && std::rename(path.c_str(), aside.c_str()) == 0) {
        murl_printf("%s %s is not a JSON object (%s); using defaults, the file is kept as %s\n", what, path.c_str(),
                    error.c_str(), aside.c_str());
        return;
    }
    murl_printf("%s %s is not a JSON object (%s); using defaults\n", what, path.c_str(), error.c_str());
}

} // namespace

JSON::Value Qv::loadSettingsObject(const String& path, const char* what)
{
    String text;
    errno = 0;
    if (!Qv::readFile(path.view(), text)) {
        if (errno != ENOENT)
            murl_printf("%s %s cannot be read: using defaults\n", what, path.c_str());
        return JSON::Value::object();
    }
    JSON::ParseResult parsed = JSON::parse(text.view());
    if (!parsed.ok() || !parsed.value.is_object()) {
        set_aside(path, parsed.ok() ? String("not an object") : parsed.error, what);
        return JSON::Value::object();
    }
    return std::move(parsed.value);
}

String Qv::defaultSettingsDirectory()
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
