#include "headless/HeadlessRootWindow.h"
#include "headless/HeadlessServices.h"

#include "support/WakeSink.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// Counts the wakes it receives and stops the loop once it has seen `expected`.
class CountingHandler final : public WakeSink {
public:
    explicit CountingHandler(std::uint64_t expected) : m_expected(expected) {}

    eRC handleEvent(const UserEvent&) override
    {
        if (++m_seen == m_expected)
            OS()->windowing()->shutdownMessageLoop();
        return eNotHandled;
    }

    std::uint64_t seen() const { return m_seen; }

private:
    std::uint64_t m_expected;
    std::uint64_t m_seen = 0;
};

Qv::Ptr<Headless::RootWindow> make_window()
{
    Qv::Ptr<iRootWindow> window;
    OS()->windowing()->createRootWindow(window, 0);
    return Qv::dynamicCast<Headless::RootWindow>(window);
}

} // namespace

TEST(HeadlessMainLoopTest, EveryWakeFromAnyThreadBecomesOneUserEvent)
{
    constexpr int PRODUCERS = 4;
    constexpr int WAKES_EACH = 5000;
    auto window = make_window();
    auto handler = Qv::make<CountingHandler>(PRODUCERS * WAKES_EACH);
    window->setEventHandler(handler);

    std::vector<std::thread> producers;
    for (int producer = 0; producer < PRODUCERS; ++producer)
        producers.emplace_back([&] {
            for (int wake = 0; wake < WAKES_EACH; ++wake)
                window->postWake();
        });
    EXPECT_EQ(OS()->windowing()->runMessageLoop(), 0);
    for (auto& producer : producers)
        producer.join();

    EXPECT_EQ(handler->seen(), std::uint64_t(PRODUCERS * WAKES_EACH));
    EXPECT_EQ(window->wakeCount(), std::uint64_t(PRODUCERS * WAKES_EACH));
    EXPECT_EQ(Headless::services().windowing()->mainLoop().runPending(), 0u);
}

TEST(HeadlessMainLoopTest, WakesOfADeadWindowAreNeverDelivered)
{
    auto survivor = make_window();
    auto survivor_handler = Qv::make<CountingHandler>(0);
    survivor->setEventHandler(survivor_handler);
    {
        auto doomed = make_window();
        doomed->setEventHandler(Qv::make<CountingHandler>(0));
        doomed->postWake();
        doomed->postWake();
    }
    survivor->postWake();
    EXPECT_EQ(Headless::services().windowing()->mainLoop().runPending(), 1u);
    EXPECT_EQ(survivor_handler->seen(), 1u);
}

TEST(HeadlessHostImageTest, OffscreenImagesTakeTheWindowsRoadAndLockTheirPixels)
{
    auto window = make_window();
    window->setDisplayLocation(iImageBase::eGPU);
    Qv::Ptr<iImage> image;
    ASSERT_TRUE(window->createOffscreenImage(image, XY<int>(3, 2)));
    EXPECT_EQ(image->location(), iImageBase::eGPU);

    auto host = Qv::dynamicCast<Headless::HostImage>(image);
    ASSERT_TRUE(host);
    {
        Qv::Ptr<iPixelGuard> guard = host->lock();
        EXPECT_TRUE(host->isLocked());
        EXPECT_EQ(guard->stride(), 12);
        EXPECT_EQ(guard->size(), XY<int>(3, 2));
        guard->pixels()[guard->stride() + 4 + 3] = 0xFF;   // alpha of pixel (1, 1)
        image = nullptr;   // the guard keeps the image alive
        EXPECT_EQ(host->pixelAt(1, 1), 0xFF000000u);
    }
    EXPECT_FALSE(host->isLocked());
}

TEST(HeadlessHostImageTest, AbsurdSizesAreRefusedWithAMessage)
{
    EXPECT_FALSE(Headless::HostImage::create(XY<int>(-1, 10)));
    EXPECT_FALSE(Headless::HostImage::create(XY<int>(1 << 20, 1 << 20)));
}
