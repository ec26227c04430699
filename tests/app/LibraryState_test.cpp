#include "tela/app/Diagnostics.h"
#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/UpdateTracking.h"
#include "tela/core/Commands.h"
#include "tela/core/NotifyMsgTypeDictionary.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OS.h"
#include "tela/state/TelaState.h"

#include "support/ReportCapture.h"

#include <gtest/gtest.h>

namespace {

struct Heard {
    std::vector<int> types;
    Qv::Ptr<iCallbackBase<int, NotifyMsg>> callback()
    {
        return Qv::makeCallback<int, NotifyMsg>([this](const NotifyMsg& msg) {
            types.push_back(msg.type());
            return 0;
        });
    }
};

} // namespace

TEST(LibraryState, ListenersOnTheLibraryNotifier)
{
    Heard focus, everything, mouse;
    auto focus_guard = Tela::addListener(focus.callback(), 12);
    auto all_guard = Tela::addListener(everything.callback(), Tela::eAllNotifications);
    auto mouse_guard = Tela::addMouseListener(mouse.callback());
    const int mouse_type = tela_state().mouseStateChangeType;
    EXPECT_EQ(mouse_type, NotifyMsgTypeDictionary::intern("MouseStateChange"));

    tela_getNotifier().issueNotification(NotifyMsg(String("true"), 12), 12);
    tela_getNotifier().issueNotification(NotifyMsg(String(), 13), 13);
    tela_getNotifier().issueNotification(NotifyMsg(String(), mouse_type), mouse_type);
    EXPECT_EQ(focus.types, (std::vector<int>{12}));
    EXPECT_EQ(everything.types, (std::vector<int>{12, 13, mouse_type}));
    EXPECT_EQ(mouse.types, (std::vector<int>{mouse_type}));

    focus_guard = nullptr; // the registration ends with the guard
    tela_getNotifier().issueNotification(NotifyMsg(String("false"), 12), 12);
    EXPECT_EQ(focus.types.size(), 1u);
}

TEST(LibraryState, DebugCommandsAreRegisteredAtLoadAndWork)
{
    CommandMap& commands = CommandMap::instance();
    for (const char* name : {"TELA reset mouse handling", "Toggle draw debugging", "Toggle Window Style",
                             "Dump RasterImage Cache Stats"})
        EXPECT_TRUE(commands.contains(String(name))) << name;

    ASSERT_EQ(canvupdTrace, 0);
    EXPECT_FALSE(tela_refresh_is_active() && tela_refresh_counter() < 0);
    commands.execute(String("Toggle draw debugging"));
    EXPECT_EQ(canvupdTrace, 2);
    tela_refresh_off(); // with draw debugging, refresh counts as active even when off
    EXPECT_TRUE(tela_refresh_is_active());
    commands.execute(String("Toggle draw debugging"));
    EXPECT_EQ(canvupdTrace, 0);
    EXPECT_FALSE(tela_refresh_is_active());
    tela_refresh_on(false);

    Canvas* c = tela_newcanvas(nullptr, nullptr);
    tela_state().captureCanvas = c;
    tela_state().currentMouseCanvas = c;
    tela_state().clickState = 0x20;
    commands.execute(String("TELA reset mouse handling"));
    EXPECT_EQ(tela_state().captureCanvas, nullptr);
    EXPECT_EQ(tela_state().currentMouseCanvas, nullptr);
    EXPECT_EQ(tela_state().clickState, 0u);
    tela_deletecanvas(c);

    Qv::Ptr<iRootWindow> window;
    OS()->windowing()->createRootWindow(window, 0);
    Canvas* root = tela_newcanvas(nullptr, nullptr);
    root->window = window;
    tela_state().rootWindows.push_back(RootWindowRec(root));
    const bool had_title_bar = window->hasTitleBar();
    commands.execute(String("Toggle Window Style"));
    EXPECT_NE(window->hasTitleBar(), had_title_bar);
    tela_state().rootWindows.clear();
    tela_deletecanvas(root);
}

TEST(LibraryState, SplatPrintsTheMessageAndReturns)
{
    ReportCapture reports;
    tela_splat("canvas_connect: bad parent");
    tela_splat(nullptr);
    EXPECT_EQ(reports.text(), "canvas_connect: bad parent");
    reports.clear();
    tela_splat("100%% sure"); // the text is the format
    EXPECT_EQ(reports.text(), "100% sure");
    reports.clear();
    const char* wants_arguments = "%s at %d%n";
    tela_splat(wants_arguments); // nothing to format with: printed as it stands
    EXPECT_EQ(reports.text(), "%s at %d%n");
    reports.clear();
    const char* trailing = "ends in %"; // a literal like this one is refused at compile time
    tela_splat(trailing);
    EXPECT_EQ(reports.text(), "ends in %");
    EXPECT_STREQ(telaDllVersionStr(), "Tela 0.1.0");
    tela_exiting(true);
    EXPECT_TRUE(tela_exiting());
    tela_exiting(false);
}
