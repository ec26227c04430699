#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/DisplayPipeline.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/Picking.h"
#include "tela/canvas/PixelCopy.h"
#include "tela/canvas/ScreenGrab.h"
#include "tela/canvas/Tiling.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/canvas/Wipe.h"
#include "tela/colour/CurrentColour.h"
#include "tela/core/Threads.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

RegionPtr rect(int left, int top, int right, int bottom)
{
    return region_mkrect(TopDownRect{left, top, right, bottom});
}

// A region's rectangles, in the order it keeps them; none for no region.
std::vector<std::array<int, 4>> rects_of(const RegionPtr& r)
{
    std::vector<std::array<int, 4>> out;
    if (r) {
        Qv::Vector<TopDownRect> rects;
        r->getRects(rects);
        for (const TopDownRect& t : rects)
            out.push_back({t.left, t.top, t.right, t.bottom});
    }
    return out;
}

int area(const RegionPtr& r)
{
    int total = 0;
    for (const auto& [left, top, right, bottom] : rects_of(r))
        total += (right - left) * (bottom - top);
    return total;
}

// A 200x100 host-road window with its root canvas registered as the first root.
class WindowFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        Qv::Ptr<iRootWindow> window;
        OS()->windowing()->createRootWindow(window, 0);
        m_window = Qv::dynamicCast<Headless::RootWindow>(window);
        m_window->setSize({200, 100});
        root = tela_newcanvas(nullptr, nullptr);
        root->window = window;
        root->shape(rect(0, 0, 200, 100));
        tela_state().rootWindows.push_back(RootWindowRec(root, {}, NormalisedRGB(0.83f, 0.83f, 0.83f)));
    }
    void TearDown() override
    {
        tela_state().rootWindows.clear();
        tela_deletecanvas(root);
        canvupdTrace = 0;
    }

    // A child with a shape, connected on top of `parent`'s children. With a
    // colour it gets a buffer filled with it, which is what the window shows.
    Canvas* child(Canvas* parent, int left, int top, int right, int bottom, std::uint32_t argb = 0)
    {
        Canvas* c = tela_newcanvas(nullptr, parent);
        c->shape(rect(left, top, right, bottom));
        if (argb) {
            c->reshape({right - left, bottom - top});
            Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(argb);
        }
        return c;
    }

    RegionPtr take_invalid()
    {
        RegionPtr invalid = m_window->invalidRegion();
        m_window->takeInvalidRegion();
        return invalid;
    }

    // What the window shows at a point; clear() blanks it so new paint shows.
    std::uint32_t shown(int x, int y) const { return m_window->pixels()->pixelAt(x, y); }
    void clear() { m_window->pixels()->fill(0); }

    static constexpr std::uint32_t RED = 0xFFFF0000, BLUE = 0xFF0000FF, GREEN = 0xFF00FF00;

    Canvas* root = nullptr;
    Qv::Ptr<Headless::RootWindow> m_window;
};

} // namespace

TEST_F(WindowFixture, YoungerHeavyweightSiblingsAndOpaqueChildrenHidePartsOfACanvas)
{
    Canvas* a = child(root, 10, 10, 60, 60);
    Canvas* b = child(root, 40, 40, 90, 90);          // younger, heavyweight: covers
    Canvas* light = child(root, 0, 0, 30, 30);        // younger, lightweight: does not
    light->lightweight = 1;
    Canvas* inner = child(a, 10, 10, 20, 20);         // opaque child: covers
    Canvas* glass = child(a, 20, 20, 30, 30);         // translucent child of a non-root: does not
    glass->setOpacity(0.5);

    const RegionPtr visible = canvupd_visible_region(a);
    EXPECT_EQ(area(visible), 50 * 50 - 20 * 20 - 10 * 10);
    EXPECT_FALSE(visible->contains({45, 45}));
    EXPECT_FALSE(visible->contains({15, 15}));
    EXPECT_TRUE(visible->contains({25, 25}));
    EXPECT_TRUE(visible->contains({12, 25}));

    // From the root every heavyweight child takes its area, translucent or not.
    b->setOpacity(0.5);
    const RegionPtr root_visible = canvupd_visible_region(root);
    EXPECT_FALSE(root_visible->contains({85, 85}));
    EXPECT_TRUE(root_visible->contains({5, 5})); // only the lightweight canvas is there

    tela_unmapcanvas(b);
    EXPECT_TRUE(canvupd_visible_region(a)->contains({45, 45}));
    tela_unmapcanvas(a);
    EXPECT_EQ(canvupd_visible_region(inner), nullptr); // an unmapped ancestor hides everything
}

// Working out a whole pass of visible regions together must give, canvas for
// canvas, exactly the rectangles of asking one canvas at a time: random trees of
// overlapping, shaped, unshaped, unmapped, lightweight and translucent canvases,
// asked for in random order.
TEST_F(WindowFixture, VisibleRegionsOfAPassAreThoseOfEachCanvasAlone)
{
    for (std::uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<std::uint32_t>(n)); };
        std::vector<Canvas*> canvases{root};
        const int count = 10 + below(40);
        for (int i = 0; i < count; ++i) {
            Canvas* parent = canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))];
            const int left = below(180), top = below(90);
            Canvas* c = child(parent, left, top, left + 5 + below(80), top + 5 + below(50));
            if (below(3) == 0) // an L or a ring: shapes need not be rectangles
                c->shape(region_union(c->shape(), rect(left + below(40), top + below(30), left + 60, top + 40)));
            if (below(8) == 0)
                c->shape(nullptr);
            c->mapped = below(6) != 0;
            c->lightweight = below(5) == 0;
            if (below(4) == 0)
                c->setOpacity(0.5);
            c->useAlphaChannel = below(6) == 0;
            canvases.push_back(c);
        }
        std::shuffle(canvases.begin(), canvases.end(), random);
        Tela::VisibleRegions pass;
        for (Canvas* c : canvases) {
            SCOPED_TRACE(c->id);
            const RegionPtr together = pass.of(c), alone = canvupd_visible_region(c);
            ASSERT_EQ(static_cast<bool>(together), static_cast<bool>(alone));
            ASSERT_EQ(rects_of(together), rects_of(alone));
        }
        for (Canvas* c = root->oldestChild; c;) {
            Canvas* next = c->youngerSibling;
            tela_deletecanvas(c);
            c = next;
        }
    }
}

// The see-through pass of a mark: the translucent younger siblings of the
// marked canvas's top-level ancestor (every translucent child, for the root)
// are marked too, oldest first. Marks on random trees of families big enough
// to be indexed must leave the same damage and print the same trace as that
// walk, while translucency is set by hand between marks and shapes and
// stacking change between rounds.
TEST_F(WindowFixture, SeeThroughMarksAreThoseOfWalkingEveryYoungerTopLevelSibling)
{
    const auto walk = [](Canvas* c, const RegionPtr& region) {
        canvupd_mark_region_exact(c, region, true, false);
        Canvas* top = c;
        while (top->parent && top->parent->parent)
            top = top->parent;
        for (Canvas* s = c->isRoot() ? c->oldestChild : top->youngerSibling; s; s = s->youngerSibling)
            if (!s->isOpaque())
                canvupd_mark_region_exact(s, region, true, false);
    };
    std::vector<Canvas*> canvases;
    // Every canvas's damage, then clean again; with the trace printed meanwhile.
    const auto damage_of = [&](auto&& marks) {
        testing::internal::CaptureStdout();
        canvupdTrace = 1;
        marks();
        canvupdTrace = 0;
        std::vector<std::vector<std::array<int, 4>>> damage;
        for (Canvas* c : canvases) {
            damage.push_back(rects_of(c->updateRegion()));
            canvupd_mark_clean(c);
        }
        return std::make_pair(testing::internal::GetCapturedStdout(), damage);
    };
    std::mt19937 random(7);
    const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<std::uint32_t>(n)); };
    const auto place = [&](Canvas* c) {
        const int left = below(190), top = below(90);
        c->shape(below(10) == 0 ? nullptr : rect(left, top, left + 3 + below(60), top + 3 + below(40)));
    };
    canvases.push_back(root);
    for (int i = 0; i < 70; ++i) {
        Canvas* parent = below(4) == 0 ? canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))] : root;
        Canvas* c = tela_newcanvas(nullptr, parent);
        place(c);
        canvases.push_back(c);
    }
    Tela::UpdateDeferrer deferrer(nullptr, false);
    for (int round = 0; round < 12; ++round) {
        SCOPED_TRACE(round);
        for (int i = 0; i < 60; ++i) {
            Canvas* c = canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))];
            // Set straight into the fields, as a client may: nothing is told.
            canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))]->useAlphaChannel = below(4) == 0;
            canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))]->opacity = below(4) == 0 ? 0.5 : 1.0;
            const int left = below(200), top = below(100);
            const RegionPtr region = below(8) == 0 ? rect(0, 0, 200, 100) : rect(left, top, left + 1 + below(50), top + 1 + below(40));
            const auto indexed = damage_of([&] { canvupd_mark_region_exact(c, region, true, true); });
            const auto walked = damage_of([&] { walk(c, region); });
            ASSERT_EQ(indexed.first, walked.first);
            ASSERT_EQ(indexed.second, walked.second);
        }
        // Move, restack and reshape some of the family between rounds.
        for (int i = 0; i < 5; ++i) {
            Canvas* c = canvases[1 + static_cast<std::size_t>(below(static_cast<int>(canvases.size()) - 1))];
            switch (below(3)) {
            case 0: place(c); break;
            case 1: canvas_set_level(c, below(80)); break;
            default: c->translate(static_cast<short>(below(21) - 10), static_cast<short>(below(21) - 10)); break;
            }
        }
        damage_of([] {}); // what the restacking marked
    }
}

TEST_F(WindowFixture, MarksAreBoxesWithinTheShapeAndHeavyweightOnesShowAtOnce)
{
    Canvas* shapeless = tela_newcanvas(nullptr, root);
    canvupd_mark_region_exact(shapeless, rect(0, 0, 10, 10), true, true);
    EXPECT_EQ(shapeless->dirty, 0);

    Canvas* a = child(root, 10, 10, 60, 60, RED);
    canvupd_mark_region_exact(a, rect(100, 0, 120, 10), true, false); // misses the box
    EXPECT_EQ(a->dirty, 0);
    clear();

    // With the refresh on, a heavyweight mark is painted before the call returns,
    // and only over the marked box.
    canvupd_mark_region_exact(a, rect(0, 0, 20, 20), true, false);
    EXPECT_EQ(a->dirty, 0);
    EXPECT_EQ(shown(10, 10), RED);
    EXPECT_EQ(shown(19, 19), RED);
    EXPECT_EQ(shown(20, 20), 0u);
    EXPECT_EQ(shown(9, 9), 0u);

    // A lightweight canvas waits for its draw canvas.
    Canvas* light = child(a, 20, 20, 30, 30);
    light->lightweight = 1;
    canvupd_mark_all(light);
    EXPECT_EQ(light->dirty, 1);
    EXPECT_EQ(canvupd_pending_canvas(), light);
    canvupd_mark_clean(light);
    EXPECT_EQ(canvupd_pending_canvas(), nullptr);
}

TEST_F(WindowFixture, DeferredMarksShowOnceTwoCanvasesWidenThePassAndUnpresentedOnesWait)
{
    Canvas* a = child(root, 10, 10, 60, 60, RED);
    Canvas* b = child(root, 100, 10, 150, 60, BLUE);
    clear();
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        canvupd_mark_all(a);
        EXPECT_EQ(canvupd_pending_canvas(), a);
        canvupd_mark_all(b);
        EXPECT_TRUE(canvupd_pending_several());
        EXPECT_EQ(shown(20, 20), 0u); // nothing yet
    }
    EXPECT_EQ(a->dirty, 0);
    EXPECT_EQ(b->dirty, 0);
    EXPECT_FALSE(canvupd_pending_several());
    EXPECT_EQ(shown(20, 20), RED);
    EXPECT_EQ(shown(120, 20), BLUE);

    // Without presenting, the pending canvas waits for the next deferrer that presents.
    clear();
    {
        Tela::UpdateDeferrer deferrer(nullptr, false);
        canvupd_mark_all(a);
    }
    EXPECT_EQ(canvupd_pending_canvas(), a);
    EXPECT_EQ(a->dirty, 1);
    EXPECT_EQ(shown(20, 20), 0u);
    { Tela::UpdateDeferrer deferrer(nullptr, true); }
    EXPECT_EQ(canvupd_pending_canvas(), nullptr);
    EXPECT_EQ(a->dirty, 0);
    EXPECT_EQ(shown(20, 20), RED);
}

TEST_F(WindowFixture, ADeferrerEndingOnAnotherThreadLeavesThePaintingToTheMainThread)
{
    Canvas* a = child(root, 10, 10, 60, 60, RED);
    clear();
    tela_refresh_off();
    canvupd_mark_all(a);
    int worker_id = 0;
    std::thread([&] {
        worker_id = co_pid();
        tela_refresh_on(true);
    }).join();
    EXPECT_NE(worker_id, 0);
    EXPECT_EQ(co_pid(), 0);
    EXPECT_EQ(canvupd_pending_canvas(), a);
    EXPECT_EQ(shown(20, 20), 0u);
    { Tela::UpdateDeferrer deferrer(nullptr, true); }
    EXPECT_EQ(shown(20, 20), RED);
}

TEST_F(WindowFixture, ARectangleAlreadyDamagedIsNotMarkedAgain)
{
    Canvas* a = child(root, 10, 10, 60, 60);
    canvupdTrace = 1; // trace without forcing the refresh
    {
        Tela::UpdateDeferrer deferrer(nullptr, false);
        testing::internal::CaptureStdout();
        canvupd_mark_rect(a, 10, 50, 50, 90); // window rows 10..50
        canvupd_mark_rect(a, 20, 60, 30, 70); // inside the damage: no trace
        std::string trace = testing::internal::GetCapturedStdout();
        EXPECT_EQ(trace, "CANVUPD: canvas " + std::to_string(a->id) + " [parent " + std::to_string(root->id) +
                             "], reason 1\n");
        canvupd_mark_rect(a, 40, 40, 60, 45); // makes the damage non-rectangular
        testing::internal::CaptureStdout();
        canvupd_mark_rect(a, 20, 60, 30, 70); // marked again now
        trace = testing::internal::GetCapturedStdout();
        EXPECT_FALSE(trace.empty());
        canvupd_mark_clean(a);
    }
    canvupdTrace = 0;
}

TEST_F(WindowFixture, ANewCanvasIsMappedWithoutMarksButUnmappingExposesWhatLiesBeneath)
{
    Canvas* a = child(root, 10, 10, 60, 60, RED);
    Canvas* b = child(nullptr, 20, 20, 40, 40);
    b->window = root->window;
    b->reshape({20, 20});
    Qv::dynamicCast<Headless::HostImage>(b->offscreenBuffer)->fill(BLUE);
    clear();
    canvas_connect(b, root, 5); // born mapped: nothing is marked, nothing shows
    EXPECT_EQ(shown(25, 25), 0u);

    tela_unmapcanvas(b); // what lay beneath is shown again
    EXPECT_EQ(shown(25, 25), RED);
    tela_mapcanvas(b);
    EXPECT_EQ(shown(25, 25), BLUE);

    tela_exiting(true);
    tela_unmapcanvas(b); // no repaint during teardown
    EXPECT_EQ(b->mapped, 1);
    tela_exiting(false);

    // Mapping under an unmapped parent only sets the flag.
    tela_unmapcanvas(a);
    Canvas* inner = child(a, 15, 15, 25, 25);
    tela_unmapcanvas(inner);
    clear();
    tela_mapcanvas(inner);
    EXPECT_EQ(shown(20, 20), 0u);
    EXPECT_EQ(inner->mapped, 1);
}

TEST_F(WindowFixture, StickyGroupsMoveTogetherAndDissolveBelowTwo)
{
    Canvas* a = child(root, 0, 0, 10, 10);
    Canvas* b = child(root, 20, 0, 30, 10);
    Canvas* c = child(root, 40, 0, 50, 10);
    tela_stickcanvases(a, b);
    tela_stickcanvases(c, a);
    EXPECT_EQ(c->stickyId, 0);
    tela_translatecanvas(b, 5, 0);
    EXPECT_TRUE(a->shape()->contains({12, 5}));
    EXPECT_TRUE(c->shape()->contains({52, 5}));

    tela_unstickcanvas(a); // one of three: the other two stay together
    EXPECT_EQ(a->stickyId, -1);
    EXPECT_EQ(b->stickyId, 0);
    tela_unstickcanvas(b); // one of two: both are freed
    EXPECT_EQ(c->stickyId, -1);
    tela_stickcanvases(a, a); // ignored
    EXPECT_EQ(tela_get_sticky_id(a), -1);
    EXPECT_EQ(tela_get_sticky_id(nullptr), -1);
}

TEST_F(WindowFixture, PickingPrefersHeavyweightChildrenWhateverTheirStacking)
{
    Canvas* heavy = child(root, 10, 10, 60, 60);
    Canvas* light = child(root, 10, 10, 60, 60); // younger, on top, but lightweight
    light->lightweight = 1;
    // Screen coordinates are bottom-up: window row 20 is y 80.
    EXPECT_EQ(canvas_pick(nullptr, {20, 80}), heavy);
    heavy->setPickable(false);
    EXPECT_EQ(canvas_pick(nullptr, {20, 80}), light);
    EXPECT_EQ(canvas_pick(nullptr, {500, 80}), nullptr); // outside the root
    EXPECT_EQ(canvas_pick(heavy, {500, 80}), heavy);    // a given start is not tested
}

TEST_F(WindowFixture, TheCompositedRoadAsksForOneFrameOverTheDamagedBox)
{
    m_window->setDisplayLocation(iImageBase::eGPU);
    Canvas* a = child(root, 10, 10, 20, 20);
    Canvas* b = child(root, 50, 50, 60, 60);
    Canvas* hidden = child(root, 150, 80, 160, 90);
    take_invalid();
    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        canvupd_mark_all(a);
        canvupd_mark_all(b);
        canvupd_mark_all(hidden);
        hidden->mapped = 0; // dirty but unmapped: cleaned, not shown
    }
    const RegionPtr frame = take_invalid();
    ASSERT_TRUE(frame);
    Qv::Box<int> box;
    frame->getBox(box);
    EXPECT_EQ(box, (Qv::Box<int>{10, 10, 60, 60}));
    EXPECT_EQ(hidden->dirty, 0);

    {
        Tela::UpdateDeferrer deferrer(nullptr, true);
        canvupd_mark_all(hidden);
    }
    EXPECT_EQ(take_invalid(), nullptr); // no mapped canvas was dirty: no frame
}

TEST_F(WindowFixture, WipingFillsTheCurrentCanvasWithTheCurrentColourAndShowsIt)
{
    Canvas* a = child(root, 10, 10, 60, 60, RED);
    Canvas* light = child(a, 20, 20, 40, 40); // draws into a's buffer
    light->lightweight = 1;
    tela_setcanvas(light);
    tela_setcolour(0xFF0000); // packed: blue in bits 16-23
    tela_wipecanvas();
    EXPECT_EQ(shown(25, 25), BLUE);
    EXPECT_EQ(shown(15, 15), 0u); // outside the wiped canvas nothing was shown
    auto buffer = Qv::dynamicCast<Headless::HostImage>(a->offscreenBuffer);
    EXPECT_EQ(buffer->pixelAt(5, 5), RED);   // the owner's own pixels stay
    EXPECT_EQ(buffer->pixelAt(15, 15), BLUE); // the lightweight child's are in its buffer
    // A heavyweight canvas owns its buffer: a lightweight parent does not cut it.
    Canvas* loose = child(root, 100, 10, 140, 50);
    loose->lightweight = 1;
    Canvas* heavy = child(loose, 120, 20, 170, 60, RED);
    tela_setcanvas(heavy);
    tela_wipecanvas();
    EXPECT_EQ(Qv::dynamicCast<Headless::HostImage>(heavy->offscreenBuffer)->pixelAt(45, 5), BLUE);
    tela_setcanvas(nullptr);
    tela_wipecanvas(); // no current canvas: nothing happens
    tela_setcolour(0);
}

TEST_F(WindowFixture, TurningLightweightHandsThePixelsToTheParentsBuffer)
{
    Canvas* parent = child(root, 10, 10, 110, 90, BLUE);
    Canvas* inner = child(parent, 30, 20, 60, 50, RED);
    auto parent_pixels = [&](int x, int y) {
        return Qv::dynamicCast<Headless::HostImage>(parent->offscreenBuffer)->pixelAt(x - 10, y - 10);
    };
    tela_setlightweight(inner, 1);
    EXPECT_EQ(inner->lightweight, 1);
    EXPECT_EQ(parent_pixels(30, 20), RED);
    EXPECT_EQ(parent_pixels(59, 49), RED);
    EXPECT_EQ(parent_pixels(60, 50), BLUE);
    EXPECT_EQ(parent_pixels(29, 19), BLUE);
    EXPECT_TRUE(inner->offscreenBuffer); // kept for turning back

    // A copy whose region hangs over the source's left and top edges lands as
    // far further in, and only what lies in both shapes moves.
    Canvas* source = child(root, 120, 10, 140, 30, GREEN);
    canvas_pixcopy_region(source, parent, rect(115, 5, 125, 15), -100, 0);
    EXPECT_EQ(parent_pixels(20, 10), GREEN);   // source pixel (120, 10), moved 100 left
    EXPECT_EQ(parent_pixels(24, 14), GREEN);
    EXPECT_EQ(parent_pixels(19, 10), BLUE);    // over the edge: nothing to copy
    EXPECT_EQ(parent_pixels(25, 15), BLUE);
}

namespace {

// A client that paints itself straight onto the window, and counts it.
class UnbufferedClient final : public CanvasClient {
public:
    EventHandler::eResult handleEvent(const Event&) override { return eNotHandled; }
    void drawUnbuffered(Qv::Ptr<iRegion> area) override { areas.push_back(area); }
    std::vector<Qv::Ptr<iRegion>> areas;
};

} // namespace

TEST_F(WindowFixture, AnUnbufferedCanvasPaintsItselfUnlessItIsSeeThrough)
{
    UnbufferedClient client;
    Canvas* c = tela_newcanvas(&client, root);
    c->shape(rect(10, 10, 40, 40));
    c->reshape({30, 30});
    Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer)->fill(RED);
    c->setDrawMethod(Canvas::eUnbuffered);
    clear();
    canvupd_mark_all(c);
    ASSERT_EQ(client.areas.size(), 1u);
    Qv::Box<int> box;
    client.areas[0]->getBox(box);
    EXPECT_EQ(box, (Qv::Box<int>{10, 10, 40, 40}));
    EXPECT_EQ(shown(20, 20), 0u); // the buffer is not blitted

    // Translucent: composed from its buffer over what lies beneath; the
    // client is not asked.
    c->setOpacity(0.5);
    canvupd_mark_all(c);
    EXPECT_EQ(client.areas.size(), 1u);
    EXPECT_NE(shown(20, 20), 0u);
    tela_deletecanvas(c);
}

TEST_F(WindowFixture, TilesAndReadsBackGoThroughTheCanvasCoordinates)
{
    Canvas* c = child(root, 10, 10, 40, 30, BLUE);
    tela_placecanvas(c, TopDownRect{10, 10, 40, 30}); // where its shape is: 10 from the left, 70 up
    Qv::Ptr<Headless::HostImage> tile = Headless::HostImage::create({3, 1});
    const std::uint32_t stripes[3] = {RED, GREEN, BLUE};
    std::memcpy(tile->data(), stripes, sizeof stripes);
    auto buffer = Qv::dynamicCast<Headless::HostImage>(c->offscreenBuffer);

    // The canvas sits at x 10: its own grid starts one pixel into a tile.
    tela_textureRect(c, tile, nullptr, eTextureCanvas);
    EXPECT_EQ(buffer->pixelAt(0, 0), GREEN);
    EXPECT_EQ(buffer->pixelAt(29, 19), RED);  // the whole canvas is covered, to its last column
    EXPECT_EQ(shown(10, 10), GREEN);          // and shown
    tela_textureRect(c, tile, nullptr, eTextureBox);
    EXPECT_EQ(buffer->pixelAt(0, 0), RED);

    // A bottom-up box of the canvas read back: its top-left is 5 in, 10 down.
    buffer->fill(BLUE);
    std::memcpy(buffer->data() + 10 * buffer->stride() + 5 * 4, &RED, 4);
    const Qv::Ptr<iImage> part = tela_getCanvasPixels(c, Qv::Box<double>{5, 5, 15, 10});
    ASSERT_TRUE(part);
    XY<int> size;
    part->getSize(size);
    EXPECT_EQ(size, (XY<int>{10, 5}));
    EXPECT_EQ(Qv::dynamicCast<Headless::HostImage>(part)->pixelAt(0, 0), RED);
    EXPECT_EQ(Qv::dynamicCast<Headless::HostImage>(part)->pixelAt(1, 0), BLUE);
    EXPECT_FALSE(tela_getCanvasPixels(nullptr, Qv::Box<double>{0, 0, 1, 1}));
    tela_deletecanvas(c);
}

// The stored visible region is what a video window and the composited road
// read between paints, so a change to the tree must leave it right on every
// canvas whose share of the window it changes, whether or not anything there
// needs painting.
class StoredVisibleRegions : public WindowFixture {
protected:
    // Every heavyweight canvas: its stored region against a fresh one, which
    // is empty for a canvas hidden itself or by an ancestor.
    void expectAllCurrent()
    {
        for (Canvas* c = canvas_walk_subtree(root, nullptr); c; c = canvas_walk_subtree(root, c)) {
            if (c->lightweight)
                continue;
            SCOPED_TRACE(c->id);
            EXPECT_TRUE(region_eq(c->visibleRegion(), canvupd_visible_region(c)));
        }
    }
    void storeAll()
    {
        for (Canvas* c = canvas_walk_subtree(root, nullptr); c; c = canvas_walk_subtree(root, c))
            c->visibleRegion(canvupd_visible_region(c));
    }
};

// Moving onto canvases without leaving any of their area uncovered used to
// mark nothing on them, and so they kept the region they had before.
TEST_F(StoredVisibleRegions, ACanvasMovedOverOthersShrinksTheirsWithoutRepaintingThem)
{
    Canvas* below = child(root, 60, 10, 140, 90, RED);
    Canvas* on_below = child(below, 100, 20, 130, 50, GREEN);
    Canvas* holder = child(root, 150, 10, 190, 50, GREEN);
    Canvas* inner = child(holder, 195, 60, 199, 64, BLUE); // outside its parent: shows nothing
    Canvas* mover = child(root, 0, 10, 40, 40, BLUE);
    storeAll();
    clear();

    tela_translatecanvas(mover, 70, 0); // now (70, 10)-(110, 40): the area it left was bare
    expectAllCurrent();
    EXPECT_FALSE(below->visibleRegion()->contains({80, 20}));
    EXPECT_FALSE(on_below->visibleRegion()->contains({105, 25}));
    EXPECT_EQ(shown(120, 60), 0u); // covered, not repainted

    tela_translatecanvas(inner, -30, 40); // into its parent from outside it
    expectAllCurrent();
    EXPECT_FALSE(holder->visibleRegion()->contains({166, 21}));
}

// Random moves, reshapes, restacking, hiding and showing over a random tree.
TEST_F(StoredVisibleRegions, StayCurrentThroughEveryKindOfChange)
{
    for (std::uint32_t seed = 0; seed < 30; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<std::uint32_t>(n)); };
        std::vector<Canvas*> canvases;
        for (int i = 0; i < 12; ++i) {
            Canvas* parent = i < 4 || below(2) == 0 ? root : canvases[static_cast<std::size_t>(below(i))];
            const int left = below(160), top = below(70);
            Canvas* c = child(parent, left, top, left + 10 + below(60), top + 10 + below(40), RED);
            if (below(4) == 0)
                c->setOpacity(0.5);
            canvases.push_back(c);
        }
        storeAll();
        for (int step = 0; step < 40; ++step) {
            SCOPED_TRACE(step);
            Canvas* c = canvases[static_cast<std::size_t>(below(static_cast<int>(canvases.size())))];
            switch (below(4)) {
            case 0:
                tela_translatecanvas(c, below(61) - 30, below(41) - 20);
                break;
            case 1: {
                const int left = below(160), top = below(70);
                tela_placecanvas(c, TopDownRect{left, top, left + 10 + below(60), top + 10 + below(40)}, nullptr);
                break;
            }
            case 2:
                canvas_set_level(c, below(c->parent->childCount));
                break;
            default:
                if (c->mapped)
                    tela_unmapcanvas(c);
                else
                    tela_mapcanvas(c);
            }
            expectAllCurrent();
            if (HasFailure())
                return;
        }
        for (Canvas* c = root->oldestChild; c;) {
            Canvas* next = c->youngerSibling;
            tela_deletecanvas(c);
            c = next;
        }
    }
}
