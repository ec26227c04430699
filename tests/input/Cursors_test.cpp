// Cursors made once and cached, from images or the system's own, and the
// enter and leave reports of the canvases under the pointer.
#include "input/RootWindowFixture.h"

#include "core/TemporaryDirectory.h"
#include "support/ReportCapture.h"
#include "tela/canvas/MouseContainmentManager.h"
#include "tela/input/Cursors.h"
#include "tela/input/SystemBusyMonitor.h"

#include "headless/HeadlessServices.h"
#include "headless/HostImage.h"
#include "headless/PngFile.h"

#include <string>

namespace {

// Writes "name+" or "name-" for each enter and leave, and names a cursor.
class Watching final : public CanvasClient {
public:
    Watching(std::string& log, char name, int cursor = DEFAULT_CURSOR) : m_log(log), m_name(name), m_cursor(cursor) {}
    eResult handleEvent(const Event&) override { return eNotHandled; }
    void handleMouseContainment(bool contained) override { m_log += std::string(1, m_name) + (contained ? "+" : "-"); }
    int contextCursor(const XY<int>&) override { return m_cursor; }

private:
    std::string& m_log;
    char m_name;
    int m_cursor;
};

Headless::Windowing& windowing()
{
    return *Headless::services().windowing();
}

class CursorTest : public RootWindowFixture<> {
protected:
    void SetUp() override
    {
        RootWindowFixture::SetUp();
        tela_state().cursorCache.clear();
        Tela::setIconsDirectory(WString(icons.path().u16string().c_str()));
    }
    void TearDown() override
    {
        Headless::services().systemInfo()->setUiScale(1.0f);
        tela_state().cursorCache.clear();
        Tela::setIconsDirectory(m_usual_icons);
        RootWindowFixture::TearDown();
    }
    TemporaryDirectory icons;

private:
    const WString m_usual_icons = Tela::getIconsDirectory();
};

} // namespace

TEST(MouseContainment, EntersAndLeavesNestInsideTheParents)
{
    std::string log;
    Watching r(log, 'r'), a(log, 'a'), a1(log, '1'), a2(log, '2');
    Canvas* root = tela_newcanvas(&r, nullptr);
    Canvas* ca = tela_newcanvas(&a, root);
    Canvas* c1 = tela_newcanvas(&a1, ca);
    Canvas* c2 = tela_newcanvas(&a2, ca);
    Tela::MouseContainmentManager& manager = Tela::MouseContainmentManager::instance();
    manager.setCurrentCanvas(c1);
    EXPECT_EQ(log, "r+a+1+");
    manager.setCurrentCanvas(c2); // a sibling: the parent hears nothing
    EXPECT_EQ(log, "r+a+1+1-2+");
    manager.setCurrentCanvas(ca);
    manager.setCurrentCanvas(c1); // into a child: the child alone
    EXPECT_EQ(log, "r+a+1+1-2+2-1+");
    manager.remove(c1); // quietly
    EXPECT_EQ(manager.getCurrentCanvas(), ca);
    manager.setCurrentCanvas(nullptr); // innermost first
    EXPECT_EQ(log, "r+a+1+1-2+2-1+a-r-");
    EXPECT_EQ(manager.getCurrentCanvas(), nullptr);
    tela_deletecanvas(root);
}

namespace {

// Notes, when told it is left, which canvas the manager still calls current;
// optionally deletes a canvas from inside the callback.
class LeaveWatcher final : public CanvasClient {
public:
    eResult handleEvent(const Event&) override { return eNotHandled; }
    void handleMouseContainment(bool contained) override
    {
        if (contained)
            return;
        currentWhenLeft = Tela::MouseContainmentManager::instance().getCurrentCanvas();
        if (deleteOnLeave) {
            Canvas* doomed = deleteOnLeave;
            deleteOnLeave = nullptr;
            tela_deletecanvas(doomed);
        }
    }
    Canvas* currentWhenLeft = nullptr;
    Canvas* deleteOnLeave = nullptr;
};

} // namespace

TEST(MouseContainment, ACanvasIsToldItIsLeftBeforeItLeavesTheChain)
{
    LeaveWatcher outer, inner;
    Canvas* root = tela_newcanvas(&outer, nullptr);
    Canvas* child = tela_newcanvas(&inner, root);
    Tela::MouseContainmentManager& manager = Tela::MouseContainmentManager::instance();
    manager.setCurrentCanvas(child);
    manager.setCurrentCanvas(nullptr);
    EXPECT_EQ(inner.currentWhenLeft, child); // still current while told
    EXPECT_EQ(outer.currentWhenLeft, root);
    EXPECT_EQ(manager.getCurrentCanvas(), nullptr);

    // A leave callback that deletes the canvas being left: the chain drops it
    // once, and the next leave still comes.
    Canvas* other = tela_newcanvas(&outer, nullptr);
    child = tela_newcanvas(&inner, root);
    inner.deleteOnLeave = child;
    manager.setCurrentCanvas(child);
    manager.setCurrentCanvas(other);
    EXPECT_EQ(outer.currentWhenLeft, root);
    EXPECT_EQ(manager.getCurrentCanvas(), other);
    manager.setCurrentCanvas(nullptr);
    tela_deletecanvas(root);
    tela_deletecanvas(other);
}

TEST_F(CursorTest, NumbersWithoutAnImageAndImagesThatFailUseTheSystemsCursorOnce)
{
    EXPECT_TRUE(tela_getCursorFile(40).empty());
    EXPECT_EQ(toUTF8(tela_getCursorFile(20)), toUTF8(Tela::getIconsDirectory()) + String("PointingHand.png"));
    const int made = windowing().stockCursorsMade();
    tela_setCursor(40);
    ASSERT_TRUE(windowing().selectedCursor());
    EXPECT_EQ(windowing().selectedCursor()->stockId, 40);
    tela_setCursor(20); // no such file here
    EXPECT_EQ(windowing().selectedCursor()->stockId, 20);
    TemporaryDirectory::write(icons.file("Pen.png"), "not a picture");
    tela_setCursor(36);
    EXPECT_EQ(windowing().selectedCursor()->stockId, 36);
    tela_setCursor(40);
    tela_setCursor(36);
    EXPECT_EQ(windowing().stockCursorsMade(), made + 3); // each made once
}

TEST_F(CursorTest, AMissingIconsFolderIsReportedAtMostOnceAndNoFileIsTried)
{
    Tela::setIconsDirectory(WString(fromUTF8(String(icons.file("no icons here").c_str()))));
    ReportCapture reports;
    for (int start = 0; start < 2; ++start) {
        tela_state().cursorCache.clear();
        tela_setCursor(DEFAULT_CURSOR);
        tela_setCursor(20);
        EXPECT_EQ(windowing().selectedCursor()->stockId, 20);
    }
    EXPECT_LE(reports.count("no icons folder"), 1) << reports.text();
    EXPECT_EQ(reports.count(".png"), 0) << reports.text();
}

TEST_F(CursorTest, CursorImagesScaleWithTheScreenAndTakeTheFirstOpaquePixelAsHotSpot)
{
    Qv::Ptr<Headless::HostImage> image = Headless::HostImage::create({32, 32});
    image->fill(0x00000000);
    std::uint8_t* pixel = image->data() + (4 * 32 + 6) * 4; // row 4, column 6
    pixel[0] = pixel[1] = pixel[2] = pixel[3] = 255;
    ASSERT_TRUE(Headless::savePng(*image, icons.file("Default.png").c_str()));
    tela_setCursor(DEFAULT_CURSOR);
    ASSERT_TRUE(windowing().selectedCursor());
    EXPECT_EQ(windowing().selectedCursor()->stockId, -1);
    EXPECT_EQ(windowing().selectedCursor()->size, (XY<int>{32, 32}));
    EXPECT_EQ(windowing().selectedCursor()->hotSpot, (XY<int>{6, 4}));

    tela_state().cursorCache.clear();
    Headless::services().systemInfo()->setUiScale(1.5f);
    tela_setCursor(DEFAULT_CURSOR);
    EXPECT_EQ(windowing().selectedCursor()->size, (XY<int>{48, 48}));
}

TEST_F(CursorTest, TheCursorFollowsTheClientUnderThePointer)
{
    std::string log;
    Watching hand(log, 'h', 20);
    Canvas* c = tela_newcanvas(&hand, root);
    c->shape(region_mkrect(TopDownRect{10, 10, 60, 60}));
    mouse(MouseEvent::eMove, 20, 20);
    EXPECT_EQ(windowing().selectedCursor()->stockId, 20);
    EXPECT_EQ(log, "h+");
    mouse(MouseEvent::eMove, 100, 80); // the bare root: no client
    EXPECT_EQ(windowing().selectedCursor()->stockId, DEFAULT_CURSOR);
    EXPECT_EQ(log, "h+h-");
    tela_enableMouseContextLogic(false);
    mouse(MouseEvent::eMove, 20, 20);
    EXPECT_EQ(windowing().selectedCursor()->stockId, DEFAULT_CURSOR);
    EXPECT_EQ(log, "h+h-");
    tela_enableMouseContextLogic(true);
    tela_deletecanvas(c);
}

TEST_F(CursorTest, ASilentMainThreadShowsTheBusyCursorUntilTheNextHeartbeat)
{
    EXPECT_FALSE(SystemBusyMonitor::heartbeat()); // nobody listens yet
    ASSERT_TRUE(SystemBusyMonitor::start(20));
    EXPECT_FALSE(SystemBusyMonitor::start(20));
    const auto busy_cursor_shown = [] {
        const Qv::Ptr<Headless::Cursor> cursor = windowing().selectedCursor();
        return cursor && cursor->stockId == BUSY_CURSOR;
    };
    for (int waited = 0; waited < 500 && !busy_cursor_shown(); ++waited)
        OS()->threading()->sleepMs(2);
    EXPECT_TRUE(busy_cursor_shown());
    // A beat asks the main thread for the right cursor again.
    EXPECT_TRUE(SystemBusyMonitor::heartbeat());
    for (int waited = 0; waited < 500 && !event_pending(nullptr, 0); ++waited)
        OS()->threading()->sleepMs(2);
    EXPECT_TRUE(SystemBusyMonitor::stop());
    EXPECT_FALSE(SystemBusyMonitor::stop());
    while (Event* deferred = event_receive()) {
        if (EventHandler* target = deferred->getEventHandlerObj())
            target->handleEvent(*deferred);
        event_free(deferred);
    }
    EXPECT_EQ(windowing().selectedCursor()->stockId, DEFAULT_CURSOR);
}
