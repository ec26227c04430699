// The HTML page: two pages of help text, each parsed when it is painted, so
// that the runs' boxes always belong to what is on the screen.

#include "gallery/HTMLPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/colour/Palette.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"

namespace {

constexpr int MARGIN = 16;
constexpr unsigned short LINE_HEIGHT = 22;

const char* const PAGES[] = {
    "<p><b>Help: text with markup</b></p>"
    "<p>A panel may show <b>bold</b> and <i>italic</i> words, a "
    "<font color=\"warning\">warning in colour</font>, and lines that wrap at the edge of the box "
    "like any other text.</p>"
    "<p align=\"center\">This line stands in the middle.</p>"
    "<p align=\"left\">Follow <a href=\"help:second\">the link to the next page</a> for more.</p>",

    "<p><b>Help: links</b></p>"
    "<p>A click is mapped back to a link through the boxes the last layout left in the runs, "
    "so finding it needs <i>no second layout</i>.</p>"
    "<p align=\"center\"><font color=\"subheading\">Centred, and coloured.</font></p>"
    "<p align=\"left\">Go <a href=\"help:first\">back to the first page</a>.</p>",
};
const char16_t* const PAGE_NAMES[] = {u"help:first", u"help:second"};

} // namespace

void HTMLPage::paint(Canvas* canvas, const Palette& palette)
{
    if (!canvas)
        return;
    m_paragraphs = HTMLRenderer::parse(String(PAGES[m_page]), palette);
    canvas->beginRender();
    CanvasRenderer& renderer = canvas->getRenderer();
    renderer.render(Tela::RectDescription({0, 0, canvas->getWidth(), canvas->getHeight()}, palette.window(eWindowNormal)));
    const HTMLRenderer::Box box{MARGIN, MARGIN, canvas->getWidth() - MARGIN, canvas->getHeight() - MARGIN};
    HTMLRenderer::render(renderer, m_paragraphs, box, LINE_HEIGHT, TextAlignment{0, 1});
    canvas->endRender();
}

WString HTMLPage::linkAt(const XY<int>& point) const
{
    return HTMLRenderer::getURLAtPosition(point, m_paragraphs);
}

XY<int> HTMLPage::linkCentre() const
{
    for (const HTMLRenderer::Paragraph& paragraph : m_paragraphs)
        for (const HTMLRenderer::StyledText& run : paragraph.runs)
            if (!run.url.empty() && !run.boxes.empty()) {
                const HTMLRenderer::Box& box = run.boxes.front();
                return {(box.x1 + box.x2) / 2, (box.y1 + box.y2) / 2};
            }
    return {-1, -1};
}

bool HTMLPage::follow(const WString& url)
{
    for (int page = 0; page < 2; ++page)
        if (url == WString(PAGE_NAMES[page])) {
            m_page = page;
            return true;
        }
    return false;
}
