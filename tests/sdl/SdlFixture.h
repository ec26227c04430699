#pragma once
// One SDL root window for a test, under the virtual X display the test runs on.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"

#include "sdl/SdlRootWindow.h"
#include "sdl/SdlServices.h"

#include <gtest/gtest.h>

#include <functional>

class SdlFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(Sdl::install()) << "no display for SDL"; }

    // A normal 160 x 120 window with a title bar, its events going to `handler`.
    void open(const Qv::Ptr<iEventHandler>& handler)
    {
        iRootWindow::InitArgs args;
        args.size = {160, 120};
        args.name = WString(u"Tela test");
        args.flags = iRootWindow::InitArgs::eTitleBar;
        args.eventHandler = handler;
        root = tela_createRootCanvas(args);
        ASSERT_NE(root, nullptr);
        window = Qv::dynamicCast<Sdl::RootWindow>(root->window);
        ASSERT_TRUE(window);
    }
    void TearDown() override
    {
        window = nullptr;
        if (root)
            tela_deletecanvas(root);
        Sdl::services().windowing()->pumpPending();
    }

    // Handles events until `done` holds, for at most two seconds.
    bool pumpUntil(const std::function<bool()>& done)
    {
        for (int round = 0; round < 200; ++round) {
            Sdl::services().windowing()->pumpPending();
            if (done())
                return true;
            SDL_Delay(10);
        }
        return false;
    }

    SDL_Window* native() const { return static_cast<SDL_Window*>(window->nativeHandle()); }

    RootCanvas* root = nullptr;
    Qv::Ptr<Sdl::RootWindow> window;
};
