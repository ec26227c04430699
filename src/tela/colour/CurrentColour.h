#pragma once
// The current colour of the path API: one process-wide colour, set and read
// in RGB, HSV or HSL. Main thread only: nothing here locks.
//
// - The truth is the packed device value (bits 0-7 red, 8-15 green, 16-23
//   blue), which is what drawing uses.
// - The RGB and HSV views are caches beside it, each with a validity flag.
//   Setting by RGB makes the RGB view exact; setting by HSV or HSL makes both
//   exact, and the HSV view then returns what was set (an unwrapped hue of
//   360 stays 360). Setting a packed value clears both, and they are derived
//   back from the bytes on the next query.
// - Derived back, a channel byte x reads as 2.0 * pow(x / 255, gamma). That
//   is not the inverse of the forward curve, whose factor is 0.6, nor of
//   vlib_rgbcol_inverse: existing callers depend on each curve as it is.
// - A four-entry ring remembers the last colours set by RGB with their packed
//   values, so a few alternating colours cost no pow.

// Start-up: empties the ring to black and selects black.
void tela_reset_current_colour();

void tela_setrgbcol(double r, double g, double b, bool bypass);
void tela_setgray(double gray);
// Any hue is wrapped into 0..360; saturation is clamped to 0..1 and value
// floored at 0 with no upper limit, so a value above 1 gives channels above 1
// (packing clamps them). A hue that is not a number gives black.
void tela_sethsvcol(double hue, double saturation, double value, bool bypass);
// `luminance` is a target luminance (0.299 r + 0.587 g + 0.114 b) reached by
// scaling the value of the HSV colour, not the usual HSL lightness.
void tela_sethslcol(double hue, double saturation, double luminance, bool bypass);

int tela_getcolour();
// Storing the value already current changes nothing, so cached derived
// channels survive a redundant select.
void tela_setcolour(int packed);

double tela_currentcol_r();
double tela_currentcol_g();
double tela_currentcol_b();
double tela_currentcol_hue();
double tela_currentcol_saturation();
double tela_currentcol_value();
