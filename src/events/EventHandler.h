#pragma once
// EventHandler: the counted base of everything that receives an Event.
//
// Events travel through a queue while their receivers may die, so every live
// handler sits in a registry; EventHandler::valid asks whether a pointer still
// names the same object. Lock order: the queue lock, then the registry lock,
// never the other way round.

#include "core/CriticalSection.h"
#include "core/IdStamp.h"
#include "core/Memory.h"
#include "core/RefCount.h"
#include "events/FilterStackable.h"

struct Event;

class EventHandler : public FilterStackable<Event>, public virtual iObject {
public:
    enum eResult : int {
        eNotHandled = 0,
        eHandled = 1,
        eNoTarget = 2,
        eCloseApp = 3,
    };

    EventHandler();
    // The copy keeps the identity but is not registered, so it fails `valid`
    // until something registers it.
    EventHandler(const EventHandler& other);
    EventHandler& operator=(const EventHandler& other); // identity only
    ~EventHandler() override;

    // Treats `context` as an event-type mask: any common bit with the event's
    // type hands the event to intercept().
    int fsFilterThis(const Event& event, void* context) override;
    virtual eResult handleEvent(const Event& event) = 0;

    const IdStamp& getUniqueID() const { return m_uniqueID; }
    void setUniqueID(const IdStamp& stamp) { m_uniqueID = stamp; }

    // With a valid stamp: `handler` is live and still carries that stamp (safe
    // against a reused address). With the empty stamp: plain membership.
    static bool valid(EventHandler* handler, IdStamp stamp);
    static bool isHandled(eResult result) { return result == eHandled; }

    // The registry of live handlers, with its own lock.
    struct Registry {
        CriticalSection lock;
        Qv::Set<EventHandler*> members;
    };
    static Registry& instances();

protected:
    virtual eResult intercept(const Event& event) { return handleEvent(event); }

private:
    IdStamp m_uniqueID;
};
