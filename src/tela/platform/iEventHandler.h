// iEventHandler: the sink through which the platform delivers a root window's events.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/OSEvents.h"

// Handlers answer eNotHandled, except that eHandled from a UserEvent means
// the application's window is closing: the main loop then ends.
class iEventHandler : public iObject {
public:
    enum eRC : std::int32_t { eNotHandled = 0, eHandled = 1 };

    virtual eRC handleEvent(const UserEvent& event) = 0;
    virtual eRC handleEvent(const CursorEvent& event) = 0;
    virtual eRC handleEvent(const FileDragDropEvent& event) = 0;
    virtual eRC handleEvent(const UnhandledOSEvent& event) = 0;
    virtual eRC handleEvent(const InterProcessEvent& event) = 0;
    virtual eRC handleEvent(const TimerEvent& event) = 0;
    virtual eRC handleEvent(const WindowEvent& event) = 0;
    virtual eRC handleEvent(const PaintEvent& event) = 0;
    virtual eRC handleEvent(const KeyEvent& event) = 0;
    virtual eRC handleEvent(const MouseEvent& event) = 0;
};
