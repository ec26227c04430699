// The video window on the headless platform: frames on both roads reach the
// window where the canvas is, canvases in front cut the child window or are
// painted over it, and a covered video is hidden once and shown again.

#include "VideoSupport.h"

#include <gtest/gtest.h>

using namespace VideoTest;
using Tela::VideoWindow;

TEST(VideoWindowChild, AFrameShowsOverTheCanvasAndNowhereElse)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    ASSERT_TRUE(video.valid());
    Headless::VideoChildWindow* child = scene.child();
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->position(), XY<int>(20, 20));
    EXPECT_EQ(child->size(), XY<int>(80, 60));
    EXPECT_EQ(video.getSize(), XY<int>(80, 60));
    EXPECT_EQ(scene.shownAt(50, 50), 0xFF000000u);   // black until the first frame

    video.display(frame_of(RED));
    EXPECT_EQ(scene.shownAt(20, 20), RED);
    EXPECT_EQ(scene.shownAt(99, 79), RED);
    EXPECT_NE(scene.shownAt(19, 50), RED);
    EXPECT_NE(scene.shownAt(100, 50), RED);
    // The window's own frame buffer is not touched: the child lies over it.
    EXPECT_NE(scene.window->pixels()->pixelAt(50, 50), RED);

    // A second area moves and sizes the child window.
    video.setCanvasArea(Qv::Box<int> { 0, 0, 40, 30 });
    EXPECT_EQ(child->size(), XY<int>(40, 30));
    EXPECT_EQ(child->position(), XY<int>(20, 50));   // the box's top is 30 up from the canvas's bottom
    video.display(frame_of(BLUE));
    EXPECT_EQ(scene.shownAt(30, 70), BLUE);
    EXPECT_NE(scene.shownAt(30, 30), BLUE);
}

TEST(VideoWindowChild, ACanvasInFrontCutsTheShapeOfAShapeableWindow)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(frame_of(RED));
    EXPECT_FALSE(scene.child()->region());   // all of it shows

    painted(scene.root, 60, 40, 60, 60, GREEN);   // over the video's bottom right
    scene.settle();
    video.display(frame_of(RED));
    ASSERT_TRUE(scene.child()->region());
    // The shape is relative to the child's corner: (60, 40) of the window is (40, 20).
    EXPECT_FALSE(scene.child()->region()->contains(XY<int>(40, 20)));
    EXPECT_TRUE(scene.child()->region()->contains(XY<int>(39, 20)));
    EXPECT_EQ(scene.shownAt(70, 50), GREEN);
    EXPECT_EQ(scene.shownAt(30, 50), RED);
}

TEST(VideoWindowChild, AWindowWithoutShapesIsCoveredByAPictureOfWhatLiesInFront)
{
    Scene scene(iImageBase::eHostMemory, false);
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(frame_of(RED));
    // Wholly visible: the overlay is set, and empty.
    EXPECT_GE(scene.child()->overlayCalls(), 1);
    EXPECT_FALSE(scene.child()->overlay().image);

    Canvas* cover = painted(scene.root, 60, 40, 60, 60, GREEN);
    scene.settle();
    video.display(frame_of(RED));
    video.display(frame_of(RED));   // the covering canvases are counted from here on
    const ImageDescriptionEx& overlay = scene.child()->overlay();
    ASSERT_TRUE(overlay.image);
    EXPECT_TRUE(overlay.enabled);
    EXPECT_EQ(overlay.destRect, (Qv::Rectangle<float> { 40, 20, 80, 60 }));
    EXPECT_EQ(overlay.sourceRect, (Qv::Rectangle<float> { 0, 0, 40, 40 }));
    EXPECT_FALSE(scene.child()->region());
    EXPECT_EQ(scene.shownAt(70, 50), GREEN);
    EXPECT_EQ(scene.shownAt(30, 50), RED);

    // Frames alone do not rebuild it; a covering canvas that draws again does.
    const int built = scene.child()->overlayCalls();
    video.display(frame_of(RED));
    EXPECT_EQ(scene.child()->overlayCalls(), built);
    cover->beginRender();
    cover->renderer.render(Tela::RectDescription(Qv::Box<int> { 0, 0, 60, 60 }, NormalisedRGB(0, 0, 1)));
    cover->endRender();
    scene.settle();
    video.display(frame_of(RED));
    EXPECT_EQ(scene.child()->overlayCalls(), built + 1);
    EXPECT_EQ(scene.shownAt(70, 50) & 0xFFFFFFu, 0x0000FFu);
}

TEST(VideoWindowChild, AWhollyCoveredVideoIsHiddenOnceAndShownWhenUncovered)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(frame_of(RED));
    Canvas* cover = painted(scene.root, 10, 10, 100, 80, GREEN);
    scene.settle();

    for (int frame = 0; frame < 3; ++frame) {
        const Qv::Ptr<Tela::iRenderTarget> target = video.getRenderTarget();
        ASSERT_TRUE(target);
        EXPECT_FALSE(target->getRenderer());   // nothing to draw into
        EXPECT_EQ(target->getSize(), XY<int>(0, 0));
    }
    EXPECT_TRUE(video.hidden);
    EXPECT_FALSE(scene.child()->visible());
    EXPECT_EQ(scene.child()->setVisibleCalls(), 1);
    EXPECT_EQ(scene.shownAt(50, 50), GREEN);

    tela_translatecanvas(cover, 150, 0);
    scene.settle();
    video.display(frame_of(BLUE));
    EXPECT_FALSE(video.hidden);
    EXPECT_TRUE(scene.child()->visible());
    EXPECT_EQ(scene.child()->setVisibleCalls(), 2);
    EXPECT_EQ(scene.shownAt(50, 50), BLUE);
}

// Hiding the canvas used to leave its stored visible region as it was, so the
// child window went on showing over whatever took the canvas's place.
TEST(VideoWindowChild, AVideoOnAHiddenCanvasIsHiddenAndComesBackWithIt)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(frame_of(RED));
    tela_unmapcanvas(scene.video);
    scene.settle();
    video.display(frame_of(RED));
    EXPECT_TRUE(video.hidden);
    EXPECT_FALSE(scene.child()->visible());
    EXPECT_NE(scene.shownAt(50, 50), RED);

    tela_mapcanvas(scene.video);
    scene.settle();
    video.display(frame_of(BLUE));
    EXPECT_FALSE(video.hidden);
    EXPECT_EQ(scene.child()->setVisibleCalls(), 2);
    EXPECT_EQ(scene.shownAt(50, 50), BLUE);
}

TEST(VideoWindowChild, OnTheRootCanvasTheVideoIsNeverShapedOrHidden)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.root, Qv::Box<int> { 0, 0, 200, 150 }, VideoWindow::eChildWindow);
    // Covered by every canvas on the root, and still neither cut nor hidden.
    painted(scene.root, 0, 0, 200, 150, GREEN);
    scene.settle();
    video.display(frame_of(RED));
    EXPECT_FALSE(video.hidden);
    EXPECT_TRUE(scene.child()->visible());
    EXPECT_EQ(scene.child()->setVisibleCalls(), 0);
    EXPECT_FALSE(scene.child()->region());
    EXPECT_EQ(scene.child()->overlayCalls(), 0);
}

// The root counts y upward like every canvas, but has no buffer to be flipped
// through: a video over its lower part used to lie as far below the window's
// top as it should have lain above its bottom.
TEST(VideoWindowChild, AVideoOnTheRootLiesWhereItsBoxSaysCountingUpward)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.root, Qv::Box<int> { 0, 0, 200, 50 }, VideoWindow::eChildWindow);
    ASSERT_NE(scene.child(), nullptr);
    EXPECT_EQ(scene.child()->position(), XY<int>(0, 100));
    EXPECT_EQ(scene.child()->size(), XY<int>(200, 50));
    video.display(frame_of(RED));
    EXPECT_EQ(scene.shownAt(150, 100), RED);
    EXPECT_EQ(scene.shownAt(150, 149), RED);
    EXPECT_NE(scene.shownAt(150, 99), RED);
    EXPECT_NE(scene.shownAt(150, 60), RED);

    video.setCanvasArea(Qv::Box<int> { 120, 110, 180, 150 });   // the top right corner
    EXPECT_EQ(scene.child()->position(), XY<int>(120, 0));
    video.display(frame_of(BLUE));
    EXPECT_EQ(scene.shownAt(150, 10), BLUE);
    EXPECT_NE(scene.shownAt(150, 140), BLUE);
}

TEST(VideoWindowComposited, AFrameIsDrawnIntoTheCanvasAndShownOnBothRoads)
{
    for (const auto road : { iImageBase::eHostMemory, iImageBase::eGPU }) {
        SCOPED_TRACE(road);
        Scene scene(road);
        VideoWindow video;
        video.create(scene.video, Qv::Box<int> { 10, 10, 50, 40 }, VideoWindow::eComposited);
        EXPECT_FALSE(video.valid());
        EXPECT_TRUE(scene.window->children().empty());
        video.display(frame_of(RED));
        scene.settle();
        // The box (10, 10)-(50, 40) of the canvas, 60 high, is the window's (30, 40)-(70, 70).
        EXPECT_EQ(scene.window->pixels()->pixelAt(30, 40), RED);
        EXPECT_EQ(scene.window->pixels()->pixelAt(69, 69), RED);
        EXPECT_NE(scene.window->pixels()->pixelAt(29, 50), RED);
        EXPECT_NE(scene.window->pixels()->pixelAt(30, 70), RED);
        EXPECT_EQ(scene.video->offscreenBuffer->location(), road);
    }
}

TEST(VideoWindowModes, SwitchingRoadsMovesTheFramesAndReleasesTheChildAfterTheUpdate)
{
    Scene scene;
    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(frame_of(RED));
    {
        // During an update the child window stays, as a frame may be on its way.
        Tela::UpdateDeferrer update(nullptr, true);
        canvupd_mark_all(scene.video);   // an update with something to show
        video.setDisplayMode(VideoWindow::eComposited);
        EXPECT_FALSE(video.valid());
        EXPECT_EQ(scene.window->children().size(), 1u);
    }
    EXPECT_TRUE(scene.window->children().empty());
    video.display(frame_of(BLUE));
    scene.settle();
    EXPECT_EQ(scene.window->pixels()->pixelAt(50, 50), BLUE);

    video.setDisplayMode(VideoWindow::eChildWindow);
    ASSERT_TRUE(video.valid());
    video.display(frame_of(GREEN));
    EXPECT_EQ(scene.shownAt(50, 50), GREEN);
    EXPECT_EQ(scene.window->pixels()->pixelAt(50, 50), BLUE);   // the canvas keeps its last frame

    // Another non-zero mode makes a child window, yet frames still go into the canvas.
    video.setDisplayMode(VideoWindow::eComposited);
    video.setDisplayMode(static_cast<VideoWindow::eDisplayMode>(2));
    EXPECT_TRUE(video.valid());
    video.display(frame_of(RED));
    scene.settle();
    EXPECT_EQ(scene.window->pixels()->pixelAt(50, 50), RED);
}

TEST(VideoWindowModes, EndingTheWindowLetsTheChildGoAndSettingsReachIt)
{
    Scene scene;
    {
        VideoWindow video;
        video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
        video.setVisible(false);
        EXPECT_FALSE(scene.child()->visible());
        EXPECT_FALSE(video.hidden);   // the caller's choice, not the shape's
        video.setVisible(true);
        video.destroy();
        EXPECT_FALSE(video.valid());
        EXPECT_TRUE(scene.window->children().empty());
        video.setVisible(false);   // no child: nothing to tell
        video.setDisplayMode(VideoWindow::eComposited);   // no child: only the mode is stored
        video.setDisplayMode(VideoWindow::eChildWindow);
        EXPECT_TRUE(video.valid());
    }
    EXPECT_TRUE(scene.window->children().empty());
}

TEST(VideoWindowMisuse, MissingPiecesDropTheFrameQuietly)
{
    Scene scene;
    VideoWindow unused;   // never created
    EXPECT_FALSE(unused.valid());
    EXPECT_EQ(unused.getSize(), XY<int>(0, 0));
    unused.display(frame_of(RED));
    EXPECT_FALSE(unused.getRenderTarget()->getRenderer());

    VideoWindow nowhere;
    nowhere.create(nullptr, scene.whole, VideoWindow::eChildWindow);   // no canvas, so no window to sit in
    EXPECT_FALSE(nowhere.valid());
    nowhere.display(frame_of(RED));
    nowhere.setDisplayMode(VideoWindow::eComposited);
    nowhere.display(frame_of(RED));
    EXPECT_FALSE(nowhere.getRenderTarget()->getRenderer());

    VideoWindow video;
    video.create(scene.video, scene.whole, VideoWindow::eChildWindow);
    video.display(nullptr);   // no frame: the window keeps what it showed
    EXPECT_EQ(scene.shownAt(50, 50), 0xFF000000u);
    video.display(frame_of(RED, { 1, 1 }));   // a tiny frame is stretched to fit
    EXPECT_EQ(scene.shownAt(21, 21), RED);
    EXPECT_EQ(scene.shownAt(99, 79), RED);
    video.setCanvasArea(Qv::Box<int> { 40, 40, 10, 10 });   // upside down: the absolute size
    EXPECT_EQ(video.getSize(), XY<int>(30, 30));
    video.display(frame_of(BLUE));

    // A render target never outlives its frame's lock: the canvas is free again.
    video.setDisplayMode(VideoWindow::eComposited);
    { const auto target = video.getRenderTarget(); }
    EXPECT_TRUE(scene.video->m_lock.tryEnter());
    scene.video->unlock();
}
