#pragma once
// ColourData: a colour as three doubles in a named colour space, with the
// arithmetic between the spaces.
//
// - Spaces: 0 RGB (red, green, blue, 0..1), 1 luma and chroma (Y 0..1, Cr
//   and Cb about -0.5..0.5, the studio weights 0.299, 0.587, 0.114), 2 HSV
//   (hue in degrees 0..360, saturation and value 0..1). A ColourSpace is a
//   plain number, so 0, 1 and 2 may be written as they are.
// - Values are carried, never clamped: a colour beyond 0..1 stays beyond it
//   through every conversion that can hold it.
// - `alpha` is the opacity when one was given, -1 when none was; the
//   conversions leave it alone.
// - Packed as the three components, alpha (doubles) and the space (32 bits),
//   after a revision byte that the caller writes and hands back to unpack.

#include <cstdint>

class PStream;

using ColourSpace = std::int32_t;
constexpr ColourSpace COLOUR_SPACE_RGB = 0;
constexpr ColourSpace COLOUR_SPACE_YCRCB = 1;
constexpr ColourSpace COLOUR_SPACE_HSV = 2;

class ColourData {
public:
    static constexpr unsigned char PACKING_REVISION = 1;

    ColourData() = default;
    ColourData(double c1, double c2, double c3, ColourSpace space, double alpha = -1.0);
    virtual ~ColourData() = default;
    ColourData(const ColourData&) = default;
    ColourData& operator=(const ColourData&) = default;

    // Same space and exactly the same components; alpha plays no part.
    bool operator==(const ColourData& other) const;

    double getRed() const;
    double getGreen() const;
    double getBlue() const;
    double getHue() const;
    double getSaturation() const;
    double getValue() const;
    double getY() const;
    double getCr() const;
    double getCb() const;

    // Converts the components into `space`; false, with nothing changed, for
    // a space that is none of the three.
    bool setColourSpace(ColourSpace space);

    // Component-wise, in the colour's own space.
    void offset(double d1, double d2, double d3);
    void scale(double factor);
    // Moves `amount` of the way towards `other`, taken into this colour's space.
    void tint(const ColourData& other, double amount);

    void pack(PStream& stream) const;
    // False when the revision is unknown, the stream ends early, a component
    // is not a number, or the space is unknown; the colour is then unchanged.
    bool unpack(PStream& stream, unsigned char revision);

    double c1 = 0.0;
    double c2 = 0.0;
    double c3 = 0.0;
    double alpha = -1.0;
    ColourSpace space = COLOUR_SPACE_RGB;

private:
    // The three components in `target`, computed from the stored ones.
    void convertedTo(ColourSpace target, double out[3]) const;
};
