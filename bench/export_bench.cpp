// Whole exports over the stand-in host, and the merging of corners by itself.

#include <sstream>

#include "bench/compare.h"
#include "builder/shape_builder.h"
#include "host/poly_to_mesh.h"
#include "standin/host/host.h"
#include "tests/plain/plain_corners.h"

namespace marrowfen {
namespace {

using standin::Node;

constexpr int kMostPlainSide = 100;  // the linear search needs seconds beyond

Node hillySheet(int side) {
    Node node;
    node.layer = 1;
    for (int y = 0; y <= side; ++y) {
        for (int x = 0; x <= side; ++x) {
            const auto height = static_cast<float>((x * 7919 + y * 104729) % 13);
            node.polyhedron.vertices.push_back({static_cast<float>(x), static_cast<float>(y), height / 10});
        }
    }
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const int v = y * (side + 1) + x;
            node.polyhedron.faces.push_back({{{v, 0}, {v + side + 1, 0}, {v + side + 2, 0}, {v + 1, 0}}, 0});
        }
    }
    return node;
}

standin::Scene sheetScene(int side, std::vector<std::string> layers) {
    standin::Scene scene;
    scene.layers = {std::nullopt};
    for (std::string& layer : layers) scene.layers.emplace_back(std::move(layer));
    scene.nodes.push_back(hillySheet(side));
    return scene;
}

// Bones in a chain of ten each, every one of which turns.
standin::Scene rigScene(int bones, int frames) {
    standin::Scene scene;
    scene.layers = {std::nullopt, "Detail", "nodes"};
    standin::Clip clip;
    clip.name = "run";
    clip.end = static_cast<float>(frames - 1);
    Node rig;
    rig.type = 210;
    rig.layer = 1;
    for (int b = 0; b < bones; ++b) {
        Node bone;
        bone.type = 107;
        bone.layer = 1;
        bone.name = "bone" + std::to_string(b);
        clip.keys.emplace_back(bone.name, std::vector<standin::Key>{});
        for (int k = 0; k <= 10; ++k) {
            standin::Key key;
            key.frame = clip.end * static_cast<float>(k) / 10;
            key.rotation = {0.1F * static_cast<float>(k), 0, 0};
            clip.keys.back().second.push_back(key);
        }
        Node* parent = &rig;
        for (int depth = b % 10; depth > 0; --depth) parent = &parent->children.back();
        parent->children.push_back(std::move(bone));
    }
    scene.nodes = {hillySheet(1), rig};
    scene.clips.push_back(std::move(clip));
    return scene;
}

// Builds and writes the scene; the host is made anew for each run, outside the measured time.
void exportScene(benchmark::State& state, const standin::Scene& scene, ExportMode mode) {
    std::unique_ptr<standin::Host> host;
    size_t bytes = 0;
    bench::compare(
        state,
        [&] {
            host.reset();
            host = std::make_unique<standin::Host>(scene);
        },
        [&] {
            std::ostringstream log, file;
            const ShapeBuilder shape(log, mode);
            if (shape.hasError()) state.SkipWithError(shape.error().c_str());
            shape.writeDts(file, mode == ExportMode::ShapeWithAnimation);
            bytes = file.str().size();
        },
        {});
    state.counters["bytes"] = static_cast<double>(bytes);
}

void exportSheetWithFourAutolods(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    exportScene(state,
                sheetScene(side, {"Detail:size=99", "a:size=9,autolod=75", "b:size=8,autolod=50", "c:size=7,autolod=25",
                                  "d:size=6,autolod=10"}),
                ExportMode::ShapeOnly);
    state.counters["faces"] = 2.0 * side * side;
}

void exportRig(benchmark::State& state) {
    exportScene(state, rigScene(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))),
                ExportMode::ShapeWithAnimation);
}

// Ours is the whole conversion of the layer, the host's part included; the plain search only merges corners.
void mergeCorners(benchmark::State& state) {
    const auto side = static_cast<int>(state.range(0));
    const standin::Host host(sheetScene(side, {"Detail"}));
    std::vector<plain::Corner> corners;
    for (const standin::Face& face : hillySheet(side).polyhedron.faces) {
        for (const int c : {0, 1, 2, 0, 2, 3}) corners.emplace_back(face.corners[static_cast<size_t>(c)].vertex, 0);
    }

    const std::vector<PolyInfo> polys = {{SceneNode::firstOfScene(), {}, "sheet"}};
    std::vector<bench::Rival> rivals;
    if (side <= kMostPlainSide) {
        rivals.push_back({"x_plain", [] {}, [&] { benchmark::DoNotOptimize(plain::mergedCorners(corners)); }});
    }
    bench::compare(
        state, [] {},
        [&] {
            std::ostringstream log;
            std::vector<Shape::Material> materials;
            MaterialConversion conversion(materials, log, {});
            benchmark::DoNotOptimize(PolyToMesh(polys, false, 0, conversion, log));
        },
        rivals);
    state.counters["corners"] = static_cast<double>(corners.size());
}

void once(benchmark::internal::Benchmark* b) { b->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond); }

BENCHMARK(mergeCorners)->Arg(25)->Arg(50)->Arg(100)->Arg(250)->Apply(once);
BENCHMARK(exportSheetWithFourAutolods)->Arg(45)->Arg(90)->Arg(175)->Apply(once);
BENCHMARK(exportRig)->Args({50, 750})->Args({200, 750})->Args({200, 3000})->Apply(once);

}  // namespace
}  // namespace marrowfen
