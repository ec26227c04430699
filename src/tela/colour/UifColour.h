#pragma once
// UifColour: the colour kept in the application's interface files: three
// doubles in a named colour space (see ColourData), with the packed forms
// other code needs and a bridge to Colour and the current colour.
//
// - Every conversion works on a copy taken into RGB: the colour itself keeps
//   its space and components.
// - The packed integer forms truncate each channel and do not mask it, so a
//   channel beyond 0..1 spills into its neighbours; files and callers depend
//   on exactly these numbers, so the formulas stay as they are. A channel that
//   is not a number counts as 0, and one beyond an int as the nearest int.
// - Equality is exact: same space, same components, no conversion.
// - Persisted as a revision byte and then ColourData's packing. A record that
//   is truncated or corrupt is reported and reads as the invalid colour
//   (-1, -1, -1 in RGB).

#include "tela/colour/Colour.h"
#include "tela/core/ColourData.h"
#include "tela/core/LightweightString.h"

class PStream;

// The unsigned long of the packed window colour; the same type the C library
// may already name so.
using ulong = unsigned long;

class UifColour {
public:
    UifColour() = default;
    UifColour(double c1, double c2, double c3, ColourSpace s);
    UifColour(const Colour& colour);
    UifColour(const ColourData& data);
    UifColour(const UifColour& other);
    virtual ~UifColour() = default;

    UifColour& operator=(const UifColour& other);
    UifColour& operator=(const ColourData& data);
    bool operator==(const UifColour& other) const;
    bool operator==(const ColourData& data) const;

    double red() const { return m_data.getRed(); }
    double green() const { return m_data.getGreen(); }
    double blue() const { return m_data.getBlue(); }
    double hue() const { return m_data.getHue(); }
    double saturation() const { return m_data.getSaturation(); }
    double value() const { return m_data.getValue(); }
    double Y() const { return m_data.getY(); }
    double Cr() const { return m_data.getCr(); }
    double Cb() const { return m_data.getCb(); }

    double component1() const { return m_data.c1; }
    double component2() const { return m_data.c2; }
    double component3() const { return m_data.c3; }
    ColourSpace colourSpace() const { return m_data.space; }
    // Converts the stored components into `space`.
    bool colourSpace(ColourSpace space) { return m_data.setColourSpace(space); }
    // Stores all four as given, converting nothing.
    void colour(double c1, double c2, double c3, ColourSpace s);

    UifColour& offset(double d1, double d2, double d3);
    UifColour& scale(double factor);
    UifColour& tint(UifColour other, double amount);

    static unsigned char currentBuildRevision() { return 1; }

    // R5 G5 B5, red in the high bits.
    operator unsigned short() const { return to16Bit(); }
    unsigned short to16Bit() const;
    // Red in bits 16-23.
    operator unsigned int() const;
    // Red in bits 0-7, each channel masked to a byte.
    ulong getWinCol() const;
    // Luma and chroma in one number; channels within 0..1 all give 0x101010.
    unsigned int get32BitYUV() const;
    // get32BitYUV() for a colour stored in luma and chroma, else the unsigned
    // int form; `space` is not looked at.
    unsigned int to32Bit(ColourSpace space) const;
    Colour globColour() const;
    // Makes this the current drawing colour.
    void telaUse(bool bypass) const;

    // "r%fg%fb%f" for RGB, "h%fs%fv%f" for HSV, empty for luma and chroma.
    String asString() const;
    // Prints asString() to standard output.
    void debug() const;

    friend PStream& operator<<(PStream& stream, const UifColour& colour);
    friend PStream& operator>>(PStream& stream, UifColour& colour);

protected:
    // The form without a revision must not be called: it reports the misuse,
    // naming the object's own class, and reads nothing.
    void unpack(PStream& stream);

private:
    void pack(PStream& stream) const;
    void unpack(PStream& stream, unsigned char unused);
    // The stored colour taken into RGB: red, green, blue.
    void rgb(double out[3]) const;

    ColourData m_data;
};
