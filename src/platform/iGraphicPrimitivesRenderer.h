// iGraphicPrimitivesRenderer: draws primitives into a window or an offscreen image.
// All coordinates are top-down (window space). Releasing the last reference to a
// window's renderer ends the frame and presents it.
#pragma once

#include "core/Ptr.h"
#include "platform/iRegion.h"

class iGraphicPrimitivesRenderer : public iObject {
public:
    virtual void setClip(const Qv::Ptr<iRegion>& clip) = 0;   // null clears the clip
};
