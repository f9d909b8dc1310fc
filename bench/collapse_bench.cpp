#include "bench/compare.h"
#include "bench/worst_meshes.h"
#include "mesh/normal_encoding.h"
#include "mesh/normal_table.h"
#include "shape/shape.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_collapse.h"

namespace marrowfen {
namespace {

constexpr size_t kMostPlainVertices = 6000;  // the plain methods need seconds beyond

// A torus of about the given number of vertices, a third of them doubled, with nearly equal positions.
Mesh withDoubles(uint32_t vertexCount) {
    const auto side = static_cast<uint32_t>(std::sqrt(vertexCount * 2 / 3.0));
    Mesh mesh = makers::torus(side, side);
    std::mt19937 random(1);
    const size_t originals = mesh.vertexes.size();
    std::vector<uint32_t> doubles(originals);
    for (uint32_t i = 0; i < originals; ++i) {
        doubles[i] = i;
        if (i % 2 != 0) continue;
        doubles[i] = static_cast<uint32_t>(mesh.vertexes.size());
        mesh.vertexes.push_back(mesh.vertexes[i] + Point3{0, 0, makers::signedUnit(random) * 2e-5F});
    }
    for (uint32_t& index : mesh.indices) {
        if (random() % 2 == 0) index = doubles[index];
    }
    mesh.texturevertexes.resize(mesh.vertexes.size());
    mesh.normals.resize(mesh.vertexes.size());
    mesh.setNumFrames(1);
    return mesh;
}

void collapse(benchmark::State& state) {
    const Mesh input = withDoubles(static_cast<uint32_t>(state.range(0)));
    Mesh mesh;
    std::vector<int32_t> groups, remap;
    Shape shape;
    const auto prepare = [&] {
        mesh = input;
        groups.assign(input.vertexes.size(), 1);
    };
    std::vector<bench::Rival> rivals;
    if (input.vertexes.size() <= kMostPlainVertices) {
        rivals.push_back({"x_plain", prepare, [&] { plain::collapseVertices(mesh, groups, remap); }});
    }
    bench::compare(
        state, prepare, [&] { shape.collapseVertices(mesh, groups, remap); }, rivals);
    state.counters["vertexes"] = static_cast<double>(input.vertexes.size());
    state.counters["merged"] = static_cast<double>(input.vertexes.size() - mesh.vertexes.size());
}

void normals(benchmark::State& state) {
    const Mesh input = withDoubles(static_cast<uint32_t>(state.range(0)));
    const std::vector<int32_t> groups(input.vertexes.size(), 1);
    std::vector<Point3> normals;
    Shape shape;
    std::vector<bench::Rival> rivals;
    if (input.vertexes.size() <= kMostPlainVertices) {
        rivals.push_back({"x_plain", [] {}, [&] { plain::computeNormals(input, groups, normals); }});
    }
    const auto ours = [&] {
        shape.computeNormals(input.primitives, input.indices, input.vertexes, normals, groups, input.vertsPerFrame, 1,
                             {});
    };
    bench::compare(
        state, [] {}, ours, rivals);
    state.counters["vertexes"] = static_cast<double>(input.vertexes.size());
    state.counters["faces"] = static_cast<double>(input.primitives.size());
}

uint8_t scannedNormal(const Point3& normal) {
    float best = -1e31F;
    uint8_t index = 0;
    for (size_t i = 0; i < std::size(kNormalTable); ++i) {
        const float d = dot(normal, kNormalTable[i]);
        if (d <= best) continue;
        best = d;
        index = static_cast<uint8_t>(i);
    }
    return index;
}

template <class Encode>
void encodeAll(const std::vector<Point3>& input, Encode encode) {
    for (const Point3& normal : input) benchmark::DoNotOptimize(encode(normal));
}

void encode(benchmark::State& state) {
    const std::vector<Point3> input = makers::soup(1, static_cast<uint32_t>(state.range(0)), 1).vertexes;
    bench::compare(
        state, [] {}, [&] { encodeAll(input, encodeNormal); },
        {{"x_plain", [] {}, [&] { encodeAll(input, scannedNormal); }}});
    state.counters["normals"] = static_cast<double>(input.size());
}

void vertices(benchmark::internal::Benchmark* b) {
    for (const int n : {1500, 3000, 6000, 60000}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(collapse)->Apply(vertices);
BENCHMARK(normals)->Apply(vertices);
BENCHMARK(encode)->Arg(60000)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

const bool hasWorst = bench::registerWorst("collapse", [](Mesh& mesh) {
    Shape shape;
    std::vector<int32_t> groups(mesh.vertexes.size(), 1), remap;
    shape.collapseVertices(mesh, groups, remap);
});
const bool hasWorstNormals = bench::registerWorst("normals", [](Mesh& mesh) {
    Shape shape;
    const std::vector<int32_t> groups(mesh.vertexes.size(), 1);
    shape.computeNormals(mesh.primitives, mesh.indices, mesh.vertexes, mesh.normals, groups, mesh.vertsPerFrame, 1, {});
});

}  // namespace
}  // namespace marrowfen
