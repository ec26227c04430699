#pragma once
// SortedPointerSet: an ordered set of pointers, kept as an ordered list of
// short sorted runs, with the last key of every run in one array beside them.
//
// The registry of live handlers asks three things of its set, thousands of
// times a second and from many threads under one lock: add a pointer, find
// one, remove one. A node-based tree answers each with a walk over as many
// scattered nodes as the tree is deep, and an allocation for every insert.
// Here a lookup is a binary search over the contiguous run ends and then over
// one run of at most RUN_MAX keys, so it touches a handful of cache lines; an
// insert or erase moves at most one run's keys and allocates only when a run
// splits. Iteration is in ascending order, as a tree's would be.
//
// Invariants
// - Keys are unique and ascending across the runs taken in order; no run is
//   empty; m_last[i] is the last key of m_runs[i].
// - No run holds more than RUN_MAX keys.
// - Any two neighbouring runs hold more than RUN_MAX / 2 keys together, so
//   the number of runs stays below 4 * size() / RUN_MAX + 1.
//
// Not thread-safe: its owner guards it.

#include "tela/core/Memory.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

template <typename T>
class SortedPointerSet {
    static_assert(std::is_pointer_v<T>, "SortedPointerSet holds pointers");

public:
    static constexpr std::size_t RUN_MAX = 120;

    // False when the key was there already.
    bool insert(T key)
    {
        if (m_runs.empty()) {
            m_runs.push_back(fresh_run());
            m_runs.back().push_back(key);
            m_last.push_back(key);
            ++m_size;
            return true;
        }
        std::size_t r = run_for(key);
        if (r == m_runs.size())
            r = m_runs.size() - 1; // beyond every key: the last run takes it
        Run& run = m_runs[r];
        const auto at = run.begin() + static_cast<std::ptrdiff_t>(lower_bound(run, key));
        if (at != run.end() && *at == key)
            return false;
        run.insert(at, key);
        m_last[r] = run.back();
        ++m_size;
        if (run.size() > RUN_MAX)
            split(r);
        return true;
    }

    // False when the key was not there.
    bool erase(T key)
    {
        const std::size_t r = run_for(key);
        if (r == m_runs.size())
            return false;
        Run& run = m_runs[r];
        const auto at = run.begin() + static_cast<std::ptrdiff_t>(lower_bound(run, key));
        if (at == run.end() || *at != key)
            return false;
        run.erase(at);
        --m_size;
        if (run.empty()) {
            remove_run(r);
            return true;
        }
        m_last[r] = run.back();
        // Keep neighbours from thinning out into many tiny runs.
        if (r + 1 < m_runs.size() && m_runs[r].size() + m_runs[r + 1].size() <= RUN_MAX / 2)
            merge_into(r, r + 1);
        if (r > 0 && m_runs[r - 1].size() + m_runs[r].size() <= RUN_MAX / 2)
            merge_into(r - 1, r);
        return true;
    }

    bool contains(T key) const
    {
        const std::size_t r = run_for(key);
        if (r == m_runs.size())
            return false;
        const Run& run = m_runs[r];
        const std::size_t at = lower_bound(run, key);
        return at != run.size() && run[at] == key;
    }

    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    // Calls f(key) for every key, in ascending order.
    template <typename F>
    void forEach(F&& f) const
    {
        for (const Run& run : m_runs)
            for (T key : run)
                f(key);
    }

private:
    using Run = Qv::Vector<T>;
    using Less = std::less<T>; // a total order even on unrelated pointers

    // The first run whose last key is not below key; m_runs.size() if none.
    std::size_t run_for(T key) const { return lower_bound(m_last, key); }

    // The index of the first key not below key in a sorted array; its size if
    // none. Without branches on the comparisons: the keys of a registry
    // arrive in no order the branch predictor could learn, and a mispredicted
    // step of a search costs more than the step.
    static std::size_t lower_bound(const Qv::Vector<T>& keys, T key)
    {
        std::size_t n = keys.size();
        if (n == 0)
            return 0;
        const T* base = keys.data();
        while (n > 1) {
            const std::size_t half = n / 2;
            base = Less()(base[half], key) ? base + half : base;
            n -= half;
        }
        return static_cast<std::size_t>(base - keys.data()) + (Less()(*base, key) ? 1 : 0);
    }

    void split(std::size_t r)
    {
        Run upper = fresh_run();
        Run& run = m_runs[r];
        const auto half = run.begin() + static_cast<std::ptrdiff_t>(run.size() / 2);
        upper.assign(half, run.end());
        run.erase(half, run.end());
        m_last[r] = run.back();
        const T upper_last = upper.back();
        m_runs.insert(m_runs.begin() + static_cast<std::ptrdiff_t>(r + 1), std::move(upper));
        m_last.insert(m_last.begin() + static_cast<std::ptrdiff_t>(r + 1), upper_last);
    }

    // Appends run `from` (the one after `into`) to `into` and drops it.
    void merge_into(std::size_t into, std::size_t from)
    {
        Run& target = m_runs[into];
        target.insert(target.end(), m_runs[from].begin(), m_runs[from].end());
        m_last[into] = target.back();
        remove_run(from);
    }

    // Runs come and go as the keys they hold do, and a run's storage is a
    // block of a few KiB; a handful of emptied ones are kept for the next
    // split, so that a steady stream of births and deaths allocates nothing.
    Run fresh_run()
    {
        Run run;
        if (!m_spare.empty()) {
            run = std::move(m_spare.back());
            m_spare.pop_back();
            run.clear();
        } else {
            run.reserve(RUN_MAX + 1);
        }
        return run;
    }

    void remove_run(std::size_t r)
    {
        if (m_spare.size() < SPARE_RUNS) {
            m_spare.push_back(std::move(m_runs[r]));
            m_spare.back().clear();
        }
        m_runs.erase(m_runs.begin() + static_cast<std::ptrdiff_t>(r));
        m_last.erase(m_last.begin() + static_cast<std::ptrdiff_t>(r));
    }

    static constexpr std::size_t SPARE_RUNS = 8;

    Qv::Vector<Run> m_runs;
    Qv::Vector<Run> m_spare;
    Qv::Vector<T> m_last;
    std::size_t m_size = 0;
};
