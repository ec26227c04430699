#pragma once
// Case mapping of whole strings, unit by unit. Wide strings go through the C
// library's towlower in the current locale; surrogate halves are left as they
// are. Narrow strings map ASCII only, so UTF-8 sequences pass unchanged.

#include "tela/core/LightweightString.h"

namespace Qv {

[[nodiscard]] WString toLower(const WString& text);
[[nodiscard]] String toLower(const String& text);

} // namespace Qv
