#include "tela/canvas/CanvasWalk.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"

namespace {

// The two stacking directions, so each walk is written once.
struct YoungestFirst {
    static Canvas* first(const Canvas* parent) { return parent->youngestChild; }
    static Canvas* next(const Canvas* sibling) { return sibling->olderSibling; }
};

struct OldestFirst {
    static Canvas* first(const Canvas* parent) { return parent->oldestChild; }
    static Canvas* next(const Canvas* sibling) { return sibling->youngerSibling; }
};

template <typename Order>
Canvas* children(Canvas* canvas, Canvas* previous)
{
    if (!canvas)
        return nullptr;
    return previous ? Order::next(previous) : Order::first(canvas);
}

template <typename Order>
Canvas* deepest_first_descendant(Canvas* canvas)
{
    int steps_left = canvas_walk_limit();
    while (Canvas* child = Order::first(canvas)) {
        if (steps_left-- <= 0)
            break;
        canvas = child;
    }
    return canvas;
}

// Children before parents: descend to the deepest first leaf, then after each
// node go to the deepest first leaf of its next sibling, or up to its parent.
template <typename Order>
Canvas* subtree(Canvas* root, Canvas* previous)
{
    if (!root)
        return nullptr;
    if (!previous) // the walk stays below `root`, and meets a loop only if `root` is in it
        return canvas_is_in_loop(root) ? nullptr : deepest_first_descendant<Order>(root);
    if (previous == root)
        return nullptr;
    if (Canvas* sibling = Order::next(previous))
        return deepest_first_descendant<Order>(sibling);
    return previous->parent;
}

// Parents before children, never climbing past the root.
template <typename Order>
Canvas* preorder(Canvas* root, Canvas* previous)
{
    if (!root)
        return nullptr;
    if (!previous)
        return canvas_is_in_loop(root) ? nullptr : root;
    if (Canvas* child = Order::first(previous))
        return child;
    for (Canvas* node = previous; node && node != root; node = node->parent)
        if (Canvas* sibling = Order::next(node))
            return sibling;
    return nullptr;
}

} // namespace

Canvas* canvas_walk_ancestors(Canvas* canvas, Canvas* previous)
{
    if (!canvas)
        return nullptr;
    if (!previous) // a chain that does not end is not walked at all
        return canvas_is_in_loop(canvas) ? nullptr : canvas->parent;
    return previous->parent;
}

Canvas* canvas_walk_children(Canvas* canvas, Canvas* previous)
{
    return children<YoungestFirst>(canvas, previous);
}

Canvas* canvas_walk_children_oldest_first(Canvas* canvas, Canvas* previous)
{
    return children<OldestFirst>(canvas, previous);
}

Canvas* canvas_walk_older_siblings(Canvas* canvas, Canvas* previous)
{
    if (!canvas)
        return nullptr;
    return previous ? previous->olderSibling : canvas->olderSibling;
}

Canvas* canvas_walk_younger_siblings(Canvas* canvas, Canvas* previous)
{
    if (!canvas)
        return nullptr;
    return previous ? previous->youngerSibling : canvas->youngerSibling;
}

Canvas* canvas_walk_subtree(Canvas* root, Canvas* previous)
{
    return subtree<YoungestFirst>(root, previous);
}

Canvas* canvas_walk_subtree_reverse(Canvas* root, Canvas* previous)
{
    return subtree<OldestFirst>(root, previous);
}

Canvas* canvas_walk_postorder_youngest_first(Canvas* root, Canvas* previous)
{
    return preorder<YoungestFirst>(root, previous);
}

Canvas* canvas_walk_postorder_oldest_first(Canvas* root, Canvas* previous)
{
    return preorder<OldestFirst>(root, previous);
}

Canvas* canvas_walk_postorder(Canvas* root, Canvas* previous)
{
    return preorder<YoungestFirst>(root, previous);
}
