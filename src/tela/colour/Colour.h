#pragma once
// Colour: linear red, green and blue as floats, with the packed device value
// they give through the gamma curve (Gamma.h) kept alongside, so that
// selecting a colour that is used again and again costs no pow.
//
// - Channels are not clamped: out-of-range values are carried and only the
//   packing clamps. The invalid colour is (-1, -1, -1).
// - With the bypass flag set the channels already are device values and the
//   gamma curve is skipped.
// - Equality is tolerant (1e-6 a channel) and ignores alpha; assignment
//   resets alpha to 1 while copy construction keeps it. Both are deliberate:
//   colours compare by what they paint, and a stored colour is opaque.
// - A packed value of 0xFFFFFFFF means "not computed yet".

#include "tela/core/LightweightString.h"
#include "tela/core/NormalisedRGB.h"

#include <cstdint>

class Colour : public NormalisedRGB {
public:
    Colour();
    Colour(double red, double green, double blue, bool bypassGamma);
    Colour(const Colour& other);
    // The channels and alpha of a renderer colour, taken as device values.
    Colour(const NormalisedRGB& other);
    // The configured colour under `key`, or the default.
    Colour(const char* key, const Colour& fallback);
    Colour(const char* key, double red, double green, double blue, bool bypassGamma);
    ~Colour() override = default;

    // Takes the channels and the bypass flag; alpha becomes 1.
    Colour& operator=(const Colour& other);
    bool operator==(const Colour& other) const;
    bool operator!=(const Colour& other) const { return !(*this == other); }

    static const Colour& invalid();
    bool valid() const;
    static Colour make(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
    // Blends per channel: b * (1 - t) + a * t, clamped; t = 1 gives a.
    static Colour mix(const Colour& a, const Colour& b, double t);

    void set(double red, double green, double blue);
    void setrgb(double red, double green, double blue, bool bypass);
    // From a packed value (red in the low byte, alpha in the high byte), with
    // no inverse gamma; the bypass flag stays as it was.
    void setFromLong(int packed);
    virtual int getAsLong() const;

    void sethsv(double hue, double saturation, double value, bool bypass);
    void sethsl(double hue, double saturation, double lightness, bool bypass);
    void changehsv(double dh, double ds, double dv);

    float brightness() const;
    unsigned long colorref(bool raw) const;
    // Makes this the current colour of the path API.
    void use(bool forceBypass) const;
    void setrgbcol(bool forceBypass) const { use(forceBypass); }
    String asString() const;

    // Setting the flag does not recompute the packed value.
    void bypassGamma(bool bypass) { m_bypassGamma = bypass; }
    bool bypassGamma() const { return m_bypassGamma; }

private:
    void get_vlib_colour(bool bypass) const;
    // The channels and packed value of the current colour; alpha 1.
    void take_current_colour();

    mutable std::int32_t m_packed = -1; // 0xFFFFFFFF: not computed yet
    bool m_bypassGamma = false;
};

// Each channel times f, clamped to 0..1.
Colour scale(const Colour& c, double f);
// Each channel plus its offset, clamped to 0..1.
Colour offsetColour(const Colour& c, double dr, double dg, double db);
// Each channel moved towards the target by t; not clamped.
Colour tintColour(const Colour& c, double r, double g, double b, double t);
// Blue in bits 0-7, green 8-15, red 16-23, alpha 24-31, after gamma.
unsigned long asARGB(const Colour& c, double alpha);
// The renderer's form: gamma applied unless the colour bypasses it.
NormalisedRGB fromColour(const Colour& c);
// A renderer colour back, as device values; alpha 1.
Colour toColour(const NormalisedRGB& c);
// The colour stored under `key` as three numbers ("0.1 0.2 0.3"), else the
// default given.
Colour config_colour(const char* key, double r, double g, double b, bool bypass);
Colour config_colour(const char* key, const Colour& fallback);
unsigned long getWinColFromQvCol(int packed);
