#pragma once
// How the gallery shows a tool tip: each line of the details on a row, its
// label in bold, then its text, its key dimmed at the right.

#include "tela/platform/Geometry.h"

class Canvas;
class Palette;
class TooltipDetails;

namespace Tooltip {

// The size of the canvas `details` needs, padding included.
XY<int> sizeFor(const TooltipDetails& details);

// Paints `details` onto `canvas`, which should be sizeFor(details).
void paint(Canvas* canvas, const TooltipDetails& details, const Palette& palette);

} // namespace Tooltip
