#include <meshoptimizer.h>

#include "bench/compare.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_strip.h"

namespace marrowfen {
namespace {

constexpr size_t kMostPlainFaces = 5000;  // the plain method needs seconds beyond

// The rival does the same work: from the given order of triangles to strips, each material and polyhedron apart, on
// vertices that are numbered for it from 0 on. Its strips are joined by a restart index, which counts, as ours are by a
// primitive each.
class Peer {
public:
    explicit Peer(const Mesh& input) {
        std::vector<uint32_t> numbers(input.vertexes.size());
        const Primitive* last = nullptr;
        for (const Primitive& p : input.primitives) {
            if (last == nullptr || p.material != last->material || p.sourcePoly != last->sourcePoly) {
                groups_.emplace_back();
                numbers.assign(numbers.size(), kNoNumber);
            }
            last = &p;
            for (uint32_t i = 0; i < 3; ++i) {
                uint32_t& number = numbers[input.indices[p.firstElement + i]];
                if (number == kNoNumber) number = static_cast<uint32_t>(groups_.back().vertexCount++);
                groups_.back().indices.push_back(number);
            }
        }
        ordered_.resize(input.indices.size());
        strips_.resize(meshopt_stripifyBound(input.indices.size()));
    }

    void strip() {
        count = 0;
        for (const Group& g : groups_) {
            meshopt_optimizeVertexCacheStrip(ordered_.data(), g.indices.data(), g.indices.size(), g.vertexCount);
            count += meshopt_stripify(strips_.data(), ordered_.data(), g.indices.size(), g.vertexCount, ~0U);
        }
    }

    size_t count = 0;  // of indices

private:
    static constexpr uint32_t kNoNumber = ~0U;
    struct Group {
        std::vector<uint32_t> indices;
        size_t vertexCount = 0;
    };
    std::vector<Group> groups_;
    std::vector<uint32_t> ordered_, strips_;
};

void stripMesh(benchmark::State& state, const Mesh& input) {
    Mesh ours, plain;
    Peer peer(input);
    std::vector<bench::Rival> rivals{{"x_peer", [] {}, [&] { peer.strip(); }}};
    if (input.primitives.size() <= kMostPlainFaces) {
        rivals.push_back({"x_plain", [&] { plain = input; }, [&] { plain::strip(plain); }});
    }
    bench::compare(
        state, [&] { ours = input; }, [&] { ours.strip(); }, rivals);
    state.counters["faces"] = static_cast<double>(input.primitives.size());
    state.counters["strips"] = static_cast<double>(ours.primitives.size());
    state.counters["indices"] = static_cast<double>(ours.indices.size());
    state.counters["peer_indices"] = static_cast<double>(peer.count);
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
BENCHMARK(stripBook)->Apply(triangles);

}  // namespace
}  // namespace marrowfen
