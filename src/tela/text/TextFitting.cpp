#include "tela/text/TextFitting.h"

#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/platform/OS.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/text/Fonts.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include <cstdint>

namespace {

const WString& ellipsis()
{
    static const WString dots(u"..");
    return dots;
}

int textWidth(const Qv::Ptr<iFont>& font, const WString& text)
{
    return font->getTextExtent(text, iFont::ALL_CHARACTERS).x;
}

} // namespace

WString clipStringToFit(const WString& text, unsigned short maxWidth, bool addEllipsis, Qv::Ptr<iFont> font)
{
    if (!font)
        font = Tela::getDefaultFont(0);
    if (!font || textWidth(font, text) <= maxWidth)
        return text;

    // Wraps on purpose: ".." wider than the box leaves a huge limit, so the
    // whole text is kept and the dots go behind it.
    std::uint16_t limit = maxWidth;
    if (addEllipsis)
        limit = static_cast<std::uint16_t>(limit - textWidth(font, ellipsis()));
    if (limit == 0)
        return text;

    std::vector<int> positions;
    font->analyse(text, positions);
    const std::size_t measured = std::min(positions.size(), text.size());

    WString result = text;
    if (measured > 0) {
        for (auto index = static_cast<std::int16_t>(measured - 1); index >= 0; --index) {
            if (positions[static_cast<std::size_t>(index)] <= limit) {
                result = text.substr(0, static_cast<std::size_t>(index) + 1);
                break;
            }
        }
    }
    if (addEllipsis)
        result += ellipsis();
    return result;
}

namespace Tela {

WString fitTextToWidth(const Qv::Ptr<iFont>& font, const WString& text, unsigned short width,
                       eTextShorteningMethod method)
{
    if (!font || text.empty())
        return text;
    std::vector<int> positions;
    font->analyse(text, positions);
    if (positions.empty() || positions.back() <= width)
        return text;

    const int ellipsisWidth = textWidth(font, ellipsis());

    if (method == eShortenEnd) {
        const std::size_t measured = std::min(positions.size(), text.size());
        std::size_t cut = 0;
        while (cut < measured && positions[cut] + ellipsisWidth <= width)
            ++cut;
        if (cut == measured || cut == 0)
            return text;
        // Keep what fits beside the dots, without the blanks in front of them.
        --cut;
        while (cut > 0 && text[cut - 1] == u' ')
            --cut;
        return text.substr(0, cut) + ellipsis();
    }

    // The middle cut needs every character's width; a font that measured
    // fewer characters than the text holds cannot say what the back costs.
    if (positions.size() < text.size())
        return text;

    // Counted in 16 bits throughout, as every width here is.
    const auto count = static_cast<std::uint16_t>(text.size());
    const auto half = static_cast<std::uint16_t>(count / 2);
    auto used = static_cast<std::uint16_t>(ellipsisWidth);
    std::uint16_t front = 0;
    auto back = static_cast<std::uint16_t>(count - 1);
    auto charWidth = [&positions](std::uint16_t index) {
        return static_cast<std::uint16_t>(index == 0 ? positions[0] : positions[index] - positions[index - 1u]);
    };
    if (count > 1) {
        for (;;) {
            const std::uint16_t frontWidth = charWidth(front);
            const std::uint16_t backWidth = charWidth(back);
            if (static_cast<std::uint16_t>(frontWidth + used) >= width)
                break;
            used = static_cast<std::uint16_t>(used + frontWidth);
            ++front;
            if (static_cast<std::uint16_t>(backWidth + used) >= width)
                break;
            used = static_cast<std::uint16_t>(used + backWidth);
            --back;
            if (front >= half)
                break;
        }
    }
    if (front == half)
        return text;
    return text.substr(0, front) + ellipsis() + text.substr(static_cast<std::size_t>(back) + 1);
}

void analyseString(const WString& text, std::vector<int>& out)
{
    out.clear();
    if (const Qv::Ptr<iFont> font = getDefaultFont(0))
        font->analyse(text, out);
}

iFont::CharacterLocation locateChar(const WString& text, iFont::eCharSeekMethod method, unsigned short index)
{
    const Qv::Ptr<iFont> font = getDefaultFont(0);
    return font ? font->locateChar(text, method, index) : iFont::CharacterLocation {};
}

iFont::CharacterLocation getCharInfoForPixelX(const WString& text, int x)
{
    const Qv::Ptr<iFont> font = getDefaultFont(0);
    return font ? font->getCharInfoForPixelX(text, x) : iFont::CharacterLocation {};
}

} // namespace Tela

WString clipFilenameToFit(const WString& path, unsigned short maxWidth, Qv::Ptr<iFont> font)
{
    if (path.empty())
        return path;
    const char16_t separator = OS()->fileSystem()->pathSeparator();
    if (path.view().find(separator) == WString::view_type::npos)
        return path;
    if (!font)
        font = Tela::getDefaultFont(0);
    if (!font || textWidth(font, path) <= maxWidth)
        return path;

    const bool leading = path[0] == separator;
    const bool trailing = path[path.size() - 1] == separator;
    Qv::Vector<WString> pieces;
    Tela::splitString(path, static_cast<wchar_t>(separator), pieces, Tela::skipEmpty);
    // Components are counted in 8 bits; a deeper path is left alone.
    if (pieces.size() < 2 || pieces.size() > 255)
        return path;

    Qv::Vector<clippedPathComponent> components;
    for (const WString& piece : pieces)
        components.push_back({piece, false});

    WString result = path;
    for (;;) {
        // The longest folder, the first of equals; the file name is never a candidate.
        std::size_t longest = 0;
        for (std::size_t index = 1; index + 1 < components.size(); ++index) {
            if (components[index].text.size() > components[longest].text.size())
                longest = index;
        }
        clippedPathComponent& victim = components[longest];
        if (victim.text.empty())
            break;
        victim.text = victim.text.substr(0, victim.text.size() - 1);
        victim.clipped = true;

        result = WString();
        if (leading)
            result += separator;
        for (std::size_t index = 0; index < components.size(); ++index) {
            if (index > 0)
                result += separator;
            result += components[index].text;
            if (components[index].clipped)
                result += ellipsis();
        }
        if (trailing)
            result += separator;
        if (textWidth(font, result) <= maxWidth)
            break;
    }
    return result;
}

void tela_drawTextEx(const WString& text, const XY<int>& pos, Canvas* canvas, const Typeface& typeface,
                     TextAlignment alignment, FontOutputQuality /*quality*/)
{
    const Qv::Ptr<iFont> font = Tela::loadFont(getDefaultFontName(0), getDefaultFontSize(), 1);
    if (!font)
        return;
    CanvasRenderer renderer(canvas, Qv::Box<int> {});
    const iFont::Metrics& metrics = font->getMetrics();
    const XY<int> position(pos.x, pos.y + metrics.descent - (metrics.height >> 1));
    renderer.renderPrimitive(
        Tela::TextDescription(text, position, scale(typeface.colour, 0.7), alignment, font));
}
