#pragma once
// NotifyMsg: what a Notifier hands its listeners: a text, a type id and an
// optional counted payload.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"

class NotifyMsg {
public:
    NotifyMsg() = default;
    explicit NotifyMsg(const String& text, int type = 0, Qv::Ptr<iObject> payload = {})
        : m_text(text), m_type(type), m_payload(std::move(payload)) {}

    const String& text() const { return m_text; }
    int type() const { return m_type; }
    const Qv::Ptr<iObject>& payload() const { return m_payload; }

private:
    String m_text;
    int m_type = 0;
    Qv::Ptr<iObject> m_payload;
};
