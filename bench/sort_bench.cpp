#include "bench/compare.h"
#include "tests/plain/mesh_makers.h"
#include "tests/plain/plain_sort.h"

namespace marrowfen {
namespace {

constexpr size_t kMostPlainFaces = 2000;  // the plain method takes seconds and gigabytes beyond

void sortMesh(benchmark::State& state, Mesh input) {
    input.texturevertexes.resize(input.vertexes.size());
    input.normals.resize(input.vertexes.size());
    Mesh ours, plain;
    std::vector<bench::Rival> rivals;
    if (input.primitives.size() <= kMostPlainFaces) {
        rivals.push_back({"x_plain", [&] { plain = input; }, [&] { plain::sort(plain); }});
    }
    bench::compare(
        state, [&] { ours = input; }, [&] { ours.sort(); }, rivals);
    state.counters["faces"] = static_cast<double>(input.primitives.size());
    state.counters["vertexes"] = static_cast<double>(ours.vertexes.size());
}

uint32_t count(const benchmark::State& state) { return static_cast<uint32_t>(state.range(0)); }

// Triangles as large as the scene, on few points: planes cut half of them.
void sortSoup(benchmark::State& state) { sortMesh(state, makers::soup(count(state), count(state), 1)); }

// Small triangles all over the scene.
void sortConfetti(benchmark::State& state) {
    Mesh mesh = makers::soup(count(state), 3 * count(state), 1);
    for (uint32_t i = 0; i < mesh.indices.size(); ++i) {
        mesh.indices[i] = i;
        if (i % 3 != 0) mesh.vertexes[i] = mesh.vertexes[i - i % 3] + mesh.vertexes[i] * 0.05F;
    }
    sortMesh(state, mesh);
}

// Squares one above the other, in random order, each seen from one side: a cycle of peeling for each two of them.
void sortStack(benchmark::State& state) {
    std::mt19937 random(1);
    Mesh mesh;
    for (uint32_t i = 0; i < count(state) / 2; ++i) {
        const float z = makers::signedUnit(random) * 1000;
        for (const Point3& p : {Point3{0, 0, z}, Point3{1, 0, z}, Point3{1, 1, z}, Point3{0, 1, z}}) {
            mesh.vertexes.push_back(p);
        }
        makers::addTriangle(mesh, {4 * i, 4 * i + 1, 4 * i + 2});
        makers::addTriangle(mesh, {4 * i, 4 * i + 2, 4 * i + 3});
    }
    mesh.setNumFrames(1);
    for (Primitive& p : mesh.primitives) p.material = Primitive::Indexed;
    sortMesh(state, mesh);
}

uint32_t halfRoot(const benchmark::State& state) {
    return static_cast<uint32_t>(std::sqrt(static_cast<double>(state.range(0)) / 2));
}
void sortTorus(benchmark::State& state) { sortMesh(state, makers::torus(halfRoot(state), halfRoot(state))); }
void sortSphere(benchmark::State& state) { sortMesh(state, makers::sphere(halfRoot(state), halfRoot(state))); }
void sortNoisyGrid(benchmark::State& state) {
    sortMesh(state, makers::noisy(makers::grid(halfRoot(state), halfRoot(state)), 0.3F, 1));
}

void faces(benchmark::internal::Benchmark* b) {
    for (const int n : {250, 500, 1000, 2000, 20000}) b->Arg(n);
    b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(sortSoup)->Apply(faces);
BENCHMARK(sortConfetti)->Apply(faces);
BENCHMARK(sortStack)->Apply(faces);
BENCHMARK(sortTorus)->Apply(faces);
BENCHMARK(sortSphere)->Apply(faces);
BENCHMARK(sortNoisyGrid)->Apply(faces);

}  // namespace
}  // namespace marrowfen
