#pragma once
// Root windows whose fonts the test makes, so that layouts and the font table
// can be worked out by hand; everything but createFont (and, for FontWindow,
// the identity) goes to a real window of the embedded platform inside.
//   FixedFontWindow: every font is the fixed-advance test font (a blank 4
//     pixels, anything else 8; ascent 10, descent 3, height 16).
//   FontWindow: fonts whose metrics follow the size, so a test can tell which
//     request made a font, counted; a family whose name begins "Missing" (or
//     every family, once `broken` is set) comes back with a height of 0, the
//     way a font that could not be loaded does.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/platform/OS.h"
#include "tela/platform/iRootWindow.h"
#include "tela/platform/iWindowingService.h"

#include "text/FixedFont.h"

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
    CharacterLocation locateChar(const WString&, eCharSeekMethod, unsigned short) const override { return {}; }
    CharacterLocation getCharInfoForPixelX(const WString&, int) const override { return {}; }

    const WString& family() const { return m_family; }
    unsigned short size() const { return m_size; }

private:
    int advance() const { return m_size / 2 + 1; }

    WString m_family;
    unsigned short m_size;
    unsigned int m_style;
    Metrics m_metrics;
};

class FontMakingWindow : public iRootWindow {
public:
    FontMakingWindow() { OS()->windowing()->createRootWindow(m_inner, 0); }
    bool valid() const { return static_cast<bool>(m_inner); }

    iImageBase::eLocation displayLocation() const override { return m_inner->displayLocation(); }
    void getSize(XY<int>& size) const override { m_inner->getSize(size); }
    bool getRenderer(Qv::Ptr<iGraphicPrimitivesRenderer>& out, int flags) override { return m_inner->getRenderer(out, flags); }
    bool createOffscreenImage(Qv::Ptr<iImage>& out, const XY<int>& size) override
    {
        return m_inner->createOffscreenImage(out, size);
    }
    bool initWindow(const InitArgs& args) override { return m_inner->initWindow(args); }
    void getPosition(XY<int>& position) const override { m_inner->getPosition(position); }
    void getBox(Qv::Box<int>& box) const override { m_inner->getBox(box); }
    bool hasTitleBar() const override { return m_inner->hasTitleBar(); }
    bool isMaximized() const override { return m_inner->isMaximized(); }
    bool isMinimized() const override { return m_inner->isMinimized(); }
    bool hasFocus() const override { return m_inner->hasFocus(); }
    void* nativeHandle() const override { return m_inner->nativeHandle(); }
    bool isActive() const override { return m_inner->isActive(); }
    void setUseWindowsTitleBar(bool use) override { m_inner->setUseWindowsTitleBar(use); }
    void setActive(bool active) override { m_inner->setActive(active); }
    void postWake() override { m_inner->postWake(); }
    void setTitle(const WString& title) override { m_inner->setTitle(title); }
    void minimise() override { m_inner->minimise(); }
    void claimFocus() override { m_inner->claimFocus(); }
    void setEventHandler(const Qv::Ptr<iEventHandler>& handler) override { m_inner->setEventHandler(handler); }
    bool dragFiles(const Qv::Vector<WString>& files) override { return m_inner->dragFiles(files); }
    bool createPeriodicTimer(Qv::Ptr<iPeriodicTimer>& out, std::uint32_t milliseconds) override
    {
        return m_inner->createPeriodicTimer(out, milliseconds);
    }
    void invalidate(const Qv::Ptr<iRegion>& region) override { m_inner->invalidate(region); }
    std::uint32_t identity() const override { return m_inner->identity(); }

private:
    Qv::Ptr<iRootWindow> m_inner;
};

class FixedFontWindow final : public FontMakingWindow {
public:
    Qv::Ptr<iFont> createFont(const WString&, unsigned short, unsigned int style, unsigned short) override
    {
        return Qv::make<TextTest::FixedFont>(SIZE_MAX, style);
    }
};

class FontWindow final : public FontMakingWindow {
public:
    explicit FontWindow(std::uint32_t id) : m_identity(id) {}
    Qv::Ptr<iFont> createFont(const WString& name, unsigned short size, unsigned int style, unsigned short) override
    {
        ++created;
        return Qv::make<SizedFont>(name, size, style, broken || name.view().starts_with(u"Missing"));
    }
    std::uint32_t identity() const override { return m_identity; }

    int created = 0;
    bool broken = false;

private:
    std::uint32_t m_identity;
};

// A root canvas on a fixed-font window, made the current canvas; null when the
// platform gives no window. Delete it with tela_deletecanvas.
inline RootCanvas* createFixedFontRoot(const XY<int>& size)
{
    const auto window = Qv::make<FixedFontWindow>();
    iRootWindow::InitArgs args;
    args.size = size;
    if (!window->valid() || !window->initWindow(args))
        return nullptr;
    auto* root = new RootCanvas(window);
    tela_addRootWindow(root, nullptr);
    tela_setcanvas(root);
    return root;
}
