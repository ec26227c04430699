#pragma once
// VideoWindow: moving pictures inside a canvas. Start with create(), then draw
// each frame with display(), or with getRenderTarget() for drawing of your own.
//
// Two roads, the display mode:
// - eChildWindow (0): a native child window lies over the canvas and takes the
//   frames itself. Canvases in front of the video cut its shape; a window that
//   cannot be shaped gets an overlay instead, a picture of what covers the video
//   taken from those canvases' pixels. A video covered all over is hidden.
// - eComposited (1, and any other non-zero value when drawing): frames go into
//   an image of the video's size, then into the canvas's own buffer, and the
//   canvas shows them as it shows anything else.
//
// Threads: getRenderTarget() and display() may run on a video thread while the
// main thread works on the canvas tree; everything else is the main thread's.
// - `lock` guards the child window and the state the frames read; it is taken
//   before a canvas's lock, never after one.
// - A RenderTarget holds its canvas's lock for its life: take one per frame and
//   let it go; never keep one.
// - Only the main thread reads the canvas tree. A frame from another thread uses
//   the shape last worked out and asks the main thread, through the event queue,
//   to check the shape again and to show a composited frame; requests from many
//   frames fold into one.
// - The canvas must outlive the video window; stop drawing, or destroy() the
//   window, before deleting the canvas.

#include "tela/core/CriticalSection.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iVideoChildWindow.h"

#include <cstdint>
#include <utility>

class Canvas;

namespace Tela {

class VideoWindowRequests;

// The handle through which one frame is drawn, on either road.
class iRenderTarget : public iObject {
public:
    // Null when there is nothing to draw into: the frame is dropped.
    virtual Qv::Ptr<iGraphicPrimitivesRenderer> getRenderer() = 0;
    // Of the image drawn into; (0, 0) without one.
    virtual XY<int> getSize() = 0;
};

class RenderTarget : public iRenderTarget {
public:
    // Locks `canvas` (null on the child-window road) until destruction.
    explicit RenderTarget(Canvas* canvas);
    // With a canvas, draws the image into it at destRect's corner, cut to the
    // canvas's shape; then unlocks it and lets the image go.
    ~RenderTarget() override;
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    Qv::Ptr<iGraphicPrimitivesRenderer> getRenderer() override;   // made on first call, kept
    XY<int> getSize() override;

    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    Qv::Ptr<iImage> image;
    Canvas* canvas = nullptr;
    Qv::Rectangle<int> destRect;

private:
    friend class VideoWindow;
    // Set by the video window, so that a frame from another thread never reads
    // the tree: the canvas whose buffer takes the frame, and the canvas's shape
    // in that buffer's coordinates. Left null, the main thread works them out.
    Canvas* m_drawCanvas = nullptr;
    Qv::Ptr<iRegion> m_clip;
    Qv::Ptr<VideoWindowRequests> m_requests;   // told of a frame drawn off the main thread
};

class VideoWindow : public virtual Qv::InternalRefCount, public virtual iVirtual {
public:
    enum eDisplayMode : std::int32_t { eChildWindow = 0, eComposited = 1 };

    VideoWindow();
    // Gives a remaining child window to the deferred releases.
    ~VideoWindow() override;
    // A child window has one owner.
    VideoWindow(const VideoWindow&) = delete;
    VideoWindow& operator=(const VideoWindow&) = delete;

    // Lifetime
    // Shows the video over `box` of `canvas` (bottom-up canvas coordinates). Mode
    // eChildWindow makes the child window when there is none yet.
    void create(Canvas* canvas, const Qv::Box<int>& box, eDisplayMode mode);
    // Releases the child window at once; main thread.
    void destroy();
    bool valid() const;   // a child window exists

    // Settings: main thread
    void setVisible(bool visible);   // straight to the child window, if any
    // The video moves to `box` of the canvas; the shape is worked out again.
    void setCanvasArea(const Qv::Box<int>& box);
    // eComposited lets the child window go; any other value makes one if there
    // is none. The value is stored as given: 2 thus makes a child window, yet
    // frames are composited.
    void setDisplayMode(eDisplayMode mode);

    // Queries
    XY<int> getSize();
    XY<int> getPhysicalSize();   // the same as getSize

    // Frames: any thread
    // The target of the next frame, null only when out of memory; it may have no
    // image, and then no renderer, when nothing of the video shows.
    Qv::Ptr<iRenderTarget> getRenderTarget();
    // Draws `frame` scaled to the video's size, and shows it.
    void display(const Qv::Ptr<iGPUImage>& frame);

    Qv::Ptr<iVideoChildWindow> childWindow;
    Canvas* canvas = nullptr;
    Canvas* drawCanvas = nullptr;
    std::uint32_t clipRegionId = 0;
    Qv::Vector<std::pair<Canvas*, int>> canvasRevisions;
    bool hidden = false;
    Qv::Rectangle<int> rootRect;     // the video in root (window) coordinates
    Qv::Rectangle<int> windowRect;   // the video in the draw canvas's buffer
    Qv::Ptr<iObject> m_spare;        // copied with nothing now; kept for layout
    eDisplayMode displayMode = eChildWindow;
    CriticalSection lock;

private:
    friend class VideoWindowRequests;

    Qv::Ptr<iRegion> calcClippingRegion();
    void setupClippingRegion(const Qv::Ptr<iRegion>& region);
    bool hasClippingRegionChanged(const Qv::Ptr<iRegion>& region);
    void getCanvasRevisions(Qv::Vector<std::pair<Canvas*, int>>& out);
    void setCanvasArea(const Qv::Rectangle<int>& rect);

    void makeChildWindow();
    Qv::Ptr<iImage> buildOverlayImage(const Qv::Ptr<iRegion>& covered, const Qv::Box<int>& box);
    // Main thread, under `lock`: what a composited frame from another thread uses.
    void refreshCompositeSnapshot();
    // Main thread: the work frames from other threads asked for (a bit set).
    void serviceRequests(unsigned requests);

    Qv::Ptr<VideoWindowRequests> m_requests;
    Canvas* m_compositeCanvas = nullptr;   // guarded by `lock`
    Qv::Ptr<iRegion> m_compositeClip;      // guarded by `lock`
};

} // namespace Tela
