#pragma once
// The two roads by which damage reaches a window. On the host road damaged
// areas are painted into the window at once; on the composited road a frame
// is asked for by invalidating the window, and its paint event redraws the
// tree from back to front.

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iRegion.h"

class Canvas;

// Shows pending damage: for `canvas` on its own root, or for every root when
// it is null. Each root shows its own through RootCanvas::displayDirtyRegions.
void tela_display_dirty_regions(Canvas* canvas);
// What RootCanvas::displayDirtyRegions does: shows the pending damage of
// `root` under `canvas`, or all of it when `canvas` is null.
void tela_display_root_dirty_regions(Canvas* root, Canvas* canvas);
// Paints window region `region` of `canvas` on the host road.
void tela_paint_host_region(Canvas* canvas, const Qv::Ptr<iRegion>& region);
// Draws what the window shows over `area` (window coordinates) into a target
// whose top-left pixel is the area's corner: the root's background, then the
// root's children that touch the area, oldest first, each heavyweight one by
// its buffer, up to but not including `stop` (null: all of them).
void tela_compose_window_area(Canvas* root, Qv::Ptr<iGraphicPrimitivesRenderer>& renderer,
                              const Qv::Box<int>& area, Canvas* stop);
