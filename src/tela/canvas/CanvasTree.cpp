#include "tela/canvas/CanvasTree.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Log.h"
#include "tela/events/EventTypes.h"

#include <new>

Canvas* tela_newcanvas(CanvasClient* client, Canvas* parent, bool unused)
{
    return new (std::nothrow) Canvas(client, parent, unused);
}

void canvas_connect(Canvas* child, Canvas* parent, int level)
{
    if (!child)
        return;
    if (!parent)
        tela_splat("canvas_connect: bad parent");
    int steps_left = canvas_walk_limit();
    for (Canvas* ancestor = parent; ancestor && steps_left-- > 0; ancestor = ancestor->parent) {
        if (ancestor == child) {
            // Reported, then made anyway: the caller asked for it.
            tela_splat("canvas_connect: attempt to make loop in canvas tree");
            break;
        }
    }
    if (!parent)
        return; // nowhere to attach: the report above is all there is

    Tela::UpdateDeferrer deferrer(nullptr, tela_refresh_presentation());

    const bool was_mapped = child->mapped != 0;
    if (was_mapped)
        tela_unmapcanvas(child);
    if (child->parent)
        canvas_disconnect(child);

    if (level < 0)
        level = 0;
    if (level > parent->childCount)
        level = parent->childCount;

    Canvas* below = nullptr;
    if (level > 0) {
        below = parent->oldestChild;
        for (int i = 1; i < level && below; ++i)
            below = below->youngerSibling;
        if (!below)
            tela_splat("canvas_connect: internal error");
    }

    if (below) {
        child->olderSibling = below;
        child->youngerSibling = below->youngerSibling;
        if (below->youngerSibling)
            below->youngerSibling->olderSibling = child;
        below->youngerSibling = child;
    } else {
        child->olderSibling = nullptr;
        child->youngerSibling = parent->oldestChild;
        if (parent->oldestChild)
            parent->oldestChild->olderSibling = child;
    }
    if (!child->youngerSibling)
        parent->youngestChild = child;
    if (!child->olderSibling)
        parent->oldestChild = child;
    child->parent = parent;
    ++parent->childCount;
    canvupd_tree_changed();

    if (was_mapped)
        tela_mapcanvas(child);
}

void canvas_disconnect(Canvas* canvas)
{
    if (!canvas)
        return;
    // The unmap leaves `mapped` clear; only canvas_connect restores it.
    if (canvas->mapped)
        tela_unmapcanvas(canvas);

    Canvas* parent = canvas->parent;
    if (canvas->olderSibling)
        canvas->olderSibling->youngerSibling = canvas->youngerSibling;
    if (canvas->youngerSibling)
        canvas->youngerSibling->olderSibling = canvas->olderSibling;
    if (parent) {
        if (parent->youngestChild == canvas)
            parent->youngestChild = canvas->olderSibling;
        if (parent->oldestChild == canvas)
            parent->oldestChild = canvas->youngerSibling;
        if (--parent->childCount < 0)
            tela_splat("canvas_disconnect: underflow on removal of child canvas");
    }
    canvas->parent = nullptr;
    canvas->youngerSibling = nullptr;
    canvas->olderSibling = nullptr;
    canvupd_tree_changed();
}

void canvas_set_level(Canvas* canvas, int level)
{
    if (!canvas || !canvas->parent || canvas_sibling_level(canvas) == level)
        return;
    canvas_connect(canvas, canvas->parent, level);
}

int canvas_sibling_level(Canvas* canvas)
{
    if (!canvas || !canvas->parent)
        return 0;
    int level = 0;
    for (Canvas* older = canvas->olderSibling; older; older = older->olderSibling)
        ++level;
    return level;
}

int canvas_child_count(Canvas* canvas)
{
    return canvas ? canvas->childCount : 0;
}

void canvas_push_to_bottom(Canvas* canvas)
{
    canvas_set_level(canvas, 0);
}

int canvas_highest_normal_level(Canvas* parent)
{
    if (!parent)
        return -1;
    int level = parent->childCount - 1;
    for (Canvas* child = parent->youngestChild; child; child = child->olderSibling, --level)
        if (!(child->canvasFlags & Canvas::KEEP_TOPMOST))
            return level;
    return -1;
}

void canvas_pop_to_top(Canvas* canvas, bool force)
{
    if (!canvas || !canvas->parent)
        return;
    if (!force && !(canvas->canvasFlags & Canvas::KEEP_TOPMOST)) {
        canvas_set_level(canvas, canvas_highest_normal_level(canvas->parent));
        return;
    }
    canvas_set_level(canvas, canvas->parent->childCount - 1);
    canvas->canvasFlags |= Canvas::KEEP_TOPMOST;
}

void canvasKeepTopmost(Canvas* canvas, bool keep)
{
    if (!canvas)
        return;
    if (keep) {
        if (canvas->parent)
            canvas_set_level(canvas, canvas->parent->childCount - 1);
        canvas->canvasFlags |= Canvas::KEEP_TOPMOST;
        return;
    }
    if (!(canvas->canvasFlags & Canvas::KEEP_TOPMOST))
        return;
    if (canvas->parent)
        canvas_set_level(canvas, canvas_highest_normal_level(canvas->parent) + 1);
    canvas->canvasFlags &= ~Canvas::KEEP_TOPMOST;
}

bool canvas_is_topmost(Canvas* canvas)
{
    if (!canvas || !canvas->parent)
        return false;
    return canvas_sibling_level(canvas) == canvas->parent->childCount - 1;
}

int canvas_walk_limit()
{
    // Copies made by the copy constructor count as live too, so this is
    // never less than the canvases a walk can meet, plus the start.
    return tela_live_canvas_count() + 1;
}

bool canvas_is_in_loop(const Canvas* canvas)
{
    int steps_left = canvas_walk_limit();
    for (; canvas; canvas = canvas->parent)
        if (--steps_left < 0)
            return true;
    return false;
}

bool canvas_is_child(Canvas* root, Canvas* canvas)
{
    int steps_left = canvas_walk_limit();
    for (; canvas && steps_left-- > 0; canvas = canvas->parent)
        if (canvas == root)
            return true;
    return false;
}

bool canvas_is_mapped_to_root(Canvas* canvas)
{
    int steps_left = canvas_walk_limit();
    for (; canvas; canvas = canvas->parent)
        if (!canvas->mapped || steps_left-- <= 0)
            return false; // a loop reaches no root
    return true;
}

Canvas* tela_parentcanvas(Canvas* canvas)
{
    return canvas ? canvas->parent : nullptr;
}

void canvas_set_interest(Canvas* canvas, int mask)
{
    if (!canvas)
        return;
    canvas->interest |= static_cast<unsigned>(mask);
    if (mask & EventType::TIMER_CLASS)
        canvas->lastTimerEventTime = 0; // the next tick reaches it at once
}

void canvas_clear_interest(Canvas* canvas, int mask)
{
    if (canvas)
        canvas->interest &= ~static_cast<unsigned>(mask);
}

void canvasRegionOutline(Canvas*, const Qv::Ptr<iRegion>&)
{
}
