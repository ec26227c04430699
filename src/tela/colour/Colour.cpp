// Colour: the value class and the free functions over it.
//
// Invariants
// - m_packed is 0xFFFFFFFF or the packed value of the channels through the
//   gamma curve (or not, with the flag the packing was done with). Every
//   path that writes a channel either recomputes it or leaves it stale on
//   purpose (setFromLong, the bypass setter), as the header says.
// - Channels are whatever they were given, NaN and infinities included; no
//   conversion here may turn such a value into undefined behaviour.
#include "tela/colour/Colour.h"

#include "tela/colour/CurrentColour.h"
#include "tela/colour/Gamma.h"
#include "tela/core/Config.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdlib>

namespace {

// A double as a channel. Beyond float's range the value saturates to an
// infinity rather than leaving the conversion to chance.
float to_channel(double value)
{
    if (value > FLT_MAX)
        return HUGE_VALF;
    if (value < -FLT_MAX)
        return -HUGE_VALF;
    return static_cast<float>(value);
}

// The low byte of x truncated towards zero, for any x: the byte an int
// conversion keeps, with no overflow for huge values and 0 for NaN.
unsigned low_byte(double x)
{
    if (!std::isfinite(x))
        return 0;
    const double wrapped = std::fmod(std::trunc(x), 256.0); // in (-256, 256)
    const int byte = static_cast<int>(wrapped);
    return static_cast<unsigned>(byte < 0 ? byte + 256 : byte);
}

Colour clampedColour(double r, double g, double b, bool bypass)
{
    return Colour(std::clamp(r, 0.0, 1.0), std::clamp(g, 0.0, 1.0), std::clamp(b, 0.0, 1.0), bypass);
}

// Nothing but blanks.
bool isEssentiallyEmpty(const String& text)
{
    return std::all_of(text.view().begin(), text.view().end(),
                       [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

// "%lf %lf %lf": three numbers, each after optional blanks; what follows the
// third is ignored. strtod rather than sscanf, whose behaviour on a number
// out of range is undefined.
bool parse_three(const char* text, double out[3])
{
    for (int i = 0; i < 3; ++i) {
        char* end = nullptr;
        out[i] = std::strtod(text, &end);
        if (end == text)
            return false;
        text = end;
    }
    return true;
}

} // namespace

Colour::Colour() : NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f)
{
    get_vlib_colour(false);
}

Colour::Colour(double red, double green, double blue, bool bypass)
    : NormalisedRGB(to_channel(red), to_channel(green), to_channel(blue), 1.0f),
      m_bypassGamma(bypass)
{
    get_vlib_colour(bypass);
}

Colour::Colour(const Colour& other) = default;

Colour::Colour(const NormalisedRGB& other) : NormalisedRGB(other.r, other.g, other.b, other.a), m_bypassGamma(true)
{
    get_vlib_colour(true);
}

Colour& Colour::operator=(const Colour& other)
{
    setrgb(other.r, other.g, other.b, other.m_bypassGamma);
    return *this;
}

bool Colour::operator==(const Colour& other) const
{
    constexpr double TOLERANCE = 1e-6;
    return std::fabs(double(r) - double(other.r)) < TOLERANCE && std::fabs(double(g) - double(other.g)) < TOLERANCE &&
           std::fabs(double(b) - double(other.b)) < TOLERANCE && m_bypassGamma == other.m_bypassGamma;
}

const Colour& Colour::invalid()
{
    static const Colour colour(-1.0, -1.0, -1.0, false);
    return colour;
}

bool Colour::valid() const
{
    return !(*this == invalid());
}

Colour Colour::make(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha)
{
    Colour colour(red / 255.0f, green / 255.0f, blue / 255.0f, true);
    colour.a = alpha / 255.0f;
    return colour;
}

void Colour::set(double red, double green, double blue)
{
    setrgb(red, green, blue, false);
}

void Colour::setrgb(double red, double green, double blue, bool bypass)
{
    r = to_channel(red);
    g = to_channel(green);
    b = to_channel(blue);
    a = 1.0f;
    m_bypassGamma = bypass;
    get_vlib_colour(bypass);
}

void Colour::setFromLong(int packed)
{
    m_packed = packed;
    const auto bits = static_cast<std::uint32_t>(packed);
    r = (bits & 0xFF) / 255.0f;
    g = (bits >> 8 & 0xFF) / 255.0f;
    b = (bits >> 16 & 0xFF) / 255.0f;
    a = (bits >> 24 & 0xFF) / 255.0f;
}

int Colour::getAsLong() const
{
    if (m_packed == -1)
        get_vlib_colour(false);
    return m_packed;
}

float Colour::brightness() const
{
    return (g + r + b) / 3.0f;
}

void Colour::get_vlib_colour(bool bypass) const
{
    m_packed = vlib_rgbcol(r, g, b, bypass ? 1 : 0);
}

Colour::Colour(const char* key, const Colour& fallback) : Colour()
{
    *this = config_colour(key, fallback);
    get_vlib_colour(m_bypassGamma);
}

Colour::Colour(const char* key, double red, double green, double blue, bool bypass) : Colour()
{
    *this = config_colour(key, red, green, blue, bypass);
    get_vlib_colour(m_bypassGamma);
}

Colour Colour::mix(const Colour& a, const Colour& b, double t)
{
    const auto blend = [t](double from_b, double from_a) { return from_b * (1.0 - t) + from_a * t; };
    return clampedColour(blend(b.r, a.r), blend(b.g, a.g), blend(b.b, a.b), a.m_bypassGamma || b.m_bypassGamma);
}

void Colour::take_current_colour()
{
    r = to_channel(tela_currentcol_r());
    g = to_channel(tela_currentcol_g());
    b = to_channel(tela_currentcol_b());
    a = 1.0f;
    m_packed = tela_getcolour();
}

// The HSV and HSL arithmetic lives in the current-colour machine; these
// borrow it and put the caller's current colour back (by its packed value,
// so the cached views of it are lost if it differed).
void Colour::sethsv(double hue, double saturation, double value, bool bypass)
{
    const int saved = tela_getcolour();
    tela_sethsvcol(hue, saturation, value, bypass);
    take_current_colour();
    m_bypassGamma = bypass;
    tela_setcolour(saved);
}

void Colour::sethsl(double hue, double saturation, double lightness, bool bypass)
{
    const int saved = tela_getcolour();
    tela_sethslcol(hue, saturation, lightness, bypass);
    take_current_colour();
    m_bypassGamma = bypass;
    tela_setcolour(saved);
}

void Colour::changehsv(double dh, double ds, double dv)
{
    const int saved = tela_getcolour();
    tela_setrgbcol(r, g, b, false);
    const double hue = tela_currentcol_hue();
    const double saturation = tela_currentcol_saturation();
    const double value = tela_currentcol_value();
    tela_sethsvcol(hue + dh, saturation + ds, value + dv, false);
    take_current_colour();
    tela_setcolour(saved);
}

unsigned long Colour::colorref(bool raw) const
{
    if (!raw)
        return static_cast<std::uint32_t>(getAsLong());
    // Rounded, then clamped above only: a negative channel keeps its low byte.
    const auto byte = [](float c) {
        const double x = c * 255.0 + 0.5;
        return x >= 255.0 ? 255u : low_byte(x);
    };
    return byte(r) | byte(g) << 8 | byte(b) << 16;
}

void Colour::use(bool forceBypass) const
{
    if (m_packed == -1)
        get_vlib_colour(false);
    // The common case costs a compare and a store: the packed value is ready.
    if (!forceBypass && !m_bypassGamma)
        tela_setcolour(m_packed);
    else
        tela_setrgbcol(r, g, b, true);
}

String Colour::asString() const
{
    String text;
    text << r;
    text += ' ';
    text << g;
    text += ' ';
    text << b;
    return text;
}

Colour scale(const Colour& c, double f)
{
    return clampedColour(c.r * f, c.g * f, c.b * f, c.bypassGamma());
}

Colour offsetColour(const Colour& c, double dr, double dg, double db)
{
    const auto offset = [](double channel, double delta) { return std::min(std::max(channel + delta, 0.0), 1.0); };
    return Colour(offset(c.r, dr), offset(c.g, dg), offset(c.b, db), c.bypassGamma());
}

Colour tintColour(const Colour& c, double r, double g, double b, double t)
{
    const auto tint = [t](double channel, double target) { return (target - channel) * t + channel; };
    return Colour(tint(c.r, r), tint(c.g, g), tint(c.b, b), c.bypassGamma());
}

unsigned long asARGB(const Colour& c, double alpha)
{
    const Colour corrected = vlib_gammaCorrect(c);
    const auto byte = [](double x) { return static_cast<unsigned long>(low_byte(x * 255.0 + 0.5)); };
    return byte(corrected.b) | byte(corrected.g) << 8 | byte(corrected.r) << 16 | byte(alpha) << 24;
}

NormalisedRGB fromColour(const Colour& c)
{
    if (c.bypassGamma())
        return NormalisedRGB(c.r, c.g, c.b, c.a);
    return NormalisedRGB(to_channel(vlib_gammaCorrect(double(c.r))), to_channel(vlib_gammaCorrect(double(c.g))),
                         to_channel(vlib_gammaCorrect(double(c.b))), c.a);
}

Colour toColour(const NormalisedRGB& c)
{
    return Colour(c.r, c.g, c.b, true);
}

Colour config_colour(const char* key, double r, double g, double b, bool bypass)
{
    Colour colour(r, g, b, bypass);
    if (!key)
        return colour;
    const String text = GlobalConfig().getValue(key, String());
    double channels[3];
    if (!isEssentiallyEmpty(text) && parse_three(text.c_str(), channels))
        colour.setrgb(channels[0], channels[1], channels[2], bypass);
    return colour;
}

Colour config_colour(const char* key, const Colour& fallback)
{
    return config_colour(key, fallback.r, fallback.g, fallback.b, fallback.bypassGamma());
}

unsigned long getWinColFromQvCol(int packed)
{
    return static_cast<std::uint32_t>(packed);
}
