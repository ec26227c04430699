#include "tela/core/Json.h"

#include "tela/core/Log.h"

#include <climits>
#include <cmath>
#include <cstdio>

namespace {

// The parser's words without the text it stopped at: its messages end in
// "; last read: '<the offending bytes>'", which may be anything the file
// holds, and the "[json.exception...] " tag says nothing to a reader.
String describe_error(const std::string& what)
{
    std::string_view message(what);
    if (message.substr(0, 1) == "[") {
        const std::size_t tag_end = message.find("] ");
        if (tag_end != std::string_view::npos)
            message.remove_prefix(tag_end + 2);
    }
    const std::size_t quoted = message.find("; last read: ");
    if (quoted != std::string_view::npos)
        message = message.substr(0, quoted);
    return String(message.data(), message.size());
}

// Collects the document like nlohmann's own DOM builder, keeps the parser's
// message, which the non-throwing parse() alone would drop, and stops at the
// depth limit.
class CapturingSax {
public:
    using Dom = nlohmann::detail::json_sax_dom_parser<JSON::Value>;
    using number_integer_t = JSON::Value::number_integer_t;
    using number_unsigned_t = JSON::Value::number_unsigned_t;
    using number_float_t = JSON::Value::number_float_t;
    using string_t = JSON::Value::string_t;
    using binary_t = JSON::Value::binary_t;

    CapturingSax(JSON::Value& result, String& error, std::size_t maxDepth)
        : m_dom(result, /*allow_exceptions=*/false), m_error(error), m_max_depth(maxDepth)
    {
    }

    bool null() { return m_dom.null(); }
    bool boolean(bool value) { return m_dom.boolean(value); }
    bool number_integer(number_integer_t value) { return m_dom.number_integer(value); }
    bool number_unsigned(number_unsigned_t value) { return m_dom.number_unsigned(value); }
    // The binary readers pass their own string type here; the document keeps
    // only the number, so the text is not needed.
    template <class AnyText>
    bool number_float(number_float_t value, const AnyText&)
    {
        return m_dom.number_float(value, string_t());
    }
    bool string(string_t& value) { return m_dom.string(value); }
    bool binary(binary_t& value) { return m_dom.binary(value); }
    bool start_object(std::size_t count) { return enter() && m_dom.start_object(count); }
    bool key(string_t& value) { return m_dom.key(value); }
    bool end_object() { --m_depth; return m_dom.end_object(); }
    bool start_array(std::size_t count) { return enter() && m_dom.start_array(count); }
    bool end_array() { --m_depth; return m_dom.end_array(); }

    template <class Exception>
    bool parse_error(std::size_t position, const std::string& token, const Exception& error)
    {
        m_error = describe_error(error.what());
        return m_dom.parse_error(position, token, error);
    }

private:
    bool enter()
    {
        if (++m_depth <= m_max_depth)
            return true;
        char message[64];
        std::snprintf(message, sizeof message, "nested deeper than %zu levels", m_max_depth);
        m_error = String(message);
        return false;
    }

    Dom m_dom;
    String& m_error;
    std::size_t m_max_depth;
    std::size_t m_depth = 0;
};

} // namespace

JSON::ParseResult JSON::parse(std::string_view text, std::size_t maxDepth)
{
    ParseResult result;
    CapturingSax sax(result.value, result.error, maxDepth);
    const bool parsed = Value::sax_parse(text.begin(), text.end(), &sax);
    if (!parsed || !result.error.empty()) {
        result.value = Value(Value::value_t::discarded);
        if (result.error.empty())
            result.error = String("not valid JSON");
    }
    return result;
}

JSON::Element JSON::Element::operator[](const char* name) const
{
    if (!isObject() || !name)
        return Element();
    const auto found = m_value->find(name);
    return found == m_value->end() ? Element() : Element(&*found);
}

JSON::Element JSON::Element::operator[](std::size_t index) const
{
    if (!isArray() || index >= m_value->size())
        return Element();
    return Element(&(*m_value)[index]);
}

std::size_t JSON::Element::size() const
{
    return isObject() || isArray() ? m_value->size() : 0;
}

bool JSON::Element::getBool(bool fallback) const
{
    return isBool() ? m_value->get<bool>() : fallback;
}

double JSON::Element::getDouble(double fallback) const
{
    return isNumber() ? m_value->get<double>() : fallback;
}

int JSON::Element::getInt(int fallback) const
{
    if (!isNumber())
        return fallback;
    if (m_value->is_number_integer() && !m_value->is_number_unsigned()) {
        const std::int64_t value = m_value->get<std::int64_t>();
        return value < INT_MIN ? INT_MIN : value > INT_MAX ? INT_MAX : static_cast<int>(value);
    }
    if (m_value->is_number_unsigned()) {
        const std::uint64_t value = m_value->get<std::uint64_t>();
        return value > static_cast<std::uint64_t>(INT_MAX) ? INT_MAX : static_cast<int>(value);
    }
    const double value = std::trunc(m_value->get<double>());
    // Compare as doubles before converting: converting an out-of-range double is undefined.
    return value <= INT_MIN ? INT_MIN : value >= INT_MAX ? INT_MAX : static_cast<int>(value);
}

String JSON::Element::getString(const String& fallback) const
{
    if (!isString())
        return fallback;
    const Text& text = m_value->get_ref<const Text&>();
    return String(text.data(), text.size());
}

String JSON::pretty(const Value& value)
{
    const Text text = value.dump(2, ' ', false, Value::error_handler_t::replace);
    String result(text.data(), text.size());
    result += '\n';
    return result;
}

void JSON::Builder::startChild(const char* name)
{
    start(name, Value::object(), "JSON::Builder::startChild");
}

void JSON::Builder::startArray(const char* name)
{
    start(name, Value::array(), "JSON::Builder::startArray");
}

void JSON::Builder::endChild()
{
    if (m_open.empty()) {
        murl_printf("JSON::Builder::endChild: no child is open\n");
        return;
    }
    m_open.pop_back();
}

void JSON::Builder::add(const char* name, bool value)
{
    put(name, Value(value), "JSON::Builder::add");
}

void JSON::Builder::add(const char* name, int value)
{
    put(name, Value(static_cast<std::int64_t>(value)), "JSON::Builder::add");
}

void JSON::Builder::add(const char* name, std::int64_t value)
{
    put(name, Value(value), "JSON::Builder::add");
}

void JSON::Builder::add(const char* name, double value)
{
    // JSON has no NaN or infinity; nlohmann would write null, which readers
    // of a number then take as missing. Say so rather than write it silently.
    if (!std::isfinite(value)) {
        murl_printf("JSON::Builder::add: %s is not a finite number\n", name ? name : "(item)");
        return;
    }
    put(name, Value(value), "JSON::Builder::add");
}

void JSON::Builder::add(const char* name, const char* value)
{
    put(name, value ? Value(Text(value)) : Value(nullptr), "JSON::Builder::add");
}

void JSON::Builder::add(const char* name, const String& value)
{
    put(name, Value(Text(value.data(), value.size())), "JSON::Builder::add");
}

String JSON::Builder::getOutput() const
{
    if (!m_started)
        return String();
    if (!m_open.empty())
        murl_printf("JSON::Builder::getOutput: %zu child(ren) still open\n", m_open.size());
    const Text text = m_root.dump(m_indent, ' ', false, Value::error_handler_t::replace);
    return String(text.data(), text.size());
}

void JSON::Builder::start(const char* name, Value&& container, const char* caller)
{
    if (!m_started) {
        // The document itself: a name here has nowhere to go, and is ignored.
        m_started = true;
        m_root = std::move(container);
        m_open.push_back(&m_root);
        return;
    }
    if (m_open.empty()) {
        murl_printf("%s: the document is already complete\n", caller);
        return;
    }
    if (Value* child = attach(name, std::move(container), caller))
        m_open.push_back(child);
}

void JSON::Builder::put(const char* name, Value&& value, const char* caller)
{
    if (m_open.empty()) {
        murl_printf("%s: no child is open\n", caller);
        return;
    }
    attach(name, std::move(value), caller);
}

JSON::Value* JSON::Builder::attach(const char* name, Value&& value, const char* caller)
{
    Value& parent = *m_open.back();
    if (!parent.is_object()) {
        parent.push_back(std::move(value));
        return &parent.back();
    }
    if (!name) {
        murl_printf("%s: a member needs a name\n", caller);
        return nullptr;
    }
    Value& child = parent[name];
    child = std::move(value);
    return &child;
}
