// iVideoChildWindow: a native window laid over part of a root window, into which
// video frames are drawn directly (see render/VideoWindow.h).
//
// - Made by iWindowingService::createChildWindow; positions and sizes are in the
//   parent root window's coordinates, top-down.
// - Its shape, when the platform can shape it, is relative to its own top-left
//   corner; where it cannot, an overlay image repaints what covers the video.
// - getImage may be called from a video thread; the rest from the main thread.
// The slot order is fixed, reserved slots included.
#pragma once

#include "tela/core/Ptr.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/GraphicPrimitives.h"
#include "tela/platform/iImage.h"
#include "tela/platform/iRegion.h"

class iVideoChildWindow : public iObject {
public:
    // The image the next frame is drawn into; releasing its renderer ends the
    // frame. false, with a null image, when there is none.
    virtual bool getImage(Qv::Ptr<iImage>& out, int flags) = 0;
    virtual void reserved1() {}   // never called by the library
    virtual void reserved2() {}
    virtual void setVisible(bool visible) = 0;
    virtual void setArea(XY<int> position, XY<int> size) = 0;
    virtual bool supportsRegions() = 0;
    // Null shows the whole window.
    virtual void setRegion(Qv::Ptr<iRegion> region) = 0;
    // Shown above the video; a description without an image removes it.
    virtual void setOverlay(const ImageDescriptionEx& overlay) = 0;
};
