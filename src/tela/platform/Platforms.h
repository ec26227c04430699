// Platforms: the windowing platforms built into the library, and the choice
// among them at start-up.
//
// The seam knows no platform by name: the build lists the ones it compiled in
// (the embedded default first), and each describes itself with a Platform
// record. OS() starts on the default, so the library's load-time work and
// programs without a display need nothing else; Tela::Application asks
// choosePlatform() once, before anything opens a window.
#pragma once

#include <cstddef>

class iOSServices;

namespace Tela {

struct Platform {
    const char* name;            // what TELA_BACKEND says to ask for it
    iOSServices* (*services)();  // its services; for the default, what OS() starts on
    bool (*wanted)();            // true when the environment suggests it (a display is present)
    bool (*install)();           // starts it and installs its services; false, with a message, on failure
};

// The platforms built in, the embedded default first. Defined by the build.
const Platform* const* builtInPlatforms(std::size_t& count);

// Chooses the platform once: TELA_BACKEND when set, otherwise the first
// built-in platform that is wanted, otherwise the default. A platform that is
// asked for but missing or unable to start is reported and the default kept.
// Returns the name of the platform in use.
const char* choosePlatform();

} // namespace Tela
