#include "tela/colour/Gamma.h"

#include "tela/colour/Colour.h"

#include <algorithm>
#include <cmath>

namespace {

// Start-up sets the same value; holding it from the first instant lets
// colours made before the application exists pack the same way.
constexpr double STANDARD_GAMMA = 2.37;
bool s_initialised = false;

constexpr Qv::Box<int, Qv::BottomUpTraits> STANDARD_SCREEN {0, 0, 1023, 767};
// Handed out by address: callers read it as the box the path API measures
// against. Start-up puts the constant back in case anyone wrote through it.
Qv::Box<int, Qv::BottomUpTraits> s_screen = STANDARD_SCREEN;

double curve(double c)
{
    return std::pow(c * 0.6, 1.0 / vlibGamma);
}

int channel_byte(double c)
{
    // Truncation, then the clamp; a NaN channel packs as 0.
    const double scaled = c * 255.0;
    if (!(scaled > 0.0))
        return 0;
    return scaled >= 255.0 ? 255 : static_cast<int>(scaled);
}

} // namespace

double vlibGamma = STANDARD_GAMMA;

void vlib_init()
{
    vlibGamma = STANDARD_GAMMA;
    s_screen = STANDARD_SCREEN;
    s_initialised = true;
}

void vlib_forget()
{
    s_initialised = false;
}

bool vlib_initialised()
{
    return s_initialised;
}

double vlib_gammaCorrect(double c)
{
    return curve(c);
}

Colour vlib_gammaCorrect(const Colour& c)
{
    if (c.bypassGamma())
        return c;
    return Colour(curve(c.r), curve(c.g), curve(c.b), false);
}

int vlib_raw_rgbcol(double r, double g, double b)
{
    return channel_byte(r) | channel_byte(g) << 8 | channel_byte(b) << 16;
}

int vlib_rgbcol(double r, double g, double b, int bypass)
{
    if (bypass == 0)
        return vlib_raw_rgbcol(curve(r), curve(g), curve(b));
    return vlib_raw_rgbcol(r, g, b);
}

Colour vlib_rgbcol_inverse(const Colour& c)
{
    return Colour(std::pow(c.r, 2.37) / 0.6, std::pow(c.g, 2.37) / 0.6, std::pow(c.b, 2.37) / 0.6, false);
}

Qv::Box<int, Qv::BottomUpTraits>* vlib_screen()
{
    return &s_screen;
}
