// iWallpaperProvider: the application's source of a backdrop for the root
// window, asked again whenever the window's size changes.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iImage.h"

class iWallpaperProvider : public iObject {
public:
    // An image for a window of `size`, in any location; null for none, and the
    // plain window colour shows instead. Tiled when smaller than the window.
    virtual Qv::Ptr<iImage> getWallpaper(const XY<int>& size) = 0;
};
