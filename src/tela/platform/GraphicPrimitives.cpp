#include "tela/platform/GraphicPrimitives.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

Qv::Box<int> floor_and_ceil(const Qv::Rectangle<float>& area)
{
    return { static_cast<int>(std::floor(area.left)), static_cast<int>(std::floor(area.top)),
             static_cast<int>(std::ceil(area.right)), static_cast<int>(std::ceil(area.bottom)) };
}

// Reads back the parameters of one name and type; the last one given wins, as it
// would in a renderer that applies them in order.
class ParamReader final : public iShaderParamSink {
public:
    explicit ParamReader(const char* wanted) : m_wanted(wanted) {}

    void setColour(const String& name, const NormalisedRGB& value) override
    {
        if (name == m_wanted) {
            m_colour = value;
            m_has_colour = true;
        }
    }
    void setFloat(const String& name, float value) override
    {
        if (name == m_wanted) {
            m_float = value;
            m_has_float = true;
        }
    }

    const char* m_wanted;
    NormalisedRGB m_colour;
    float m_float = 0.0f;
    bool m_has_colour = false;
    bool m_has_float = false;
};

} // namespace

Qv::Box<int> LineDescription::getExtents() const
{
    return { std::min(start.x, end.x), std::min(start.y, end.y), std::max(start.x, end.x), std::max(start.y, end.y) };
}

Qv::Box<int> LineStripDescription::getExtents() const
{
    float min_x = 10000.0f;
    float min_y = 10000.0f;
    float max_x = -10000.0f;
    float max_y = -10000.0f;
    for (const XY<float>& point : points) {
        min_x = std::min(min_x, point.x);
        min_y = std::min(min_y, point.y);
        max_x = std::max(max_x, point.x);
        max_y = std::max(max_y, point.y);
    }
    return { static_cast<int>(std::trunc(min_x)), static_cast<int>(std::trunc(min_y)),
             static_cast<int>(std::ceil(max_x)), static_cast<int>(std::ceil(max_y)) };
}

Qv::Box<int> BezierCurveDescription::getExtents() const
{
    return Qv::Box<int>::around({start, end, control1, control2});
}

Qv::Box<int> TextDescription::getExtents() const
{
    if (!font)
        return {};
    const iFont::Metrics& metrics = font->getMetrics();
    const int width = font->getTextExtent(text, iFont::ALL_CHARACTERS).x;
    // The ascent is added and the descent taken away although y runs downward here:
    // renderers built against these records read the box this way round.
    return { position.x, position.y + metrics.ascent, position.x + width, position.y - metrics.descent };
}

ImageDescription::ImageDescription(const Qv::Ptr<iImage>& source, const XY<int>& position, bool blend_with_destination)
    : image(source)
    , blend(blend_with_destination)
{
    XY<int> size;
    if (image)
        image->getSize(size);
    sourceRect = { 0, 0, size.x, size.y };
    destRect = { position.x, position.y, position.x + std::abs(size.x), position.y + std::abs(size.y) };
}

ImageDescription::ImageDescription(const Qv::Ptr<iImage>& source, const XY<int>& position,
                                   const TopDownRect& source_area, bool blend_with_destination)
    : image(source)
    , destRect { position.x, position.y, position.x + std::abs(source_area.width()),
                 position.y + std::abs(source_area.height()) }
    , sourceRect(source_area)
    , blend(blend_with_destination)
{
}

ImageDescription::ImageDescription(const Qv::Ptr<iImage>& source, const TopDownRect& dest_area,
                                   const TopDownRect& source_area, bool blend_with_destination)
    : image(source)
    , destRect(dest_area)
    , sourceRect(source_area)
    , blend(blend_with_destination)
{
}

Qv::Box<int> ImageDescriptionEx::getExtents() const
{
    return floor_and_ceil(destRect);
}

Qv::Box<int> ShaderRectDescription::getExtents() const
{
    return floor_and_ceil(rect);
}

void ShaderRectDescription::addParam(const String& name, float value)
{
    params.push_back(Qv::make<ShaderParamValue<float>>(name, value));
}

void ShaderRectDescription::addParam(const String& name, const NormalisedRGB& value)
{
    params.push_back(Qv::make<ShaderParamValue<NormalisedRGB>>(name, value));
}

float ShaderRectDescription::floatParam(const char* name, float fallback) const
{
    ParamReader reader(name);
    for (const Qv::Ptr<iShaderParamValue>& param : params) {
        if (param)
            param->apply(reader);
    }
    return reader.m_has_float ? reader.m_float : fallback;
}

NormalisedRGB ShaderRectDescription::colourParam(const char* name, const NormalisedRGB& fallback) const
{
    ParamReader reader(name);
    for (const Qv::Ptr<iShaderParamValue>& param : params) {
        if (param)
            param->apply(reader);
    }
    return reader.m_has_colour ? reader.m_colour : fallback;
}
