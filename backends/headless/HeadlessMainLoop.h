// HeadlessMainLoop: the main loop of the headless platform.
//
// Invariants
// - A wake posted on a window (any thread) becomes exactly one UserEvent delivered to
//   that window's iEventHandler on the thread running the loop, in posting order per
//   window. Wakes are counted, not stored, so a million sends cost no memory here.
// - A window that dies with wakes pending unregisters first; nothing is delivered to it.
// - A paint asked for on a window (main thread) becomes one PaintEvent, however
//   often it was asked for, delivered once no window has wakes pending: input
//   and messages go first, as with a real window system.
// - A periodic timer becomes a TimerEvent for its window when due by msecsNow()
//   (so a fake clock drives it in tests), after wakes and paints; ticks missed
//   while the loop was busy are not made up.
// - The loop's mutex is never held while a handler runs, so a handler may post wakes
//   and postWake never waits on the main thread.
#pragma once

#include "tela/core/Memory.h"
#include "tela/platform/OSEvents.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <variant>

namespace Headless {

class RootWindow;

class MainLoop {
public:
    void registerWindow(RootWindow* window);
    void unregisterWindow(RootWindow* window);
    void wake(RootWindow* window);          // any thread
    void schedulePaint(RootWindow* window);
    // A timer ticking every `period` milliseconds for the window; 0 when refused.
    std::uint64_t addTimer(RootWindow* window, std::uint32_t period);
    void removeTimer(std::uint64_t id);

    // A scripted report for the window's handler, delivered in order after the
    // wakes pending when its turn comes, as a window system delivers input.
    using ScriptedInput = std::variant<MouseEvent, KeyEvent, WindowEvent>;
    void script(RootWindow* window, const ScriptedInput& input);

    // Runs until stop(); returns 0. Called on the main thread.
    int run();
    // Asks run() to return once the handler now running is done. Any thread.
    void stop();
    // Delivers every wake and paint pending now, without waiting; returns how
    // many events that was. For tests.
    std::size_t runPending();

private:
    struct WindowWakes {
        RootWindow* window;
        std::uint64_t pending;
        bool paint = false;
        Qv::Deque<ScriptedInput> input;
    };
    struct Timer {
        std::uint64_t id;
        RootWindow* window;
        std::uint32_t period;
        std::uint64_t due;
    };
    enum class Kind { Wake, Input, Paint, Tick };
    struct Delivery {
        RootWindow* window = nullptr;
        Kind kind = Kind::Wake;
        std::uint32_t time = 0;
        ScriptedInput input;
    };

    // The entry of a registered window; null for any other. Called with m_mutex held.
    WindowWakes* find(RootWindow* window);
    // Takes one pending wake, else one scripted report, else one paint, else
    // one due tick; false when there is none.
    // Called with m_mutex held.
    bool take(Delivery& next);
    void deliver(const Delivery& next);

    std::mutex m_mutex;
    std::condition_variable m_woken;
    // How long the loop may sleep before a timer is due; -1 for ever.
    long long sleep_limit() const;

    Qv::Vector<WindowWakes> m_windows;
    Qv::Vector<Timer> m_timers;
    std::uint64_t m_next_timer_id = 1;
    std::size_t m_next_window = 0;           // round robin between windows
    bool m_stop_requested = false;
};

} // namespace Headless
