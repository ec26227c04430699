// A video thread draws frames through a video window while the main thread
// moves a canvas across the video and shows the window: on both roads the
// frames land, the shape follows the canvas, and nothing races (this file
// runs under the thread sanitiser).

#include "video/VideoSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace VideoTest;
using Tela::VideoWindow;

namespace {

struct Road {
    const char* name;
    VideoWindow::eDisplayMode mode;
    bool shapeable;
};

class VideoThread : public ::testing::TestWithParam<Road> {};

// Frames until told to stop, half by display and half drawn by hand.
void play(VideoWindow& video, const std::atomic<bool>& stop, std::atomic<int>& frames)
{
    const Qv::Ptr<iGPUImage> frame = frame_of(RED);
    while (!stop.load()) {
        if (frames.load() % 2 == 0) {
            video.display(frame);
        }
        else if (const Qv::Ptr<Tela::iRenderTarget> target = video.getRenderTarget()) {
            if (const Qv::Ptr<iGraphicPrimitivesRenderer> renderer = target->getRenderer()) {
                const XY<int> size = target->getSize();
                const ::ImageDescription picture(frame, TopDownRect { 0, 0, size.x, size.y },
                                                 TopDownRect { 0, 0, 16, 16 }, false);
                renderer->drawImages(&picture, 1);
            }
        }
        frames.fetch_add(1);
        std::this_thread::yield();
    }
}

} // namespace

TEST_P(VideoThread, FramesFromAThreadLandWhileTheMainThreadMovesACanvasAcross)
{
    Scene scene(iImageBase::eHostMemory, GetParam().shapeable);
    VideoWindow video;
    video.create(scene.video, scene.whole, GetParam().mode);
    Canvas* cover = painted(scene.root, 0, 30, 30, 30, GREEN);
    scene.settle();

    std::atomic<bool> stop { false };
    std::atomic<int> frames { 0 };
    std::thread player(play, std::ref(video), std::cref(stop), std::ref(frames));
    for (int step = 0; step < 40 || frames.load() < 20; ++step) {
        tela_translatecanvas(cover, step % 40 < 20 ? 2 : -2, 0);
        scene.settle();
        (void)scene.window->shownPixels();
        std::this_thread::yield();
    }
    stop = true;
    player.join();
    Qv::Box<int> at;
    cover->shape()->getBox(at);
    tela_translatecanvas(cover, 20 - at.x1, 0);

    // One last frame, after the canvas has come to rest at (20, 30)-(50, 60).
    std::thread last([&] { video.display(frame_of(RED)); });
    last.join();
    scene.settle();
    EXPECT_EQ(scene.shownAt(80, 60), RED);
    EXPECT_EQ(scene.shownAt(35, 45), GREEN);   // the canvas in front of the video
    EXPECT_FALSE(video.hidden);
}

INSTANTIATE_TEST_SUITE_P(BothRoads, VideoThread,
                         ::testing::Values(Road { "shaped", VideoWindow::eChildWindow, true },
                                           Road { "overlaid", VideoWindow::eChildWindow, false },
                                           Road { "composited", VideoWindow::eComposited, true }),
                         [](const auto& info) { return info.param.name; });
