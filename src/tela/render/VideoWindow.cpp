// VideoWindow.cpp: the two roads of a video and the shape of its child window.
//
// Invariants
// - `hidden` is true exactly while the child window has been hidden by the shape
//   work below (nothing of the video shows); setVisible(false) went out once
//   when it turned true and setVisible(true) once when it turned false.
// - clipRegionId is the identity of the last visible region the shape was made
//   from; canvasRevisions the younger siblings over the video, with their
//   revisions, when that shape was made (kept for windows without a shape).
// - Every field a frame reads is changed under `lock` only; the tree is read on
//   the main thread only (see the header).
#include "tela/render/VideoWindow.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/PixelCopy.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Threads.h"
#include "tela/events/Deferred.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/OS.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/iWindowingService.h"
#include "tela/vector/Regions.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace Tela {

// What frames on other threads ask of the main thread. Counted, so that a visit
// queued before the window goes finds `window` null instead of a freed window.
class VideoWindowRequests final : public iObject {
public:
    enum : unsigned { CHECK_SHAPE = 1u, SHOW_FRAME = 2u };

    explicit VideoWindowRequests(VideoWindow* owner) : window(owner) {}

    // Any thread. One visit is queued at a time; later requests join it.
    void post(unsigned request)
    {
        if (m_pending.fetch_or(request) != 0)
            return;
        const Qv::Ptr<VideoWindowRequests> self = Qv::Ptr<VideoWindowRequests>::fromParts(refCountKey(), this);
        defer([self] {
            const unsigned requests = self->m_pending.exchange(0);
            if (self->window)
                self->window->serviceRequests(requests);
        });
    }

    VideoWindow* window;   // main thread only

private:
    std::atomic<unsigned> m_pending { 0 };
};

} // namespace Tela

namespace {

// A root has no buffer: its pixels are the window's own. The conversions to
// buffer pixels hand a point of a canvas without a buffer back as it is,
// bottom-up, so a video on the root (or on a lightweight canvas drawing into
// it) is flipped here through the root's height instead.
bool draws_into_window(Canvas* canvas)
{
    Canvas* draw = canvas ? canvas->getDrawCanvas() : nullptr;
    return draw && draw->isRoot() && !draw->offscreenBuffer;
}

// The box (bottom-up, in the canvas) in the top-down pixels of the buffer it
// draws into.
Qv::Rectangle<int> window_rect_of(Canvas* canvas, const Qv::Box<int>& box)
{
    if (draws_into_window(canvas)) {
        Canvas* root = canvas->getDrawCanvas();
        const XY<int> offset = canvas->getDrawOffset();
        return Qv::Rectangle<int> { box.x1 + offset.x, telaScreenYTowin32ScreenY(root, box.y2 + offset.y),
                                    box.x2 + offset.x, telaScreenYTowin32ScreenY(root, box.y1 + offset.y) };
    }
    return Qv::Rectangle<int> { telaXToWinX(canvas, box.x1), telaYToWinY(canvas, box.y2, Tela::eBottomUp),
                                telaXToWinX(canvas, box.x2), telaYToWinY(canvas, box.y1, Tela::eBottomUp) };
}

// The same box in the root window's coordinates.
Qv::Rectangle<int> root_rect_of(Canvas* canvas, const Qv::Box<int>& box)
{
    return draws_into_window(canvas) ? window_rect_of(canvas, box) : tela_canvasRectToRootRect(canvas, box);
}

XY<int> size_of(const Qv::Rectangle<int>& rect)
{
    return XY<int>(std::abs(rect.right - rect.left), std::abs(rect.bottom - rect.top));
}

// The canvas's shape cut by its lightweight ancestors: where it may draw in the
// buffer it shares.
RegionPtr drawable_shape(Canvas* canvas)
{
    return canvas ? tela_clip_through_lightweight_chain(canvas->shape(), canvas) : RegionPtr();
}

// The shape in the coordinates of the buffer of `draw`.
RegionPtr in_buffer_of(Canvas* draw, const RegionPtr& region)
{
    return region_translate(region, -Canvas::getX(draw), Canvas::getY(draw));
}

// An image a renderer of the buffer's kind can draw: this platform layer's
// images of either location draw on both, so only host pixels bound for a
// composited buffer cross over.
Qv::Ptr<iImage> wrapGPUImage(const Qv::Ptr<iImage>& image, iImageBase::eLocation target)
{
    if (!image || image->location() == target || target == iImageBase::eHostMemory)
        return image;
    const Qv::Ptr<iHostImage> host = Qv::dynamicCast<iHostImage>(image);
    Qv::Ptr<iGPUImage> gpu;
    if (host)
        OS()->imaging()->toGPUImage(gpu, host);
    return gpu ? Qv::Ptr<iImage>(gpu) : image;
}

// Copies the part `area` (window coordinates) of what `source` shows into
// `target`, whose top-left corner lies at `corner` of the window.
void copy_canvas_pixels(Canvas* source, const RegionPtr& area, iImage& target, const XY<int>& corner)
{
    Canvas* owner = source ? source->getDrawCanvas() : nullptr;
    if (!owner || !owner->shape() || !area)
        return;
    const RegionPtr part = tela_clip_through_lightweight_chain(region_intersect(area, source->shape()), source);
    if (!part)
        return;
    Qv::Box<int> shape;
    owner->shape()->getBox(shape);
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!target.getRenderer(renderer, 1) || !renderer)
        return;
    RegionPtr clip;
    part->translated(clip, -corner.x, -corner.y);
    renderer->setClip(clip);
    CriticalSection::Guard guard(owner->m_lock);
    if (!owner->offscreenBuffer)
        return;
    const ImageDescription copy(owner->offscreenBuffer, XY<int>(shape.x1 - corner.x, shape.y1 - corner.y), false);
    renderer->drawImages(&copy, 1);
}

// Tells update tracking that `canvas` shows a new frame over `root_rect`.
void mark_frame(Canvas* canvas, const Qv::Rectangle<int>& root_rect)
{
    Canvas* draw = canvas ? canvas->getDrawCanvas() : nullptr;
    if (!draw)
        return;
    const RegionPtr shown = region_intersect(drawable_shape(canvas), region_mkrect(root_rect));
    if (!shown)
        return;
    draw->incRevision();
    Tela::UpdateDeferrer show_when_done(nullptr, true);
    const Qv::Box<int> box = Tela::getExtentsQV(draw->getRootParent(), shown);
    canvupd_mark_rect(draw, box.x1, box.y1, box.x2, box.y2);
}

} // namespace

namespace Tela {

// [SECTION] RenderTarget

RenderTarget::RenderTarget(Canvas* target_canvas) : canvas(target_canvas)
{
    if (canvas)
        canvas->lock();
}

RenderTarget::~RenderTarget()
{
    if (canvas) {
        Canvas* draw = m_drawCanvas;
        RegionPtr clip = m_clip;
        if (!draw && isMainThread()) {
            draw = canvas->getDrawCanvas();
            clip = in_buffer_of(draw, drawable_shape(canvas));
        }
        bool drawn = false;
        if (draw && image && clip) {
            // The buffer may be swapped by a reshape on the main thread meanwhile.
            CriticalSection::Guard guard(draw->m_lock);
            const Qv::Ptr<iImage> buffer = draw->offscreenBuffer;
            const Qv::Ptr<iImage> drawable = buffer ? wrapGPUImage(image, buffer->location()) : nullptr;
            // A renderer of its own: the canvas's kept one is the main thread's,
            // and its clip belongs to the canvas's renderer.
            Qv::Ptr<iGraphicPrimitivesRenderer> target;
            if (drawable && buffer->getRenderer(target, 1) && target) {
                target->setClip(clip);
                const ::ImageDescription frame(drawable, XY<int>(destRect.left, destRect.top), false);
                target->drawImages(&frame, 1);
                drawn = true;
            }
        }
        canvas->unlock();
        // The buffer changed behind update tracking's back: the main thread
        // marks the frame's area, so that it is shown.
        if (drawn && m_requests)
            m_requests->post(VideoWindowRequests::SHOW_FRAME);
        else if (drawn && isMainThread())
            mark_frame(canvas, Qv::Rectangle<int> { destRect.left + Canvas::getX(draw), destRect.top + Canvas::getY(draw),
                                                    destRect.right + Canvas::getX(draw),
                                                    destRect.bottom + Canvas::getY(draw) });
    }
    renderer = nullptr;
    image = nullptr;
}

Qv::Ptr<iGraphicPrimitivesRenderer> RenderTarget::getRenderer()
{
    if (image && !renderer)
        image->getRenderer(renderer, 1);
    return renderer;
}

XY<int> RenderTarget::getSize()
{
    XY<int> size;
    if (image)
        image->getSize(size);
    return size;
}

// [SECTION] VideoWindow: lifetime and settings

VideoWindow::VideoWindow() : m_requests(Qv::make<VideoWindowRequests>(this)) {}

VideoWindow::~VideoWindow()
{
    if (m_requests)
        m_requests->window = nullptr;
    CriticalSection::Guard guard(lock);
    tela_defer_release(childWindow);
    childWindow = nullptr;
}

void VideoWindow::create(Canvas* target, const Qv::Box<int>& box, eDisplayMode mode)
{
    CriticalSection::Guard guard(lock);
    canvas = target;
    drawCanvas = canvas ? canvas->getDrawCanvas() : nullptr;
    displayMode = mode;
    windowRect = window_rect_of(canvas, box);
    rootRect = root_rect_of(canvas, box);
    if (mode == eChildWindow && !childWindow)
        makeChildWindow();
    else
        setCanvasArea(box);
    setupClippingRegion(calcClippingRegion());
    refreshCompositeSnapshot();
}

void VideoWindow::makeChildWindow()
{
    if (!canvas || !canvas->getWindow())
        return;
    Qv::Ptr<iVideoChildWindow> window;
    if (OS()->windowing()->createChildWindow(window, canvas->getWindow(), size_of(rootRect),
                                             XY<int>(rootRect.left, rootRect.top)))
        childWindow = window;
}

void VideoWindow::destroy()
{
    CriticalSection::Guard guard(lock);
    childWindow = nullptr;
    clipRegionId = 0;
}

bool VideoWindow::valid() const
{
    return static_cast<bool>(childWindow);
}

void VideoWindow::setVisible(bool visible)
{
    CriticalSection::Guard guard(lock);
    if (childWindow)
        childWindow->setVisible(visible);
}

void VideoWindow::setCanvasArea(const Qv::Box<int>& box)
{
    CriticalSection::Guard guard(lock);
    windowRect = window_rect_of(canvas, box);
    setCanvasArea(root_rect_of(canvas, box));
    setupClippingRegion(calcClippingRegion());
    refreshCompositeSnapshot();
}

void VideoWindow::setCanvasArea(const Qv::Rectangle<int>& rect)
{
    rootRect = rect;
    if (childWindow)
        childWindow->setArea(XY<int>(rootRect.left, rootRect.top), size_of(rootRect));
}

void VideoWindow::setDisplayMode(eDisplayMode mode)
{
    CriticalSection::Guard guard(lock);
    if (mode == eComposited) {
        // A frame may be on its way into the window's image: the window lives
        // until the update in progress has been shown.
        tela_defer_release(childWindow);
        childWindow = nullptr;
    }
    else if (!childWindow) {
        makeChildWindow();
    }
    displayMode = mode;
    refreshCompositeSnapshot();
}

XY<int> VideoWindow::getSize()
{
    CriticalSection::Guard guard(lock);
    return size_of(rootRect);
}

XY<int> VideoWindow::getPhysicalSize()
{
    return getSize();
}

// [SECTION] VideoWindow: the child window's shape

Qv::Ptr<iRegion> VideoWindow::calcClippingRegion()
{
    if (!canvas)
        return nullptr;
    const RegionPtr visible = drawCanvas ? drawCanvas->visibleRegion() : RegionPtr();
    if (canvas != drawCanvas && visible) {
        const RegionPtr own = drawable_shape(canvas);
        if (own) {
            Qv::Box<int> own_box, shape_box;
            own->getBox(own_box);
            canvas->shape()->getBox(shape_box);
            if (!(own_box == shape_box))
                return own;
        }
    }
    return visible;
}

void VideoWindow::getCanvasRevisions(Qv::Vector<std::pair<Canvas*, int>>& out)
{
    out.clear();
    const RegionPtr video = region_mkrect(rootRect);
    for (Canvas* sibling = canvas_walk_younger_siblings(drawCanvas, nullptr); sibling;
         sibling = canvas_walk_younger_siblings(drawCanvas, sibling)) {
        if (sibling->shape() && region_bbx_overlap(sibling->shape(), video))
            out.emplace_back(sibling, sibling->getRevision());
    }
}

bool VideoWindow::hasClippingRegionChanged(const Qv::Ptr<iRegion>& region)
{
    if ((region ? region->identity() : 0u) != clipRegionId)
        return true;
    if (childWindow && childWindow->supportsRegions())
        return false;   // a native shape: the region's identity tells all
    Qv::Vector<std::pair<Canvas*, int>> fresh;
    getCanvasRevisions(fresh);
    if (fresh == canvasRevisions)
        return false;
    canvasRevisions = std::move(fresh);
    return true;
}

void VideoWindow::setupClippingRegion(const Qv::Ptr<iRegion>& region)
{
    const bool was_hidden = hidden;
    [&] {
        if (!childWindow || !canvas || canvas->isRoot())
            return;
        hidden = true;
        if (!region)
            return;
        clipRegionId = region->identity();
        const RegionPtr video = region_mkrect(rootRect);
        const RegionPtr shown = region_intersect(region, video);
        if (!shown)
            return;   // nothing of the video shows
        // Null: the whole video shows.
        const RegionPtr shape = region_eq(shown, video) ? RegionPtr() : shown;
        if (childWindow->supportsRegions()) {
            // A copy: the intersection may be the canvas's own visible region.
            RegionPtr relative;
            if (shape)
                shape->translated(relative, -rootRect.left, -rootRect.top);
            childWindow->setRegion(relative);
        }
        else {
            ImageDescriptionEx overlay;
            const RegionPtr covered = shape ? region_subtract(video, shown, true) : RegionPtr();
            if (covered) {
                Qv::Box<int> box;
                covered->getBox(box);
                overlay.image = buildOverlayImage(covered, box);
                overlay.destRect = Qv::Rectangle<float> {
                    static_cast<float>(box.x1 - rootRect.left), static_cast<float>(box.y1 - rootRect.top),
                    static_cast<float>(box.x2 - rootRect.left), static_cast<float>(box.y2 - rootRect.top) };
                overlay.sourceRect = Qv::Rectangle<float> { 0.0f, 0.0f, static_cast<float>(box.x2 - box.x1),
                                                            static_cast<float>(box.y2 - box.y1) };
                overlay.enabled = true;
            }
            childWindow->setOverlay(overlay);
        }
        hidden = false;
    }();
    if (hidden != was_hidden && childWindow)
        childWindow->setVisible(was_hidden);
}

Qv::Ptr<iImage> VideoWindow::buildOverlayImage(const Qv::Ptr<iRegion>& covered, const Qv::Box<int>& box)
{
    const Qv::Ptr<iRootWindow> window = canvas->getWindow();
    Qv::Ptr<iImage> made;
    if (!window || !window->createOffscreenImage(made, XY<int>(box.x2 - box.x1, box.y2 - box.y1)))
        return nullptr;
    const Qv::Ptr<iHostImage> image = Qv::dynamicCast<iHostImage>(made);
    if (!image)
        return nullptr;
    if (const Qv::Ptr<iPixelGuard> pixels = image->lock())
        std::memset(pixels->pixels(), 0, static_cast<std::size_t>(pixels->stride()) * pixels->size().y);
    const XY<int> corner(box.x1, box.y1);
    if (canvas != drawCanvas)
        copy_canvas_pixels(drawCanvas, region_intersect(covered, drawCanvas->visibleRegion()), *image, corner);
    for (Canvas* sibling = canvas_walk_younger_siblings(drawCanvas, nullptr); sibling;
         sibling = canvas_walk_younger_siblings(drawCanvas, sibling)) {
        if (sibling->mapped)   // an unmapped canvas covers nothing
            copy_canvas_pixels(sibling, covered, *image, corner);
    }
    return image;
}

// [SECTION] VideoWindow: frames

void VideoWindow::refreshCompositeSnapshot()
{
    m_compositeCanvas = drawCanvas;
    m_compositeClip = drawCanvas ? in_buffer_of(drawCanvas, drawable_shape(canvas)) : RegionPtr();
}

Qv::Ptr<iRenderTarget> VideoWindow::getRenderTarget()
{
    const bool main_thread = isMainThread();
    bool check_later = false;
    Qv::Ptr<RenderTarget> target;
    {
        CriticalSection::Guard guard(lock);
        target = Qv::make<RenderTarget>(displayMode != eChildWindow ? canvas : nullptr);
        if (!target)
            return nullptr;
        if (displayMode != eChildWindow) {
            const XY<int> size = size_of(rootRect);
            if (canvas && size.x > 0 && size.y > 0)
                OS()->imaging()->createTargetImage(target->image, size, canvas->getOffscreenBufferLocation());
            target->destRect = windowRect;
            if (main_thread)
                refreshCompositeSnapshot();
            target->m_drawCanvas = m_compositeCanvas;
            target->m_clip = m_compositeClip;
            if (!main_thread)
                target->m_requests = m_requests;
        }
        else {
            if (canvas && !canvas->isRoot()) {
                if (main_thread) {
                    const RegionPtr region = calcClippingRegion();
                    if (!region || hasClippingRegionChanged(region))
                        setupClippingRegion(region);
                }
                else
                    check_later = true;
            }
            if (!hidden && childWindow)
                childWindow->getImage(target->image, 1);
        }
    }
    if (check_later)
        m_requests->post(VideoWindowRequests::CHECK_SHAPE);
    return target;
}

void VideoWindow::display(const Qv::Ptr<iGPUImage>& frame)
{
    // Read before the target exists: a composited target holds the canvas's
    // lock, which is never held while `lock` is taken.
    const XY<int> size = getSize();
    const Qv::Ptr<iRenderTarget> target = getRenderTarget();
    if (!target || !frame)
        return;
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = target->getRenderer();
    if (!renderer)
        return;
    XY<int> frame_size;
    frame->getSize(frame_size);
    const ::ImageDescription picture(frame, TopDownRect { 0, 0, size.x, size.y },
                                   TopDownRect { 0, 0, frame_size.x, frame_size.y }, false);
    renderer->drawImages(&picture, 1);
}

void VideoWindow::serviceRequests(unsigned requests)
{
    Canvas* shown_canvas = nullptr;
    Qv::Rectangle<int> shown_rect;
    {
        CriticalSection::Guard guard(lock);
        refreshCompositeSnapshot();
        if ((requests & VideoWindowRequests::CHECK_SHAPE) && displayMode == eChildWindow && canvas &&
            !canvas->isRoot()) {
            const RegionPtr region = calcClippingRegion();
            if (!region || hasClippingRegionChanged(region))
                setupClippingRegion(region);
        }
        if (requests & VideoWindowRequests::SHOW_FRAME) {
            shown_canvas = canvas;
            shown_rect = rootRect;
        }
    }
    // Outside `lock`: showing takes canvases' locks, and may take a while.
    mark_frame(shown_canvas, shown_rect);
}

} // namespace Tela
