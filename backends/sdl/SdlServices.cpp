#include "sdl/SdlServices.h"

#include "core/Log.h"
#include "core/Threads.h"
#include "headless/PixmanRegion.h"
#include "sdl/SdlInput.h"
#include "sdl/SdlRootWindow.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

Sdl::EventTypes registered_types;

void deliver_window_event(Sdl::RootWindow& window, const SDL_WindowEvent& change)
{
    const Qv::Ptr<iEventHandler> handler = window.eventHandler();
    WindowEvent event;
    event.time = SDL_GetTicks();
    switch (change.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
        window.resized({change.data1, change.data2});
        event.kind = WindowEvent::eSizeChanged;
        break;
    case SDL_WINDOWEVENT_MOVED: event.kind = WindowEvent::ePositionChanged; break;
    case SDL_WINDOWEVENT_FOCUS_GAINED: event.kind = WindowEvent::eFocusGained; break;
    case SDL_WINDOWEVENT_FOCUS_LOST: event.kind = WindowEvent::eFocusLost; break;
    // Minimising and restoring change what the window shows; the library
    // looks at the window's state itself.
    case SDL_WINDOWEVENT_MINIMIZED:
    case SDL_WINDOWEVENT_RESTORED: event.kind = WindowEvent::eResized; break;
    case SDL_WINDOWEVENT_CLOSE: event.kind = WindowEvent::eCloseRequest; break;
    case SDL_WINDOWEVENT_LEAVE: event.kind = WindowEvent::ePointerLeft; break;
    case SDL_WINDOWEVENT_EXPOSED:
        // The screen lost what the window showed: all of it is to be painted.
        window.invalidate(nullptr);
        return;
    default:
        return;
    }
    if (handler)
        handler->handleEvent(event);
    if (change.event == SDL_WINDOWEVENT_SIZE_CHANGED)
        window.invalidate(nullptr);
}

} // namespace

bool Sdl::wanted()
{
    const char* choice = std::getenv("TELA_BACKEND");
    if (choice && *choice)
        return std::strcmp(choice, "sdl") == 0;
    const char* x11 = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x11 && *x11) || (wayland && *wayland);
}

bool Sdl::install()
{
    if (SDL_WasInit(SDL_INIT_VIDEO))
        return OS() == &services();
    if (SDL_Init(SDL_INIT_VIDEO | SDL_INIT_TIMER | SDL_INIT_EVENTS) != 0) {
        murl_printf("SDL cannot start: %s\n", SDL_GetError());
        return false;
    }
    const std::uint32_t first = SDL_RegisterEvents(4);
    if (first == static_cast<std::uint32_t>(-1)) {
        murl_printf("SDL has no room for the platform's events\n");
        SDL_Quit();
        return false;
    }
    registered_types = EventTypes { first, first + 1, first + 2, first + 3 };
    if (!Tela::installOSServices(&services())) {
        murl_printf("SDL platform not installed: another platform is in use\n");
        SDL_Quit();
        return false;
    }
    return true;
}

const Sdl::EventTypes& Sdl::eventTypes()
{
    return registered_types;
}

Sdl::Services& Sdl::services()
{
    // Never destroyed: windows released during static destruction still
    // unregister here.
    alignas(Services) static unsigned char storage[sizeof(Services)];
    static Services* const instance = new (storage) Services;
    return *instance;
}

bool Sdl::Windowing::createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode)
{
    out = Qv::make<RootWindow>(mode, static_cast<iImageBase::eLocation>(m_default_location));
    return true;
}

bool Sdl::Windowing::createChildWindow(Qv::Ptr<iObject>& out, const Qv::Ptr<iRootWindow>&)
{
    out = nullptr; // child windows come with the video surface
    return false;
}

bool Sdl::Windowing::createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count)
{
    Headless::PixmanRegion::create(out, rects, count);
    return true;
}

void Sdl::Windowing::enumerateFonts(Qv::Set<WString>& names)
{
    Headless::services().windowing()->enumerateFonts(names);
}

bool Sdl::Windowing::isKeyDown(std::uint32_t modifierMask)
{
    return (modifierBits(static_cast<std::uint16_t>(SDL_GetModState())) & modifierMask) != 0;
}

void Sdl::Windowing::registerWindow(RootWindow* window)
{
    m_windows.push_back(window);
}

void Sdl::Windowing::unregisterWindow(RootWindow* window)
{
    std::erase(m_windows, window);
}

Sdl::RootWindow* Sdl::Windowing::find(std::uint32_t windowId) const
{
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
                                    [windowId](const RootWindow* window) { return window->windowId() == windowId; });
    return found == m_windows.end() ? nullptr : *found;
}

void Sdl::Windowing::dispatch(const SDL_Event& event)
{
    if (event.type == SDL_QUIT) {
        m_quit = true;
        return;
    }
    // Every other event concerns one window; SDL's window events, input
    // and this platform's own all name it in the same place.
    std::uint32_t window_id = 0;
    if (event.type == SDL_WINDOWEVENT)
        window_id = event.window.windowID;
    else if (event.type == SDL_KEYDOWN || event.type == SDL_KEYUP)
        window_id = event.key.windowID;
    else if (event.type == SDL_MOUSEMOTION)
        window_id = event.motion.windowID;
    else if (event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEBUTTONUP)
        window_id = event.button.windowID;
    else if (event.type == SDL_MOUSEWHEEL)
        window_id = event.wheel.windowID;
    else if (event.type >= SDL_USEREVENT)
        window_id = event.user.windowID;
    RootWindow* window = find(window_id);
    if (!window)
        return;
    // Held for the call: a handler may release the library's last reference.
    const Qv::Ptr<RootWindow> keep(window);
    const Qv::Ptr<iEventHandler> handler = window->eventHandler();

    const EventTypes& types = eventTypes();
    if (event.type == types.wake) {
        // A wake answered with eHandled closed the application's window.
        for (std::uint64_t wakes = window->takeWakes(); wakes > 0 && handler && !m_quit; --wakes)
            if (handler->handleEvent(UserEvent {}) == iEventHandler::eHandled)
                m_quit = true;
        return;
    }
    if (event.type == types.initialise) {
        WindowEvent ready;
        ready.time = event.common.timestamp;
        ready.kind = WindowEvent::eInitialise;
        if (handler)
            handler->handleEvent(ready);
        return;
    }
    if (event.type == types.paint) {
        const PaintEvent paint { window->takePaintRegion() };
        if (handler)
            handler->handleEvent(paint);
        return;
    }
    if (event.type == types.tick) {
        if (handler)
            handler->handleEvent(TimerEvent { {event.common.timestamp} });
        return;
    }
    MouseEvent mouse;
    if (toMouseEvent(event, mouse)) {
        if (handler)
            handler->handleEvent(mouse);
        return;
    }
    KeyEvent key;
    if (toKeyEvent(event, key)) {
        if (handler)
            handler->handleEvent(key);
        return;
    }
    if (event.type == SDL_WINDOWEVENT)
        deliver_window_event(*window, event.window);
}

void Sdl::Windowing::presentAll()
{
    for (RootWindow* window : m_windows)
        window->present();
}

std::size_t Sdl::Windowing::pumpPending()
{
    std::size_t handled = 0;
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
        dispatch(event);
        ++handled;
    }
    presentAll();
    return handled;
}

int Sdl::Windowing::runMessageLoop()
{
    m_quit = false;
    SDL_Event event;
    while (!m_quit && SDL_WaitEvent(&event)) {
        dispatch(event);
        // Everything already queued goes before the frame is shown.
        while (!m_quit && SDL_PollEvent(&event))
            dispatch(event);
        presentAll();
    }
    return 0;
}

void Sdl::Windowing::shutdownMessageLoop()
{
    SDL_Event quit {};
    quit.type = SDL_QUIT;
    SDL_PushEvent(&quit);
}

void Sdl::SystemInfo::getMonitors(Qv::Vector<MonitorInfo>& monitors)
{
    monitors.clear();
    const int count = SDL_GetNumVideoDisplays();
    for (int display = 0; display < count; ++display) {
        SDL_Rect bounds {}, usable {};
        if (SDL_GetDisplayBounds(display, &bounds) != 0)
            continue;
        if (SDL_GetDisplayUsableBounds(display, &usable) != 0)
            usable = bounds;
        MonitorInfo info;
        info.screenBox = Qv::Box<int> { bounds.x, bounds.y, bounds.x + bounds.w, bounds.y + bounds.h };
        info.desktopBox = Qv::Box<int> { usable.x, usable.y, usable.x + usable.w, usable.y + usable.h };
        info.isPrimary = display == 0 ? 1 : 0;
        const char* name = SDL_GetDisplayName(display);
        info.name = String(name ? name : "");
        float dpi = 0.0f;
        if (SDL_GetDisplayDPI(display, &dpi, nullptr, nullptr) == 0 && dpi > 0.0f)
            info.scale = dpi / 96.0f;
        monitors.push_back(info);
    }
}

namespace {

class SdlCursor final : public iCursor {
public:
    explicit SdlCursor(SDL_Cursor* cursor) : m_cursor(cursor) {}
    ~SdlCursor() override { SDL_FreeCursor(m_cursor); }
    SdlCursor(const SdlCursor&) = delete;
    SdlCursor& operator=(const SdlCursor&) = delete;
    SDL_Cursor* get() const { return m_cursor; }

private:
    SDL_Cursor* m_cursor;
};

// The library's cursor numbers that have a counterpart among SDL's own.
SDL_SystemCursor system_cursor(std::int32_t id)
{
    switch (id) {
    case 13: return SDL_SYSTEM_CURSOR_WAIT;
    case 20: return SDL_SYSTEM_CURSOR_HAND;
    case 21: return SDL_SYSTEM_CURSOR_SIZEALL;
    case 22: return SDL_SYSTEM_CURSOR_SIZEWE;
    case 23: return SDL_SYSTEM_CURSOR_SIZENS;
    default: return SDL_SYSTEM_CURSOR_ARROW;
    }
}

} // namespace

bool Sdl::Windowing::createCursor(Qv::Ptr<iCursor>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& hotSpot)
{
    XY<int> size;
    if (!image || !image->data() || image->bitsPerPixel() != 32)
        return false;
    image->getSize(size);
    SDL_Surface* surface = SDL_CreateRGBSurfaceWithFormat(0, size.x, size.y, 32, SDL_PIXELFORMAT_ARGB8888);
    if (!surface)
        return false;
    // SDL wants straight alpha; the library's images are premultiplied.
    for (int y = 0; y < size.y; ++y) {
        const auto* from = reinterpret_cast<const std::uint32_t*>(image->data() + y * size.x * 4);
        auto* to = reinterpret_cast<std::uint32_t*>(static_cast<std::uint8_t*>(surface->pixels) + y * surface->pitch);
        for (int x = 0; x < size.x; ++x) {
            const std::uint32_t p = from[x], a = p >> 24;
            const auto straight = [a](std::uint32_t c) { return a ? std::min(255u, c * 255 / a) : 0u; };
            to[x] = a << 24 | straight(p >> 16 & 255) << 16 | straight(p >> 8 & 255) << 8 | straight(p & 255);
        }
    }
    SDL_Cursor* cursor = SDL_CreateColorCursor(surface, hotSpot.x, hotSpot.y);
    SDL_FreeSurface(surface);
    if (!cursor)
        return false;
    out = Qv::make<SdlCursor>(cursor);
    return true;
}

bool Sdl::Windowing::createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id)
{
    SDL_Cursor* cursor = SDL_CreateSystemCursor(system_cursor(id));
    if (!cursor)
        return false;
    out = Qv::make<SdlCursor>(cursor);
    return true;
}

void Sdl::Windowing::selectCursor(const Qv::Ptr<iCursor>& cursor)
{
    // SDL's cursor calls belong to the main thread; the busy monitor's
    // cursor, set from its own thread, is not shown on this platform.
    if (!isMainThread())
        return;
    if (const auto chosen = Qv::dynamicCast<SdlCursor>(cursor))
        SDL_SetCursor(chosen->get());
}
