#pragma once
// FontScene: a headless root window for the font table to make its fonts
// through, as it does in an application; fonts and window go with it.

#include "tela/canvas/Canvas.h"
#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/events/EventQueue.h"
#include "tela/state/TelaState.h"
#include "tela/text/Fonts.h"

struct FontScene {
    FontScene()
    {
        iRootWindow::InitArgs args;
        args.size = {640, 480};
        root = tela_createRootCanvas(args);
    }
    ~FontScene()
    {
        Tela::releaseAllFonts();
        tela_state().rootWindows.clear();
        event_set_kbd_focus(nullptr);
        tela_setcanvas(nullptr);
        tela_deletecanvas(root);
    }
    FontScene(const FontScene&) = delete;
    FontScene& operator=(const FontScene&) = delete;

    RootCanvas* root = nullptr;
};
