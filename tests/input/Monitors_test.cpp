// Monitors, placement on the desktop, and the flips between the library's
// coordinates and the window's.

#include "tela/state/TelaState.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/Coordinates.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/core/Config.h"
#include "tela/input/Monitors.h"
#include "tela/vector/Regions.h"

#include "core/TemporaryDirectory.h"
#include "headless/HeadlessServices.h"

#include <gtest/gtest.h>

namespace {

iSystemInfo::MonitorInfo monitor(int x1, int y1, int x2, int y2, bool primary = false)
{
    iSystemInfo::MonitorInfo info;
    info.screenBox = info.desktopBox = Qv::Box<int>{x1, y1, x2, y2};
    info.isPrimary = primary ? 1 : 0;
    return info;
}

class Desktop : public ::testing::Test {
protected:
    void TearDown() override { Headless::services().systemInfo()->clearMonitors(); }
    void use(std::initializer_list<iSystemInfo::MonitorInfo> monitors)
    {
        Headless::services().systemInfo()->setMonitors(Qv::Vector<iSystemInfo::MonitorInfo>(monitors));
    }
};

} // namespace

TEST_F(Desktop, MonitorsAnswerByHalfOpenBoxesAndTheDesktopSpansThemAll)
{
    use({monitor(-1280, 0, 0, 1024), monitor(0, 0, 1920, 1080, true), monitor(1920, 0, 3840, 1080)});
    EXPECT_EQ(tela_getNumMonitors(), 3u);
    EXPECT_EQ(tela_getDesktopDimensions(), (XY<int>{5120, 1080}));
    EXPECT_EQ(tela_getMonitorWidth(), 5120u); // halved only for exactly two
    EXPECT_EQ(Tela::getPrimaryMonitor().desktopBox.x1, 0);
    EXPECT_EQ(Tela::getMonitorAtPos({1919, 5}).desktopBox.x1, 0);
    EXPECT_EQ(Tela::getMonitorAtPos({1920, 5}).desktopBox.x1, 1920); // the right edge is outside
    EXPECT_EQ(Tela::getMonitorAtPos({0, 2000}).desktopBox.width(), 0);
    // Measured from the first monitor's corner; outside all, the last one.
    EXPECT_EQ(tela_getScreenContainingPos({100, 10}).x1, -1280);
    EXPECT_EQ(tela_getScreenContainingPos({99999, 10}).x1, 1920);

    use({monitor(0, 0, 1000, 800), monitor(1000, 0, 2000, 800)});
    EXPECT_EQ(tela_getMonitorWidth(), 1000u);
    // A monitor reporting an empty box still counts with its corners.
    use({monitor(0, 0, 0, 0), monitor(100, 100, 1920, 1080, true)});
    EXPECT_EQ(tela_getDesktopDimensions(), (XY<int>{1920, 1080}));
    use({});
    EXPECT_EQ(tela_getDesktopDimensions(), (XY<int>{0, 0}));
    EXPECT_EQ(Tela::getPrimaryMonitor().screenBox.width(), 0);
}

TEST_F(Desktop, OneDisplayCanStandInForTwo)
{
    TemporaryDirectory settings;
    TemporaryDirectory::write(settings.file("config.json"), R"({"virtual_twin_monitors": 1})");
    Qv::reloadConfigurationFrom(settings.path().string());
    use({monitor(0, 0, 1921, 1080, true)});
    std::vector<iSystemInfo::MonitorInfo> monitors; // the application's own container
    Tela::getMonitors(monitors);
    Qv::reloadConfigurationFrom("");
    ASSERT_EQ(monitors.size(), 2u);
    EXPECT_EQ(monitors[0].name, String("Left"));
    EXPECT_EQ(monitors[0].screenBox, (Qv::Box<int>{0, 0, 960, 1080}));
    EXPECT_EQ(monitors[0].isPrimary, 1);
    EXPECT_EQ(monitors[1].name, String("Right"));
    EXPECT_EQ(monitors[1].desktopBox, (Qv::Box<int>{960, 0, 1921, 1080}));
    Tela::getMonitors(monitors);
    EXPECT_EQ(monitors.size(), 1u);
}

TEST_F(Desktop, PanelsGoOnTheMousesScreenAndStayInsideTheWindow)
{
    use({monitor(0, 0, 1920, 1080, true), monitor(1920, 0, 3840, 1080)});
    iRootWindow::InitArgs args;
    args.position = {1420, 0}; // 500 pixels on the first screen, 1500 on the second
    args.size = {2000, 800};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);

    tela_state().lastMouseEvent.pos = {1000, 400}; // on the second screen
    // Centred on the part of the window there: x 500 to 2000 of the window.
    EXPECT_EQ(tela_getPosForWindow(XY<int>{300, 200}), (XY<int>{500 + (1500 - 300) / 2, 300}));
    tela_state().lastMouseEvent.pos = {100, 400}; // on the first: 500 wide
    EXPECT_EQ(tela_getPosForWindow(XY<int>{300, 200}).x, (500 - 300) / 2);
    // Too wide for the first screen's part: beside it, on the right.
    EXPECT_EQ(tela_getPosForWindow(XY<int>{600, 200}).x, 500);
    // Sizes are cut to 16 bits: 70000 acts as 4464.
    EXPECT_EQ(tela_getPosForWindow(XY<int>{70000, 100}), tela_getPosForWindow(XY<int>{4464, 100}));

    EXPECT_EQ(tela_getConstrainedPosForWindow(root, {100, 100}, {-5, 10}), (XY<int>{0, 10}));
    EXPECT_EQ(tela_getConstrainedPosForWindow(root, {100, 100}, {1950, 750}), (XY<int>{1900, 700}));
    EXPECT_EQ(tela_getConstrainedPosForWindow(root, {3000, 100}, {5, 10}), (XY<int>{-1000, 10}));

    // Root and desktop positions map back and forth (y flips through the window).
    const XY<int> on_screen = tela_rootXYToScreenXY({10, 20});
    EXPECT_EQ(on_screen, (XY<int>{1430, 780}));
    EXPECT_EQ(tela_screenXYToRootXY(on_screen), (XY<int>{10, 20}));
    tela_deletecanvas(root);
}

TEST(Coordinates, PointsGoIntoTheBufferTheyAreDrawnIn)
{
    iRootWindow::InitArgs args;
    args.size = {200, 100};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    Canvas* panel = tela_newcanvas(nullptr, root);
    tela_placecanvas(panel, TopDownRect{20, 30, 70, 70}); // 20 from the left, 30 from the bottom, 50 x 40
    Canvas* unbuffered = tela_newcanvas(nullptr, panel);
    EXPECT_EQ(telaPosToOSPos(unbuffered, {7, 9}, Tela::eBottomUp), (XY<int>{7, 9})); // as given, unflipped

    EXPECT_EQ(telaPosToOSPos(panel, {0, 0}, Tela::eBottomUp), (XY<int>{0, 40})); // bottom-left corner
    EXPECT_EQ(telaPosToOSPos(panel, {5, 10}, Tela::eTopDown), (XY<int>{5, 10}));
    EXPECT_EQ(tela_canvasRectToRootRect(panel, Qv::Box<int>{0, 0, 50, 40}), (TopDownRect{20, 30, 70, 70}));

    Canvas* inner = tela_newcanvas(nullptr, panel);
    inner->lightweight = 1;
    tela_placecanvas(inner, TopDownRect{30, 55, 40, 65}); // 10 into the panel, 5 up from its bottom
    EXPECT_EQ(telaLightweightCanvasOffset(nullptr, Tela::eBottomUp), (XY<int>{-1, -1}));
    EXPECT_EQ(telaLightweightCanvasOffset(panel, Tela::eBottomUp), (XY<int>{0, 0}));
    EXPECT_EQ(telaLightweightCanvasOffset(inner, Tela::eBottomUp), (XY<int>{10, 5}));
    EXPECT_EQ(telaXYToWinXY(inner, 0, 0), (XY<double>{10, 35}));
    tela_deletecanvas(root);
}
