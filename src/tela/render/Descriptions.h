#pragma once
// The descriptions application code and the drawing helpers fill in: plain
// values in canvas coordinates (y upward), one class per primitive.
// CanvasRenderer::convert turns each into the record of the same name in the
// global namespace (platform/GraphicPrimitives.h), which is what crosses to the
// platform's renderer in top-down coordinates.
//
// - Copies are plain member copies; Qv::Ptr and string members are shared.
// - getExtents() is the bottom-up box a primitive may touch, in canvas
//   coordinates; the render guard clips against it and reports it as damage.
// - Ellipse and line coordinates given as doubles keep only the low 16 bits of
//   their integer part, sign-extended: an ellipse's box cannot reach beyond what
//   a signed 16-bit value holds, and a larger one wraps round on purpose.

#include "tela/colour/Colour.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/NormalisedRGB.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iFont.h"
#include "tela/platform/iImage.h"

#include <cstdint>

// How text is dressed when it is drawn. The renderer sees only `heavy`; the
// shadow, the halo and the line through are drawn by CanvasRenderer.
enum eTextStyle : std::int32_t {
    eTextPlain = 0,
    eTextDropShadow = 1,   // the second colour one pixel right and down, under the text
    eTextHalo = 2,         // the second colour one pixel round the text
    eTextHeavy = 3,        // flagged to the renderer as heavy
    eTextLineThrough = 4,  // a one-pixel line of the second colour through the middle
};

namespace Tela {

class FontDesc;

// The text styles the application's own settings speak of, numbered from 1.
namespace TextStyles {
enum TextStyle : std::int32_t {
    eNormal = 1,
    eDropShadow = 2,
    eHalo = 3,
    eHeavy = 4,
};
} // namespace TextStyles

// 1 gives plain, 2 shadow, 3 halo, 4 heavy; anything else gives plain.
eTextStyle mapTextStyle(TextStyles::TextStyle style);

class RectDescription {
public:
    // Defined here, as every draw of a rectangle builds one: a call each would
    // cost as much as the fill of a small one.
    RectDescription() = default;
    // Two colours from Colour values (through fromColour): the second reaches the renderer.
    RectDescription(const Qv::Box<int>& area, const Colour& first, const Colour& second)
        : box(area), colour(fromColour(first)), secondColour(fromColour(second)), twoColours(true)
    {
    }
    // One Colour: replaced, never blended, whatever its alpha.
    RectDescription(const Qv::Box<int>& area, const Colour& fill)
        : box(area), colour(fromColour(fill)), secondColour(colour)
    {
    }
    RectDescription(const Qv::Box<int>& area, const NormalisedRGB& first, const NormalisedRGB& second)
        : box(area), colour(first), secondColour(second), twoColours(true)
    {
    }
    // One renderer colour: laid over what is below unless it is exactly opaque.
    RectDescription(const Qv::Box<int>& area, const NormalisedRGB& fill)
        : box(area), colour(fill), secondColour(fill), blendMode(fill.a == 1.0f ? eBlendReplace : eBlendOver)
    {
    }
    RectDescription(const Qv::Box<int>& area, const NormalisedRGB& fill, eBlendMode mode)
        : box(area), colour(fill), secondColour(fill), blendMode(mode)
    {
    }
    RectDescription(const RectDescription&) = default;
    RectDescription(RectDescription&&) noexcept = default;
    RectDescription& operator=(const RectDescription&) = default;
    RectDescription& operator=(RectDescription&&) noexcept = default;

    Qv::Box<int> getExtents() const { return box; }
    void translate(int dx, int dy);

    Qv::Box<int> box;
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    eBlendMode blendMode = eBlendReplace;
    bool twoColours = false;
};

class AlphaRectDescription {
public:
    Qv::Box<int> getExtents() const { return box; }
    void translate(int dx, int dy);

    Qv::Box<int> box;
    std::uint32_t mode = 2;   // the renderer's
    NormalisedRGB colour;     // only r, g and b are used
    float alpha = 1.0f;       // takes the place of the colour's own alpha
};

class EllipseDescription {
public:
    enum Style : std::int32_t {
        eFilled = 0,
        eOutline = 1,
        eFilledAndOutlined = 2,
    };

    EllipseDescription();
    // Filled with `fill` and outlined with `line`.
    EllipseDescription(const Qv::Box<double>& area, const NormalisedRGB& fill, const NormalisedRGB& line,
                       unsigned thickness);
    EllipseDescription(const Qv::Box<double>& area, const NormalisedRGB& colour, Style style, unsigned thickness);
    EllipseDescription(const EllipseDescription&);
    EllipseDescription(EllipseDescription&&) noexcept;
    EllipseDescription& operator=(const EllipseDescription&);
    EllipseDescription& operator=(EllipseDescription&&) noexcept;

    // The box grown by the thickness on every side.
    Qv::Box<int> getExtents() const;
    void translate(int dx, int dy);

    Qv::Box<int> box;
    NormalisedRGB fillColour;
    NormalisedRGB lineColour;
    Style style = eFilled;
    std::uint16_t thickness = 1;
    std::uint16_t startAngle = 0;   // degrees
    std::uint16_t endAngle = 360;
};

class RoundedRectDescription {
public:
    Qv::Box<int> getExtents() const { return box; }
    void translate(int dx, int dy);

    Qv::Box<int> box;
    Colour fillColour;
    Colour lineColour;
    std::uint16_t radius = 0;
    std::uint16_t thickness = 0;   // 0: no outline
    std::uint32_t corners = 15;    // 1 top left, 2 top right, 4 bottom left, 8 bottom right
};

class LineDescription {
public:
    // The box of the end points, grown by the thickness on every side.
    Qv::Box<int> getExtents() const;
    void translate(int dx, int dy);

    XY<double> start;
    XY<double> end;
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    bool patterned = false;
    std::uint32_t pattern = 0;     // what a pattern looks like is the renderer's
    std::uint32_t thickness = 1;
};

class LineStripDescription {
public:
    LineStripDescription();
    LineStripDescription(const LineStripDescription&);
    LineStripDescription(LineStripDescription&&) noexcept;
    LineStripDescription& operator=(const LineStripDescription&);
    LineStripDescription& operator=(LineStripDescription&&) noexcept;

    // Empty below two points. An axis along which the strip does not extend is
    // widened by the thickness, upward or rightward only.
    Qv::Box<int> getExtents() const;
    void translate(int dx, int dy);

    Qv::Vector<XY<double>> points;
    NormalisedRGB colour;
    std::uint32_t thickness = 1;
};

class BezierCurveDescription {
public:
    // The box of all four points, the control points included.
    Qv::Box<int> getExtents() const;
    void translate(int dx, int dy);

    NormalisedRGB colour;
    XY<int> start;
    XY<int> end;
    XY<int> control1;   // pulls the curve near start
    XY<int> control2;   // pulls the curve near end
    std::uint32_t thickness = 1;
};

class TextDescription {
public:
    TextDescription();
    // The font is the table's for `desc`.
    TextDescription(const WString& text, const XY<int>& position, const NormalisedRGB& colour, TextAlignment alignment,
                    const FontDesc& desc);
    TextDescription(const WString& text, const XY<int>& position, const NormalisedRGB& colour, TextAlignment alignment,
                    Qv::Ptr<iFont> font);
    TextDescription(const WString& text, const XY<int>& position, const NormalisedRGB& colour, TextAlignment alignment,
                    eTextStyle style, Qv::Ptr<iFont> font);
    TextDescription(const TextDescription&);
    TextDescription(TextDescription&&) noexcept;
    TextDescription& operator=(const TextDescription&);
    TextDescription& operator=(TextDescription&&) noexcept;

    Qv::Box<int> getExtents() const { return extents; }
    // Moves the extents only: the renderer takes the text's position from them.
    void translate(int dx, int dy);
    // The box of the text with `position` on its baseline, aligned by `alignment`.
    // Without a font the default font is taken (and kept); when even that cannot
    // be had the extents stay as they are.
    void calcBounds(XY<int> position);
    // Crosswise on purpose: `second` colours the shadow, halo and line through,
    // `first` goes to the renderer as the third colour.
    void setSelectionColours(const NormalisedRGB& first, const NormalisedRGB& second);

    WString text;
    NormalisedRGB colour;
    NormalisedRGB secondColour;
    NormalisedRGB thirdColour;
    Qv::Ptr<iFont> font;
    Qv::Box<int> extents;
    TextAlignment alignment {0, 1};   // horizontal: 0 left, 1 right, 2 centred
    eTextStyle style = eTextPlain;
    std::int16_t selectionStart = 0;
    std::int16_t selectionEnd = 0;
};

class ImageDescription {
public:
    Qv::Box<int> getExtents() const { return destBox; }
    void translate(int dx, int dy);

    Qv::Ptr<iImage> image;
    Qv::Box<int> sourceBox;   // in image pixels, bottom-up
    Qv::Box<int> destBox;     // in canvas coordinates
    bool blend = false;
};

} // namespace Tela
