#pragma once
// XMLParser: a tolerant scanner that finds the tags of a piece of markup, in
// source order, and leaves everything between them to the caller.
//
// - One pass over the bytes, no recursion: nesting is the caller's business,
//   so any depth costs the same as none, and time is linear in the length.
// - Never throws, never reads outside [text, text + length). What is not a
//   tag is text: a '<' not followed by a letter, '/', '!' or '?' is a stray
//   one, and so is a tag that never closes; scanning stops at the latter.
// - Names and values are views into the caller's bytes, which must outlive
//   the parser. Nothing is decoded: no entities, no case folding.
// - A quoted value may hold '>'. Once a quote is left open to the end, quotes
//   are no longer honoured for the rest of the text, so no byte is scanned
//   more than twice.

#include "tela/core/Memory.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

class XMLParser {
public:
    enum eKind : std::int32_t {
        eOpening = 0,     // <name ...>
        eClosing = 1,     // </name>
        eEmpty = 2,       // <name ... />
        eDeclaration = 3, // <!...>, <!-- ... -->, <?...?>: no name, no attributes
    };

    struct Attribute {
        std::string_view name;
        std::string_view value;   // empty for an attribute written without one
    };

    struct Tag {
        std::uint32_t first = 0;  // offset of its '<'
        std::uint32_t last = 0;   // offset of its '>'
        eKind kind = eOpening;
        std::string_view name;
        std::uint32_t firstAttribute = 0;   // into the parser's attribute list
        std::uint32_t attributeCount = 0;
    };

    // Scans at once. Texts of 4 GiB or more are scanned up to that length.
    XMLParser(const char* text, std::size_t length);

    const Qv::Vector<Tag>& tags() const { return m_tags; }
    std::span<const Attribute> attributes(const Tag& tag) const;

private:
    void scan();
    // The tag starting at `start` (a '<'), added to m_tags; the offset behind
    // it, or 0 when what starts there is no tag.
    std::size_t scanTag(std::size_t start);
    std::size_t scanDeclaration(std::size_t start);

    std::string_view m_text;
    Qv::Vector<Tag> m_tags;
    Qv::Vector<Attribute> m_attributes;
    bool m_honourQuotes = true;
    bool m_finished = false;   // an unclosed tag: the rest is text
};
