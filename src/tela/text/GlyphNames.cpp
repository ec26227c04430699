#include "tela/text/GlyphNames.h"

namespace QvTTF {

WString getDescription(eGlyph glyph)
{
    switch (glyph) {
    case eZoomIn: return u"Zoom in";
    case ePlus: return u"Plus";
    case eZoomOut: return u"Zoom out";
    case eMinus: return u"Minus";
    case ePlayBackwards: return u"Play backwards";
    case ePlayForwards: return u"Play forwards";
    case eCogs: return u"Cogs";
    case eStop: return u"Stop";
    case eDown: return u"Down";
    case eUp: return u"Up";
    case eEject: return u"Eject";
    case eTick: return u"Tick";
    case eRewind: return u"Rewind";
    case eFastForward: return u"Fast forward";
    case eUpFolder: return u"Up folder";
    case eRevealFiles: return u"Reveal files";
    case eGraph: return u"Graph";
    case eNudgeBackwards: return u"Nudge backwards";
    case eNudgeForwards: return u"Nudge forwards";
    case ePrevious: return u"Previous";
    case eNext: return u"Next";
    case eConnections: return u"Connections";
    case eReveal: return u"Reveal";
    case eExitProject: return u"Exit project";
    case eStar: return u"Star";
    case eStarOutline: return u"Star outline";
    case eRedo: return u"Redo";
    case eUndo: return u"Undo";
    case eSearch: return u"Search";
    case eMarkIn: return u"Mark in";
    case eMarkClear: return u"Mark clear";
    case eMarkOut: return u"Mark out";
    }
    return WString(u"");
}

} // namespace QvTTF

WString getString(QvTTF::eGlyph glyph)
{
    const char16_t unit = static_cast<char16_t>(glyph);
    return WString(&unit, 1);
}
