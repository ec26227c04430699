#pragma once
// The gallery's HTML page: help text in the markup subset (a heading, bold
// and italic words, a coloured phrase, a centred line and a link), laid out
// in a box. The link leads to a second page of help, whose own link leads back.

#include "tela/core/LightweightString.h"
#include "tela/core/LightweightVector.h"
#include "tela/platform/Geometry.h"
#include "tela/text/HTMLRenderer.h"

class Canvas;
class Palette;

class HTMLPage {
public:
    static constexpr int PAGE_WIDTH = 448, PAGE_HEIGHT = 260;

    // Paints the current page into `canvas`; what changes reaches the screen
    // at the next update. Keeps where the links were drawn.
    void paint(Canvas* canvas, const Palette& palette);
    // The link drawn at a point of the canvas by the last paint; empty if none.
    WString linkAt(const XY<int>& point) const;
    // The middle of the first link's first box, in the canvas; (-1, -1) when
    // nothing has been painted. Where a scripted click aims.
    XY<int> linkCentre() const;
    // Turns to the page `url` names; false, and nothing changes, for a link
    // this page does not know.
    bool follow(const WString& url);
    int page() const { return m_page; }

private:
    int m_page = 0;
    LightweightVector<HTMLRenderer::Paragraph> m_paragraphs;
};
