#include "EventSupport.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/vector/GraphicsState.h"

#include <gtest/gtest.h>

namespace {

struct CanvasScope {
    Canvas* canvas = tela_newcanvas(nullptr, nullptr);
    ~CanvasScope() { tela_deletecanvas(canvas); }
};

void send(Canvas* canvas, unsigned type)
{
    post(type, nullptr, canvas);
}

std::vector<unsigned> types(const std::vector<Event>& events)
{
    std::vector<unsigned> out;
    for (const Event& e : events)
        out.push_back(e.type);
    return out;
}

} // namespace

TEST(EventQueue, MovesCoalesceOnlyAgainstTheNewestEventOfTheSameType)
{
    QueueScope scope;
    CanvasScope c;
    for (int i = 0; i < 10; ++i) {
        Event e(0x104);
        e.canvas = c.canvas;
        e.time = static_cast<unsigned>(i);
        event_send(&e, false);
    }
    auto events = receive_all();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].time, 9u); // the last move stands

    send(c.canvas, 0x104);
    send(c.canvas, 512);
    send(c.canvas, 0x104);
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{0x104, 512, 0x104}));

    send(c.canvas, 0x104);
    send(c.canvas, 0x124); // a move with the left button held: another type word
    send(c.canvas, 0x103); // hovers merge too, but only with hovers
    send(c.canvas, 0x103);
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{0x104, 0x124, 0x103}));
}

TEST(EventQueue, FirstInFirstOutAndTargetsAreRequired)
{
    QueueScope scope;
    CanvasScope c;
    for (unsigned i = 1; i <= 5; ++i)
        send(c.canvas, 0x4000 | i);
    send(nullptr, 512); // no canvas and no handler: dropped
    send(c.canvas, 0);  // queued, then thrown away on receipt
    EXPECT_EQ(event_pending(nullptr, 0), 1);
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{0x4001, 0x4002, 0x4003, 0x4004, 0x4005}));
    EXPECT_EQ(event_pending(nullptr, 0), 0);
}

TEST(EventQueue, FlushingACanvasSparesAnUpOnlyAfterANewerDownOfItsButton)
{
    QueueScope scope;
    CanvasScope c;
    CanvasScope other;
    // Oldest first: [left down, left up] loses both.
    send(c.canvas, 0x122);
    send(c.canvas, 0x121);
    event_flush(c.canvas, 0x100, true);
    EXPECT_TRUE(receive_all().empty());

    // [left up, left down]: the down goes, the up stays so the button is released.
    send(c.canvas, 0x121);
    send(c.canvas, 0x122);
    send(c.canvas, 0x181); // a middle up is never spared
    send(c.canvas, 0x182);
    send(other.canvas, 0x122); // another canvas is left alone
    event_flush(c.canvas, 0x100, true);
    EXPECT_EQ(event_pending(c.canvas, 0x100), 1);
    EXPECT_EQ(event_pending(c.canvas, 0x182), 0);
    auto events = receive_all();
    EXPECT_EQ(types(events), (std::vector<unsigned>{0x121, 0x122}));
    EXPECT_EQ(events[1].canvas, other.canvas);

    send(c.canvas, 0x1001);
    send(c.canvas, 0x200);
    event_flush(nullptr, 0x1300, false); // no event has all three bits
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{0x1001, 0x200}));
}

TEST(EventQueue, FlushingAHandlerCancelsItsEventsAndForgetsItAsSender)
{
    QueueScope scope;
    RecordingHandler target, sender_handler;
    post(0x4001, &target);
    post(0x4001, &sender_handler, nullptr, &target);
    event_flush(&target, 0, false);
    auto events = receive_all();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].handler, &sender_handler);
    EXPECT_EQ(events[0].sender, nullptr);
}

// An event that owns its handler is left out of the per-handler counts; a
// flush for the live handler, and the death that follows when the queue
// itself drops the payload, must still find it.
TEST(EventQueue, AnEventThatOwnsItsHandlerIsFoundByFlushesAndByAReplacedPayload)
{
    QueueScope scope;
    const auto send_owning = [](Qv::Ptr<EventHandler> handler) {
        Event e(0x4001);
        e.message(String("id"));
        event_send_owning(&e, std::move(handler), false);
    };
    const auto replace_payload = [] {
        return event_replace_queued_data(0x4001, String("id"), nullptr, Qv::make<RecordingHandler>());
    };
    auto kept = Qv::make<RecordingHandler>();
    send_owning(kept);
    send_owning(Qv::make<RecordingHandler>()); // another owner, not flushed
    event_flush(kept.get(), 0, false);
    EXPECT_EQ(receive_all().size(), 1u);

    // The payload goes while queued: its death cancels the event. A handler
    // that outlives its payload still gets the event, and its flush finds it.
    send_owning(Qv::make<RecordingHandler>());
    EXPECT_TRUE(replace_payload());
    EXPECT_EQ(event_pending(nullptr, 0x4001), 0);
    send_owning(kept);
    replace_payload();
    auto events = receive_all();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].handler, kept.get());
    send_owning(kept);
    replace_payload();
    event_flush(kept.get(), 0, false);
    EXPECT_EQ(event_pending(nullptr, 0x4001), 0);
}

TEST(EventQueue, IdempotentMessagesKeepTheFirstOrMoveTheReplacementBack)
{
    QueueScope scope;
    RecordingHandler handler;
    auto send_message = [&](const char* name, int tag, bool replace) {
        Event e(0x4001);
        e.handler = &handler;
        e.message(String(name));
        e.time = static_cast<unsigned>(tag);
        event_send_idempotent(&e, replace);
    };
    send_message("refresh", 1, false);
    send_message("other", 2, false);
    send_message("refresh", 3, false);
    auto events = receive_all();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].time, 1u);

    send_message("refresh", 1, true);
    send_message("other", 2, true);
    send_message("refresh", 3, true);
    events = receive_all();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].msg(), String("other"));
    EXPECT_EQ(events[1].time, 3u);
}

TEST(EventQueue, MouseInputAcrossAStallIsDiscarded)
{
    QueueScope scope;
    CanvasScope c;
    EXPECT_EQ(event_receive(), nullptr); // the clock reading that later gaps are measured from
    send(c.canvas, 0x104);
    send(c.canvas, 512);
    Qv::setFakeClock(1'000'000 + 3000); // exactly three seconds: still fresh
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{0x104, 512}));
    send(c.canvas, 0x104);
    send(c.canvas, 512);
    Qv::setFakeClock(1'000'000 + 6001);
    EXPECT_EQ(types(receive_all()), (std::vector<unsigned>{512}));
}

TEST(EventQueue, PositionsAreProjectedIntoTheCanvasWhenReceived)
{
    QueueScope scope;
    CanvasScope c;
    Event e(0x104);
    e.canvas = c.canvas;
    e.screenPos({110, 220});
    e.screenDownPos({101, 201});
    event_send(&e, false);
    // The canvas moves after the send: the position follows it.
    c.canvas->inverseMatrix[0][2] = -100;
    c.canvas->inverseMatrix[1][2] = -200;
    auto events = receive_all();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].pos(), (XY<int>{10, 20}));
    EXPECT_EQ(events[0].downPos(), (XY<int>{1, 1}));
}
