#include "tela/core/LightweightString.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>

namespace {

// ASCII text onto either kind of string, a unit a character.
template <typename CharT>
LightweightString<CharT>& append_ascii(LightweightString<CharT>& target, std::string_view text)
{
    for (const char c : text)
        target += static_cast<typename LightweightString<CharT>::unit_type>(c);
    return target;
}

} // namespace

template <typename CharT>
const typename LightweightString<CharT>::unit_type* LightweightString<CharT>::empty_units()
{
    static const unit_type nothing[1] = { 0 };
    return nothing;
}

template <typename CharT>
typename LightweightString<CharT>::BodyPtr LightweightString<CharT>::make_body(std::size_t capacity)
{
    const std::size_t bytes = offsetof(Body, units) + (capacity + 1) * sizeof(unit_type);
    void* block = Qv::allocate(bytes);
    if (!block)
        return BodyPtr();
    Body* body = new (block) Body;
    body->refCount = 0;
    body->length = 0;
    body->capacity = static_cast<std::uint32_t>(capacity);
    body->units[0] = 0;
    return BodyPtr(body);
}

template <typename CharT>
LightweightString<CharT>::LightweightString(const unit_type* text)
{
    if (!text)
        return;
    append(text, std::char_traits<unit_type>::length(text));
    if (!m_body)
        m_body = make_body(0);   // "" is an empty string, not a null one
}

template <typename CharT>
LightweightString<CharT>::LightweightString(const unit_type* text, std::size_t length)
{
    if (!text)
        return;
    m_body = make_body(length);
    append(text, length);
}

template <typename CharT>
template <typename C, typename>
LightweightString<CharT>::LightweightString(const wchar_t* text)
{
    if (!text)
        return;
    m_body = make_body(std::wcslen(text));
    for (; *text; ++text) {
        const std::uint32_t code = static_cast<std::uint32_t>(*text);
        if (code >= 0x10000 && code <= 0x10FFFF) {
            const std::uint32_t offset = code - 0x10000;
            *this += static_cast<char16_t>(0xD800 + (offset >> 10));
            *this += static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
        } else {
            *this += static_cast<char16_t>(code > 0x10FFFF ? 0xFFFD : code);
        }
    }
}

template <typename CharT>
const typename LightweightString<CharT>::unit_type* LightweightString<CharT>::data() const
{
    return m_body ? m_body->units : empty_units();
}

template <typename CharT>
LightweightString<CharT>& LightweightString<CharT>::append(const unit_type* text, std::size_t length)
{
    const std::size_t old_length = size();
    const std::size_t new_length = old_length + length;
    const bool shared = m_body && m_body->refCount > 1;
    BodyPtr previous;   // keeps the old units alive while text may still point into them
    if (!m_body || shared || m_body->capacity < new_length) {
        // Grow by half, as the other growable arrays of the library do.
        const std::size_t capacity = std::max(new_length, old_length + old_length / 2);
        BodyPtr fresh = make_body(capacity);
        if (!fresh)
            return *this;
        std::memcpy(fresh->units, data(), old_length * sizeof(unit_type));
        fresh->length = static_cast<std::uint32_t>(old_length);
        previous = std::move(m_body);
        m_body = std::move(fresh);
    }
    std::memmove(m_body->units + old_length, text, length * sizeof(unit_type));
    m_body->length = static_cast<std::uint32_t>(new_length);
    m_body->units[new_length] = 0;
    return *this;
}

template <typename CharT>
LightweightString<CharT> LightweightString<CharT>::substr(std::size_t start, std::size_t count) const
{
    const std::size_t length = size();
    if (start >= length)
        return LightweightString(empty_units(), 0);
    return LightweightString(data() + start, std::min(count, length - start));
}

template <typename CharT>
LightweightString<CharT>& LightweightString<CharT>::operator<<(double value)
{
    char digits[32];
    if (std::isnan(value))
        return append_ascii(*this, "nan");
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    return append_ascii(*this, std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

template class LightweightString<char>;
template class LightweightString<wchar_t>;
template LightweightString<wchar_t>::LightweightString(const wchar_t*);

WString fromUTF8(const char* text)
{
    if (!text)
        return WString();
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    const std::size_t length = std::strlen(text);
    WString result(u"", 0);
    std::size_t index = 0;
    while (index < length) {
        const unsigned char lead = bytes[index];
        std::uint32_t code = 0xFFFD;
        int extra = 0;
        std::uint32_t minimum = 0;
        if (lead < 0x80) { code = lead; }
        else if ((lead & 0xE0) == 0xC0) { code = lead & 0x1F; extra = 1; minimum = 0x80; }
        else if ((lead & 0xF0) == 0xE0) { code = lead & 0x0F; extra = 2; minimum = 0x800; }
        else if ((lead & 0xF8) == 0xF0) { code = lead & 0x07; extra = 3; minimum = 0x10000; }
        else { extra = -1; }
        ++index;
        if (extra < 0) {
            code = 0xFFFD;
        } else if (extra > 0) {
            int taken = 0;
            while (taken < extra && index < length && (bytes[index] & 0xC0) == 0x80) {
                code = (code << 6) | (bytes[index] & 0x3F);
                ++index;
                ++taken;
            }
            if (taken < extra || code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
                code = 0xFFFD;
        }
        if (code >= 0x10000) {
            const std::uint32_t offset = code - 0x10000;
            result += static_cast<char16_t>(0xD800 + (offset >> 10));
            result += static_cast<char16_t>(0xDC00 + (offset & 0x3FF));
        } else {
            result += static_cast<char16_t>(code);
        }
    }
    return result;
}

String BoolAsString(bool value)
{
    return String(value ? "true" : "false");
}

WString fromUTF8(const String& text)
{
    return text.isNull() ? WString() : fromUTF8(text.c_str());
}

String toUTF8(const WString& text)
{
    if (text.isNull())
        return String();
    String result("", 0);
    const std::size_t length = text.size();
    for (std::size_t index = 0; index < length; ++index) {
        std::uint32_t code = text[index];
        if (code >= 0xD800 && code <= 0xDBFF && index + 1 < length && text[index + 1] >= 0xDC00 && text[index + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (text[index + 1] - 0xDC00);
            ++index;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = 0xFFFD;
        }
        char encoded[4];
        std::size_t count = 0;
        if (code < 0x80) {
            encoded[count++] = static_cast<char>(code);
        } else if (code < 0x800) {
            encoded[count++] = static_cast<char>(0xC0 | (code >> 6));
            encoded[count++] = static_cast<char>(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            encoded[count++] = static_cast<char>(0xE0 | (code >> 12));
            encoded[count++] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            encoded[count++] = static_cast<char>(0x80 | (code & 0x3F));
        } else {
            encoded[count++] = static_cast<char>(0xF0 | (code >> 18));
            encoded[count++] = static_cast<char>(0x80 | ((code >> 12) & 0x3F));
            encoded[count++] = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
            encoded[count++] = static_cast<char>(0x80 | (code & 0x3F));
        }
        result.append(encoded, count);
    }
    return result;
}
