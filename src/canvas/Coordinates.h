#pragma once
// The flip between the library's bottom-up screen space and the window's
// top-down space: height of the root minus y. The same sum goes both ways.

class Canvas;

int telaScreenYTowin32ScreenY(Canvas* root, int y);
int win32ScreenYToTelaScreenY(Canvas* root, int y);
