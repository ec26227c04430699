#include "canvas/Coordinates.h"

#include "canvas/Canvas.h"

int telaScreenYTowin32ScreenY(Canvas* root, int y)
{
    return (root ? root->getHeight() : 0) - y;
}

int win32ScreenYToTelaScreenY(Canvas* root, int y)
{
    return telaScreenYTowin32ScreenY(root, y);
}
