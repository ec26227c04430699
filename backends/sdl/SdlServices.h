// Sdl: the platform on SDL2, for real windows on X11 or Wayland.
//
// Windows, their input, timers, wake-ups and the main loop come from SDL;
// memory, threads, atomics, files, images and regions are the embedded
// headless platform's, so both share one heap and one software renderer.
//
// Chosen by the environment: TELA_BACKEND=sdl or =headless; unset, SDL when
// a display ($DISPLAY or $WAYLAND_DISPLAY) is there.
#pragma once

#include "headless/HeadlessServices.h"
#include "platform/OS.h"
#include "platform/iSystemInfo.h"
#include "platform/iWindowingService.h"

#include <SDL.h>

#include <atomic>
#include <cstdint>

namespace Sdl {

class RootWindow;

// True when the environment asks for SDL, or leaves the choice and has a display.
bool wanted();
// Starts SDL's video and installs this platform in place of the embedded
// one. False, with a message, when SDL cannot start or windows already exist.
bool install();

// The event types this platform adds to SDL's queue.
struct EventTypes {
    std::uint32_t wake = 0;   // user.windowID: the window whose wakes are due
    std::uint32_t paint = 0;  // the window has regions to repaint
    std::uint32_t tick = 0;   // user.code: the timer's period
    std::uint32_t initialise = 0; // the window has come up
};
const EventTypes& eventTypes();

class Windowing final : public iWindowingService {
public:
    bool createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode) override;
    bool createChildWindow(Qv::Ptr<iObject>& out, const Qv::Ptr<iRootWindow>& parent) override;
    bool createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count) override;
    void enumerateFonts(Qv::Set<WString>& names) override;
    void defaultFontName(WString& out) override { out = WString(u"DejaVu Sans"); }
    bool isKeyDown(std::uint32_t modifierMask) override;
    bool createCursor(Qv::Ptr<iCursor>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& hotSpot) override;
    bool createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id) override;
    void selectCursor(const Qv::Ptr<iCursor>& cursor) override;
    int runMessageLoop() override;
    void shutdownMessageLoop() override;

    // Windows register while their SDL window lives, so events find them.
    void registerWindow(RootWindow* window);
    void unregisterWindow(RootWindow* window);
    // Handles every event queued now and presents what was drawn; returns
    // how many events there were. For tests.
    std::size_t pumpPending();
    // New windows use this display road (0 host memory, 1 composited).
    void setDefaultDisplayLocation(int location) { m_default_location = location; }

private:
    void dispatch(const SDL_Event& event);
    RootWindow* find(std::uint32_t windowId) const;
    void presentAll();

    Qv::Vector<RootWindow*> m_windows;
    int m_default_location = 0;
    bool m_quit = false;
};

class SystemInfo final : public iSystemInfo {
public:
    void getMonitors(Qv::Vector<MonitorInfo>& monitors) override;
    float uiScale() override { return 1.0f; }
};

class Services final : public iOSServices {
public:
    iMemoryService* memory() override { return headless().memory(); }
    iFileSystemService* fileSystem() override { return headless().fileSystem(); }
    iThreadingService* threading() override { return headless().threading(); }
    iAtomicsService* atomics() override { return headless().atomics(); }
    Windowing* windowing() override { return &m_windowing; }
    SystemInfo* systemInfo() override { return &m_system_info; }
    iImagingService* imaging() override { return headless().imaging(); }
    iShellService* shell() override { return headless().shell(); }

private:
    static Headless::Services& headless() { return Headless::services(); }

    Windowing m_windowing;
    SystemInfo m_system_info;
};

Services& services();

} // namespace Sdl
