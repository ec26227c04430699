#pragma once
// The gallery's video page: a video window showing colour bars that slide
// along and a ball bouncing over them, a new frame on every tick of the
// library, and a label on a canvas of its own lying over the video's corner.
// The frames are composited into the video's canvas, which has round corners:
// both its shape and the label in front cut the moving picture.

#include "tela/canvas/CanvasClient.h"
#include "tela/core/Ptr.h"

class Canvas;
class Palette;

namespace Tela {
class VideoWindow;
}

namespace VideoPage {

constexpr int PAGE_WIDTH = 448, PAGE_HEIGHT = 260;

// The client of the video's canvas: it draws a frame on each tick while its
// page is on top of its family, so a page out of sight costs nothing.
class Player final : public CanvasClient {
public:
    Player();
    ~Player() override;
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    // Paints the page and puts the video and the label on it; `left` and `top`
    // are where the page sits in its window. The canvases belong to the page.
    void build(Canvas* page, int left, int top, const Palette& palette);
    // Lets the video window go: before the page's canvases are deleted.
    void stop();

    const char* idstring() const override { return "VideoPage::Player"; }
    eResult handleEvent(const Event& event) override;

private:
    void drawFrame();

    Canvas* m_page = nullptr;
    Canvas* m_screen = nullptr;
    Qv::Ptr<Tela::VideoWindow> m_video;
    int m_frame = 0;
};

} // namespace VideoPage
