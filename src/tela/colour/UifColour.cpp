#include "tela/colour/UifColour.h"

#include "tela/colour/CurrentColour.h"
#include "tela/core/Log.h"
#include "tela/core/PStream.h"

#include <cmath>
#include <climits>
#include <cstdio>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>

namespace {

// Truncation toward zero, as a cast would do, but defined for every double:
// not a number gives 0, and values beyond an int the nearest int.
int truncated(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= static_cast<double>(INT_MAX))
        return INT_MAX;
    if (value <= static_cast<double>(INT_MIN))
        return INT_MIN;
    return static_cast<int>(value);
}

// The shifts and sums of the packed forms, in 32-bit two's complement: what
// the formulas give for channels in range, wrapped for those beyond it.
std::uint32_t bits(int value)
{
    return static_cast<std::uint32_t>(value);
}

} // namespace

UifColour::UifColour(double c1, double c2, double c3, ColourSpace s) : m_data(c1, c2, c3, s)
{
}

UifColour::UifColour(const Colour& colour) : m_data(colour.r, colour.g, colour.b, COLOUR_SPACE_RGB)
{
}

UifColour::UifColour(const ColourData& data)
{
    m_data = data;
}

UifColour::UifColour(const UifColour& other)
{
    colour(other.m_data.c1, other.m_data.c2, other.m_data.c3, other.m_data.space);
}

UifColour& UifColour::operator=(const UifColour& other)
{
    colour(other.m_data.c1, other.m_data.c2, other.m_data.c3, other.m_data.space);
    return *this;
}

UifColour& UifColour::operator=(const ColourData& data)
{
    m_data = data;
    return *this;
}

bool UifColour::operator==(const UifColour& other) const
{
    return m_data.space == other.m_data.space && m_data.c1 == other.m_data.c1 && m_data.c2 == other.m_data.c2 &&
           m_data.c3 == other.m_data.c3;
}

bool UifColour::operator==(const ColourData& data) const
{
    return m_data == data;
}

void UifColour::colour(double c1, double c2, double c3, ColourSpace s)
{
    m_data.c1 = c1;
    m_data.c2 = c2;
    m_data.c3 = c3;
    m_data.space = s;
}

UifColour& UifColour::offset(double d1, double d2, double d3)
{
    m_data.offset(d1, d2, d3);
    return *this;
}

UifColour& UifColour::scale(double factor)
{
    m_data.scale(factor);
    return *this;
}

UifColour& UifColour::tint(UifColour other, double amount)
{
    m_data.tint(other.m_data, amount);
    return *this;
}

void UifColour::rgb(double out[3]) const
{
    ColourData copy(m_data.c1, m_data.c2, m_data.c3, m_data.space, -1.0);
    copy.setColourSpace(COLOUR_SPACE_RGB);
    out[0] = copy.c1;
    out[1] = copy.c2;
    out[2] = copy.c3;
}

unsigned short UifColour::to16Bit() const
{
    double c[3];
    rgb(c);
    const std::uint32_t r = bits(truncated(c[0] * 31.0)), g = bits(truncated(c[1] * 31.0)),
                        b = bits(truncated(c[2] * 31.0));
    return static_cast<unsigned short>(((r << 5) | g) << 5 | b);
}

UifColour::operator unsigned int() const
{
    double c[3];
    rgb(c);
    const std::uint32_t r = bits(truncated(c[0] * 255.0)), g = bits(truncated(c[1] * 255.0)),
                        b = bits(truncated(c[2] * 255.0));
    return ((r << 8) | g) << 8 | b;
}

ulong UifColour::getWinCol() const
{
    double c[3];
    rgb(c);
    const unsigned long r = bits(truncated(c[0] * 255.0)) & 0xFF, g = bits(truncated(c[1] * 255.0)) & 0xFF,
                        b = bits(truncated(c[2] * 255.0)) & 0xFF;
    return r | g << 8 | b << 16;
}

unsigned int UifColour::get32BitYUV() const
{
    double c[3];
    rgb(c);
    const double y = 0.299 * c[0] + 0.587 * c[1] + 0.114 * c[2];
    const double u = (c[2] - y) * 0.492;
    const double v = (c[0] - y) * 0.877;
    // Each value is truncated before it is scaled: within 0..1 all of them
    // truncate to 0, which is what stored files hold.
    return (bits(truncated(u)) * 0xE000u + 0x1000u) | (bits(truncated(v)) * 0xE0u + 0x10u) |
           (bits(truncated(y)) * 0xDB0000u + 0x100000u);
}

unsigned int UifColour::to32Bit(ColourSpace) const
{
    return m_data.space == COLOUR_SPACE_YCRCB ? get32BitYUV() : static_cast<unsigned int>(*this);
}

Colour UifColour::globColour() const
{
    double c[3];
    rgb(c);
    return Colour(c[0], c[1], c[2], false);
}

void UifColour::telaUse(bool bypass) const
{
    double c[3];
    rgb(c);
    tela_setrgbcol(c[0], c[1], c[2], bypass);
}

String UifColour::asString() const
{
    char buffer[256];
    int written = -1;
    if (m_data.space == COLOUR_SPACE_RGB)
        written = std::snprintf(buffer, sizeof buffer, "r%fg%fb%f", m_data.c1, m_data.c2, m_data.c3);
    else if (m_data.space == COLOUR_SPACE_HSV)
        written = std::snprintf(buffer, sizeof buffer, "h%fs%fv%f", m_data.c1, m_data.c2, m_data.c3);
    return written < 0 ? String("") : String(buffer);
}

void UifColour::debug() const
{
    std::printf(" RGB :-\t %s \n", asString().c_str());
}

void UifColour::pack(PStream& stream) const
{
    stream.file().setCookedChar(currentBuildRevision());
    m_data.pack(stream);
}

void UifColour::unpack(PStream& stream, unsigned char)
{
    unsigned char revision = 0;
    stream >> revision;
    if (!stream.good() || !m_data.unpack(stream, revision)) {
        murl_printf("UifColour: the packed colour is truncated or corrupt (revision %u); it reads as the "
                    "invalid colour\n",
                    static_cast<unsigned>(revision));
        colour(-1.0, -1.0, -1.0, COLOUR_SPACE_RGB);
    }
}

void UifColour::unpack(PStream&)
{
    const char* const mangled = typeid(*this).name();
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                           std::free);
    char text[256];
    std::snprintf(text, sizeof text, "Call made using illegal unpack syntax in %s.",
                  status == 0 && demangled ? demangled.get() : mangled);
    zeb_splat(text);
}

PStream& operator<<(PStream& stream, const UifColour& colour)
{
    colour.pack(stream);
    return stream;
}

PStream& operator>>(PStream& stream, UifColour& colour)
{
    colour.unpack(stream, 0);
    return stream;
}
