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
inline double bestSeconds(const std::function<void()>& prepare, const std::function<void()>& work,
                          double enough = 0.2) {
    constexpr int kFewestRuns = 3;
    double best = 1e30, total = 0;
    for (int run = 0; run < kFewestRuns || (total < enough && run < 1000); ++run) {
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

// In turns, so that a processor that is slower for a while is so for both; the median of the rounds.
inline double timesAsLong(const Rival& rival, const std::function<void()>& prepare, const std::function<void()>& ours) {
    constexpr int kRounds = 9;
    std::vector<double> ratios;
    for (int round = 0; round < kRounds; ++round) {
        const double own = bestSeconds(prepare, ours, 0.05);
        const double others = bestSeconds(rival.prepare, rival.work, 0.05);
        ratios.push_back(others / own);
        if (others > 1) break;  // far from any close call
    }
    const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    return *middle;
}

// Times ours and reports its best time in microseconds and the rivals' as multiples of ours.
inline void compare(benchmark::State& state, const std::function<void()>& prepare, const std::function<void()>& ours,
                    const std::vector<Rival>& rivals) {
    for (auto _ : state) state.SetIterationTime(bestSeconds(prepare, ours));
    for (const Rival& rival : rivals) state.counters[rival.counter] = timesAsLong(rival, prepare, ours);
}

}  // namespace marrowfen::bench
