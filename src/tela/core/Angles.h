#pragma once
// Angles in degrees, as the path API and the colour wheel take them.

// a - floor(a / 360) * 360, kept in [0, 360]; exactly 360.0 stays 360.0.
// Infinities and NaN give NaN.
double norm_angle360(double degrees);
