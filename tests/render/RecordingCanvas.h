#pragma once
// A 100 x 50 canvas at window (20, 10) in a 200 x 100 root, whose renderer is
// a recording one: canvas point (x, y) is renderer point (x, 50 - y).

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasGeometry.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"

#include "support/RecordingRenderer.h"

#include <gtest/gtest.h>

class RecordingCanvasTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        iRootWindow::InitArgs args;
        args.size = {200, 100};
        root = tela_createRootCanvas(args);
        ASSERT_NE(root, nullptr);
        canvas = tela_newcanvas(nullptr, root);
        ASSERT_EQ(tela_placecanvas(canvas, TopDownRect{20, 10, 120, 60}), 1);
        ASSERT_TRUE(canvas->offscreenBuffer);
        recorder = Qv::make<RecordingRenderer>();
        canvas->osRenderer = recorder;
    }
    void TearDown() override
    {
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }

    Canvas* root = nullptr;
    Canvas* canvas = nullptr;
    Qv::Ptr<RecordingRenderer> recorder;
};
