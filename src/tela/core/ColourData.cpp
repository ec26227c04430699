#include "tela/core/ColourData.h"

#include "tela/core/PStream.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double KR = 0.299, KG = 0.587, KB = 0.114;
constexpr double CR_SCALE = 0.713, CB_SCALE = 0.564;

bool known(ColourSpace space)
{
    return space == COLOUR_SPACE_RGB || space == COLOUR_SPACE_YCRCB || space == COLOUR_SPACE_HSV;
}

void rgb_from_ycrcb(const double in[3], double out[3])
{
    const double y = in[0];
    const double red = y + in[1] / CR_SCALE;
    const double blue = y + in[2] / CB_SCALE;
    out[0] = red;
    out[1] = (y - KR * red - KB * blue) / KG;
    out[2] = blue;
}

void ycrcb_from_rgb(const double in[3], double out[3])
{
    const double y = KR * in[0] + KG * in[1] + KB * in[2];
    out[0] = y;
    out[1] = (in[0] - y) * CR_SCALE;
    out[2] = (in[2] - y) * CB_SCALE;
}

void rgb_from_hsv(const double in[3], double out[3])
{
    const double saturation = in[1], value = in[2];
    if (saturation == 0.0 || !std::isfinite(in[0])) {
        out[0] = out[1] = out[2] = value;
        return;
    }
    double hue = std::fmod(in[0], 360.0);
    if (hue < 0.0)
        hue += 360.0;
    const double sector = hue / 60.0;
    const int index = std::min(static_cast<int>(sector), 5);
    const double fraction = sector - index;
    const double p = value * (1.0 - saturation);
    const double q = value * (1.0 - saturation * fraction);
    const double t = value * (1.0 - saturation * (1.0 - fraction));
    const double table[6][3] = {{value, t, p}, {q, value, p}, {p, value, t},
                                {p, q, value}, {t, p, value}, {value, p, q}};
    std::copy(table[index], table[index] + 3, out);
}

void hsv_from_rgb(const double in[3], double out[3])
{
    const double high = std::max({in[0], in[1], in[2]});
    const double low = std::min({in[0], in[1], in[2]});
    const double range = high - low;
    double hue = 0.0;
    if (range > 0.0) {
        if (high == in[0])
            hue = 60.0 * std::fmod((in[1] - in[2]) / range, 6.0);
        else if (high == in[1])
            hue = 60.0 * ((in[2] - in[0]) / range + 2.0);
        else
            hue = 60.0 * ((in[0] - in[1]) / range + 4.0);
        if (hue < 0.0)
            hue += 360.0;
    }
    out[0] = hue;
    out[1] = high != 0.0 ? range / high : 0.0;
    out[2] = high;
}

} // namespace

ColourData::ColourData(double c1, double c2, double c3, ColourSpace space, double alpha)
    : c1(c1), c2(c2), c3(c3), alpha(alpha), space(space)
{
}

bool ColourData::operator==(const ColourData& other) const
{
    return space == other.space && c1 == other.c1 && c2 == other.c2 && c3 == other.c3;
}

void ColourData::convertedTo(ColourSpace target, double out[3]) const
{
    const double stored[3] = {c1, c2, c3};
    if (target == space || !known(space) || !known(target)) {
        std::copy(stored, stored + 3, out);
        return;
    }
    double rgb[3];
    if (space == COLOUR_SPACE_RGB)
        std::copy(stored, stored + 3, rgb);
    else if (space == COLOUR_SPACE_YCRCB)
        rgb_from_ycrcb(stored, rgb);
    else
        rgb_from_hsv(stored, rgb);
    if (target == COLOUR_SPACE_RGB)
        std::copy(rgb, rgb + 3, out);
    else if (target == COLOUR_SPACE_YCRCB)
        ycrcb_from_rgb(rgb, out);
    else
        hsv_from_rgb(rgb, out);
}

namespace {

double component(const ColourData& colour, ColourSpace space, int index)
{
    ColourData copy(colour);
    copy.setColourSpace(space);
    const double values[3] = {copy.c1, copy.c2, copy.c3};
    return values[index];
}

} // namespace

double ColourData::getRed() const { return component(*this, COLOUR_SPACE_RGB, 0); }
double ColourData::getGreen() const { return component(*this, COLOUR_SPACE_RGB, 1); }
double ColourData::getBlue() const { return component(*this, COLOUR_SPACE_RGB, 2); }
double ColourData::getY() const { return component(*this, COLOUR_SPACE_YCRCB, 0); }
double ColourData::getCr() const { return component(*this, COLOUR_SPACE_YCRCB, 1); }
double ColourData::getCb() const { return component(*this, COLOUR_SPACE_YCRCB, 2); }
double ColourData::getHue() const { return component(*this, COLOUR_SPACE_HSV, 0); }
double ColourData::getSaturation() const { return component(*this, COLOUR_SPACE_HSV, 1); }
double ColourData::getValue() const { return component(*this, COLOUR_SPACE_HSV, 2); }

bool ColourData::setColourSpace(ColourSpace target)
{
    if (!known(target))
        return false;
    double out[3];
    convertedTo(target, out);
    c1 = out[0];
    c2 = out[1];
    c3 = out[2];
    space = target;
    return true;
}

void ColourData::offset(double d1, double d2, double d3)
{
    c1 += d1;
    c2 += d2;
    c3 += d3;
}

void ColourData::scale(double factor)
{
    c1 *= factor;
    c2 *= factor;
    c3 *= factor;
}

void ColourData::tint(const ColourData& other, double amount)
{
    double target[3];
    other.convertedTo(space, target);
    c1 += (target[0] - c1) * amount;
    c2 += (target[1] - c2) * amount;
    c3 += (target[2] - c3) * amount;
}

void ColourData::pack(PStream& stream) const
{
    stream << c1 << c2 << c3 << alpha << static_cast<std::int32_t>(space);
}

bool ColourData::unpack(PStream& stream, unsigned char revision)
{
    if (revision != PACKING_REVISION)
        return false;
    double values[4];
    std::int32_t packedSpace = 0;
    stream >> values[0] >> values[1] >> values[2] >> values[3] >> packedSpace;
    if (!stream.good() || !known(packedSpace) || !std::all_of(values, values + 3, [](double v) { return std::isfinite(v); }))
        return false;
    c1 = values[0];
    c2 = values[1];
    c3 = values[2];
    alpha = values[3];
    space = packedSpace;
    return true;
}
