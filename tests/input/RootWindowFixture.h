// A headless root window, 200 x 100, whose events go to the library's own
// RootWindowEventHandler, with helpers to feed it reports and to read back
// what it queued.
#pragma once

#include "tela/canvas/CanvasClient.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/events/Event.h"
#include "tela/events/EventQueue.h"
#include "tela/input/MouseState.h"
#include "tela/input/RootWindowEventHandler.h"
#include "tela/state/TelaState.h"
#include "tela/vector/Regions.h"

#include "headless/HeadlessRootWindow.h"

#include <gtest/gtest.h>

#include <vector>

// Keeps the events it is given and answers with `result`.
class RecordingClient final : public CanvasClient {
public:
    eResult handleEvent(const Event& event) override
    {
        types.push_back(event.type);
        return result;
    }
    std::vector<std::uint32_t> types;
    eResult result = eNotHandled;
};

template <typename Handler = RootWindowEventHandler>
class RootWindowFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        handler = Qv::make<Handler>();
        iRootWindow::InitArgs args;
        args.size = {200, 100};
        args.eventHandler = handler;
        root = tela_createRootCanvas(args);
        ASSERT_NE(root, nullptr);
        window = Qv::dynamicCast<Headless::RootWindow>(root->getWindow());
        window->setFocus(true);
        taken();
    }
    void TearDown() override
    {
        taken();
        tela_resetMouse();
        tela_deletecanvas(root);
    }

    // A canvas over the window rectangle (top-down), with a recording client.
    Canvas* child(int left, int top, int right, int bottom, Qv::Ptr<RecordingClient>* client = nullptr)
    {
        Qv::Ptr<RecordingClient> recorder = Qv::make<RecordingClient>();
        clients.push_back(recorder);
        if (client)
            *client = recorder;
        Canvas* c = tela_newcanvas(recorder.get(), root);
        c->shape(region_mkrect(TopDownRect{left, top, right, bottom}));
        return c;
    }

    void key(std::uint32_t action, std::uint32_t code, std::uint32_t modifiers = 0)
    {
        KeyEvent report;
        report.action = action;
        report.keyCode = code;
        report.modifiers = modifiers;
        handler->handleEvent(report);
    }

    // A report at a window position (y downward).
    void mouse(std::uint32_t action, int x, int y, std::uint32_t time = 0, std::uint32_t held = 0, int wheel = 0)
    {
        MouseEvent report;
        report.action = action;
        report.pos = {x, y};
        report.time = time;
        report.heldButtons = held;
        report.wheelDelta = wheel;
        handler->handleEvent(report);
    }

    // Everything queued since the last call, oldest first.
    std::vector<Event> taken()
    {
        std::vector<Event> events;
        while (Event* event = event_receive()) {
            events.push_back(*event);
            event_free(event);
        }
        return events;
    }

    Qv::Ptr<Handler> handler;
    RootCanvas* root = nullptr;
    Qv::Ptr<Headless::RootWindow> window;
    std::vector<Qv::Ptr<RecordingClient>> clients;
};
