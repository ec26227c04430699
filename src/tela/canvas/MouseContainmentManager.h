#pragma once
// MouseContainmentManager: tells canvases when the pointer enters and leaves
// them. It keeps the chain of canvases that contain the pointer, outermost
// first; the last is the current canvas. Moving to another canvas leaves,
// innermost first, every canvas that does not contain the new one, then
// enters, outermost first, the new canvas and its ancestors not yet entered,
// so each canvas sees its enter and leave nested inside its parent's.
//
// There is one manager, instance(). Main thread only. It keeps plain canvas
// addresses, so a canvas going away must be removed.

#include "tela/core/Memory.h"

class Canvas;

namespace Tela {

class MouseContainmentManager {
public:
    // The one manager of the process. It is never destroyed: canvases may
    // still be removed from it while statics are torn down.
    static MouseContainmentManager& instance();

    void setCurrentCanvas(Canvas* canvas);
    // The innermost canvas the pointer is in; null when none.
    Canvas* getCurrentCanvas() const;
    // Forgets the first entry of the canvas without telling it; it is going away.
    void remove(Canvas* canvas);

private:
    // True when `parent` is a proper ancestor of `child`.
    static bool isChildOf(Canvas* child, Canvas* parent);

    Qv::Vector<Canvas*> containers; // outermost first
};

} // namespace Tela
