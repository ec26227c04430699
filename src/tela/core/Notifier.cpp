#include "tela/core/Notifier.h"

NotifierBase::CallbackGuard::~CallbackGuard()
{
    CriticalSection::Guard guard(m_lifeline->lock);
    if (m_lifeline->owner)
        m_lifeline->owner->deregisterNotification(m_stamp);
}

NotifierBase::NotifierBase() : m_lifeline(Qv::make<Lifeline>())
{
    m_lifeline->owner = this;
}

NotifierBase::~NotifierBase()
{
    detachGuards();
}

void NotifierBase::detachGuards()
{
    CriticalSection::Guard guard(m_lifeline->lock);
    m_lifeline->owner = nullptr;
}

Qv::Ptr<Qv::Guard> NotifierBase::makeGuard(const IdStamp& stamp)
{
    return Qv::Ptr<Qv::Guard>(Qv::make<CallbackGuard>(m_lifeline, stamp));
}
