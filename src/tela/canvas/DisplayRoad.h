#pragma once
// DisplayRoad: by which of two roads a root window's canvases reach it. This
// is the one place that asks the window; everything that works differently on
// the two roads (flushing damage, painting, grabbing the screen, where images
// for the window live, how canvases are laid over each other) asks here, so
// no two parts of the library can disagree about a window.
//
// - Host: damaged areas are blitted from the canvases' buffers into the
//   window at once.
// - Composited: a frame is asked for by invalidating the window, and its
//   paint event draws the whole tree, back to front.

#include "tela/platform/iImage.h"

#include <cstdint>

class Canvas;
class iRootWindow;

enum class DisplayRoad : std::uint8_t { Host, Composited };

// The road of the window `canvas` belongs to. The window is asked each time,
// since a platform may move a window between the roads. A canvas with no
// window is on the host road, where nothing reaches a window.
DisplayRoad tela_display_road(const Canvas* canvas);
DisplayRoad tela_display_road(const iRootWindow* window);

// Where images composed into a window on `road` live: host memory for the
// host road, the composited surface otherwise.
iImageBase::eLocation tela_image_location(DisplayRoad road);
