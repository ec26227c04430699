#include "tela/core/HTMLUtils.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

unsigned int channel_byte(float value)
{
    if (!(value > 0.0f)) // NaN reads as 0
        return 0;
    return static_cast<unsigned int>(std::lround(std::min(value, 1.0f) * 255.0f));
}

} // namespace

NormalisedRGB HTMLUtils::fromHex(unsigned int rgb)
{
    return NormalisedRGB(static_cast<float>((rgb >> 16) & 0xFF) / 255.0f, static_cast<float>((rgb >> 8) & 0xFF) / 255.0f,
                         static_cast<float>(rgb & 0xFF) / 255.0f);
}

unsigned int HTMLUtils::toHex(const NormalisedRGB& colour)
{
    return channel_byte(colour.r) << 16 | channel_byte(colour.g) << 8 | channel_byte(colour.b);
}

bool HTMLUtils::parseHex(std::string_view text, unsigned int& rgb)
{
    if (!text.empty() && text.front() == '#')
        text.remove_prefix(1);
    if (text.size() != 6)
        return false;
    unsigned int value = 0;
    for (const char c : text) {
        const int digit = HTMLUtils::hexDigit(c);
        if (digit < 0)
            return false;
        value = value << 4 | static_cast<unsigned int>(digit);
    }
    rgb = value;
    return true;
}

void HTMLUtils::formatHex(unsigned int rgb, char out[7])
{
    std::snprintf(out, 7, "%06x", rgb & 0xFFFFFFu);
}

WString HTMLUtils::addLinkTags(const WString& line, unsigned int start, unsigned int length)
{
    const WString target = line.substr(start, length);
    if (target.empty())
        return WString(u"");
    WString link(u"<a href=\"");
    link += target;
    link += WString(u"\">");
    link += target;
    link += WString(u"</a>");
    return link;
}

WString HTMLUtils::addStyleTags(const WString& text, unsigned int style, unsigned int colour, unsigned int size)
{
    if (style == NOT_GIVEN)
        style = 0;
    WString open;
    WString close;
    if (colour != NOT_GIVEN || size != NOT_GIVEN) {
        char font[64] = "<font";
        if (colour != NOT_GIVEN) {
            char hex[7];
            formatHex(colour, hex);
            std::snprintf(font + 5, sizeof font - 5, " color=\"#%s\"", hex);
        }
        if (size != NOT_GIVEN) {
            const std::size_t used = std::strlen(font);
            std::snprintf(font + used, sizeof font - used, " size=\"%u\"", size);
        }
        open = fromUTF8(font);
        open += u'>';
        close = WString(u"</font>");
    }
    // Innermost last on the way in, first on the way out.
    const char16_t* const tags[] = {u"b", u"i", u"u"};
    for (unsigned bit = 0; bit < 3; ++bit) {
        if ((style & (1u << bit)) == 0)
            continue;
        open += WString(u"<") + WString(tags[bit]) + WString(u">");
        close = WString(u"</") + WString(tags[bit]) + WString(u">") + close;
    }
    return open + text + close;
}

int HTMLUtils::hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}
