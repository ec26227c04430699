// TextDrawing: the software renderer's drawTexts, glyph by glyph through pixman.
//
// What a text description means here, where the library leaves it to the renderer:
// - position is the left end of the baseline. Glyphs are the font's antialiased
//   coverage laid over the pixels in colour; heavy thickens their strokes in place.
// - The units selectionStart..selectionEnd (end excluded, both cut to the text) are the
//   selection: a box from the ascent to the descent over their characters in
//   thirdColour, with the glyphs on it in secondColour. That is the order in which
//   setSelectionColours stores its two arguments: the first is the selection's
//   background, the second the text on it. Glyphs that straddle the box's edge change
//   colour at the edge.
// - Everything honours the target's clip, which pixman holds on the image itself.
// - Text in a font that is not a FreeTypeFont (another platform's, a test's) cannot be
//   drawn; that is reported once and skipped. A description without a font draws
//   nothing, silently: the library makes such a description whenever it has no font.
#pragma once

#include "tela/platform/GraphicPrimitives.h"

#include <pixman.h>

namespace Headless {

void drawTexts(pixman_image_t* target, const TextDescription* texts, unsigned count);
// Tests: report a font that cannot be drawn again.
void forgetTextReports();

} // namespace Headless
