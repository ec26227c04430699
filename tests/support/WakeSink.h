// WakeSink: a window event sink for tests that care about wakes alone; every
// other platform event is left unhandled.
#pragma once

#include "tela/platform/iEventHandler.h"

class WakeSink : public iEventHandler {
public:
    eRC handleEvent(const UserEvent& event) override = 0;
    eRC handleEvent(const CursorEvent&) override { return eNotHandled; }
    eRC handleEvent(const FileDragDropEvent&) override { return eNotHandled; }
    eRC handleEvent(const UnhandledOSEvent&) override { return eNotHandled; }
    eRC handleEvent(const InterProcessEvent&) override { return eNotHandled; }
    eRC handleEvent(const TimerEvent&) override { return eNotHandled; }
    eRC handleEvent(const WindowEvent&) override { return eNotHandled; }
    eRC handleEvent(const PaintEvent&) override { return eNotHandled; }
    eRC handleEvent(const KeyEvent&) override { return eNotHandled; }
    eRC handleEvent(const MouseEvent&) override { return eNotHandled; }
};
