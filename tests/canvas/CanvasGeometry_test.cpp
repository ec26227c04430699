// Where a canvas is: its matrix, shape and buffer, how placing, reshaping and
// moving set them, and which canvases are marked for the area a change uncovers.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/DisplayPipeline.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

RegionPtr rect(int left, int top, int right, int bottom)
{
    return region_mkrect(TopDownRect{left, top, right, bottom});
}

bool covers(const RegionPtr& region, int x, int y)
{
    return region && region->contains({x, y});
}

Qv::Box<int> box_of(const Canvas* canvas)
{
    Qv::Box<int> box;
    if (canvas->shape())
        canvas->shape()->getBox(box);
    return box;
}

XY<int> buffer_size(const Canvas* canvas)
{
    XY<int> size;
    if (canvas->offscreenBuffer)
        canvas->offscreenBuffer->getSize(size);
    return size;
}

// A 200x100 window whose root is the first root. Marks made inside a
// Tela::UpdateDeferrer stay in the update regions until it ends, which is
// where these tests read them.
class CanvasGeometry : public ::testing::Test {
protected:
    void SetUp() override
    {
        Qv::Ptr<iRootWindow> window;
        OS()->windowing()->createRootWindow(window, 0);
        Qv::dynamicCast<Headless::RootWindow>(window)->setSize({200, 100});
        root = tela_newcanvas(nullptr, nullptr);
        root->window = window;
        root->shape(rect(0, 0, 200, 100));
        tela_state().rootWindows.push_back(RootWindowRec(root, {}, NormalisedRGB(0.5f, 0.5f, 0.5f)));
    }
    void TearDown() override
    {
        tela_state().rootWindows.clear();
        tela_deletecanvas(root);
    }

    Canvas* placed(Canvas* parent, int left, int top, int right, int bottom)
    {
        Canvas* c = tela_newcanvas(nullptr, parent);
        tela_placecanvas(c, TopDownRect{left, top, right, bottom});
        return c;
    }

    // Shows what is marked and starts afresh, so a test sees only its own marks.
    void settle()
    {
        tela_display_dirty_regions(nullptr);
        for (Canvas* c = canvas_walk_subtree(root, nullptr); c; c = canvas_walk_subtree(root, c))
            c->updateRegion(nullptr);
    }

    Canvas* root = nullptr;
};

} // namespace

TEST_F(CanvasGeometry, PlacingSetsMatrixInverseShapeAndBufferTogether)
{
    Canvas* c = placed(root, 20, 10, 70, 40); // 50 x 30, its bottom 60 above the window's
    EXPECT_EQ(c->matrix[0][2], 20);
    EXPECT_EQ(c->matrix[1][2], 60);
    EXPECT_EQ(c->inverseMatrix[0][2], -20);
    EXPECT_EQ(c->inverseMatrix[1][2], -60);
    EXPECT_EQ(box_of(c), (Qv::Box<int>{20, 10, 70, 40}));
    EXPECT_EQ(buffer_size(c), (XY<int>{50, 30}));
    EXPECT_EQ(c->getExtents(), (Qv::Box<int>{20, 60, 70, 90})); // the same place, read bottom up

    // An outline is given in the rectangle's own coordinates and cut from it.
    Canvas* cut = tela_newcanvas(nullptr, root);
    tela_placecanvas(cut, TopDownRect{100, 50, 140, 70}, rect(0, 0, 20, 20));
    EXPECT_TRUE(cut->shape()->contains({100, 50}));
    EXPECT_FALSE(cut->shape()->contains({125, 50}));

    // Moving it again repaints where it was and where it goes.
    settle();
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        tela_placecanvas(c, TopDownRect{120, 10, 170, 40});
        EXPECT_TRUE(covers(root->updateRegion(), 30, 20));
        EXPECT_TRUE(covers(root->updateRegion(), 130, 20));
    }
    EXPECT_EQ(c->matrix[0][2], 120);
    EXPECT_EQ(c->inverseMatrix[0][2], -120);
}

TEST_F(CanvasGeometry, PlacingRefusesWhatItCannotPlaceAndLeavesItAlone)
{
    ReportCapture reports;
    Canvas* loose = tela_newcanvas(nullptr, nullptr);
    EXPECT_EQ(tela_placecanvas(loose, TopDownRect{0, 0, 10, 10}), 0);
    EXPECT_EQ(reports.text(), "tela_placecanvas: the canvas has no parent\n");
    EXPECT_EQ(loose->shape(), nullptr);
    tela_deletecanvas(loose);

    reports.clear();
    Canvas* c = placed(root, 10, 10, 20, 20);
    EXPECT_EQ(tela_placecanvas(c, TopDownRect{50, 50, 50, 60}), 0);
    EXPECT_EQ(reports.text(), "tela_placecanvas: empty rectangle\n");
    EXPECT_EQ(box_of(c), (Qv::Box<int>{10, 10, 20, 20}));
    EXPECT_EQ(tela_placecanvas(nullptr, TopDownRect{0, 0, 10, 10}), 0);
}

TEST_F(CanvasGeometry, SettingTheMatrixStoresItWithItsTrueInverse)
{
    Canvas* c = tela_newcanvas(nullptr, root);
    const double matrix[3][3] = {{2, 0, 10}, {0, 4, -20}, {0, 0, 1}};
    tela_setcanvasmatrix(c, matrix);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            EXPECT_EQ(c->matrix[row][column], matrix[row][column]);
            double product = 0;
            for (int k = 0; k < 3; ++k)
                product += c->matrix[row][k] * c->inverseMatrix[k][column];
            EXPECT_NEAR(product, row == column ? 1.0 : 0.0, 1e-12) << row << ", " << column;
        }
    // Undoing the scale as well as the move: a negated translation alone is not an inverse.
    EXPECT_DOUBLE_EQ(c->inverseMatrix[0][2], -5);
    EXPECT_DOUBLE_EQ(c->inverseMatrix[1][2], 5);
    tela_setcanvasmatrix(nullptr, matrix); // ignored
}

TEST_F(CanvasGeometry, ReshapingPlacesTheRegionByTheCurrentMatrixAndRepaintsBothAreas)
{
    Canvas* c = placed(root, 10, 10, 30, 30);
    settle();
    Tela::StateSaver saved;
    tela_setmatrix(1, 0, 0, 1, 49.5, 20.4); // rounds to 50 across, 20 up
    const RegionPtr region = rect(0, 0, 40, 30);
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        EXPECT_EQ(tela_reshapecanvas(c, region), 1);
        // The caller's region itself is moved and kept: its bottom lies 20 up.
        EXPECT_EQ(c->shape().get(), region.get());
        EXPECT_EQ(box_of(c), (Qv::Box<int>{50, 50, 90, 80}));
        EXPECT_EQ(buffer_size(c), (XY<int>{40, 30}));
        EXPECT_TRUE(covers(root->updateRegion(), 15, 15)); // where it was
        EXPECT_TRUE(covers(root->updateRegion(), 60, 60)); // where it is
    }
    EXPECT_EQ(c->matrix[0][2], 49.5); // the matrix is the current one, unrounded
    EXPECT_DOUBLE_EQ(c->inverseMatrix[1][2], -20.4);

    // Halves round away from zero on both sides.
    tela_setmatrix(1, 0, 0, 1, -2.5, 2.5);
    tela_reshapecanvas(c, rect(0, 0, 10, 10));
    EXPECT_EQ(box_of(c), (Qv::Box<int>{-3, 87, 7, 97}));

    // No region: nothing changes.
    EXPECT_EQ(tela_reshapecanvas(c, RegionPtr()), 0);
    EXPECT_EQ(box_of(c), (Qv::Box<int>{-3, 87, 7, 97}));
}

TEST_F(CanvasGeometry, MovingUncoversOnlyWhatTheCanvasLeavesAndTakesItsGroupAlong)
{
    Canvas* c = placed(root, 10, 10, 50, 50);
    Canvas* child = placed(c, 20, 20, 30, 30);
    Canvas* mate = placed(root, 100, 10, 120, 30);
    Canvas* stranger = placed(root, 150, 10, 170, 30);
    tela_stickcanvases(c, mate);
    settle();
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        tela_translatecanvtree(c, 10, 0, 12345); // the last number is not read
        // The strip it left is repainted from beneath; what it still covers is not.
        EXPECT_TRUE(covers(root->updateRegion(), 12, 30));
        EXPECT_FALSE(covers(root->updateRegion(), 30, 30));
        // The canvas and its heavyweight child repaint over their new shapes.
        EXPECT_TRUE(covers(c->updateRegion(), 59, 49));
        EXPECT_TRUE(covers(child->updateRegion(), 35, 25));
    }
    tela_translatecanvtree(c, 0, -5, 0); // down 5: canvas y runs up, window y down
    EXPECT_EQ(box_of(c), (Qv::Box<int>{20, 15, 60, 55}));
    EXPECT_EQ(c->matrix[1][2], 45);
    EXPECT_EQ(c->inverseMatrix[1][2], -45);
    EXPECT_EQ(box_of(child), (Qv::Box<int>{30, 25, 40, 35}));
    EXPECT_EQ(box_of(mate), (Qv::Box<int>{110, 15, 130, 35}));      // same group
    EXPECT_EQ(box_of(stranger), (Qv::Box<int>{150, 10, 170, 30})); // no group

    // A lightweight canvas moves without a mark: its parent repaints it.
    Canvas* light = tela_newcanvas(nullptr, root);
    light->lightweight = 1;
    tela_placecanvas(light, TopDownRect{10, 60, 30, 80});
    settle();
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        tela_translatecanvtree(light, 5, 0, 0);
        EXPECT_EQ(root->updateRegion(), nullptr);
    }
    EXPECT_EQ(box_of(light), (Qv::Box<int>{15, 60, 35, 80}));

    // A root does not move.
    tela_translatecanvtree(root, 5, 5, 0);
    EXPECT_EQ(root->matrix[0][2], 0);
    tela_translatecanvtree(nullptr, 5, 5, 0);
}

TEST_F(CanvasGeometry, ExposingMarksWhatLiesBeneathAndNothingAbove)
{
    Canvas* older = placed(root, 0, 0, 100, 100);
    Canvas* older_child = placed(older, 10, 10, 60, 60);
    Canvas* c = placed(root, 20, 20, 80, 80);
    Canvas* younger = placed(root, 30, 30, 90, 90);
    settle();
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        canvas_expose(c, rect(40, 40, 50, 50));
        EXPECT_TRUE(covers(older->updateRegion(), 45, 45));
        EXPECT_TRUE(covers(older_child->updateRegion(), 45, 45));
        EXPECT_TRUE(covers(root->updateRegion(), 45, 45));
        EXPECT_EQ(younger->updateRegion(), nullptr); // above: nothing was uncovered for it
        EXPECT_EQ(c->updateRegion(), nullptr);
    }

    // Beneath a lightweight parent lies the buffer it draws into.
    Canvas* holder = placed(root, 100, 0, 200, 100);
    Canvas* light = placed(holder, 110, 10, 190, 90);
    light->lightweight = 1;
    Canvas* top = placed(light, 120, 20, 180, 80);
    settle();
    {
        Tela::UpdateDeferrer hold(nullptr, true);
        canvas_expose(top, rect(130, 30, 140, 40));
        EXPECT_TRUE(covers(holder->updateRegion(), 135, 35));
    }
}

TEST_F(CanvasGeometry, ACopiedCanvasTakesEveryFieldButHasALockOfItsOwn)
{
    Canvas* c = placed(root, 10, 10, 50, 50);
    c->stickyId = 3;
    c->setOpacity(0.25);
    c->incRevision();
    const int alive = tela_live_canvas_count();
    {
        Canvas copy(*c);
        EXPECT_EQ(tela_live_canvas_count(), alive + 1);
        EXPECT_EQ(copy.parent, root);
        EXPECT_EQ(copy.id, c->id);
        EXPECT_EQ(copy.matrix[1][2], c->matrix[1][2]);
        EXPECT_EQ(copy.stickyId, 3);
        EXPECT_EQ(copy.getOpacity(), 0.25);
        EXPECT_EQ(copy.getRevision(), 1);
        EXPECT_EQ(copy.shape().get(), c->shape().get()); // shared, counted
        EXPECT_EQ(copy.offscreenBuffer.get(), c->offscreenBuffer.get());

        // The original's lock, held elsewhere, does not hold the copy.
        CriticalSection::Guard held(c->m_lock);
        bool entered = false;
        std::thread other([&] {
            entered = copy.m_lock.tryEnter();
            if (entered)
                copy.unlock();
        });
        other.join();
        EXPECT_TRUE(entered);
    }
    EXPECT_EQ(tela_live_canvas_count(), alive);
}
