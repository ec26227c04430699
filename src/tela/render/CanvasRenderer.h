#pragma once
// CanvasRenderer: how retained drawing of a canvas reaches the platform's
// renderer. Every canvas embeds one (Canvas::renderer, bracketed by
// Canvas::beginRender/endRender); helpers make short-lived ones on the stack.
//
// - It binds a canvas to the renderer of the canvas that owns the pixels (the
//   draw canvas: the canvas itself, or its nearest heavyweight ancestor), and
//   holds the clip: the canvas's shape, cut by lightweight ancestors and by
//   clipRect when that has an area.
// - Descriptions come in canvas coordinates (y upward) and go out top-down,
//   flipped against `origin`, the canvas's lower-left corner in the draw
//   canvas's pixels.
// - What was drawn through the render guard is kept as modified areas (one
//   growing box while coalescing) and handed to update tracking by flush(): at
//   the outermost endRender, on a change of canvas, and on destruction.
// - Without a canvas that is mapped, shaped and buffered there is no renderer:
//   canDraw() is false and every primitive is a no-op.
// Main thread only.

#include "tela/canvas/Coordinates.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iShaderEffect.h"
#include "tela/render/Descriptions.h"

#include <algorithm>
#include <cstdint>

class Canvas;

class CanvasRenderer {
public:
    // Lifetime
    CanvasRenderer();                                           // no canvas, no clip box
    CanvasRenderer(Canvas* canvas, const Qv::Box<int>& clip);   // stores clip, then setCanvas
    CanvasRenderer(const CanvasRenderer& other);                // every field, pending areas too
    CanvasRenderer& operator=(const CanvasRenderer& other);
    ~CanvasRenderer();                                          // flush()

    // Brackets; only the outermost endRender flushes and lets the renderer go.
    void beginRender(Canvas* canvas);
    void endRender();
    bool isRendering() const { return renderDepth > 0; }

    // Binding. A different canvas first flushes what was drawn on the old one.
    void setCanvas(Canvas* canvas);
    Canvas* getCanvas() const { return canvas; }
    // The sum of the shape identities from the canvas up to the root (the root's
    // own excluded): it changes when any shape on the way changes.
    std::uint32_t getCanvasID() const;
    // A box in canvas coordinates; all zero means the canvas's whole shape.
    void setClipRect(const Qv::Box<int>& box);
    const Qv::Box<int>& getClipRect() const { return clipRect; }

    // The draw canvas's renderer, fetched on first need; null when there is none.
    Qv::Ptr<iGraphicPrimitivesRenderer> getOSRenderer();
    bool canDraw();
    // The renderer's capability bits; 0 until a renderer has been fetched.
    unsigned getCaps() const;
    void setAntialiasingEnabled(bool enabled);
    bool isAntialiasingEnabled() const { return antialiasing; }
    void setUIScale(float scale) { uiScale = scale; }
    // A change flushes first, so areas drawn under the old setting are reported under it.
    void setCoalesceDirtyRegions(bool coalesce);

    // Damage
    void addModifiedArea(const Qv::Box<int>& box);
    void clear();   // forgets the modified areas without reporting them
    void flush();   // reports them to update tracking when the canvas can show them

    // The box in renderer coordinates, normalised.
    TopDownRect makeTopDownRect(const Qv::Box<int>& box) const;

    // Drawing: straight to the renderer, no clipping against clipRect and no
    // damage recorded. Draw through render() for both.
    void renderPrimitive(const Tela::RectDescription& description);
    void renderPrimitive(const Tela::AlphaRectDescription& description);
    void renderPrimitive(const Tela::EllipseDescription& description);
    void renderPrimitive(const Tela::RoundedRectDescription& description);
    void renderPrimitive(const Tela::LineDescription& description);
    void renderPrimitive(const Tela::LineStripDescription& description);
    void renderPrimitive(const Tela::BezierCurveDescription& description);
    void renderPrimitive(const Tela::ImageDescription& description);
    // Returns the pen position behind the text on its baseline; (0, 0) when
    // nothing could be drawn.
    XY<int> renderPrimitive(const Tela::TextDescription& description);

    // The guard: nothing while no clip is computed; otherwise the description's
    // extents clipped to clipRect, drawn and recorded when an area remains.
    template <typename Description>
    void render(const Description& description);

    // Bytes 0, 1 and 2 of `packed` as red, green and blue, opaque.
    static NormalisedRGB makeGenericColour(int packed);

    // Shaded ellipses and rounded rectangles, on renderers that offer shaders.
    bool canUseShaderFor(const Tela::EllipseDescription& description) const;
    bool canUseShaderFor(const Tela::RoundedRectDescription& description) const;
    void initShaders();

    // A one-shot diagnostic: when armed, writes the draw canvas's pixels, made
    // opaque, to "Canvas.png" in the user's pictures folder, and disarms.
    // Nothing in the library arms it.
    void saveCanvasImage();
    static void armCanvasImageSave();

protected:
    ::RectDescription convert(const Tela::RectDescription& description) const;
    ::AlphaRectDescription convert(const Tela::AlphaRectDescription& description) const;
    ::EllipseDescription convert(const Tela::EllipseDescription& description) const;
    ::RoundedRectDescription convert(const Tela::RoundedRectDescription& description) const;
    ::LineDescription convert(const Tela::LineDescription& description) const;
    ::LineStripDescription convert(const Tela::LineStripDescription& description) const;
    ::BezierCurveDescription convert(const Tela::BezierCurveDescription& description) const;
    ::ImageDescription convert(const Tela::ImageDescription& description) const;
    ::TextDescription convert(const Tela::TextDescription& description) const;

    void updateCanvasDirtyRegion();

private:
    XY<int> mapPoint(int x, int y) const;
    void renderShaded(const Tela::EllipseDescription& description);
    void renderShaded(const Tela::RoundedRectDescription& description);

public:
    // The fields, in their fixed order.
    Qv::Ptr<iGraphicPrimitivesRenderer> osRenderer;
    Qv::Ptr<iShaderEffect> roundedRectShader;
    Qv::Ptr<iShaderEffect> ellipseShader;
    Canvas* canvas = nullptr;
    Canvas* drawCanvas = nullptr;
    Qv::Box<int> clipRect;
    Qv::Ptr<iRegion> clipRegion;
    XY<int> origin;
    Tela::CoordinateSystem coordinateSystem = Tela::eBottomUp;   // bottom-up: y flipped against origin
    bool antialiasing = true;
    bool valid = false;
    bool coalesceDirtyRegions = true;
    Qv::Vector<Qv::Box<int>> modifiedAreas;
    std::uint32_t canvasId = 0;
    std::int32_t renderDepth = 0;
    float uiScale = 1.0f;
};

// Once a primitive, so defined here.
inline void CanvasRenderer::addModifiedArea(const Qv::Box<int>& box)
{
    if (!coalesceDirtyRegions || modifiedAreas.empty()) {
        modifiedAreas.push_back(box);
        return;
    }
    Qv::Box<int>& first = modifiedAreas.front();
    first.x1 = std::min({first.x1, box.x1, box.x2});
    first.y1 = std::min({first.y1, box.y1, box.y2});
    first.x2 = std::max({first.x2, box.x1, box.x2});
    first.y2 = std::max({first.y2, box.y1, box.y2});
}

template <typename Description>
void CanvasRenderer::render(const Description& description)
{
    if (!valid)
        return;
    // A box given back to front is drawn: the conversion puts its corners in
    // order, and the helpers' pieces of a box smaller than their steps come
    // out that way. Only one of no width or height, or one that misses the
    // clip box, is left out.
    Qv::Box<int> extents = description.getExtents().ordered();
    if (clipRect.width() != 0 && clipRect.height() != 0)
        extents.intersect(clipRect.ordered());
    if (extents.isEmpty())
        return;
    renderPrimitive(description);
    addModifiedArea(extents);
}
