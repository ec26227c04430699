#include "tela/colour/Colour.h"

#include "tela/colour/Gamma.h"

#include <cmath>

Colour::Colour() : NormalisedRGB(0.0f, 0.0f, 0.0f, 1.0f)
{
    get_vlib_colour(false);
}

Colour::Colour(double red, double green, double blue, bool bypass)
    : NormalisedRGB(static_cast<float>(red), static_cast<float>(green), static_cast<float>(blue), 1.0f),
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
    r = static_cast<float>(red);
    g = static_cast<float>(green);
    b = static_cast<float>(blue);
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

NormalisedRGB fromColour(const Colour& c)
{
    if (c.bypassGamma())
        return NormalisedRGB(c.r, c.g, c.b, c.a);
    return NormalisedRGB(static_cast<float>(vlib_gammaCorrect(double(c.r))),
                         static_cast<float>(vlib_gammaCorrect(double(c.g))),
                         static_cast<float>(vlib_gammaCorrect(double(c.b))), c.a);
}

Colour toColour(const NormalisedRGB& c)
{
    return Colour(c.r, c.g, c.b, true);
}
