// Helpers shared by the event tests: a recording handler and a clean queue.
#pragma once

#include "tela/core/Clock.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/EventQueue.h"

#include <vector>

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
