#pragma once
// JSON: a thin, non-throwing wrapper over nlohmann-json. A parse error gives a
// discarded value and a message; nothing here throws.

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace JSON {

using Value = nlohmann::json;

struct ParseResult {
    Value value;       // discarded (is_discarded()) when the text was not JSON
    std::string error; // empty on success
    bool ok() const { return error.empty(); }
};

ParseResult parse(std::string_view text);

// Serialises with two-space indentation and a final newline, the form files
// are written in.
std::string pretty(const Value& value);

} // namespace JSON
