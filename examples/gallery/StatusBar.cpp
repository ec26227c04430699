// The status bar's line and glass, laid out top-down and converted to the
// canvases' bottom-up rows where they are drawn.

#include "gallery/StatusBar.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/text/Fonts.h"
#include "tela/text/TextFitting.h"

#include <string>

namespace {

constexpr int PADDING = 10;
constexpr TextAlignment LEFT{0, 0};

// The background of the bar the line sits on, so the line's canvas does not show.
const Colour BAR(60 / 255.0, 66 / 255.0, 78 / 255.0, true);

// Draws `text` with its top `top` pixels below the canvas's top.
void text_at(Canvas* canvas, const WString& text, int x, int top, const Colour& colour, const Qv::Ptr<iFont>& font)
{
    const int ascent = font ? font->getMetrics().ascent : 12;
    canvas->getRenderer().render(
        Tela::TextDescription(text, {x, canvas->getHeight() - top - ascent}, fromColour(colour), LEFT, font));
}

} // namespace

void StatusBar::paintLine(Canvas* canvas, const WString& name, const WString& description, const Palette& palette)
{
    if (!canvas)
        return;
    const Qv::Ptr<iFont> bold = Tela::loadFont(Tela::FontDesc(String(), 14, Tela::FontDesc::eBold), nullptr);
    const Qv::Ptr<iFont> plain = Tela::loadFont(Tela::FontDesc(String(), 13, 0), nullptr);
    const int width = canvas->getWidth();
    canvas->beginRender();
    canvas->getRenderer().render(Tela::RectDescription({0, 0, width, canvas->getHeight()}, BAR));
    text_at(canvas, name, 0, 4, palette.text(eTextNormal), bold);
    text_at(canvas, clipStringToFit(description, static_cast<unsigned short>(width), true, plain), 0, 26,
            palette.text(eTextLightlyDimmed), plain);
    canvas->endRender();
}

void StatusBar::paintGlass(Canvas* canvas, unsigned ticks, const Palette& palette)
{
    if (!canvas)
        return;
    const Qv::Ptr<iFont> small = Tela::loadFont(Tela::FontDesc(String(), 12, Tela::FontDesc::eBold), nullptr);
    const Qv::Ptr<iFont> large = Tela::loadFont(Tela::FontDesc(String(), 30, Tela::FontDesc::eBold), nullptr);
    // Dark ink: through the pane it comes out as a mid grey on a light one.
    const Colour ink = palette.scale(palette.window(eWindowShadow), 0.4);
    canvas->beginRender();
    canvas->getRenderer().render(
        Tela::RectDescription({0, 0, canvas->getWidth(), canvas->getHeight()}, Colour(1.0, 1.0, 1.0, true)));
    text_at(canvas, WString(u"Ticks"), PADDING, 8, ink, small);
    text_at(canvas, fromUTF8(std::to_string(ticks).c_str()), PADDING, 24, ink, large);
    canvas->endRender();
}
