// GraphicPrimitives: the descriptions that cross the seam to iGraphicPrimitivesRenderer.
//
// Invariants
// - Every coordinate is in renderer space: top-down, in pixels of the target surface.
//   getExtents() hands back a Qv::Box whose x1, y1, x2, y2 are left, top, right, bottom
//   of that space, not a bottom-up box.
// - The records are a wire format: every field stays, in order, including the words
//   the library leaves at zero, so that a renderer built against an older layout reads
//   the same bytes. New helpers may be added as non-virtual members only.
// - Default colours are opaque black (NormalisedRGB's own default).
// - Copies are plain member copies; Qv::Ptr and string members are shared, not cloned.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/NormalisedRGB.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iFont.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iShaderEffect.h"

#include <cstdint>
#include <utility>

// How a filled rectangle meets what is below it. 0 replaces the pixels (colour and
// alpha alike), 1 lays the colour over them; other values belong to the renderer.
enum eBlendMode : std::int32_t {
    eBlendReplace = 0,
    eBlendOver = 1,
};

// Horizontal: 0 left, 1 right, 2 centred, 3 justified. Vertical is carried, not read.
struct TextAlignment {
    std::int32_t horizontal = 0;
    std::int32_t vertical = 0;
    constexpr bool operator==(const TextAlignment& other) const = default;
};

class iGraphicPrimitive : public iVirtual {
public:
    virtual Qv::Box<int> getExtents() const = 0;
};

class RectDescription : public iGraphicPrimitive {
public:
    RectDescription() = default;
    RectDescription(const TopDownRect& area, const NormalisedRGB& fill) : rect(area), colour(fill) {}
    Qv::Box<int> getExtents() const override { return { rect.left, rect.top, rect.right, rect.bottom }; }

    TopDownRect rect;
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    NormalisedRGB thirdColour;            // never set by the library
    std::uint32_t reservedWords[3] {};
    std::int32_t blendMode = eBlendReplace;
    bool twoColours = false;
    std::uint32_t reservedTail = 0;
};

// A rectangle of one colour at a given alpha; what mode means is the renderer's.
class AlphaRectDescription : public RectDescription {
public:
    std::uint32_t mode = 2;
};

class EllipseDescription : public iGraphicPrimitive {
public:
    Qv::Box<int> getExtents() const override { return { rect.left, rect.top, rect.right, rect.bottom }; }

    TopDownRect rect;
    std::int32_t style = 0;               // 0 filled, 1 outline, 2 filled and outlined
    NormalisedRGB fillColour;
    NormalisedRGB lineColour;
    std::uint16_t thickness = 1;
    std::uint16_t startAngle = 0;         // degrees
    std::uint16_t endAngle = 360;
    std::uint32_t reservedTail = 0;
};

class RoundedRectDescription : public iGraphicPrimitive {
public:
    Qv::Box<int> getExtents() const override { return { rect.left, rect.top, rect.right, rect.bottom }; }

    TopDownRect rect;
    NormalisedRGB fillColour;
    NormalisedRGB lineColour;
    std::uint16_t radius = 0;
    std::uint16_t thickness = 0;          // 0: no outline
    std::uint32_t corners = 15;           // 1 top left, 2 top right, 4 bottom left, 8 bottom right
};

class LineDescription : public iGraphicPrimitive {
public:
    // The box of the two end points, without the thickness.
    Qv::Box<int> getExtents() const override;

    XY<int> start;
    XY<int> end;
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    std::uint32_t pattern = 0;            // what a pattern looks like is the renderer's
    bool patterned = true;
    std::uint32_t thickness = 1;
};

class LineStripDescription : public iGraphicPrimitive {
public:
    // Minima truncated toward zero, maxima rounded up. Folding starts from a minimum of
    // 10000 and a maximum of -10000, so a point far out on one axis widens only that axis.
    Qv::Box<int> getExtents() const override;

    Qv::Vector<XY<float>> points;
    NormalisedRGB colour;
    std::uint32_t thickness = 1;
};

class BezierCurveDescription : public iGraphicPrimitive {
public:
    // The box of all four points, the control points included.
    Qv::Box<int> getExtents() const override;

    XY<int> start;
    XY<int> end;
    XY<int> control1;                     // pulls the curve near start
    XY<int> control2;                     // pulls the curve near end
    NormalisedRGB colour;
    std::uint32_t thickness = 1;
};

class TextDescription : public iGraphicPrimitive {
public:
    // All zero without a font; otherwise from position along the measured string.
    Qv::Box<int> getExtents() const override;

    WString text;
    XY<int> position;                     // left end of the baseline
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    NormalisedRGB thirdColour;
    Qv::Ptr<iFont> font;
    TextAlignment alignment { 0, 1 };     // the library has already resolved the alignment
    bool heavy = false;
    std::int32_t selectionStart = 0;      // not greater than selectionEnd
    std::int32_t selectionEnd = 0;
};

class ImageDescription : public iGraphicPrimitive {
public:
    ImageDescription() = default;
    // The whole image at position, at its own size.
    ImageDescription(const Qv::Ptr<iImage>& source, const XY<int>& position, bool blend_with_destination);
    // Part of the image at position, at the part's own size.
    ImageDescription(const Qv::Ptr<iImage>& source, const XY<int>& position, const TopDownRect& source_area,
                     bool blend_with_destination);
    ImageDescription(const Qv::Ptr<iImage>& source, const TopDownRect& dest_area, const TopDownRect& source_area,
                     bool blend_with_destination);

    Qv::Box<int> getExtents() const override { return { destRect.left, destRect.top, destRect.right, destRect.bottom }; }

    Qv::Ptr<iImage> image;
    TopDownRect destRect;
    TopDownRect sourceRect;               // in image pixels, top-down
    bool blend = false;                   // false replaces the destination pixels
    float opacity = 1.0f;
};

// An image blit whose rectangles need not fall on whole pixels.
class ImageDescriptionEx : public iGraphicPrimitive {
public:
    ImageDescriptionEx() = default;
    ImageDescriptionEx(const Qv::Ptr<iImage>& source, const Qv::Rectangle<float>& source_area,
                       const Qv::Rectangle<float>& dest_area)
        : image(source), sourceRect(source_area), destRect(dest_area) {}

    // Left and top floored, right and bottom rounded up.
    Qv::Box<int> getExtents() const override;

    Qv::Ptr<iImage> image;
    Qv::Rectangle<float> sourceRect;
    Qv::Rectangle<float> destRect;
    bool enabled = true;                  // blend with the destination; false replaces it
    std::uint32_t reservedWords[2] {};
};

using ShaderInput = std::pair<Qv::Ptr<iImage>, Qv::Rectangle<float>>;

class ShaderRectDescription : public iGraphicPrimitive {
public:
    // Left and top floored, right and bottom rounded up.
    Qv::Box<int> getExtents() const override;

    // Appending parameters; each becomes one counted ShaderParamValue.
    void addParam(const String& name, float value);
    void addParam(const String& name, const NormalisedRGB& value);

    // Reading them back, for renderers and tests: the last value of that name and type,
    // or fallback when there is none.
    float floatParam(const char* name, float fallback) const;
    NormalisedRGB colourParam(const char* name, const NormalisedRGB& fallback) const;

    Qv::Ptr<iShaderEffect> shader;
    String reservedName;
    std::uint16_t reservedWord = 0;
    Qv::Vector<Qv::Ptr<iShaderParamValue>> params;
    Qv::Vector<ShaderInput> inputs;       // image and its source rectangle, in image pixels
    Qv::Rectangle<float> rect;            // where it lands, in renderer coordinates
    bool active = false;
};
