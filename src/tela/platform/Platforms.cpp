#include "tela/platform/Platforms.h"

#include "tela/core/Log.h"
#include "tela/platform/OS.h"

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace {

const char* s_chosen = nullptr;

const Tela::Platform* find_platform(const char* name)
{
    std::size_t count = 0;
    const Tela::Platform* const* platforms = Tela::builtInPlatforms(count);
    for (std::size_t i = 0; i < count; ++i)
        if (std::strcmp(platforms[i]->name, name) == 0)
            return platforms[i];
    return nullptr;
}

const char* choose()
{
    std::size_t count = 0;
    const Tela::Platform* const* platforms = Tela::builtInPlatforms(count);
    const Tela::Platform& fallback = *platforms[0];
    const char* asked = std::getenv("TELA_BACKEND");
    if (asked && *asked) {
        const Tela::Platform* platform = find_platform(asked);
        if (!platform) {
            murl_printf("Tela: no platform \"%s\" is built in; using \"%s\"\n", asked, fallback.name);
            return fallback.name;
        }
        if (platform == &fallback || platform->install())
            return platform->name;
        murl_printf("Tela: the platform \"%s\" could not start; using \"%s\"\n", asked, fallback.name);
        return fallback.name;
    }
    for (std::size_t i = 1; i < count; ++i) {
        if (!platforms[i]->wanted())
            continue;
        if (platforms[i]->install())
            return platforms[i]->name;
        murl_printf("Tela: the platform \"%s\" could not start; using \"%s\"\n", platforms[i]->name, fallback.name);
        break;
    }
    return fallback.name;
}

} // namespace

const char* Tela::choosePlatform()
{
    static std::once_flag once;
    std::call_once(once, [] { s_chosen = choose(); });
    return s_chosen;
}
