#pragma once
// Files written so that a reader sees either the old content or the new, never
// a mixture: a temporary beside the target (same directory, so the rename
// cannot cross file systems), written, synced, then renamed over the target.
//
// A writer killed mid-write leaves its temporary; the next write of the same
// target removes those whose process is gone (AtomicFile.cpp tells how it
// knows), never one a live process may be writing.
//
// These go to POSIX directly: the file-system service of the seam offers no
// way to open, sync or rename files.

#include "tela/core/LightweightString.h"

#include <string>
#include <string_view>

namespace Qv {

// False, with the target untouched and no temporary left behind, when any step
// fails; `error` then says which step and why. An existing target keeps its
// permission bits.
[[nodiscard]] bool writeFileAtomically(std::string_view path, std::string_view bytes, std::string* error = nullptr);

// The whole file into `out`; false, with errno saying why, when it cannot be read.
[[nodiscard]] bool readFile(std::string_view path, String& out);

} // namespace Qv
