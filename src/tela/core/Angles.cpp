#include "tela/core/Angles.h"

#include <cmath>

double norm_angle360(double degrees)
{
    double a = degrees - std::floor(degrees / 360.0) * 360.0;
    // Rounding can leave the difference a hair outside the range.
    if (a < 0.0)
        a += 360.0;
    if (a > 360.0)
        a -= 360.0;
    return a;
}
