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

    UIThreadCallback(const Callback& callback, bool alwaysDefer) : callback(callback), alwaysDefer(alwaysDefer) {}
    UIThreadCallback(const Callback& callback, const Callback& existenceCheck, bool alwaysDefer)
        : callback(callback), existenceCheck(existenceCheck), alwaysDefer(alwaysDefer)
    {
    }

    void setDeliveryCondition(const Callback& condition) { deliveryCondition = condition; }

    int execute(const T& argument) override
    {
        if (existenceCheck && existenceCheck->execute(argument) == 0)
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
        if (deliveryCondition && deliveryCondition->execute(argument) == 0)
            return 0;
        return callback ? callback->execute(argument) : 0;
    }

    eResult handleEvent(const Event& event) override
    {
        if (const auto deferred = Qv::dynamicCast<DeferredCallback>(event.data()))
            this->executeInternal(deferred->argument);
        return eHandled;
    }

protected:
    // For subclasses that override executeInternal.
    explicit UIThreadCallback(bool alwaysDefer) : alwaysDefer(alwaysDefer) {}

private:
    struct DeferredCallback : iObject {
        DeferredCallback(Qv::Ptr<UIThreadCallback> owner, const T& value) : callback(std::move(owner)), argument(value) {}
        Qv::Ptr<UIThreadCallback> callback;
        T argument;
    };

    bool canExecuteNow() const { return !alwaysDefer && co_pid() == 0; }

    Callback callback;
    Callback existenceCheck;
    Callback deliveryCondition;
    bool alwaysDefer;
};

// An existence check for a receiver that is an EventHandler: alive while the
// handler is registered under the identity it had when the check was made.
// The same callback under a type of its own, for the background start-up of
// Tela::Application, so that its notification is told apart from others.
template <typename T>
class UIThreadCallbackDupe : public UIThreadCallback<T> {
public:
    using typename UIThreadCallback<T>::Callback;
    UIThreadCallbackDupe(const Callback& callback, bool alwaysDefer) : UIThreadCallback<T>(callback, alwaysDefer) {}
};

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
