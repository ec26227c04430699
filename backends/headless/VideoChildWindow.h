// VideoChildWindow: a video child window of a headless root window, a pixel
// buffer laid over the window's own pixels where it is visible.
//
// - Frames: getImage hands out a fresh image; once a renderer has been taken on
//   it and released again the frame is finished, and the next look at the window
//   shows it. Until the first frame the window is black, as a native one is.
// - What it shows: the latest finished frame at its position, then the overlay,
//   both cut to its shape (relative to its corner) and its area.
// - Threads: getImage may come from a video thread; m_mutex guards the frames and
//   the size it reads. Everything else is the main thread's.
// - The parent keeps a plain pointer to each child; the child leaves the list in
//   its destructor, and a parent that goes first detaches its children.
#pragma once

#include "headless/HostImage.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iVideoChildWindow.h"

#include <mutex>

namespace Headless {

class RootWindow;

class VideoChildWindow final : public iVideoChildWindow {
public:
    VideoChildWindow(RootWindow* parent, const XY<int>& size, const XY<int>& position, bool shapeable);
    ~VideoChildWindow() override;
    VideoChildWindow(const VideoChildWindow&) = delete;
    VideoChildWindow& operator=(const VideoChildWindow&) = delete;

    // iVideoChildWindow
    bool getImage(Qv::Ptr<iImage>& out, int flags) override;
    void setVisible(bool visible) override;
    void setArea(XY<int> position, XY<int> size) override;
    bool supportsRegions() override { return m_shapeable; }
    void setRegion(Qv::Ptr<iRegion> region) override { m_region = region; }
    void setOverlay(const ImageDescriptionEx& overlay) override;

    // For the parent: it has gone; and draws this window over `frame`.
    void detach() { m_parent = nullptr; }
    void composeOnto(const Qv::Ptr<HostImage>& frame);

    // What tests read
    bool visible() const { return m_visible; }
    int setVisibleCalls() const { return m_set_visible_calls; }
    XY<int> position() const { return m_position; }
    XY<int> size() const;
    const Qv::Ptr<iRegion>& region() const { return m_region; }
    const ImageDescriptionEx& overlay() const { return m_overlay; }
    int overlayCalls() const { return m_overlay_calls; }
    RootWindow* parent() const { return m_parent; }

private:
    // Moves a finished frame into view; under m_mutex.
    void takeFinishedFrame();

    RootWindow* m_parent;
    const bool m_shapeable;
    bool m_visible = true;
    int m_set_visible_calls = 0;
    XY<int> m_position;
    Qv::Ptr<iRegion> m_region;
    ImageDescriptionEx m_overlay;
    int m_overlay_calls = 0;

    mutable std::mutex m_mutex;
    XY<int> m_size;                     // guarded: getImage sizes frames by it
    Qv::Ptr<HostImage> m_drawing;       // guarded: handed out, not yet finished
    Qv::Ptr<HostImage> m_shown;         // guarded: the frame on view
};

} // namespace Headless
