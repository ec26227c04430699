#pragma once
// UIThreadCallback: a notification callback that always runs on the main
// thread. Called on the main thread it runs at once (unless told always to
// defer); called on any other thread it sends itself a message carrying the
// notification, and runs when the dispatcher delivers it.
//
// - existenceCheck is asked first, on the notifying thread: 0 means the
//   receiver is gone and nothing happens.
// - deliveryCondition is asked last, just before the callback runs: 0 drops
//   the notification silently.
// - The queued message holds a counted reference, so the callback object
//   lives until delivery.

#include "tela/core/Callback.h"
#include "tela/core/IdStamp.h"
#include "tela/core/Threads.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/Messages.h"

template <typename T>
class UIThreadCallback : public iCallbackBase<int, T>, public EventHandler {
public:
    using Callback = Qv::Ptr<iCallbackBase<int, T>>;

    UIThreadCallback(const Callback& callback, bool alwaysDefer) : m_callback(callback), m_always_defer(alwaysDefer) {}
    UIThreadCallback(const Callback& callback, const Callback& existenceCheck, bool alwaysDefer)
        : m_callback(callback), m_existence_check(existenceCheck), m_always_defer(alwaysDefer)
    {
    }

    void setDeliveryCondition(const Callback& condition) { m_delivery_condition = condition; }

    int execute(const T& argument) override
    {
        if (m_existence_check && m_existence_check->execute(argument) == 0)
            return 0;
        if (canExecuteNow())
            return this->executeInternal(argument);
        // The message's name means nothing; the payload is what counts.
        sendMessageWithData(String("Hello"), this, Qv::make<DeferredCallback>(Qv::Ptr<UIThreadCallback>(this), argument),
                            nullptr);
        return 0;
    }

    int executeInternal(const T& argument) override
    {
        if (m_delivery_condition && m_delivery_condition->execute(argument) == 0)
            return 0;
        return m_callback ? m_callback->execute(argument) : 0;
    }

    eResult handleEvent(const Event& event) override
    {
        if (const auto deferred = Qv::dynamicCast<DeferredCallback>(event.data()))
            this->executeInternal(deferred->argument);
        return eHandled;
    }

protected:
    // For subclasses that override executeInternal.
    explicit UIThreadCallback(bool alwaysDefer) : m_always_defer(alwaysDefer) {}

private:
    struct DeferredCallback : iObject {
        DeferredCallback(Qv::Ptr<UIThreadCallback> owner, const T& value) : callback(std::move(owner)), argument(value) {}
        Qv::Ptr<UIThreadCallback> callback;
        T argument;
    };

    bool canExecuteNow() const { return !m_always_defer && co_pid() == 0; }

    Callback m_callback;
    Callback m_existence_check;
    Callback m_delivery_condition;
    bool m_always_defer;
};

// An existence check for a receiver that is an EventHandler: alive while the
// handler is registered under the identity it had when the check was made.
template <typename T>
class EventHandlerExistenceCheck : public iCallbackBase<int, T> {
public:
    explicit EventHandlerExistenceCheck(EventHandler* handler)
        : m_handler(handler), m_stamp(handler ? handler->getUniqueID() : IdStamp(0, 0, 0))
    {
    }
    int executeInternal(const T&) override { return EventHandler::valid(m_handler, m_stamp) ? 1 : 0; }

private:
    EventHandler* m_handler;
    IdStamp m_stamp;
};
