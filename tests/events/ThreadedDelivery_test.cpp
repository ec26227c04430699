// Many threads send, the main loop receives: the queue, the pool, the wake-up
// and the payload release together, as an application uses them.

#include "EventSupport.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/state/TelaState.h"

#include "headless/HeadlessServices.h"
#include "support/LiveBlocks.h"

#include "support/WakeSink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int EVENTS_EACH_PRODUCER = 25'000; // the race detector makes each send far dearer
#else
constexpr int EVENTS_EACH_PRODUCER = 125'000;
#endif
constexpr int PRODUCERS = 8;
constexpr int MAX_IN_FLIGHT = 4096;

// Checks per-producer order: each event carries its producer and sequence.
struct Sink : CanvasClient {
    eResult handleEvent(const Event& event) override
    {
        const int producer = static_cast<int>(event.key);
        const auto sequence = static_cast<std::uint32_t>(event.time);
        if (producer < 0 || producer >= PRODUCERS || sequence != next[producer]) {
            ++out_of_order;
        } else {
            ++next[producer];
        }
        ++received;
        return eHandled;
    }
    std::uint32_t next[PRODUCERS] = {};
    int received = 0;
    int out_of_order = 0;
};

// The window's event sink: each wake takes one event off the queue and
// delivers it, as the dispatcher does.
class Dispatcher final : public WakeSink {
public:
    Dispatcher(std::atomic<int>& delivered, int total) : m_delivered(delivered), m_total(total) {}

    eRC handleEvent(const UserEvent&) override
    {
        if (Event* event = event_receive()) {
            if (EventHandler* target = event->getEventHandlerObj())
                target->handleEvent(*event);
            event_free(event);
            if (m_delivered.fetch_add(1, std::memory_order_release) + 1 == m_total)
                OS()->windowing()->shutdownMessageLoop();
        }
        return eNotHandled;
    }

private:
    std::atomic<int>& m_delivered;
    int m_total;
};

struct Outcome {
    int received = 0;
    int out_of_order = 0;
    int payloads_sent = 0;
    int payloads_released = 0;
};

Outcome run_producers(int events_each)
{
    const int total = PRODUCERS * events_each;
    std::atomic<int> released{0};
    std::atomic<int> delivered{0};
    std::atomic<int> sent{0};
    Outcome outcome;
    {
        Qv::Ptr<iRootWindow> window;
        OS()->windowing()->createRootWindow(window, 0);
        Canvas* root = tela_newcanvas(nullptr, nullptr);
        root->window = window;
        tela_state().rootWindows.push_back(RootWindowRec(root));
        window->setEventHandler(Qv::make<Dispatcher>(delivered, total));

        // Messages go to the sink as handler, key events through its canvas.
        Sink sink;
        Canvas* target = tela_newcanvas(&sink, root);

        std::vector<std::thread> producers;
        for (int p = 0; p < PRODUCERS; ++p) {
            producers.emplace_back([&, p] {
                for (int i = 0; i < events_each; ++i) {
                    // Keep the queue short: this measures delivery, not memory.
                    while (sent.load(std::memory_order_relaxed) - delivered.load(std::memory_order_acquire) >
                           MAX_IN_FLIGHT)
                        std::this_thread::sleep_for(std::chrono::microseconds(50));
                    Event e(i % 2 ? 0x4001 : 512);
                    e.key = static_cast<std::uint32_t>(p);
                    e.time = static_cast<std::uint32_t>(i);
                    if (i % 2) {
                        e.handler = &sink;
                        if (i % 4 == 1)
                            e.data(Qv::make<Payload>(released));
                    } else {
                        e.canvas = target;
                    }
                    sent.fetch_add(1, std::memory_order_relaxed);
                    event_send(&e, true);
                }
            });
        }
        OS()->windowing()->runMessageLoop();
        for (auto& producer : producers)
            producer.join();

        outcome.received = sink.received;
        outcome.out_of_order = sink.out_of_order;
        outcome.payloads_sent = PRODUCERS * ((events_each + 2) / 4);
        tela_state().rootWindows.clear();
        tela_deletecanvas(root);
    }
    outcome.payloads_released = released.load();
    return outcome;
}

} // namespace

TEST(ThreadedDelivery, EightProducersEveryEventOnceInOrderAndEveryPayloadReleased)
{
    QueueScope scope;
    run_producers(100); // first use builds what lives for the whole process
    const auto blocks_before = live_blocks();
    const auto records_before = Event::poolRecordCount();

    const Outcome outcome = run_producers(EVENTS_EACH_PRODUCER);
    EXPECT_EQ(outcome.received, PRODUCERS * EVENTS_EACH_PRODUCER);
    EXPECT_EQ(outcome.out_of_order, 0);
    EXPECT_EQ(outcome.payloads_released, outcome.payloads_sent);
    // Records the pool grew stay with it; every other block came back.
    EXPECT_EQ(live_blocks() - blocks_before,
              static_cast<std::int64_t>(Event::poolRecordCount() - records_before));
}
