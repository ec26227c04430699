// The window's placement, stored and restored between runs.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/core/Config.h"
#include "tela/core/Preferences.h"
#include "tela/core/SettingsFile.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/input/WindowPlacement.h"

#include "core/TemporaryDirectory.h"
#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"

#include <gtest/gtest.h>

namespace {

using Args = iRootWindow::InitArgs;

class Placement : public ::testing::Test {
protected:
    void SetUp() override
    {
        Qv::reloadConfigurationFrom(settings.path().string());
        iSystemInfo::MonitorInfo monitor;
        monitor.screenBox = monitor.desktopBox = Qv::Box<int>{0, 0, 1920, 1080};
        monitor.isPrimary = 1;
        Headless::services().systemInfo()->setMonitors({monitor});
    }
    void TearDown() override
    {
        Headless::services().systemInfo()->clearMonitors();
        Qv::reloadConfigurationFrom("");
    }

    static Args stored(const char* json)
    {
        prefs().setPreference("Tela : Window", String(json));
        return RootWindowEventHandler::restoreWindowState(WString(u"Tela"));
    }

    TemporaryDirectory settings;
};

} // namespace

TEST_F(Placement, SizesHaveAFloorAndAMaximisedWindowTooBigIsRescued)
{
    Args args = stored(R"({"title": true, "maximised": false, "x": 30, "y": 40, "width": 800, "height": 500})");
    EXPECT_EQ(args.size, (XY<int>{1024, 768}));
    EXPECT_EQ(args.position, (XY<int>{30, 40}));
    EXPECT_EQ(args.flags & 3, Args::eTitleBar);
    EXPECT_EQ(args.name, WString(u"Tela"));

    args = stored(R"({"title": true, "maximised": true, "x": 0, "y": 0, "width": 1920, "height": 1080})");
    EXPECT_EQ(args.size, (XY<int>{1728, 972}));
    EXPECT_EQ(args.position, (XY<int>{96, 54}));
    args = stored(R"({"title": true, "maximised": true, "x": 5, "y": 6, "width": 1024, "height": 768})");
    EXPECT_EQ(args.size, (XY<int>{1024, 768}));
    EXPECT_EQ(args.position, (XY<int>{5, 6}));

    // A normal window on a monitor that has gone stays where it was.
    args = stored(R"({"title": true, "maximised": false, "x": 5000, "y": 10, "width": 1200, "height": 900})");
    EXPECT_EQ(args.position, (XY<int>{5000, 10}));
    // Missing members read as -1, which the floor leaves alone; bad text gives the defaults.
    args = stored(R"({"x": 1})");
    EXPECT_EQ(args.size, (XY<int>{-1, -1}));
    EXPECT_EQ(args.flags & 3, 0u);
    args = stored("{not json");
    EXPECT_EQ(args.flags, 51u);
    EXPECT_EQ(args.size, (XY<int>{0, 0}));
}

TEST_F(Placement, TheOlderFormIsReadWhileTheCurrentKeyIsEmpty)
{
    prefs().setPreference("Tela window XY", String("(10,20)"));
    prefs().setPreference("Tela window WH", String("(800,600)"));
    prefs().setPreference("Tela window titlebar", String("false"));
    Args args = RootWindowEventHandler::restoreWindowState(WString(u"Tela"));
    EXPECT_EQ(args.position, (XY<int>{10, 20}));
    EXPECT_EQ(args.size, (XY<int>{800, 600})); // no floor for this form
    EXPECT_EQ(args.flags & 3, Args::eMaximised);

    prefs().setPreference("Tela window XY", String("10,20")); // no bracket: not stored
    args = RootWindowEventHandler::restoreWindowState(WString(u"Tela"));
    EXPECT_EQ(args.position, (XY<int>{0, 0}));
    EXPECT_EQ(args.size, (XY<int>{0, 0}));
}

TEST_F(Placement, SavingKeepsTheNormalGeometryOfAMaximisedOrTitleLessWindow)
{
    Args args;
    args.flags = Args::eTitleBar;
    args.size = {1200, 900};
    args.position = {40, 50};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    Tela::saveRootWindowPlacement();
    Args back = RootWindowEventHandler::restoreWindowState(WString(u"Tela"));
    EXPECT_EQ(back.size, (XY<int>{1200, 900}));
    EXPECT_EQ(back.position, (XY<int>{40, 50}));
    EXPECT_EQ(back.flags & 3, Args::eTitleBar);

    auto window = Qv::dynamicCast<Headless::RootWindow>(root->window);
    window->setMaximised(true);
    window->setSize({1920, 1080});
    window->setPosition({0, 0});
    Tela::saveRootWindowPlacement();
    back = RootWindowEventHandler::restoreWindowState(WString(u"Tela"));
    EXPECT_EQ(back.size, (XY<int>{1200, 900}));
    EXPECT_EQ(back.position, (XY<int>{40, 50}));
    EXPECT_EQ(back.flags & 3, Args::eTitleBar | Args::eMaximised);
    tela_deletecanvas(root);
}

TEST_F(Placement, IsSavedUnderTheApplicationsOwnName)
{
    const WString before = Qv::givenApplicationName();
    Qv::setApplicationName(WString(u"Atlas"));
    Args args;
    args.flags = Args::eTitleBar;
    args.size = {640, 480};
    args.position = {30, 20};
    RootCanvas* root = tela_createRootCanvas(args);
    ASSERT_NE(root, nullptr);
    Tela::saveRootWindowPlacement();
    EXPECT_EQ(RootWindowEventHandler::restoreWindowState(WString(u"Atlas")).position, (XY<int>{30, 20}));
    EXPECT_TRUE(prefs().getPreference("Tela : Window").empty());
    tela_deletecanvas(root);
    Qv::setApplicationName(before);
}

TEST(WindowArguments, FieldsKeepTheirOrder)
{
    // Written in field order, as a program built against the layout does.
    const Qv::Ptr<iEventHandler> handler = Qv::make<RootWindowEventHandler>();
    const Args written{XY<int>{640, 480}, XY<int>{10, 20}, Args::eTitleBar, 1, 7, 2, XY<int>{}, XY<int>{},
                       WString(u"App"), nullptr, handler};
    EXPECT_EQ(written.mode, 2u);
    EXPECT_EQ(written.name, WString(u"App"));
    EXPECT_EQ(written.eventHandler.get(), handler.get());
}
