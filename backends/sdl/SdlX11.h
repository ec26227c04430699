// SdlX11: the few things this platform asks of the X server itself.
//
// SDL's calls belong to the thread that runs its loop. The busy cursor is
// wanted precisely while that thread is stalled, so a watch thread sets it on
// the windows' X ids over a connection of its own, which SDL never sees.
// Nothing here names an X type: Xlib's headers stay inside SdlX11.cpp, and
// Xlib inside this backend.
//
// On Wayland no client may set the pointer of a stalled window: there the
// compositor's own sign of an unresponsive window stands in, and these calls
// report false.
#pragma once

#include <SDL.h>

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Sdl {

class X11Cursors {
public:
    X11Cursors() = default;
    ~X11Cursors();
    X11Cursors(const X11Cursors&) = delete;
    X11Cursors& operator=(const X11Cursors&) = delete;

    // Lets Xlib serve more than one thread. Before SDL opens its connection.
    static void allowThreads();

    // Remembers the X window behind an SDL window; nothing for a window on
    // another system. Main thread.
    void addWindow(SDL_Window* window);
    // Runs `work`, which may make SDL replace the window's X window (its
    // first surface may bring a renderer that wants another kind of window),
    // then takes the window's X id anew. No cursor is set meanwhile. Main thread.
    void whileRecreating(SDL_Window* window, const std::function<void()>& work);
    // Forgets it, before SDL destroys it: a watch thread never names a window
    // the server no longer has. The connection closes with the last window.
    // Main thread.
    void removeWindow(SDL_Window* window);

    // Shows one of the system's cursors on every remembered window, over this
    // object's own connection, and waits until the server has done so. False
    // when there is no X window or no connection. Any thread.
    bool show(SDL_SystemCursor shape);

private:
    void closeConnection(); // with m_mutex held

    std::mutex m_mutex;
    std::vector<std::uint32_t> m_sdl_ids;   // SDL's window ids, beside
    std::vector<unsigned long> m_x_ids;     // the X ids of the same windows
    std::string m_display_name;             // the server SDL talks to
    void* m_connection = nullptr;           // Display*, opened on first use
};

} // namespace Sdl
