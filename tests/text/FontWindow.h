#pragma once
// FontWindow: a root window that only makes fonts, and counts them. Its fonts
// have metrics worked out from the size, so a test can tell which request
// made a font; a family whose name begins "Missing" (or every family, once
// `broken` is set) comes back with a height of 0, the way a font that could
// not be loaded does.

#include "tela/platform/iRootWindow.h"

#include <atomic>
#include <cstdint>

class SizedFont final : public iFont {
public:
    SizedFont(const WString& family, unsigned short size, unsigned int style, bool missing)
        : m_family(family), m_size(size), m_style(style)
    {
        m_metrics.ascent = static_cast<std::int16_t>(size * 3 / 4);
        m_metrics.descent = static_cast<std::int16_t>(size / 4);
        m_metrics.height = missing ? 0 : static_cast<std::uint16_t>(size + size / 4);
    }

    const Metrics& getMetrics() const override { return m_metrics; }
    unsigned int getStyle() const override { return m_style; }
    void analyse(const WString& text, std::vector<int>& rightEdges) const override
    {
        rightEdges.clear();
        for (std::size_t index = 1; index <= text.size(); ++index)
            rightEdges.push_back(static_cast<int>(index) * advance());
    }
    XY<int> getTextExtent(const WString& text, unsigned count) const override
    {
        const std::size_t shown = count < text.size() ? count : text.size();
        return {static_cast<int>(shown) * advance(), m_metrics.height};
    }
    CharacterLocation locateChar(const WString&, eCharSeekMethod, unsigned short index) const override
    {
        return {index, index * advance(), (index + 1) * advance()};
    }
    CharacterLocation getCharInfoForPixelX(const WString&, int x) const override
    {
        return {x / advance(), x / advance() * advance(), (x / advance() + 1) * advance()};
    }

    const WString& family() const { return m_family; }
    unsigned short size() const { return m_size; }

private:
    int advance() const { return m_size / 2 + 1; }

    WString m_family;
    unsigned short m_size;
    unsigned int m_style;
    Metrics m_metrics;
};

class FontWindow final : public iRootWindow {
public:
    explicit FontWindow(std::uint32_t id) : m_identity(id) {}

    Qv::Ptr<iFont> createFont(const WString& name, unsigned short size, unsigned int style,
                              unsigned short) override
    {
        ++created;
        const bool missing = broken || name.view().starts_with(u"Missing");
        return Qv::make<SizedFont>(name, size, style, missing);
    }
    std::uint32_t identity() const override { return m_identity; }

    int created = 0;
    bool broken = false;

    // Nothing else is asked of it.
    iImageBase::eLocation displayLocation() const override { return iImageBase::eHostMemory; }
    void getSize(XY<int>& size) const override { size = {}; }
    bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>&, int) override { return false; }
    bool createOffscreenImage(Qv::Ptr<iImage>&, const XY<int>&) override { return false; }
    bool initWindow(const InitArgs&) override { return true; }
    void getPosition(XY<int>& position) const override { position = {}; }
    void getBox(Qv::Box<int>& box) const override { box = {}; }
    bool hasTitleBar() const override { return false; }
    bool isMaximized() const override { return false; }
    bool isMinimized() const override { return false; }
    bool hasFocus() const override { return false; }
    void* nativeHandle() const override { return nullptr; }
    bool isActive() const override { return false; }
    void setUseWindowsTitleBar(bool) override {}
    void setActive(bool) override {}
    void postWake() override {}
    void setTitle(const WString&) override {}
    void minimise() override {}
    void claimFocus() override {}
    void setEventHandler(const Qv::Ptr<iEventHandler>&) override {}
    bool dragFiles(const Qv::Vector<WString>&) override { return false; }
    bool createPeriodicTimer(Qv::Ptr<iPeriodicTimer>&, std::uint32_t) override { return false; }
    void invalidate(const Qv::Ptr<iRegion>&) override {}

private:
    std::uint32_t m_identity;
};
