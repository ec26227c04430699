#include "tela/events/EventHandler.h"

#include "tela/core/NeverDestroyed.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"

#include <cstdint>

EventHandler::EventHandler() : uniqueID(IdStamp::fresh())
{
    Registry& registry = instances();
    CriticalSection::Guard guard(registry.lock);
    registry.members.insert(this);
}

// The counted bases are copied too: InternalRefCount makes a copy start
// uncounted, so the copy is a new object with the old identity.
EventHandler::EventHandler(const EventHandler& other)
    : Qv::InternalRefCount(other), iVirtual(other), iObject(other), FilterStackable<Event>(other),
      uniqueID(other.getUniqueID())
{
}

EventHandler& EventHandler::operator=(const EventHandler& other)
{
    if (this != &other)
        setUniqueID(other.getUniqueID());
    return *this;
}

EventHandler::~EventHandler()
{
    // Cancel what is queued for us before leaving, so that no sender sees us
    // live with events that will never be delivered. The leaving happens
    // inside the queue lock, where checked sends look at the registry, so no
    // send from another thread can slip in between the flush and the leaving.
    event_flush_and_leave(this, [](EventHandler* self) {
        Registry& registry = instances();
        CriticalSection::Guard guard(registry.lock);
        registry.members.erase(self); // an unregistered copy is simply not found
    });
}

int EventHandler::fsFilterThis(const Event& event, void* context)
{
    // The context word is a type mask, never dereferenced. Any common bit is
    // enough: a filter for 0x200 also sees every type that carries 0x200.
    const auto mask = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(context));
    if ((mask & event.type) == 0)
        return 0;
    return intercept(event);
}

IdStamp EventHandler::getUniqueID() const
{
    CriticalSection::Guard guard(instances().lock);
    return uniqueID;
}

void EventHandler::setUniqueID(const IdStamp& stamp)
{
    CriticalSection::Guard guard(instances().lock);
    uniqueID = stamp;
}

bool EventHandler::valid(EventHandler* handler, IdStamp stamp)
{
    if (!handler)
        return false;
    Registry& registry = instances();
    CriticalSection::Guard guard(registry.lock);
    if (!registry.members.contains(handler))
        return false;
    // Registered means its destructor has not yet left the registry, so the
    // stamp is still there to read.
    return !stamp.valid() || handler->uniqueID == stamp;
}

EventHandler::Registry& EventHandler::instances()
{
    // Never destroyed: handlers owned by statics may still leave it at exit.
    static Qv::NeverDestroyed<Registry> registry;
    return *registry;
}
