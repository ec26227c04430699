// The event queue against the queues an application would otherwise use:
// SDL2's event queue and Qt5's posted events, in the same run.
//
// Both loads are measured per event: 10,000 events queued and then drained,
// and a million events through a queue that never holds more than 8.
//
// Work posted from other threads is measured on the road a program uses: 8
// threads defer 100,000 actions while the main thread drains the headless
// window's wakes through the library's own dispatcher, which runs each action
// and lets its wrapper die. Beside it, the same road carries 100,000 plain
// messages from 8 threads to one handler: the deferred figure per action
// should stay within twice that.

#include "tela/canvas/CanvasTree.h"
#include "tela/canvas/RootCanvas.h"
#include "tela/events/Deferred.h"
#include "tela/events/Event.h"
#include "tela/events/EventHandler.h"
#include "tela/events/EventQueue.h"
#include "tela/input/RootWindowEventHandler.h"

#include "headless/HeadlessServices.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

constexpr int QUEUED = 10'000;
constexpr int STREAMED = 1'000'000;
constexpr int SHORT_QUEUE = 8;
constexpr int POSTED = 100'000;
constexpr int POSTERS = 8;

struct Sink : EventHandler {
    eResult handleEvent(const Event&) override
    {
        ++seen;
        return eHandled;
    }
    long seen = 0;
};

// Per-event work on the receiving side is the same everywhere: count it.
// Qt is drained for all receivers, as its event loop does: draining one
// receiver leaves spent entries in Qt's list, and the list then only grows.
class QtSink : public QObject {
public:
    bool event(QEvent*) override
    {
        ++seen;
        return true;
    }
    long seen = 0;
};

QCoreApplication& qt_application()
{
    static int argc = 1;
    static char name[] = "bench_events";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    return application;
}

void sdl_initialise()
{
    static const bool initialised = [] {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        return SDL_Init(SDL_INIT_EVENTS) == 0;
    }();
    if (!initialised)
        std::abort();
}

void tela_send(Sink& sink)
{
    Event e(0x4001);
    e.handler = &sink;
    event_send(&e, false);
}

void tela_receive(Sink& sink)
{
    Event* e = event_receive();
    sink.handleEvent(*e);
    event_free(e);
}

void sdl_send()
{
    SDL_Event e{};
    e.type = SDL_USEREVENT;
    SDL_PushEvent(&e);
}

void BM_Queued_Tela(benchmark::State& state)
{
    Sink sink;
    for (auto _ : state) {
        for (int i = 0; i < QUEUED; ++i)
            tela_send(sink);
        for (int i = 0; i < QUEUED; ++i)
            tela_receive(sink);
    }
    state.SetItemsProcessed(state.iterations() * QUEUED);
}

void BM_Queued_SDL(benchmark::State& state)
{
    sdl_initialise();
    long seen = 0;
    for (auto _ : state) {
        for (int i = 0; i < QUEUED; ++i)
            sdl_send();
        SDL_Event e;
        while (SDL_PollEvent(&e))
            ++seen;
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(state.iterations() * QUEUED);
}

void BM_Queued_Qt(benchmark::State& state)
{
    qt_application();
    QtSink sink;
    for (auto _ : state) {
        for (int i = 0; i < QUEUED; ++i)
            QCoreApplication::postEvent(&sink, new QEvent(QEvent::User));
        QCoreApplication::sendPostedEvents();
    }
    state.SetItemsProcessed(state.iterations() * QUEUED);
}

void BM_Streamed_Tela(benchmark::State& state)
{
    Sink sink;
    for (auto _ : state) {
        for (int i = 0; i < STREAMED; i += SHORT_QUEUE) {
            for (int j = 0; j < SHORT_QUEUE; ++j)
                tela_send(sink);
            for (int j = 0; j < SHORT_QUEUE; ++j)
                tela_receive(sink);
        }
    }
    state.SetItemsProcessed(state.iterations() * STREAMED);
}

void BM_Streamed_SDL(benchmark::State& state)
{
    sdl_initialise();
    long seen = 0;
    for (auto _ : state) {
        for (int i = 0; i < STREAMED; i += SHORT_QUEUE) {
            for (int j = 0; j < SHORT_QUEUE; ++j)
                sdl_send();
            SDL_Event e;
            while (SDL_PollEvent(&e))
                ++seen;
        }
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(state.iterations() * STREAMED);
}

void BM_Streamed_Qt(benchmark::State& state)
{
    qt_application();
    QtSink sink;
    for (auto _ : state) {
        for (int i = 0; i < STREAMED; i += SHORT_QUEUE) {
            for (int j = 0; j < SHORT_QUEUE; ++j)
                QCoreApplication::postEvent(&sink, new QEvent(QEvent::User));
            QCoreApplication::sendPostedEvents();
        }
    }
    state.SetItemsProcessed(state.iterations() * STREAMED);
}

// A root window whose wakes reach the library's dispatcher, made once.
Headless::MainLoop& delivery_road()
{
    static Canvas* const root = [] {
        iRootWindow::InitArgs args;
        args.size = {200, 100};
        args.eventHandler = Qv::make<RootWindowEventHandler>();
        return static_cast<Canvas*>(tela_createRootCanvas(args));
    }();
    if (!root)
        std::abort();
    return Headless::services().windowing()->mainLoop();
}

// Eight threads post POSTED items between them while the main thread drains
// the window's wakes until `done` reaches POSTED.
template <typename Post>
void post_and_drain(const std::atomic<int>& done, Post post)
{
    Headless::MainLoop& loop = delivery_road();
    std::vector<std::thread> posters;
    for (int t = 0; t < POSTERS; ++t)
        posters.emplace_back([&] {
            for (int i = 0; i < POSTED / POSTERS; ++i)
                post();
        });
    while (done.load(std::memory_order_acquire) < POSTED)
        if (loop.runPending() == 0)
            std::this_thread::yield();
    for (std::thread& poster : posters)
        poster.join();
}

void BM_Deferred_Tela(benchmark::State& state)
{
    std::atomic<int> ran{0};
    for (auto _ : state) {
        ran.store(0);
        post_and_drain(ran, [&] { defer([&] { ran.fetch_add(1, std::memory_order_release); }); });
    }
    state.SetItemsProcessed(state.iterations() * POSTED);
}

struct CountingSink : EventHandler {
    eResult handleEvent(const Event&) override
    {
        seen.fetch_add(1, std::memory_order_release);
        return eHandled;
    }
    std::atomic<int> seen{0};
};

void BM_Messages_Tela(benchmark::State& state)
{
    CountingSink sink;
    for (auto _ : state) {
        sink.seen.store(0);
        post_and_drain(sink.seen, [&] {
            Event e(0x4001);
            e.handler = &sink;
            event_send(&e, false);
        });
    }
    state.SetItemsProcessed(state.iterations() * POSTED);
}

} // namespace

BENCHMARK(BM_Queued_Tela)->Name("queued_10000/tela")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Queued_SDL)->Name("queued_10000/sdl")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Queued_Qt)->Name("queued_10000/qt")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Streamed_Tela)->Name("streamed_1000000/tela")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Streamed_SDL)->Name("streamed_1000000/sdl")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Streamed_Qt)->Name("streamed_1000000/qt")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Deferred_Tela)->Name("posted_100000_8_threads/deferred")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Messages_Tela)->Name("posted_100000_8_threads/messages")->Unit(benchmark::kMillisecond)->UseRealTime();
