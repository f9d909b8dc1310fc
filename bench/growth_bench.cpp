// How the time of each pass grows when the mesh doubles, up to the limits of a file: the exponent p of faces^p.

#include <functional>

#include "bench/compare.h"
#include "shape/shape.h"
#include "tests/plain/mesh_makers.h"

namespace marrowfen {
namespace {

using Make = std::function<Mesh(uint32_t faces)>;
using Pass = std::function<void(Mesh& mesh)>;

constexpr uint32_t kFewestFaces = 1000;
constexpr double kTooLong = 3;  // seconds: no larger mesh is tried

uint32_t halfRoot(uint32_t faces) { return static_cast<uint32_t>(std::sqrt(faces / 2.0)); }

const std::pair<const char*, Make> kMeshes[] = {
    {"grid", [](uint32_t n) { return makers::grid(halfRoot(n), halfRoot(n)); }},
    {"noisyGrid", [](uint32_t n) { return makers::noisy(makers::grid(halfRoot(n), halfRoot(n)), 0.3F, 1); }},
    {"torus", [](uint32_t n) { return makers::torus(halfRoot(n), halfRoot(n)); }},
    {"fan", [](uint32_t n) { return makers::fan(n, true); }},
    {"book", [](uint32_t n) { return makers::book(n); }},
    {"soup", [](uint32_t n) { return makers::soup(n, n, 1); }},
    {"allPointsEqual",
     [](uint32_t n) {
         Mesh mesh = makers::torus(halfRoot(n), halfRoot(n));
         mesh.vertexes.assign(mesh.vertexes.size(), {1, 2, 3});
         return mesh;
     }},
    {"slivers",
     [](uint32_t n) {
         Mesh mesh = makers::grid(n / 2, 1);
         for (Point3& p : mesh.vertexes) p.y *= 1e-4F;
         return mesh;
     }},
    {"twoWindings",
     [](uint32_t n) {
         Mesh mesh = makers::grid(1, 1);
         mesh.primitives.clear();
         mesh.indices.clear();
         while (mesh.primitives.size() < n) {
             makers::addTriangle(mesh, {0, 1, 2});
             makers::addTriangle(mesh, {1, 0, 2});
         }
         return mesh;
     }},
};

const std::pair<const char*, Pass> kPasses[] = {
    {"strip", [](Mesh& mesh) { mesh.strip(); }},
    {"decimate", [](Mesh& mesh) { mesh.decimate(25); }},
    {"sort", [](Mesh& mesh) { mesh.sort(); }},
    {"collapse",
     [](Mesh& mesh) {
         Shape shape;
         std::vector<int32_t> groups(mesh.vertexes.size(), 1), remap;
         shape.collapseVertices(mesh, groups, remap);
     }},
};

// The exponent is the slope of a straight line through the logarithms.
void grow(benchmark::State& state, const Make& make, const Pass& pass) {
    double count = 0, sumX = 0, sumY = 0, sumXX = 0, sumXY = 0, seconds = 0;
    uint32_t faces = kFewestFaces;
    for (auto _ : state) {
        for (;; faces *= 2) {
            Mesh input = make(faces);
            input.texturevertexes.resize(input.vertexes.size());
            input.normals.resize(input.vertexes.size());
            input.setNumFrames(1);
            Mesh mesh;
            seconds = bench::bestSeconds([&] { mesh = input; }, [&] { pass(mesh); });
            const double x = std::log(faces), y = std::log(seconds);
            ++count, sumX += x, sumY += y, sumXX += x * x, sumXY += x * y;
            if (faces >= 64 * kFewestFaces || seconds > kTooLong) break;
        }
        state.SetIterationTime(seconds);
    }
    state.counters["faces"] = faces;
    state.counters["exponent"] = (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

const bool isRegistered = [] {
    for (const auto& [passName, pass] : kPasses) {
        for (const auto& [meshName, make] : kMeshes) {
            const std::string name = std::string("growth/") + passName + "/" + meshName;
            benchmark::RegisterBenchmark(
                name.c_str(), [make = make, pass = pass](benchmark::State& state) { grow(state, make, pass); })
                ->UseManualTime()
                ->Iterations(1)
                ->Unit(benchmark::kMillisecond);
        }
    }
    return true;
}();

}  // namespace
}  // namespace marrowfen
