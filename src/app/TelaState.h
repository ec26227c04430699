#pragma once
// TelaState: the library state that has no better owner. There is exactly one,
// built on first use and kept until the process ends; its contents belong to
// the main thread.

#include "core/Memory.h"
#include "core/Ptr.h"
#include "platform/OSEvents.h"
#include "platform/iEventHandler.h"
#include "platform/iRootWindow.h"

#include <cstdint>

class Canvas;

// One row per root window; the first row's canvas is the library's root.
struct RootWindowRec {
    Qv::Ptr<iEventHandler> eventHandler;
    Canvas* rootCanvas = nullptr;
};

class TelaState {
public:
    Canvas* captureCanvas = nullptr;      // the canvas holding the mouse
    std::uint32_t clickState = 0;
    bool rootTextureChangeEnabled = false;
    Qv::Ptr<iPeriodicTimer> tickTimer;
    Qv::List<Qv::Ptr<iObject>> deferredReleases;
    Canvas* currentMouseCanvas = nullptr; // under the pointer, or the capture
    MouseEvent lastMouseEvent;
    Qv::Vector<RootWindowRec> rootWindows;
    std::int32_t mouseContextDisableCount = 0;
};

TelaState& tela_state();

// The first root canvas, null when there is none.
Canvas* tela_rootcanvas();
