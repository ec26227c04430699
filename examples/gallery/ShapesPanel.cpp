// The shapes page: four rows of four cells, bottom-up as the canvas counts.
// Rectangles, rounded rectangles, ellipses, then lines and curves.

#include "gallery/ShapesPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/render/DrawingHelpers.h"

namespace {

constexpr int CELL_WIDTH = 92, CELL_HEIGHT = 48;
constexpr int MARGIN = 16, GAP_X = 16, GAP_Y = 16;

// The box of cell (column, row); row 0 is the top row.
Qv::Box<int> cell(int column, int row)
{
    const int x1 = MARGIN + column * (CELL_WIDTH + GAP_X);
    const int y2 = Shapes::PAGE_HEIGHT - MARGIN - row * (CELL_HEIGHT + GAP_Y);
    return {x1, y2 - CELL_HEIGHT, x1 + CELL_WIDTH, y2};
}

Qv::Box<double> as_doubles(const Qv::Box<int>& box)
{
    return {double(box.x1), double(box.y1), double(box.x2), double(box.y2)};
}

NormalisedRGB translucent(const Colour& colour, float alpha)
{
    NormalisedRGB rgb = fromColour(colour);
    rgb.a = alpha;
    return rgb;
}

void rectangles(CanvasRenderer& renderer, const Palette& palette)
{
    renderer.render(Tela::RectDescription(cell(0, 0), palette.selection(eSelectionFocused)));

    // A translucent square over a bar shows what lies below it.
    const Qv::Box<int> second = cell(1, 0);
    renderer.render(Tela::RectDescription({second.x1, second.y1 + 16, second.x2, second.y2 - 16}, palette.text(eTextNormal)));
    renderer.render(Tela::RectDescription({second.x1 + 20, second.y1, second.x2 - 20, second.y2},
                                          translucent(palette.warning(), 0.55f)));

    renderer.render(Tela::RectDescription(cell(2, 0), palette.subheadingText(), palette.selection(eSelectionFocused)));

    const Qv::Box<int> fourth = cell(3, 0);
    renderer.render(Tela::RectDescription({fourth.x1, fourth.y1 + 16, fourth.x2, fourth.y2 - 16}, palette.success()));
    Tela::AlphaRectDescription veil;
    veil.box = {fourth.x1 + 20, fourth.y1, fourth.x2 - 20, fourth.y2};
    veil.colour = fromColour(palette.headingText());
    veil.alpha = 0.4f;
    renderer.render(veil);
}

void rounded_rectangles(CanvasRenderer& renderer, const Palette& palette)
{
    Tela::RoundedRectDescription plain;
    plain.box = cell(0, 1);
    plain.fillColour = palette.button();
    plain.lineColour = palette.button();
    plain.radius = 12;
    renderer.render(plain);

    Tela::RoundedRectDescription outlined = plain;
    outlined.box = cell(1, 1);
    outlined.fillColour = palette.selection(eSelectionFocused);
    outlined.lineColour = palette.subheadingText();
    outlined.thickness = 2;
    renderer.render(outlined);

    // A tab, rounded at the top only: corners chosen one by one are drawn as
    // quarter ellipses and rectangles.
    Tela::drawSquircleFilled(renderer, cell(2, 1), palette.warning(), 18, 1 | 2);

    Tela::RoundedRectDescription pill = plain;
    pill.box = cell(3, 1);
    pill.fillColour = palette.success();
    pill.lineColour = palette.headingText();
    pill.radius = CELL_HEIGHT / 2;
    pill.thickness = 1;
    renderer.render(pill);
}

void ellipses(CanvasRenderer& renderer, const Palette& palette)
{
    renderer.render(Tela::EllipseDescription(as_doubles(cell(0, 2)), fromColour(palette.selection(eSelectionFocused)),
                                             Tela::EllipseDescription::eFilled, 1));
    renderer.render(Tela::EllipseDescription(as_doubles(cell(1, 2)), fromColour(palette.subheadingText()),
                                             Tela::EllipseDescription::eOutline, 3));
    renderer.render(Tela::EllipseDescription(as_doubles(cell(2, 2)), fromColour(palette.success()),
                                             fromColour(palette.headingText()), 2));
    // A pie slice: three quarters, open to the right.
    Tela::EllipseDescription pie(as_doubles(cell(3, 2)), fromColour(palette.warning()),
                                 Tela::EllipseDescription::eFilled, 1);
    pie.startAngle = 45;
    pie.endAngle = 315;
    renderer.render(pie);
}

void lines_and_curves(CanvasRenderer& renderer, const Palette& palette)
{
    const Qv::Box<int> first = cell(0, 3);
    const NormalisedRGB text = fromColour(palette.text(eTextNormal));
    for (int i = 0; i < 3; ++i) {
        Tela::LineDescription line;
        line.start = {double(first.x1), double(first.y2 - 6 - i * 16)};
        line.end = {double(first.x2), double(first.y2 - 6 - i * 16)};
        line.colour = i == 2 ? fromColour(palette.subheadingText()) : text;
        line.thickness = i == 1 ? 3 : 1;
        line.patterned = i == 2; // dotted, as a focus rectangle draws
        line.pattern = i == 2 ? 1 : 0;
        renderer.render(line);
    }

    const Qv::Box<int> second = cell(1, 3);
    Tela::LineDescription diagonal;
    diagonal.start = {double(second.x1), double(second.y1)};
    diagonal.end = {double(second.x2), double(second.y2)};
    diagonal.colour = fromColour(palette.selection(eSelectionFocused));
    diagonal.thickness = 2;
    renderer.render(diagonal);

    // A zigzag as one strip.
    const Qv::Box<int> third = cell(2, 3);
    Tela::LineStripDescription zigzag;
    zigzag.colour = fromColour(palette.success());
    zigzag.thickness = 2;
    for (int i = 0; i <= 6; ++i)
        zigzag.points.push_back({double(third.x1 + i * CELL_WIDTH / 6), double(i % 2 ? third.y2 - 4 : third.y1 + 4)});
    renderer.render(zigzag);

    const Qv::Box<int> fourth = cell(3, 3);
    Tela::BezierCurveDescription curve;
    curve.colour = fromColour(palette.warning());
    curve.start = {fourth.x1, fourth.y1 + 4};
    curve.control1 = {fourth.x1 + CELL_WIDTH / 2, fourth.y1 - 20};
    curve.control2 = {fourth.x1 + CELL_WIDTH / 2, fourth.y2 + 20};
    curve.end = {fourth.x2, fourth.y2 - 4};
    curve.thickness = 2;
    renderer.render(curve);
}

} // namespace

void Shapes::paint(Canvas* canvas, const Palette& palette)
{
    if (!canvas)
        return;
    canvas->beginRender();
    CanvasRenderer& renderer = canvas->getRenderer();
    renderer.render(Tela::RectDescription({0, 0, canvas->getWidth(), canvas->getHeight()}, palette.window(eWindowNormal)));
    rectangles(renderer, palette);
    rounded_rectangles(renderer, palette);
    ellipses(renderer, palette);
    lines_and_curves(renderer, palette);
    canvas->endRender();
}
