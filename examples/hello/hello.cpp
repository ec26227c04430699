// hello: a first program on Tela. A window with a panel and two buttons; a
// click lights a button, the space bar changes the panel's colour.
//
// With a display it opens a window (close it to end). Without one, or with
// TELA_BACKEND=headless, it clicks and types by itself and writes hello.png.
//
// Usage: hello [directory for the picture]   (default: the current directory)

#include <tela/Tela.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <utility>

namespace {

constexpr int WIDTH = 320, HEIGHT = 200;
constexpr int PANEL_COLOURS[] = {0x4A3A2A, 0x2A4A3A, 0x3A2A4A}; // packed: red in the low byte
constexpr int BUTTON_COLOUR = 0x9C7A5A, LIT_COLOUR = 0x3CC8FA;

void paint(Canvas* canvas, int colour)
{
    tela_setcanvas(canvas);
    tela_setcolour(colour);
    tela_wipecanvas();
    tela_setcanvas(nullptr);
}

// A canvas on `parent`, at a window rectangle, painted one colour.
Canvas* coloured_canvas(Canvas* parent, CanvasClient* client, int left, int top, int width, int height, int colour)
{
    Canvas* canvas = tela_newcanvas(client, parent);
    tela_placecanvas(canvas, TopDownRect{left, top, left + width, top + height});
    paint(canvas, colour);
    return canvas;
}

// A client that hands its events to a function.
class Reacting final : public CanvasClient {
public:
    explicit Reacting(std::function<bool(const Event&)> react) : m_react(std::move(react)) {}
    eResult handleEvent(const Event& event) override { return m_react(event) ? eHandled : eNotHandled; }

private:
    std::function<bool(const Event&)> m_react;
};

class Hello final : public Tela::Application {
public:
    explicit Hello(std::string pictures) : Application(WString(u"Tela hello"), WString(u"1.0")), m_pictures(std::move(pictures))
    {
        iRootWindow::InitArgs args;
        args.size = {WIDTH, HEIGHT};
        args.flags = iRootWindow::InitArgs::eTitleBar;
        args.name = WString(u"Hello, Tela");
        setWindowDescription(args);
    }

    // After run(): the program's canvases go first, then the library.
    void end()
    {
        tela_deletecanvas(m_panel); // and the buttons on it
        shutdown();
    }
    bool failed() const { return m_failed; }

protected:
    void initComplete() override
    {
        Application::initComplete();
        // Drawn and shown together when the deferrer ends.
        Tela::UpdateDeferrer deferrer(nullptr, true);
        m_panel = coloured_canvas(tela_rootcanvas(), &m_panel_client, 0, 0, WIDTH, HEIGHT, PANEL_COLOURS[0]);
        for (int i = 0; i < 2; ++i)
            m_buttons[i] = coloured_canvas(m_panel, &m_button_clients[i], 40 + i * 130, 70, 110, 60, BUTTON_COLOUR);
        event_set_kbd_focus(m_panel);
        if (std::strcmp(Tela::choosePlatform(), "headless") == 0)
            defer([this] { play_by_itself(); }); // once the window shows them
    }

private:
    bool on_button(int i, const Event& e)
    {
        if (mouse_down_event(e) && mouse_left_event(e)) {
            m_lit[i] = !m_lit[i];
            paint(m_buttons[i], m_lit[i] ? LIT_COLOUR : BUTTON_COLOUR);
        }
        return mouse_event(e);
    }

    bool on_panel(const Event& e)
    {
        if (!isKeyPressEvent(e) || e.keyCode() != ' ')
            return false;
        m_colour = (m_colour + 1) % 3;
        paint(m_panel, PANEL_COLOURS[m_colour]);
        return true;
    }

    // A click on the second button and a space, handed to the window's
    // handler as the platform would; then the picture, and the window closes.
    void play_by_itself()
    {
        const Qv::Ptr<iEventHandler> window = tela_state().rootWindows.front().eventHandler;
        MouseEvent click;
        click.pos = {230, 100};
        for (auto action : {MouseEvent::eLeftDown, MouseEvent::eLeftUp}) {
            click.action = action;
            window->handleEvent(click);
        }
        KeyEvent space;
        space.keyCode = ' ';
        window->handleEvent(space);
        // The events above are queued; the picture is taken once they are handled.
        defer([this, window] {
            const std::string path = m_pictures + "/hello.png";
            if (!OS()->imaging()->saveImage(tela_getScreenRect(), fromUTF8(path.c_str())))
                m_failed = true;
            WindowEvent close;
            close.kind = WindowEvent::eCloseRequest;
            window->handleEvent(close);
        });
    }

    std::string m_pictures;
    Reacting m_panel_client { [this](const Event& e) { return on_panel(e); } };
    Reacting m_button_clients[2] = {Reacting([this](const Event& e) { return on_button(0, e); }),
                                    Reacting([this](const Event& e) { return on_button(1, e); })};
    Canvas* m_panel = nullptr;
    Canvas* m_buttons[2] = {nullptr, nullptr};
    bool m_lit[2] = {false, false};
    int m_colour = 0;
    bool m_failed = false;
};

} // namespace

int main(int argc, char** argv)
{
    Hello hello(argc > 1 ? argv[1] : ".");
    hello.run();
    hello.end();
    return hello.failed() ? 1 : 0;
}
