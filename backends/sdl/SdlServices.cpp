#include "sdl/SdlServices.h"

#include "headless/PixmanRegion.h"
#include "sdl/SdlInput.h"
#include "sdl/SdlRootWindow.h"
#include "tela/core/Log.h"
#include "tela/core/NeverDestroyed.h"
#include "tela/core/Threads.h"
#include "tela/platform/Platforms.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

Sdl::EventTypes registered_types;

void deliver_window_event(Sdl::RootWindow& window, const SDL_WindowEvent& change)
{
    const Qv::Ptr<iEventHandler> handler = window.eventHandler();
    WindowEvent event;
    event.time = Sdl::eventTime(change.timestamp);
    switch (change.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
        window.resized({change.data1, change.data2});
        event.kind = WindowEvent::eSizeChanged;
        // A window's pixels per point can change with its size on Wayland.
        Sdl::services().systemInfo()->refreshScale(static_cast<SDL_Window*>(window.nativeHandle()));
        break;
    case SDL_WINDOWEVENT_DISPLAY_CHANGED:
        Sdl::services().systemInfo()->refreshScale(static_cast<SDL_Window*>(window.nativeHandle()));
        return;
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

// Real windows when the environment asks for them or a display is present.
const Tela::Platform& tela_platform_sdl()
{
    static const Tela::Platform platform {
        "sdl",
        [] { return static_cast<iOSServices*>(&Sdl::services()); },
        Sdl::wanted,
        Sdl::install,
    };
    return platform;
}

bool Sdl::install()
{
    if (SDL_WasInit(SDL_INIT_VIDEO))
        return OS() == &services();
    // Closing the last window is a request the application may refuse: SDL
    // must not add a quit of its own. Above whatever the environment says.
    SDL_SetHintWithPriority(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0", SDL_HINT_OVERRIDE);
    // The busy cursor is set from a thread of its own over X.
    X11Cursors::allowThreads();
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
    // Files dropped on a window; SDL may leave these off.
    SDL_EventState(SDL_DROPBEGIN, SDL_ENABLE);
    SDL_EventState(SDL_DROPFILE, SDL_ENABLE);
    SDL_EventState(SDL_DROPCOMPLETE, SDL_ENABLE);
    if (!Tela::installOSServices(&services())) {
        murl_printf("SDL platform not installed: another platform is in use\n");
        SDL_Quit();
        return false;
    }
    services().systemInfo()->refreshScale(nullptr);
    return true;
}

float Sdl::scaleForDensity(float dpi)
{
    if (!(dpi > 0.0f))
        return 1.0f;
    const float quarters = std::round(dpi / 96.0f * 4.0f) / 4.0f;
    return std::clamp(quarters, 1.0f, 4.0f);
}

float Sdl::densityScale(SDL_Window* window)
{
    if (window) {
        int points = 0, pixels = 0, ignored = 0;
        SDL_GetWindowSize(window, &points, &ignored);
        SDL_GetWindowSizeInPixels(window, &pixels, &ignored);
        if (points > 0 && pixels > points)
            return std::clamp(static_cast<float>(pixels) / static_cast<float>(points), 1.0f, 4.0f);
    }
    // Wayland scales a window's points to the screen itself; a density taken
    // from the monitor would scale twice.
    const char* driver = SDL_GetCurrentVideoDriver();
    if (driver && std::strcmp(driver, "wayland") == 0)
        return 1.0f;
    const int display = window ? std::max(0, SDL_GetWindowDisplayIndex(window)) : 0;
    float horizontal = 0.0f;
    if (SDL_GetDisplayDPI(display, nullptr, &horizontal, nullptr) != 0)
        return 1.0f;
    return scaleForDensity(horizontal);
}

const Sdl::EventTypes& Sdl::eventTypes()
{
    return registered_types;
}

Sdl::Services& Sdl::services()
{
    // Never destroyed: windows released during static destruction still
    // unregister here.
    static Qv::NeverDestroyed<Services> instance;
    return *instance;
}

bool Sdl::Windowing::createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode)
{
    out = Qv::make<RootWindow>(mode, Headless::displayLocationFor(mode, m_default_location));
    return true;
}

bool Sdl::Windowing::createChildWindow(Qv::Ptr<iVideoChildWindow>& out, const Qv::Ptr<iRootWindow>&, const XY<int>&,
                                       const XY<int>&)
{
    // FIXME: no child windows over an SDL window yet; a video window falls
    // back to drawing into its canvas.
    out = nullptr;
    return false;
}

bool Sdl::Windowing::createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count)
{
    Headless::PixmanRegion::create(out, rects, count);
    return true;
}

void Sdl::Windowing::enumerateFonts(std::set<WString, WString::ICompare>& names)
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
    auto* const native = static_cast<SDL_Window*>(window->nativeHandle());
    m_x11.addWindow(native);
    services().systemInfo()->refreshScale(native);
}

void Sdl::Windowing::unregisterWindow(RootWindow* window)
{
    std::erase(m_windows, window);
    m_x11.removeWindow(static_cast<SDL_Window*>(window->nativeHandle()));
}

Sdl::RootWindow* Sdl::Windowing::find(std::uint32_t windowId) const
{
    const auto found = std::find_if(m_windows.begin(), m_windows.end(),
                                    [windowId](const RootWindow* window) { return window->windowId() == windowId; });
    return found == m_windows.end() ? nullptr : *found;
}

void Sdl::Windowing::dispatch(const SDL_Event& event)
{
    // The path of a dropped file is the receiver's to free, whoever that is.
    struct DroppedText {
        char* text;
        ~DroppedText() { SDL_free(text); }
    } const dropped { event.type == SDL_DROPFILE || event.type == SDL_DROPTEXT ? event.drop.file : nullptr };

    if (event.type == SDL_QUIT) {
        // Pushed by shutdownMessageLoop, or a signal: the close button never
        // comes this way (see install).
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
    else if (event.type == SDL_DROPBEGIN || event.type == SDL_DROPFILE || event.type == SDL_DROPCOMPLETE)
        window_id = event.drop.windowID;
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
        ready.time = eventTime(event.common.timestamp);
        ready.kind = WindowEvent::eInitialise;
        if (handler)
            handler->handleEvent(ready);
        return;
    }
    if (event.type == SDL_DROPBEGIN || event.type == SDL_DROPFILE || event.type == SDL_DROPCOMPLETE) {
        deliverDrop(*window, event);
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
            handler->handleEvent(TimerEvent { {eventTime(event.common.timestamp)} });
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

void Sdl::Windowing::deliverDrop(RootWindow& window, const SDL_Event& event)
{
    Qv::Vector<WString> files;
    if (event.type == SDL_DROPBEGIN) {
        window.beginDrop();
        return;
    }
    if (event.type == SDL_DROPFILE) {
        if (!event.drop.file)
            return;
        const WString path = fromUTF8(String(event.drop.file));
        if (window.addDroppedFile(path))
            return;
        files.push_back(path);
    } else {
        files = window.endDrop();
    }
    if (files.empty())
        return;
    FileDragDropEvent drop;
    drop.time = eventTime(event.common.timestamp);
    drop.files = std::move(files);
    drop.action = eFileDropped;
    // SDL's drop carries no position. During a drag the source holds the
    // pointer, so SDL's own record of it is stale: ask the server.
    int x = 0, y = 0;
    SDL_GetGlobalMouseState(&x, &y);
    XY<int> origin;
    window.getPosition(origin);
    drop.pos = XY<int> { x - origin.x, y - origin.y };
    if (const Qv::Ptr<iEventHandler> handler = window.eventHandler())
        handler->handleEvent(drop);
}

void Sdl::Windowing::presentAll()
{
    for (RootWindow* window : m_windows)
        m_x11.whileRecreating(static_cast<SDL_Window*>(window->nativeHandle()), [window] { window->present(); });
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
    // The quit is spent: what runs the queue next (another loop, or a test's
    // pump) delivers wakes again.
    m_quit = false;
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

// A system cursor, or an image cursor kept as a surface. SDL's cursor is made
// when it is first shown, on the main thread: the busy monitor's thread may
// be the one that asks for a cursor, and SDL's cursor calls are not for it.
class SdlCursor final : public iCursor {
public:
    explicit SdlCursor(SDL_SystemCursor shape) : m_shape(shape) {}
    SdlCursor(SDL_Surface* image, const XY<int>& hotSpot) : m_image(image), m_hot_spot(hotSpot) {}
    ~SdlCursor() override
    {
        if (m_cursor)
            SDL_FreeCursor(m_cursor);
        if (m_image)
            SDL_FreeSurface(m_image);
    }
    SdlCursor(const SdlCursor&) = delete;
    SdlCursor& operator=(const SdlCursor&) = delete;

    bool isSystem() const { return m_image == nullptr; }
    SDL_SystemCursor shape() const { return m_shape; }
    // Main thread.
    SDL_Cursor* get()
    {
        if (!m_cursor)
            m_cursor = m_image ? SDL_CreateColorCursor(m_image, m_hot_spot.x, m_hot_spot.y)
                               : SDL_CreateSystemCursor(m_shape);
        return m_cursor;
    }

private:
    SDL_SystemCursor m_shape = SDL_SYSTEM_CURSOR_ARROW;
    SDL_Surface* m_image = nullptr;
    XY<int> m_hot_spot;
    SDL_Cursor* m_cursor = nullptr;
};

} // namespace

SDL_SystemCursor Sdl::systemCursorFor(std::int32_t id)
{
    // 0 to 11 are SDL's own list, in its order.
    if (id >= SDL_SYSTEM_CURSOR_ARROW && id <= SDL_SYSTEM_CURSOR_HAND)
        return static_cast<SDL_SystemCursor>(id);
    switch (id) {
    case 13: return SDL_SYSTEM_CURSOR_WAIT;                        // busy
    case 20: return SDL_SYSTEM_CURSOR_HAND;                        // "PointingHand"
    case 21: case 25: return SDL_SYSTEM_CURSOR_SIZEALL;            // "MoveUpDownLeftRight", "Move2"
    case 22: case 27: case 28: case 29: case 30:                   // "MoveLeftRight", the trims
        return SDL_SYSTEM_CURSOR_SIZEWE;
    case 23: return SDL_SYSTEM_CURSOR_SIZENS;                      // "MoveUpDown"
    case 24: case 26: case 35: case 36:                            // control point, colour pick, point move, pen
        return SDL_SYSTEM_CURSOR_CROSSHAIR;
    default: return SDL_SYSTEM_CURSOR_ARROW;                       // "Default", the drag and drop arrows
    }
}

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
    out = Qv::make<SdlCursor>(surface, hotSpot);
    return true;
}

bool Sdl::Windowing::createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id)
{
    out = Qv::make<SdlCursor>(systemCursorFor(id));
    return true;
}

void Sdl::Windowing::selectCursor(const Qv::Ptr<iCursor>& cursor)
{
    const auto chosen = Qv::dynamicCast<SdlCursor>(cursor);
    if (!chosen)
        return;
    if (!isMainThread()) {
        // The busy monitor, while the main thread stalls: SDL's cursor calls
        // are the main thread's, so X shows the cursor over a connection of
        // its own. The main thread puts its own cursor back once it runs.
        // Image cursors, and Wayland, have no such road.
        if (chosen->isSystem() && m_x11.show(chosen->shape()))
            ++m_off_thread_cursors;
        return;
    }
    if (SDL_Cursor* const shown = chosen->get())
        SDL_SetCursor(shown);
    else
        murl_printf("SDL cannot make a cursor: %s\n", SDL_GetError());
}
