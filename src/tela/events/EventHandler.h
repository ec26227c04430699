#pragma once
// EventHandler: the counted base of everything that receives an Event.
// Start with handleEvent (what a receiver writes) and valid (what a sender asks).
//
// Events travel through a queue while their receivers may die, so every live
// handler sits in a registry; EventHandler::valid asks whether a pointer still
// names the same object. Lock order: the queue lock, then the registry lock,
// never the other way round.
//
// Invariants
// - A handler is in the registry from the end of its constructor to the start
//   of its destructor; a copy is never registered by copying.
// - uniqueID is written only under the registry lock, so valid() may read
//   it from any thread while the handler is registered.
// - When a handler has left the registry, nothing queued names it: checked
//   sends look at the registry inside the queue lock, and the destructor
//   flushes and leaves inside that same lock.

#include "tela/core/CriticalSection.h"
#include "tela/core/IdStamp.h"
#include "tela/core/ItemList.h"
#include "tela/core/Memory.h"
#include "tela/core/RefCount.h"
#include "tela/events/FilterStackable.h"

struct Event;

class EventHandler : public FilterStackable<Event>, public virtual iObject {
public:
    enum eResult : int {
        eNotHandled = 0, // nobody consumed it; keys go on to the key bindings
        eHandled = 1,    // the only value isHandled accepts
        eNoTarget = 2,   // callMessage found nothing to call
        eCloseApp = 3,   // the dispatcher closes the root window afterwards
    };

    // Lifetime: any thread may construct and destroy handlers.
    EventHandler();                                     // fresh stamp, registered
    // The copy keeps the identity but is not registered, so it fails `valid`
    // until something registers it.
    EventHandler(const EventHandler& other);
    EventHandler& operator=(const EventHandler& other); // identity only; registration stays
    ~EventHandler() override;                           // cancels what is queued for it, leaves

    // Virtual operations, in slot order.
    // Treats `context` as an event-type mask: any common bit with the event's
    // type hands the event to intercept(); otherwise 0, "not mine".
    int fsFilterThis(const Event& event, void* context) override;
    virtual eResult handleEvent(const Event& event) = 0;

    // Identity: a fresh stamp at construction, never reused by a later one.
    IdStamp getUniqueID() const;
    void setUniqueID(const IdStamp& stamp);

    // With a valid stamp: `handler` is registered and still carries that stamp
    // (safe against an address reused by a new object). With the empty stamp
    // IdStamp(0, 0, 0): plain membership. Null is never valid. The answer is
    // of the moment; only the main thread's discipline keeps it true.
    static bool valid(EventHandler* handler, IdStamp stamp);
    static bool isHandled(eResult result) { return result == eHandled; }

    // The registry of live handlers: an ordered set with its own lock, made on
    // first use and never destroyed, so handlers dying at exit can still leave.
    using Registry = ItemList<EventHandler*>;
    static Registry& instances();

protected:
    // What an intercept stack hands on after the mask test; by default the
    // event goes to handleEvent.
    virtual eResult intercept(const Event& event) { return handleEvent(event); }

private:
    IdStamp uniqueID;
};
