// ReportCapture: collects everything murl_printf prints while it lives.
#pragma once

#include "tela/core/Log.h"

#include <mutex>
#include <string>

class ReportCapture {
public:
    ReportCapture() { m_previous = Qv::setLogSink({ &ReportCapture::receive, this }); }
    ~ReportCapture() { Qv::setLogSink(m_previous); }
    ReportCapture(const ReportCapture&) = delete;
    ReportCapture& operator=(const ReportCapture&) = delete;

    std::string text() const
    {
        std::lock_guard lock(m_mutex);
        return m_text;
    }
    void clear()
    {
        std::lock_guard lock(m_mutex);
        m_text.clear();
    }
    // How many times message occurs in what was printed.
    int count(const std::string& message) const;

private:
    static void receive(const char* text, void* context)
    {
        auto* self = static_cast<ReportCapture*>(context);
        std::lock_guard lock(self->m_mutex);
        self->m_text += text;
    }

    mutable std::mutex m_mutex;
    std::string m_text;
    Qv::LogSinkRecord m_previous;
};

inline int ReportCapture::count(const std::string& message) const
{
    const std::string all = text();
    int found = 0;
    for (std::size_t at = all.find(message); at != std::string::npos; at = all.find(message, at + message.size()))
        ++found;
    return found;
}
