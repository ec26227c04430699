#pragma once
// EventTimeServer: fans the library's one periodic tick out to handlers that
// registered for time events, and to canvases interested in timer events.
//
// - Ticks closer together than the minimum interval (1000 / "eTimePerSec"
//   milliseconds, 54 by default) are ignored, whatever the platform timer does.
// - Handlers are called directly, in registration order, with one shared
//   timer event (type 0x1001), all inside one UpdateDeferrer, so a tick
//   repaints once. A client may deregister itself or another during the walk;
//   one registered during the walk is reached in the same walk.
// - Canvases get a queued timer event at most once at a time, and the next
//   no sooner than 20 ms after they finished handling the last one.
// - Main thread only. Nothing checks that a handler is alive: a client must
//   deregister before it dies.

#include "tela/core/Memory.h"

#include <cstdint>

class EventHandler;

// The tick's period in milliseconds, from the configuration, read once.
std::uint32_t tela_tick_interval();

class EventTimeServer {
public:
    static EventTimeServer& instance();

    // A periodic client; 0 means every tick. A handler already registered
    // stays as it was, interval included.
    void registerForTimeEvents(EventHandler* handler, unsigned interval);
    // A one-shot client, called once `delay` has passed; always a new record.
    void registerForTimeEvent(EventHandler* handler, unsigned delay);
    // Removes the first record of the handler.
    void deRegisterForTimeEvents(EventHandler* handler);
    void tick();

    std::size_t clientCount() const { return clients.size(); }

private:
    struct Client {
        EventHandler* handler;
        std::uint32_t interval;
        std::uint32_t lastCallTime;
        bool oneShot;
        bool removed;
    };

    void notifyClients(std::uint32_t now);
    // The time a new record counts its interval from.
    std::uint32_t registrationTime() const;

    Qv::List<Client> clients; // a list: records appended during a walk leave the walk intact
    std::uint32_t lastTickTime = 0;
    bool notifying = false;
    std::uint32_t m_walk_time = 0; // the `now` of the walk under way
};
