#include "input/MousePosition.h"

#include "app/TelaState.h"

XY<int> tela_getMousePos()
{
    return tela_state().lastMouseEvent.position;
}
