#pragma once
// Dragging files out of the application into the operating system: the
// platform's drag runs on the first root window and blocks until it ends.
// Main thread only.

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/core/RefCount.h"

#include <vector>

// One file offered to a drag out of the application. A holder may stand for
// a file that is still being made; by the time the drag starts it names the
// file on disk.
class iFileHolder : public virtual iObject {
public:
    virtual WString getFilename() const = 0;
};

namespace Tela {

// A holder of a file that already exists at a known path.
class SimpleFileHolder : public iFileHolder {
public:
    explicit SimpleFileHolder(const WString& path) : m_path(path) {}
    WString getFilename() const override { return m_path; }

private:
    WString m_path;
};

// Drags the files (paths, or holders) out to the system, then forgets the
// mouse state: the platform's drag swallowed the button release. Nothing
// happens without a root window; null holders are left out.
void dragFilesToOS(const std::vector<LightweightString<wchar_t>>& paths);
void dragFilesToOS(const std::vector<Qv::Ptr<iFileHolder>>& files);

} // namespace Tela
