// SoftwareRenderer: an iGraphicPrimitivesRenderer over a HostImage's pixels.
//
// Invariants
// - The target image is held, and locked, for the renderer's whole life: releasing the
//   renderer is what ends a frame on that image.
// - m_target wraps the image's own pixels (pixman a8r8g8b8 is the BGRA byte order of a
//   HostImage on a little-endian host); nothing is copied in or out.
// - The clip, when set, lives on m_target as pixman's clip region, so every composite
//   honours it without further work here. m_clip holds the same rectangles for the one
//   copy that bypasses pixman (below), since pixman gives no way to read them back.
// - Colours are premultiplied on the way in, exactly once: byte = round(component *
//   alpha * 255), which is what the tests model.
//
// pixman draws fills, blits, blending and clipping, except for one case: a large plain
// copy of whole pixels (no scaling, no blending, no opacity, inside the source), which
// is what every opaque canvas of a full repaint is. pixman copies with ordinary stores,
// so each destination line is read into the cache before it is overwritten; a frame
// bigger than the cache then moves half as much again as it needs. That copy walks the
// clip's rectangles itself and writes whole cache lines with streaming stores.
// "InFront" (an image times an
// opacity over the destination) runs on the CPU through the same blit. Everything else
// is reported once per operation ("not drawn yet: drawEllipses") and skipped.
#pragma once

#include "headless/HostImage.h"
#include "tela/platform/GraphicPrimitives.h"

#include <pixman.h>

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

    void setClip(const Qv::Ptr<iRegion>& clip) override;
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
    // Draws source_area of image into dest_area, scaling as needed, times opacity.
    void blit(const Qv::Ptr<iImage>& image, const Qv::Rectangle<float>& source_area,
              const Qv::Rectangle<float>& dest_area, bool blend, float opacity);
    // Copies the source rectangle at (source_x, source_y) into the target rectangle at
    // (left, top), cut by the clip. False, having done nothing, when the copy is too
    // small to stream or reaches outside the source: pixman then does it.
    bool streamCopy(const std::uint8_t* source, const XY<int>& source_size, int source_stride, int source_x,
                    int source_y, int left, int top, int width, int height);

    Qv::Ptr<HostImage> m_image;
    Qv::Ptr<iPixelGuard> m_lock;
    pixman_image_t* m_target;
    // What m_clip says: no clip, the clip, or nothing (it could not be copied), in which
    // case only pixman may draw.
    enum class ClipCopy { None, Held, Lost };
    pixman_region32_t m_clip;
    ClipCopy m_clip_copy = ClipCopy::None;
    bool m_antialiasing = true;
};

} // namespace Headless
