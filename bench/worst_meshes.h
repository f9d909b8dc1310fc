#pragma once

// Meshes of as many faces as a file takes at which an algorithm could take long.

#include <cmath>
#include <functional>
#include <string>
#include <utility>

#include "bench/compare.h"
#include "tests/plain/mesh_makers.h"

namespace marrowfen::bench {

constexpr uint32_t kWorstFaces = 65000;
constexpr uint32_t kWorstSide = 180;  // quads a side of about as many faces

inline const std::pair<const char*, std::function<Mesh()>> kWorstMeshes[] = {
    {"fan", [] { return makers::fan(kWorstFaces, true); }},
    {"book", [] { return makers::book(kWorstFaces); }},
    {"soup", [] { return makers::soup(kWorstFaces, kWorstFaces, 1); }},
    {"allPointsEqual",
     [] {
         Mesh mesh = makers::torus(kWorstSide, kWorstSide);
         mesh.vertexes.assign(mesh.vertexes.size(), {1, 2, 3});
         return mesh;
     }},
    {"allCostsZero", [] { return makers::grid(kWorstSide, kWorstSide); }},
    {"slivers",
     [] {
         Mesh mesh = makers::grid(kWorstFaces / 2, 1);
         for (Point3& p : mesh.vertexes) p.y *= 1e-4F;
         return mesh;
     }},
};

// Times the pass on a copy of each mesh.
inline bool registerWorst(const std::string& pass, const std::function<void(Mesh& mesh)>& run) {
    for (const auto& [name, make] : kWorstMeshes) {
        const auto time = [make = make, run](benchmark::State& state) {
            Mesh input = make(), mesh;
            input.texturevertexes.resize(input.vertexes.size());
            input.normals.resize(input.vertexes.size());
            input.setNumFrames(1);
            compare(
                state, [&] { mesh = input; }, [&] { run(mesh); }, {});
            state.counters["faces"] = static_cast<double>(input.primitives.size());
        };
        benchmark::RegisterBenchmark(("worst/" + pass + "/" + name).c_str(), time)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}

}  // namespace marrowfen::bench
