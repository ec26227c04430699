#pragma once
// Files written so that a reader sees either the old content or the new, never
// a mixture: a temporary beside the target, flushed and synced, then renamed.

#include <string>
#include <string_view>

namespace Qv {

// False (with the target untouched) when any step fails; `error` says which.
bool writeFileAtomically(const std::string& path, std::string_view bytes, std::string* error = nullptr);

// The whole file; false when it cannot be read.
bool readFile(const std::string& path, std::string& out);

} // namespace Qv
