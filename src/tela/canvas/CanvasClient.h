#pragma once
// CanvasClient: the application-side object attached to a canvas. It receives
// the canvas's events and may paint itself. Subclasses implement handleEvent;
// everything else has a harmless default.

#include "tela/core/Ptr.h"
#include "tela/events/EventHandler.h"
#include "tela/platform/Geometry.h"
#include "tela/platform/iGraphicPrimitivesRenderer.h"
#include "tela/platform/iRegion.h"

class CanvasClient : public EventHandler {
public:
    virtual const char* idstring() const { return "CanvasClient"; }
    virtual int contextCursor(const XY<int>& position);   // the default cursor, 16
    virtual void handleMouseContainment(bool) {}
    virtual void drawUnbuffered(Qv::Ptr<iRegion> area);    // draws nothing
    virtual bool isOpaqueAt(const XY<int>&) const { return true; }
    // True when the client painted itself on the composited road.
    virtual bool display(Qv::Ptr<iGraphicPrimitivesRenderer>&) { return false; }
};
