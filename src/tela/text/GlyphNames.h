#pragma once
// The application's symbol font: each glyph is a character code, and each has
// a short English name for tooltips and accessibility.

#include "tela/core/LightweightString.h"

#include <cstdint>

namespace QvTTF {

// A character code in the symbol font. Codes outside this list are valid
// values too; they simply have no name.
enum eGlyph : std::uint16_t {
    eZoomIn = 43,            // '+'
    ePlus = 44,              // ','
    eZoomOut = 45,           // '-'
    eMinus = 46,             // '.'
    ePlayBackwards = 60,     // '<'
    ePlayForwards = 62,      // '>'
    eCogs = 69,              // 'E'
    eStop = 70,              // 'F'
    eDown = 72,              // 'H'
    eUp = 73,                // 'I'
    eEject = 75,             // 'K'
    eTick = 77,              // 'M'
    eRewind = 78,            // 'N'
    eFastForward = 79,       // 'O'
    eUpFolder = 80,          // 'P'
    eRevealFiles = 85,       // 'U'
    eGraph = 88,             // 'X'
    eNudgeBackwards = 89,    // 'Y'
    eNudgeForwards = 90,     // 'Z'
    ePrevious = 99,          // 'c'
    eNext = 100,             // 'd'
    eConnections = 101,      // 'e'
    eReveal = 102,           // 'f'
    eExitProject = 106,      // 'j'
    eStar = 109,             // 'm'
    eStarOutline = 110,      // 'n'
    eRedo = 113,             // 'q'
    eUndo = 117,             // 'u'
    eSearch = 122,           // 'z'
    eMarkIn = 123,           // '{'
    eMarkClear = 124,        // '|'
    eMarkOut = 125,          // '}'
};

// The glyph's name, e.g. "Zoom in" for eZoomIn; empty for a code with no name.
WString getDescription(eGlyph glyph);

} // namespace QvTTF

// The one-character string that shows `glyph` in the symbol font.
WString getString(QvTTF::eGlyph glyph);
