// PaintForwarder: a window event sink that turns the window's paint events
// into repaints of its root, as the library's own handler will; wakes and
// everything else are left alone.
#pragma once

#include "support/WakeSink.h"
#include "tela/canvas/RootCanvas.h"

class PaintForwarder final : public WakeSink {
public:
    RootCanvas* root = nullptr;
    int paints = 0;

    eRC handleEvent(const UserEvent&) override { return eNotHandled; }
    eRC handleEvent(const PaintEvent& event) override
    {
        ++paints;
        if (root)
            root->display(event.region);
        return eNotHandled;
    }
    using WakeSink::handleEvent;
};
