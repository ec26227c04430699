#pragma once
// The canvas tree: creation, deletion, connection and stacking.
//
// Stacking is by level: the oldest child is at level 0 and the youngest at
// childCount - 1; younger siblings lie above older ones, on screen and for
// picking. Keep-topmost children stay above the others. Misuse is reported
// through tela_splat and the call carries on. Main thread only.

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

class Canvas;
class CanvasClient;

// Allocates through the memory seam; null when no block is left. The flag has
// no effect.
Canvas* tela_newcanvas(CanvasClient* client, Canvas* parent, bool unused = false);
// Deletes the canvas and its whole subtree, youngest child first. Null is ignored.
void tela_deletecanvas(Canvas* canvas);

void canvas_connect(Canvas* child, Canvas* parent, int level);
void canvas_disconnect(Canvas* canvas);

// Levels given here are counted after the canvas has left its place.
void canvas_set_level(Canvas* canvas, int level);
int canvas_sibling_level(Canvas* canvas);
int canvas_child_count(Canvas* canvas);
void canvas_push_to_bottom(Canvas* canvas);
void canvas_pop_to_top(Canvas* canvas, bool force);
void canvasKeepTopmost(Canvas* canvas, bool keep);
bool canvas_is_topmost(Canvas* canvas);
// The level of the highest child that is not keep-topmost; -1 when there is none.
int canvas_highest_normal_level(Canvas* parent);

// A canvas made its own ancestor through canvas_connect (reported, and made
// as asked) would send any walk round for ever. Every walk over the tree is
// therefore bounded by canvas_walk_limit() steps, more than a sound tree ever
// needs; a canvas in such a loop reaches no root and shows nothing.
int canvas_walk_limit();
// True when the canvas's chain of parents does not end: it is part of, or
// hangs below, a loop.
bool canvas_is_in_loop(const Canvas* canvas);

bool canvas_is_child(Canvas* root, Canvas* canvas); // root itself included
bool canvas_is_mapped_to_root(Canvas* canvas);      // true for null
Canvas* tela_parentcanvas(Canvas* canvas);

// Event classes the canvas takes: see the type word of Event.
void canvas_set_interest(Canvas* canvas, int mask);
void canvas_clear_interest(Canvas* canvas, int mask);

// Kept for programs that call it: outlining a canvas's region draws nothing.
void canvasRegionOutline(Canvas* canvas, const Qv::Ptr<iRegion>& region);
