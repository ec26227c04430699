// splitString on any text, separator and flags. What must hold whatever the
// input: the count is the list's size; the pieces stand in the text in order
// without overlapping; no text but separators is lost; and an empty piece comes
// only where the flags allow one.
//
// Input: flags (1 byte, low 3 bits), separator (1 byte, or 0xFF and a raw unit),
// then the text (see FuzzInput.h).

#include "fuzz/FuzzInput.h"

#include "tela/text/WordWrappingTextRenderer.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

std::u16string without(std::u16string_view text, char16_t unit)
{
    std::u16string kept;
    for (const char16_t each : text)
        if (each != unit)
            kept += each;
    return kept;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Fuzz::check;
    Fuzz::Input input(data, size);
    const unsigned flags = input.byte() & 7u;
    const std::uint8_t separatorByte = input.byte();
    const char16_t separator = separatorByte == 0xFF ? static_cast<char16_t>(input.u16()) : separatorByte;
    const std::u16string text = input.text();

    Tela::WordWrappingTextRenderer::Strings pieces;
    pieces.emplace_back(u"left over from before");
    const unsigned count = Tela::splitString(WString(text), static_cast<wchar_t>(separator), pieces, flags);
    check(count == pieces.size(), "the count is the number of pieces");

    if (text.empty()) {
        check(count == 1 && pieces[0].empty(), "an empty text is one empty piece");
        return 0;
    }

    // In order, without overlapping: each piece found at or behind the end of the one before.
    std::size_t from = 0;
    std::u16string joined;
    for (const WString& piece : pieces) {
        const std::size_t at = text.find(piece.view(), from);
        check(at != std::u16string::npos, "every piece stands in the text, behind the piece before it");
        from = at + piece.size();
        joined += piece.view();
    }
    // Only separators go missing: those between the pieces, and empty pieces.
    check(without(joined, separator) == without(text, separator), "nothing but separators is lost");

    const bool keep = (flags & Tela::keepSeparator) != 0;
    for (std::size_t k = 0; k < pieces.size(); ++k) {
        const std::u16string_view piece = pieces[k].view();
        if (keep && k + 1 < pieces.size())
            check(!piece.empty() && piece.back() == separator, "a kept separator ends every piece but the last");
        if ((flags & Tela::skipEmpty) != 0 && !keep && text.size() > 1)
            check(!piece.empty(), "no empty piece when empty ones are skipped");
        if ((flags & Tela::honourQuotes) == 0 || separator == u'"') {
            const bool kept = keep && !piece.empty() && piece.back() == separator;
            const std::u16string_view body = kept ? piece.substr(0, piece.size() - 1) : piece;
            check(body.find(separator) == std::u16string_view::npos, "no piece holds a separator outside quotes");
        }
    }
    return 0;
}
