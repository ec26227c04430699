// The video page. A frame is drawn straight into the video's render target in
// its own top-down pixels; the page and its label are drawn on canvases, which
// count y upward from their bottom edge.

#include "gallery/VideoPanel.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/colour/Palette.h"
#include "tela/events/Event.h"
#include "tela/events/EventTypes.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/render/VideoWindow.h"
#include "tela/text/Fonts.h"
#include "tela/vector/Regions.h"

#include <iterator>

namespace {

constexpr int MARGIN = 24;
constexpr int SCREEN_TOP = 44;                       // below the caption
constexpr int SCREEN_WIDTH = VideoPage::PAGE_WIDTH - 2 * MARGIN;
constexpr int SCREEN_HEIGHT = VideoPage::PAGE_HEIGHT - SCREEN_TOP - MARGIN;
constexpr int LABEL_WIDTH = 132, LABEL_HEIGHT = 34;
constexpr int BAR_STEP = 3;                           // pixels the bars slide a frame
constexpr int BALL = 36;                              // the ball's diameter

// Seven bars of full colours at three quarters strength, then a band of greys.
const NormalisedRGB BARS[] = {{0.75f, 0.75f, 0.75f}, {0.75f, 0.75f, 0.0f}, {0.0f, 0.75f, 0.75f},
                              {0.0f, 0.75f, 0.0f},   {0.75f, 0.0f, 0.75f}, {0.75f, 0.0f, 0.0f},
                              {0.0f, 0.0f, 0.75f}};
constexpr int BAR_COUNT = static_cast<int>(std::size(BARS));

// Back and forth between 0 and `span`, one pixel a step.
int bounce(int step, int span)
{
    if (span <= 0)
        return 0;
    const int phase = step % (2 * span);
    return phase < span ? phase : 2 * span - phase;
}

} // namespace

namespace VideoPage {

Player::Player() = default;

Player::~Player() = default;

void Player::build(Canvas* page, int left, int top, const Palette& palette)
{
    if (!page)
        return;
    m_page = page;
    page->beginRender();
    CanvasRenderer& renderer = page->getRenderer();
    renderer.render(Tela::RectDescription({0, 0, PAGE_WIDTH, PAGE_HEIGHT}, palette.window(eWindowNormal)));
    renderer.render(Tela::TextDescription(WString(u"A video window: a new frame on every tick"),
                                          {MARGIN, PAGE_HEIGHT - 28}, fromColour(palette.text(eTextNormal)),
                                          TextAlignment{0, 0}, Tela::FontDesc(String(), 14, Tela::FontDesc::eBold)));
    page->endRender();

    // The screen: round corners, black until the first frame.
    m_screen = tela_newcanvas(this, page);
    tela_placecanvas(m_screen,
                     TopDownRect{left + MARGIN, top + SCREEN_TOP, left + MARGIN + SCREEN_WIDTH,
                                 top + SCREEN_TOP + SCREEN_HEIGHT},
                     makeCurvedRegion({SCREEN_WIDTH, SCREEN_HEIGHT}, 15, eLargeCorners));
    m_screen->beginRender();
    m_screen->getRenderer().render(Tela::RectDescription({0, 0, SCREEN_WIDTH, SCREEN_HEIGHT}, Colour(0.0, 0.0, 0.0, true)));
    m_screen->endRender();
    canvas_set_interest(m_screen, EventType::TIMER_CLASS);

    m_video = Qv::make<Tela::VideoWindow>();
    m_video->create(m_screen, Qv::Box<int>{0, 0, SCREEN_WIDTH, SCREEN_HEIGHT}, Tela::VideoWindow::eComposited);

    // The label, younger than the screen and so in front of it, over its
    // lower right corner and partly beside it.
    const int label_left = left + MARGIN + SCREEN_WIDTH - LABEL_WIDTH + 16;
    const int label_top = top + SCREEN_TOP + SCREEN_HEIGHT - LABEL_HEIGHT + 12;
    Canvas* label = tela_newcanvas(nullptr, page);
    tela_placecanvas(label, TopDownRect{label_left, label_top, label_left + LABEL_WIDTH, label_top + LABEL_HEIGHT},
                     makeCurvedRegion({LABEL_WIDTH, LABEL_HEIGHT}, 15, eSmallCorners));
    label->beginRender();
    label->getRenderer().render(
        Tela::RectDescription({0, 0, LABEL_WIDTH, LABEL_HEIGHT}, palette.selection(eSelectionFocused)));
    label->getRenderer().render(Tela::TextDescription(WString(u"In front of it"), {LABEL_WIDTH / 2, 11},
                                                      fromColour(palette.selectedText()), TextAlignment{2, 0},
                                                      Tela::FontDesc(String(), 13, Tela::FontDesc::eBold)));
    label->endRender();

    drawFrame(); // never a black screen on the page's first showing
}

void Player::stop()
{
    if (m_video)
        m_video->destroy();
    m_video = nullptr;
    if (m_screen)
        canvas_clear_interest(m_screen, EventType::TIMER_CLASS);
}

EventHandler::eResult Player::handleEvent(const Event& event)
{
    if (event.type != EventType::TIMER_TICK)
        return eNotHandled;
    // Only while the page is the one on view.
    if (m_video && m_page && canvas_is_topmost(m_page))
        drawFrame();
    return eHandled;
}

void Player::drawFrame()
{
    if (!m_video)
        return;
    const Qv::Ptr<Tela::iRenderTarget> target = m_video->getRenderTarget();
    if (!target)
        return;
    const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = target->getRenderer();
    if (!renderer)
        return;
    const XY<int> size = target->getSize();
    const int bars_height = size.y * 3 / 4;

    // The bars slide right and come round again on the left: each is drawn
    // twice, a screen's width apart.
    const int bar_width = (size.x + BAR_COUNT - 1) / BAR_COUNT;
    const int shift = (m_frame * BAR_STEP) % (bar_width * BAR_COUNT);
    RectDescription bars[2 * BAR_COUNT];
    for (int i = 0; i < BAR_COUNT; ++i)
        for (int copy = 0; copy < 2; ++copy) {
            const int x = i * bar_width + shift - copy * bar_width * BAR_COUNT;
            bars[2 * i + copy] = RectDescription(TopDownRect{x, 0, x + bar_width, bars_height}, BARS[i]);
        }
    renderer->drawRects(bars, static_cast<unsigned>(std::size(bars)));

    // Below them, steps of grey from black to white.
    constexpr int STEPS = 8;
    RectDescription greys[STEPS];
    for (int i = 0; i < STEPS; ++i) {
        const float level = static_cast<float>(i) / (STEPS - 1);
        greys[i] = RectDescription(TopDownRect{i * size.x / STEPS, bars_height, (i + 1) * size.x / STEPS, size.y},
                                   NormalisedRGB(level, level, level));
    }
    renderer->drawRects(greys, STEPS);

    // The ball: its two axes bounce at different speeds, so it wanders.
    EllipseDescription ball;
    const int x = bounce(m_frame * 5, size.x - BALL), y = bounce(m_frame * 3, size.y - BALL);
    ball.rect = TopDownRect{x, y, x + BALL, y + BALL};
    ball.style = 2;
    ball.fillColour = NormalisedRGB(1.0f, 1.0f, 1.0f);
    ball.lineColour = NormalisedRGB(0.1f, 0.1f, 0.1f);
    ball.thickness = 3;
    renderer->setAntialiasing(true);
    renderer->drawEllipses(&ball, 1);
    ++m_frame;
    // Letting the target go composites the frame into the screen and shows it.
}

} // namespace VideoPage
