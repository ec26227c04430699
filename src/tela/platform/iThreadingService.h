// iThreadingService: events, threads, waiting and sleeping.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"

#include <cstdint>

class iThread : public iObject {
public:
    enum eExecRC : std::int32_t { eOK = 0, eFailed = 1 };
    virtual void join() = 0;   // waits for the procedure to return
};

// A waitable event: auto-reset wakes one waiter per set, manual-reset stays set.
class iWaitableEvent : public iObject {
public:
    virtual void set() = 0;
    virtual void reset() = 0;
};

class iThreadingService {
public:
    using ThreadProcedure = iThread::eExecRC (*)(void* argument);
    struct ThreadStartArgs {
        ThreadProcedure procedure = nullptr;
        void* argument = nullptr;
        WString name;
        std::uint32_t flags = 0;
    };
    enum eWaitResult : std::int32_t { eSignalled = 0, eTimedOut = 1, eFailed = 2 };
    static constexpr std::uint32_t INFINITE_WAIT = 0xFFFFFFFFu;

    virtual bool createEvent(Qv::Ptr<iWaitableEvent>& out, bool manualReset, bool initiallySignalled, const WString& name) = 0;
    virtual bool createThread(Qv::Ptr<iThread>& out, const ThreadStartArgs& startArgs) = 0;
    // index receives the position of the signalled event when waitAll is false.
    virtual eWaitResult waitForEvents(std::size_t& index, const Qv::Vector<Qv::Ptr<iWaitableEvent>>& events, bool waitAll, std::uint32_t timeoutMilliseconds) = 0;
    virtual std::uint64_t currentThreadId() = 0;
    virtual void sleepMs(std::uint32_t milliseconds) = 0;
protected:
    ~iThreadingService() = default;
};
