// RecordingRenderer: an iGraphicPrimitivesRenderer that draws nothing and keeps every
// call, in order, with copies of the descriptions it was given.
//
// - calls() lists the operations; each call knows its name ("drawRects"), its count
//   and where its descriptions start in the store of their type.
// - primitive<D>(call, index) gives the index-th description of a call. Asking for a
//   type the call did not take prints a message and returns a default description, so
//   the test fails on its own expectations rather than on a crash.
// - Copies share Qv::Ptr members (images, fonts, shader values) with what was passed,
//   so they stay alive while the recorder lives; clear() lets them go.
// - getCaps() answers what the test set with setCaps(), 0 at first.
#pragma once

#include "tela/platform/GraphicPrimitives.h"

#include <cstring>
#include <string>
#include <tuple>

class RecordingRenderer final : public iGraphicPrimitivesRenderer {
public:
    struct Call {
        const char* operation = "";
        unsigned count = 0;
        std::size_t first = 0;           // index of the first description in its store
        Qv::Ptr<iRegion> clip;           // setClip
        bool antialiasing = false;       // setAntialiasing
    };

    void setCaps(unsigned caps) { m_caps = caps; }
    void clear();

    const Qv::Vector<Call>& calls() const { return m_calls; }
    std::size_t callCount() const { return m_calls.size(); }
    // The operations in order, separated by spaces: "setClip drawRects drawImages".
    std::string operations() const;

    template <typename D>
    const D& primitive(std::size_t call, std::size_t index = 0) const;

    // iGraphicPrimitivesRenderer
    void setClip(Qv::Ptr<iRegion> clip) override;
    void setAntialiasing(bool enabled) override;
    unsigned getCaps() const override { return m_caps; }
    void drawShaderRects(const ShaderRectDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawLineStrips(const LineStripDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawRoundedRects(const RoundedRectDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawImagesEx(const ImageDescriptionEx* descriptions, unsigned count) override { record(descriptions, count); }
    void drawImages(const ImageDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawBeziers(const BezierCurveDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawAlphaRects(const AlphaRectDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawTexts(const TextDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawLines(const LineDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawEllipses(const EllipseDescription* descriptions, unsigned count) override { record(descriptions, count); }
    void drawRects(const RectDescription* descriptions, unsigned count) override { record(descriptions, count); }

private:
    using Stores = std::tuple<Qv::Vector<ShaderRectDescription>, Qv::Vector<LineStripDescription>,
                              Qv::Vector<RoundedRectDescription>, Qv::Vector<ImageDescriptionEx>,
                              Qv::Vector<ImageDescription>, Qv::Vector<BezierCurveDescription>,
                              Qv::Vector<AlphaRectDescription>, Qv::Vector<TextDescription>,
                              Qv::Vector<LineDescription>, Qv::Vector<EllipseDescription>,
                              Qv::Vector<RectDescription>>;

    // The operation that takes each description type.
    static constexpr const char* operationFor(const ShaderRectDescription*) { return "drawShaderRects"; }
    static constexpr const char* operationFor(const LineStripDescription*) { return "drawLineStrips"; }
    static constexpr const char* operationFor(const RoundedRectDescription*) { return "drawRoundedRects"; }
    static constexpr const char* operationFor(const ImageDescriptionEx*) { return "drawImagesEx"; }
    static constexpr const char* operationFor(const ImageDescription*) { return "drawImages"; }
    static constexpr const char* operationFor(const BezierCurveDescription*) { return "drawBeziers"; }
    static constexpr const char* operationFor(const AlphaRectDescription*) { return "drawAlphaRects"; }
    static constexpr const char* operationFor(const TextDescription*) { return "drawTexts"; }
    static constexpr const char* operationFor(const LineDescription*) { return "drawLines"; }
    static constexpr const char* operationFor(const EllipseDescription*) { return "drawEllipses"; }
    static constexpr const char* operationFor(const RectDescription*) { return "drawRects"; }

    template <typename D>
    void record(const D* descriptions, unsigned count)
    {
        Qv::Vector<D>& store = std::get<Qv::Vector<D>>(m_stores);
        Call call;
        call.operation = operationFor(descriptions);
        call.count = count;
        call.first = store.size();
        for (unsigned index = 0; index < count; ++index)
            store.push_back(descriptions[index]);
        m_calls.push_back(call);
    }

    static void reportMismatch(std::size_t call, std::size_t index, const char* operation);

    Qv::Vector<Call> m_calls;
    Stores m_stores;
    unsigned m_caps = 0;
};

template <typename D>
const D& RecordingRenderer::primitive(std::size_t call, std::size_t index) const
{
    static const D none;
    const Qv::Vector<D>& store = std::get<Qv::Vector<D>>(m_stores);
    // A call of another operation stored its descriptions elsewhere: its indices would
    // point at someone else's here.
    if (call >= m_calls.size() || std::strcmp(m_calls[call].operation, operationFor(static_cast<const D*>(nullptr))) != 0
        || index >= m_calls[call].count) {
        reportMismatch(call, index, call < m_calls.size() ? m_calls[call].operation : "nothing");
        return none;
    }
    return store[m_calls[call].first + index];
}
