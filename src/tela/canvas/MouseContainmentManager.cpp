#include "tela/canvas/MouseContainmentManager.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/core/NeverDestroyed.h"

#include <algorithm>

namespace Tela {

MouseContainmentManager& MouseContainmentManager::instance()
{
    static Qv::NeverDestroyed<MouseContainmentManager> manager;
    return *manager;
}

bool MouseContainmentManager::isChildOf(Canvas* child, Canvas* parent)
{
    if (!child || !parent || child == parent)
        return false;
    // A chain longer than the live canvases is a loop made by misuse.
    int steps_left = tela_live_canvas_count();
    for (const Canvas* c = child->parent; c && steps_left-- > 0; c = c->parent)
        if (c == parent)
            return true;
    return false;
}

Canvas* MouseContainmentManager::getCurrentCanvas() const
{
    return containers.empty() ? nullptr : containers.back();
}

void MouseContainmentManager::setCurrentCanvas(Canvas* canvas)
{
    if (!containers.empty() && containers.back() == canvas)
        return;
    // Leave, innermost first. Each canvas is told while it is still the
    // current one, and only then taken off the chain. Its callback may change
    // the chain (remove a canvas, even delete itself), so the entry is looked
    // for again afterwards rather than assumed to be last.
    while (!containers.empty()) {
        Canvas* const last = containers.back();
        if (last == canvas || (canvas && isChildOf(canvas, last)))
            break;
        last->handleMouseContainment(false);
        const auto found = std::find(containers.rbegin(), containers.rend(), last);
        if (found != containers.rend())
            containers.erase(std::next(found).base());
    }
    if (!canvas)
        return;
    Canvas* const stop = containers.empty() ? nullptr : containers.back();
    Qv::Vector<Canvas*> entering;
    entering.reserve(20);
    int steps_left = tela_live_canvas_count();
    for (Canvas* c = canvas; c && c != stop && steps_left-- > 0; c = c->parent)
        entering.push_back(c);
    // Outermost first; a callback that moves the next one out of this one
    // ends the entering there.
    for (auto it = entering.rbegin(); it != entering.rend(); ++it) {
        containers.push_back(*it);
        (*it)->handleMouseContainment(true);
        const auto next = std::next(it);
        if (next != entering.rend() && !canvas_is_child(*it, *next))
            break;
    }
}

void MouseContainmentManager::remove(Canvas* canvas)
{
    const auto found = std::find(containers.begin(), containers.end(), canvas);
    if (found != containers.end())
        containers.erase(found);
}

} // namespace Tela
