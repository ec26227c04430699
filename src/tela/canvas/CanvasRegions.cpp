// The region functions that need a canvas: they flip between the root's
// bottom-up coordinates and the window's top-down ones.

#include "tela/vector/Regions.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/Coordinates.h"

RegionPtr region_mkrect(Canvas* canvas, int x1, int y1, int x2, int y2)
{
    Canvas* root = canvas ? canvas->getRootParent() : nullptr;
    return region_mkrect(Qv::Rectangle<int>{x1, telaScreenYTowin32ScreenY(root, y2), x2,
                                            telaScreenYTowin32ScreenY(root, y1)});
}

namespace Tela {

Qv::Box<int> getExtentsQV(Canvas* root, const RegionPtr& region)
{
    if (!region)
        return {};
    Qv::Box<int> box;
    region->getBox(box);
    return {box.x1, telaScreenYTowin32ScreenY(root, box.y2), box.x2, telaScreenYTowin32ScreenY(root, box.y1)};
}

RegionPtr screenRegionToCanvasRegion(Canvas* canvas, const RegionPtr& region, bool inPlace)
{
    if (!canvas || !region)
        return nullptr;
    if (inPlace) {
        region->translateInPlace(-Canvas::getX(canvas), Canvas::getY(canvas));
        return region;
    }
    return region_translate(region, -Canvas::getX(canvas), Canvas::getY(canvas));
}

} // namespace Tela
