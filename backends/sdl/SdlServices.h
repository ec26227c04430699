// Sdl: the platform on SDL2, for real windows on X11 or Wayland.
//
// Windows, their input, timers, wake-ups and the main loop come from SDL;
// memory, threads, atomics, files, images and regions are the embedded
// headless platform's, so both share one heap and one software renderer.
//
// Chosen by the environment: TELA_BACKEND=sdl or =headless; unset, SDL when
// a display ($DISPLAY or $WAYLAND_DISPLAY) is there.
//
// Closing: the close button is a close request to the window's handler, which
// may refuse it; only a wake that the handler answers eHandled ends the loop.
// SDL's own quit event comes only from a signal (interrupt, terminate), which
// ends the loop as it stands.
//
// Stock cursors by number: 0 to 11 are SDL's system cursors in SDL's order
// (arrow, I-beam, wait, crosshair, wait arrow, the four size arrows, move,
// no, hand), 13 is busy, and the image cursors' numbers 16 to 36 have the
// nearest system shape for when their image is missing. Others are the arrow.
//
// Dropped files arrive as one FileDragDropEvent per drop, with the action
// eFileDropped and the pointer's position; SDL reports no drag passing over
// the window, and cannot start a drag out of one.
#pragma once

#include "headless/HeadlessServices.h"
#include "sdl/SdlX11.h"
#include "tela/platform/iSystemInfo.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"

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

// The action values of this platform's FileDragDropEvent, as the library's
// drag handler hears them (onFileDragAction0 to 3).
enum eFileDragAction : std::uint32_t {
    eFileDragEntered = 0,
    eFileDragOver = 1,
    eFileDropped = 2,                  // the only one SDL reports
    eFileDragLeft = 3,
};

// The user-interface scale for a display density in dots per inch: 96 is
// 1.0, in quarter steps, never below 1 (a screen reporting a low or absurd
// density keeps cursors at their drawn size) nor above 4.
float scaleForDensity(float dpi);

// The system cursor shown for one of the library's cursor numbers.
SDL_SystemCursor systemCursorFor(std::int32_t id);

// The scale of a window: the ratio of its pixels to its size where the
// system scales windows itself (Wayland), else the density of its display.
// A null window asks about the first display. Main thread.
float densityScale(SDL_Window* window);

class Windowing final : public iWindowingService {
public:
    bool createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode) override;
    bool createChildWindow(Qv::Ptr<iVideoChildWindow>& out, const Qv::Ptr<iRootWindow>& parent, const XY<int>& size,
                           const XY<int>& position) override;
    bool createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count) override;
    void enumerateFonts(std::set<WString, WString::ICompare>& names) override;
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
    // How often a cursor was shown from a thread other than the main one,
    // over the X server's own connection. For tests.
    int offThreadCursorsShown() const { return m_off_thread_cursors.load(); }

private:
    void dispatch(const SDL_Event& event);
    void deliverDrop(RootWindow& window, const SDL_Event& event);
    RootWindow* find(std::uint32_t windowId) const;
    void presentAll();

    Qv::Vector<RootWindow*> m_windows;
    int m_default_location = 0;
    bool m_quit = false;
    X11Cursors m_x11;
    std::atomic<int> m_off_thread_cursors { 0 };
};

class SystemInfo final : public iSystemInfo {
public:
    void getMonitors(Qv::Vector<MonitorInfo>& monitors) override;
    // Any thread: the value last measured on the main thread.
    float uiScale() override { return m_scale.load(); }
    // Measures the scale again for this window (null: the first display). Main thread.
    void refreshScale(SDL_Window* window) { m_scale.store(densityScale(window)); }

private:
    std::atomic<float> m_scale { 1.0f };
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
