// iShaderEffect: a small pixel program the platform found by name, drawn over one
// rectangle by iGraphicPrimitivesRenderer::drawShaderRects.
//
// - The library only carries an effect from the lookup to the renderer; the renderer
//   asks it its name to know which program to run.
// - Parameters travel as counted values that hand themselves to a sink the renderer
//   supplies (iShaderParamSink); the value decides which sink operation it calls, so a
//   renderer never has to guess a parameter's type.
#pragma once

#include "tela/core/LightweightString.h"
#include "tela/core/NormalisedRGB.h"
#include "tela/core/Ptr.h"

#include <type_traits>
#include <utility>

class iShaderEffect : public iObject {
public:
    virtual String name() const = 0;   // the resource name it was found by, e.g. "InFront"
};

// Where a parameter value lands. Colours come through the second slot and floats
// through the third (the destructor takes the first).
class iShaderParamSink : public iVirtual {
public:
    virtual void setColour(const String& name, const NormalisedRGB& value) = 0;
    virtual void setFloat(const String& name, float value) = 0;
};

class iShaderParamValue : public iObject {
public:
    virtual void apply(iShaderParamSink& target) const = 0;
};

// A named value of one of the two types a shader takes: float or NormalisedRGB.
template <typename T>
class ShaderParamValue final : public iShaderParamValue {
public:
    ShaderParamValue(String param_name, const T& param_value) : name(std::move(param_name)), value(param_value) {}

    void apply(iShaderParamSink& target) const override
    {
        if constexpr (std::is_same_v<T, float>)
            target.setFloat(name, value);
        else
            target.setColour(name, value);
    }

    String name;
    T value;
};
