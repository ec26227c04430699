#pragma once
// SyntaxHighightingRenderer (so spelled): one line of text drawn with every
// occurrence of a set of keywords in a second colour. There is no grammar: a
// keyword is a plain substring, found wherever it occurs, inside words too.
//
// - Case: with keepCase, keywords are stored in lower case and the text is
//   searched as it is, so only lower-case text matches; without it, keywords
//   are stored as given and the text is searched in lower case, so a keyword
//   with a capital never matches. Applications rely on both.
// - Where two keywords begin at the same place, the one added first wins,
//   even when the other is longer.
// - Up to 255 keywords take part (indices are 8-bit); empty ones are skipped,
//   since they would match everywhere and the walk would never move on.
// - What is drawn are the characters of the text as given, never the folded
//   ones.

#include "tela/colour/Colour.h"
#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iFont.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class CanvasRenderer;

class SyntaxHighightingRenderer {
public:
    struct KeywordPosition {
        std::uint32_t position = 0xFFFFFFFF;   // none
        std::uint8_t keywordIndex = 0;
    };

    // Keywords past this many take no part: the search counts them in 8 bits.
    static constexpr std::size_t MAX_KEYWORDS = 255;

    SyntaxHighightingRenderer() = default;
    explicit SyntaxHighightingRenderer(bool keepCase);
    SyntaxHighightingRenderer(const SyntaxHighightingRenderer&) = default;
    SyntaxHighightingRenderer(SyntaxHighightingRenderer&&) noexcept = default;
    SyntaxHighightingRenderer& operator=(const SyntaxHighightingRenderer&) = default;
    SyntaxHighightingRenderer& operator=(SyntaxHighightingRenderer&&) noexcept = default;

    void addKeyWord(const WString& word);
    // Adds each word in turn to the list; it does not replace it.
    void setKeyWords(const std::vector<WString>& words);

    // Draws `text` from `pos` (the left end of its baseline) rightwards: the
    // stretches between keywords in `textColour`, the keywords in
    // `keywordColour`. An empty text draws nothing; otherwise the tail behind
    // the last keyword is always drawn, even when it is empty.
    void render(CanvasRenderer& r, const WString& text, const XY<int>& pos, const Colour& textColour,
                const Colour& keywordColour, const Qv::Ptr<iFont>& font);

private:
    KeywordPosition findNextKeyWord(const WString& text, unsigned int from) const;

    std::vector<WString> keywords;
    bool keepCase = false;
};
