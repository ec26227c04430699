#include "tela/canvas/ScreenGrab.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/DisplayPipeline.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/state/TelaState.h"

#include <cmath>

Qv::Ptr<iImage> tela_makeOffscreenBuffer(const XY<int>& size)
{
    Canvas* root = tela_rootcanvas();
    Qv::Ptr<iImage> image;
    if (root && root->window)
        root->window->createOffscreenImage(image, size);
    return image;
}

Qv::Ptr<iImage> tela_getCanvasPixels(Canvas* canvas, const Qv::Box<double>& box)
{
    if (!canvas)
        return nullptr;
    const XY<int> offset = telaLightweightCanvasOffset(canvas, Tela::eBottomUp);
    const Qv::Box<double> moved{box.x1 + offset.x, box.y1 + offset.y, box.x2 + offset.x, box.y2 + offset.y};
    Canvas* owner = canvdraw_canvas(canvas);
    const XY<int> size(static_cast<int>(std::abs(moved.width())), static_cast<int>(std::abs(moved.height())));
    const Qv::Ptr<iImage> image = tela_makeOffscreenBuffer(size);
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!image || !owner->offscreenBuffer || !image->getRenderer(renderer, 1) || !renderer)
        return image;
    const XY<double> corner = telaXYToWinXY(owner, static_cast<int>(moved.x1), static_cast<int>(moved.y2));
    const XY<int> from(static_cast<int>(corner.x), static_cast<int>(corner.y));
    const ImageDescription copy(owner->offscreenBuffer, XY<int>(0, 0),
                                TopDownRect{from.x, from.y, from.x + size.x, from.y + size.y}, false);
    renderer->drawImages(&copy, 1);
    return image;
}

Qv::Ptr<iImage> tela_getScreenRect(const Qv::Box<int>& box)
{
    Canvas* root = tela_rootcanvas();
    const Qv::Ptr<iImage> image = tela_makeOffscreenBuffer(XY<int>(std::abs(box.width()), std::abs(box.height())));
    Qv::Ptr<iGraphicPrimitivesRenderer> renderer;
    if (!image || !image->getRenderer(renderer, 1) || !renderer)
        return image;
    const int top = telaScreenYTowin32ScreenY(root, box.y2);
    const int bottom = telaScreenYTowin32ScreenY(root, box.y1);
    tela_compose_window_area(root, renderer, Qv::Box<int>{box.x1, top, box.x2, bottom}, nullptr);
    return image;
}

Qv::Ptr<iImage> tela_getScreenRect()
{
    auto* root = dynamic_cast<RootCanvas*>(tela_rootcanvas());
    if (!root)
        return nullptr;
    if (Qv::Ptr<iImage> frame = root->grabImage())
        return frame;
    return tela_getScreenRect(Qv::Box<int>{0, 0, root->getWidth(), root->getHeight()});
}
