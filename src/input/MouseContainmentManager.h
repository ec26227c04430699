#pragma once
// MouseContainmentManager: tells canvases when the pointer enters and leaves
// them. It keeps the chain of canvases that contain the pointer, outermost
// first; the last is the current canvas. Moving to another canvas leaves,
// innermost first, every canvas that does not contain the new one, then
// enters, outermost first, the new canvas and its ancestors not yet entered,
// so each canvas sees its enter and leave nested inside its parent's.
//
// Main thread only. It keeps plain canvas addresses, so a canvas going away
// must be removed.

class Canvas;

namespace Tela {

class MouseContainmentManager {
public:
    static void setCurrentCanvas(Canvas* canvas);
    // The innermost canvas the pointer is in; null when none.
    static Canvas* getCurrentCanvas();
    // Forgets the canvas without telling it; it is going away.
    static void remove(const Canvas* canvas);

private:
    // True when `parent` is a proper ancestor of `child`.
    static bool isChildOf(const Canvas* child, const Canvas* parent);
};

} // namespace Tela
