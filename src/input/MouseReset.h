#pragma once
// Forgets everything the library believes about the mouse: the canvas under
// it, the capture and the click state. A way out when an application lost a
// button release.

void tela_resetMouse();
