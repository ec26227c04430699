// GrowString: a narrow text that grows by appending, for building reports
// piece by piece. Storage comes from the memory seam; the text is always
// zero-terminated.
#pragma once

#include "tela/core/Memory.h"

#include <cstddef>
#include <string_view>

class GrowString {
public:
    GrowString() { m_units.push_back('\0'); }

    GrowString& append(std::string_view text)
    {
        m_units.insert(m_units.end() - 1, text.begin(), text.end());
        return *this;
    }
    GrowString& operator+=(std::string_view text) { return append(text); }

    const char* c_str() const { return m_units.data(); }
    std::string_view view() const { return std::string_view(m_units.data(), size()); }
    std::size_t size() const { return m_units.size() - 1; }
    bool empty() const { return size() == 0; }
    void clear()
    {
        m_units.clear();
        m_units.push_back('\0');
    }

private:
    Qv::Vector<char> m_units;   // the text and its terminating zero
};
