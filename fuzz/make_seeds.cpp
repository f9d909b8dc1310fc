// Makes the seeds of the fuzz targets from scene files: make_seeds FOLDER SCENE... writes a folder a target below
// FOLDER from small versions of the scenes, the shapes through the exporter itself.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "builder/shape_builder.h"
#include "standin/host/host.h"
#include "standin/host/scene_file.h"
#include "standin/import/scene_transfer.h"

using namespace marrowfen;

namespace {

class Seeds {
public:
    explicit Seeds(std::filesystem::path folder) : folder_(std::move(folder)) {}

    void write(const char* target, const std::string& content) {
        std::filesystem::create_directories(folder_ / target);
        std::ofstream file(folder_ / target / ("seed" + std::to_string(number_++)), std::ios::binary);
        file << content;
        good_ = good_ && file.flush().good();
    }
    bool good() const { return good_; }

private:
    std::filesystem::path folder_;
    int number_ = 0;
    bool good_ = true;
};

// Keeps a few faces of each polyhedron and the first frames of each clip: small seeds are quicker to vary.
void thin(standin::Node& node) {
    standin::Polyhedron& poly = node.polyhedron;
    poly.faces.resize(std::min<size_t>(poly.faces.size(), 3));
    size_t vertices = 0, uvs = 0;
    for (const standin::Face& face : poly.faces) {
        for (const standin::Corner& corner : face.corners) {
            vertices = std::max(vertices, static_cast<size_t>(corner.vertex) + 1);
            uvs = std::max(uvs, static_cast<size_t>(corner.uv) + 1);
        }
    }
    poly.vertices.resize(vertices);
    if (poly.normals) poly.normals->resize(vertices);
    poly.uvs.resize(std::min(uvs, poly.uvs.size()));

    const auto thinHeld = [](standin::HeldVertices& held) {
        for (auto& [id, list] : held) list = {0};
    };
    for (standin::Muscle& muscle : node.muscles) thinHeld(muscle.vertices);
    thinHeld(node.tendon);
    for (standin::Node& child : node.children) thin(child);
}

standin::Scene thinned(standin::Scene scene) {
    for (standin::Node& node : scene.nodes) thin(node);
    for (standin::Clip& clip : scene.clips) {
        clip.end = std::min(clip.end, clip.start + 2);
        for (auto& [id, keys] : clip.keys) keys.resize(std::min<size_t>(keys.size(), 2));
    }
    return scene;
}

void addShapes(const standin::Scene& scene, Seeds& seeds) {
    standin::Host host(scene);
    std::ostringstream log, shape, sequences;
    const ShapeBuilder animated(log, ExportMode::ShapeWithAnimation);
    if (!animated.hasError()) animated.writeDts(shape, true);
    const ShapeBuilder moves(log, ExportMode::SequencesOnly);
    if (!moves.hasError()) moves.writeDsq(sequences);
    if (!shape.str().empty()) seeds.write("fuzz_dts", shape.str());
    if (!sequences.str().empty()) seeds.write("fuzz_dsq", sequences.str());
}

void addTags(const standin::Scene& scene, Seeds& seeds) {
    for (const auto& layer : scene.layers) {
        if (layer) seeds.write("fuzz_tags", *layer);
    }
    for (const auto& clip : scene.clips) seeds.write("fuzz_tags", clip.name);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: make_seeds FOLDER SCENE...\n");
        return 2;
    }
    Seeds seeds(argv[1]);
    for (int i = 2; i < argc; ++i) {
        const standin::LoadResult loaded = standin::readSceneFile(argv[i]);
        if (!loaded.scene) {
            std::fprintf(stderr, "error: %s\n", loaded.error.c_str());
            return 3;
        }
        const standin::Scene scene = thinned(*loaded.scene);
        seeds.write("fuzz_scene", standin::sceneText(scene));
        seeds.write("fuzz_transfer", standin::packResult({scene, {}, {}}));
        addShapes(scene, seeds);
        addTags(*loaded.scene, seeds);
    }
    return seeds.good() ? 0 : 4;
}
