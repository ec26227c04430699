#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/CanvasWalk.h"
#include "tela/canvas/Mapping.h"
#include "tela/canvas/Picking.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessServices.h"
#include "tela/events/EventQueue.h"
#include "tela/vector/GraphicsState.h"

#include "support/LiveBlocks.h"
#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <vector>

namespace {

using Order = std::vector<Canvas*>;

// A plain model of one tree: children of each node, oldest first.
struct ModelTree {
    std::map<Canvas*, Order> children;

    void connect(Canvas* child, Canvas* parent, int level)
    {
        for (auto& [node, list] : children)
            list.erase(std::remove(list.begin(), list.end(), child), list.end());
        Order& siblings = children[parent];
        level = std::clamp(level, 0, static_cast<int>(siblings.size()));
        siblings.insert(siblings.begin() + level, child);
        children[child];
    }

    void post_order(Canvas* node, bool youngest_first, Order& out)
    {
        Order list = children[node];
        if (youngest_first)
            std::reverse(list.begin(), list.end());
        for (Canvas* child : list)
            post_order(child, youngest_first, out);
        out.push_back(node);
    }

    void pre_order(Canvas* node, bool youngest_first, Order& out)
    {
        out.push_back(node);
        Order list = children[node];
        if (youngest_first)
            std::reverse(list.begin(), list.end());
        for (Canvas* child : list)
            pre_order(child, youngest_first, out);
    }
};

Order walk(Canvas* root, Canvas* (*next)(Canvas*, Canvas*))
{
    Order out;
    for (Canvas* c = next(root, nullptr); c; c = next(root, c))
        out.push_back(c);
    return out;
}

// Removes whatever a test left as a root of the library state.
struct RootRegistration {
    explicit RootRegistration(Canvas* root) { tela_state().rootWindows.push_back(RootWindowRec(root)); }
    ~RootRegistration() { tela_state().rootWindows.clear(); }
};

} // namespace

TEST(CanvasTree, RandomConnectionsAgreeWithAModelInLinksLevelsAndEveryWalk)
{
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        Canvas* root = tela_newcanvas(nullptr, nullptr);
        ModelTree model;
        model.children[root];
        std::vector<Canvas*> nodes{root};
        for (int i = 0; i < 30; ++i) {
            Canvas* parent = nodes[rng() % nodes.size()];
            const int level = static_cast<int>(rng() % 8) - 2; // some below 0, some beyond the count
            Canvas* child = tela_newcanvas(nullptr, nullptr);
            canvas_connect(child, parent, level);
            model.connect(child, parent, level);
            nodes.push_back(child);
        }
        // Restack some of them: levels count after the canvas has left its place.
        for (int i = 0; i < 20; ++i) {
            Canvas* c = nodes[1 + rng() % (nodes.size() - 1)];
            const int level = static_cast<int>(rng() % 6);
            canvas_set_level(c, level);
            model.connect(c, c->parent, level);
        }

        for (Canvas* node : nodes) {
            const Order& expected = model.children[node];
            ASSERT_EQ(canvas_child_count(node), static_cast<int>(expected.size()));
            EXPECT_EQ(walk(node, canvas_walk_children_oldest_first), expected);
            Order reversed(expected.rbegin(), expected.rend());
            EXPECT_EQ(walk(node, canvas_walk_children), reversed);
            for (std::size_t level = 0; level < expected.size(); ++level) {
                Canvas* child = expected[level];
                EXPECT_EQ(canvas_sibling_level(child), static_cast<int>(level));
                EXPECT_EQ(child->parent, node);
                EXPECT_EQ(walk(child, canvas_walk_older_siblings), Order(reversed.end() - level, reversed.end()));
                EXPECT_EQ(canvas_is_topmost(child), level + 1 == expected.size());
            }
        }

        Order expected;
        model.post_order(root, true, expected);
        EXPECT_EQ(walk(root, canvas_walk_subtree), expected);
        expected.clear();
        model.post_order(root, false, expected);
        EXPECT_EQ(walk(root, canvas_walk_subtree_reverse), expected);
        expected.clear();
        model.pre_order(root, true, expected);
        EXPECT_EQ(walk(root, canvas_walk_postorder_youngest_first), expected);
        EXPECT_EQ(walk(root, canvas_walk_postorder), expected);
        expected.clear();
        model.pre_order(root, false, expected);
        EXPECT_EQ(walk(root, canvas_walk_postorder_oldest_first), expected);

        // A walk over a subtree stays inside it.
        Canvas* inner = nodes[nodes.size() / 2];
        expected.clear();
        model.pre_order(inner, true, expected);
        EXPECT_EQ(walk(inner, canvas_walk_postorder), expected);
        for (Canvas* c : walk(inner, canvas_walk_subtree))
            EXPECT_TRUE(canvas_is_child(inner, c));

        tela_deletecanvas(root);
    }
}

TEST(CanvasTree, KeepTopmostChildrenStayAboveNewAndRaisedOnes)
{
    Canvas* parent = tela_newcanvas(nullptr, nullptr);
    Canvas* first = tela_newcanvas(nullptr, parent);
    EXPECT_EQ(canvas_sibling_level(first), 0);
    Canvas* pinned = tela_newcanvas(nullptr, parent);
    canvasKeepTopmost(pinned, true);
    Canvas* second = tela_newcanvas(nullptr, parent);
    // Born below the keep-topmost child.
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{first, second, pinned}));

    canvas_pop_to_top(first, false);
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{second, first, pinned}));

    canvas_pop_to_top(pinned, false); // already keep-topmost: the very top, flag kept
    EXPECT_TRUE(pinned->canvasFlags & Canvas::KEEP_TOPMOST);
    EXPECT_TRUE(canvas_is_topmost(pinned));

    canvas_pop_to_top(second, true); // forced: the very top, and now pinned too
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{first, pinned, second}));
    EXPECT_TRUE(second->canvasFlags & Canvas::KEEP_TOPMOST);

    canvasKeepTopmost(pinned, false); // just above the highest ordinary child
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{first, pinned, second}));
    EXPECT_FALSE(pinned->canvasFlags & Canvas::KEEP_TOPMOST);
    canvasKeepTopmost(second, false);
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{first, pinned, second}));

    canvas_push_to_bottom(second);
    EXPECT_EQ(walk(parent, canvas_walk_children_oldest_first), (Order{second, first, pinned}));
    tela_deletecanvas(parent);
}

TEST(CanvasTree, MisuseIsReportedAndTheCallCarriesOn)
{
    ReportCapture reports;
    Canvas* a = tela_newcanvas(nullptr, nullptr);
    Canvas* b = tela_newcanvas(nullptr, a);

    canvas_connect(b, nullptr, 0);
    EXPECT_EQ(reports.text(), "canvas_connect: bad parent");
    EXPECT_EQ(b->parent, a);
    reports.clear();

    canvas_connect(b, a, 0);
    a->childCount = 0; // a corrupt count
    canvas_disconnect(b);
    EXPECT_EQ(reports.text(), "canvas_disconnect: underflow on removal of child canvas");
    EXPECT_EQ(b->parent, nullptr);
    EXPECT_EQ(a->youngestChild, nullptr);

    canvas_connect(nullptr, a, 0);
    canvas_set_interest(nullptr, 1);
    canvas_clear_interest(nullptr, 1);
    EXPECT_EQ(canvas_sibling_level(nullptr), 0);
    EXPECT_TRUE(canvas_is_mapped_to_root(nullptr));
    tela_deletecanvas(nullptr);

    a->childCount = 0;
    tela_deletecanvas(a);
    tela_deletecanvas(b);
}

TEST(CanvasTree, ALoopMadeByMisuseIsReportedAndNoWalkGoesRoundForEver)
{
    iRootWindow::InitArgs args;
    args.size = {100, 80};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    const int live_before = tela_live_canvas_count();
    const auto shaped = [&](Canvas* parent) {
        Canvas* c = tela_newcanvas(nullptr, parent);
        c->shape(region_mkrect(TopDownRect{10, 10, 60, 50}));
        c->reshape({50, 40});
        return c;
    };
    Canvas* a = shaped(root);
    Canvas* b = shaped(a);
    Canvas* below = shaped(b);
    Canvas* self = shaped(root);

    ReportCapture reports;
    canvas_connect(a, b, 0); // a below its own child
    EXPECT_EQ(reports.text(), "canvas_connect: attempt to make loop in canvas tree");
    EXPECT_EQ(a->parent, b); // made, as asked
    EXPECT_EQ(b->parent, a);
    reports.clear();
    canvas_connect(self, self, 0); // its own parent
    EXPECT_EQ(reports.text(), "canvas_connect: attempt to make loop in canvas tree");
    EXPECT_EQ(self->parent, self);
    EXPECT_TRUE(canvas_is_in_loop(a));
    EXPECT_TRUE(canvas_is_in_loop(below));
    EXPECT_FALSE(canvas_is_in_loop(root));

    // Walks from inside the loop end; the loop reaches no root.
    EXPECT_EQ(canvas_walk_subtree(a, nullptr), nullptr);
    EXPECT_EQ(canvas_walk_postorder(self, nullptr), nullptr);
    EXPECT_EQ(canvas_walk_ancestors(below, nullptr), nullptr);
    EXPECT_NE(a->getRootParent(), root);
    EXPECT_FALSE(canvas_is_child(root, below));
    EXPECT_FALSE(canvas_is_mapped_to_root(a));
    EXPECT_EQ(canvupd_visible_region(a), nullptr);
    EXPECT_NE(canvas_pick(a, XY<int>{30, 40}), nullptr);
    EXPECT_NE(a->pick(XY<int>{30, 40}), nullptr);

    // Mapping, moving, marking and painting around the loop all return.
    tela_unmapcanvas(a);
    tela_mapcanvas(a);
    tela_translatecanvas(b, 5, 5);
    canvupd_mark_all(below);
    canvupd_mark_all(self);
    root->display(nullptr);
    Headless::services().windowing()->mainLoop().runPending();
    EXPECT_EQ(canvas_pick(nullptr, XY<int>{30, 40}), root); // the loop is out of the root's tree

    // An unrelated canvas comes and goes; then the loops themselves go.
    tela_deletecanvas(shaped(root));
    tela_deletecanvas(a);
    tela_deletecanvas(self);
    EXPECT_EQ(tela_live_canvas_count(), live_before);
    tela_deletecanvas(root);
}

TEST(CanvasTree, InterestBitsAndTimerReset)
{
    Canvas* c = tela_newcanvas(nullptr, nullptr);
    c->lastTimerEventTime = 99;
    canvas_set_interest(c, 0x200);
    EXPECT_EQ(c->lastTimerEventTime, 99u);
    canvas_set_interest(c, 0x1001);
    EXPECT_EQ(c->interest, 0x1301u);
    EXPECT_EQ(c->lastTimerEventTime, 0u);
    canvas_clear_interest(c, 0x1100);
    EXPECT_EQ(c->interest, 0x201u);
    tela_deletecanvas(c);
}

namespace {

std::vector<int> g_destroyed_ids;

struct RecordingCanvas : Canvas {
    RecordingCanvas(Canvas* parent) : Canvas(nullptr, parent) {}
    ~RecordingCanvas() override { g_destroyed_ids.push_back(id); }
};

} // namespace

TEST(CanvasDeletion, DeletesYoungestFirstRecursivelyAndChildrenBeforeTheParent)
{
    g_destroyed_ids.clear();
    auto* root = new RecordingCanvas(nullptr);
    std::vector<int> expected;
    std::function<void(Canvas*, int)> grow = [&](Canvas* parent, int depth) {
        for (int i = 0; i < 3 && depth < 3; ++i)
            grow(new RecordingCanvas(parent), depth + 1);
    };
    grow(root, 0);
    for (Canvas* c = canvas_walk_subtree(root, nullptr); c; c = canvas_walk_subtree(root, c))
        expected.push_back(c->id);

    const int live = tela_live_canvas_count();
    tela_deletecanvas(root);
    EXPECT_EQ(g_destroyed_ids, expected);
    EXPECT_EQ(tela_live_canvas_count(), live - static_cast<int>(expected.size()));
}

TEST(CanvasDeletion, LeavesNoDeadCanvasInFocusCaptureCurrentOrTheSavedState)
{
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    RootRegistration registration(root);
    Canvas* panel = tela_newcanvas(nullptr, root);
    Canvas* button = tela_newcanvas(nullptr, panel);

    event_set_kbd_focus(button);
    tela_state().captureCanvas = button;
    tela_state().currentMouseCanvas = button;
    tela_setcanvas(button);
    tela_gsave(); // the saved entry names the button

    tela_deletecanvas(panel);
    EXPECT_EQ(event_get_kbd_focus(), root);
    EXPECT_EQ(tela_state().captureCanvas, nullptr);
    EXPECT_EQ(tela_state().currentMouseCanvas, nullptr);
    EXPECT_EQ(tela_currentcanvas(), nullptr);
    EXPECT_EQ(root->childCount, 0);
    tela_grestore();
    EXPECT_EQ(tela_currentcanvas(), root);

    // A canvas of another window leaves its saved states to that window's root.
    Canvas* other = tela_newcanvas(nullptr, nullptr);
    Canvas* field = tela_newcanvas(nullptr, other);
    tela_setcanvas(field);
    tela_gsave();
    tela_deletecanvas(field);
    tela_grestore();
    EXPECT_EQ(tela_currentcanvas(), other);
    tela_setcanvas(nullptr);
    tela_deletecanvas(other);

    event_set_kbd_focus(nullptr);
    tela_setcanvas(nullptr);
    tela_deletecanvas(root);
}

TEST(CanvasDeletion, ATreeOfTenThousandCanvasesReturnsEveryBlock)
{
    const auto before = live_blocks();
    {
        Canvas* root = tela_newcanvas(nullptr, nullptr);
        std::mt19937 rng(5);
        std::vector<Canvas*> nodes{root};
        for (int i = 1; i < 10000; ++i)
            nodes.push_back(tela_newcanvas(nullptr, nodes[rng() % nodes.size()]));
        EXPECT_GT(live_blocks(), before + 9999);
        tela_deletecanvas(root);
    }
    EXPECT_EQ(live_blocks(), before);
}
