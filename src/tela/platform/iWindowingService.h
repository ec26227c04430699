// iWindowingService: root windows, regions, fonts, keys and the main loop.
// Main thread only, except createRegion, which any thread may call.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/Memory.h"
#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"
#include "tela/platform/iRootWindow.h"
#include "tela/platform/iVideoChildWindow.h"

#include <cstddef>
#include <cstdint>
#include <set>

// A mouse pointer shape the windowing system can show.
class iCursor : public iObject {};

class iWindowingService {
public:
    virtual bool createRootWindow(Qv::Ptr<iRootWindow>& out, std::int32_t mode) = 0;
    // A video child window over `parent` at `position` (the parent's coordinates,
    // top-down) of `size`, shown; false, with a null window, where the platform
    // has none.
    virtual bool createChildWindow(Qv::Ptr<iVideoChildWindow>& out, const Qv::Ptr<iRootWindow>& parent,
                                   const XY<int>& size, const XY<int>& position) = 0;
    // rects arrive banded: row by row from the top, left to right within a row. A platform
    // must still accept rectangles out of that order and normalise them.
    virtual bool createRegion(Qv::Ptr<iRegion>& out, const TopDownRect* rects, std::size_t count) = 0;
    virtual void enumerateFonts(std::set<WString, WString::ICompare>& names) = 0;
    virtual void defaultFontName(WString& out) = 0;
    virtual bool isKeyDown(std::uint32_t modifierMask) = 0;
    // A cursor from a host image (premultiplied BGRA) with its hot spot.
    virtual bool createCursor(Qv::Ptr<iCursor>& out, const Qv::Ptr<iHostImage>& image, const XY<int>& hotSpot) = 0;
    // One of the system's own cursors, by the library's cursor number; a
    // platform shows its ordinary arrow for numbers it has nothing for.
    virtual bool createStockCursor(Qv::Ptr<iCursor>& out, std::int32_t id) = 0;
    virtual void selectCursor(const Qv::Ptr<iCursor>& cursor) = 0;
    virtual int runMessageLoop() = 0;
    virtual void shutdownMessageLoop() = 0;
protected:
    ~iWindowingService() = default;
};
