#include <benchmark/benchmark.h>
#include <malloc.h>

// Memory that one run has freed is there for the next one, of ours and of a rival's: how long the system takes to hand
// it over and clear it depends on what ran before.
int main(int argc, char** argv) {
    constexpr int kMost = 1 << 30;
    if (mallopt(M_MMAP_THRESHOLD, kMost) == 0 || mallopt(M_TRIM_THRESHOLD, kMost) == 0) return 1;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
