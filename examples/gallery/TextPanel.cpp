// The text page, laid out top-down and converted to the canvas's bottom-up
// rows where it is drawn.

#include "gallery/TextPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/text/Fonts.h"
#include "tela/text/SyntaxHighlighting.h"
#include "tela/text/TextFitting.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include <algorithm>

namespace {

constexpr int MARGIN = 16;
constexpr int LINE = 22;                    // pitch of the single lines at the top
constexpr int BOXES_TOP = MARGIN + 5 * LINE + 8;
constexpr int BOX_HEIGHT = TextPage::PAGE_HEIGHT - BOXES_TOP - MARGIN;
constexpr int JUSTIFIED_LEFT = MARGIN + TextPage::WIDE_BOX + MARGIN;
constexpr int PADDING = 6;
constexpr TextAlignment LEFT{0, 0};
constexpr TextAlignment JUSTIFIED{3, 0};

const WString WRAPPED(u"Lines break before a blank or a hyphen. A word wider than the box, "
                      u"Rindfleischetikettierungsgesetz, is cut.");
const WString JUSTIFIED_TEXT(u"Justified lines spread their spare width over the gaps; the last line keeps its own.");
const WString FILE_NAME(u"/home/ada/projects/tela/examples/gallery/screenshots/gallery-2-after-session.png");
const WString CAPTION(u"A caption far too long for the little space it has been given");
const WString EXPRESSION(u"if w > 400 then wrap(text) else clip(text)");

// The baseline of a line whose top is `top` pixels below the page's top.
XY<int> baseline(int x, int top, const Qv::Ptr<iFont>& font)
{
    const int ascent = font ? font->getMetrics().ascent : 12;
    return {x, TextPage::PAGE_HEIGHT - top - ascent};
}

// A top-down box as the canvas counts it, bottom-up.
Qv::Box<int> box(int left, int top, int width, int height)
{
    return {left, TextPage::PAGE_HEIGHT - top - height, left + width, TextPage::PAGE_HEIGHT - top};
}

void line(CanvasRenderer& renderer, const WString& text, int x, int top, const Colour& colour,
          const Tela::FontDesc& desc)
{
    const Qv::Ptr<iFont> font = Tela::loadFont(desc, nullptr);
    renderer.render(Tela::TextDescription(text, baseline(x, top, font), fromColour(colour), LEFT, font));
}

// Draws the pieces of justified lines as processString hands them over: a
// wrapped line comes in pieces ending at its blanks, each with the extra space
// to leave behind it; the line that ends the paragraph comes whole.
class JustifiedLines final : public Tela::WordWrappingTextRenderer::iStringHandler {
public:
    JustifiedLines(CanvasRenderer& renderer, const Qv::Box<int>& area, const Colour& colour, Qv::Ptr<iFont> font)
        : m_renderer(renderer), m_area(area), m_colour(fromColour(colour)), m_font(std::move(font))
    {
    }

    void handle(const Tela::WordWrappingTextRenderer::PSState& state) override
    {
        const WString piece = state.text->substr(state.start, state.length);
        const Metrics& metrics = m_font->getMetrics();
        const int y = m_area.y2 - metrics.ascent - m_line * metrics.height;
        if (y >= m_area.y1)
            m_renderer.render(Tela::TextDescription(piece, {m_x, y}, m_colour, LEFT, m_font));
        m_x += m_font->getTextExtent(piece, static_cast<unsigned>(piece.size())).x + state.extraSpacing;
        // A piece that carries the string's edges is a whole line; the last
        // piece of a justified line is marked wrapped.
        if (!state.positions.empty() || state.wrapped) {
            m_x = m_area.x1;
            ++m_line;
        }
    }

private:
    using Metrics = iFont::Metrics;

    CanvasRenderer& m_renderer;
    Qv::Box<int> m_area;
    NormalisedRGB m_colour;
    Qv::Ptr<iFont> m_font;
    int m_x = m_area.x1;
    int m_line = 0;
};

} // namespace

void TextPage::paint(Canvas* canvas, const Palette& palette, int wrapWidth)
{
    if (!canvas)
        return;
    wrapWidth = std::clamp(wrapWidth, NARROW_BOX, WIDE_BOX);
    canvas->beginRender();
    CanvasRenderer& renderer = canvas->getRenderer();
    renderer.render(Tela::RectDescription({0, 0, canvas->getWidth(), canvas->getHeight()}, palette.window(eWindowNormal)));

    const Tela::FontDesc plain(String(), 0, 0);
    const Tela::FontDesc bold(String(), 0, Tela::FontDesc::eBold);
    const Tela::FontDesc italic(String(), 0, Tela::FontDesc::eItalic);
    const Qv::Ptr<iFont> font = Tela::loadFont(plain, nullptr);
    const int fitted = PAGE_WIDTH - 2 * MARGIN - 48;

    line(renderer, WString(u"Bold: the heading of a section"), MARGIN, MARGIN, palette.headingText(), bold);
    line(renderer, WString(u"Italic: a word set apart for emphasis"), MARGIN, MARGIN + LINE, palette.text(eTextNormal),
         italic);
    // The fitted lines sit on a band as wide as they may be, to show the cut.
    for (int row = 2; row < 4; ++row)
        renderer.render(Tela::RectDescription(box(MARGIN + 48, MARGIN + row * LINE, fitted, LINE - 2),
                                              palette.window(eWindowLight)));
    line(renderer, WString(u"File"), MARGIN, MARGIN + 2 * LINE, palette.subheadingText(), plain);
    line(renderer, clipFilenameToFit(FILE_NAME, static_cast<unsigned short>(fitted), font), MARGIN + 48,
         MARGIN + 2 * LINE, palette.text(eTextNormal), plain);
    line(renderer, WString(u"Note"), MARGIN, MARGIN + 3 * LINE, palette.subheadingText(), plain);
    line(renderer, clipStringToFit(CAPTION, static_cast<unsigned short>(fitted), true, font), MARGIN + 48,
         MARGIN + 3 * LINE, palette.text(eTextNormal), plain);
    // An expression with its keywords picked out, as an entry field would show it.
    line(renderer, WString(u"Expr"), MARGIN, MARGIN + 4 * LINE, palette.subheadingText(), plain);
    SyntaxHighightingRenderer highlighter;
    highlighter.setKeyWords({WString(u"if"), WString(u"then"), WString(u"else"), WString(u"wrap"), WString(u"clip")});
    highlighter.render(renderer, EXPRESSION, baseline(MARGIN + 48, MARGIN + 4 * LINE, font), palette.text(eTextNormal),
                       palette.success(), font);

    const Qv::Box<int> wrapping = box(MARGIN, BOXES_TOP, wrapWidth, BOX_HEIGHT);
    renderer.render(Tela::RectDescription(wrapping, palette.window(eWindowLighter)));
    const Qv::Box<int, Qv::BottomUpTraits> inside{wrapping.x1 + PADDING, wrapping.y1 + PADDING, wrapping.x2 - PADDING,
                                                  wrapping.y2 - PADDING};
    Tela::WordWrappingTextRenderer::renderString(renderer, WRAPPED, inside, palette.text(eTextNormal), font, 0, 0);

    const Qv::Box<int> justified = box(JUSTIFIED_LEFT, BOXES_TOP, PAGE_WIDTH - MARGIN - JUSTIFIED_LEFT, BOX_HEIGHT);
    renderer.render(Tela::RectDescription(justified, palette.window(eWindowLighter)));
    if (font) {
        const Qv::Box<int> area{justified.x1 + PADDING, justified.y1 + PADDING, justified.x2 - PADDING,
                                justified.y2 - PADDING};
        JustifiedLines lines(renderer, area, palette.text(eTextNormal), font);
        Tela::WordWrappingTextRenderer::processString(lines, JUSTIFIED_TEXT,
                                                      static_cast<unsigned short>(area.x2 - area.x1), font, 0,
                                                      JUSTIFIED);
    }
    canvas->endRender();
}
