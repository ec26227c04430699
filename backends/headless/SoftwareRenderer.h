// SoftwareRenderer: an iGraphicPrimitivesRenderer over a HostImage's pixels.
//
// Invariants
// - The target image is held, and locked, for the renderer's whole life: releasing the
//   renderer is what ends a frame on that image.
// - m_target wraps the image's own pixels (pixman a8r8g8b8 is the BGRA byte order of a
//   HostImage on a little-endian host); nothing is copied in or out. m_cairo, made on
//   the first curve, draws on the same pixels (Cairo ARGB32 is the same layout).
// - The clip, when set, lives on m_target as pixman's clip region, so every composite
//   honours it without further work here. m_clip holds the same rectangles for the one
//   copy that bypasses pixman (below) and for Cairo, since pixman gives no way to read
//   them back. Cairo is given them again before its next shape after each setClip.
// - Colours are premultiplied on the way in, exactly once: byte = round(component *
//   alpha * 255), which is what the tests model. Components outside 0..1 are clamped,
//   NaN reads as 0.
//
// pixman draws fills, blits, blending, clipping and every straight line that runs along
// a row or a column (borders, separators, focus marks). One case skips it: a large plain
// copy of whole pixels (no scaling, no blending, no opacity, inside the source), which
// is what every opaque canvas of a full repaint is. pixman copies with ordinary stores,
// so each destination line is read into the cache before it is overwritten; a frame
// bigger than the cache then moves half as much again as it needs. That copy walks the
// clip's rectangles itself and writes whole cache lines with streaming stores.
// "InFront" (an image times an opacity over the destination) runs on the CPU through
// the same blit; the other shader effects are pixel programs of their own
// (ShaderPrograms.h). Cairo rasterises the rest: ellipses, rounded rectangles, slanted
// lines, strips and Beziers, always laid over the destination. Texts are drawn by
// TextDrawing. A shader of an unknown name is reported once and skipped.
//
// What each description means here, where the library leaves it to the renderer:
// - Rectangles: blendMode 0 replaces the pixels, 1 and every other value lays the colour
//   over them. twoColours runs from colour on the top row to secondColour on the bottom
//   row, a vertical gradient. An alpha rectangle is always laid over; its mode is not read.
// - Images: without blend, the source's alpha is not read; an opacity below 1 lays the
//   image, as if opaque, over the destination by that share.
// - Ellipses fill the box exactly. Angles are degrees from 3 o'clock, growing clockwise
//   on the screen (90 is 6 o'clock), the way the library's own corner pieces are laid
//   out; the arc runs clockwise from startAngle to endAngle and wraps past 360. Equal
//   angles draw nothing, a sweep of 360 or more the whole ellipse. A partial filled
//   ellipse is a pie slice; a partial outline is the band along the curve alone.
//   Style 0 fills, 1 outlines, 2 fills then outlines in lineColour; other styles fill.
// - Outlines of ellipses and rounded rectangles lie inside the box, so the thickness
//   never changes what a shape covers; the fill is laid under the whole outline, which
//   leaves no seam between the two. A rounded rectangle with an outline whose two
//   colours have the same red, green and blue is hollow, as the shader road draws it.
//   Its radius is cut to half the shorter side; an unset corner bit is a square corner.
// - Lines, strips and Beziers are drawn with a square pen of the thickness (0 reads as
//   1) centred so that a line from (x0, y) to (x1, y) lights exactly the pixels x0..x1 of
//   row y, and rows y - (t-1)/2 onward for thickness t. Both end points are lit.
//   Strips join round; a NaN or infinite point breaks the strip in two.
// - Patterned lines with pattern n > 0 alternate runs of n pixels, colour first from
//   the start point, then secondColour: pattern 1 is the dotted focus mark. Slanted
//   lines count their runs along the longer axis.
// - Coordinates beyond 4,000,000 pixels are more than Cairo can hold: a Bezier, ellipse
//   or rounded rectangle reaching that far is skipped; lines and strips are cut to the
//   image first, so they are drawn.
#pragma once

#include "headless/HostImage.h"
#include "headless/ShaderPrograms.h"
#include "tela/platform/GraphicPrimitives.h"

#include <pixman.h>

#include <memory>

// Cairo stays out of this header: only the .cpp draws with it.
typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace Headless {

class SoftwareRenderer final : public iGraphicPrimitivesRenderer {
public:
    // Null when the image's pixels cannot be wrapped.
    static Qv::Ptr<SoftwareRenderer> create(const Qv::Ptr<HostImage>& target);

    ~SoftwareRenderer() override;
    SoftwareRenderer(const SoftwareRenderer&) = delete;
    SoftwareRenderer& operator=(const SoftwareRenderer&) = delete;

    // The shader effects this renderer knows by name; null for any other name.
    static Qv::Ptr<iShaderEffect> findShader(const String& name);
    // Tests: forget which operations were already reported as not drawn.
    static void forgetReportedOperations();
    // Tests: getCaps() of every renderer leaves out these bits until told otherwise
    // (0 hides nothing), so that the library's fallback roads can run here too.
    static void hideCaps(unsigned mask);

    void setClip(Qv::Ptr<iRegion> clip) override;
    void setAntialiasing(bool enabled) override { m_antialiasing = enabled; }
    unsigned getCaps() const override;
    void drawShaderRects(const ShaderRectDescription* descriptions, unsigned count) override;
    void drawLineStrips(const LineStripDescription* descriptions, unsigned count) override;
    void drawRoundedRects(const RoundedRectDescription* descriptions, unsigned count) override;
    void drawImagesEx(const ImageDescriptionEx* descriptions, unsigned count) override;
    void drawImages(const ImageDescription* descriptions, unsigned count) override;
    void drawBeziers(const BezierCurveDescription* descriptions, unsigned count) override;
    void drawAlphaRects(const AlphaRectDescription* descriptions, unsigned count) override;
    void drawTexts(const TextDescription* descriptions, unsigned count) override;
    void drawLines(const LineDescription* descriptions, unsigned count) override;
    void drawEllipses(const EllipseDescription* descriptions, unsigned count) override;
    void drawRects(const RectDescription* descriptions, unsigned count) override;

    bool isAntialiasing() const { return m_antialiasing; }
    const Qv::Ptr<HostImage>& target() const { return m_image; }

private:
    SoftwareRenderer(const Qv::Ptr<HostImage>& image, pixman_image_t* target);

    void fill(const TopDownRect& area, const NormalisedRGB& colour, pixman_op_t op);
    // From top_colour on the top row to bottom_colour on the bottom row.
    void gradient(const TopDownRect& area, const NormalisedRGB& top_colour, const NormalisedRGB& bottom_colour,
                  pixman_op_t op);
    // Draws source_area of image into dest_area, scaling as needed, times opacity.
    void blit(const Qv::Ptr<iImage>& image, const Qv::Rectangle<float>& source_area,
              const Qv::Rectangle<float>& dest_area, bool blend, float opacity);
    // Copies the source rectangle at (source_x, source_y) into the target rectangle at
    // (left, top), cut by the clip. False, having done nothing, when the copy is too
    // small to stream or reaches outside the source: pixman then does it.
    bool streamCopy(const std::uint8_t* source, const XY<int>& source_size, int source_stride, int source_x,
                    int source_y, int left, int top, int width, int height);

    // Cairo, ready for the next shape: made on first use, clipped, antialiased as asked,
    // with an empty path. Null when Cairo cannot draw here (reported once).
    cairo_t* shapes();
    // After each shape: a context that went into an error state is dropped, and the next
    // shape gets a fresh one, so one bad shape never stops the ones after it.
    void checkShape();
    // A straight line along a row or a column, by pixman fills.
    void drawStraightLine(const LineDescription& line, unsigned thickness, unsigned run);
    // Any other line through Cairo, cut to the image; run as above.
    void drawSlantedLine(const LineDescription& line, unsigned thickness, unsigned run);

    Qv::Ptr<HostImage> m_image;
    Qv::Ptr<iPixelGuard> m_lock;
    pixman_image_t* m_target;
    XY<int> m_size;   // of the image, which cannot change while the renderer holds it
    // What m_clip says: no clip, the clip, or nothing (it could not be copied), in which
    // case only pixman may draw.
    enum class ClipCopy { None, Held, Lost };
    pixman_region32_t m_clip;
    ClipCopy m_clip_copy = ClipCopy::None;
    bool m_antialiasing = true;

    struct CairoSurfaceRelease {
        void operator()(cairo_surface_t* surface) const;
    };
    struct CairoRelease {
        void operator()(cairo_t* context) const;
    };
    std::unique_ptr<cairo_surface_t, CairoSurfaceRelease> m_surface;
    std::unique_ptr<cairo_t, CairoRelease> m_cairo;
    bool m_cairo_clip_stale = true;   // setClip ran since Cairo last took the clip
    ShaderPrograms m_shaders;
};

} // namespace Headless
