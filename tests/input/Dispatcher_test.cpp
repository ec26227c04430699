// One event per wake: exit keys, intercept filters, delivery, key bindings;
// and the window's own events: focus, size, close and dragged files.
#include "input/RootWindowFixture.h"

#include "headless/HeadlessServices.h"
#include "tela/app/Application.h"
#include "tela/core/Clock.h"
#include "tela/core/Commands.h"
#include "tela/core/KeybindingManager.h"
#include "tela/core/Shutdown.h"
#include "tela/core/SystemWatchdog.h"
#include "tela/events/FilterStack.h"

#include <thread>

namespace {

class RefusingExit final : public RootWindowEventHandler {
protected:
    bool canExit() const override { return false; }
};

using Dispatcher = RootWindowFixture<>;
using CannotExit = RootWindowFixture<RefusingExit>;

int s_command_runs = 0;
void count_run() { ++s_command_runs; }

class AnsweringFilter final : public FilterStackable<Event> {
public:
    explicit AnsweringFilter(int answer) : m_answer(answer) {}
    int fsFilterThis(const Event&, void*) override { return m_answer; }

private:
    int m_answer;
};

// Pushed for the life of the scope.
class PushedFilter {
public:
    explicit PushedFilter(int answer) : m_filter(answer)
    {
        getEventInterceptStack(eInterceptNormal).push(&m_filter, nullptr);
    }
    ~PushedFilter() { getEventInterceptStack(eInterceptNormal).remove(&m_filter); }

private:
    AnsweringFilter m_filter;
};

class DropRecorder final : public Tela::iExternalDragDropHandler {
public:
    void onFileDragAction0(const FileDragDropEvent& e, const XY<int>& pos) override { record(0, e, pos); }
    void onFileDragAction1(const FileDragDropEvent& e, const XY<int>& pos) override { record(1, e, pos); }
    void onFileDragAction2(const FileDragDropEvent& e, const XY<int>& pos) override { record(2, e, pos); }
    void onFileDragAction3() override { calls.push_back({3, 0, {}}); }

    struct Call {
        int action;
        std::size_t files;
        XY<int> pos;
    };
    std::vector<Call> calls;

private:
    void record(int action, const FileDragDropEvent& e, const XY<int>& pos)
    {
        calls.push_back({action, e.files.size(), pos});
    }
};

} // namespace

TEST_F(Dispatcher, EachWakeDeliversOneEventAndAnEmptyQueueDoesNothing)
{
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eNotHandled);
    Qv::Ptr<RecordingClient> a;
    child(10, 10, 60, 60, &a);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eLeftUp, 20, 20, 1010);
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eNotHandled);
    EXPECT_EQ(a->types, (std::vector<std::uint32_t>{0x122}));
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(a->types, (std::vector<std::uint32_t>{0x122, 0x121}));
}

TEST_F(Dispatcher, UnconsumedKeysRunTheirBoundCommandAndConsumedOnesDoNot)
{
    CommandRegistrar registrar("Dispatcher test command", Cmd::Function(count_run), UIString(), UIString(), 2,
                               MapItem('Q' | eKeyControl)); // control folds to upper case
    Qv::Ptr<RecordingClient> focus;
    event_set_kbd_focus(child(0, 0, 10, 10, &focus));
    s_command_runs = 0;
    key(KeyEvent::ePress, 'q', eKeyControl);
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(s_command_runs, 1);
    key(KeyEvent::eRelease, 'q', eKeyControl);
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(s_command_runs, 1); // releases run nothing

    focus->result = EventHandler::eHandled;
    key(KeyEvent::ePress, 'q', eKeyControl);
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(s_command_runs, 1);

    // A filter that takes the key keeps it from the canvas and the bindings.
    focus->result = EventHandler::eNotHandled;
    const std::size_t delivered = focus->types.size();
    {
        PushedFilter filter(1);
        key(KeyEvent::eRelease, 'q', eKeyControl);
        key(KeyEvent::ePress, 'q', eKeyControl);
        handler->handleEvent(UserEvent {});
        handler->handleEvent(UserEvent {});
    }
    EXPECT_EQ(s_command_runs, 1);
    EXPECT_EQ(focus->types.size(), delivered);

    // The user's binding wins over the command's own.
    KeybindingManager::instance().bind(MapItem('Q' | eKeyControl), String());
    key(KeyEvent::eRelease, 'q', eKeyControl);
    key(KeyEvent::ePress, 'q', eKeyControl);
    handler->handleEvent(UserEvent {});
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(s_command_runs, 1);
    KeybindingManager::instance().clearUserBindings();
    CommandMap::instance().unregisterCommand(String("Dispatcher test command"));
}

TEST_F(Dispatcher, ExitKeysAndAFilterAnsweringCloseEndTheLoop)
{
    Tela::sendShutdownRequestMessage();
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eHandled);
    key(KeyEvent::ePress, 'x', eKeyAlt); // the default key of "ExitApp"
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eHandled);
    {
        PushedFilter filter(3);
        key(KeyEvent::eRelease, 'x', eKeyAlt);
        EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eHandled);
    }
    Qv::Ptr<RecordingClient> a;
    child(10, 10, 60, 60, &a);
    a->result = EventHandler::eCloseApp;
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eHandled);
}

TEST_F(CannotExit, ARefusedExitSwallowsTheKey)
{
    Qv::Ptr<RecordingClient> focus;
    event_set_kbd_focus(child(0, 0, 10, 10, &focus));
    Tela::sendShutdownRequestMessage();
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eNotHandled);
    EXPECT_TRUE(focus->types.empty());
    EXPECT_TRUE(taken().empty());
}

TEST_F(Dispatcher, LosingFocusReleasesTheCaptureAndForgetsKeysAndButtons)
{
    Qv::Ptr<RecordingClient> a;
    Canvas* held = child(10, 10, 60, 60, &a);
    std::vector<String> focus_news;
    const auto guard = Tela::addListener(Qv::makeCallback<int, NotifyMsg>([&](const NotifyMsg& msg) {
        focus_news.push_back(msg.text());
        return 0;
    }), 12);
    key(KeyEvent::ePress, 'a');
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    taken();
    window->setFocus(false);
    WindowEvent lost;
    lost.kind = WindowEvent::eFocusLost;
    handler->handleEvent(lost);
    const std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].type, 0x131u); // an up-like event with the left button's bit
    EXPECT_EQ(events[0].canvas, held);
    EXPECT_EQ(mouse_canvas(), nullptr);
    EXPECT_EQ(getMouseClickState(), 0u);
    key(KeyEvent::ePress, 'b'); // a fresh first key, not a chord with 'a'
    EXPECT_EQ(taken().at(0).heldKey, 0u);
    EXPECT_EQ(focus_news, (std::vector<String>{String("false")}));
}

TEST_F(Dispatcher, SizeChangesNotifyAndRepaintUnlessTheWindowIsMinimised)
{
    int changes = 0;
    const auto guard = Tela::addListener(Qv::makeCallback<int, NotifyMsg>([&](const NotifyMsg&) {
        ++changes;
        return 0;
    }), 13);
    WindowEvent moved;
    moved.kind = WindowEvent::ePositionChanged;
    handler->handleEvent(moved);
    EXPECT_EQ(changes, 1);
    window->setSize({300, 120});
    WindowEvent resized;
    resized.kind = WindowEvent::eSizeChanged;
    handler->handleEvent(resized);
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(root->shape()->contains({299, 119})); // re-shaped to the window
    window->minimise();
    handler->handleEvent(moved);
    EXPECT_EQ(changes, 2);
}

TEST_F(Dispatcher, DragReportsFromAnotherThreadCollapseIntoOneDeliveryOfTheLatest)
{
    const auto drops = Qv::make<DropRecorder>();
    handler->setExternalDragDropHandler(drops);
    std::thread drag_thread([&] {
        for (int i = 0; i < 10; ++i) {
            FileDragDropEvent report;
            report.action = 1;
            report.pos = {i, 30};
            report.files.push_back(WString(u"/tmp/a.png"));
            handler->handleEvent(report);
        }
    });
    drag_thread.join();
    while (handler->handleEvent(UserEvent {}) == iEventHandler::eNotHandled && event_pending(nullptr, 0)) {
    }
    ASSERT_EQ(drops->calls.size(), 1u);
    EXPECT_EQ(drops->calls[0].action, 1);
    EXPECT_EQ(drops->calls[0].files, 1u);
    EXPECT_EQ(drops->calls[0].pos, (XY<int>{9, 70})); // the latest, in library coordinates
    EXPECT_EQ(tela_getMousePos(), (XY<int>{9, 70}));
}

TEST_F(Dispatcher, ScriptedReportsReachCanvasesThroughTheLoopEachAfterTheWakesBeforeIt)
{
    Qv::Ptr<RecordingClient> a;
    event_set_kbd_focus(child(10, 10, 60, 60, &a));
    MouseEvent press;
    press.action = MouseEvent::eLeftDown;
    press.pos = {20, 20};
    window->script(press);
    press.action = MouseEvent::eLeftUp;
    window->script(press);
    KeyEvent key;
    key.keyCode = 'k';
    window->script(key);
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(a->types, (std::vector<std::uint32_t>{0x122, 0x121, 0x200}));
}

TEST_F(Dispatcher, EveryDeliveredEventAndTickBeatsTheWatchdog)
{
    Qv::Ptr<RecordingClient> a;
    event_set_kbd_focus(child(0, 0, 10, 10, &a));
    Qv::setFakeClock(500000);
    key(KeyEvent::ePress, 'k');
    handler->handleEvent(UserEvent {});
    EXPECT_EQ(SystemWatchdog::lastHeartbeat(), 500000u);
    Qv::setFakeClock(500100);
    handler->handleEvent(UserEvent {}); // nothing queued: no beat
    EXPECT_EQ(SystemWatchdog::lastHeartbeat(), 500000u);
    handler->handleEvent(TimerEvent {});
    EXPECT_EQ(SystemWatchdog::lastHeartbeat(), 500100u);
    Qv::clearFakeClock();
}

// Once the program is exiting, the library's dispatcher takes the event and
// leaves it neither delivered nor freed; the start-up dispatcher frees it.
TEST_F(Dispatcher, OnceExitingEventsAreTakenWithoutDeliveryAndOnlyTheStartUpFormFreesThem)
{
    Qv::Ptr<RecordingClient> a;
    event_set_kbd_focus(child(0, 0, 10, 10, &a));
    // The pool hands out its most recently freed record first: the probe's
    // address is where the next queued event will be.
    Event* probe = new Event(0);
    volatile std::uintptr_t next_record = reinterpret_cast<std::uintptr_t>(probe);
    delete probe;
    key(KeyEvent::ePress, 'k');
    const std::size_t free_before = Event::poolFreeCount();
    Shutdown::beginShutdown();
    EXPECT_EQ(handler->handleEvent(UserEvent {}), iEventHandler::eNotHandled);
    EXPECT_EQ(event_pending(nullptr, 0), 0);
    EXPECT_EQ(Event::poolFreeCount(), free_before);
    event_free(reinterpret_cast<Event*>(next_record)); // the record the dispatcher kept, back to the pool

    const auto startup = Qv::make<Tela::StartupEventHandler>(nullptr);
    key(KeyEvent::ePress, 'k');
    EXPECT_EQ(startup->handleEvent(UserEvent {}), iEventHandler::eNotHandled);
    EXPECT_EQ(event_pending(nullptr, 0), 0);
    EXPECT_EQ(Event::poolFreeCount(), free_before + 1);
    Shutdown::resetForTesting();
    EXPECT_TRUE(a->types.empty());
}
