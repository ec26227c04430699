#include "headless/VideoChildWindow.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"

namespace {

constexpr std::uint32_t OPAQUE_BLACK = 0xFF000000u;

} // namespace

Headless::VideoChildWindow::VideoChildWindow(RootWindow* parent, const XY<int>& size, const XY<int>& position,
                                             bool shapeable)
    : m_parent(parent), m_shapeable(shapeable), m_position(position), m_size(size)
{
    m_shown = HostImage::create(size);
    if (m_shown)
        m_shown->fill(OPAQUE_BLACK);
    if (m_parent)
        m_parent->addChild(this);
}

Headless::VideoChildWindow::~VideoChildWindow()
{
    if (m_parent)
        m_parent->removeChild(this);
}

XY<int> Headless::VideoChildWindow::size() const
{
    std::lock_guard guard(m_mutex);
    return m_size;
}

bool Headless::VideoChildWindow::getImage(Qv::Ptr<iImage>& out, int)
{
    std::lock_guard guard(m_mutex);
    takeFinishedFrame();
    // A fresh image each frame: the one on view is never drawn into, so a look
    // at the window never meets half a frame.
    m_drawing = m_size.x > 0 && m_size.y > 0 ? HostImage::create(m_size) : nullptr;
    out = m_drawing;
    return static_cast<bool>(out);
}

void Headless::VideoChildWindow::takeFinishedFrame()
{
    // A renderer holds its image locked while it lives: locked once and free
    // again means the frame has been drawn and its renderer released.
    if (m_drawing && m_drawing->hasBeenLocked() && !m_drawing->isLocked()) {
        m_shown = m_drawing;
        m_drawing = nullptr;
    }
}

void Headless::VideoChildWindow::setVisible(bool visible)
{
    ++m_set_visible_calls;
    m_visible = visible;
}

void Headless::VideoChildWindow::setArea(XY<int> position, XY<int> size)
{
    m_position = position;
    std::lock_guard guard(m_mutex);
    m_size = size;
}

void Headless::VideoChildWindow::setOverlay(const ImageDescriptionEx& overlay)
{
    ++m_overlay_calls;
    m_overlay = overlay;
}

void Headless::VideoChildWindow::composeOnto(const Qv::Ptr<HostImage>& frame)
{
    if (!m_visible || !frame)
        return;
    Qv::Ptr<HostImage> shown;
    XY<int> size;
    {
        std::lock_guard guard(m_mutex);
        takeFinishedFrame();
        shown = m_shown;
        size = m_size;
    }
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!frame->getRenderer(renderer, 1) || !renderer)
        return;
    const TopDownRect area { m_position.x, m_position.y, m_position.x + size.x, m_position.y + size.y };
    Qv::Ptr<iRegion> clip;
    if (m_region) {
        Qv::Ptr<iRegion> window_area;
        services().windowing()->createRegion(window_area, &area, 1);
        Qv::Ptr<iRegion> moved;
        m_region->translated(moved, m_position.x, m_position.y);
        if (moved)
            moved->intersected(clip, window_area);
        if (!clip)
            return;   // a shape outside its own window shows nothing
    }
    else
        services().windowing()->createRegion(clip, &area, 1);
    renderer->setClip(clip);
    if (shown) {
        const ImageDescription video(shown, m_position, false);
        renderer->drawImages(&video, 1);
    }
    if (m_overlay.image) {
        ImageDescriptionEx overlay = m_overlay;
        overlay.destRect = Qv::Rectangle<float> { m_overlay.destRect.left + m_position.x,
                                                  m_overlay.destRect.top + m_position.y,
                                                  m_overlay.destRect.right + m_position.x,
                                                  m_overlay.destRect.bottom + m_position.y };
        renderer->drawImagesEx(&overlay, 1);
    }
}
