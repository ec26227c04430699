// iFont: a live font of the platform, shared through Qv::Ptr<iFont>.
//
// - Metrics are whole pixels: ascent above the baseline, descent below it (positive
//   downward), height from one baseline to the next.
// - Text is wide (16-bit units); positions and counts are in those units.
// - analyse() gives, per character, the cumulative pixel position of its right edge;
//   fitting and wrapping work on that vector alone.
// The slot order below is fixed: fonts built elsewhere are called through it.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"

#include <cstdint>
#include <vector>

class iFont : public iObject {
public:
    struct Metrics {
        std::int16_t ascent = 0;
        std::int16_t descent = 0;          // positive below the baseline
        std::uint16_t height = 0;
    };

    // How locateChar reads its index: the character at it, or the neighbour on
    // either side (a caret moving over a surrogate pair or a combining mark).
    enum eCharSeekMethod : std::int32_t {
        eCharAt = 0,
        eCharBefore = 1,
        eCharAfter = 2,
    };

    // Where a character lies along the line, in pixels from the start of the text.
    struct CharacterLocation {
        std::int32_t index = -1;           // -1: no such character
        std::int32_t left = 0;
        std::int32_t right = 0;
    };

    // All characters, for getTextExtent's count.
    static constexpr unsigned ALL_CHARACTERS = 0xFFFFFFFFu;

    virtual const Metrics& getMetrics() const = 0;
    virtual unsigned int getStyle() const = 0;   // the flags it was made with: 1 bold, 2 italic
    virtual void analyse(const WString& text, std::vector<int>& rightEdges) const = 0;
    // The size of the first `count` characters; only x is read by the library.
    virtual XY<int> getTextExtent(const WString& text, unsigned count) const = 0;
    virtual CharacterLocation locateChar(const WString& text, eCharSeekMethod method, unsigned short index) const = 0;
    virtual CharacterLocation getCharInfoForPixelX(const WString& text, int x) const = 0;
};
