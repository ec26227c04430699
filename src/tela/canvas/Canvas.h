#pragma once
// Canvas: a rectangular or shaped area of the user interface, one node of the
// tree of a root window. Free functions (CanvasTree.h, CanvasWalk.h) treat
// `Canvas*` as a plain handle; a canvas is counted only so the rest of the
// library can hold it uniformly, and tela_deletecanvas destroys it outright.
//
// Coordinates: `matrix` maps canvas space (bottom-up) to root space; `shape`
// and the other regions are in window coordinates (top-down) over the whole
// root window.

#include "tela/core/CriticalSection.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/events/EventTypes.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iRootWindow.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/SurroundParams.h"

#include <cstdint>
#include <functional>

class CanvasClient;
namespace Tela {
class FontDesc;
}

class Canvas : public iObject {
public:
    enum DrawMethod : std::int32_t {
        eBuffered = 0,   // painted from offscreenBuffer
        eUnbuffered = 1, // the client's drawUnbuffered paints it
    };

    // APPLICATION_ROOT marks the root the application frame made for its
    // window: the frame ends it, and deleting it from elsewhere is reported.
    enum : std::uint32_t { KEEP_TOPMOST = 1u, APPLICATION_ROOT = 2u };
    static constexpr std::uint32_t DEFAULT_INTEREST = EventType::MOUSE_CLASS;

    // Connects to `parent` just above its highest child that is not
    // keep-topmost, and shares the parent's window. The flag has no effect.
    Canvas(CanvasClient* client, Canvas* parent, bool unused = false);
    // Member-wise, with the usual counting of the Ptr members.
    Canvas(const Canvas& other);
    Canvas& operator=(const Canvas& other);
    ~Canvas() override;

    virtual void handleMouseContainment(bool contained);

    // Draws the canvas from its buffer into a composited frame.
    void display(Qv::Ptr<iGraphicPrimitivesRenderer>& renderer);

    // Sets every field to its default and takes a fresh serial number.
    void init();

    bool isRoot() const { return parent == nullptr; }
    Canvas* getRootParent() const;

    // Geometry: from the bounding box of `shape`, or from the translation of
    // `matrix` for the position.
    XY<int> getPosition() const;
    int getX() const { return getPosition().x; }
    int getY() const { return getPosition().y; }
    static int getX(const Canvas* canvas) { return canvas ? canvas->getX() : 0; }
    static int getY(const Canvas* canvas) { return canvas ? canvas->getY() : 0; }
    XY<int> getDimensions() const;
    int getWidth() const { return getDimensions().x; }
    int getHeight() const { return getDimensions().y; }

    // A point in bottom-up screen coordinates; false without a shape.
    bool isContained(const XY<int>& position) const;
    bool isOpaque() const { return !useAlphaChannel && opacity >= 1.0; }
    bool isOpaqueAt(const XY<int>& position) const;

    // The shape's bounding box turned bottom-up in the root's coordinates.
    Qv::Box<int> getExtents() const;

    // Heavyweight canvases own a buffer; a lightweight one draws into its
    // nearest heavyweight ancestor's, which getDrawCanvas returns.
    Canvas* getDrawCanvas();
    XY<int> getDrawOffset();

    // A buffer of `size` made through the window; the old pixels are not kept.
    void reshape(const XY<int>& size);
    // Raw move of this canvas and its subtree; marks nothing.
    void translate(short dx, short dy);

    Qv::Ptr<iGraphicPrimitivesRenderer> getOSRenderer(); // made on first need, kept
    void releaseRenderers();
    Qv::Ptr<iImage> getOffscreenBuffer() const { return offscreenBuffer; }
    iImageBase::eLocation getOffscreenBufferLocation() const;
    Qv::Ptr<iPixelGuard> lockPixels();
    Qv::Ptr<iRootWindow> getWindow() const { return window; }
    // The table's font for `desc`, made through this canvas's window.
    Qv::Ptr<iFont> createFont(const Tela::FontDesc& desc);

    // The last computed visible part: read and stored under `lock`, since a
    // video thread's render target reads it while the main thread recomputes.
    Qv::Ptr<iRegion> visibleRegion() const;
    void visibleRegion(const Qv::Ptr<iRegion>& region);
    // Damage not yet shown; main thread only, so no lock.
    const Qv::Ptr<iRegion>& updateRegion() const { return m_updateRegion; }
    void updateRegion(const Qv::Ptr<iRegion>& region) { m_updateRegion = region; }

    // The deepest canvas under a point, starting below this one (see Picking.h).
    Canvas* pick(const XY<int>& position);
    Canvas* pick(const XY<int>& position, std::function<bool(Canvas*)> accept);

    void shape(const Qv::Ptr<iRegion>& region); // stores; marks nothing
    const Qv::Ptr<iRegion>& shape() const { return m_shape; }

    void setUseAlphaChannel(bool use) { useAlphaChannel = use; }
    bool getUseAlphaChannel() const { return useAlphaChannel; }
    void setPickable(bool value) { pickable = value; }
    bool getPickable() const { return pickable; }
    void setOpacity(double value) { opacity = value; }
    double getOpacity() const { return opacity; }
    void setDrawMethod(DrawMethod method) { drawMethod = method; }
    DrawMethod getDrawMethod() const { return drawMethod; }
    // Stores the shadow band; nothing is marked dirty, so it shows from the next frame.
    void setEdgeEffect(const SurroundParams& params) { edgeEffect = params; }
    const SurroundParams& getEdgeEffect() const { return edgeEffect; }
    // Draws the band outside the shape into a composited frame, as one batch of
    // shader rectangles cut to the root window; leaves the renderer unclipped.
    void renderEdgeEffects(Qv::Ptr<iGraphicPrimitivesRenderer>& renderer);

    // Drawing brackets, forwarded to the embedded renderer; nested pairs
    // flush only at the outermost end.
    // The renderer every drawing on this canvas goes through.
    CanvasRenderer& getRenderer() { return renderer; }
    // The canvas's lock, held while its buffer or visible region is read from
    // another thread (a video frame composited into it).
    void lock() { m_lock.enter(); }
    void unlock() { m_lock.leave(); }
    void beginRender() { renderer.beginRender(this); }
    void endRender() { renderer.endRender(); }

    // Any thread: tells watchers (the video window) that the canvas changed.
    void incRevision();
    std::int32_t getRevision() const { return revision; }

    Canvas* parent = nullptr;
    Canvas* youngestChild = nullptr;  // top of the stack
    Canvas* oldestChild = nullptr;    // bottom of the stack
    Canvas* youngerSibling = nullptr; // towards the top
    Canvas* olderSibling = nullptr;   // towards the bottom
    std::int32_t childCount = 0;
    std::int32_t id = 0;
    std::int32_t mapped = 1;
    std::int32_t lightweight = 0;
    double matrix[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    double inverseMatrix[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    std::int32_t dirty = 0;
    std::uint32_t canvasFlags = 0;
    std::uint32_t interest = DEFAULT_INTEREST;
    CanvasClient* client = nullptr;
    std::int32_t stickyId = -1;
    std::uint32_t lastTimerEventTime = 0;
    Qv::Ptr<iImage> offscreenBuffer;
    Qv::Ptr<iGraphicPrimitivesRenderer> osRenderer;
    Qv::Ptr<iRootWindow> window;

private:
    bool hasOffscreenBuffer(const XY<int>& size);
    // translate, visiting at most `budget` canvases: a loop ends there.
    void translateWithin(short dx, short dy, int& budget);

    Qv::Ptr<iRegion> m_shape;

public:
    // The accessor pairs above, and lock(), carry these fields' names, so the
    // fields take the m_ prefix; order and layout are unchanged.
    Qv::Ptr<iRegion> m_updateRegion;
    Qv::Ptr<iRegion> m_visibleRegion; // guarded by m_lock
    bool pickable = true;
    bool useAlphaChannel = false;
    DrawMethod drawMethod = eBuffered;
    double opacity = 1.0;
    CanvasRenderer renderer;
    SurroundParams edgeEffect;
    mutable CriticalSection m_lock; // guards offscreenBuffer, osRenderer, m_visibleRegion
    std::int32_t revision = 0;
};

// The current canvas of the drawing state. Selecting one reloads the graphics
// state's matrix from the canvas.
Canvas* tela_currentcanvas();
void tela_setcanvas(Canvas* canvas);

// Set while the application shuts down: teardown must not repaint.
void tela_exiting(bool exiting);
bool tela_exiting();

// How many canvases are alive; deletion uses it to notice a corrupt tree.
int tela_live_canvas_count();
