#pragma once
// Walks over the canvas tree. Each takes the walk's root and the previous
// result (null to start) and returns the next canvas, null at the end; a null
// root yields null at once. The walks keep no state, so a caller that deletes
// while walking must take the next result before deleting the current one.

class Canvas;

Canvas* canvas_walk_ancestors(Canvas* canvas, Canvas* previous);
Canvas* canvas_walk_children(Canvas* canvas, Canvas* previous);              // youngest first
Canvas* canvas_walk_children_oldest_first(Canvas* canvas, Canvas* previous);
Canvas* canvas_walk_older_siblings(Canvas* canvas, Canvas* previous);        // towards the bottom
Canvas* canvas_walk_younger_siblings(Canvas* canvas, Canvas* previous);      // towards the top

// Children before parents, the root last; youngest (or oldest) subtree first.
Canvas* canvas_walk_subtree(Canvas* root, Canvas* previous);
Canvas* canvas_walk_subtree_reverse(Canvas* root, Canvas* previous);

// Despite their names these visit parents before children, the root first;
// callers depend on that order (oldest first is painting order).
Canvas* canvas_walk_postorder_youngest_first(Canvas* root, Canvas* previous);
Canvas* canvas_walk_postorder_oldest_first(Canvas* root, Canvas* previous);
Canvas* canvas_walk_postorder(Canvas* root, Canvas* previous);
