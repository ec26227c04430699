// The current colour: one packed value and two cached views of it.
//
// Invariants
// - packed is always what drawing uses; the views follow it, never lead.
// - rgbValid: currentR/G/B describe the colour (exactly as set, or derived
//   from packed). hsvValid: currentHue/Saturation/Value do. Whatever changes
//   packed without going through a view clears the flags it cannot keep.
// - The ring holds the last four colours set by RGB, entry colourCacheIndex
//   the newest; a hit neither reorders it nor advances the index.
#include "tela/colour/CurrentColour.h"

#include "tela/colour/Gamma.h"
#include "tela/core/Angles.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int RING_SIZE = 4;
// Below this a channel, a spread or a luminance counts as zero.
constexpr double NEGLIGIBLE = 0.001;
// The read-back curve's factor; see the header for why it is not 1 / 0.6.
constexpr double READ_BACK_FACTOR = 2.0;

struct RingEntry {
    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
    bool bypass = false;
    int packed = 0;
};

struct CurrentColour {
    int packed = 0;
    bool rgbValid = false;
    double currentR = 0.0;
    double currentG = 0.0;
    double currentB = 0.0;
    bool hsvValid = false;
    double currentHue = 0.0;
    double currentSaturation = 0.0;
    double currentValue = 0.0;
    RingEntry colourCache[RING_SIZE];
    int colourCacheIndex = 0;
};

// The one current colour the path API draws with.
CurrentColour s_current;

double read_back(int packed, int shift)
{
    const auto byte = static_cast<unsigned>(packed) >> shift & 0xFFu;
    return READ_BACK_FACTOR * std::pow(byte / 255.0, vlibGamma);
}

void ensure_rgb_view()
{
    if (s_current.rgbValid)
        return;
    s_current.currentR = read_back(s_current.packed, 0);
    s_current.currentG = read_back(s_current.packed, 8);
    s_current.currentB = read_back(s_current.packed, 16);
    s_current.rgbValid = true;
}

void ensure_hsv_view()
{
    if (s_current.hsvValid)
        return;
    ensure_rgb_view();
    const double r = s_current.currentR;
    const double g = s_current.currentG;
    const double b = s_current.currentB;
    // The sextant is the first ordering that holds; ties go to the earlier one.
    struct Ordering {
        double max, mid, min;
    };
    int sextant;
    Ordering o;
    if (r >= g && g >= b)
        sextant = 0, o = {r, g, b};
    else if (g >= r && r >= b)
        sextant = 1, o = {g, r, b};
    else if (g >= b && b >= r)
        sextant = 2, o = {g, b, r};
    else if (b >= g && g >= r)
        sextant = 3, o = {b, g, r};
    else if (b >= r && r >= g)
        sextant = 4, o = {b, r, g};
    else if (r >= b && b >= g)
        sextant = 5, o = {r, b, g};
    else
        return; // a NaN channel orders nothing: the view keeps what it had
    s_current.hsvValid = true;
    if (o.max < NEGLIGIBLE) {
        s_current.currentHue = s_current.currentSaturation = s_current.currentValue = 0.0;
        return;
    }
    s_current.currentValue = o.max;
    s_current.currentSaturation = 1.0 - o.min / o.max;
    if (o.max - o.min < NEGLIGIBLE) {
        s_current.currentHue = 0.0;
        return;
    }
    // Within a sextant the hue runs from one primary to the next; in the odd
    // ones mid falls towards min as the hue rises, in the even ones it climbs.
    const double f = (o.max - o.mid) / (o.max - o.min);
    s_current.currentHue = (sextant + (sextant % 2 ? f : 1.0 - f)) * 60.0;
}

// The sextant of a hue already wrapped and divided by 60. Anything outside
// 0..5 selects black: a hue that is not a number, and a negative remainder,
// which becomes 6 - r as it always has (the wrap keeps x from going below 0
// for any hue of sane size). fmod, not int %: a hue far beyond the int range
// must not overflow the conversion.
int sextant_of(double x)
{
    if (!std::isfinite(x))
        return -1;
    const int remainder = static_cast<int>(std::fmod(std::floor(x), 6.0));
    return remainder < 0 ? 6 - remainder : remainder;
}

} // namespace

void tela_reset_current_colour()
{
    const int black = vlib_rgbcol(0.0, 0.0, 0.0, 0);
    for (RingEntry& entry : s_current.colourCache)
        entry = RingEntry {0.0, 0.0, 0.0, false, black};
    s_current.colourCacheIndex = 0;
    tela_setrgbcol(0.0, 0.0, 0.0, false);
}

void tela_setrgbcol(double r, double g, double b, bool bypass)
{
    s_current.hsvValid = false;
    s_current.currentR = r;
    s_current.currentG = g;
    s_current.currentB = b;
    s_current.rgbValid = true;
    for (int i = s_current.colourCacheIndex + RING_SIZE; i > s_current.colourCacheIndex; --i) {
        const RingEntry& entry = s_current.colourCache[i % RING_SIZE];
        if (entry.r == r && entry.g == g && entry.b == b && entry.bypass == bypass) {
            s_current.packed = entry.packed;
            return;
        }
    }
    const int packed = vlib_rgbcol(r, g, b, bypass ? 1 : 0);
    s_current.packed = packed;
    s_current.colourCacheIndex = (s_current.colourCacheIndex + 1) % RING_SIZE;
    s_current.colourCache[s_current.colourCacheIndex] = RingEntry {r, g, b, bypass, packed};
}

void tela_setgray(double gray)
{
    tela_setrgbcol(gray, gray, gray, false);
}

void tela_sethsvcol(double hue, double saturation, double value, bool bypass)
{
    const double x = norm_angle360(hue) / 60.0;
    const double f = x - std::floor(x);
    const int i = sextant_of(x);
    const double s = std::clamp(saturation, 0.0, 1.0);
    const double v = value < 0.0 ? 0.0 : value;
    const double p = v * (1.0 - s);
    const double q = v * (1.0 - f * s);
    const double t = v * (1.0 - (1.0 - f) * s);
    switch (i) {
    case 0: tela_setrgbcol(v, t, p, bypass); break;
    case 1: tela_setrgbcol(q, v, p, bypass); break;
    case 2: tela_setrgbcol(p, v, t, bypass); break;
    case 3: tela_setrgbcol(p, q, v, bypass); break;
    case 4: tela_setrgbcol(t, p, v, bypass); break;
    case 5: tela_setrgbcol(v, p, q, bypass); break;
    default: tela_setrgbcol(0.0, 0.0, 0.0, false); break;
    }
    s_current.currentHue = hue;
    s_current.currentSaturation = s;
    s_current.currentValue = v;
    s_current.hsvValid = true;
}

void tela_sethslcol(double hue, double saturation, double luminance, bool bypass)
{
    tela_sethsvcol(hue, saturation, 1.0, bypass);
    const double y = 0.587 * s_current.currentG + 0.299 * s_current.currentR + 0.114 * s_current.currentB;
    if (y < NEGLIGIBLE)
        return;
    tela_sethsvcol(hue, saturation, luminance / y, bypass);
}

int tela_getcolour()
{
    return s_current.packed;
}

void tela_setcolour(int packed)
{
    if (packed == s_current.packed)
        return;
    s_current.rgbValid = false;
    s_current.hsvValid = false;
    s_current.packed = packed;
}

double tela_currentcol_r()
{
    ensure_rgb_view();
    return s_current.currentR;
}

double tela_currentcol_g()
{
    ensure_rgb_view();
    return s_current.currentG;
}

double tela_currentcol_b()
{
    ensure_rgb_view();
    return s_current.currentB;
}

double tela_currentcol_hue()
{
    ensure_hsv_view();
    return s_current.currentHue;
}

double tela_currentcol_saturation()
{
    ensure_hsv_view();
    return s_current.currentSaturation;
}

double tela_currentcol_value()
{
    ensure_hsv_view();
    return s_current.currentValue;
}
