#pragma once

// Comparisons in one run: a benchmark times our algorithm and says in counters how long the others took on the same
// input, as multiples of our time. 2 means that the other took twice as long.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <functional>
#include <vector>

namespace marrowfen::bench {

// Processor time of this thread: other work on the machine doesn't count.
inline double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Shortest of several runs of work, each after an unmeasured prepare.
inline double bestSeconds(const std::function<void()>& prepare, const std::function<void()>& work) {
    constexpr double kEnough = 0.2;  // seconds of work
    constexpr int kFewestRuns = 3;
    double best = 1e30, total = 0;
    for (int run = 0; run < kFewestRuns || (total < kEnough && run < 1000); ++run) {
        prepare();
        const double start = cpuSeconds();
        work();
        const double seconds = cpuSeconds() - start;
        best = std::min(best, seconds);
        total += seconds;
        if (seconds > 1) break;  // slow enough for one run to tell
    }
    return best;
}

// A rival's work on the benchmark's input.
struct Rival {
    const char* counter;  // "x_plain", "x_peer"
    std::function<void()> prepare;
    std::function<void()> work;
};

// Times ours and reports its best time in microseconds and the rivals' as multiples of that.
inline void compare(benchmark::State& state, const std::function<void()>& prepare, const std::function<void()>& ours,
                    const std::vector<Rival>& rivals) {
    double seconds = 1e30;
    for (auto _ : state) {
        const double run = bestSeconds(prepare, ours);
        seconds = std::min(seconds, run);
        state.SetIterationTime(run);
    }
    for (const Rival& rival : rivals) {
        state.counters[rival.counter] = bestSeconds(rival.prepare, rival.work) / seconds;
    }
}

}  // namespace marrowfen::bench
