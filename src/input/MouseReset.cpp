#include "input/MouseReset.h"

#include "app/TelaState.h"
#include "input/MouseContainmentManager.h"

void tela_resetMouse()
{
    TelaState& state = tela_state();
    state.currentMouseCanvas = nullptr;
    state.captureCanvas = nullptr;
    state.clickState = 0;
    Tela::MouseContainmentManager::setCurrentCanvas(nullptr);
}
