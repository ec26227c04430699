// XMLParser.cpp: the tag scanner.
//
// Invariants
// - m_tags is in source order and tags never overlap: each scan starts behind
//   the previous tag's '>'.
// - A tag's attributes are m_attributes[firstAttribute, firstAttribute + count).
// - Every read is of an index below m_text.size(), checked where it is made.

#include "tela/core/XMLParser.h"

#include <algorithm>
#include <limits>

namespace {

bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool is_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

bool is_name_char(char c)
{
    return is_letter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':' || c == '.';
}

// Attribute names end where a value, the tag's end or a blank begins.
bool ends_attribute_name(char c)
{
    return is_space(c) || c == '=' || c == '>' || c == '/' || c == '"' || c == '\'';
}

} // namespace

XMLParser::XMLParser(const char* text, std::size_t length)
    : m_text(text ? text : "", text ? std::min<std::size_t>(length, std::numeric_limits<std::uint32_t>::max()) : 0)
{
    scan();
}

std::span<const XMLParser::Attribute> XMLParser::attributes(const Tag& tag) const
{
    const std::size_t first = std::min<std::size_t>(tag.firstAttribute, m_attributes.size());
    const std::size_t count = std::min<std::size_t>(tag.attributeCount, m_attributes.size() - first);
    return std::span<const Attribute>(m_attributes.data() + first, count);
}

void XMLParser::scan()
{
    std::size_t at = 0;
    while (!m_finished) {
        const std::size_t open = m_text.find('<', at);
        if (open == std::string_view::npos)
            return;
        const std::size_t behind = scanTag(open);
        // A stray '<' is text: look again from the byte behind it.
        at = behind ? behind : open + 1;
    }
}

std::size_t XMLParser::scanDeclaration(std::size_t start)
{
    // A comment runs to "-->", whatever it holds; other declarations to '>'.
    const bool comment = m_text.substr(start, 4) == "<!--";
    const std::size_t close = comment ? m_text.find("-->", start + 4) : m_text.find('>', start + 2);
    if (close == std::string_view::npos) {
        m_finished = true;
        return 0;
    }
    const std::size_t last = comment ? close + 2 : close;
    m_tags.push_back(Tag{static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(last), eDeclaration, {},
                         static_cast<std::uint32_t>(m_attributes.size()), 0});
    return last + 1;
}

std::size_t XMLParser::scanTag(std::size_t start)
{
    const std::size_t size = m_text.size();
    std::size_t at = start + 1;
    if (at >= size)
        return 0;
    if (m_text[at] == '!' || m_text[at] == '?')
        return scanDeclaration(start);

    Tag tag;
    tag.first = static_cast<std::uint32_t>(start);
    tag.kind = eOpening;
    if (m_text[at] == '/') {
        tag.kind = eClosing;
        ++at;
    }
    if (at >= size || !is_letter(m_text[at]))
        return 0;   // "a < b", "</ x": not markup
    const std::size_t name_start = at;
    while (at < size && is_name_char(m_text[at]))
        ++at;
    tag.name = m_text.substr(name_start, at - name_start);
    tag.firstAttribute = static_cast<std::uint32_t>(m_attributes.size());

    // Attributes up to the '>'. Anything unexpected on the way is skipped
    // byte by byte, so the loop always moves on.
    bool slash = false;
    while (at < size && m_text[at] != '>') {
        const char c = m_text[at];
        if (is_space(c)) {
            ++at;
            continue;
        }
        if (c == '/' || c == '=' || c == '"' || c == '\'') {
            slash = c == '/';
            ++at;
            continue;
        }
        slash = false;
        const std::size_t attribute_start = at;
        while (at < size && !ends_attribute_name(m_text[at]))
            ++at;
        Attribute attribute{m_text.substr(attribute_start, at - attribute_start), {}};
        std::size_t look = at;
        while (look < size && is_space(m_text[look]))
            ++look;
        if (look < size && m_text[look] == '=') {
            ++look;
            while (look < size && is_space(m_text[look]))
                ++look;
            at = look;
            if (at < size && (m_text[at] == '"' || m_text[at] == '\'') && m_honourQuotes) {
                const char quote = m_text[at];
                const std::size_t close = m_text.find(quote, at + 1);
                if (close == std::string_view::npos) {
                    // An open quote: from here on quotes mean nothing, and
                    // this tag is scanned again without them.
                    m_honourQuotes = false;
                    m_attributes.resize(tag.firstAttribute);
                    return scanTag(start);
                }
                attribute.value = m_text.substr(at + 1, close - at - 1);
                at = close + 1;
            } else {
                if (at < size && (m_text[at] == '"' || m_text[at] == '\''))
                    ++at;   // quotes not honoured: the mark is dropped
                const std::size_t value_start = at;
                while (at < size && !is_space(m_text[at]) && m_text[at] != '>')
                    ++at;
                std::size_t value_end = at;
                if (!m_honourQuotes && value_end > value_start &&
                    (m_text[value_end - 1] == '"' || m_text[value_end - 1] == '\''))
                    --value_end;
                attribute.value = m_text.substr(value_start, value_end - value_start);
            }
        }
        m_attributes.push_back(attribute);
        ++tag.attributeCount;
    }
    if (at >= size) {
        // Never closed: this and everything behind it is text.
        m_attributes.resize(tag.firstAttribute);
        m_finished = true;
        return 0;
    }
    if (slash && tag.kind == eOpening)
        tag.kind = eEmpty;
    tag.last = static_cast<std::uint32_t>(at);
    m_tags.push_back(tag);
    return at + 1;
}
