#pragma once
// Case mapping of whole strings, unit by unit, so an index into the result is
// an index into the text. Wide strings go through the C library's towlower in
// the current locale (ASCII alone in the "C" locale); surrogate halves, and
// units whose lower case lies outside the basic plane, are left as they are. Narrow strings map ASCII only, so UTF-8 sequences pass unchanged.

#include "tela/core/LightweightString.h"

namespace Qv {

[[nodiscard]] WString toLower(const WString& text);
[[nodiscard]] String toLower(const String& text);

} // namespace Qv
