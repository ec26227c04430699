#include "tela/text/SyntaxHighlighting.h"

#include "tela/core/StringCase.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"

#include <algorithm>

SyntaxHighightingRenderer::SyntaxHighightingRenderer(bool keepCase) : keepCase(keepCase)
{
}

void SyntaxHighightingRenderer::addKeyWord(const WString& word)
{
    keywords.push_back(keepCase ? Qv::toLower(word) : word);
}

void SyntaxHighightingRenderer::setKeyWords(const std::vector<WString>& words)
{
    for (const WString& word : words)
        addKeyWord(word);
}

SyntaxHighightingRenderer::KeywordPosition SyntaxHighightingRenderer::findNextKeyWord(const WString& text,
                                                                                     unsigned int from) const
{
    KeywordPosition best;
    if (from >= text.size())
        return best;
    const std::size_t count = std::min<std::size_t>(keywords.size(), MAX_KEYWORDS);
    for (std::size_t index = 0; index < count; ++index) {
        const WString& keyword = keywords[index];
        if (keyword.empty())
            continue;
        const std::size_t found = text.view().find(keyword.view(), from);
        // Strictly smaller: on a tie the keyword earlier in the list keeps it.
        if (found != WString::view_type::npos && found < best.position) {
            best.position = static_cast<std::uint32_t>(found);
            best.keywordIndex = static_cast<std::uint8_t>(index);
        }
    }
    return best;
}

void SyntaxHighightingRenderer::render(CanvasRenderer& r, const WString& text, const XY<int>& pos,
                                       const Colour& textColour, const Colour& keywordColour,
                                       const Qv::Ptr<iFont>& font)
{
    if (text.empty())
        return;
    XY<int> cursor = pos;
    const WString searched = keepCase ? text : Qv::toLower(text);
    const auto draw = [&](std::size_t start, std::size_t count, const NormalisedRGB& colour) {
        const Tela::TextDescription piece(text.substr(start, count), cursor, colour, TextAlignment{0, 1}, font);
        r.render(piece);
        cursor.x = piece.getExtents().x2;
    };

    std::size_t done = 0;
    KeywordPosition found = findNextKeyWord(searched, 0);
    while (found.position != 0xFFFFFFFF) {
        if (found.position > done)
            draw(done, found.position - done, textColour);
        // The length is taken in 16 bits, so a keyword of 65,536
        // units draws none of them. The search then moves on by one, not by
        // nothing, so that it cannot find the same place for ever.
        const std::uint16_t length = static_cast<std::uint16_t>(keywords[found.keywordIndex].size());
        draw(found.position, length, keywordColour);
        done = std::size_t(found.position) + length;
        found = findNextKeyWord(searched, static_cast<unsigned int>(length ? done : done + 1));
    }
    draw(done, text.size() - std::min(done, text.size()), textColour);
}
