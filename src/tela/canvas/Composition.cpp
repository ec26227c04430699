#include "tela/canvas/Composition.h"

#include "tela/canvas/Canvas.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/render/EdgeEffects_private.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

namespace {

// The shape in the target's coordinates; the shape itself when the target is
// the window, which saves a copy on every canvas of every frame.
RegionPtr shape_in_target(const Canvas& canvas, const XY<int>& origin)
{
    if (origin.x == 0 && origin.y == 0)
        return canvas.shape();
    RegionPtr moved;
    canvas.shape()->translated(moved, -origin.x, -origin.y);
    return moved;
}

void compose_as_frame(Canvas& canvas, iGraphicPrimitivesRenderer& renderer, const XY<int>& origin,
                      const Qv::Box<int>& box)
{
    XY<int> size;
    canvas.offscreenBuffer->getSize(size);
    const Qv::Rectangle<float> source{0, 0, static_cast<float>(size.x), static_cast<float>(size.y)};
    const Qv::Rectangle<float> destination{static_cast<float>(box.x1 - origin.x), static_cast<float>(box.y1 - origin.y),
                                           static_cast<float>(box.x2 - origin.x), static_cast<float>(box.y2 - origin.y)};
    if (canvas.opacity != 1.0 && canvas.shape()->isRectangular()) {
        ShaderRectDescription blend;
        blend.shader = tela_shader(Tela::Shader::InFront);
        blend.inputs.push_back(ShaderInput(canvas.offscreenBuffer, source));
        blend.rect = destination;
        blend.addParam(String("Opacity"), static_cast<float>(canvas.opacity));
        blend.active = true;
        renderer.setClip(nullptr);
        renderer.drawShaderRects(&blend, 1);
        return;
    }
    // A shaped canvas cannot go through the shader, which fills a rectangle:
    // its opacity is not applied on this road.
    ImageDescriptionEx image(canvas.offscreenBuffer, source, destination);
    image.enabled = canvas.useAlphaChannel;
    renderer.setClip(canvas.useAlphaChannel ? RegionPtr() : shape_in_target(canvas, origin));
    renderer.drawImagesEx(&image, 1);
}

void compose_as_blit(Canvas& canvas, iGraphicPrimitivesRenderer& renderer, const XY<int>& origin,
                     const Qv::Box<int>& box)
{
    // A shaped canvas shows only its shape: its buffer's corners are not on screen.
    renderer.setClip(canvas.shape()->isRectangular() ? RegionPtr() : shape_in_target(canvas, origin));
    // The buffer's own alpha counts only with useAlphaChannel; the opacity is
    // the description's alpha either way, so a translucent canvas is laid over
    // what lies beneath by that share.
    ImageDescription image(canvas.offscreenBuffer, XY<int>(box.x1 - origin.x, box.y1 - origin.y),
                           canvas.useAlphaChannel);
    image.opacity = static_cast<float>(canvas.opacity);
    renderer.drawImages(&image, 1);
}

} // namespace

void tela_compose_canvas(Canvas* canvas, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer, const XY<int>& origin,
                         DisplayRoad road)
{
    if (!canvas || !renderer || !canvas->shape())
        return;
    // A video thread may be drawing a frame into the buffer (VideoWindow).
    CriticalSection::Guard guard(canvas->m_lock);
    if (!canvas->offscreenBuffer)
        return;
    Qv::Box<int> box;
    canvas->shape()->getBox(box);
    if (road == DisplayRoad::Composited) {
        // The shadow goes under the canvas. The host road has none: its blits
        // copy buffers and never paint outside a canvas's own area.
        tela_render_edge_effects(*canvas, *renderer, origin);
        compose_as_frame(*canvas, *renderer, origin, box);
    }
    else
        compose_as_blit(*canvas, *renderer, origin, box);
}
