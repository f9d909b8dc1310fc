#include <meshoptimizer.h>

#include "bench/compare.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_strip.h"

namespace marrowfen {
namespace {

constexpr size_t kMostPlainFaces = 5000;  // the plain method needs seconds beyond

void stripMesh(benchmark::State& state, const Mesh& input) {
    Mesh ours, plain;
    std::vector<uint32_t> strips(meshopt_stripifyBound(input.indices.size()));
    const auto stripPeer = [&] {
        const size_t count =
            meshopt_stripify(strips.data(), input.indices.data(), input.indices.size(), input.vertexes.size(), ~0U);
        benchmark::DoNotOptimize(count);
    };
    std::vector<bench::Rival> rivals{{"x_peer", [] {}, stripPeer}};
    if (input.primitives.size() <= kMostPlainFaces) {
        rivals.push_back({"x_plain", [&] { plain = input; }, [&] { plain::strip(plain); }});
    }
    bench::compare(
        state, [&] { ours = input; }, [&] { ours.strip(); }, rivals);
    state.counters["faces"] = static_cast<double>(input.primitives.size());
    state.counters["strips"] = static_cast<double>(ours.primitives.size());
}

uint32_t side(const benchmark::State& state) { return static_cast<uint32_t>(state.range(0)); }

void stripGrid(benchmark::State& state) { stripMesh(state, makers::grid(side(state), side(state))); }
void stripTorus(benchmark::State& state) { stripMesh(state, makers::torus(side(state), side(state))); }
void stripShuffledTorus(benchmark::State& state) {
    stripMesh(state, makers::shuffled(makers::torus(side(state), side(state)), 1));
}
void stripPatchedTorus(benchmark::State& state) {
    stripMesh(state, makers::patched(makers::torus(side(state), side(state)), 20, 1));
}
void stripClosedFan(benchmark::State& state) { stripMesh(state, makers::fan(side(state), true)); }
void stripLooseFan(benchmark::State& state) { stripMesh(state, makers::fan(side(state), false)); }
void stripBook(benchmark::State& state) { stripMesh(state, makers::book(side(state))); }
void stripSoup(benchmark::State& state) { stripMesh(state, makers::soup(side(state), side(state) / 5, 1)); }

// The argument is the number of quads of a side, or of triangles.
void sides(benchmark::internal::Benchmark* b) {
    for (const int n : {22, 50, 100, 200}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}
void triangles(benchmark::internal::Benchmark* b) {
    for (const int n : {1000, 5000, 20000, 80000}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(stripGrid)->Apply(sides);
BENCHMARK(stripTorus)->Apply(sides);
BENCHMARK(stripShuffledTorus)->Apply(sides);
BENCHMARK(stripPatchedTorus)->Apply(sides);
BENCHMARK(stripClosedFan)->Apply(triangles);
BENCHMARK(stripLooseFan)->Apply(triangles);
BENCHMARK(stripSoup)->Apply(triangles);
BENCHMARK(stripBook)->Arg(1000)->Arg(5000)->Arg(20000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace marrowfen
