#include <meshoptimizer.h>

#include <cfloat>

#include "bench/compare.h"
#include "bench/worst_meshes.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_decimate.h"

namespace marrowfen {
namespace {

constexpr int32_t kPercent = 25;

// The plain method is left out where it would need seconds: above mostPlainFaces.
void decimateMesh(benchmark::State& state, const Mesh& input, size_t mostPlainFaces) {
    Mesh ours, plain;
    std::vector<uint32_t> kept(input.indices.size());
    size_t peerCount = 0;
    const auto simplifyPeer = [&] {  // to as many triangles as ours
        peerCount = meshopt_simplify(kept.data(), input.indices.data(), input.indices.size(), &input.vertexes[0].x,
                                     input.vertexes.size(), sizeof(Point3), ours.indices.size(), FLT_MAX, 0, nullptr);
    };
    std::vector<bench::Rival> rivals{{"x_peer", [] {}, simplifyPeer}};
    if (input.primitives.size() <= mostPlainFaces) {
        rivals.push_back({"x_plain", [&] { plain = input; }, [&] { plain::decimate(plain, kPercent); }});
    }
    bench::compare(
        state, [&] { ours = input; }, [&] { ours.decimate(kPercent); }, rivals);
    state.counters["faces"] = static_cast<double>(input.primitives.size());
    state.counters["left"] = static_cast<double>(ours.primitives.size());
    state.counters["peer_left"] = static_cast<double>(peerCount / 3);
}

// Four levels in one run, against the lowest of them alone.
void decimateFourLevels(benchmark::State& state) {
    const int32_t percents[] = {75, 50, 25, 10};
    const auto n = static_cast<uint32_t>(state.range(0));
    const Mesh input = makers::noisy(makers::grid(n, n), 0.3F, 1);
    Mesh levels, deepest;
    bench::compare(
        state, [&] { levels = input; }, [&] { levels.decimated(percents); },
        {{"x_deepest", [&] { deepest = input; }, [&] { deepest.decimate(10); }}});
    state.counters["faces"] = static_cast<double>(input.primitives.size());
}

uint32_t side(const benchmark::State& state) { return static_cast<uint32_t>(state.range(0)); }

void decimateGrid(benchmark::State& state) { decimateMesh(state, makers::grid(side(state), side(state)), 5000); }
void decimateNoisyGrid(benchmark::State& state) {
    decimateMesh(state, makers::noisy(makers::grid(side(state), side(state)), 0.3F, 1), 20000);
}
void decimateTorus(benchmark::State& state) { decimateMesh(state, makers::torus(side(state), side(state)), 20000); }
void decimateShuffledTorus(benchmark::State& state) {
    decimateMesh(state, makers::shuffled(makers::torus(side(state), side(state)), 1), 20000);
}
void decimateSphere(benchmark::State& state) {
    decimateMesh(state, makers::sphere(2 * side(state), side(state) / 2), 5000);
}
void decimateClosedFan(benchmark::State& state) { decimateMesh(state, makers::fan(side(state), true), 500); }
void decimateSoup(benchmark::State& state) { decimateMesh(state, makers::soup(side(state), side(state), 1), 1000); }

// The argument is the number of quads of a side, or of triangles.
void sides(benchmark::internal::Benchmark* b) {
    for (const int n : {22, 50, 100, 200}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}

void triangles(benchmark::internal::Benchmark* b) {
    for (const int n : {500, 1000, 5000, 20000}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(decimateGrid)->Apply(sides);
BENCHMARK(decimateFourLevels)->Apply(sides);
BENCHMARK(decimateNoisyGrid)->Apply(sides);
BENCHMARK(decimateTorus)->Apply(sides);
BENCHMARK(decimateShuffledTorus)->Apply(sides);
BENCHMARK(decimateSphere)->Apply(sides);
BENCHMARK(decimateClosedFan)->Apply(triangles);
BENCHMARK(decimateSoup)->Apply(triangles);

const bool hasWorst = bench::registerWorst("decimate", [](Mesh& mesh) { mesh.decimate(kPercent); });

}  // namespace
}  // namespace marrowfen
