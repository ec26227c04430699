#include "tela/core/StringCase.h"

#include <cwctype>
#include <string>

namespace {

bool is_surrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

} // namespace

WString Qv::toLower(const WString& text)
{
    if (text.isNull())
        return text;
    std::u16string lower(text.view());
    for (char16_t& unit : lower) {
        if (unit < 0x80) {
            if (unit >= u'A' && unit <= u'Z')
                unit = static_cast<char16_t>(unit + (u'a' - u'A'));
        } else if (!is_surrogate(unit)) {
            const std::wint_t mapped = std::towlower(static_cast<std::wint_t>(unit));
            // A mapping out of the basic plane would change the length: keep the unit.
            if (mapped <= 0xFFFF && !is_surrogate(static_cast<char16_t>(mapped)))
                unit = static_cast<char16_t>(mapped);
        }
    }
    return WString(lower.data(), lower.size());
}

String Qv::toLower(const String& text)
{
    String lower;
    for (const char c : text.view())
        lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    return lower.isNull() ? text : lower;
}
