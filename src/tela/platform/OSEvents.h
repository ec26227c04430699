// OSEvents.h: the records the platform hands to a root window's iEventHandler.
// Only the fields the library reads are here; a backend fills them in.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iRegion.h"

#include <cstdint>

// Every timed report carries the time the platform stamped it with, in
// milliseconds on the clock of msecsNow().
struct EventBase {
    std::uint32_t time = 0;
};

struct UserEvent : EventBase {
    std::uint64_t wakeSerial = 0;          // which postWake this answers
};

struct CursorEvent {
    XY<int> position;
};

struct InterProcessEvent {
    String message;
};

// Files dragged over the window. What the action values mean is the
// platform's business; the library only routes them (0 to 3).
struct FileDragDropEvent : EventBase {
    Qv::Vector<WString> files;
    XY<int> pos;                           // window coordinates, y downward
    std::uint32_t action = 0;
};

struct UnhandledOSEvent {
    std::uint32_t message = 0;
    std::uint32_t param1 = 0;
    std::uint32_t param2 = 0;
};

struct TimerEvent : EventBase {};

struct WindowEvent : EventBase {
    enum eKind : std::uint32_t {
        eSizeChanged = 1,
        ePositionChanged = 2,
        eResized = 3,                      // handled as eSizeChanged
        eCloseRequest = 4,
        eFocusGained = 5,
        eFocusLost = 6,
        eInitialise = 7,
        ePointerLeft = 8,
    };
    std::uint32_t kind = 0;
};

struct PaintEvent {
    Qv::Ptr<iRegion> region;               // window coordinates; null means the whole window
};

// Modifier bits, shared with the key codes of the library's events.
enum eKeyModifier : std::uint32_t {
    eKeyMeta = 0x100000,
    eKeyShift = 0x1000000,
    eKeyControl = 0x2000000,
    eKeyAlt = 0x4000000,
    eKeyNotCharacter = 0x8000000,          // the key value is no character
};

struct KeyEvent : EventBase {
    enum eAction : std::uint32_t { eRelease = 0, ePress = 1, eCompoundText = 2, eCompoundTextEnd = 3 };
    std::uint32_t keyCode = 0;             // character, or a key value with eKeyNotCharacter
    std::uint32_t modifiers = 0;
    WString text;                          // composed text of actions 2 and 3
    std::uint32_t action = ePress;
};

struct MouseEvent : EventBase {
    enum eAction : std::uint32_t {
        eLeftUp = 1, eLeftDown = 2, eRightUp = 3, eRightDown = 4,
        eMiddleUp = 5, eMiddleDown = 6, eWheel = 7, eMove = 8,
    };
    // Bits of heldButtons: the buttons held, not counting the one that changed.
    enum eHeld : std::uint32_t { eHeldRight = 1, eHeldLeft = 2, eHeldMiddle = 4 };
    XY<int> pos;                           // window coordinates, y downward
    std::uint32_t action = eMove;
    std::uint32_t heldButtons = 0;
    std::int32_t wheelDelta = 0;
};
