// iGraphicPrimitivesRenderer: draws primitives into a window or an offscreen image.
//
// - All coordinates are top-down (window space) in pixels of the target surface.
// - Each draw operation takes an array of descriptions (platform/GraphicPrimitives.h)
//   and its length; a count of 0 is legal and draws nothing.
// - The clip holds for every draw until it is changed; a null region clears it.
// - Releasing the last reference to a window's renderer ends the frame and presents it.
// The slot order below is fixed: renderers built elsewhere are called through it.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/iRegion.h"

class ShaderRectDescription;
class LineStripDescription;
class RoundedRectDescription;
class ImageDescriptionEx;
class ImageDescription;
class BezierCurveDescription;
class AlphaRectDescription;
class TextDescription;
class LineDescription;
class EllipseDescription;
class RectDescription;

class iGraphicPrimitivesRenderer : public iObject {
public:
    // What getCaps() may report beyond the primitives every renderer draws.
    static constexpr unsigned CAP_NATIVE_BEZIERS = 0x100;
    static constexpr unsigned CAP_SHADERS = 0x400;
    static constexpr unsigned CAP_NATIVE_LINE_STRIPS = 0x4000;

    virtual void setClip(Qv::Ptr<iRegion> clip) = 0;   // null clears the clip
    virtual void setAntialiasing(bool enabled) = 0;
    virtual unsigned getCaps() const = 0;
    virtual void drawShaderRects(const ShaderRectDescription* descriptions, unsigned count) = 0;   // up to 8
    virtual void drawLineStrips(const LineStripDescription* descriptions, unsigned count) = 0;
    virtual void reserved6() {}   // never called by the library
    virtual void reserved7() {}
    virtual void drawRoundedRects(const RoundedRectDescription* descriptions, unsigned count) = 0;
    virtual void drawImagesEx(const ImageDescriptionEx* descriptions, unsigned count) = 0;
    virtual void drawImages(const ImageDescription* descriptions, unsigned count) = 0;
    virtual void drawBeziers(const BezierCurveDescription* descriptions, unsigned count) = 0;
    virtual void drawAlphaRects(const AlphaRectDescription* descriptions, unsigned count) = 0;
    virtual void drawTexts(const TextDescription* descriptions, unsigned count) = 0;
    virtual void drawLines(const LineDescription* descriptions, unsigned count) = 0;
    virtual void drawEllipses(const EllipseDescription* descriptions, unsigned count) = 0;
    virtual void drawRects(const RectDescription* descriptions, unsigned count) = 0;
};
