#include "tela/render/Descriptions.h"

#include "tela/render/Wrap_private.h"
#include "tela/text/Fonts.h"

#include <algorithm>

namespace Tela {

eTextStyle mapTextStyle(TextStyles::TextStyle style)
{
    switch (style) {
    case TextStyles::eDropShadow:
        return eTextDropShadow;
    case TextStyles::eHalo:
        return eTextHalo;
    case TextStyles::eHeavy:
        return eTextHeavy;
    default:
        return eTextPlain;
    }
}

namespace {

// An ellipse's box given in doubles keeps the low 16 bits of each truncated coordinate.
Qv::Box<int> short_box(const Qv::Box<double>& area)
{
    return {render_wrap::to_short(area.x1), render_wrap::to_short(area.y1), render_wrap::to_short(area.x2),
            render_wrap::to_short(area.y2)};
}

void move_box(Qv::Box<int>& box, int dx, int dy)
{
    box.x1 = render_wrap::add(box.x1, dx);
    box.y1 = render_wrap::add(box.y1, dy);
    box.x2 = render_wrap::add(box.x2, dx);
    box.y2 = render_wrap::add(box.y2, dy);
}

} // namespace

// Rectangles

void RectDescription::translate(int dx, int dy)
{
    move_box(box, dx, dy);
}

void AlphaRectDescription::translate(int dx, int dy)
{
    move_box(box, dx, dy);
}

void RoundedRectDescription::translate(int dx, int dy)
{
    move_box(box, dx, dy);
}

// Ellipses

EllipseDescription::EllipseDescription() = default;

EllipseDescription::EllipseDescription(const Qv::Box<double>& area, const NormalisedRGB& fill,
                                       const NormalisedRGB& line, unsigned thick)
    : box(short_box(area)), fillColour(fill), lineColour(line), style(eFilledAndOutlined),
      thickness(static_cast<std::uint16_t>(thick)), startAngle(0), endAngle(360)
{
}

EllipseDescription::EllipseDescription(const Qv::Box<double>& area, const NormalisedRGB& colour, Style how,
                                       unsigned thick)
    : box(short_box(area)), fillColour(colour), lineColour(colour), style(how),
      thickness(static_cast<std::uint16_t>(thick)), startAngle(0), endAngle(360)
{
}

EllipseDescription::EllipseDescription(const EllipseDescription&) = default;
EllipseDescription::EllipseDescription(EllipseDescription&&) noexcept = default;
EllipseDescription& EllipseDescription::operator=(const EllipseDescription&) = default;
EllipseDescription& EllipseDescription::operator=(EllipseDescription&&) noexcept = default;

Qv::Box<int> EllipseDescription::getExtents() const
{
    return {render_wrap::add(box.x1, -thickness), render_wrap::add(box.y1, -thickness),
            render_wrap::add(box.x2, thickness), render_wrap::add(box.y2, thickness)};
}

void EllipseDescription::translate(int dx, int dy)
{
    move_box(box, dx, dy);
}

// Lines

Qv::Box<int> LineDescription::getExtents() const
{
    const int x1 = render_wrap::to_short(start.x);
    const int y1 = render_wrap::to_short(start.y);
    const int x2 = render_wrap::to_short(end.x);
    const int y2 = render_wrap::to_short(end.y);
    // Short coordinates plus a 32-bit thickness: computed wide, then wrapped.
    const long long t = thickness;
    return {render_wrap::wrap(std::min(x1, x2) - t), render_wrap::wrap(std::min(y1, y2) - t),
            render_wrap::wrap(std::max(x1, x2) + t), render_wrap::wrap(std::max(y1, y2) + t)};
}

void LineDescription::translate(int dx, int dy)
{
    start = XY<double>(start.x + dx, start.y + dy);
    end = XY<double>(end.x + dx, end.y + dy);
}

LineStripDescription::LineStripDescription() = default;
LineStripDescription::LineStripDescription(const LineStripDescription&) = default;
LineStripDescription::LineStripDescription(LineStripDescription&&) noexcept = default;
LineStripDescription& LineStripDescription::operator=(const LineStripDescription&) = default;
LineStripDescription& LineStripDescription::operator=(LineStripDescription&&) noexcept = default;

Qv::Box<int> LineStripDescription::getExtents() const
{
    if (points.size() < 2)
        return {};
    const int first_x = render_wrap::to_int(points.front().x);
    const int first_y = render_wrap::to_int(points.front().y);
    Qv::Box<int> box {first_x, first_y, first_x, first_y};
    for (const XY<double>& point : points) {
        const int x = render_wrap::to_int(point.x);
        const int y = render_wrap::to_int(point.y);
        box.x1 = std::min(box.x1, x);
        box.y1 = std::min(box.y1, y);
        box.x2 = std::max(box.x2, x);
        box.y2 = std::max(box.y2, y);
    }
    // Each flat axis on its own: a strip that is a single point gets both.
    if (box.x2 == box.x1)
        box.x2 = render_wrap::wrap(static_cast<long long>(box.x2) + thickness);
    if (box.y2 == box.y1)
        box.y2 = render_wrap::wrap(static_cast<long long>(box.y2) + thickness);
    return box;
}

void LineStripDescription::translate(int dx, int dy)
{
    for (XY<double>& point : points)
        point = XY<double>(point.x + dx, point.y + dy);
}

Qv::Box<int> BezierCurveDescription::getExtents() const
{
    return Qv::Box<int>::around({start, end, control1, control2});
}

void BezierCurveDescription::translate(int dx, int dy)
{
    for (XY<int>* point : {&start, &end, &control1, &control2})
        *point = XY<int>(render_wrap::add(point->x, dx), render_wrap::add(point->y, dy));
}

// Text

TextDescription::TextDescription() = default;

TextDescription::TextDescription(const WString& string, const XY<int>& position, const NormalisedRGB& textColour,
                                 TextAlignment align, const FontDesc& desc)
    : TextDescription(string, position, textColour, align, eTextPlain, loadFont(desc, Qv::Ptr<iRootWindow>()))
{
}

TextDescription::TextDescription(const WString& string, const XY<int>& position, const NormalisedRGB& textColour,
                                 TextAlignment align, Qv::Ptr<iFont> textFont)
    : TextDescription(string, position, textColour, align, eTextPlain, std::move(textFont))
{
}

TextDescription::TextDescription(const WString& string, const XY<int>& position, const NormalisedRGB& textColour,
                                 TextAlignment align, eTextStyle textStyle, Qv::Ptr<iFont> textFont)
    : text(string), colour(textColour), font(std::move(textFont)), alignment(align), style(textStyle)
{
    calcBounds(position);
}

TextDescription::TextDescription(const TextDescription&) = default;
TextDescription::TextDescription(TextDescription&&) noexcept = default;
TextDescription& TextDescription::operator=(const TextDescription&) = default;
TextDescription& TextDescription::operator=(TextDescription&&) noexcept = default;

void TextDescription::translate(int dx, int dy)
{
    move_box(extents, dx, dy);
}

void TextDescription::calcBounds(XY<int> position)
{
    if (!font)
        font = getDefaultFont(0);
    if (!font)
        return;
    const iFont::Metrics& metrics = font->getMetrics();
    extents.y1 = render_wrap::add(position.y, -metrics.descent);
    extents.y2 = render_wrap::add(position.y, metrics.ascent);
    const int width = font->getTextExtent(text, iFont::ALL_CHARACTERS).x;
    switch (alignment.horizontal) {
    case 1: // right
        extents.x2 = position.x;
        extents.x1 = render_wrap::add(position.x, -static_cast<long long>(width));
        break;
    case 2: // centred
        extents.x1 = render_wrap::add(position.x, -static_cast<long long>(width / 2));
        extents.x2 = render_wrap::add(extents.x1, width);
        break;
    default:
        extents.x1 = position.x;
        extents.x2 = render_wrap::add(position.x, width);
        break;
    }
}

void TextDescription::setSelectionColours(const NormalisedRGB& first, const NormalisedRGB& second)
{
    secondColour = second;
    thirdColour = first;
}

void ImageDescription::translate(int dx, int dy)
{
    move_box(destBox, dx, dy);
}

} // namespace Tela
