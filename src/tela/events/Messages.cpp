#include "tela/events/Messages.h"

#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"

#include <utility>

namespace {

Event message_event(const String& name, EventHandler* target, iObject* sender)
{
    Event event(EventType::MESSAGE);
    event.handler = target;
    event.message(name);
    event.sender = sender;
    return event;
}

bool is_alive(EventHandler* target)
{
    return EventHandler::valid(target, IdStamp(0, 0, 0));
}

} // namespace

// The queued forms test the target twice: once here for the answer, and once
// more inside the queue lock (checkTarget), because the target may die on
// another thread in between and its destructor's flush must not be outrun.
// The idempotent send has no such check; a message it queues for a target
// that died meanwhile is refused at delivery, where the target is tested again.
bool sendMessage(const String& name, EventHandler* target, iObject* sender, bool allowDuplicates)
{
    if (name.empty() || !is_alive(target))
        return false;
    Event event = message_event(name, target, sender);
    if (allowDuplicates)
        event_send(&event, true);
    else
        event_send_idempotent(&event, true);
    return true;
}

bool sendMessageWithData(const String& name, EventHandler* target, Qv::Ptr<iObject> data, iObject* sender)
{
    if (!is_alive(target))
        return false;
    Event event = message_event(name, target, sender);
    event.data(data);
    event_send(&event, true);
    return true;
}

EventHandler::eResult callMessage(const String& name, EventHandler* target, iObject* sender)
{
    if (name.empty() || !is_alive(target))
        return EventHandler::eNoTarget;
    const Event event = message_event(name, target, sender);
    return target->handleEvent(event);
}

bool callMessageWithData(const String& name, EventHandler* target, Qv::Ptr<iObject> data, iObject* sender)
{
    if (!is_alive(target))
        return false;
    Event event = message_event(name, target, sender);
    event.data(data);
    target->handleEvent(event);
    return true;
}
