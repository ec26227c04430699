#include "core/Json.h"

JSON::ParseResult JSON::parse(std::string_view text)
{
    ParseResult result;
    result.value = Value::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
    if (result.value.is_discarded())
        result.error = "not valid JSON";
    return result;
}

std::string JSON::pretty(const Value& value)
{
    // Invalid UTF-8 in a string is replaced rather than thrown about.
    return value.dump(2, ' ', false, Value::error_handler_t::replace) + "\n";
}
