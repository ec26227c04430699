#include "tela/colour/DefaultWindowColour.h"

#include "tela/core/Config.h"
#include "tela/core/HTMLUtils.h"

#include <algorithm>

const NormalisedRGB& Tela::defaultWindowColour()
{
    static const NormalisedRGB colour = [] {
        // The factor moves each channel towards white by (factor - 1) / 2.
        const double factor = std::min(config_double("Brighten", 0.0), 1.0) + 1.0;
        const float k = static_cast<float>((factor - 1.0) * 0.5);
        const NormalisedRGB base = HTMLUtils::fromHex(0x282C30);
        return NormalisedRGB((1.0f - base.r) * k + base.r, (1.0f - base.g) * k + base.g, (1.0f - base.b) * k + base.b);
    }();
    return colour;
}
