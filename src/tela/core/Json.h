#pragma once
// JSON: a thin, non-throwing wrapper over nlohmann-json.
//
// - parse() never throws: a bad text gives a discarded value and a message,
//   which never quotes the text. Documents nested deeper than a limit are
//   refused, so nothing that reads or writes a parsed document can run out of
//   stack on it (nlohmann's dump recurses once a level), nor pretty-print one
//   into a file that grows with the square of its depth.
// - Element reads a parsed document: a member or index that is not there gives
//   an element that does not exist, and every getter takes the value to use
//   then, so callers read optional settings without testing each step.
// - Builder writes one document, child by child, and hands back the text.
// - Values keep their storage through the memory seam (Qv::Allocator).

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace JSON {

namespace detail {
template <class Key, class Mapped, class Compare, class>
using ObjectMap = std::map<Key, Mapped, Compare, Qv::Allocator<std::pair<const Key, Mapped>>>;
template <class Item, class>
using ArrayVector = std::vector<Item, Qv::Allocator<Item>>;
} // namespace detail

using Text = std::basic_string<char, std::char_traits<char>, Qv::Allocator<char>>;
using Value = nlohmann::basic_json<detail::ObjectMap, detail::ArrayVector, Text, bool, std::int64_t, std::uint64_t,
                                   double, Qv::Allocator>;

// A read-only view of one value; it does not own it, so it must not outlive
// the document it came from.
class Element {
public:
    Element() = default;
    explicit Element(const Value* value) : m_value(value) {}

    bool exists() const { return m_value != nullptr; }
    bool isObject() const { return m_value && m_value->is_object(); }
    bool isArray() const { return m_value && m_value->is_array(); }
    bool isNumber() const { return m_value && m_value->is_number(); }
    bool isString() const { return m_value && m_value->is_string(); }
    bool isBool() const { return m_value && m_value->is_boolean(); }

    // Member look-up; anything but an object has no members.
    Element operator[](const char* name) const;
    // Array items; anything but an array has none.
    Element operator[](std::size_t index) const;
    // Members of an object or items of an array; 0 for anything else.
    std::size_t size() const;

    // Each getter returns `fallback` when the element is missing or of another kind.
    bool getBool(bool fallback = false) const;
    double getDouble(double fallback = 0.0) const;
    // A real number is truncated towards zero; one beyond int's range is clamped.
    int getInt(int fallback = 0) const;
    String getString(const String& fallback = String()) const;

    const Value* value() const { return m_value; }

private:
    const Value* m_value = nullptr;
};

// Deeper than settings, layouts or any document of ours need to be.
constexpr std::size_t MAX_DEPTH = 100;

struct ParseResult {
    Value value;  // discarded (is_discarded()) when the text was not JSON
    String error; // empty on success; what is wrong and where otherwise
    bool ok() const { return error.empty(); }
    Element root() const { return ok() ? Element(&value) : Element(); }
};

// Objects and arrays count one level each: "[]" is 1 deep, "{"a": []}" 2.
ParseResult parse(std::string_view text, std::size_t maxDepth = MAX_DEPTH);

// Two-space indentation and a final newline, the form files are written in.
// Invalid UTF-8 in strings is replaced rather than reported.
String pretty(const Value& value);

// Writes one document. Containers are opened with startChild / startArray and
// closed with endChild; add() puts a value into the innermost open one.
// Names are needed inside objects and ignored inside arrays. Misuse (a
// missing name, an unmatched endChild, a value with nothing open) is reported
// and the call does nothing.
class Builder : public Qv::HeapObject {
public:
    // indent < 0 gives the compact form; otherwise that many spaces a level.
    explicit Builder(int indent = -1) : m_indent(indent) {}
    Builder(const Builder&) = delete;
    Builder& operator=(const Builder&) = delete;

    void startChild(const char* name); // an object
    void startArray(const char* name);
    void endChild();

    void add(const char* name, bool value);
    void add(const char* name, int value);
    void add(const char* name, std::int64_t value);
    void add(const char* name, double value);
    void add(const char* name, const char* value); // null adds JSON null
    void add(const char* name, const String& value);

    bool isComplete() const { return m_started && m_open.empty(); }
    // The text so far. Children still open are reported and shown as they are.
    String getOutput() const;

private:
    void start(const char* name, Value&& container, const char* caller);
    void put(const char* name, Value&& value, const char* caller);
    // Adds `value` to the innermost open container, named in an object, last
    // in an array; the place it went, or null when an object's member has no name.
    Value* attach(const char* name, Value&& value, const char* caller);

    int m_indent;
    bool m_started = false;
    Value m_root;
    Qv::Vector<Value*> m_open; // innermost last; nodes of nlohmann containers never move while open
};

} // namespace JSON
