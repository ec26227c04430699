// SdlRootWindow: a root window that is a real SDL2 window (X11 or Wayland).
//
// The library draws into a frame buffer in host memory through the software
// renderer; the main loop copies the frame to the window's surface after each
// batch of events in which something drew. SDL windows are made when the
// library initialises the window, not when it is created, so that the first
// size and title are the ones asked for.
//
// Main thread only, except postWake.
#pragma once

#include "headless/HostImage.h"
#include "headless/InvalidArea.h"
#include "tela/platform/iEventHandler.h"
#include "tela/platform/iRootWindow.h"

#include <SDL.h>

#include <atomic>
#include <cstdint>

namespace Sdl {

class RootWindow final : public iRootWindow {
public:
    RootWindow(std::int32_t mode, iImageBase::eLocation location);
    ~RootWindow() override;
    RootWindow(const RootWindow&) = delete;
    RootWindow& operator=(const RootWindow&) = delete;

    // iRootWindow
    iImageBase::eLocation displayLocation() const override { return m_location; }
    void getSize(XY<int>& size) const override { size = m_size; }
    bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) override;
    bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) override;
    bool initWindow(const InitArgs& args) override;
    void getPosition(XY<int>& position) const override;
    void getBox(Qv::Box<int>& box) const override { box = Qv::Box<int> { 0, 0, m_size.x, m_size.y }; }
    bool hasTitleBar() const override { return m_title_bar; }
    bool isMaximized() const override { return hasFlag(SDL_WINDOW_MAXIMIZED); }
    bool isMinimized() const override { return hasFlag(SDL_WINDOW_MINIMIZED); }
    bool hasFocus() const override { return hasFlag(SDL_WINDOW_INPUT_FOCUS); }
    void* nativeHandle() const override { return m_window; }
    bool isActive() const override { return m_active; }
    void setUseWindowsTitleBar(bool use) override;
    void setActive(bool active) override { m_active = active; }
    void postWake() override;
    void setTitle(const WString& title) override;
    void minimise() override;
    void claimFocus() override;
    void setEventHandler(const Qv::Ptr<iEventHandler>& handler) override { m_handler = handler; }
    bool dragFiles(const Qv::Vector<WString>& files) override;
    bool createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds) override;
    void invalidate(const Qv::Ptr<iRegion>& region) override;
    Qv::Ptr<iFont> createFont(const WString& name, unsigned short size, unsigned int style,
                              unsigned short variant) override;
    std::uint32_t identity() const override { return m_identity; }

    // For the main loop
    std::uint32_t windowId() const { return m_window_id; }
    // The wakes posted since the last call; each becomes one UserEvent.
    std::uint64_t takeWakes();
    const Qv::Ptr<iEventHandler>& eventHandler() const { return m_handler; }
    // The region to repaint since the last call, null for all; clears it.
    Qv::Ptr<iRegion> takePaintRegion();
    // The native window changed size: a new frame of that size, to be painted.
    void resized(const XY<int>& size);
    // Copies the frame to the screen if anything drew since the last time.
    void present();
    // The frame the library draws into; tests read it.
    const Qv::Ptr<Headless::HostImage>& frame() const { return m_frame; }
    // SDL reports a drop as a start, each file, and an end. Between start and
    // end the files are gathered; a file outside one is a drop by itself.
    void beginDrop() { m_dropping = true; m_dropped.clear(); }
    // False when no drop is open: the caller delivers the file alone.
    bool addDroppedFile(const WString& path);
    // Ends the drop, giving its files.
    Qv::Vector<WString> endDrop();

private:
    bool hasFlag(std::uint32_t flag) const { return m_window && (SDL_GetWindowFlags(m_window) & flag) != 0; }

    std::int32_t m_mode;
    iImageBase::eLocation m_location;
    SDL_Window* m_window = nullptr;
    std::uint32_t m_window_id = 0;
    XY<int> m_size { 800, 600 };
    bool m_title_bar = true;
    bool m_active = true;
    bool m_frame_touched = false;
    bool m_paint_scheduled = false;
    Headless::InvalidArea m_invalid;
    Qv::Ptr<iEventHandler> m_handler;
    Qv::Ptr<Headless::HostImage> m_frame;
    std::atomic<std::uint64_t> m_pending_wakes { 0 };
    bool m_dropping = false;
    Qv::Vector<WString> m_dropped;
    std::uint32_t m_identity;
};

} // namespace Sdl
