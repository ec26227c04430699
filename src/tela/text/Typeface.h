#pragma once
// Typeface: a plain value describing styled text, as applications hand it to
// the simple text calls. The library reads only `colour`; the other fields are
// carried for the application's own use and copied as they are.

#include "tela/colour/Colour.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"
#include "tela/platform/Geometry.h"

#include <cstdint>

// How carefully text is to be rendered. The platform chooses its own quality,
// so the library takes the value and passes it over.
enum FontOutputQuality : std::int32_t {
    eFontOutputDefault = 0,
    eFontOutputDraft = 1,
    eFontOutputAntialiased = 2,
};

class Typeface {
public:
    Typeface(String typefaceName, unsigned int typefaceSize, bool first, bool second, double factor);

    String name;
    std::uint32_t size = 0;
    bool flag1 = false;
    bool flag2 = false;
    Qv::Ptr<iObject> slot;              // null from the constructor; shared on copy
    double factor = 0.0;
    std::uint64_t reserved1 = 0;
    std::uint64_t reserved2 = 0;
    Colour colour;
    bool flag3 = false;
    std::uint32_t value = 0;
    Colour secondColour;
    bool flag4 = true;
    XY<double> offset {2.0, 2.0};

private:
    void init();
};
