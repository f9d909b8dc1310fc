// How the time of each pass grows when the mesh doubles, up to the limits of a file: the exponent p of faces^p.

#include <functional>
#include <memory>
#include <sstream>

#include "bench/compare.h"
#include "builder/scan.h"
#include "host/poly_to_mesh.h"
#include "shape/shape.h"
#include "standin/host/host.h"
#include "tests/plain/mesh_makers.h"

namespace marrowfen {
namespace {

using Make = std::function<Mesh(uint32_t faces)>;
// Something to time, after something to prepare each time.
struct Work {
    std::function<void()> prepare, run;
};
using Pass = std::function<Work(const Mesh& input)>;

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

// Works on a copy of the mesh.
Pass onCopy(const std::function<void(Mesh& mesh)>& change) {
    return [change](const Mesh& input) {
        const auto mesh = std::make_shared<Mesh>();
        return Work{[mesh, &input] { *mesh = input; }, [mesh, change] { change(*mesh); }};
    };
}

// The mesh as a polyhedron of a host. With seams set, no two faces have texture coordinates in common.
standin::Node polyhedronOf(const Mesh& mesh, bool seams) {
    standin::Node node;
    node.name = "mesh";
    node.layer = 1;
    for (const Point3& p : mesh.vertexes) node.polyhedron.vertices.push_back({p.x, p.y, p.z});
    node.polyhedron.uvs.resize(seams ? mesh.primitives.size() : 1);
    for (const Primitive& p : mesh.primitives) {
        standin::Face face;
        const int32_t uv = seams ? static_cast<int32_t>(node.polyhedron.faces.size()) : 0;
        for (uint32_t i = 0; i < 3; ++i) {
            face.corners.push_back({static_cast<int32_t>(mesh.indices[p.firstElement + i]), uv});
        }
        node.polyhedron.faces.push_back(std::move(face));
    }
    return node;
}

standin::Scene sceneOf(std::vector<standin::Node> nodes) {
    standin::Scene scene;
    scene.layers = {std::nullopt, "Detail:size=1"};
    scene.nodes = std::move(nodes);
    return scene;
}

// The host is made anew each time, outside the measured time.
Work inHost(standin::Scene scene, const std::function<void()>& run) {
    const auto host = std::make_shared<std::unique_ptr<standin::Host>>();
    return {[host, scene = std::move(scene)] {
                host->reset();
                *host = std::make_unique<standin::Host>(scene);
            },
            run};
}

// The whole conversion of layers: triangulation by the host, materials, corners, normals.
void convertScene() {
    std::vector<PolyInfo> polys;
    for (SceneNode node = SceneNode::firstOfScene(); node; node = node.next()) polys.push_back({node, {}, "mesh"});
    std::ostringstream log;
    std::vector<Shape::Material> materials;
    MaterialConversion conversion(materials, log, {});
    benchmark::DoNotOptimize(PolyToMesh(polys, false, 0, conversion, log));
}

Work mergeCornersOf(const Mesh& input, bool seams) {
    return inHost(sceneOf({polyhedronOf(input, seams)}), convertScene);
}

// The first three vertices as a polyhedron.
standin::Node firstTriangle(const Mesh& input, size_t number) {
    Mesh face;
    face.vertexes.assign(input.vertexes.begin(), input.vertexes.begin() + 3);
    makers::addTriangle(face, {0, 1, 2});
    standin::Node node = polyhedronOf(face, false);
    node.id = "node" + std::to_string(number);
    return node;
}

// As many materials as faces, all of one texture, no two with the same reflection.
Work convertMaterials(const Mesh& input) {
    constexpr size_t kPerPolyhedron = 1000;
    standin::Scene scene = sceneOf({});
    for (size_t number = 0; number < input.primitives.size(); ++number) {
        if (number % kPerPolyhedron == 0) scene.nodes.push_back(firstTriangle(input, number));
        standin::Polyhedron& polyhedron = scene.nodes.back().polyhedron;
        if (number % kPerPolyhedron != 0) polyhedron.faces.push_back(polyhedron.faces.front());
        polyhedron.faces.back().material = static_cast<int32_t>(number % kPerPolyhedron);
        standin::HostMaterial material;
        material.texture = "wall.png";
        const auto mirror = static_cast<float>(number + 1);
        material.shader = standin::Shader{"c_envr_map", true, {{"mirror factor", TsxFloatParameter, mirror}}};
        polyhedron.materials.emplace_back("material" + std::to_string(number));
        scene.materials.emplace_back(*polyhedron.materials.back(), std::move(material));
    }
    return inHost(std::move(scene), convertScene);
}

// As many polyhedra as faces.
Work scanPolyhedra(const Mesh& input) {
    std::vector<standin::Node> nodes;
    for (size_t i = 0; i < input.primitives.size(); ++i) nodes.push_back(firstTriangle(input, i));
    return inHost(sceneOf(std::move(nodes)), [] {
        std::ostringstream log;
        Notices notices(log, {});
        benchmark::DoNotOptimize(scanScene(notices));
    });
}

Work write(const Mesh& input) {
    const auto shape = std::make_shared<Shape>();
    shape->meshes.push_back(input);
    return {[] {},
            [shape] {
                std::ostringstream file;
                shape->writeDts(file, false);
                benchmark::DoNotOptimize(file.str().size());
            }};
}

const std::pair<const char*, Pass> kPasses[] = {
    {"strip", onCopy([](Mesh& mesh) { mesh.strip(); })},
    {"decimate", onCopy([](Mesh& mesh) { mesh.decimate(25); })},
    {"sort", onCopy([](Mesh& mesh) { mesh.sort(); })},
    {"collapse", onCopy([](Mesh& mesh) {
         Shape shape;
         std::vector<int32_t> groups(mesh.vertexes.size(), 1), remap;
         shape.collapseVertices(mesh, groups, remap);
     })},
    {"merge", [](const Mesh& input) { return mergeCornersOf(input, false); }},
    {"mergeSeams", [](const Mesh& input) { return mergeCornersOf(input, true); }},
    {"write", write},
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
            const Work work = pass(input);
            seconds = bench::bestSeconds(work.prepare, work.run);
            const double x = std::log(faces), y = std::log(seconds);
            ++count, sumX += x, sumY += y, sumXX += x * x, sumXY += x * y;
            if (faces >= 64 * kFewestFaces || seconds > kTooLong) break;
        }
        state.SetIterationTime(seconds);
    }
    state.counters["faces"] = faces;
    state.counters["exponent"] = (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

void add(const std::string& name, const Make& make, const Pass& pass) {
    benchmark::RegisterBenchmark(("growth/" + name).c_str(),
                                 [make, pass](benchmark::State& state) { grow(state, make, pass); })
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

const bool isRegistered = [] {
    for (const auto& [passName, pass] : kPasses) {
        for (const auto& [meshName, make] : kMeshes) add(std::string(passName) + "/" + meshName, make, pass);
    }
    const Make fan = [](uint32_t faces) { return makers::fan(faces, true); };
    add("scan/polyhedra", fan, scanPolyhedra);
    add("merge/materials", fan, convertMaterials);
    return true;
}();

}  // namespace
}  // namespace marrowfen
