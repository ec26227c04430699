#include "tela/core/StringCase.h"

#include <cwctype>

namespace {

bool is_surrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

} // namespace

WString Qv::toLower(const WString& text)
{
    WString lower;
    for (const char16_t unit : text.view())
        lower += is_surrogate(unit) ? unit : static_cast<char16_t>(std::towlower(static_cast<wint_t>(unit)) & 0xFFFF);
    return lower.isNull() ? text : lower;
}

String Qv::toLower(const String& text)
{
    String lower;
    for (const char c : text.view())
        lower += (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
    return lower.isNull() ? text : lower;
}
