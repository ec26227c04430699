// EdgeEffects.cpp: the shadow band round a canvas, as up to eight shader
// rectangles in one drawShaderRects call.
//
// Invariants
// - One working description carries the shader, the input rectangle and the
//   parameters; each accepted band or corner is stored as a copy of it.
// - Its parameter list only grows. A copy therefore holds "Colour", "OriginX"
//   and "OriginY" as often as they were appended so far, in that order, and the
//   renderer, applying them in list order, ends on the last value of each name.
//   Emptying the list between bands would change what the shaders receive.
// - Band rectangles are worked out in 64 bits and cut to the root's box, which
//   is an int box, so no sum can overflow and every stored rectangle fits.

#include "tela/render/EdgeEffects_private.h"

#include "tela/canvas/Canvas.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/state/TelaState.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr unsigned MAX_RECTANGLES = 8;

struct WideBox {
    long long x1 = 0;
    long long y1 = 0;
    long long x2 = 0;
    long long y2 = 0;
};

Qv::Rectangle<float> float_rectangle(long long width, long long height)
{
    return {0.0f, 0.0f, static_cast<float>(width), static_cast<float>(height)};
}

class ShadowBatch {
public:
    ShadowBatch(const WideBox& limit, const NormalisedRGB& colour) : m_limit(limit), m_colour(colour)
    {
        m_working.active = true;
        m_working.inputs.push_back(ShaderInput(nullptr, Qv::Rectangle<float>{}));
    }

    // Starts a group of bands drawn by one shader over inputs of one size.
    void begin(Tela::Shader shader, long long input_width, long long input_height)
    {
        m_working.inputs[0].second = float_rectangle(input_width, input_height);
        m_working.shader = tela_shader(shader);
        m_working.addParam(String("Colour"), m_colour);
    }

    // Cuts `band` to the limit; false when nothing of it is left. The working
    // description then lands on the cut rectangle, and its input tells the
    // shader the cut size.
    bool clip(const WideBox& band)
    {
        if (!(band.x1 < m_limit.x2 && band.y1 < m_limit.y2 && band.x2 > m_limit.x1 && band.y2 > m_limit.y1))
            return false;
        const Qv::Rectangle<float> cut{static_cast<float>(std::max(band.x1, m_limit.x1)),
                                       static_cast<float>(std::max(band.y1, m_limit.y1)),
                                       static_cast<float>(std::min(band.x2, m_limit.x2)),
                                       static_cast<float>(std::min(band.y2, m_limit.y2))};
        m_working.rect = cut;
        const float width = std::abs(cut.right - cut.left);
        const float height = std::abs(cut.bottom - cut.top);
        if (!(width * height > 0.0f))
            return false;
        m_working.inputs[0].second = Qv::Rectangle<float>{0.0f, 0.0f, width, height};
        return true;
    }

    void addOrigin(const char* name, float value) { m_working.addParam(String(name), value); }

    void store()
    {
        // Four bands and four corners fill the array exactly; the test keeps a
        // later change from writing past it.
        if (m_count >= MAX_RECTANGLES)
            return;
        m_stored[m_count++] = m_working;
    }

    void draw(iGraphicPrimitivesRenderer& renderer) const { renderer.drawShaderRects(m_stored, m_count); }

private:
    WideBox m_limit;
    NormalisedRGB m_colour;
    ShaderRectDescription m_working;
    ShaderRectDescription m_stored[MAX_RECTANGLES];
    unsigned m_count = 0;
};

WideBox wide_box_of(const Qv::Ptr<iRegion>& region, const XY<int>& origin)
{
    Qv::Box<int> box;
    if (region)
        region->getBox(box);
    return {static_cast<long long>(box.x1) - origin.x, static_cast<long long>(box.y1) - origin.y,
            static_cast<long long>(box.x2) - origin.x, static_cast<long long>(box.y2) - origin.y};
}

} // namespace

void tela_render_edge_effects(Canvas& canvas, iGraphicPrimitivesRenderer& renderer, const XY<int>& origin)
{
    const SurroundParams& effect = canvas.edgeEffect;
    if (effect.size == 0 || effect.edges == 0 || effect.opacity == 0.0f)
        return;
    // Without a shape there is nothing to surround.
    if (!canvas.shape())
        return;
    // The band lies outside the canvas's own region.
    renderer.setClip(nullptr);

    const WideBox own = wide_box_of(canvas.shape(), origin);
    const long long size = effect.size;
    const std::uint32_t edges = effect.edges;
    ShadowBatch batch(wide_box_of(canvas.getRootParent()->shape(), origin),
                      NormalisedRGB(effect.colour.r, effect.colour.g, effect.colour.b, effect.opacity));
    const auto has = [edges](std::uint32_t bits) { return (edges & bits) == bits; };

    if (edges & (SurroundParams::LEFT | SurroundParams::RIGHT)) {
        batch.begin(Tela::Shader::ShadowLR, size, own.y2 - own.y1);
        if (has(SurroundParams::LEFT) && batch.clip({own.x1 - size, own.y1, own.x1, own.y2})) {
            batch.addOrigin("OriginX", 1.0f);
            batch.store();
        }
        if (has(SurroundParams::RIGHT) && batch.clip({own.x2, own.y1, own.x2 + size, own.y2})) {
            batch.addOrigin("OriginX", 0.0f);
            batch.store();
        }
    }
    if (edges & (SurroundParams::TOP | SurroundParams::BOTTOM)) {
        batch.begin(Tela::Shader::ShadowTB, own.x2 - own.x1, size);
        if (has(SurroundParams::TOP) && batch.clip({own.x1, own.y1 - size, own.x2, own.y1})) {
            batch.addOrigin("OriginY", 1.0f);
            batch.store();
        }
        if (has(SurroundParams::BOTTOM) && batch.clip({own.x1, own.y2, own.x2, own.y2 + size})) {
            batch.addOrigin("OriginY", 0.0f);
            batch.store();
        }
    }

    // Corners: each where both of its edges are drawn. OriginX and OriginY
    // of 1 mark the side the fall-off runs away from: left, and top.
    struct Corner {
        std::uint32_t bits;
        WideBox box;
        float origin_x;
        float origin_y;
    };
    const Corner corners[] = {
        {SurroundParams::TOP | SurroundParams::LEFT, {own.x1 - size, own.y1 - size, own.x1, own.y1}, 1.0f, 1.0f},
        {SurroundParams::TOP | SurroundParams::RIGHT, {own.x2, own.y1 - size, own.x2 + size, own.y1}, 0.0f, 1.0f},
        {SurroundParams::BOTTOM | SurroundParams::LEFT, {own.x1 - size, own.y2, own.x1, own.y2 + size}, 1.0f, 0.0f},
        {SurroundParams::BOTTOM | SurroundParams::RIGHT, {own.x2, own.y2, own.x2 + size, own.y2 + size}, 0.0f, 0.0f},
    };
    batch.begin(Tela::Shader::ShadowC, size, size);
    for (const Corner& corner : corners) {
        if (!has(corner.bits) || !batch.clip(corner.box))
            continue;
        batch.addOrigin("OriginX", corner.origin_x);
        batch.addOrigin("OriginY", corner.origin_y);
        batch.store();
    }
    // One call, also when every band fell outside the root.
    batch.draw(renderer);
}

void Canvas::renderEdgeEffects(Qv::Ptr<iGraphicPrimitivesRenderer>& renderer)
{
    if (renderer)
        tela_render_edge_effects(*this, *renderer, XY<int>(0, 0));
}
