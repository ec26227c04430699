#include "input/MouseContainmentManager.h"

#include "canvas/Canvas.h"

namespace Tela {

namespace {
Canvas* s_contained_canvas = nullptr;
} // namespace

void MouseContainmentManager::setCurrentCanvas(Canvas* canvas)
{
    if (canvas == s_contained_canvas)
        return;
    Canvas* previous = s_contained_canvas;
    s_contained_canvas = canvas;
    if (previous)
        previous->handleMouseContainment(false);
    if (canvas)
        canvas->handleMouseContainment(true);
}

Canvas* MouseContainmentManager::currentCanvas()
{
    return s_contained_canvas;
}

void MouseContainmentManager::removeCanvas(const Canvas* canvas)
{
    if (canvas == s_contained_canvas)
        s_contained_canvas = nullptr;
}

} // namespace Tela
