#pragma once
// A font of fixed advances, so that every width in the text tests can be
// worked out by hand: a blank is 4 pixels, '@' 70000, anything else 8 (".." is 16).

#include "tela/platform/iFont.h"

#include <cstdint>
#include <vector>

namespace TextTest {

class FixedFont final : public iFont {
public:
    // Answers for at most `measured` characters, as a font that gave up would,
    // and for the style it was asked for, so that the font table finds it again.
    explicit FixedFont(std::size_t measured = SIZE_MAX, unsigned int style = 0) : m_measured(measured), m_style(style) {}
    static int advance(char16_t unit) { return unit == u' ' ? 4 : unit == u'@' ? 70000 : 8; }

    const Metrics& getMetrics() const override { return m_metrics; }
    unsigned int getStyle() const override { return m_style; }
    void analyse(const WString& text, std::vector<int>& edges) const override
    {
        edges.clear();
        for (std::size_t index = 0; index < text.size() && index < m_measured; ++index)
            edges.push_back((edges.empty() ? 0 : edges.back()) + advance(text[index]));
    }
    XY<int> getTextExtent(const WString& text, unsigned count) const override
    {
        int width = 0;
        for (std::size_t index = 0; index < text.size() && index < count; ++index)
            width += advance(text[index]);
        return {width, m_metrics.height};
    }
    CharacterLocation locateChar(const WString&, eCharSeekMethod, unsigned short) const override { return {}; }
    CharacterLocation getCharInfoForPixelX(const WString&, int) const override { return {}; }

private:
    Metrics m_metrics {10, 3, 16};
    std::size_t m_measured;
    unsigned int m_style;
};

} // namespace TextTest
