#pragma once
// A root window of the embedded platform whose fonts are all the fixed-advance
// test font (a blank 4 pixels, anything else 8; ascent 10, descent 3, height
// 16), so that layouts that load their fonts by request can be worked out by
// hand. Everything but createFont goes to the real window inside.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/platform/OS.h"
#include "tela/platform/iWindowingService.h"
#include "tela/platform/iRootWindow.h"

#include "text/FixedFont.h"

namespace TextTest {

// The fixed font, answering for the style it was asked for, so that the font
// table finds it again.
class StyledFixedFont final : public iFont {
public:
    explicit StyledFixedFont(unsigned int style) : m_style(style) {}
    const Metrics& getMetrics() const override { return m_font.getMetrics(); }
    unsigned int getStyle() const override { return m_style; }
    void analyse(const WString& text, std::vector<int>& edges) const override { m_font.analyse(text, edges); }
    XY<int> getTextExtent(const WString& text, unsigned count) const override { return m_font.getTextExtent(text, count); }
    CharacterLocation locateChar(const WString& text, eCharSeekMethod method, unsigned short index) const override
    {
        return m_font.locateChar(text, method, index);
    }
    CharacterLocation getCharInfoForPixelX(const WString& text, int x) const override
    {
        return m_font.getCharInfoForPixelX(text, x);
    }

private:
    FixedFont m_font;
    unsigned int m_style;
};

class FixedFontWindow final : public iRootWindow {
public:
    explicit FixedFontWindow(Qv::Ptr<iRootWindow> inner) : m_inner(std::move(inner)) {}

    Qv::Ptr<iFont> createFont(const WString&, unsigned short, unsigned int style, unsigned short) override
    {
        return Qv::make<StyledFixedFont>(style);
    }

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

// A root canvas on such a window, made the current canvas; null when the
// platform gives no window. Delete it with tela_deletecanvas.
inline RootCanvas* createFixedFontRoot(const XY<int>& size)
{
    Qv::Ptr<iRootWindow> inner;
    if (!OS()->windowing()->createRootWindow(inner, 0) || !inner)
        return nullptr;
    iRootWindow::InitArgs args;
    args.size = size;
    if (!inner->initWindow(args))
        return nullptr;
    auto* root = new RootCanvas(Qv::make<FixedFontWindow>(inner));
    tela_addRootWindow(root, nullptr);
    tela_setcanvas(root);
    return root;
}

} // namespace TextTest
