#pragma once
// FakeFont: an iFont with fixed metrics and a fixed advance per character, so
// that text boxes and pen positions can be worked out by hand.

#include "tela/platform/iFont.h"

class FakeFont final : public iFont {
public:
    static constexpr int ADVANCE = 7;

    FakeFont(std::int16_t ascent = 10, std::int16_t descent = 3, std::uint16_t height = 17)
    {
        m_metrics.ascent = ascent;
        m_metrics.descent = descent;
        m_metrics.height = height;
    }

    const Metrics& getMetrics() const override { return m_metrics; }
    unsigned int getStyle() const override { return 0; }
    void analyse(const WString& text, std::vector<int>& rightEdges) const override
    {
        rightEdges.clear();
        for (std::size_t index = 1; index <= text.size(); ++index)
            rightEdges.push_back(static_cast<int>(index) * ADVANCE);
    }
    XY<int> getTextExtent(const WString& text, unsigned count) const override
    {
        const std::size_t shown = count < text.size() ? count : text.size();
        return {static_cast<int>(shown) * ADVANCE, m_metrics.height};
    }
    CharacterLocation locateChar(const WString&, eCharSeekMethod, unsigned short index) const override
    {
        return {index, index * ADVANCE, (index + 1) * ADVANCE};
    }
    CharacterLocation getCharInfoForPixelX(const WString&, int x) const override
    {
        return {x / ADVANCE, x / ADVANCE * ADVANCE, (x / ADVANCE + 1) * ADVANCE};
    }

private:
    Metrics m_metrics;
};
