#pragma once
// TelaState: the library state that has no better owner, and the library's
// notifier. There is exactly one, built on first use and kept until the
// process ends; its contents belong to the main thread, except what the
// notifier guards for itself.
//
// Notification channels: 11 root texture changed, 12 focus change of the
// root window, 13 size or state change, and mouseStateChangeType for every
// mouse move or button change.

#include "tela/colour/Colour.h"
#include "tela/core/Callback.h"
#include "tela/core/CriticalSection.h"
#include "tela/core/Guard.h"
#include "tela/core/Memory.h"
#include "tela/core/NormalisedRGB.h"
#include "tela/core/Notifier.h"
#include "tela/core/Ptr.h"
#include "tela/platform/iEventHandler.h"
#include "tela/platform/iRootWindow.h"
#include "tela/platform/iShaderEffect.h"
#include "tela/platform/iWallpaperProvider.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/OSEvents.h"

#include <cstdint>

class Canvas;

namespace Tela {

// The six pixel programs the library draws with, by their fixed numbers.
enum class Shader : std::int32_t {
    InFront = 0,          // a canvas laid over what lies beneath, at an opacity
    ShadowLR = 1,         // edge shadows, left and right
    ShadowTB = 2,         // edge shadows, top and bottom
    ShadowC = 3,          // edge shadows, corners
    RoundedRectangle = 4,
    Ellipse = 5,
};
constexpr int SHADER_COUNT = 6;

} // namespace Tela

// One row per root window; the first row's canvas is the library's root.
struct RootWindowRec {
    explicit RootWindowRec(Canvas* root = nullptr, Qv::Ptr<iEventHandler> handler = {},
                           const Colour& colour = Colour())
        : eventHandler(std::move(handler)), rootColour(colour), rootCanvas(root) {}

    Qv::Ptr<iEventHandler> eventHandler;
    Qv::Ptr<iWallpaperProvider> wallpaperProvider; // may be null
    Colour rootColour;                             // the background where no canvas covers it
    Qv::Ptr<iImage> wallpaperImage;                // the provider's image at the window's size
    Canvas* rootCanvas = nullptr;
};

class TelaState : public Notifier {
public:
    TelaState();

    // Shows the cursor the client of currentMouseCanvas names for the mouse
    // position, or the default cursor over no client. Main thread.
    void updateCursor();

    Canvas* captureCanvas = nullptr;      // the canvas holding the mouse
    std::uint32_t clickState = 0;
    bool chordActive = false;             // from a chord until every button is up
    bool rootTextureChangeEnabled = false;
    Qv::Ptr<iPeriodicTimer> tickTimer;
    Qv::List<Qv::Ptr<iObject>> deferredReleases;
    Canvas* currentMouseCanvas = nullptr; // under the pointer, or the capture
    MouseEvent lastMouseEvent;
    std::int32_t mouseStateChangeType; // the id of "MouseStateChange"
    Qv::Vector<RootWindowRec> rootWindows;
    std::int32_t mouseContextDisableCount = 0;
    Qv::Ptr<iShaderEffect> shaders[Tela::SHADER_COUNT]; // found on first use, see tela_shader
    // Cursors by number, each made once. Guarded by cursorLock: the busy
    // monitor sets its cursor from its own thread.
    Qv::Map<std::int32_t, Qv::Ptr<iCursor>> cursorCache;
    CriticalSection cursorLock;
    // The click counter: the previous left press, when and on which canvas it
    // was, and how many quick presses came before it. lastClickCanvas is only
    // compared, never followed.
    std::uint32_t lastClickTime = 0;
    Canvas* lastClickCanvas = nullptr;
    std::uint32_t clickCount = 0;
};

TelaState& tela_state();

// The first root canvas, null when there is none.
Canvas* tela_rootcanvas();

Notifier& tela_getNotifier();

// The pixel program, looked up by its name ("InFront", "ShadowLR", ...) the
// first time it is asked for; null for a value outside Tela::Shader.
Qv::Ptr<iShaderEffect> tela_shader(Tela::Shader which);

namespace Tela {

// Channel numbers are the application's to define, apart from the ones above;
// 10 means every channel.
using eNotificationEventType = int;
constexpr eNotificationEventType eAllNotifications = 10;

// The listener hears the channel until the guard is released.
Qv::Ptr<Qv::Guard> addListener(const Qv::Ptr<iCallbackBase<int, NotifyMsg>>& callback, eNotificationEventType type);
Qv::Ptr<Qv::Guard> addMouseListener(const Qv::Ptr<iCallbackBase<int, NotifyMsg>>& callback);

} // namespace Tela
