// The handler registry: live, dead and reused handlers, copies, and what a
// handler's death does to the queue.

#include "EventSupport.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasTree.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace {

const IdStamp EMPTY_STAMP(0, 0, 0);

} // namespace

TEST(EventHandlerTest, RegistryMatchesAModelOfLiveHandlersThroughBirthsDeathsAndRestamps)
{
    // Handlers are born and die at random; the allocator reuses addresses, so
    // old (pointer, stamp) pairs come back to life as pointers but must not as
    // pairs. The model: a map from live pointer to its current stamp.
    for (std::uint32_t seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<std::unique_ptr<RecordingHandler>> live;
        std::vector<std::pair<EventHandler*, IdStamp>> ever_seen;
        for (int step = 0; step < 300; ++step) {
            const unsigned action = random() % 4;
            if (action <= 1 || live.empty()) {
                live.push_back(std::make_unique<RecordingHandler>());
                ever_seen.emplace_back(live.back().get(), live.back()->getUniqueID());
            } else if (action == 2) {
                live.erase(live.begin() + static_cast<std::ptrdiff_t>(random() % live.size()));
            } else {
                RecordingHandler& handler = *live[random() % live.size()];
                handler.setUniqueID(IdStamp::fresh());
                ever_seen.emplace_back(&handler, handler.getUniqueID());
            }
        }
        std::map<EventHandler*, IdStamp> model;
        for (const auto& handler : live)
            model[handler.get()] = handler->getUniqueID();
        for (const auto& [pointer, stamp] : ever_seen) {
            const auto found = model.find(pointer);
            const bool registered = found != model.end();
            EXPECT_EQ(EventHandler::valid(pointer, EMPTY_STAMP), registered);
            EXPECT_EQ(EventHandler::valid(pointer, stamp), registered && found->second == stamp);
        }
        EXPECT_FALSE(EventHandler::valid(nullptr, EMPTY_STAMP));
    }
}

TEST(EventHandlerTest, CopiesKeepTheIdentityButNotTheRegistration)
{
    RecordingHandler original;
    const IdStamp stamp = original.getUniqueID();
    {
        RecordingHandler copy(original);
        EXPECT_EQ(copy.getUniqueID(), stamp);
        EXPECT_FALSE(EventHandler::valid(&copy, EMPTY_STAMP));
        EXPECT_FALSE(EventHandler::valid(&copy, stamp));
    }
    // The copy's death must not have taken the original out of the registry.
    EXPECT_TRUE(EventHandler::valid(&original, stamp));

    // Assignment moves the identity only: both stay registered, and the old
    // stamp of the assignee no longer names it.
    RecordingHandler other;
    const IdStamp other_stamp = other.getUniqueID();
    other = original;
    EXPECT_TRUE(EventHandler::valid(&other, stamp));
    EXPECT_FALSE(EventHandler::valid(&other, other_stamp));
    EXPECT_TRUE(EventHandler::valid(&original, stamp));
}

TEST(EventHandlerTest, DeathCancelsWhatIsQueuedForItAndNothingElse)
{
    QueueScope scope;
    auto doomed = std::make_unique<RecordingHandler>();
    RecordingHandler survivor;
    for (int i = 0; i < 3; ++i) {
        post(0x4001, doomed.get(), nullptr, nullptr, true);
        post(0x200, &survivor, nullptr, doomed.get()); // a sender that dies is forgotten, the event kept
    }
    EventHandler* const address = doomed.get();
    doomed.reset();
    EXPECT_FALSE(EventHandler::valid(address, EMPTY_STAMP));

    const auto events = receive_all();
    ASSERT_EQ(events.size(), 3u);
    for (const Event& event : events) {
        EXPECT_EQ(event.handler, &survivor);
        EXPECT_EQ(event.sender, nullptr);
    }
}

namespace {

struct RecordingClient : CanvasClient {
    eResult handleEvent(const Event&) override { return eHandled; }
};

} // namespace

// A dying handler skips its walk when nothing live names it; a canvas event
// names its canvas's client.
TEST(EventHandlerTest, DeathFindsEventsThatNameItThroughACanvas)
{
    QueueScope scope;
    // Whose client a canvas event reaches is decided when the handler dies,
    // not when the event was sent.
    auto first = std::make_unique<RecordingClient>();
    auto second = std::make_unique<RecordingClient>();
    Canvas* canvas = tela_newcanvas(first.get(), nullptr);
    post(0x200, nullptr, canvas);
    canvas->client = second.get();
    first.reset();
    EXPECT_EQ(event_pending(canvas, 0x200), 1);
    second.reset();
    EXPECT_EQ(event_pending(canvas, 0x200), 0);

    // A cancelled event no longer counts: the death that follows walks nothing.
    auto target = std::make_unique<RecordingHandler>();
    post(0x4001, target.get(), canvas);
    event_flush(canvas, 0, false);
    const std::uint64_t steps = event_queue_steps();
    target.reset();
    EXPECT_EQ(event_queue_steps(), steps);
    canvas->client = nullptr;
    tela_deletecanvas(canvas);
    EXPECT_TRUE(receive_all().empty());
}

namespace {

// Overrides intercept, to show that the filter entry goes through it rather
// than straight to handleEvent.
struct InterceptingHandler : RecordingHandler {
    eResult intercept(const Event& event) override
    {
        intercepted.push_back(event.type);
        return eCloseApp;
    }
    std::vector<unsigned> intercepted;
};

void* mask(std::uintptr_t bits)
{
    return reinterpret_cast<void*>(bits);
}

} // namespace

TEST(EventHandlerTest, FilterEntryAsksForAnyCommonBitThenGoesThroughIntercept)
{
    RecordingHandler plain;
    plain.result = EventHandler::eHandled;
    InterceptingHandler overriding;

    const Event key_press(0x200);
    const Event odd_mouse(0x200 | 0x100 | 2); // shares 0x200 with the mask
    const Event message(0x4001);

    EXPECT_EQ(plain.fsFilterThis(key_press, mask(0)), 0); // a zero mask matches nothing
    EXPECT_EQ(plain.fsFilterThis(odd_mouse, mask(0x200)), 1);
    EXPECT_EQ(plain.fsFilterThis(message, mask(0x200)), 0);
    EXPECT_EQ(plain.fsFilterThis(message, mask(0x4000 | 0x200)), 1); // not all bits needed
    EXPECT_EQ(plain.types, (std::vector<unsigned>{0x302, 0x4001}));

    EXPECT_EQ(overriding.fsFilterThis(key_press, mask(0xFFFF)), EventHandler::eCloseApp);
    EXPECT_EQ(overriding.intercepted, (std::vector<unsigned>{0x200}));
    EXPECT_TRUE(overriding.types.empty()); // the override did not call handleEvent
}
