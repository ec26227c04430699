// Messages: the results of the four forms, what a queued message carries,
// duplicates, and sends racing handlers that die on other threads.

#include "EventSupport.h"

#include "tela/events/Messages.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

enum class Form { Send, SendWithoutDuplicates, SendWithData, Call, CallWithData };
enum class Target { Live, Dead, Null };

struct Row {
    Form form;
    const char* name; // null: a null string
    Target target;
    int result;       // bools as 0 and 1
    std::size_t queued;
    std::size_t called;
};

int send_in_form(Form form, const String& name, EventHandler* target)
{
    switch (form) {
    case Form::Send: return sendMessage(name, target, nullptr, true);
    case Form::SendWithoutDuplicates: return sendMessage(name, target, nullptr, false);
    case Form::SendWithData: return sendMessageWithData(name, target, {}, nullptr);
    case Form::Call: return callMessage(name, target, nullptr);
    case Form::CallWithData: return callMessageWithData(name, target, {}, nullptr);
    }
    return -1;
}

} // namespace

TEST(MessagesTest, ResultsFollowTheTableForEmptyNamesDeadTargetsAndDirectCalls)
{
    // The live handler answers eCloseApp, so the handler's own answer cannot
    // pass for a plain true.
    const Row rows[] = {
        {Form::Send, nullptr, Target::Live, 0, 0, 0},
        {Form::Send, "", Target::Live, 0, 0, 0},
        {Form::Send, "m", Target::Dead, 0, 0, 0},
        {Form::Send, "m", Target::Null, 0, 0, 0},
        {Form::Send, "m", Target::Live, 1, 1, 0},
        {Form::SendWithoutDuplicates, "", Target::Live, 0, 0, 0},
        {Form::SendWithoutDuplicates, "m", Target::Dead, 0, 0, 0},
        {Form::SendWithoutDuplicates, "m", Target::Live, 1, 1, 0},
        {Form::SendWithData, "", Target::Live, 1, 1, 0}, // the name is not checked
        {Form::SendWithData, "m", Target::Dead, 0, 0, 0},
        {Form::SendWithData, "m", Target::Null, 0, 0, 0},
        {Form::Call, "m", Target::Null, EventHandler::eNoTarget, 0, 0},
        {Form::Call, "m", Target::Dead, EventHandler::eNoTarget, 0, 0},
        {Form::Call, nullptr, Target::Live, EventHandler::eNoTarget, 0, 0},
        {Form::Call, "", Target::Live, EventHandler::eNoTarget, 0, 0},
        {Form::Call, "m", Target::Live, EventHandler::eCloseApp, 0, 1},
        {Form::CallWithData, "", Target::Live, 1, 0, 1}, // true, not the handler's answer
        {Form::CallWithData, "m", Target::Dead, 0, 0, 0},
        {Form::CallWithData, "m", Target::Null, 0, 0, 0},
    };
    QueueScope scope;
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "form " << static_cast<int>(row.form) << ", name "
                                        << (row.name ? row.name : "(null)") << ", target "
                                        << static_cast<int>(row.target));
        RecordingHandler live;
        live.result = EventHandler::eCloseApp;
        EventHandler* dead = new RecordingHandler; // made while `live` holds its own address
        delete dead;
        EventHandler* const target = row.target == Target::Live ? &live : row.target == Target::Dead ? dead : nullptr;

        EXPECT_EQ(send_in_form(row.form, String(row.name), target), row.result);
        EXPECT_EQ(live.types.size(), row.called);
        EXPECT_EQ(receive_all().size(), row.queued);
    }
}

TEST(MessagesTest, QueuedMessagesCarryTheirFieldsAndReplaceOnlyTheirOwnKind)
{
    QueueScope scope;
    std::atomic<int> released{0};
    RecordingHandler target, other_target, first_sender, second_sender;
    EXPECT_TRUE(sendMessage(String("refresh"), &target, &first_sender, false));
    EXPECT_TRUE(sendMessage(String("layout"), &target, nullptr, true));
    EXPECT_TRUE(sendMessage(String("refresh"), &other_target, nullptr, false)); // another target: its own
    EXPECT_TRUE(sendMessage(String("refresh"), &target, &second_sender, false)); // replaces, goes last
    EXPECT_TRUE(sendMessage(String("layout"), &target, nullptr, true));         // duplicates allowed
    EXPECT_TRUE(sendMessageWithData(String("layout"), &target, Qv::make<Payload>(released), nullptr));
    EXPECT_TRUE(sendMessageWithData(String("layout"), &target, {}, nullptr));    // never merged

    const auto events = receive_all(); // its copies drop their payloads
    const std::vector<std::pair<const char*, EventHandler*>> expected = {
        {"layout", &target}, {"refresh", &other_target}, {"refresh", &target},
        {"layout", &target}, {"layout", &target},        {"layout", &target},
    };
    ASSERT_EQ(events.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(events[i].type, 0x4001u);
        EXPECT_EQ(events[i].msg(), String(expected[i].first));
        EXPECT_EQ(events[i].handler, expected[i].second);
        EXPECT_EQ(events[i].canvas, nullptr);
    }
    EXPECT_EQ(events[2].sender, &second_sender); // the replacement's, not the first send's
    EXPECT_EQ(released.load(), 1);               // the queue let go of the payload
}

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int REPLACEMENTS_EACH_KILLER = 5'000; // the race detector makes each step far dearer
#else
constexpr int REPLACEMENTS_EACH_KILLER = 20'000;
#endif
constexpr int SLOTS = 4;
constexpr int KILLERS = 2;
constexpr int SENDERS = 3;

struct SilentHandler : EventHandler {
    eResult handleEvent(const Event&) override { return eHandled; }
};

} // namespace

TEST(MessagesTest, HandlersDyingWhileOtherThreadsSendLeaveNoCheckedMessageBehind)
{
    // Killers replace and delete the handlers in the slots; senders aim at
    // whatever a slot held a moment ago, dead or alive, with all three queued
    // forms; the main thread drains meanwhile, as the dispatcher would. The
    // checked forms must never leave a message for a dead handler. The form
    // without duplicates is unchecked inside the queue, so a message of its
    // may outlive its target; delivery tests the target again, and such a
    // message is only counted here.
    QueueScope scope;
    std::atomic<int> payloads_made{0};
    std::atomic<int> payloads_released{0};
    std::array<std::atomic<EventHandler*>, SLOTS> slots;
    for (auto& slot : slots)
        slot.store(new SilentHandler);

    std::atomic<int> killers_left{KILLERS};
    std::atomic<int> senders_left{SENDERS};
    std::atomic<long> drained{0};
    // Each sender makes a bounded number of sends: the no-duplicates form
    // searches the whole queue, so an unbounded queue makes the test
    // quadratic when the drain falls behind on a busy machine.
    constexpr int MOST_SENDS = 3000;
    constexpr int FINAL_SENDS = 20;
    std::vector<std::thread> threads;
    for (int k = 0; k < KILLERS; ++k) {
        threads.emplace_back([&, k] {
            std::mt19937 random(100 + static_cast<std::uint32_t>(k));
            for (int i = 0; i < REPLACEMENTS_EACH_KILLER; ++i)
                delete slots[random() % SLOTS].exchange(new SilentHandler);
            killers_left.fetch_sub(1);
        });
    }
    for (int s = 0; s < SENDERS; ++s) {
        threads.emplace_back([&, s] {
            std::mt19937 random(200 + static_cast<std::uint32_t>(s));
            auto send_one = [&] {
                EventHandler* const target = slots[random() % SLOTS].load();
                switch (random() % 3) {
                case 0: sendMessage(String("checked"), target, nullptr, true); break;
                case 1: sendMessage(String("unchecked"), target, nullptr, false); break;
                default:
                    payloads_made.fetch_add(1);
                    sendMessageWithData(String("checked"), target, Qv::make<Payload>(payloads_released), nullptr);
                }
            };
            for (int sends = 0; sends < MOST_SENDS && killers_left.load() > 0; ++sends)
                send_one();
            // A last few to the handlers that live on: those must arrive.
            while (killers_left.load() > 0)
                std::this_thread::yield();
            for (int sends = 0; sends < FINAL_SENDS; ++sends)
                send_one();
            senders_left.fetch_sub(1);
        });
    }
    while (senders_left.load() > 0) {
        if (Event* event = event_receive()) {
            ++drained;
            event_free(event);
        } else {
            std::this_thread::yield();
        }
    }
    for (auto& thread : threads)
        thread.join();

    std::set<EventHandler*> live;
    for (auto& slot : slots)
        live.insert(slot.load());
    int checked_for_the_dead = 0;
    int unchecked_for_the_dead = 0;
    while (Event* event = event_receive()) {
        ++drained;
        if (!live.contains(event->handler)) {
            EXPECT_FALSE(EventHandler::valid(event->handler, IdStamp(0, 0, 0)));
            ++(event->msg() == String("checked") ? checked_for_the_dead : unchecked_for_the_dead);
        }
        event_free(event);
    }
    EXPECT_EQ(checked_for_the_dead, 0);
    RecordProperty("unchecked_messages_for_dead_handlers", unchecked_for_the_dead);
    EXPECT_GT(drained.load(), 0);
    EXPECT_EQ(payloads_released.load(), payloads_made.load());
    for (auto& slot : slots)
        delete slot.exchange(nullptr);
}
