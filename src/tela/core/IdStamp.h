// IdStamp: an identity that is never reused. IdStamp(0, 0, 0) is the empty stamp.
#pragma once

#include <cstdint>

class IdStamp {
public:
    IdStamp() = default;
    IdStamp(std::uint32_t process, std::uint32_t serial, std::uint32_t extra)
        : m_process(process), m_serial(serial), m_extra(extra) {}

    // A fresh stamp, distinct from every earlier one in this process.
    static IdStamp fresh();

    bool valid() const { return m_process != 0 || m_serial != 0 || m_extra != 0; }
    bool operator==(const IdStamp& other) const = default;
    bool operator<(const IdStamp& other) const
    {
        if (m_process != other.m_process) return m_process < other.m_process;
        if (m_serial != other.m_serial) return m_serial < other.m_serial;
        return m_extra < other.m_extra;
    }

    std::uint32_t serial() const { return m_serial; }

private:
    std::uint32_t m_process = 0;
    std::uint32_t m_serial = 0;
    std::uint32_t m_extra = 0;
};
