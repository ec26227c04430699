#include "tela/canvas/Canvas.h"

#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/Composition.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/DisplayRoad.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iAtomicsService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Matrix.h"
#include "tela/vector/Regions.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

// Main-thread state of the tree. The serial only grows, so ids in traces are
// never reused within a run.
Canvas* s_current_canvas = nullptr;
std::int32_t s_next_serial = 0;
int s_live_canvases = 0;
bool s_exiting = false;

} // namespace

Canvas::Canvas(CanvasClient* owner, Canvas* parentCanvas, bool)
{
    init();
    client = owner;
    ++s_live_canvases;
    if (parentCanvas) {
        window = parentCanvas->window;
        canvas_connect(this, parentCanvas, canvas_highest_normal_level(parentCanvas) + 1);
    }
}

Canvas::Canvas(const Canvas& other) : Qv::InternalRefCount(other), iVirtual(other), iObject(other)
{
    *this = other;
    ++s_live_canvases;
}

// Member-wise: every field but `lock`, which guards this canvas's own buffer
// and so cannot be shared or copied. The compiler cannot write this for us
// because of that one field, so a field added to Canvas would be dropped here
// without a word: the size below stops the build instead. When it fires, copy
// the new field here (or say here why a copy must not take it), then update
// the number. It is the size on 64-bit Linux with libstdc++, where we build.
#if defined(__LP64__) && defined(__GLIBCXX__)
static_assert(sizeof(Canvas) == 640, "Canvas changed: copy the new field in Canvas::operator=, then update this size");
#endif

Canvas& Canvas::operator=(const Canvas& other)
{
    if (this == &other)
        return *this;
    canvupd_tree_changed();
    parent = other.parent;
    youngestChild = other.youngestChild;
    oldestChild = other.oldestChild;
    youngerSibling = other.youngerSibling;
    olderSibling = other.olderSibling;
    childCount = other.childCount;
    id = other.id;
    mapped = other.mapped;
    lightweight = other.lightweight;
    std::memcpy(matrix, other.matrix, sizeof matrix);
    std::memcpy(inverseMatrix, other.inverseMatrix, sizeof inverseMatrix);
    dirty = other.dirty;
    canvasFlags = other.canvasFlags;
    interest = other.interest;
    client = other.client;
    stickyId = other.stickyId;
    lastTimerEventTime = other.lastTimerEventTime;
    offscreenBuffer = other.offscreenBuffer;
    osRenderer = other.osRenderer;
    window = other.window;
    m_shape = other.m_shape;
    m_updateRegion = other.m_updateRegion;
    m_visibleRegion = other.m_visibleRegion;
    pickable = other.pickable;
    useAlphaChannel = other.useAlphaChannel;
    drawMethod = other.drawMethod;
    opacity = other.opacity;
    renderer = other.renderer;
    // The copy's renderer still points at the original and its draw canvas; what
    // the original drew is the original's to report, and a copy outliving it must
    // never flush against a canvas that is gone.
    renderer.clear();
    edgeEffect = other.edgeEffect;
    revision = other.revision;
    return *this;
}

Canvas::~Canvas()
{
    // Nothing may be reported for a canvas that is going away.
    renderer.clear();
    --s_live_canvases;
    canvupd_tree_changed();
}

void Canvas::init()
{
    canvupd_tree_changed();
    parent = youngestChild = oldestChild = youngerSibling = olderSibling = nullptr;
    childCount = 0;
    id = ++s_next_serial;
    mapped = 1;
    lightweight = 0;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            matrix[row][column] = inverseMatrix[row][column] = row == column ? 1.0 : 0.0;
    dirty = 0;
    canvasFlags = 0;
    interest = DEFAULT_INTEREST;
    client = nullptr;
    stickyId = -1;
    lastTimerEventTime = 0;
    offscreenBuffer = nullptr;
    osRenderer = nullptr;
    window = nullptr;
    m_shape = nullptr;
    m_updateRegion = nullptr;
    m_visibleRegion = nullptr;
    pickable = true;
    useAlphaChannel = false;
    drawMethod = eBuffered;
    opacity = 1.0;
    edgeEffect = SurroundParams();
    revision = 0;
}

void Canvas::handleMouseContainment(bool contained)
{
    if (client)
        client->handleMouseContainment(contained);
}

Canvas* Canvas::getRootParent() const
{
    // In a loop there is no root: the walk stops at the bound, on a canvas
    // that no root window knows, so nothing is drawn for it.
    const Canvas* canvas = this;
    int steps_left = canvas_walk_limit();
    while (canvas->parent && steps_left-- > 0)
        canvas = canvas->parent;
    return const_cast<Canvas*>(canvas);
}

XY<int> Canvas::getPosition() const
{
    Canvas* first_root = tela_rootcanvas();
    if (!first_root || first_root == this || !m_shape)
        return {};
    Qv::Box<int> box;
    m_shape->getBox(box);
    return {box.x1, box.y1};
}

XY<int> Canvas::getDimensions() const
{
    if (!m_shape)
        return {};
    Qv::Box<int> box;
    m_shape->getBox(box);
    return {std::abs(box.x2 - box.x1), std::abs(box.y2 - box.y1)};
}

bool Canvas::isContained(const XY<int>& position) const
{
    if (!m_shape)
        return false;
    const XY<int> window_point(position.x, telaScreenYTowin32ScreenY(getRootParent(), position.y));
    return m_shape->contains(window_point);
}

bool Canvas::isOpaqueAt(const XY<int>& position) const
{
    return !client || client->isOpaqueAt(position);
}

void Canvas::shape(const Qv::Ptr<iRegion>& region)
{
    // Counted even for the same region: a caller may have moved it in place.
    canvupd_tree_changed();
    if (region.get() != m_shape.get())
        m_shape = region;
}

void Canvas::incRevision()
{
    OS()->atomics()->atomicIncrement(&revision);
}

Canvas* tela_currentcanvas()
{
    return s_current_canvas;
}

void tela_setcanvas(Canvas* canvas)
{
    s_current_canvas = canvas;
    if (canvas)
        CTM_update(canvas->matrix);
}

void tela_exiting(bool exiting)
{
    s_exiting = exiting;
}

bool tela_exiting()
{
    return s_exiting;
}

int tela_live_canvas_count()
{
    return s_live_canvases;
}

Qv::Box<int> Canvas::getExtents() const
{
    return Tela::getExtentsQV(getRootParent(), m_shape);
}

Canvas* Canvas::getDrawCanvas()
{
    return canvdraw_canvas(this);
}

XY<int> Canvas::getDrawOffset()
{
    return telaLightweightCanvasOffset(this, 0);
}

bool Canvas::hasOffscreenBuffer(const XY<int>& size)
{
    CriticalSection::Guard guard(m_lock);
    if (!offscreenBuffer)
        return false;
    XY<int> current;
    offscreenBuffer->getSize(current);
    return current == size;
}

void Canvas::reshape(const XY<int>& size)
{
    if (lightweight || hasOffscreenBuffer(size) || !window)
        return;
    // Made outside the lock: the window may take its time.
    Qv::Ptr<iImage> image;
    window->createOffscreenImage(image, size);
    CriticalSection::Guard guard(m_lock);
    osRenderer = nullptr;
    offscreenBuffer = image;
}

void Canvas::translate(short dx, short dy)
{
    int budget = canvas_walk_limit();
    translateWithin(dx, dy, budget);
}

void Canvas::translateWithin(short dx, short dy, int& budget)
{
    if ((dx == 0 && dy == 0) || budget-- <= 0)
        return;
    matrix[0][2] += dx;
    matrix[1][2] += dy;
    double inverse[3][3];
    if (mat3_inv(matrix, inverse))
        std::memcpy(inverseMatrix, inverse, sizeof inverse);
    if (m_shape) {
        m_shape->translateInPlace(dx, -dy);
        canvupd_tree_changed();
        osRenderer = nullptr;
        // The origin in the draw canvas has moved with the shape: bind again.
        if (renderer.getCanvas())
            renderer.setCanvas(renderer.getCanvas());
    }
    for (Canvas* child = youngestChild; child; child = child->olderSibling)
        child->translateWithin(dx, dy, budget);
}

Qv::Ptr<iGraphicPrimitivesRenderer> Canvas::getOSRenderer()
{
    if (!osRenderer && offscreenBuffer)
        offscreenBuffer->getRenderer(osRenderer, 1);
    return osRenderer;
}

void Canvas::releaseRenderers()
{
    osRenderer = nullptr;
    renderer.setCanvas(nullptr);
}

iImageBase::eLocation Canvas::getOffscreenBufferLocation() const
{
    return tela_image_location(tela_display_road(this));
}

Qv::Ptr<iPixelGuard> Canvas::lockPixels()
{
    if (!offscreenBuffer || offscreenBuffer->location() != iImageBase::eHostMemory)
        return nullptr;
    return offscreenBuffer->lock();
}

Qv::Ptr<iRegion> Canvas::visibleRegion() const
{
    CriticalSection::Guard guard(m_lock);
    return m_visibleRegion;
}

void Canvas::visibleRegion(const Qv::Ptr<iRegion>& region)
{
    CriticalSection::Guard guard(m_lock);
    m_visibleRegion = region;
}

void Canvas::display(Qv::Ptr<iGraphicPrimitivesRenderer>& target)
{
    if (!m_shape)
        return;
    if (client && client->display(target))
        return; // the client painted itself
    tela_compose_canvas(this, target, XY<int>(0, 0), DisplayRoad::Composited);
}
