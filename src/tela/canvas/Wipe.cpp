// tela_wipecanvas: clears the current canvas to the current colour, in the
// buffer of the heavyweight canvas it draws into.

#include "tela/canvas/Wipe.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/colour/CurrentColour.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/vector/Regions.h"

void tela_wipecanvas()
{
    Canvas* canvas = tela_currentcanvas();
    tela_setcolour(tela_getcolour()); // re-selects, so derived channels are fresh
    if (!canvas || !canvas->shape())
        return;
    Canvas* owner = canvdraw_canvas(canvas);
    if (!owner || !owner->offscreenBuffer)
        return;

    // A lightweight canvas is cut by every lightweight ancestor on the way to
    // the buffer's owner; a heavyweight one owns its buffer and is not.
    RegionPtr area = canvas->shape();
    int steps_left = canvas_walk_limit();
    if (canvas->lightweight)
        for (Canvas* c = canvas->parent; c && c->lightweight && area && steps_left-- > 0; c = c->parent)
            area = region_intersect(area, c->shape());
    if (!area)
        return;

    const RegionPtr in_buffer = Tela::screenRegionToCanvasRegion(owner, area, false);
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!in_buffer || !owner->offscreenBuffer->getRenderer(renderer, 1) || !renderer)
        return;
    Qv::Box<int> box;
    in_buffer->getBox(box);
    const auto packed = static_cast<std::uint32_t>(tela_getcolour());
    const NormalisedRGB colour((packed & 255) / 255.0f, ((packed >> 8) & 255) / 255.0f,
                               ((packed >> 16) & 255) / 255.0f, 1.0f);
    renderer->setClip(in_buffer);
    const RectDescription fill(box.toTopDownRectUnflipped(), colour); // a buffer's box, top-down already
    renderer->drawRects(&fill, 1);
    renderer = nullptr;

    // The damage is where the pixels show: the area's box in the window.
    Qv::Box<int> window_box;
    area->getBox(window_box);
    canvupd_mark_region_exact(owner, region_mkrect(window_box.toTopDownRectUnflipped()), true, true);
}
