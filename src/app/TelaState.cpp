#include "app/TelaState.h"

TelaState& tela_state()
{
    static TelaState s_state;
    return s_state;
}

Canvas* tela_rootcanvas()
{
    const TelaState& state = tela_state();
    return state.rootWindows.empty() ? nullptr : state.rootWindows.front().rootCanvas;
}
