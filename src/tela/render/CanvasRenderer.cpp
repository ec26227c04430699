// CanvasRenderer: binding, clip, flip, primitives and damage.
//
// [SECTION] Lifetime and binding
// [SECTION] Clip
// [SECTION] Damage
// [SECTION] Conversion
// [SECTION] Primitives
// [SECTION] Shaded primitives
// [SECTION] Text
// [SECTION] Diagnostics

#include "tela/render/CanvasRenderer.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/CriticalSection.h"
#include "tela/core/Log.h"
#include "tela/platform/ImageLoader.h"
#include "tela/platform/OS.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/iShellService.h"
#include "tela/render/Wrap_private.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include <algorithm>
#include <cstdlib>

namespace {

// Armed by a debugging aid only; saveCanvasImage disarms it.
bool s_save_canvas_image = false;

constexpr unsigned MAX_REPORTED_AREAS = 65535;   // the area count is read as 16 bits
constexpr unsigned MAX_STRIP_SEGMENTS = 65535;   // the pair index is 16 bits
constexpr int BEZIER_POINTS = 21;

bool has_area(const Qv::Box<int>& box)
{
    return box.width() != 0 && box.height() != 0;
}

} // namespace

// [SECTION] Lifetime and binding

CanvasRenderer::CanvasRenderer() : CanvasRenderer(nullptr, Qv::Box<int>{}) {}

CanvasRenderer::CanvasRenderer(Canvas* target, const Qv::Box<int>& clip) : clipRect(clip)
{
    setCanvas(target);
}

CanvasRenderer::CanvasRenderer(const CanvasRenderer& other) = default;
CanvasRenderer& CanvasRenderer::operator=(const CanvasRenderer& other) = default;

CanvasRenderer::~CanvasRenderer()
{
    flush();
}

void CanvasRenderer::beginRender(Canvas* target)
{
    ++renderDepth;
    setCanvas(target);
}

void CanvasRenderer::endRender()
{
    if (renderDepth <= 0) {
        tela_splat("CanvasRenderer::endRender: no beginRender to end");
        return;
    }
    if (renderDepth-- != 1)
        return;
    flush();
    osRenderer = nullptr;
    if (!drawCanvas)
        return;
    // The canvas's own cache is now the last holder: letting it go ends the frame
    // on that surface.
    CriticalSection::Guard guard(drawCanvas->m_lock);
    if (drawCanvas->osRenderer && drawCanvas->osRenderer->refCount() == 1)
        drawCanvas->osRenderer = nullptr;
}

void CanvasRenderer::setCanvas(Canvas* target)
{
    if (target != canvas) {
        flush();
        valid = false;
    }
    Canvas* const old_draw_canvas = drawCanvas;
    canvas = target;
    drawCanvas = nullptr;
    if (canvas && canvas->shape())
        drawCanvas = canvas->getDrawCanvas();
    // A renderer draws into one surface: another draw canvas needs its own.
    if (drawCanvas != old_draw_canvas)
        osRenderer = nullptr;

    if (drawCanvas && drawCanvas->shape() && drawCanvas->offscreenBuffer) {
        origin = telaPosToOSPos(drawCanvas, telaLightweightCanvasOffset(canvas, 0), Tela::eBottomUp);
        coordinateSystem = Tela::eBottomUp;
        if (getCanvasID() != canvasId)
            setClipRect(clipRect);
        if (!valid) {
            canvasId = 0;
            return;
        }
        const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = getOSRenderer();
        if (renderer) {
            renderer->setClip(clipRegion);
            initShaders();
        }
        return;
    }
    if (!valid)
        canvasId = 0;
}

std::uint32_t CanvasRenderer::getCanvasID() const
{
    std::uint32_t id = 0;
    int steps_left = canvas_walk_limit();
    for (const Canvas* c = canvas; c && c->parent && steps_left-- > 0; c = c->parent) {
        if (c->shape())
            id += c->shape()->identity();
    }
    return id;
}

Qv::Ptr<iGraphicPrimitivesRenderer> CanvasRenderer::getOSRenderer()
{
    if (!osRenderer && drawCanvas)
        osRenderer = drawCanvas->getOSRenderer();
    return osRenderer;
}

bool CanvasRenderer::canDraw()
{
    // Asked before every primitive: test the held renderer without copying it.
    if (!osRenderer && drawCanvas)
        osRenderer = drawCanvas->getOSRenderer();
    return static_cast<bool>(osRenderer);
}

unsigned CanvasRenderer::getCaps() const
{
    return osRenderer ? osRenderer->getCaps() : 0u;
}

void CanvasRenderer::setAntialiasingEnabled(bool enabled)
{
    antialiasing = enabled;
    if (const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = getOSRenderer())
        renderer->setAntialiasing(enabled);
}

void CanvasRenderer::setCoalesceDirtyRegions(bool coalesce)
{
    if (coalesce == coalesceDirtyRegions)
        return;
    flush();
    coalesceDirtyRegions = coalesce;
}

// [SECTION] Clip

namespace {

// clipRect in the draw canvas's pixels, top-down.
Qv::Box<int> window_box_of(Canvas* canvas, const Qv::Box<int>& box)
{
    const int left = telaXToWinX(canvas, box.x1);
    const int right = telaXToWinX(canvas, box.x2);
    const int top = telaYToWinY(canvas, box.y2, Tela::eBottomUp);
    const int bottom = telaYToWinY(canvas, box.y1, Tela::eBottomUp);
    return {std::min(left, right), std::min(top, bottom), std::max(left, right), std::max(top, bottom)};
}

RegionPtr region_of(const Qv::Box<int>& window_box)
{
    return region_mkrect(window_box.toTopDownRectUnflipped());
}

} // namespace

void CanvasRenderer::setClipRect(const Qv::Box<int>& box)
{
    clipRegion = nullptr;
    clipRect = box;
    valid = true;
    if (osRenderer)
        osRenderer->setClip(nullptr);
    if (!canvas || !canvas->shape()) {
        valid = false;
        canvasId = 0;
        return;
    }

    if (canvas->lightweight) {
        RegionPtr region = canvas->shape();
        int steps_left = canvas_walk_limit();
        for (Canvas* ancestor = canvas->parent; region && ancestor && ancestor->lightweight && steps_left-- > 0;
             ancestor = ancestor->parent)
            region = region_intersect(region, ancestor->shape());
        if (region) {
            // It is about to move in place: a region someone else holds (the canvas's
            // own shape, or an ancestor's that the intersection handed back) is copied.
            if (region->refCount() > 1)
                region = region_copy(region);
            region->translateInPlace(-Canvas::getX(drawCanvas), -Canvas::getY(drawCanvas));
            if (has_area(clipRect)) {
                const Qv::Box<int> window_box = window_box_of(canvas, clipRect);
                Qv::Box<int> bounds;
                region->getBox(bounds);
                if (!(bounds == window_box))
                    region = region_intersect(region, region_of(window_box));
            }
            if (osRenderer)
                osRenderer->setClip(region);
        }
        clipRegion = region;
    } else {
        // The whole canvas, or all of a rectangular one: no region needed, and a
        // null clip with `valid` set means exactly that.
        if (!has_area(clipRect)) {
            canvasId = getCanvasID();
            return;
        }
        if (clipRect == Qv::Box<int>{0, 0, canvas->getWidth(), canvas->getHeight()} && canvas->shape()->isRectangular()) {
            canvasId = getCanvasID();
            return;
        }
        clipRegion = region_intersect(Tela::screenRegionToCanvasRegion(canvas, canvas->shape(), false),
                                      region_of(window_box_of(canvas, clipRect)));
    }
    valid = static_cast<bool>(clipRegion);
    canvasId = getCanvasID();
}

// [SECTION] Damage

void CanvasRenderer::clear()
{
    modifiedAreas.clear();
}

void CanvasRenderer::flush()
{
    // Nothing to report reads no canvas: a renderer copied from a canvas that has
    // since gone may still be flushed safely once its areas are cleared.
    if (modifiedAreas.empty())
        return;
    if (valid && drawCanvas && drawCanvas->offscreenBuffer)
        updateCanvasDirtyRegion();
}

void CanvasRenderer::updateCanvasDirtyRegion()
{
    if (modifiedAreas.empty() || !drawCanvas)
        return;
    // The areas are in the bound canvas's coordinates; its translation makes them
    // screen coordinates, which update tracking takes.
    const Canvas* const placed = canvas ? canvas : drawCanvas;
    const int px = render_wrap::to_int(placed->matrix[0][2]);
    const int py = render_wrap::to_int(placed->matrix[1][2]);
    const std::size_t count = std::min<std::size_t>(modifiedAreas.size(), MAX_REPORTED_AREAS);
    for (std::size_t index = 0; index < count; ++index) {
        const Qv::Box<int>& area = modifiedAreas[index];
        canvupd_mark_rect(drawCanvas, render_wrap::add(area.x1, px), render_wrap::add(area.y1, py),
                          render_wrap::add(area.x2, px), render_wrap::add(area.y2, py));
    }
    modifiedAreas.clear();
    drawCanvas->incRevision();
}

// [SECTION] Conversion

TopDownRect CanvasRenderer::makeTopDownRect(const Qv::Box<int>& box) const
{
    const int low_y = std::min(box.y1, box.y2);
    const int high_y = std::max(box.y1, box.y2);
    TopDownRect rect;
    rect.left = render_wrap::add(std::min(box.x1, box.x2), origin.x);
    rect.right = render_wrap::add(std::max(box.x1, box.x2), origin.x);
    if (coordinateSystem == Tela::eBottomUp) {
        rect.top = render_wrap::add(origin.y, -static_cast<long long>(high_y));
        rect.bottom = render_wrap::add(origin.y, -static_cast<long long>(low_y));
    } else {
        rect.top = render_wrap::add(high_y, origin.y);
        rect.bottom = render_wrap::add(low_y, origin.y);
    }
    return rect;
}

XY<int> CanvasRenderer::mapPoint(int x, int y) const
{
    const int mapped_y = coordinateSystem == Tela::eBottomUp ? render_wrap::add(origin.y, -static_cast<long long>(y))
                                                             : render_wrap::add(y, origin.y);
    return {render_wrap::add(x, origin.x), mapped_y};
}

NormalisedRGB CanvasRenderer::makeGenericColour(int packed)
{
    return {static_cast<float>((packed & 255) / 255.0), static_cast<float>(((packed >> 8) & 255) / 255.0),
            static_cast<float>(((packed >> 16) & 255) / 255.0), 1.0f};
}

::RectDescription CanvasRenderer::convert(const Tela::RectDescription& description) const
{
    ::RectDescription out;
    out.rect = makeTopDownRect(description.box);
    out.colour = description.colour;
    if (description.twoColours)
        out.secondColour = description.secondColour;
    // An opaque colour replaces whatever the mode: there is nothing to blend.
    if (description.colour.a != 1.0f)
        out.blendMode = description.blendMode;
    out.twoColours = description.twoColours;
    return out;
}

::AlphaRectDescription CanvasRenderer::convert(const Tela::AlphaRectDescription& description) const
{
    ::AlphaRectDescription out;
    out.rect = makeTopDownRect(description.box);
    out.colour = NormalisedRGB(description.colour.r, description.colour.g, description.colour.b, description.alpha);
    out.mode = description.mode;
    return out;
}

::EllipseDescription CanvasRenderer::convert(const Tela::EllipseDescription& description) const
{
    ::EllipseDescription out;
    out.rect = makeTopDownRect(description.box);
    out.style = description.style;
    out.fillColour = description.fillColour;
    out.lineColour = description.lineColour;
    out.thickness = description.thickness;
    out.startAngle = description.startAngle;
    out.endAngle = description.endAngle;
    return out;
}

::RoundedRectDescription CanvasRenderer::convert(const Tela::RoundedRectDescription& description) const
{
    ::RoundedRectDescription out;
    out.rect = makeTopDownRect(description.box);
    out.fillColour = NormalisedRGB(description.fillColour);
    out.lineColour = NormalisedRGB(description.lineColour);
    // At most half the smaller side less one pixel. A box under two pixels gives
    // -1, which as 16 bits is 65535 and so keeps the requested radius: renderers
    // rely on that, so it stays.
    const int limit = std::min(out.rect.width() / 2 - 1, out.rect.height() / 2 - 1);
    out.radius = std::min(static_cast<std::uint16_t>(limit), description.radius);
    out.thickness = description.thickness;
    out.corners = description.corners;
    return out;
}

::LineDescription CanvasRenderer::convert(const Tela::LineDescription& description) const
{
    ::LineDescription out;
    out.start = mapPoint(render_wrap::to_int(description.start.x), render_wrap::to_int(description.start.y));
    out.end = mapPoint(render_wrap::to_int(description.end.x), render_wrap::to_int(description.end.y));
    out.colour = description.colour;
    out.secondColour = description.secondColour;
    out.patterned = description.patterned;
    out.pattern = description.pattern;
    out.thickness = description.thickness;
    return out;
}

::LineStripDescription CanvasRenderer::convert(const Tela::LineStripDescription& description) const
{
    ::LineStripDescription out;
    out.points.reserve(description.points.size());
    // In double precision to the end: a strip's points need not fall on pixels.
    const bool flip = coordinateSystem == Tela::eBottomUp;
    for (const XY<double>& point : description.points) {
        const double x = point.x + origin.x;
        const double y = flip ? origin.y - point.y : origin.y + point.y;
        out.points.push_back(XY<float>(static_cast<float>(x), static_cast<float>(y)));
    }
    out.colour = description.colour;
    out.thickness = description.thickness;
    return out;
}

::BezierCurveDescription CanvasRenderer::convert(const Tela::BezierCurveDescription& description) const
{
    ::BezierCurveDescription out;
    out.start = mapPoint(description.start.x, description.start.y);
    out.end = mapPoint(description.end.x, description.end.y);
    out.control1 = mapPoint(description.control1.x, description.control1.y);
    out.control2 = mapPoint(description.control2.x, description.control2.y);
    out.colour = description.colour;
    out.thickness = description.thickness;
    return out;
}

::ImageDescription CanvasRenderer::convert(const Tela::ImageDescription& description) const
{
    if (!description.image)
        return {};
    ::ImageDescription out;
    out.image = description.image;
    out.destRect = makeTopDownRect(description.destBox);
    XY<int> size;
    description.image->getSize(size);
    const Qv::Box<int>& source = description.sourceBox;
    out.sourceRect = {source.x1, render_wrap::add(size.y, -static_cast<long long>(source.y2)), source.x2,
                      render_wrap::add(size.y, -static_cast<long long>(source.y1))};
    out.blend = description.blend;
    return out;
}

::TextDescription CanvasRenderer::convert(const Tela::TextDescription& description) const
{
    if (!description.font)
        return {};
    ::TextDescription out;
    out.text = description.text;
    // The left end of the baseline: the extents' bottom raised by the descent.
    const int descent = description.font->getMetrics().descent;
    out.position = mapPoint(description.extents.x1, render_wrap::add(description.extents.y1, descent));
    out.colour = description.colour;
    out.secondColour = description.secondColour;
    out.thirdColour = description.thirdColour;
    out.font = description.font;
    out.alignment = TextAlignment{0, 1};   // the extents already hold the alignment
    out.heavy = description.style == eTextHeavy;
    out.selectionStart = std::min(description.selectionStart, description.selectionEnd);
    out.selectionEnd = std::max(description.selectionStart, description.selectionEnd);
    return out;
}

// [SECTION] Primitives

void CanvasRenderer::renderPrimitive(const Tela::RectDescription& description)
{
    if (!canDraw())
        return;
    const ::RectDescription converted = convert(description);
    osRenderer->drawRects(&converted, 1);
}

void CanvasRenderer::renderPrimitive(const Tela::AlphaRectDescription& description)
{
    if (!canDraw())
        return;
    const ::AlphaRectDescription converted = convert(description);
    osRenderer->drawAlphaRects(&converted, 1);
}

void CanvasRenderer::renderPrimitive(const Tela::LineDescription& description)
{
    if (!canDraw())
        return;
    const ::LineDescription converted = convert(description);
    osRenderer->drawLines(&converted, 1);
}

void CanvasRenderer::renderPrimitive(const Tela::ImageDescription& description)
{
    if (!canDraw() || !description.image)
        return;
    const ::ImageDescription converted = convert(description);
    osRenderer->drawImages(&converted, 1);
}

void CanvasRenderer::renderPrimitive(const Tela::LineStripDescription& description)
{
    if (!canDraw())
        return;
    if (getCaps() & iGraphicPrimitivesRenderer::CAP_NATIVE_LINE_STRIPS) {
        const ::LineStripDescription converted = convert(description);
        osRenderer->drawLineStrips(&converted, 1);
        return;
    }
    // One solid segment for each pair of neighbours, all in one call.
    Qv::Vector<::LineDescription> segments;
    const std::size_t pairs = description.points.empty() ? 0 : description.points.size() - 1;
    segments.reserve(std::min<std::size_t>(pairs, MAX_STRIP_SEGMENTS));
    for (std::size_t index = 1; index <= pairs && index <= MAX_STRIP_SEGMENTS; ++index) {
        const XY<double>& from = description.points[index - 1];
        const XY<double>& to = description.points[index];
        ::LineDescription segment;
        segment.start = mapPoint(render_wrap::to_int(from.x), render_wrap::to_int(from.y));
        segment.end = mapPoint(render_wrap::to_int(to.x), render_wrap::to_int(to.y));
        segment.colour = description.colour;
        segment.pattern = 0;
        segment.patterned = false;
        segment.thickness = description.thickness;
        segments.push_back(segment);
    }
    osRenderer->drawLines(segments.data(), static_cast<unsigned>(segments.size()));
}

void CanvasRenderer::renderPrimitive(const Tela::BezierCurveDescription& description)
{
    if (!canDraw())
        return;
    if (getCaps() & iGraphicPrimitivesRenderer::CAP_NATIVE_BEZIERS) {
        const ::BezierCurveDescription converted = convert(description);
        osRenderer->drawBeziers(&converted, 1);
        return;
    }
    Tela::LineStripDescription strip;
    strip.colour = description.colour;
    strip.thickness = description.thickness;
    strip.points.reserve(BEZIER_POINTS);
    for (int step = 0; step < BEZIER_POINTS; ++step) {
        const double t = step * 0.05;
        const double u = 1.0 - t;
        const double w0 = u * u * u;
        const double w1 = 3.0 * u * u * t;
        const double w2 = 3.0 * u * t * t;
        const double w3 = t * t * t;
        strip.points.push_back(XY<double>(
            w0 * description.start.x + w1 * description.control1.x + w2 * description.control2.x + w3 * description.end.x,
            w0 * description.start.y + w1 * description.control1.y + w2 * description.control2.y
                + w3 * description.end.y));
    }
    render(strip);
}

void CanvasRenderer::renderPrimitive(const Tela::EllipseDescription& description)
{
    if (!canDraw())
        return;
    if (!canUseShaderFor(description)) {
        const ::EllipseDescription converted = convert(description);
        osRenderer->drawEllipses(&converted, 1);
        return;
    }
    renderShaded(description);
}

void CanvasRenderer::renderPrimitive(const Tela::RoundedRectDescription& description)
{
    if (!canDraw())
        return;
    if (!canUseShaderFor(description)) {
        const ::RoundedRectDescription converted = convert(description);
        osRenderer->drawRoundedRects(&converted, 1);
        return;
    }
    renderShaded(description);
}

// [SECTION] Shaded primitives

void CanvasRenderer::initShaders()
{
    // Only the rounded rectangle's is tested: once it is found, the ellipse's
    // lookup is not retried.
    if (!(getCaps() & iGraphicPrimitivesRenderer::CAP_SHADERS) || roundedRectShader)
        return;
    roundedRectShader = tela_shader(Tela::Shader::RoundedRectangle);
    ellipseShader = tela_shader(Tela::Shader::Ellipse);
}

bool CanvasRenderer::canUseShaderFor(const Tela::EllipseDescription& description) const
{
    // A partial ellipse is never shaded.
    return ellipseShader && description.startAngle == 0 && description.endAngle == 360;
}

bool CanvasRenderer::canUseShaderFor(const Tela::RoundedRectDescription&) const
{
    return static_cast<bool>(roundedRectShader);
}

namespace {

// The shader rectangle over `rect`, whose one input is the whole of it.
ShaderRectDescription shader_rect(const Qv::Ptr<iShaderEffect>& shader, const TopDownRect& rect)
{
    ShaderRectDescription out;
    out.shader = shader;
    out.active = true;
    out.rect = {static_cast<float>(rect.left), static_cast<float>(rect.top), static_cast<float>(rect.right),
                static_cast<float>(rect.bottom)};
    out.inputs.push_back(ShaderInput(Qv::Ptr<iImage>(),
                                     {0.0f, 0.0f, std::abs(out.rect.width()), std::abs(out.rect.height())}));
    return out;
}

} // namespace

void CanvasRenderer::renderShaded(const Tela::EllipseDescription& description)
{
    // The shader's unit is half the height, whatever the width: the stretch of
    // the rectangle gives the shape, so neither radius nor aspect is sent.
    const float height = static_cast<float>(std::abs(static_cast<long long>(description.box.height())));
    float thickness = static_cast<float>(description.thickness) / height;
    thickness = thickness + thickness;
    const float softness = (uiScale + uiScale) / height;
    ShaderRectDescription shaded = shader_rect(ellipseShader, makeTopDownRect(description.box));
    shaded.addParam("Thickness", thickness);
    shaded.addParam("Softness", softness);
    shaded.addParam("LineColour", description.style > 0 ? description.lineColour : description.fillColour);
    shaded.addParam("FillColour", description.style == Tela::EllipseDescription::eOutline
                                      ? NormalisedRGB(0.0f, 0.0f, 0.0f, 0.0f)
                                      : description.fillColour);
    osRenderer->drawShaderRects(&shaded, 1);
}

void CanvasRenderer::renderShaded(const Tela::RoundedRectDescription& description)
{
    // Equal colours with a thickness draw an outline with a hollow centre.
    const bool filled = description.thickness == 0 || description.fillColour != description.lineColour;
    const float height = static_cast<float>(std::abs(static_cast<long long>(description.box.height())));
    // The radius goes in unreduced. The thickness is a fraction of the corner
    // radius, so a zero radius makes it infinite; the shader copes.
    const float radius = static_cast<float>(description.radius) / height;
    const float thickness =
        static_cast<float>(description.thickness == 0 ? 1 : description.thickness) / height / radius;
    const float softness = (uiScale + uiScale) / height;
    ShaderRectDescription shaded = shader_rect(roundedRectShader, makeTopDownRect(description.box));
    const float aspect = std::abs(shaded.rect.width()) / std::abs(shaded.rect.height());
    shaded.addParam("Thickness", thickness);
    shaded.addParam("Softness", softness);
    shaded.addParam("Radius", radius);
    shaded.addParam("Aspect", aspect);
    shaded.addParam("LineColour",
                    NormalisedRGB(description.thickness != 0 ? description.lineColour : description.fillColour));
    shaded.addParam("FillColour", filled ? NormalisedRGB(description.fillColour) : NormalisedRGB(0.0f, 0.0f, 0.0f, 0.0f));
    osRenderer->drawShaderRects(&shaded, 1);
}

// [SECTION] Text

XY<int> CanvasRenderer::renderPrimitive(const Tela::TextDescription& description)
{
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = getOSRenderer();
    if (!renderer)
        return {};
    ::TextDescription text = convert(description);
    if (!description.font)
        return {};
    const iFont::Metrics& metrics = description.font->getMetrics();
    const NormalisedRGB own_colour = text.colour;
    const XY<int> own_position = text.position;

    if (description.style == eTextDropShadow) {
        text.colour = description.secondColour;
        text.position = XY<int>(own_position.x + 1, own_position.y + 1);
        renderer->drawTexts(&text, 1);
    } else if (description.style == eTextHalo) {
        static constexpr int HALO[8][2] = {{-1, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, 0}, {1, 0}, {0, 1}, {0, -1}};
        text.colour = description.secondColour;
        for (const auto& offset : HALO) {
            text.position = XY<int>(own_position.x + offset[0], own_position.y + offset[1]);
            renderer->drawTexts(&text, 1);
        }
    }
    text.position = own_position;
    text.colour = own_colour;
    renderer->drawTexts(&text, 1);

    const Qv::Box<int>& extents = description.extents;
    if (description.style == eTextLineThrough) {
        // Half way through the gap above the baseline, in 16-bit arithmetic as the
        // text measures are.
        const auto baseline = static_cast<std::uint16_t>(render_wrap::add(extents.y1, metrics.descent));
        const auto gap = static_cast<std::uint16_t>(metrics.height - metrics.ascent - metrics.descent);
        Qv::Box<int> line = extents;
        line.y1 = baseline + gap / 2;
        line.y2 = line.y1 + 1;
        ::RectDescription strike;
        strike.rect = makeTopDownRect(line);
        strike.colour = description.secondColour;
        renderer->drawRects(&strike, 1);
    }
    return {extents.x2, render_wrap::add(extents.y1, metrics.descent)};
}

// [SECTION] Diagnostics

void CanvasRenderer::armCanvasImageSave()
{
    s_save_canvas_image = true;
}

void CanvasRenderer::saveCanvasImage()
{
    if (!s_save_canvas_image)
        return;
    s_save_canvas_image = false;
    if (!drawCanvas || !drawCanvas->offscreenBuffer)
        return;
    Qv::Ptr<iHostImage> host = Qv::dynamicCast<iHostImage>(drawCanvas->offscreenBuffer);
    if (!host) {
        const Qv::Ptr<iGPUImage> gpu = Qv::dynamicCast<iGPUImage>(drawCanvas->offscreenBuffer);
        if (!gpu || !OS()->imaging()->toHostImage(host, gpu) || !host)
            return;
    }
    if (const Qv::Ptr<iPixelGuard> pixels = host->lock()) {
        // Buffers keep what the composition needs in alpha; a picture viewer wants it opaque.
        const XY<int> size = pixels->size();
        for (int row = 0; row < size.y; ++row) {
            std::uint8_t* pixel = pixels->pixels() + static_cast<std::ptrdiff_t>(row) * pixels->stride();
            for (int column = 0; column < size.x; ++column, pixel += 4)
                pixel[3] = 255;
        }
    }
    WString folder;
    if (!OS()->shell()->userPicturesFolder(folder, 0))
        return;
    if (!folder.empty() && folder[folder.size() - 1] != u'/')
        folder += u'/';
    folder += WString(u"Canvas.png");
    QvImage::Saver::saveImage(host, folder, QvImage::configb());
}
