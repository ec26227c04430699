// Helpers shared by the event tests: a recording handler and a clean queue.
#pragma once

#include "tela/core/Clock.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/EventQueue.h"

#include <atomic>
#include <vector>

// Counts its own release, from any thread.
struct Payload : iObject {
    explicit Payload(std::atomic<int>& released) : m_released(released) {}
    ~Payload() override { m_released.fetch_add(1, std::memory_order_relaxed); }
    std::atomic<int>& m_released;
};

// Receives everything and remembers the types and names, in order.
struct RecordingHandler : EventHandler {
    eResult handleEvent(const Event& event) override
    {
        types.push_back(event.type);
        names.push_back(event.msg());
        return result;
    }
    std::vector<unsigned> types;
    std::vector<String> names;
    eResult result = eHandled;
};

// Queues an event of `type` for a handler or a canvas, naming a sender.
inline void post(unsigned type, EventHandler* handler, Canvas* canvas = nullptr, EventHandler* sender = nullptr,
                 bool checkTarget = false)
{
    Event e(type);
    e.handler = handler;
    e.canvas = canvas;
    e.sender = sender;
    event_send(&e, checkTarget);
}

// Takes every live event off the queue, in order.
inline std::vector<Event> receive_all()
{
    std::vector<Event> out;
    while (Event* event = event_receive()) {
        out.push_back(*event);
        out.back().data(nullptr); // the copy must not keep payloads alive
        event_free(event);
    }
    return out;
}

// Every test starts with an empty queue and a frozen clock, so the stale-mouse
// rule only fires when a test moves the clock on purpose.
struct QueueScope {
    QueueScope()
    {
        Qv::setFakeClock(1'000'000);
        event_queue_init();
        receive_all();
    }
    ~QueueScope()
    {
        receive_all();
        Qv::clearFakeClock();
    }
};
