#include "events/EventHandler.h"

#include "events/Event.h"
#include "events/EventQueue.h"

#include <cstdint>

EventHandler::EventHandler() : m_uniqueID(IdStamp::fresh())
{
    Registry& registry = instances();
    CriticalSection::Guard guard(registry.lock);
    registry.members.insert(this);
}

EventHandler::EventHandler(const EventHandler& other)
    : Qv::InternalRefCount(other), iVirtual(other), iObject(other), FilterStackable<Event>(other), m_uniqueID(other.m_uniqueID)
{
}

EventHandler& EventHandler::operator=(const EventHandler& other)
{
    m_uniqueID = other.m_uniqueID;
    return *this;
}

EventHandler::~EventHandler()
{
    // Cancel what is queued for us before leaving the registry, so that no
    // sender can see us live with events that will never be delivered.
    event_flush(this, 0, false);
    Registry& registry = instances();
    CriticalSection::Guard guard(registry.lock);
    registry.members.erase(this);
}

int EventHandler::fsFilterThis(const Event& event, void* context)
{
    const auto mask = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(context));
    if ((mask & event.type) == 0)
        return 0;
    return intercept(event);
}

bool EventHandler::valid(EventHandler* handler, IdStamp stamp)
{
    Registry& registry = instances();
    CriticalSection::Guard guard(registry.lock);
    if (registry.members.find(handler) == registry.members.end())
        return false;
    return !stamp.valid() || handler->m_uniqueID == stamp;
}

EventHandler::Registry& EventHandler::instances()
{
    // Never destroyed: handlers owned by statics may still leave it at exit.
    alignas(Registry) static unsigned char storage[sizeof(Registry)];
    static Registry* registry = ::new (storage) Registry();
    return *registry;
}
