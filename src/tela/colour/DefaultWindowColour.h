#pragma once
// The window colour a root shows until the user picks another: a dark grey,
// lightened (or, with a negative setting, darkened) by the configuration
// value "Brighten".

#include "tela/core/NormalisedRGB.h"

namespace Tela {
const NormalisedRGB& defaultWindowColour();
} // namespace Tela
