#include "gallery/TooltipPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/text/Fonts.h"
#include "tela/text/TooltipDetails.h"

#include <algorithm>

namespace {

constexpr int PADDING = 8, SPACING = 6, LINE_GAP = 2;
constexpr unsigned short SIZE = 13;

Qv::Ptr<iFont> font(unsigned int style)
{
    return Tela::loadFont(Tela::FontDesc(String(), SIZE, style), nullptr);
}

int width_of(const Qv::Ptr<iFont>& f, const WString& text)
{
    return f && !text.empty() ? f->getTextExtent(text, static_cast<unsigned>(text.size())).x : 0;
}

int line_height()
{
    const Qv::Ptr<iFont> f = font(0);
    return (f ? f->getMetrics().height : SIZE + 4) + LINE_GAP;
}

// The widths of the three columns: labels, texts, keys.
struct Columns {
    int label = 0, text = 0, key = 0;
};

Columns columns(const TooltipDetails& details)
{
    const Qv::Ptr<iFont> bold = font(Tela::FontDesc::eBold), plain = font(0);
    Columns c;
    for (const TooltipDetails::Line& line : details.lines) {
        c.label = std::max(c.label, width_of(bold, line.label.text));
        c.text = std::max(c.text, width_of(plain, line.text.text));
        c.key = std::max(c.key, width_of(plain, fromUTF8(line.key)));
    }
    return c;
}

} // namespace

XY<int> Tooltip::sizeFor(const TooltipDetails& details)
{
    const Columns c = columns(details);
    const int width = c.label + (c.label ? SPACING : 0) + c.text + (c.key ? SPACING + c.key : 0);
    return {width + 2 * PADDING, static_cast<int>(details.lines.size()) * line_height() - LINE_GAP + 2 * PADDING};
}

void Tooltip::paint(Canvas* canvas, const TooltipDetails& details, const Palette& palette)
{
    if (!canvas)
        return;
    const Columns c = columns(details);
    const Qv::Ptr<iFont> bold = font(Tela::FontDesc::eBold), plain = font(0);
    canvas->beginRender();
    CanvasRenderer& renderer = canvas->getRenderer();
    const int width = canvas->getWidth(), height = canvas->getHeight();
    // A light card with a one-pixel frame.
    renderer.render(Tela::RectDescription({0, 0, width, height}, palette.window(eWindowShadow)));
    renderer.render(Tela::RectDescription({1, 1, width - 1, height - 1}, palette.window(eWindowHighlight)));
    const NormalisedRGB ink = fromColour(palette.scale(palette.window(eWindowShadow), 0.4));
    const NormalisedRGB dimmed = fromColour(palette.window(eWindowDark));
    const int ascent = plain ? plain->getMetrics().ascent : SIZE;
    int top = PADDING;
    for (const TooltipDetails::Line& line : details.lines) {
        const int baseline = height - top - ascent;
        int x = PADDING;
        if (c.label) {
            renderer.render(Tela::TextDescription(line.label.text, {x, baseline}, ink, TextAlignment{0, 0}, bold));
            x += c.label + SPACING;
        }
        renderer.render(Tela::TextDescription(line.text.text, {x, baseline}, ink, TextAlignment{0, 0}, plain));
        if (!line.key.empty())
            renderer.render(Tela::TextDescription(fromUTF8(line.key), {width - PADDING, baseline}, dimmed,
                                                  TextAlignment{1, 0}, plain));
        top += line_height();
    }
    canvas->endRender();
}
