#pragma once
// Notifiers: listeners register a callback for a type id (or for all types)
// and hold a Qv::Guard; releasing the guard ends the registration.
//
// Invariants
// - Callbacks run with the notifier's lock held. A callback may add or remove
//   listeners: changes made during an issue are parked (state 1 or 2) and
//   applied when the outermost issue ends, so a listener added during an
//   issue first hears the next one.
// - A guard may outlive its notifier: the two share a counted lifeline, and a
//   guard released after the notifier died does nothing.

#include "tela/core/Callback.h"
#include "tela/core/CriticalSection.h"
#include "tela/core/Guard.h"
#include "tela/core/IdStamp.h"
#include "tela/core/Log.h"
#include "tela/core/NotifyMsg.h"
#include "tela/core/NotifyMsgTypeDictionary.h"
#include "tela/core/Ptr.h"

#include <cstdint>
#include <functional>

class NotifierBase {
public:
    // What a notifier and its guards share. `lock` is the notifier's lock.
    struct Lifeline : iObject {
        CriticalSection lock;
        NotifierBase* owner = nullptr; // null once the notifier is gone
    };

    // Ends one registration when released, if the notifier still exists.
    class CallbackGuard : public Qv::Guard {
    public:
        CallbackGuard(Qv::Ptr<Lifeline> lifeline, const IdStamp& stamp) : m_lifeline(std::move(lifeline)), m_stamp(stamp) {}
        ~CallbackGuard() override;

    private:
        Qv::Ptr<Lifeline> m_lifeline;
        IdStamp m_stamp;
    };

    NotifierBase();
    NotifierBase(const NotifierBase&) = delete;
    NotifierBase& operator=(const NotifierBase&) = delete;
    virtual ~NotifierBase();

    virtual void deregisterNotification(const IdStamp& stamp) = 0;
    void deregisterNotification(Qv::Ptr<Qv::Guard>& guard) { guard = nullptr; }

protected:
    Qv::Ptr<Qv::Guard> makeGuard(const IdStamp& stamp);
    void detachGuards();
    CriticalSection& lock() const { return m_lifeline->lock; }

private:
    Qv::Ptr<Lifeline> m_lifeline;
};

template <typename T>
class GenericNotifier : public NotifierBase {
public:
    using Callback = iCallbackBase<int, T>;

    GenericNotifier() { clients.previous = clients.next = &clients; }

    ~GenericNotifier() override
    {
        // Guards released from now on must not reach a half-destroyed notifier.
        detachGuards();
        CriticalSection::Guard guard(lock());
        while (clients.next != &clients)
            unlink(clients.next);
    }

    Qv::Ptr<Qv::Guard> addListener(const Qv::Ptr<Callback>& callback, int type)
    {
        return registerInternal(callback, type);
    }
    Qv::Ptr<Qv::Guard> addListener(std::function<int(const T&)> function, int type)
    {
        return registerInternal(Qv::Ptr<Callback>(Qv::make<Qv::FunctionCallback<int, T>>(std::move(function))), type);
    }

    void deregisterNotification(const IdStamp& stamp) override
    {
        CriticalSection::Guard guard(lock());
        for (Node* node = clients.next; node != &clients; node = node->next) {
            if (!(node->stamp() == stamp))
                continue;
            if (issueDepth != 0) {
                node->state = eRemoved;
                changesPending = 1;
            } else {
                unlink(node);
            }
            return;
        }
    }
    using NotifierBase::deregisterNotification;

    virtual void issueNotification(const T& event, int type)
    {
        const int all_types = NotifyMsgTypeDictionary::instance().allTypesId;
        CriticalSection::Guard guard(lock());
        ++issueDepth;
        for (Node* node = clients.next; node != &clients; node = node->next) {
            if (node->state == eLive && (node->type == all_types || node->type == type || type == all_types))
                node->callback->execute(event);
        }
        if (--issueDepth == 0 && changesPending) {
            for (Node* node = clients.next; node != &clients;) {
                Node* next = node->next;
                if (node->state == eRemoved)
                    unlink(node);
                else if (node->state == eAdded)
                    node->state = eLive;
                node = next;
            }
            changesPending = 0;
        }
    }

    void call(const T& event, int type) { issueNotification(event, type); }

    bool anyListeners(int type) const
    {
        const int all_types = NotifyMsgTypeDictionary::instance().allTypesId;
        CriticalSection::Guard guard(lock());
        if (clientCount == 0)
            return false;
        if (type == all_types)
            return true;
        for (const Node* node = clients.next; node != &clients; node = node->next)
            if (node->state == eLive && (node->type == all_types || node->type == type))
                return true;
        return false;
    }

    std::uint16_t numClients() const { return clientCount; }

private:
    enum State : std::int32_t { eLive = 0, eAdded = 1, eRemoved = 2 };

    struct Node : Qv::HeapObject, Qv::Identified {
        Node* previous = nullptr;
        Node* next = nullptr;
        Qv::Ptr<Callback> callback;
        std::int32_t type = 0;
        std::int32_t state = eLive;
    };

    Qv::Ptr<Qv::Guard> registerInternal(const Qv::Ptr<Callback>& callback, int type)
    {
        // Refused here rather than crashing later, in some unrelated issue.
        if (!callback) {
            murl_printf("GenericNotifier::addListener: no callback given\n");
            return {};
        }
        CriticalSection::Guard guard(lock());
        Node* node = new Node;
        node->callback = callback;
        node->type = type;
        if (issueDepth != 0) {
            node->state = eAdded;
            changesPending = 1;
        }
        node->previous = clients.previous;
        node->next = &clients;
        clients.previous->next = node;
        clients.previous = node;
        ++clientCount;
        return makeGuard(node->stamp());
    }

    void unlink(Node* node)
    {
        node->previous->next = node->next;
        node->next->previous = node->previous;
        --clientCount;
        delete node;
    }

    std::uint16_t issueDepth = 0;
    std::uint16_t changesPending = 0;
    Node clients; // the sentinel of the ring of listeners: no callback, its links close the ring
    std::uint16_t clientCount = 0;
};

// The notifier of NotifyMsg values, the kind the library state is.
class Notifier : public GenericNotifier<NotifyMsg> {
public:
    Qv::Ptr<Qv::Guard> registerNotification(const Qv::Ptr<iCallbackBase<int, NotifyMsg>>& callback, int type)
    {
        return addListener(callback, type);
    }
};
