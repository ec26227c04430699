// HeadlessThreading: threads and waitable events over the standard library.
#pragma once

#include "tela/platform/iThreadingService.h"

namespace Headless {

class Threading final : public iThreadingService {
public:
    bool createEvent(Qv::Ptr<iWaitableEvent>& out, bool manualReset, bool initiallySignalled, const WString& name) override;
    bool createThread(Qv::Ptr<iThread>& out, const ThreadStartArgs& startArgs) override;
    eWaitResult waitForEvents(std::size_t& index, const Qv::Vector<Qv::Ptr<iWaitableEvent>>& events, bool waitAll, std::uint32_t timeoutMilliseconds) override;
    std::uint64_t currentThreadId() override;
    void sleepMs(std::uint32_t milliseconds) override;
};

} // namespace Headless
