#pragma once
// NormalisedRGB: four floats, nominally 0 to 1. Polymorphic so that richer
// colour values can stand where one is expected.

struct NormalisedRGB {
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;
    float a = 1.0f;

    NormalisedRGB() = default;
    NormalisedRGB(float red, float green, float blue, float alpha = 1.0f) : r(red), g(green), b(blue), a(alpha) {}
    NormalisedRGB(const NormalisedRGB&) = default;
    NormalisedRGB& operator=(const NormalisedRGB&) = default;
    virtual ~NormalisedRGB() = default;
};
