#pragma once
// Clears the current canvas (tela_setcanvas) to the current colour
// (tela_setcolour) and marks the area for display.

void tela_wipecanvas();
