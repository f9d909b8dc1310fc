// Makes the seeds of the fuzz targets: make_seeds FOLDER SCENE|GLTF... writes a folder a target below FOLDER from small
// versions of the scenes, the shapes through the exporter itself and glTF of the shapes, a shape with every record, and
// glTF files that hold their own buffers.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "builder/shape_builder.h"
#include "ground/ascii.h"
#include "ground/byte_order.h"
#include "ground/whole_file.h"
#include "standin/host/host.h"
#include "standin/host/load_notices.h"
#include "standin/host/scene_file.h"
#include "standin/import/model_import.h"
#include "tests/shape/every_record.h"
#include "view/shape_gltf.h"

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

// As fuzz_gltf takes it: the text, a zero byte and the buffer.
void addGltf(const std::string& file, Seeds& seeds) {
    if (!file.starts_with("glTF") || file.size() < 20) return seeds.write("fuzz_gltf", file);
    const size_t end = std::min<size_t>(file.size(), 20 + get32(&file[12]));
    seeds.write("fuzz_gltf", file.substr(20, end - 20) + '\0' + file.substr(std::min(end + 8, file.size())));
}

void addFiles(const Shape& shape, Seeds& seeds) {
    std::ostringstream geometry, sequences;
    shape.writeDts(geometry, true);
    shape.writeDsq(sequences);
    seeds.write("fuzz_dts", geometry.str());
    seeds.write("fuzz_dsq", sequences.str());
}

void addShapes(const standin::Scene& scene, Seeds& seeds) {
    standin::Host host(scene);
    std::ostringstream log;
    const ShapeBuilder animated(log, ExportMode::ShapeWithAnimation);
    if (animated.hasError()) return;
    addFiles(animated, seeds);
    const std::string glb = view::shapeToGltf(animated, "seed").glb;
    if (!glb.empty()) addGltf(glb, seeds);
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
        std::fprintf(stderr, "usage: make_seeds FOLDER SCENE|GLTF...\n");
        return 2;
    }
    Seeds seeds(argv[1]);
    addFiles(everyRecord(), seeds);
    for (int i = 2; i < argc; ++i) {
        if (!endsWithIgnoringCase(argv[i], ".json")) {
            addGltf(readWholeFile(argv[i]), seeds);
            continue;
        }
        const standin::LoadResult loaded = standin::readSceneFile(argv[i]);
        if (!loaded.scene) {
            std::fprintf(stderr, "error: %s\n", loaded.error.c_str());
            return 3;
        }
        const standin::Scene scene = thinned(*loaded.scene);
        seeds.write("fuzz_scene", standin::sceneText(scene));
        standin::ImportResult import{{scene, {}, {}}, {"a unit is 1 m"}, {{"a.png", "bytes"}}, {{"a.obj", true}}};
        for (const MessageKind* kind : standin::load::kKinds)
            import.warnings.push_back(standin::aboutScene(*kind, "a"));
        seeds.write("fuzz_transfer", standin::packImport(import));
        addShapes(scene, seeds);
        addTags(*loaded.scene, seeds);
    }
    return seeds.good() ? 0 : 4;
}
