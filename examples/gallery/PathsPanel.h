#pragma once
// The gallery's paths page: canvases cut to shape, two by paths (a
// five-pointed star, a soft rectangle) painted with gradients so that their
// outlines show, and one by the opaque pixels of its picture.

#include "tela/core/LightweightString.h"

class Canvas;
class Palette;

namespace PathsPage {

constexpr int PAGE_WIDTH = 448, PAGE_HEIGHT = 260;

// Paints the page and puts the shaped canvases on it. `left` and `top` are
// where the page sits in its window; `picture` names the image file of the
// third canvas (a missing one shows the blank stand-in the image cache gives).
// The canvases belong to the page and go with it.
void build(Canvas* page, int left, int top, const Palette& palette, const WString& picture);

} // namespace PathsPage
