#include "tela/core/StringCase.h"

#include <algorithm>
#include <cwctype>
#include <string>

namespace {

bool is_surrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

char16_t lower_unit(char16_t unit)
{
    if (unit < 0x80)
        return (unit >= u'A' && unit <= u'Z') ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
    if (is_surrogate(unit))
        return unit;
    const std::wint_t mapped = std::towlower(static_cast<std::wint_t>(unit));
    // A mapping out of the basic plane would change the length: keep the unit.
    return mapped <= 0xFFFF && !is_surrogate(static_cast<char16_t>(mapped)) ? static_cast<char16_t>(mapped) : unit;
}

char lower_unit(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

template <typename Unit>
bool less_ignoring_case(std::basic_string_view<Unit> a, std::basic_string_view<Unit> b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](Unit x, Unit y) {
        return lower_unit(x) < lower_unit(y);
    });
}

} // namespace

WString Qv::toLower(const WString& text)
{
    if (text.isNull())
        return text;
    std::u16string lower(text.view());
    for (char16_t& unit : lower)
        unit = lower_unit(unit);
    return WString(lower.data(), lower.size());
}

String Qv::toLower(const String& text)
{
    String lower;
    for (const char c : text.view())
        lower += lower_unit(c);
    return lower.isNull() ? text : lower;
}

bool lessIgnoringCase(std::u16string_view a, std::u16string_view b)
{
    return less_ignoring_case(a, b);
}

bool lessIgnoringCase(std::string_view a, std::string_view b)
{
    return less_ignoring_case(a, b);
}
