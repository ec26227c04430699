// The gallery: what Tela can show so far, as a program on Tela::Application.
// The sidebar's entries are picked by clicking or with the up and down keys:
// the first shows every drawing primitive, the second text (wrapped, fitted,
// justified), the third a page of cards that change colour when clicked, the
// fourth help text in markup whose link turns to a second page, the fifth
// canvases cut to shape by paths, the sixth a video. The status bar names the
// page shown; a marker runs along it on the library's tick, under a pane of
// frosted glass that counts the ticks.
//
// With a display it opens a window (close it to end). Without one, or with
// TELA_BACKEND=headless, it plays a short scripted session on the headless
// platform and writes what the window showed before and after it.
//
// It ends as every program on the library does: run() returns when the
// window closes, the program deletes the canvases it made, then shutdown()
// lets go of the library, the window's root canvas included.
//
// Usage: gallery [directory for screenshots]   (default: the current directory)

#include "tela/app/Application.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/ScreenGrab.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/canvas/Wipe.h"
#include "tela/colour/CurrentColour.h"
#include "tela/colour/Palette.h"
#include "tela/core/Resources.h"
#include "tela/events/Deferred.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/events/EventTimeServer.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/platform/OS.h"
#include "tela/platform/Platforms.h"
#include "tela/platform/iImagingService.h"
#include "tela/render/CanvasRenderer.h"
#include "tela/render/Descriptions.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"
#include "tela/text/TooltipDetails.h"
#include "tela/vector/Regions.h"

#include "HTMLPanel.h"
#include "PathsPanel.h"
#include "ShapesPanel.h"
#include "StatusBar.h"
#include "TextPanel.h"
#include "TooltipPanel.h"
#include "VideoPanel.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int WIDTH = 640, HEIGHT = 400;
const char16_t* const SIDEBAR_LABELS[] = {u"Shapes", u"Text", u"Cards", u"HTML", u"Paths", u"Video"};
constexpr int SIDEBAR_ENTRIES = 6;
// Arrow keys, as the platforms report them: key values that are no characters.
constexpr std::uint32_t KEY_DOWN = 0x51 | eKeyNotCharacter;
constexpr std::uint32_t KEY_UP = 0x52 | eKeyNotCharacter;

// Packed device colours: red in the low byte.
int packed(int red, int green, int blue)
{
    return red | green << 8 | blue << 16;
}

void fill(Canvas* c, int colour)
{
    tela_setcanvas(c);
    tela_setcolour(colour);
    tela_wipecanvas();
}

// A heavyweight canvas at a window rectangle, shaped by `outline` (in its own
// box) when given, cleared to a colour through the drawing state.
Canvas* panel(Canvas* parent, int left, int top, int width, int height, int colour, RegionPtr outline = {},
              CanvasClient* client = nullptr)
{
    Canvas* c = tela_newcanvas(client, parent);
    tela_placecanvas(c, TopDownRect{left, top, left + width, top + height}, outline);
    fill(c, colour);
    return c;
}

// A soft dark band under a panel's edges. It is drawn in composited frames
// only: a window on the host road copies buffers and shows no shadows.
void cast_shadow(Canvas* c, std::uint16_t size, float opacity, std::uint32_t edges = SurroundParams::ALL_EDGES)
{
    SurroundParams shadow;
    shadow.size = size;
    shadow.opacity = opacity;
    shadow.edges = edges;
    shadow.colour = Colour(0.0, 0.0, 0.05, true);
    c->setEdgeEffect(shadow);
}

// A client that hands the events it is given to a function.
// A client that hands the events it is given to a function, and tells
// another, when given, that the pointer came in (true) or went out (false).
class Reacting final : public CanvasClient {
public:
    explicit Reacting(std::function<bool(const Event&)> react, std::function<void(bool)> hover = {})
        : m_react(std::move(react)), m_hover(std::move(hover))
    {
    }
    eResult handleEvent(const Event& event) override { return m_react(event) ? eHandled : eNotHandled; }
    void handleMouseContainment(bool inside) override
    {
        if (m_hover)
            m_hover(inside);
    }

private:
    std::function<bool(const Event&)> m_react;
    std::function<void(bool)> m_hover;
};

// The sidebar's tool tips are resources, filled in at start-up as a
// translated application would from its string table.
constexpr ResId TIP_PAGE = 1000, TIP_KEYS = 1001, TIP_MOVE = 1002, TIP_FIRST_PAGE = 1010;
constexpr unsigned TOOLTIP_DELAY = 300;   // milliseconds the pointer rests before a tip shows

void fill_tip_resources()
{
    setResourceString(TIP_PAGE, WString(u"Page"));
    setResourceString(TIP_KEYS, WString(u"Keys"));
    setResourceString(TIP_MOVE, WString(u"Up and Down move between pages"));
    const char16_t* const pages[] = {u"Every drawing primitive, in the palette's colours",
                                     u"Wrapped, justified, fitted and highlighted text",
                                     u"Cards that change colour when clicked", u"Marked-up help with a link",
                                     u"Canvases cut to shape by paths and by a picture",
                                     u"A video window, cut by its shape and the canvas in front"};
    for (ResId i = 0; i < std::size(pages); ++i)
        setResourceString(TIP_FIRST_PAGE + i, WString(pages[i]));
}

// A quiet backdrop: 24 x 24 tiles of diagonal stripes in two dark greys.
class StripedWallpaper final : public iWallpaperProvider {
public:
    Qv::Ptr<iImage> getWallpaper(const XY<int>&) override
    {
        Qv::Ptr<iImage> tile;
        if (!OS()->imaging()->createTargetImage(tile, {24, 24}, iImageBase::eHostMemory) || !tile)
            return nullptr;
        const Qv::Ptr<iPixelGuard> pixels = tile->lock();
        if (!pixels)
            return nullptr;
        for (int y = 0; y < 24; ++y)
            for (int x = 0; x < 24; ++x) {
                const std::uint32_t argb = (x + y) % 12 < 6 ? 0xFF2A2E34u : 0xFF30353Cu;
                std::memcpy(pixels->pixels() + y * pixels->stride() + x * 4, &argb, 4);
            }
        return tile;
    }
};

// The gallery's window and what lives in it.
class Gallery final : public Tela::Application {
public:
    explicit Gallery(std::string screenshots)
        : Application(WString(u"Tela gallery"), WString(u"0.1")), m_screenshots(std::move(screenshots))
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        args.flags = iRootWindow::InitArgs::eTitleBar; // a normal window of that size
        // Composed on the GPU road, which draws the panels' shadows.
        args.mode = 1 | iRootWindow::InitArgs::MODE_COMPOSITED;
        args.name = WString(u"Tela gallery");
        // The library's full dispatcher (key bindings, intercept filters)
        // takes over once start-up is over.
        args.eventHandler = Qv::make<RootWindowEventHandler>();
        setWindowDescription(args);
        setWallpaper(Qv::make<StripedWallpaper>());
        fill_tip_resources();
        setBackgroundInitRequired(true);
    }

    // After run(): the canvases this program made go first, while the
    // library that holds them is still up; then the library itself.
    void end()
    {
        hide_tip();
        for (const Qv::Ptr<EventHandler>& step : m_steps)
            EventTimeServer::instance().deRegisterForTimeEvents(step.get());
        m_steps.clear();
        if (m_player)
            m_player->stop(); // the video window goes before its canvas
        for (Canvas* panel : m_panels)
            tela_deletecanvas(panel); // with everything on it
        m_panels.clear();
        m_entries.clear();
        m_cards.clear();
        m_html = HTMLPage(); // its runs are the library's strings
        shutdown();
    }

    int failures() const { return m_failures; }

protected:
    void initComplete() override
    {
        Application::initComplete();
        build();
        if (!m_on_screen) {
            snapshot("gallery-1-start.png");
            play_script();
        }
    }

private:
    // The client objects live as long as the program, past its canvases.
    CanvasClient* client(std::function<bool(const Event&)> react, std::function<void(bool)> hover = {})
    {
        m_clients.push_back(Qv::make<Reacting>(std::move(react), std::move(hover)));
        return m_clients.back().get();
    }

    // The tip of a sidebar entry: what its page shows, and how to move on.
    static TooltipDetails tip_for(int entry)
    {
        TooltipDetails details(UIString(TIP_PAGE), UIString(TIP_FIRST_PAGE + static_cast<ResId>(entry)));
        details.addLine(UIString(TIP_KEYS), UIString(TIP_MOVE), String("Up, Down"));
        return details;
    }

    // The pointer came to rest on an entry, or left it: the tip shows after a
    // short delay, and goes at once.
    void hover(int entry, bool inside)
    {
        hide_tip();
        if (!inside)
            return;
        m_tip_timer = Qv::make<FunctionWrapper>([this, entry] { show_tip(entry); });
        EventTimeServer::instance().registerForTimeEvent(m_tip_timer.get(), TOOLTIP_DELAY);
    }

    void show_tip(int entry)
    {
        const TooltipDetails details = tip_for(entry);
        const XY<int> size = Tooltip::sizeFor(details);
        const int top = 16 + entry * 44 + 24;
        m_tip = tela_newcanvas(nullptr, tela_rootcanvas());
        tela_placecanvas(m_tip, TopDownRect{120, top, 120 + size.x, top + size.y});
        cast_shadow(m_tip, 6, 0.35f, SurroundParams::BOTTOM | SurroundParams::RIGHT);
        Tooltip::paint(m_tip, details, Palette::getDefault());
        tela_setcanvas(nullptr);
    }

    void hide_tip()
    {
        if (m_tip_timer)
            EventTimeServer::instance().deRegisterForTimeEvents(m_tip_timer.get());
        m_tip_timer = nullptr;
        if (m_tip)
            tela_deletecanvas(m_tip);
        m_tip = nullptr;
    }

    void build()
    {
        Canvas* root = tela_rootcanvas();
        Tela::UpdateDeferrer deferrer(nullptr, true);
        Canvas* sidebar = top_level(root, 0, 0, 160, HEIGHT, packed(22, 24, 28), {}, client([this](const Event& e) {
            if (!isKeyPressEvent(e) || (e.keyCode() != KEY_DOWN && e.keyCode() != KEY_UP))
                return false;
            select((m_selected + (e.keyCode() == KEY_DOWN ? 1 : SIDEBAR_ENTRIES - 1)) % SIDEBAR_ENTRIES);
            return true;
        }));
        for (int i = 0; i < SIDEBAR_ENTRIES; ++i) {
            m_entries.push_back(panel(sidebar, 12, 16 + i * 44, 136, 32, entry_colour(i),
                                      makeCurvedRegion({136, 32}, 15, eSmallCorners),
                                      client(
                                          [this, i](const Event& e) {
                                              if (mouse_down_event(e) && mouse_left_event(e))
                                                  select(i);
                                              return mouse_event(e);
                                          },
                                          [this, i](bool inside) { hover(i, inside); })));
            paint_entry(i);
        }
        event_set_kbd_focus(sidebar); // the arrow keys move the selection

        // Two pages share the content frame; the sidebar brings one to the top.
        Canvas* content = top_level(root, 176, 16, 448, 260, packed(250, 250, 252), makeCurvedRegion({448, 260}, 15, eLargeCorners));
        cast_shadow(content, 10, 0.45f);
        m_cards_page = panel(content, 176, 16, 448, 260, packed(250, 250, 252), makeCurvedRegion({448, 260}, 15, eLargeCorners));
        m_shapes_page = panel(content, 176, 16, Shapes::PAGE_WIDTH, Shapes::PAGE_HEIGHT, packed(0, 0, 0),
                              makeCurvedRegion({Shapes::PAGE_WIDTH, Shapes::PAGE_HEIGHT}, 15, eLargeCorners));
        Shapes::paint(m_shapes_page, Palette::getDefault());
        m_text_page = panel(content, 176, 16, TextPage::PAGE_WIDTH, TextPage::PAGE_HEIGHT, packed(0, 0, 0),
                            makeCurvedRegion({TextPage::PAGE_WIDTH, TextPage::PAGE_HEIGHT}, 15, eLargeCorners));
        TextPage::paint(m_text_page, Palette::getDefault(), m_wrap_width);
        // A click on a link of the HTML page turns to the page it names.
        m_html_page = panel(content, 176, 16, HTMLPage::PAGE_WIDTH, HTMLPage::PAGE_HEIGHT, packed(0, 0, 0),
                            makeCurvedRegion({HTMLPage::PAGE_WIDTH, HTMLPage::PAGE_HEIGHT}, 15, eLargeCorners),
                            client([this](const Event& e) {
                                if (mouse_down_event(e) && mouse_left_event(e) && m_html.follow(m_html.linkAt(e.pos())))
                                    m_html.paint(m_html_page, Palette::getDefault());
                                return mouse_event(e);
                            }));
        m_html.paint(m_html_page, Palette::getDefault());
        m_paths_page = panel(content, 176, 16, PathsPage::PAGE_WIDTH, PathsPage::PAGE_HEIGHT, packed(0, 0, 0),
                             makeCurvedRegion({PathsPage::PAGE_WIDTH, PathsPage::PAGE_HEIGHT}, 15, eLargeCorners));
        PathsPage::build(m_paths_page, 176, 16, Palette::getDefault(), fromUTF8(GALLERY_PICTURES "/flower.png"));
        m_video_page = panel(content, 176, 16, VideoPage::PAGE_WIDTH, VideoPage::PAGE_HEIGHT, packed(0, 0, 0),
                             makeCurvedRegion({VideoPage::PAGE_WIDTH, VideoPage::PAGE_HEIGHT}, 15, eLargeCorners));
        m_player = Qv::make<VideoPage::Player>();
        m_clients.push_back(m_player);
        m_player->build(m_video_page, 176, 16, Palette::getDefault());
        const int card_colours[] = {packed(230, 90, 70), packed(80, 180, 120), packed(90, 130, 210)};
        const int card_boxes[][4] = {{200, 40, 190, 110}, {410, 40, 190, 110}, {200, 166, 400, 90}};
        for (int i = 0; i < 3; ++i) {
            const int* box = card_boxes[i];
            m_cards.push_back(panel(m_cards_page, box[0], box[1], box[2], box[3], card_colours[i], {},
                                    client([this, i, colour = card_colours[i]](const Event& e) {
                                        if (mouse_down_event(e) && mouse_left_event(e)) {
                                            m_card_lit[i] = !m_card_lit[i];
                                            fill(m_cards[i], m_card_lit[i] ? packed(250, 200, 60) : colour);
                                        }
                                        return mouse_event(e);
                                    })));
        }
        Canvas* status = top_level(root, 176, 292, 448, 92, packed(60, 66, 78), makeCurvedRegion({448, 92}, 15, eLargeCorners));
        cast_shadow(status, 6, 0.35f);
        // What the page shown is, left of where the glass will lie.
        m_status_line = panel(status, 192, 304, StatusBar::LINE_WIDTH, StatusBar::LINE_HEIGHT, packed(60, 66, 78));
        // The marker runs along the status bar, one step a tick. Its lowest
        // rows pass below the glass: a frame leaves out a canvas that a
        // younger one covers wholly, translucent or not, and the marker is
        // there to be seen through the pane.
        Canvas* marker = panel(status, 196, 366, 40, 8, packed(120, 200, 255));
        marker->interest |= EventType::TIMER_CLASS;
        m_clients.push_back(Qv::make<Reacting>([this, marker](const Event& e) {
            if (e.type != EventType::TIMER_TICK)
                return false;
            m_marker_steps = (m_marker_steps + 1) % 48;
            tela_translatecanvas(marker, m_marker_steps == 0 ? -8 * 47 : 8, 0);
            StatusBar::paintGlass(m_glass, ++m_ticks, Palette::getDefault());
            return true;
        }));
        marker->client = static_cast<CanvasClient*>(m_clients.back().get());
        // A pane of frosted glass over the status bar, where the marker runs under it.
        // On it, the count of ticks.
        m_glass = top_level(root, 440, 300, StatusBar::GLASS_WIDTH, StatusBar::GLASS_HEIGHT, packed(255, 255, 255));
        m_glass->setOpacity(0.6);
        cast_shadow(m_glass, 8, 0.3f, SurroundParams::BOTTOM | SurroundParams::RIGHT);
        StatusBar::paintGlass(m_glass, m_ticks, Palette::getDefault());
        show_page();
        tela_setcanvas(nullptr);
    }

    // One page for each sidebar entry; the status line names it in the
    // words of the entry's tool tip.
    void show_page()
    {
        Canvas* const pages[SIDEBAR_ENTRIES] = {m_shapes_page, m_text_page, m_cards_page,
                                                m_html_page,   m_paths_page, m_video_page};
        Canvas* page = pages[m_selected];
        if (page)
            canvas_pop_to_top(page, false);
        StatusBar::paintLine(m_status_line, WString(SIDEBAR_LABELS[m_selected]),
                             resourceStrW(TIP_FIRST_PAGE + static_cast<ResId>(m_selected)), Palette::getDefault());
    }

    // A panel straight on the root, remembered so that end() can delete it.
    Canvas* top_level(Canvas* root, int left, int top, int width, int height, int colour, RegionPtr outline = {},
                      CanvasClient* client = nullptr)
    {
        m_panels.push_back(panel(root, left, top, width, height, colour, std::move(outline), client));
        return m_panels.back();
    }

    int entry_colour(int i) const { return i == m_selected ? packed(70, 120, 220) : packed(60, 66, 78); }

    void select(int entry)
    {
        const int previous = m_selected;
        m_selected = entry;
        fill(m_entries[static_cast<std::size_t>(previous)], entry_colour(previous));
        fill(m_entries[static_cast<std::size_t>(entry)], entry_colour(entry));
        paint_entry(previous);
        paint_entry(entry);
        show_page();
        tela_setcanvas(nullptr);
    }

    // An entry's label, centred on it in bold.
    void paint_entry(int i)
    {
        Canvas* entry = m_entries[static_cast<std::size_t>(i)];
        entry->beginRender();
        Tela::TextDescription label(WString(SIDEBAR_LABELS[i]), {entry->getWidth() / 2, 11},
                                    fromColour(Palette::getDefault().text(eTextNormal)), TextAlignment{2, 0},
                                    Tela::FontDesc(String(), 14, Tela::FontDesc::eBold));
        entry->getRenderer().render(label);
        entry->endRender();
    }

    // The text page's wrapping box takes a new width, and its text wraps again.
    void resize_wrapping_box(int width)
    {
        m_wrap_width = width;
        TextPage::paint(m_text_page, Palette::getDefault(), m_wrap_width);
    }

    void snapshot(const char* name)
    {
        const std::string path = m_screenshots + "/" + name;
        if (OS()->imaging()->saveImage(tela_getScreenRect(), fromUTF8(path.c_str()))) {
            std::printf("wrote %s\n", path.c_str());
        } else {
            std::fprintf(stderr, "could not write %s\n", path.c_str());
            ++m_failures;
        }
    }

    // The window's input, handed to its handler as the platform would.
    template <typename Report>
    static void input(const Report& report)
    {
        const TelaState& state = tela_state();
        if (!state.rootWindows.empty() && state.rootWindows.front().eventHandler)
            state.rootWindows.front().eventHandler->handleEvent(report);
    }

    // What a user might do in the first seconds: pick the cards, light one, go
    // up to the text with the keyboard and widen its wrapping box, follow the
    // HTML page's link, look at the shapes cut by paths, watch the video for
    // a few ticks, rest the pointer on an entry until its tip shows; then
    // close the window.
    void play_script()
    {
        const auto click = [](int x, int y) {
            MouseEvent press;
            press.pos = {x, y};
            press.action = MouseEvent::eLeftDown;
            input(press);
            press.action = MouseEvent::eLeftUp;
            input(press);
        };
        click(60, 16 + 2 * 44 + 10);
        click(300, 100);
        KeyEvent up;
        up.keyCode = KEY_UP;
        input(up);
        up.action = KeyEvent::eRelease;
        input(up);
        at(400, [this] {
            snapshot("gallery-2-text.png");
            resize_wrapping_box(TextPage::WIDE_BOX);
        });
        // The HTML page, and a click on its link, aimed at where it was drawn.
        at(700, [this, click] {
            snapshot("gallery-3-text-wide.png");
            select(3);
            const XY<int> link = m_html.linkCentre();
            click(176 + link.x, 16 + HTMLPage::PAGE_HEIGHT - link.y);
        });
        at(1000, [this] {
            snapshot("gallery-4-html-second-page.png");
            select(4);
        });
        // Each picture waits for the updates of the step before it. The
        // pointer comes to rest on the text entry, and its tip shows.
        at(1300, [this] {
            snapshot("gallery-5-paths.png");
            select(5);
        });
        at(1800, [this] {
            snapshot("gallery-6-video.png");
            MouseEvent rest;
            rest.pos = {60, 16 + 44 + 16};
            rest.action = MouseEvent::eMove;
            input(rest);
        });
        at(1800 + TOOLTIP_DELAY + 300, [this] {
            snapshot("gallery-7-after-session.png");
            WindowEvent close;
            close.kind = WindowEvent::eCloseRequest;
            input(close);
        });
    }

    // A step of the session, run once `delay` milliseconds after it begins.
    void at(unsigned delay, std::function<void()> step)
    {
        m_steps.push_back(Qv::make<FunctionWrapper>(std::move(step)));
        EventTimeServer::instance().registerForTimeEvent(m_steps.back().get(), delay);
    }

    std::string m_screenshots;
    std::vector<Qv::Ptr<CanvasClient>> m_clients;
    std::vector<Canvas*> m_panels; // on the root; each deletes what is on it
    std::vector<Canvas*> m_entries;
    std::vector<Canvas*> m_cards;
    Canvas* m_cards_page = nullptr;
    Canvas* m_shapes_page = nullptr;
    Canvas* m_text_page = nullptr;
    Canvas* m_html_page = nullptr;
    Canvas* m_paths_page = nullptr;
    Canvas* m_video_page = nullptr;
    Canvas* m_status_line = nullptr; // on the status bar
    Canvas* m_glass = nullptr;       // on the root, over the status bar
    Qv::Ptr<VideoPage::Player> m_player; // also among m_clients: it is the video canvas's client
    HTMLPage m_html;
    int m_wrap_width = TextPage::NARROW_BOX;
    bool m_card_lit[3] = {false, false, false};
    int m_selected = 0;
    int m_marker_steps = 0;
    unsigned m_ticks = 0; // wraps to 0 after 2^32 ticks, years on
    std::vector<Qv::Ptr<EventHandler>> m_steps; // the scripted session's
    Canvas* m_tip = nullptr;                     // the tool tip showing, on the root
    Qv::Ptr<EventHandler> m_tip_timer;           // until it shows
    int m_failures = 0;
    bool m_on_screen = std::strcmp(Tela::choosePlatform(), "headless") != 0;
};

} // namespace

int main(int argc, char** argv)
{
    Gallery gallery(argc > 1 ? argv[1] : ".");
    if (std::strcmp(Tela::choosePlatform(), "headless") != 0)
        std::printf("showing the gallery; close its window to end\n");
    gallery.run();
    gallery.end();
    return gallery.failures() == 0 ? 0 : 1;
}
