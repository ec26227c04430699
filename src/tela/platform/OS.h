// OS.h: the seam. All contact with the operating system goes through OS(); the
// library never keeps the pointer, it calls OS() afresh for each use.
//
// The first call of OS() starts on the embedded default platform, so that
// tests and tools need no set-up. Tela::Application chooses the platform at
// start-up (Platforms.h); the library's own load-time registrations already
// called OS(), so a platform may take the default's place, provided it shares
// the default's heap and no window exists yet.
#pragma once

class iMemoryService;
class iFileSystemService;
class iThreadingService;
class iAtomicsService;
class iWindowingService;
class iSystemInfo;
class iImagingService;
class iShellService;

// Accessors in slot order; the reserved slots are ones the library never calls.
class iOSServices {
public:
    virtual void reserved0() {}
    virtual iMemoryService* memory() = 0;
    virtual void reserved2() {}
    virtual void reserved3() {}
    virtual iFileSystemService* fileSystem() = 0;
    virtual iThreadingService* threading() = 0;
    virtual iAtomicsService* atomics() = 0;
    virtual void reserved7() {}
    virtual iWindowingService* windowing() = 0;
    virtual iSystemInfo* systemInfo() = 0;
    virtual void reserved10() {}
    virtual iImagingService* imaging() = 0;
    virtual void reserved12() {}
    virtual iShellService* shell() = 0;
protected:
    ~iOSServices() = default;
};

// Never null. Safe on any thread.
iOSServices* OS();

namespace Tela {
// Installs the services of a backend; the object must outlive every use of OS().
// Returns false (and changes nothing) when another backend is already installed.
bool installOSServices(iOSServices* services);
} // namespace Tela
