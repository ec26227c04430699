// Readable colours in failure messages: channels, alpha and the bypass flag.
#pragma once

#include "tela/colour/Colour.h"

#include <ostream>

inline void PrintTo(const Colour& colour, std::ostream* out)
{
    *out << "Colour(" << colour.r << ", " << colour.g << ", " << colour.b << ", a " << colour.a
         << (colour.bypassGamma() ? ", bypass)" : ")");
}
