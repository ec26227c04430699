// Each shape is a path built in its canvas's own coordinates (y upward, the
// origin at the bottom-left of the rectangle the canvas was placed at), then
// made the canvas's shape.

#include "gallery/PathsPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/render/RasterImage.h"
#include "tela/text/Fonts.h"
#include "tela/vector/Path.h"

#include <cmath>
#include <functional>
#include <numbers>

namespace {

constexpr int SIZE = 120;            // each shape's square
constexpr int GAP = (PathsPage::PAGE_WIDTH - 3 * SIZE) / 4;
constexpr int SHAPES_TOP = 48;

// Five points joined every second one: the path crosses itself, and the
// non-zero rule fills the pentagon in the middle too.
void star()
{
    const double centre = SIZE / 2.0, radius = SIZE / 2.0 - 2;
    tela_newpath();
    for (int k = 0; k < 5; ++k) {
        const double angle = std::numbers::pi / 2 + k * 4 * std::numbers::pi / 5;
        const double x = centre + radius * std::cos(angle), y = centre + radius * std::sin(angle);
        if (k == 0)
            tela_moveto(x, y);
        else
            tela_lineto(x, y);
    }
    tela_closepath();
}

void soft_rectangle()
{
    tela_newpath();
    tela_addsoftrect(4, 14, SIZE - 4, SIZE - 14, 24);
}

Canvas* shaped(Canvas* page, int left, int top, const std::function<void()>& outline, const Colour& light,
               const Colour& dark)
{
    Canvas* canvas = tela_newcanvas(nullptr, page);
    tela_placecanvas(canvas, TopDownRect{left, top, left + SIZE, top + SIZE});
    tela_setcanvas(canvas);
    outline();
    tela_reshapecanvas(canvas, SIZE, SIZE);
    canvas->beginRender();
    canvas->getRenderer().render(
        Tela::RectDescription({0, 0, SIZE, SIZE}, dark, light));
    canvas->endRender();
    return canvas;
}

// A canvas the size of the picture, shaped like its opaque pixels and showing it.
void picture_canvas(Canvas* page, int left, int top, const WString& file)
{
    const Qv::Ptr<RasterImage> picture = Qv::make<RasterImage>(file);
    Canvas* canvas = tela_newcanvas(nullptr, page);
    tela_placecanvas(canvas, TopDownRect{left, top, left + picture->width(), top + picture->height()});
    picture->makeShapeRegion(canvas, 0, 0);
    picture->draw(canvas, 0, 0);
}

} // namespace

void PathsPage::build(Canvas* page, int left, int top, const Palette& palette, const WString& picture)
{
    if (!page)
        return;
    page->beginRender();
    CanvasRenderer& renderer = page->getRenderer();
    renderer.render(Tela::RectDescription({0, 0, page->getWidth(), page->getHeight()}, palette.window(eWindowNormal)));
    const Tela::FontDesc caption(String(), 0, 0);
    const WString names[3] = {WString(u"Star"), WString(u"Soft rectangle"), WString(u"Picture")};
    for (int i = 0; i < 3; ++i) {
        const int centre_x = GAP + i * (SIZE + GAP) + SIZE / 2;
        renderer.render(Tela::TextDescription(names[i], {centre_x, PAGE_HEIGHT - SHAPES_TOP - SIZE - 28},
                                              fromColour(palette.text(eTextNormal)), TextAlignment{2, 0}, caption));
    }
    page->endRender();

    const int shapes_top = top + SHAPES_TOP;
    shaped(page, left + GAP, shapes_top, star, palette.warning(), palette.scale(palette.warning(), 0.5));
    shaped(page, left + 2 * GAP + SIZE, shapes_top, soft_rectangle, palette.selection(eSelectionFocused),
           palette.scale(palette.selection(eSelectionFocused), 0.5));
    picture_canvas(page, left + 3 * GAP + 2 * SIZE, shapes_top, picture);
    tela_setcanvas(nullptr);
}
