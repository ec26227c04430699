#pragma once
// The gamma curve between linear channels and packed device values.
//
// The forward curve is pow(c * 0.6, 1 / gamma) with gamma 2.37: full white
// without the bypass flag packs as 205, not 255, which leaves headroom above
// the interface's own white. vlib_rgbcol_inverse uses the literal exponent
// 2.37 and divides by 0.6; reading the current colour back (CurrentColour.h)
// multiplies by 2.0 instead. They are different curves with different
// callers, and are kept apart on purpose.
//
// Packed values: red in bits 0-7, green 8-15, blue 16-23, 24-31 zero.

#include "tela/platform/Geometry.h"

class Colour;

double vlib_gammaCorrect(double c);
// A bypassed colour comes back as it is; any other through the curve, alpha 1.
Colour vlib_gammaCorrect(const Colour& c);
// bypass 0 sends each channel through the curve first.
int vlib_rgbcol(double r, double g, double b, int bypass);
// Each channel times 255, truncated (no rounding term), clamped to 0..255.
int vlib_raw_rgbcol(double r, double g, double b);
Colour vlib_rgbcol_inverse(const Colour& c);
// The constant screen box (0, 0, 1023, 767) the path API measures against.
Qv::Box<int, Qv::BottomUpTraits>* vlib_screen();

// The exponent of the forward curve; start-up sets it. Main thread only.
extern double vlibGamma;

// Start-up: the exponent to 2.37 and the screen box to (0, 0, 1023, 767),
// whatever they were. Shut-down forgets that the tables were set up, so a
// second application in the same process sets them again.
void vlib_init();
void vlib_forget();
bool vlib_initialised();
