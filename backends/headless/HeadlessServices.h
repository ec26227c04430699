// Headless: the embedded default platform. Everything lives in memory: windows are
// pixel buffers, regions are pixman regions, and tests drive it directly.
//
// Start with Headless::services(): it gives the services object that OS() returns
// when no other backend was installed, with the counters and controls tests use.
#pragma once

#include "headless/HeadlessAtomics.h"
#include "headless/HeadlessMainLoop.h"
#include "headless/HeadlessMemory.h"
#include "headless/HeadlessThreading.h"
#include "tela/platform/iFileSystemService.h"
#include "tela/platform/iImagingService.h"
#include "tela/platform/iRootWindow.h"
#include "tela/platform/iShellService.h"
#include "tela/platform/iSystemInfo.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"

#include <atomic>
#include <mutex>

namespace Headless {

// The road a new window of `mode` takes: the composited one when the mode asks
// for it, otherwise `fallback`, the service's default.
inline iImageBase::eLocation displayLocationFor(std::int32_t mode, int fallback)
{
    if (static_cast<std::uint32_t>(mode) & iRootWindow::InitArgs::MODE_COMPOSITED)
        return iImageBase::eGPU;
    return static_cast<iImageBase::eLocation>(fallback);
}

class RootWindow;

class FileSystem final : public iFileSystemService {
public:
    bool isDirectory(const WString& path) override;
    // The name the application gave, else "Tela": the title of the start-up
    // failure box and the key of the saved placement.
    WString applicationName() override;
    char16_t pathSeparator() override { return u'/'; }
};

// A cursor as this platform keeps it: what it was made from.
class Cursor final : public iCursor {
public:
    std::int32_t stockId = -1;     // -1 for an image cursor
    XY<int> size;
    XY<int> hotSpot;
};

class Windowing final : public iWindowingService {
public:
    bool createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode) override;
    bool createChildWindow(Qv::Ptr<iVideoChildWindow>& out, const Qv::Ptr<iRootWindow>& parent, const XY<int>& size,
                           const XY<int>& position) override;
    bool createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count) override;
    void enumerateFonts(std::set<WString, WString::ICompare>& names) override;
    void defaultFontName(WString& out) override { out = WString(u"DejaVu Sans"); }
    bool isKeyDown(std::uint32_t modifierMask) override { return (m_held_modifiers & modifierMask) != 0; }
    bool createCursor(Qv::Ptr<iCursor>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& hotSpot) override;
    bool createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id) override;
    // Any thread: the busy cursor is set from the busy monitor's.
    void selectCursor(const Qv::Ptr<iCursor>& cursor) override
    {
        std::lock_guard lock(m_cursor_mutex);
        m_cursor = Qv::dynamicCast<Cursor>(cursor);
    }
    // What tests read: the cursor shown now, and how many stock cursors were made.
    Qv::Ptr<Cursor> selectedCursor() const
    {
        std::lock_guard lock(m_cursor_mutex);
        return m_cursor;
    }
    int stockCursorsMade() const { return m_stock_cursors_made.load(); }
    int runMessageLoop() override;
    void shutdownMessageLoop() override { m_main_loop.stop(); }

    // Scripted input: the modifiers isKeyDown reports as held.
    void setHeldModifiers(std::uint32_t mask) { m_held_modifiers = mask; }
    // The last window created, for tests that let the library make its own.
    RootWindow* lastRootWindow() const { return m_last_window; }
    // New windows use this display road (0 host memory, 1 composited).
    void setDefaultDisplayLocation(int location) { m_default_location = location; }
    // The loop behind runMessageLoop; tests may drive it with runPending().
    MainLoop& mainLoop() { return m_main_loop; }
    // Whether the next video child windows can take a shape (they can unless
    // told); those that cannot are covered by an overlay instead.
    void setChildWindowsShapeable(bool shapeable) { m_child_windows_shapeable = shapeable; }

private:
    std::uint32_t m_held_modifiers = 0;
    mutable std::mutex m_cursor_mutex;
    Qv::Ptr<Cursor> m_cursor;
    std::atomic<int> m_stock_cursors_made { 0 };
    RootWindow* m_last_window = nullptr;
    int m_default_location = 0;
    bool m_child_windows_shapeable = true;
    MainLoop m_main_loop;
};

class SystemInfo final : public iSystemInfo {
public:
    // One 1920 x 1080 monitor, its bottom 40 rows a task bar, unless a test
    // scripted others.
    void getMonitors(Qv::Vector<MonitorInfo>& monitors) override;
    float uiScale() override { return m_ui_scale; }
    void setUiScale(float scale) { m_ui_scale = scale; }
    void setMonitors(const Qv::Vector<MonitorInfo>& monitors)
    {
        m_monitors = monitors;
        m_scripted = true;
    }
    void clearMonitors()
    {
        m_monitors.clear();
        m_scripted = false;
    }

private:
    float m_ui_scale = 1.0f;
    // Empty until scripted: the services exist before any heap.
    Qv::Vector<MonitorInfo> m_monitors;
    bool m_scripted = false;
};

class Imaging final : public iImagingService {
public:
    bool toHostImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iGPUImage>& image) override;
    bool toGPUImage(Qv::Ptr<iGPUImage>& out, const Qv::Ptr<iHostImage>& image) override;
    bool createTargetImage(Qv::Ptr<iImage>& out, const XY<int>& size, int location) override;
    void releaseGPUResources() override {}
    Qv::Ptr<iShaderEffect> findShader(const String& name) override;
    bool loadImage(Qv::Ptr<iHostImage>& out, const WString& path) override;
    bool decodeImage(Qv::Ptr<iHostImage>& out, const std::uint8_t* bytes, std::size_t size,
                     const WString& name) override;
    bool saveImage(const Qv::Ptr<iImage>& image, const WString& path) override;
    bool resizeImage(Qv::Ptr<iHostImage>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& size) override;
};


class Shell final : public iShellService {
public:
    bool revealFile(const WString&) override { return true; }
    bool viewDocument(const WString&) override { return true; }
    bool userPicturesFolder(WString& out, int) override;
    int messageBox(const WString& title, const WString& text, int buttons, int icon) override;
};

class Services final : public iOSServices {
public:
    Memory* memory() override { return &m_memory; }
    FileSystem* fileSystem() override { return &m_file_system; }
    Threading* threading() override { return &m_threading; }
    Atomics* atomics() override { return &m_atomics; }
    Windowing* windowing() override { return &m_windowing; }
    SystemInfo* systemInfo() override { return &m_system_info; }
    Imaging* imaging() override { return &m_imaging; }
    Shell* shell() override { return &m_shell; }

private:
    Memory m_memory;
    FileSystem m_file_system;
    Threading m_threading;
    Atomics m_atomics;
    Windowing m_windowing;
    SystemInfo m_system_info;
    Imaging m_imaging;
    Shell m_shell;
};

// The process's headless services; never destroyed, so that objects released during
// static destruction still find their heap.
Services& services();

} // namespace Headless
