#pragma once
// MouseContainmentManager: tells canvases when the pointer enters and leaves
// them. It keeps plain canvas addresses, so a deleted canvas must be removed.

class Canvas;

namespace Tela {

class MouseContainmentManager {
public:
    static void setCurrentCanvas(Canvas* canvas);
    static Canvas* currentCanvas();
    // Forgets the canvas by address; it is going away.
    static void removeCanvas(const Canvas* canvas);
};

} // namespace Tela
