// iRootWindow: the native top-level window a RootCanvas stands for.
// Main thread only, except postWake, which any thread may call.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iEventHandler.h"
#include "tela/platform/iFont.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iWallpaperProvider.h"

#include <cstdint>

class iPeriodicTimer : public iObject {
public:
    virtual void stop() = 0;
};

class iRootWindow : public iObject {
public:
    struct InitArgs {
        static constexpr std::uint32_t MODE_COMPOSITED = 4;

        enum : std::uint32_t { eTitleBar = 1, eMaximised = 2 };

        XY<int> size;                            // of the normal window; (0, 0): the platform's choice
        XY<int> position;
        std::uint32_t flags = 51;                // eTitleBar, eMaximised; other bits are the platform's
        // Two values the library passes on untouched; only the platform gives
        // them a meaning.
        std::uint32_t platformValue1 = 1;
        std::uint32_t platformValue2 = 7;
        // Given to createRootWindow: 1 a normal window, 2 full screen; adding
        // MODE_COMPOSITED asks for the composited display road.
        std::uint32_t mode = 1;
        // Two more points passed on untouched for the platform.
        XY<int> platformPoint1;
        XY<int> platformPoint2;
        WString name;                            // the application's name, the window's title
        Qv::Ptr<iWallpaperProvider> wallpaper;   // the root's backdrop; may be null
        Qv::Ptr<iEventHandler> eventHandler;     // the sink of the window's events

        bool titleBar() const { return (flags & eTitleBar) != 0; }
        bool maximised() const { return (flags & eMaximised) != 0; }
    };
    virtual iImageBase::eLocation displayLocation() const = 0;
    virtual void getSize(XY<int>& size) const = 0;
    virtual bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) = 0;
    virtual bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) = 0;
    virtual bool initWindow(const InitArgs& args) = 0;
    virtual void getPosition(XY<int>& position) const = 0;
    virtual void getBox(Qv::Box<int>& box) const = 0;
    virtual bool hasTitleBar() const = 0;
    virtual bool isMaximized() const = 0;
    virtual bool isMinimized() const = 0;
    virtual bool hasFocus() const = 0;
    virtual void* nativeHandle() const = 0;
    virtual bool isActive() const = 0;
    virtual void setUseWindowsTitleBar(bool use) = 0;
    virtual void setActive(bool active) = 0;
    virtual void postWake() = 0;                  // any thread: the main loop wakes and sends a UserEvent
    virtual void setTitle(const WString& title) = 0;
    virtual void minimise() = 0;
    virtual void claimFocus() = 0;
    virtual void setEventHandler(const Qv::Ptr<iEventHandler>& handler) = 0;
    virtual bool dragFiles(const Qv::Vector<WString>& files) = 0;
    virtual bool createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds) = 0;
    virtual void invalidate(const Qv::Ptr<iRegion>& region) = 0;   // window coordinates; null is all
    // A new font of the family `name`, `size` pixels to the em; style bit 0 bold, bit 1
    // italic. Null when no face can be had. `variant` is the platform's own.
    virtual Qv::Ptr<iFont> createFont(const WString& name, unsigned short size, unsigned int style,
                                      unsigned short variant) = 0;
    // Tells this window from every other root window of the process, for the fonts kept
    // per window; never 0, which stands for no window.
    virtual std::uint32_t identity() const = 0;
};
