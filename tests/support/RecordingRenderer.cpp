#include "support/RecordingRenderer.h"

#include "tela/core/Log.h"

#include <utility>

void RecordingRenderer::clear()
{
    m_calls.clear();
    std::apply([](auto&... stores) { (stores.clear(), ...); }, m_stores);
}

std::string RecordingRenderer::operations() const
{
    std::string names;
    for (const Call& call : m_calls) {
        if (!names.empty())
            names += ' ';
        names += call.operation;
    }
    return names;
}

void RecordingRenderer::setClip(Qv::Ptr<iRegion> clip)
{
    Call call;
    call.operation = "setClip";
    call.count = 1;
    call.clip = std::move(clip);
    m_calls.push_back(call);
}

void RecordingRenderer::setAntialiasing(bool enabled)
{
    Call call;
    call.operation = "setAntialiasing";
    call.count = 1;
    call.antialiasing = enabled;
    m_calls.push_back(call);
}

void RecordingRenderer::reportMismatch(std::size_t call, std::size_t index, const char* operation)
{
    murl_printf("RecordingRenderer: call %zu (%s) has no description %zu of the type asked for\n", call, operation,
                index);
}
