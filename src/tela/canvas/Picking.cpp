#include "tela/canvas/Picking.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/state/TelaState.h"

#include <utility>

namespace {

bool is_candidate(Canvas* child, const XY<int>& position, bool lightweight)
{
    if ((child->lightweight != 0) != lightweight)
        return false;
    if (!child->mapped || !child->pickable || !child->isContained(position))
        return false;
    return !child->client || child->client->isOpaqueAt(position);
}

Canvas* accepted_child(Canvas* parent, const XY<int>& position, bool lightweight,
                       const std::function<bool(Canvas*)>& accept)
{
    for (Canvas* child = parent->youngestChild; child; child = child->olderSibling)
        if (is_candidate(child, position, lightweight) && accept(child))
            return child;
    return nullptr;
}

} // namespace

Canvas* canvas_pick(Canvas* start, const XY<int>& position)
{
    return canvas_pick_if(start, position, [](Canvas*) { return true; });
}

Canvas* canvas_pick_if(Canvas* start, const XY<int>& position, std::function<bool(Canvas*)> accept)
{
    if (!start) {
        Canvas* root = tela_rootcanvas();
        if (!root || !root->mapped || !root->isContained(position))
            return nullptr;
        start = root;
    }
    Canvas* result = start;
    // Each step goes one level deeper; a loop below `start` ends at the bound.
    for (int steps_left = canvas_walk_limit(); steps_left > 0; --steps_left) {
        Canvas* child = accepted_child(result, position, false, accept);
        if (!child)
            child = accepted_child(result, position, true, accept);
        if (!child)
            return result;
        result = child;
    }
    return result;
}

Canvas* Canvas::pick(const XY<int>& position)
{
    return canvas_pick(this, position);
}

Canvas* Canvas::pick(const XY<int>& position, std::function<bool(Canvas*)> accept)
{
    return canvas_pick_if(this, position, std::move(accept));
}
