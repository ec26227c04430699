// Key and mouse reports turned into queue events: two-key chords, case
// folding, capture, click counting, button chords and drag distance.
#include "input/RootWindowFixture.h"

#include "core/TemporaryDirectory.h"
#include "tela/canvas/MouseContainmentManager.h"
#include "tela/core/Config.h"
#include "tela/core/WrappedData.h"

#include <functional>

namespace {

using Keys = RootWindowFixture<>;
using Mouse = RootWindowFixture<>;

// type, key, held key, repeat flag
struct KeyOut {
    std::uint32_t type, key, held, repeat;
    bool operator==(const KeyOut&) const = default;
};

std::vector<KeyOut> key_events(const std::vector<Event>& events)
{
    std::vector<KeyOut> out;
    for (const Event& e : events)
        out.push_back({e.type, e.key, e.heldKey, e.keyRepeat});
    return out;
}

constexpr std::uint32_t PRESS = KeyEvent::ePress, RELEASE = KeyEvent::eRelease;

int count_mouse_notifications(const std::function<void()>& action)
{
    int heard = 0;
    const auto guard = Tela::addMouseListener(Qv::makeCallback<int, NotifyMsg>([&heard](const NotifyMsg&) { ++heard; return 0; }));
    action();
    return heard;
}

} // namespace

TEST_F(Keys, ASecondKeyHeldWithTheFirstIsOneEventCarryingBoth)
{
    struct Step {
        std::uint32_t action, code;
        KeyOut expected;
    } const steps[] = {
        {PRESS, 'a', {0x200, 'a', 0, 0}},
        {PRESS, 'a', {0x200, 'a', 0, 0}},   // the first key repeating
        {PRESS, 'b', {0x200, 'b', 'a', 0}},
        {PRESS, 'b', {0x200, 'b', 'a', 0}}, // by default the second repeats unflagged
        {PRESS, 'c', {0x200, 'c', 'a', 0}},
        {RELEASE, 'c', {0x400, 'c', 'a', 0}}, // the first is still held
        {PRESS, 'b', {0x200, 'b', 'a', 0}},
        {PRESS, 'a', {0x200, 'a', 0, 0}},   // the first repeating forgets the second
        {RELEASE, 'a', {0x400, 'a', 0, 0}},
        {RELEASE, 'z', {0x400, 'z', 0, 0}}, // a release of a key never pressed
        {PRESS, 'q', {0x200, 'q', 0, 0}},   // so nothing is held any more
    };
    for (const Step& step : steps) {
        key(step.action, step.code);
        EXPECT_EQ(key_events(taken()), (std::vector<KeyOut>{step.expected}))
            << "after " << (step.action ? "press " : "release ") << char(step.code);
    }
}

TEST_F(Keys, WithComplexRepeatsOffTheSecondKeyRepeatingIsFlagged)
{
    TemporaryDirectory settings;
    TemporaryDirectory::write(settings.file("config.json"), R"({"complex_key_repeats": 0})");
    Qv::reloadConfigurationFrom(settings.path().string());
    key(PRESS, 'a');
    key(PRESS, 'b');
    key(PRESS, 'b');
    key(PRESS, 'c');
    EXPECT_EQ(key_events(taken()), (std::vector<KeyOut>{{0x200, 'a', 0, 0}, {0x200, 'b', 'a', 0},
                                                        {0x200, 'b', 'a', 1}, {0x200, 'c', 'a', 0}}));
    Qv::reloadConfigurationFrom("");
}

TEST_F(Keys, PrintableKeysFoldCaseByTheirModifiers)
{
    struct Case {
        std::uint32_t code, modifiers, composed;
    } const cases[] = {
        {'a', eKeyShift, 'A'},                                 // shift alone leaves no bit
        {'a', eKeyShift | eKeyControl, 'A' | eKeyShift | eKeyControl},
        {'a', eKeyMeta, 'A' | eKeyMeta},
        {'A', eKeyAlt, 'a' | eKeyAlt},
        {'a', eKeyControl | eKeyAlt, 'a' | eKeyControl | eKeyAlt}, // upper, then lower
        {'a' | eKeyNotCharacter, eKeyShift, 'a' | eKeyNotCharacter | eKeyShift},
        {0x0D, eKeyShift | eKeyControl, 0x0D | eKeyShift | eKeyControl}, // below 32: no folding
    };
    for (const Case& c : cases) {
        key(PRESS, c.code, c.modifiers);
        key(RELEASE, c.code, c.modifiers);
        const std::vector<KeyOut> events = key_events(taken());
        ASSERT_EQ(events.size(), 2u);
        EXPECT_EQ(events[0].key, c.composed) << std::hex << c.code << " with " << c.modifiers;
        EXPECT_EQ(events[1].key, c.composed);
    }
}

TEST_F(Keys, ReportsWithNoKeyTextOrUnknownActionsAndNoFocus)
{
    // No key: only listeners of the mouse state hear of it, and nothing is held.
    EXPECT_EQ(count_mouse_notifications([&] { key(PRESS, 0, eKeyShift); }), 1);
    key(7, 'x'); // unknown action
    EXPECT_TRUE(taken().empty());
    key(PRESS, 'a');
    EXPECT_EQ(key_events(taken()), (std::vector<KeyOut>{KeyOut{0x200, 'a', 0, 0}}));

    KeyEvent text;
    text.action = KeyEvent::eCompoundText;
    text.text = WString(u"é");
    handler->handleEvent(text);
    std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].type, 0x4001u);
    EXPECT_EQ(events[0].msg(), String("CompoundTextInput"));
    const auto payload = Qv::dynamicCast<WrappedData<KeyEvent>>(events[0].data());
    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->value.text, WString(u"é"));

    // Without a focus nothing is queued, but the key still counts as held.
    event_set_kbd_focus(nullptr);
    key(RELEASE, 'a');
    key(PRESS, 'b');
    EXPECT_TRUE(taken().empty());
    event_set_kbd_focus(root);
    key(PRESS, 'c');
    EXPECT_EQ(key_events(taken()), (std::vector<KeyOut>{KeyOut{0x200, 'c', 'b', 0}}));
}

TEST_F(Mouse, QuickPressesCountDoubleAndTripleClicksThenStartAgain)
{
    Qv::Ptr<RecordingClient> a;
    child(10, 10, 60, 60, &a);
    struct Press {
        std::uint32_t time;
        int x;
        std::uint32_t down, up;
    } const presses[] = {
        {1000, 20, 0x122, 0x121},
        {1399, 21, 0x8122, 0x8121}, // 399 ms later, 1 pixel away
        {1500, 21, 0x2122, 0x2121},
        {1600, 21, 0x122, 0x121},   // a fourth is plain
        {1700, 21, 0x8122, 0x8121}, // and a fifth a double again
        {2100, 21, 0x122, 0x121},   // 400 ms is too late
        {2200, 24, 0x122, 0x121},   // 3 pixels is too far
    };
    for (const Press& p : presses) {
        mouse(MouseEvent::eLeftDown, p.x, 20, p.time);
        mouse(MouseEvent::eLeftUp, p.x, 20, p.time + 10);
    }
    std::vector<std::uint32_t> expected;
    for (const Press& p : presses) {
        expected.push_back(p.down);
        expected.push_back(p.up);
    }
    EXPECT_EQ(getMouseClickState(), 0u);
    EXPECT_EQ(mouse_canvas(), nullptr);
    std::vector<std::uint32_t> types;
    for (const Event& e : taken())
        types.push_back(e.type);
    EXPECT_EQ(types, expected);
}

TEST_F(Mouse, ADoubleClickCarriesItsFlagWhileHeldAndAMovedUpIsPlain)
{
    child(10, 10, 60, 60);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eLeftUp, 20, 20, 1010);
    mouse(MouseEvent::eLeftDown, 20, 20, 1100);
    mouse(MouseEvent::eMove, 23, 20, 1110, MouseEvent::eHeldLeft);
    mouse(MouseEvent::eLeftUp, 23, 20, 1120);
    const std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[2].type, 0x8122u);
    EXPECT_EQ(events[3].type, 0x8124u);
    EXPECT_TRUE(mouse_double_click_event(events[3]));
    EXPECT_EQ(events[4].type, 0x121u);
}

TEST_F(Mouse, LeftThenRightIsAChordUntilBothAreUp)
{
    child(10, 10, 60, 60);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eRightDown, 20, 20, 1010, MouseEvent::eHeldLeft);
    EXPECT_EQ(getMouseClickState(), 0x60u);
    mouse(MouseEvent::eRightUp, 20, 20, 1020, MouseEvent::eHeldLeft);
    mouse(MouseEvent::eLeftUp, 20, 20, 1030);
    mouse(MouseEvent::eLeftDown, 20, 20, 5000);
    const std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 5u);
    const std::uint32_t types[] = {0x122, 0x105, 0x141, 0x121, 0x122};
    const bool chord[] = {false, false, true, true, false};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(events[i].type, types[i]) << i;
        EXPECT_EQ(eventWasChordEvent(events[i]), chord[i]) << i;
    }
}

TEST_F(Mouse, TheWheelGoesUnderThePointerButtonsToTheCaptureAndNeverToABareRoot)
{
    Canvas* a = child(10, 10, 60, 60);
    Canvas* b = child(100, 10, 150, 60);
    mouse(MouseEvent::eWheel, 20, 20, 0, 0, 120);
    mouse(MouseEvent::eWheel, 120, 20, 0, 0, -120);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eWheel, 120, 20, 0, MouseEvent::eHeldLeft, 240); // captured by a
    mouse(MouseEvent::eLeftUp, 120, 20, 1100);
    mouse(MouseEvent::eLeftDown, 190, 90, 2000); // bare root: no button events
    mouse(MouseEvent::eLeftUp, 190, 90, 2010);
    mouse(MouseEvent::eWheel, 190, 90, 0, 0, 360);
    const std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 6u);
    const Canvas* targets[] = {a, b, a, a, a, root};
    const std::int32_t deltas[] = {120, -120, 0, 240, 0, 360};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(events[i].canvas, targets[i]) << i;
        EXPECT_EQ(events[i].wheelDelta, deltas[i]) << i;
    }
    EXPECT_EQ(events[4].type, 0x121u);
    EXPECT_EQ(getMouseClickState(), 0u);
}

TEST_F(Mouse, DragsAddUpEveryStepAndAMoveInPlaceOnlyPublishes)
{
    child(10, 10, 60, 60);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eMove, 30, 20, 1010, MouseEvent::eHeldLeft);
    mouse(MouseEvent::eMove, 20, 25, 1020, MouseEvent::eHeldLeft);
    EXPECT_EQ(count_mouse_notifications([&] { mouse(MouseEvent::eMove, 20, 25, 1030, MouseEvent::eHeldLeft); }), 1);
    mouse(MouseEvent::eMove, 40, 40, 1040); // no button held: no event
    // The queue keeps only the newest of moves in a row.
    const std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[1].type, 0x124u);
    EXPECT_EQ(events[1].distance(), (XY<int>{20, 5}));
    EXPECT_EQ(events[1].screenDownPos(), (XY<int>{20, 80})); // library coordinates: y up
    EXPECT_EQ(tela_getMousePos(), (XY<int>{40, 60}));
}

TEST_F(Mouse, AResetForgetsEveryPieceOfMouseState)
{
    Canvas* const a = child(10, 10, 60, 60);
    TelaState& state = tela_state();
    Tela::MouseContainmentManager& containment = Tela::MouseContainmentManager::instance();
    // A left press, the right added (a chord), and a drag: every piece is set.
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eRightDown, 20, 20, 1010, MouseEvent::eHeldLeft);
    mouse(MouseEvent::eMove, 30, 25, 1020, MouseEvent::eHeldLeft | MouseEvent::eHeldRight);
    taken();
    ASSERT_TRUE(state.chordActive && state.captureCanvas == a && state.lastClickCanvas == a);

    tela_resetMouse();

    EXPECT_EQ(state.captureCanvas, nullptr);
    EXPECT_EQ(state.currentMouseCanvas, nullptr);
    EXPECT_FALSE(state.chordActive);
    EXPECT_EQ(state.clickState, 0u);
    EXPECT_EQ(state.lastClickCanvas, nullptr);
    EXPECT_EQ(state.lastClickTime, 0u);
    EXPECT_EQ(state.clickCount, 0u);
    EXPECT_EQ(containment.getCurrentCanvas(), nullptr);
    // The pointer has not moved: its last position is a fact, not a belief.
    EXPECT_EQ(tela_getMousePos(), (XY<int>{30, 75}));

    // The handler's press and drag, as an event sent to a capture shows them.
    state.captureCanvas = a;
    handler->sendMouseEvent(0x104, 1030, 0);
    state.captureCanvas = nullptr;
    std::vector<Event> events = taken();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].screenDownPos(), (XY<int>{0, 0}));
    EXPECT_EQ(events[0].distance(), (XY<int>{0, 0}));

    // A press soon after, where the last one was, starts counting afresh.
    mouse(MouseEvent::eLeftDown, 20, 20, 1040);
    events = taken();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].type, 0x122u);
}

TEST_F(Mouse, ACanvasGoingAwayIsNoLongerTheLastOnePressed)
{
    Canvas* const a = child(10, 10, 60, 60);
    mouse(MouseEvent::eLeftDown, 20, 20, 1000);
    mouse(MouseEvent::eLeftUp, 20, 20, 1010);
    ASSERT_EQ(tela_state().lastClickCanvas, a);
    tela_deletecanvas(a);
    EXPECT_EQ(tela_state().lastClickCanvas, nullptr);
}
