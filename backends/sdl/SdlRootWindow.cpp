#include "sdl/SdlRootWindow.h"

#include "headless/FreeTypeFont.h"
#include "headless/HeadlessRootWindow.h"
#include "sdl/SdlServices.h"
#include "tela/core/Log.h"

namespace {

// Ticks of SDL's timer thread become events on the main loop's queue.
class SdlTimer final : public iPeriodicTimer {
public:
    SdlTimer(std::uint32_t windowId, std::uint32_t milliseconds)
        : m_window_id(windowId), m_id(SDL_AddTimer(milliseconds, &SdlTimer::tick, this))
    {
    }
    ~SdlTimer() override { stop(); }

    void stop() override
    {
        if (m_id)
            SDL_RemoveTimer(m_id);
        m_id = 0;
    }
    bool running() const { return m_id != 0; }

private:
    static std::uint32_t tick(std::uint32_t interval, void* context)
    {
        SDL_Event event {};
        event.type = Sdl::eventTypes().tick;
        event.user.windowID = static_cast<SdlTimer*>(context)->m_window_id;
        event.user.code = static_cast<std::int32_t>(interval);
        SDL_PushEvent(&event);
        return interval;
    }

    std::uint32_t m_window_id;
    SDL_TimerID m_id;
};

} // namespace

Sdl::RootWindow::RootWindow(std::int32_t mode, iImageBase::eLocation location)
    : m_mode(mode)
    , m_location(location)
    , m_frame(Headless::HostImage::create(m_size, location))
    , m_identity(Headless::newWindowIdentity())
{
}

Sdl::RootWindow::~RootWindow()
{
    if (!m_window)
        return;
    services().windowing()->unregisterWindow(this);
    SDL_DestroyWindow(m_window);
}

bool Sdl::RootWindow::getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags)
{
    // Whoever takes the renderer is about to draw: the frame goes out after
    // this batch of events.
    m_frame_touched = true;
    return m_frame && m_frame->getRenderer(out, flags);
}

bool Sdl::RootWindow::createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size)
{
    out = Headless::HostImage::create(size, m_location);
    return static_cast<bool>(out);
}

bool Sdl::RootWindow::initWindow(const InitArgs& args)
{
    if (m_window)
        return true;
    std::uint32_t flags = SDL_WINDOW_RESIZABLE;
    if ((args.mode & ~iRootWindow::InitArgs::MODE_COMPOSITED) == 2)
        flags |= SDL_WINDOW_FULLSCREEN_DESKTOP;
    else if (args.maximised())
        flags |= SDL_WINDOW_MAXIMIZED;
    if (!args.titleBar())
        flags |= SDL_WINDOW_BORDERLESS;
    const bool placed = args.position.x != 0 || args.position.y != 0;
    m_window = SDL_CreateWindow(toUTF8(args.name).c_str(), placed ? args.position.x : SDL_WINDOWPOS_UNDEFINED,
                                placed ? args.position.y : SDL_WINDOWPOS_UNDEFINED, args.size.x > 0 ? args.size.x : m_size.x,
                                args.size.y > 0 ? args.size.y : m_size.y, flags);
    if (!m_window) {
        murl_printf("SDL cannot make a window: %s\n", SDL_GetError());
        return false;
    }
    m_window_id = SDL_GetWindowID(m_window);
    m_title_bar = args.titleBar();
    if (args.eventHandler)
        m_handler = args.eventHandler;
    services().windowing()->registerWindow(this);
    // The handler hears that the window is up once the loop runs.
    SDL_Event ready {};
    ready.type = eventTypes().initialise;
    ready.user.windowID = m_window_id;
    SDL_PushEvent(&ready);
    // Wakes posted before the window existed had no window to go to.
    if (m_pending_wakes.load() != 0) {
        SDL_Event event {};
        event.type = eventTypes().wake;
        event.user.windowID = m_window_id;
        SDL_PushEvent(&event);
    }
    // The window manager may have given another size than was asked for.
    int width = 0, height = 0;
    SDL_GetWindowSize(m_window, &width, &height);
    resized({width, height});
    return static_cast<bool>(m_frame);
}

void Sdl::RootWindow::getPosition(XY<int>& position) const
{
    position = XY<int> {};
    if (m_window)
        SDL_GetWindowPosition(m_window, &position.x, &position.y);
}

void Sdl::RootWindow::setUseWindowsTitleBar(bool use)
{
    m_title_bar = use;
    if (m_window)
        SDL_SetWindowBordered(m_window, use ? SDL_TRUE : SDL_FALSE);
}

void Sdl::RootWindow::postWake()
{
    // One SDL event per wake could overflow SDL's queue when threads send
    // faster than the main thread reads; the count keeps each wake, and only
    // its first since the last delivery needs an event.
    if (m_pending_wakes.fetch_add(1) != 0)
        return;
    SDL_Event event {};
    event.type = eventTypes().wake;
    event.user.windowID = m_window_id;
    if (SDL_PushEvent(&event) < 0)
        murl_printf("SDL lost a wake-up: %s\n", SDL_GetError());
}

std::uint64_t Sdl::RootWindow::takeWakes()
{
    return m_pending_wakes.exchange(0);
}

void Sdl::RootWindow::setTitle(const WString& title)
{
    if (m_window)
        SDL_SetWindowTitle(m_window, toUTF8(title).c_str());
}

void Sdl::RootWindow::minimise()
{
    if (m_window)
        SDL_MinimizeWindow(m_window);
}

void Sdl::RootWindow::claimFocus()
{
    if (m_window)
        SDL_RaiseWindow(m_window);
}

bool Sdl::RootWindow::dragFiles(const Qv::Vector<WString>& files)
{
    // SDL takes files dropped on a window but has no way to start a drag out
    // of one; saying so beats a drag that silently never begins.
    murl_printf("SDL platform: dragging %zu file(s) out of the window is not supported\n", files.size());
    return false;
}

bool Sdl::RootWindow::addDroppedFile(const WString& path)
{
    if (!m_dropping)
        return false;
    m_dropped.push_back(path);
    return true;
}

Qv::Vector<WString> Sdl::RootWindow::endDrop()
{
    m_dropping = false;
    Qv::Vector<WString> files;
    files.swap(m_dropped);
    return files;
}

bool Sdl::RootWindow::createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds)
{
    auto timer = Qv::make<SdlTimer>(m_window_id, milliseconds);
    if (!timer->running()) {
        murl_printf("SDL cannot start a timer: %s\n", SDL_GetError());
        return false;
    }
    out = timer;
    return true;
}

void Sdl::RootWindow::invalidate(const Qv::Ptr<iRegion>& region)
{
    m_invalid.add(region);
    if (m_paint_scheduled)
        return;
    m_paint_scheduled = true;
    SDL_Event event {};
    event.type = eventTypes().paint;
    event.user.windowID = m_window_id;
    SDL_PushEvent(&event);
}

Qv::Ptr<iRegion> Sdl::RootWindow::takePaintRegion()
{
    m_paint_scheduled = false;
    return m_invalid.take();
}

void Sdl::RootWindow::resized(const XY<int>& size)
{
    if (size == m_size && m_frame)
        return;
    m_size = size;
    m_frame = Headless::HostImage::create(size, m_location);
}

void Sdl::RootWindow::present()
{
    if (!m_window || !m_frame || !m_frame_touched)
        return;
    m_frame_touched = false;
    SDL_Surface* screen = SDL_GetWindowSurface(m_window);
    if (!screen) {
        murl_printf("SDL gives no window surface: %s\n", SDL_GetError());
        return;
    }
    // The frame's bytes are B, G, R, A: ARGB8888 in SDL's words. SDL converts
    // to whatever the screen holds.
    SDL_Surface* source = SDL_CreateRGBSurfaceWithFormatFrom(m_frame->data(), m_size.x, m_size.y, 32, m_frame->stride(),
                                                             SDL_PIXELFORMAT_ARGB8888);
    if (!source)
        return;
    SDL_SetSurfaceBlendMode(source, SDL_BLENDMODE_NONE);
    SDL_BlitSurface(source, nullptr, screen, nullptr);
    SDL_FreeSurface(source);
    SDL_UpdateWindowSurface(m_window);
}

Qv::Ptr<iFont> Sdl::RootWindow::createFont(const WString& name, unsigned short size, unsigned int style,
                                           unsigned short)
{
    return Headless::createFont(name, size, style, services().systemInfo()->uiScale());
}
