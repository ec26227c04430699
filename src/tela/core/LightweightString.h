// LightweightString<char> and LightweightString<wchar_t>: shared-body strings.
//
// Invariants
// - One Qv::Ptr to a body {refCount, length, capacity, units[capacity + 1]}, or null.
//   A null string and an empty one are both empty(); isNull() tells them apart.
// - Wide strings hold 16-bit units (UTF-16), whatever the size of wchar_t.
// - Bodies are shared by copies and never written while shared: a change to a shared
//   string first takes a private copy.
// - units are always zero-terminated.
#pragma once

#include "tela/core/Ptr.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

// Case-insensitive orderings, defined with the case mapping (StringCase.cpp).
bool lessIgnoringCase(std::u16string_view a, std::u16string_view b);
bool lessIgnoringCase(std::string_view a, std::string_view b);

template <typename CharT>
class LightweightString {
public:
    using unit_type = std::conditional_t<std::is_same_v<CharT, wchar_t>, char16_t, char>;
    using view_type = std::basic_string_view<unit_type>;

    LightweightString() = default;
    LightweightString(const unit_type* text);                      // null gives a null string
    LightweightString(const unit_type* text, std::size_t length);
    LightweightString(view_type text) : LightweightString(text.data(), text.size()) {}
    template <typename C = CharT, typename = std::enable_if_t<std::is_same_v<C, wchar_t>>>
    LightweightString(const wchar_t* text);                        // each wchar_t becomes UTF-16

    bool isNull() const { return !m_body; }
    bool empty() const { return size() == 0; }
    std::size_t size() const { return m_body ? m_body->length : 0; }
    std::size_t length() const { return size(); }
    const unit_type* data() const;                                  // never null: "" for a null string
    const unit_type* c_str() const { return data(); }
    view_type view() const { return view_type(data(), size()); }
    unit_type operator[](std::size_t index) const { return data()[index]; }

    LightweightString& append(const unit_type* text, std::size_t length);
    LightweightString& operator+=(const LightweightString& other) { return append(other.data(), other.size()); }
    LightweightString& operator+=(view_type text) { return append(text.data(), text.size()); }
    LightweightString& operator+=(unit_type unit) { return append(&unit, 1); }
    // Appends a number with six significant digits, as printf's %g gives it
    // but whatever the locale: "0.5", "1", "1e+300", "-nan" is "nan".
    LightweightString& operator<<(double value);
    // Doubles only: a char or an int would silently print as a number.
    template <typename T>
        requires(!std::is_floating_point_v<T>)
    LightweightString& operator<<(T) = delete;
    [[nodiscard]] LightweightString operator+(const LightweightString& other) const
    {
        LightweightString result(*this);
        return result += other;
    }
    [[nodiscard]] LightweightString substr(std::size_t start, std::size_t count = SIZE_MAX) const;

    bool operator==(const LightweightString& other) const { return view() == other.view(); }
    bool operator==(const unit_type* other) const { return view() == view_type(other ? other : empty_units()); }
    auto operator<=>(const LightweightString& other) const { return view() <=> other.view(); }

    // Orders strings with their case folded as Qv::toLower folds it: for sets
    // of names that differ in case only, such as font families.
    struct ICompare {
        bool operator()(const LightweightString& a, const LightweightString& b) const
        {
            return lessIgnoringCase(a.view(), b.view());
        }
    };

    // True when both strings share one body (a cheap test of a copy).
    bool sharesBodyWith(const LightweightString& other) const { return m_body && m_body == other.m_body; }

private:
    struct Body {
        std::int32_t refCount;
        std::uint32_t length;
        std::uint32_t capacity;
        unit_type units[1];
    };
    using BodyPtr = Qv::Ptr<Body, Qv::BlockDtorTraits, Qv::BlockRefCountTraits>;

    static const unit_type* empty_units();
    static BodyPtr make_body(std::size_t capacity);

    BodyPtr m_body;
};

using String = LightweightString<char>;
using WString = LightweightString<wchar_t>;

// UTF-8 in, UTF-16 out; malformed sequences become U+FFFD.
WString fromUTF8(const char* text);
WString fromUTF8(const String& text);
// UTF-16 in, UTF-8 out; unpaired surrogates become U+FFFD.
String toUTF8(const WString& text);

// "true" or "false": how a flag is written into messages and settings.
String BoolAsString(bool value);

extern template class LightweightString<char>;
extern template class LightweightString<wchar_t>;
