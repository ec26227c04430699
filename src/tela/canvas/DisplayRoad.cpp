#include "tela/canvas/DisplayRoad.h"

#include "tela/canvas/Canvas.h"
#include "tela/platform/iRootWindow.h"

DisplayRoad tela_display_road(const iRootWindow* window)
{
    // Any location but host memory composes: a window that keeps its pixels
    // anywhere else cannot be blitted into.
    if (!window || window->displayLocation() == iImageBase::eHostMemory)
        return DisplayRoad::Host;
    return DisplayRoad::Composited;
}

DisplayRoad tela_display_road(const Canvas* canvas)
{
    return tela_display_road(canvas ? canvas->window.get() : nullptr);
}

iImageBase::eLocation tela_image_location(DisplayRoad road)
{
    return road == DisplayRoad::Host ? iImageBase::eHostMemory : iImageBase::eGPU;
}
