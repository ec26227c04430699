// OSEvents.h: the records the platform hands to a root window's iEventHandler.
// Only the fields the library reads are here; a backend fills them in.
#pragma once

#include "core/LightweightString.h"
#include "core/Memory.h"
#include "core/Ptr.h"
#include "platform/Geometry.h"
#include "platform/iRegion.h"

#include <cstdint>

struct UserEvent {
    std::uint64_t wakeSerial = 0;          // which postWake this answers
};

struct CursorEvent {
    XY<int> position;
};

struct InterProcessEvent {
    String message;
};

struct FileDragDropEvent {
    std::int32_t action = 0;               // 0 enter, 1 over, 2 leave, 3 drop
    XY<int> position;
    Qv::Vector<WString> files;
};

struct UnhandledOSEvent {
    std::uint32_t code = 0;
};

struct TimerEvent {
    std::uint32_t milliseconds = 0;        // time of the tick
};

struct WindowEvent {
    enum eType : std::int32_t { eResized, eMoved, eFocusGained, eFocusLost, eMinimised, eRestored, eCloseRequest };
    eType type = eResized;
    XY<int> size;
    XY<int> position;
};

struct PaintEvent {
    Qv::Ptr<iRegion> region;               // window coordinates; null means the whole window
};

struct KeyEvent {
    std::uint32_t key = 0;                 // character or key code
    std::uint32_t modifiers = 0;           // 0x1000000 shift, 0x2000000 control, 0x4000000 alt, 0x100000 meta
    bool pressed = true;
    bool repeat = false;
};

struct MouseEvent {
    std::int32_t type = 0;                 // 0 move, 1 press, 2 release, 3 wheel, 4 leave
    std::int32_t button = 0;               // 0 none, 1 left, 2 middle, 3 right
    XY<int> position;                      // window coordinates, y downward
    std::int32_t wheelDelta = 0;
    std::uint32_t modifiers = 0;
    std::uint32_t time = 0;
};
