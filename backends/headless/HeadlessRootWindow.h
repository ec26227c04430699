// HeadlessRootWindow: a root window that is a pixel buffer in memory.
//
// Tests set its size, position and focus directly, and read what the library asked of
// it: wakes posted, regions invalidated, the title. An invalidated region comes back
// as a PaintEvent from the main loop. The window's pixels are its frame buffer on
// both display locations. postWake may come from any thread;
// everything else is the main thread's.
#pragma once

#include "headless/HostImage.h"
#include "headless/InvalidArea.h"
#include "tela/platform/iEventHandler.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iRootWindow.h"

#include <atomic>

namespace Headless {

class VideoChildWindow;

class RootWindow final : public iRootWindow {
public:
    explicit RootWindow(std::int32_t mode, iImageBase::eLocation location = iImageBase::eHostMemory);
    ~RootWindow() override;
    RootWindow(const RootWindow&) = delete;
    RootWindow& operator=(const RootWindow&) = delete;

    // iRootWindow
    iImageBase::eLocation displayLocation() const override { return m_location; }
    void getSize(XY<int>& size) const override { size = m_size; }
    bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) override;
    bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) override;
    bool initWindow(const InitArgs& args) override;
    void getPosition(XY<int>& position) const override { position = m_position; }
    void getBox(Qv::Box<int>& box) const override { box = Qv::Box<int> { 0, 0, m_size.x, m_size.y }; }
    bool hasTitleBar() const override { return m_title_bar; }
    bool isMaximized() const override { return m_maximised; }
    bool isMinimized() const override { return m_minimised; }
    bool hasFocus() const override { return m_focus; }
    void* nativeHandle() const override { return const_cast<RootWindow*>(this); }
    bool isActive() const override { return m_active; }
    void setUseWindowsTitleBar(bool use) override { m_title_bar = use; }
    void setActive(bool active) override { m_active = active; }
    void postWake() override;
    void setTitle(const WString& title) override { m_title = title; }
    void minimise() override { m_minimised = true; }
    void claimFocus() override { m_focus = true; }
    void setEventHandler(const Qv::Ptr<iEventHandler>& handler) override { m_handler = handler; }
    bool dragFiles(const Qv::Vector<WString>& files) override;
    bool createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds) override;
    void invalidate(const Qv::Ptr<iRegion>& region) override;
    Qv::Ptr<iFont> createFont(const WString& name, unsigned short size, unsigned int style,
                              unsigned short variant) override;
    std::uint32_t identity() const override { return m_identity; }

    // What tests set
    void setSize(const XY<int>& size);
    void setPosition(const XY<int>& position) { m_position = position; }
    void setFocus(bool focus) { m_focus = focus; }
    void setMaximised(bool maximised) { m_maximised = maximised; }
    void setDisplayLocation(iImageBase::eLocation location) { m_location = location; }

    // Scripted input, delivered by the main loop in order (see MainLoop::script).
    void script(const MouseEvent& report);
    void script(const KeyEvent& report);
    void script(const WindowEvent& report);

    // What tests read
    std::int32_t mode() const { return m_mode; }
    bool initialised() const { return m_initialised; }
    const WString& title() const { return m_title; }
    const Qv::Vector<WString>& draggedFiles() const { return m_dragged; } // of the last dragFiles
    std::uint64_t wakeCount() const { return m_wakes.load(); }
    const Qv::Ptr<iEventHandler>& eventHandler() const { return m_handler; }
    const Qv::Ptr<iRegion>& invalidRegion() const { return m_invalid.region(); }   // united since the last take
    bool wholeWindowInvalid() const { return m_invalid.whole(); }
    void takeInvalidRegion() { m_invalid.clear(); }
    // What a paint event carries: the region invalidated since the last paint,
    // null for the whole window. Clears it.
    Qv::Ptr<iRegion> takePaintRegion() { return m_invalid.take(); }
    const Qv::Ptr<HostImage>& pixels() const { return m_pixels; }
    // What the window shows: its pixels with its video child windows laid over
    // them. The pixels themselves while it has no children.
    Qv::Ptr<HostImage> shownPixels() const;
    // Video child windows join at creation and leave at destruction; those
    // left when the window goes are told it has gone.
    void addChild(VideoChildWindow* child) { m_children.push_back(child); }
    void removeChild(VideoChildWindow* child);
    const Qv::Vector<VideoChildWindow*>& children() const { return m_children; }
    // Writes what the window shows, children included, to a PNG file; false,
    // with a message, on failure.
    // A window without pixels yet gets a host-memory frame of its size first.
    [[nodiscard]] bool snapshot(const char* path);

private:
    std::int32_t m_mode;
    iImageBase::eLocation m_location;
    XY<int> m_size { 800, 600 };
    XY<int> m_position;
    bool m_title_bar = true;
    bool m_maximised = false;
    bool m_minimised = false;
    bool m_focus = false;
    bool m_active = true;
    bool m_initialised = false;
    WString m_title;
    Qv::Vector<WString> m_dragged;
    Qv::Ptr<iEventHandler> m_handler;
    InvalidArea m_invalid;
    Qv::Ptr<HostImage> m_pixels;
    Qv::Vector<VideoChildWindow*> m_children;   // not owned; each removes itself
    std::atomic<std::uint64_t> m_wakes { 0 };
    std::uint32_t m_identity;
};

// A new value for iRootWindow::identity, never 0; both platforms' windows draw from it.
std::uint32_t newWindowIdentity();

} // namespace Headless
