// The event queue against the queues an application would otherwise use:
// SDL2's event queue and Qt5's posted events, in the same run.
//
// Both loads are measured per event: 10,000 events queued and then drained,
// and a million events through a queue that never holds more than 8.

#include "events/Event.h"
#include "events/EventHandler.h"
#include "events/EventQueue.h"

#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <cstdlib>

namespace {

constexpr int kQueued = 10'000;
constexpr int kStreamed = 1'000'000;
constexpr int kShortQueue = 8;

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
        for (int i = 0; i < kQueued; ++i)
            tela_send(sink);
        for (int i = 0; i < kQueued; ++i)
            tela_receive(sink);
    }
    state.SetItemsProcessed(state.iterations() * kQueued);
}

void BM_Queued_SDL(benchmark::State& state)
{
    sdl_initialise();
    long seen = 0;
    for (auto _ : state) {
        for (int i = 0; i < kQueued; ++i)
            sdl_send();
        SDL_Event e;
        while (SDL_PollEvent(&e))
            ++seen;
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(state.iterations() * kQueued);
}

void BM_Queued_Qt(benchmark::State& state)
{
    qt_application();
    QtSink sink;
    for (auto _ : state) {
        for (int i = 0; i < kQueued; ++i)
            QCoreApplication::postEvent(&sink, new QEvent(QEvent::User));
        QCoreApplication::sendPostedEvents();
    }
    state.SetItemsProcessed(state.iterations() * kQueued);
}

void BM_Streamed_Tela(benchmark::State& state)
{
    Sink sink;
    for (auto _ : state) {
        for (int i = 0; i < kStreamed; i += kShortQueue) {
            for (int j = 0; j < kShortQueue; ++j)
                tela_send(sink);
            for (int j = 0; j < kShortQueue; ++j)
                tela_receive(sink);
        }
    }
    state.SetItemsProcessed(state.iterations() * kStreamed);
}

void BM_Streamed_SDL(benchmark::State& state)
{
    sdl_initialise();
    long seen = 0;
    for (auto _ : state) {
        for (int i = 0; i < kStreamed; i += kShortQueue) {
            for (int j = 0; j < kShortQueue; ++j)
                sdl_send();
            SDL_Event e;
            while (SDL_PollEvent(&e))
                ++seen;
        }
    }
    benchmark::DoNotOptimize(seen);
    state.SetItemsProcessed(state.iterations() * kStreamed);
}

void BM_Streamed_Qt(benchmark::State& state)
{
    qt_application();
    QtSink sink;
    for (auto _ : state) {
        for (int i = 0; i < kStreamed; i += kShortQueue) {
            for (int j = 0; j < kShortQueue; ++j)
                QCoreApplication::postEvent(&sink, new QEvent(QEvent::User));
            QCoreApplication::sendPostedEvents();
        }
    }
    state.SetItemsProcessed(state.iterations() * kStreamed);
}

} // namespace

BENCHMARK(BM_Queued_Tela)->Name("queued_10000/tela")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Queued_SDL)->Name("queued_10000/sdl")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Queued_Qt)->Name("queued_10000/qt")->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Streamed_Tela)->Name("streamed_1000000/tela")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Streamed_SDL)->Name("streamed_1000000/sdl")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Streamed_Qt)->Name("streamed_1000000/qt")->Unit(benchmark::kMillisecond);
