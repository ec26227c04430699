#include "sdl/SdlX11.h"

#include "tela/core/Log.h"

#include <SDL_syswm.h>
#include <X11/Xlib.h>
#include <X11/cursorfont.h>

#include <algorithm>

namespace {

Display* as_display(void* connection)
{
    return static_cast<Display*>(connection);
}

// The X font's shape for each of SDL's system cursors.
unsigned int font_shape(SDL_SystemCursor shape)
{
    switch (shape) {
    case SDL_SYSTEM_CURSOR_IBEAM: return XC_xterm;
    case SDL_SYSTEM_CURSOR_WAIT:
    case SDL_SYSTEM_CURSOR_WAITARROW: return XC_watch;
    case SDL_SYSTEM_CURSOR_CROSSHAIR: return XC_tcross;
    case SDL_SYSTEM_CURSOR_SIZENWSE: return XC_bottom_right_corner;
    case SDL_SYSTEM_CURSOR_SIZENESW: return XC_bottom_left_corner;
    case SDL_SYSTEM_CURSOR_SIZEWE: return XC_sb_h_double_arrow;
    case SDL_SYSTEM_CURSOR_SIZENS: return XC_sb_v_double_arrow;
    case SDL_SYSTEM_CURSOR_SIZEALL: return XC_fleur;
    case SDL_SYSTEM_CURSOR_NO: return XC_X_cursor;
    case SDL_SYSTEM_CURSOR_HAND: return XC_hand2;
    default: return XC_left_ptr;
    }
}

} // namespace

Sdl::X11Cursors::~X11Cursors()
{
    std::lock_guard lock(m_mutex);
    closeConnection();
}

void Sdl::X11Cursors::allowThreads()
{
    // Xlib from 1.8 does this by itself; older ones need it before the first connection.
    XInitThreads();
}

void Sdl::X11Cursors::addWindow(SDL_Window* window)
{
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (!window || !SDL_GetWindowWMInfo(window, &info) || info.subsystem != SDL_SYSWM_X11)
        return;
    const char* name = DisplayString(info.info.x11.display);
    std::lock_guard lock(m_mutex);
    m_sdl_ids.push_back(SDL_GetWindowID(window));
    m_x_ids.push_back(info.info.x11.window);
    if (name)
        m_display_name = name;
}

void Sdl::X11Cursors::whileRecreating(SDL_Window* window, const std::function<void()>& work)
{
    std::lock_guard lock(m_mutex);
    work();
    const auto found = std::find(m_sdl_ids.begin(), m_sdl_ids.end(), SDL_GetWindowID(window));
    if (found == m_sdl_ids.end())
        return;
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWindowWMInfo(window, &info) && info.subsystem == SDL_SYSWM_X11)
        m_x_ids[static_cast<std::size_t>(found - m_sdl_ids.begin())] = info.info.x11.window;
}

void Sdl::X11Cursors::removeWindow(SDL_Window* window)
{
    const std::uint32_t id = SDL_GetWindowID(window);
    std::lock_guard lock(m_mutex);
    const auto found = std::find(m_sdl_ids.begin(), m_sdl_ids.end(), id);
    if (found == m_sdl_ids.end())
        return;
    m_x_ids.erase(m_x_ids.begin() + (found - m_sdl_ids.begin()));
    m_sdl_ids.erase(found);
    if (m_sdl_ids.empty())
        closeConnection();
}

bool Sdl::X11Cursors::show(SDL_SystemCursor shape)
{
    // Held throughout, so that removeWindow waits until the server has
    // finished with the windows named here.
    std::lock_guard lock(m_mutex);
    if (m_x_ids.empty())
        return false;
    if (!m_connection) {
        m_connection = XOpenDisplay(m_display_name.c_str());
        if (!m_connection) {
            murl_printf("SDL platform: no X connection for the busy cursor on \"%s\"\n", m_display_name.c_str());
            return false;
        }
    }
    Display* const display = as_display(m_connection);
    const Cursor cursor = XCreateFontCursor(display, font_shape(shape));
    for (const unsigned long window : m_x_ids)
        XDefineCursor(display, window, cursor);
    // The windows keep the cursor; the name can go.
    XFreeCursor(display, cursor);
    XSync(display, False);
    return true;
}

void Sdl::X11Cursors::closeConnection()
{
    if (m_connection)
        XCloseDisplay(as_display(m_connection));
    m_connection = nullptr;
}
