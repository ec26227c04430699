#include "tela/colour/CurrentColour.h"

namespace {
// Opaque black until the application selects something else.
int s_packed_colour = 0;
} // namespace

int tela_getcolour()
{
    return s_packed_colour;
}

void tela_setcolour(int packed)
{
    if (packed == s_packed_colour)
        return;
    s_packed_colour = packed;
}
