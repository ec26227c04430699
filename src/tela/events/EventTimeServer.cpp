#include "tela/events/EventTimeServer.h"

#include "tela/canvas/Canvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Clock.h"
#include "tela/core/Config.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/EventQueue.h"
#include "tela/state/TelaState.h"

#include <algorithm>
#include <cmath>

namespace {

// A canvas waits this long after finishing with one timer event before the next.
constexpr std::uint32_t CANVAS_TIMER_GAP = 20;

std::uint32_t now_ms()
{
    return static_cast<std::uint32_t>(msecsNow());
}

void send_canvas_timer_events(Canvas* canvas, std::uint32_t now)
{
    if ((canvas->interest & EventType::TIMER_CLASS) && !event_pending(canvas, EventType::TIMER_CLASS) &&
        canvas->lastTimerEventTime + CANVAS_TIMER_GAP < now) {
        Event event;
        event.type = EventType::TIMER_TICK;
        event.canvas = canvas;
        event_send(&event, false);
    }
    for (Canvas* child = canvas->oldestChild; child; child = child->youngerSibling)
        send_canvas_timer_events(child, now);
}

} // namespace

std::uint32_t tela_tick_interval()
{
    static const std::uint32_t interval = [] {
        const double per_second = config_double("eTimePerSec", 18.2);
        const double milliseconds = per_second > 0 ? std::trunc(1000.0 / per_second) : 0.0;
        return static_cast<std::uint32_t>(std::clamp(milliseconds, 1.0, 60000.0));
    }();
    return interval;
}

EventTimeServer& EventTimeServer::instance()
{
    static EventTimeServer server;
    return server;
}

void EventTimeServer::registerForTimeEvents(EventHandler* handler, unsigned interval)
{
    if (std::any_of(clients.begin(), clients.end(), [&](const Client& c) { return c.handler == handler; }))
        return;
    clients.push_back(Client{handler, interval, interval ? registrationTime() : 0, false, false});
}

void EventTimeServer::registerForTimeEvent(EventHandler* handler, unsigned delay)
{
    clients.push_back(Client{handler, delay, registrationTime(), true, false});
}

std::uint32_t EventTimeServer::registrationTime() const
{
    // During a walk the clock has moved past the walk's `now`; a record
    // stamped with it would look due by almost 2^32 ms in this very walk,
    // which reaches it. Stamped with the walk's time instead, it waits its
    // interval from this tick like any other.
    return notifying ? m_walk_time : now_ms();
}

void EventTimeServer::deRegisterForTimeEvents(EventHandler* handler)
{
    const auto found =
        std::find_if(clients.begin(), clients.end(), [&](const Client& c) { return c.handler == handler; });
    if (found == clients.end())
        return;
    if (notifying)
        found->removed = true;
    else
        clients.erase(found);
}

void EventTimeServer::tick()
{
    const std::uint32_t now = now_ms();
    if (now - lastTickTime < tela_tick_interval())
        return;
    notifyClients(now);
    for (const RootWindowRec& row : tela_state().rootWindows)
        if (row.rootCanvas)
            send_canvas_timer_events(row.rootCanvas, now);
    lastTickTime = now;
}

void EventTimeServer::notifyClients(std::uint32_t now)
{
    notifying = true;
    m_walk_time = now;
    Event event;
    event.type = EventType::TIMER_TICK;
    event.time = now;
    {
        Tela::UpdateDeferrer deferrer(nullptr, Tela::isPresentationEnabled());
        for (auto record = clients.begin(); record != clients.end();) {
            // A record deregistered earlier in this walk is not called: its
            // handler may be gone already.
            const bool due = record->interval == 0 || now - record->lastCallTime > record->interval;
            const bool fire = due && !record->removed;
            if (fire) {
                record->handler->handleEvent(event);
                record->lastCallTime = now;
            }
            if (record->removed || (record->oneShot && fire))
                record = clients.erase(record);
            else
                ++record;
        }
    }
    notifying = false;
}
