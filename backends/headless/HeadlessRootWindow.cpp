#include "headless/HeadlessRootWindow.h"

#include "headless/FreeTypeFont.h"
#include "headless/HeadlessServices.h"
#include "headless/PngFile.h"
#include "headless/VideoChildWindow.h"

#include <algorithm>

namespace {

// A timer of the main loop, stopped when released.
class LoopTimer final : public iPeriodicTimer {
public:
    explicit LoopTimer(std::uint64_t id) : m_id(id) {}
    ~LoopTimer() override { stop(); }
    void stop() override
    {
        if (m_id)
            Headless::services().windowing()->mainLoop().removeTimer(m_id);
        m_id = 0;
    }

private:
    std::uint64_t m_id;
};

} // namespace

Headless::RootWindow::RootWindow(std::int32_t mode, iImageBase::eLocation location)
    : m_mode(mode)
    , m_location(location)
    , m_pixels(HostImage::create(m_size, location))
    , m_identity(newWindowIdentity())
{
    services().windowing()->mainLoop().registerWindow(this);
}

Headless::RootWindow::~RootWindow()
{
    for (VideoChildWindow* child : m_children)
        child->detach();
    services().windowing()->mainLoop().unregisterWindow(this);
}

bool Headless::RootWindow::getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags)
{
    return m_pixels && m_pixels->getRenderer(out, flags);
}

bool Headless::RootWindow::createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size)
{
    out = HostImage::create(size, m_location);
    return static_cast<bool>(out);
}

bool Headless::RootWindow::initWindow(const InitArgs& args)
{
    m_title = args.name;
    m_position = args.position;
    m_title_bar = args.titleBar();
    m_maximised = args.maximised();
    if (args.eventHandler)
        m_handler = args.eventHandler;
    if (args.size.x > 0 && args.size.y > 0)
        setSize(args.size);
    m_initialised = true;
    // The window is up: its handler hears so once the loop runs.
    WindowEvent ready;
    ready.kind = WindowEvent::eInitialise;
    script(ready);
    return static_cast<bool>(m_pixels);
}

void Headless::RootWindow::script(const MouseEvent& report)
{
    services().windowing()->mainLoop().script(this, report);
}

void Headless::RootWindow::script(const KeyEvent& report)
{
    services().windowing()->mainLoop().script(this, report);
}

void Headless::RootWindow::script(const WindowEvent& report)
{
    services().windowing()->mainLoop().script(this, report);
}

void Headless::RootWindow::postWake()
{
    m_wakes.fetch_add(1);
    services().windowing()->mainLoop().wake(this);
}

bool Headless::RootWindow::dragFiles(const Qv::Vector<WString>& files)
{
    // Nothing to drag into: the paths are kept for tests, and the drag ends at once.
    m_dragged = files;
    return !files.empty();
}

bool Headless::RootWindow::createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds)
{
    const std::uint64_t id = services().windowing()->mainLoop().addTimer(this, milliseconds);
    if (!id)
        return false;
    out = Qv::make<LoopTimer>(id);
    return true;
}

void Headless::RootWindow::invalidate(const Qv::Ptr<iRegion>& region)
{
    m_invalid.add(region);
    services().windowing()->mainLoop().schedulePaint(this);
}

void Headless::RootWindow::setSize(const XY<int>& size)
{
    if (size == m_size && m_pixels)
        return;
    m_size = size;
    m_pixels = HostImage::create(size, m_location);
}

bool Headless::RootWindow::snapshot(const char* path)
{
    if (!m_pixels)
        m_pixels = HostImage::create(m_size, iImageBase::eHostMemory);
    const Qv::Ptr<HostImage> shown = shownPixels();
    return shown && savePng(*shown, path);
}

void Headless::RootWindow::removeChild(VideoChildWindow* child)
{
    m_children.erase(std::remove(m_children.begin(), m_children.end(), child), m_children.end());
}

Qv::Ptr<Headless::HostImage> Headless::RootWindow::shownPixels() const
{
    if (m_children.empty() || !m_pixels)
        return m_pixels;
    // The children are windows of their own: they cover the frame without
    // ever being part of it, so they are laid over a copy.
    Qv::Ptr<HostImage> shown = m_pixels->copy(iImageBase::eHostMemory);
    if (!shown)
        return m_pixels;
    for (VideoChildWindow* child : m_children)
        child->composeOnto(shown);
    return shown;
}

Qv::Ptr<iFont> Headless::RootWindow::createFont(const WString& name, unsigned short size, unsigned int style,
                                                unsigned short)
{
    return Headless::createFont(name, size, style, services().systemInfo()->uiScale());
}

std::uint32_t Headless::newWindowIdentity()
{
    // Wrapping past 2^32 windows would need 0 skipped; no process lives that long.
    static std::atomic<std::uint32_t> last { 0 };
    return last.fetch_add(1) + 1;
}
