// HTMLRenderer.cpp: parsing the markup subset, and making it from plain text.
// Layout and drawing are in HTMLLayout.cpp.
//
// Invariants of parse
// - Runs are appended only to the last paragraph; a run met before any
//   paragraph exists has nowhere to go and is dropped.
// - The colour and font stacks hold what each open <font> or <a> put there,
//   a level for each. A push of the value already on top only counts a
//   repeat, so deep nesting of the same look costs no memory; past
//   MAX_STACK_LEVELS distinct levels a push repeats the top, so a flood of
//   differing tags cannot grow the stacks without bound either.

#include "tela/text/HTMLRenderer.h"

#include "tela/colour/Palette.h"
#include "tela/core/HTMLUtils.h"
#include "tela/core/StringCase.h"
#include "tela/core/XMLParser.h"
#include "tela/render/Descriptions.h"
#include "tela/text/WordWrappingTextRenderer.h"

#include <algorithm>
#include <cwctype>
#include <string_view>

namespace {

constexpr std::size_t MAX_STACK_LEVELS = 1024;
constexpr char16_t BLANK = u' ';

bool same_look(const Colour& a, const Colour& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a && a.bypassGamma() == b.bypassGamma();
}

bool same_look(const Tela::FontDesc& a, const Tela::FontDesc& b)
{
    return a == b && a.textStyle == b.textStyle;
}

template <typename T>
class LookStack {
public:
    bool empty() const { return m_levels.empty(); }
    const T& top() const { return m_levels.back().value; }

    void push(const T& value)
    {
        if (!m_levels.empty() && (m_levels.size() >= MAX_STACK_LEVELS || same_look(value, top()))) {
            ++m_levels.back().repeats;
            return;
        }
        m_levels.push_back(Level{value, 0});
    }
    // A pop with nothing pushed is ignored.
    void pop()
    {
        if (m_levels.empty())
            return;
        if (m_levels.back().repeats > 0)
            --m_levels.back().repeats;
        else
            m_levels.pop_back();
    }

private:
    struct Level {
        T value;
        std::size_t repeats;
    };
    Qv::Vector<Level> m_levels;
};

unsigned int style_of_tag(std::string_view tag)
{
    if (tag == "b" || tag == "strong")
        return Tela::FontDesc::eBold;
    if (tag == "i" || tag == "em" || tag == "cite")
        return Tela::FontDesc::eItalic;
    return 0;
}

String as_string(std::string_view bytes)
{
    return String(bytes.data(), bytes.size());
}

// The value as "%x" reads it: blanks, a sign, an optional 0x, then at least
// one hex digit; the number wraps at 32 bits rather than overflowing.
bool read_hex(std::string_view text, unsigned int& value)
{
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == '+' || text[at] == '-'))
        negative = text[at++] == '-';
    if (at + 2 < text.size() && text[at] == '0' && (text[at + 1] == 'x' || text[at + 1] == 'X') &&
        HTMLUtils::hexDigit(text[at + 2]) >= 0)
        at += 2;
    unsigned int number = 0;
    std::size_t digits = 0;
    for (; at < text.size(); ++at, ++digits) {
        const int digit = HTMLUtils::hexDigit(text[at]);
        if (digit < 0)
            break;
        number = number << 4 | static_cast<unsigned int>(digit);
    }
    if (digits == 0)
        return false;
    value = negative ? 0u - number : number;
    return true;
}

bool is_ascii_alnum(char16_t unit)
{
    return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

bool is_punct(char16_t unit)
{
    return std::iswpunct(static_cast<wint_t>(unit)) != 0;
}

// The working state of one parse.
class Parse {
public:
    explicit Parse(const Palette& palette) : m_palette(palette) {}

    void addRun(LightweightVector<HTMLRenderer::Paragraph>& result, std::string_view bytes)
    {
        if (result.empty())
            return;   // text ahead of any paragraph
        HTMLRenderer::StyledText run;
        run.text = fromUTF8(as_string(bytes));
        run.font = fontStack.empty() ? Tela::FontDesc() : fontStack.top();
        run.font.style = fontStyle;
        run.font.textStyle = underlineDepth != 0 ? eTextHeavy : eTextPlain;
        run.colour = currentColour();
        run.url = pendingUrl;
        run.alignment = alignment;
        if (smallDepth != 0)
            run.font.size = static_cast<std::uint16_t>(getDefaultFontSize() * 3 / 4);
        pendingUrl = WString();
        result.back().runs.push_back(std::move(run));
    }

    Colour currentColour() const { return colourStack.empty() ? m_palette.text(eTextNormal) : colourStack.top(); }

    const Palette& m_palette;
    LookStack<Colour> colourStack;
    LookStack<Tela::FontDesc> fontStack;
    std::uint16_t underlineDepth = 0;
    std::uint16_t smallDepth = 0;
    unsigned int fontStyle = 0;
    std::uint16_t tagDepth = 0;
    WString pendingUrl;
    TextAlignment alignment {0, 1};
};

} // namespace

bool HTMLRenderer::isHTML(const String& text)
{
    return text.view().starts_with("<html>") || text.view().starts_with("<p");
}

bool HTMLRenderer::isHTML(const WString& text)
{
    return text.view().starts_with(u"<html>") || text.view().starts_with(u"<p");
}

LightweightVector<HTMLRenderer::Paragraph> HTMLRenderer::parse(const WString& text, const Palette& palette)
{
    return parse(toUTF8(text), palette);
}

LightweightVector<HTMLRenderer::Paragraph> HTMLRenderer::parse(const String& text, const Palette& palette)
{
    LightweightVector<Paragraph> result;
    if (!isHTML(text))
        return result;
    const XMLParser parser(text.data(), text.size());
    const Qv::Vector<XMLParser::Tag>& tags = parser.tags();
    const std::string_view source = text.view();
    Parse state(palette);

    for (std::size_t index = 0; index < tags.size(); ++index) {
        const XMLParser::Tag& tag = tags[index];
        if (index > 0) {
            const std::size_t gap_start = std::size_t(tags[index - 1].last) + 1;
            if (gap_start < tag.first)
                state.addRun(result, source.substr(gap_start, tag.first - gap_start));
        }
        if (tag.kind != XMLParser::eOpening && tag.kind != XMLParser::eClosing)
            continue;
        const bool opening = tag.kind == XMLParser::eOpening;
        const std::string_view name = tag.name;
        if (opening && state.tagDepth == 0)
            result.push_back(Paragraph{});

        const unsigned int style = style_of_tag(name);
        if (opening)
            state.fontStyle |= style;
        else
            state.fontStyle &= ~style;   // not counted: <b><b>x</b>y</b> leaves y plain

        if (name == "p" && opening) {
            for (const XMLParser::Attribute& attribute : parser.attributes(tag)) {
                if (attribute.name != "align")
                    continue;
                if (attribute.value == "center")
                    state.alignment = {2, 1};
                else if (attribute.value == "right")
                    state.alignment = {1, 1};
                else if (attribute.value == "left")
                    state.alignment = {0, 1};
            }
        } else if (name == "small") {
            state.smallDepth = static_cast<std::uint16_t>(opening ? state.smallDepth + 1 : state.smallDepth - 1);
        } else if (name == "u") {
            state.underlineDepth = static_cast<std::uint16_t>(opening ? state.underlineDepth + 1 : state.underlineDepth - 1);
        } else if (name == "font" && opening) {
            Colour colour = state.currentColour();
            Tela::FontDesc font = state.fontStack.empty() ? Tela::FontDesc() : state.fontStack.top();
            for (const XMLParser::Attribute& attribute : parser.attributes(tag)) {
                if (attribute.name == "color")
                    colour = getColourFromString(as_string(attribute.value), palette);
                else if (attribute.name == "face")
                    font.name = as_string(attribute.value);
                else if (attribute.name == "size" && attribute.value == "small")
                    font.size = static_cast<std::uint16_t>(getDefaultFontSize() * 4 / 5);
            }
            state.colourStack.push(colour);
            state.fontStack.push(font);
        } else if (name == "font") {
            state.colourStack.pop();
            state.fontStack.pop();
        } else if (name == "a" && opening) {
            Colour colour = state.currentColour();
            for (const XMLParser::Attribute& attribute : parser.attributes(tag)) {
                if (attribute.name != "href")
                    continue;
                state.pendingUrl = fromUTF8(as_string(attribute.value));
                colour = palette.subheadingText();
                ++state.underlineDepth;
                break;
            }
            state.colourStack.push(colour);
        } else if (name == "a") {
            // Lowered even for an <a> that had no href and raised nothing: the
            // depth wraps, and the text behind stays heavy.
            state.colourStack.pop();
            --state.underlineDepth;
        }
        state.tagDepth = static_cast<std::uint16_t>(opening ? state.tagDepth + 1 : state.tagDepth - 1);
    }
    return result;
}

Colour HTMLRenderer::getColourFromString(const String& value, const Palette& palette)
{
    const std::string_view text = value.view();
    if (text == "inactive")
        return palette.text(eTextStronglyDimmed);
    if (text == "readonly")
        return palette.text(eTextLightlyDimmed);
    if (text == "subheading")
        return palette.subheadingText();
    if (text == "warning")
        return palette.warning();
    unsigned int rgb = 0;
    if (text.starts_with('#') && read_hex(text.substr(1), rgb))
        return fromHex(rgb);
    return palette.text(eTextNormal);
}

unsigned int HTMLRenderer::getFontStyleFromTagType(const String& tag)
{
    return style_of_tag(tag.view());
}

bool HTMLRenderer::isUpperCase(const WString& text, unsigned int start, unsigned int length)
{
    const std::size_t end = std::min<std::size_t>(std::size_t(start) + length, text.size());
    for (std::size_t index = start; index < end; ++index) {
        const wint_t unit = static_cast<wint_t>(text[index]);
        if (!std::iswupper(unit) || std::iswdigit(unit))
            return false;
    }
    return true;
}

String HTMLRenderer::convertToHTML(const WString& text, unsigned int flags)
{
    if (text.view().starts_with(u"<p>"))
        return toUTF8(text);
    Qv::Vector<WString> lines;
    Tela::splitString(text, L'\n', lines, 0);
    return convertToHTML(std::vector<WString>(lines.begin(), lines.end()), flags);
}

namespace {

// Each "www." address behind `line`'s start, up to its first blank less any
// trailing punctuation, made a link. Built piece by piece, so a line of many
// addresses costs no more than one of a few.
WString mark_links(const WString& line)
{
    const std::u16string_view text = line.view();
    WString marked;
    std::size_t copied = 0;
    std::size_t from = 0;
    for (;;) {
        const std::size_t start = text.find(u"www.", from);
        if (start == std::u16string_view::npos)
            break;
        const std::size_t blank = text.find(BLANK, start);
        std::size_t end = blank == std::u16string_view::npos ? text.size() - 1 : blank;
        while (end > start && !is_ascii_alnum(text[end]))
            --end;
        const std::size_t length = end - start + 1;
        marked += text.substr(copied, start - copied);
        marked += HTMLUtils::addLinkTags(line, static_cast<unsigned int>(start), static_cast<unsigned int>(length));
        copied = from = start + length;
    }
    if (copied == 0)
        return line;
    marked += text.substr(copied);
    return marked;
}

} // namespace

String HTMLRenderer::convertToHTML(const std::vector<WString>& lines, unsigned int flags)
{
    String result;
    for (const WString& original : lines) {
        WString line = (flags & 1) != 0 ? mark_links(original) : original;
        if ((flags & 2) != 0) {
            // Words in capitals become bold capitalised words; the rest is
            // copied as it stands, so the line is rebuilt in one pass.
            const std::u16string_view text = line.view();
            WString restyled;
            std::size_t copied = 0;
            std::size_t at = 0;
            while (at < text.size()) {
                if (text[at] == BLANK) {
                    ++at;
                    continue;
                }
                std::size_t word_end = text.find(BLANK, at);
                if (word_end == std::u16string_view::npos)
                    word_end = text.size();
                std::size_t first = at;
                std::size_t last = word_end - 1;
                while (first < last && is_punct(text[first]))
                    ++first;
                while (last > first && is_punct(text[last]))
                    --last;
                const std::size_t length = last - first + 1;
                if (length >= 2 && isUpperCase(line, static_cast<unsigned int>(first), static_cast<unsigned int>(length))) {
                    WString word = Qv::toLower(line.substr(first, length));
                    WString capital;
                    capital += static_cast<char16_t>(std::towupper(static_cast<wint_t>(word[0])) & 0xFFFF);
                    capital += word.view().substr(1);
                    restyled += text.substr(copied, first - copied);
                    restyled += HTMLUtils::addStyleTags(capital, 1, HTMLUtils::NOT_GIVEN, HTMLUtils::NOT_GIVEN);
                    copied = last + 1;
                }
                at = word_end;
            }
            if (copied != 0) {
                restyled += text.substr(copied);
                line = restyled;
            }
        }
        result += String("<p>");
        result += toUTF8(line);
        result += String("</p>");
    }
    return result;
}
