#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>

#include "standin/host/scene_file.h"
#include "tests/import/model_files.h"

// Models that nobody here made, of Debian's package assimp-testmodels, a few of every format and with every option
// (behind " -- "), and those beside this test (examples/creature as gltfpack writes it, files written by hand for one
// situation each), against what is known of their scenes. Where another reader knows the format, scripts/compare-models
// has shown that these facts are right. After a change that is meant, MARROWFEN_FACTS=tests/import/foreign_models.facts
// writes them anew, to be reviewed.

namespace marrowfen::standin {
namespace {

const std::string kExpected = MARROWFEN_SOURCE_DIR "/tests/import/foreign_models.facts";

// A sum, and what is rounding in it.
struct Sum {
    double value = 0, nothing = 1e-3;

    void add(float x) { value += static_cast<double>(x); }
};

std::ostream& operator<<(std::ostream& out, const Sum& sum) {
    return out << std::setprecision(4) << (std::fabs(sum.value) < sum.nothing ? 0 : sum.value);
}

// Of all polyhedra of a layer.
struct LayerFacts {
    size_t polyhedra = 0, triangles = 0, vertices = 0, uvs = 0, held = 0;
    Vec3 low = {INFINITY, INFINITY, INFINITY}, high = {-INFINITY, -INFINITY, -INFINITY};
    Sum volume = {0, 1e-7}, area = {0, 1e-7}, outward, u, v;  // outward: how far normals look along their faces'

    void add(const Polyhedron& polyhedron);
};

void LayerFacts::add(const Polyhedron& polyhedron) {
    ++polyhedra, triangles += polyhedron.faces.size();
    vertices += polyhedron.vertices.size(), uvs += polyhedron.uvs.size();
    for (const Vec3& vertex : polyhedron.vertices) {
        for (size_t k = 0; k < 3; ++k) low[k] = std::min(low[k], vertex[k]), high[k] = std::max(high[k], vertex[k]);
    }
    for (const Face& face : polyhedron.faces) {
        const auto at = [&](size_t c) { return polyhedron.vertices.at(static_cast<size_t>(face.corners[c].vertex)); };
        const auto edge = [&](size_t c, size_t k) { return at(c)[k] - at(0)[k]; };
        const Vec3 a = {edge(2, 0), edge(2, 1), edge(2, 2)}, b = {edge(1, 0), edge(1, 1), edge(1, 2)};
        const Vec3 n = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        const float length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
        area.add(length / 2);
        for (size_t k = 0; k < 3; ++k) volume.add(n[k] * (at(0)[k] - low[k]) / 6);
        for (const Corner& corner : face.corners) {
            if (polyhedron.normals) {
                const Vec3& normal = polyhedron.normals->at(static_cast<size_t>(corner.vertex));
                for (size_t k = 0; k < 3; ++k) outward.add(length > 0 ? -normal[k] * n[k] / length / 3 : 0);
            }
            if (polyhedron.uvs.empty()) continue;
            u.add(polyhedron.uvs.at(static_cast<size_t>(corner.uv))[0]);
            v.add(polyhedron.uvs.at(static_cast<size_t>(corner.uv))[1]);
        }
    }
}

// Places and axes of many poses.
struct PoseFacts {
    size_t count = 0;
    std::array<Sum, 3> place, x, z;

    void add(const Transform& t) {
        ++count;
        for (size_t k = 0; k < 3; ++k) x[k].add(t[k * 4]), z[k].add(t[k * 4 + 2]), place[k].add(t[k * 4 + 3]);
    }
    void add(const Vec3& location, const Vec3& rotation) {
        ++count;
        for (size_t k = 0; k < 3; ++k) place[k].add(location[k]), x[k].add(rotation[k]);
    }
    void add(const Node& node) { node.transform ? add(*node.transform) : add(node.location, node.rotation); }
    void add(const Key& key) { key.transform ? add(*key.transform) : add(*key.location, *key.rotation); }
};

std::ostream& operator<<(std::ostream& out, const PoseFacts& facts) {
    out << facts.count << " poses";
    for (const auto& [name, sums] : {std::pair{"at", facts.place}, {"x", facts.x}, {"z", facts.z}}) {
        out << " " << name << " " << sums[0] << " " << sums[1] << " " << sums[2];
    }
    return out;
}

struct SceneFacts {
    std::vector<LayerFacts> layers;
    PoseFacts bones, markers;
    std::set<std::string> names;
    size_t held = 0;

    void add(const std::vector<Node>& nodes);
};

void SceneFacts::add(const std::vector<Node>& nodes) {
    for (const Node& node : nodes) {
        names.insert(node.name);
        if (node.type == TsxPolyhedron) layers.at(static_cast<size_t>(node.layer)).add(node.polyhedron);
        if (node.transform) bones.add(node);
        if (node.polyhedron.vertices.empty() && !node.transform) markers.add(node);
        for (const auto& [polyhedron, vertices] : node.tendon) held += vertices.size();
        add(node.children);
    }
}

std::string factsOf(const ImportResult& result) {
    if (!result.scene) return "error " + result.error + "\n";
    const Scene& scene = *result.scene;
    SceneFacts facts;
    facts.layers.resize(scene.layers.size());
    facts.add(scene.nodes);
    std::ostringstream out;
    for (const std::string& line : result.details) out << line << "\n";
    for (const Message& warning : result.warnings) {
        out << warning.kind->code << " " << warning.text.substr(0, 150) << "\n";
    }
    for (size_t i = 1; i < facts.layers.size(); ++i) {
        const LayerFacts& layer = facts.layers[i];
        out << *scene.layers[i] << ": " << layer.polyhedra << " polyhedra, " << layer.triangles << " triangles, "
            << layer.vertices << " vertices, " << layer.uvs << " uvs, from";
        for (const float x : layer.low) out << " " << std::setprecision(5) << x;
        out << " to";
        for (const float x : layer.high) out << " " << x;
        out << ", volume " << layer.volume << " area " << layer.area << " outward " << layer.outward << " uv "
            << layer.u << " " << layer.v << "\n";
    }
    for (const auto& [key, material] : scene.materials) {
        out << "material " << key << " " << material.texture << std::hex;
        for (const uint8_t c : material.color) out << " " << static_cast<int>(c);
        out << std::dec;
        if (material.shader)
            out << " " << material.shader->name << " " << std::get<float>(material.shader->parameters.at(0).value);
        out << "\n";
    }
    size_t shown = 0;
    for (const std::string& name : facts.names) out << (shown++ < 16 ? (shown > 1 ? ", " : "names ") + name : "");
    out << " (" << facts.names.size() << ")\n";
    if (facts.bones.count > 0) out << "bones " << facts.bones << ", hold " << facts.held << "\n";
    if (facts.markers.count > 0) out << "groups and markers " << facts.markers << "\n";
    for (const Clip& clip : scene.clips) {
        PoseFacts keys;
        for (const auto& [node, list] : clip.keys) {
            for (const Key& key : list) keys.add(key);
        }
        out << "clip " << clip.name << " to " << clip.end << " at " << scene.host.frameRate
            << (clip.loop != 0 ? ", loops: " : ": ") << keys << "\n";
    }
    for (const auto& [name, bytes] : result.textures) out << "texture " << name << " " << bytes.size() << "\n";
    return out.str();
}

// "FBX/spider.fbx -- turn=90 up=z"
ImportResult importAsSaid(const std::string& line) {
    const size_t end = std::min(line.find(" -- "), line.size());
    ImportOptions options;
    std::istringstream words(line.substr(std::min(end + 4, line.size())));
    for (std::string word; words >> word;) {
        const std::string key = word.substr(0, word.find('=')), value = word.substr(word.find('=') + 1);
        const float number = std::strtof(value.c_str(), nullptr);
        if (key == "turn") options.turnDegrees = number;
        if (key == "scale") options.scale = number;
        if (key == "unit") options.unit = static_cast<double>(number);
        if (key == "fps") options.frameRate = number;
        if (key == "most") options.mostTriangles = static_cast<size_t>(number);
        if (key == "up") options.up = value == "x" ? UpAxis::X : value == "y" ? UpAxis::Y : UpAxis::Z;
        if (key == "levels") options.levels = {{64, 100}, {32, 40}, {8, 10}};
        if (key == "single") options.singleSided = true;
        if (key == "plain") options.plainTextures = true;
        if (key == "notextures") options.noTextures = true;
        if (key == "loop") options.loops.push_back(value);
        if (key == "layer")
            options.layers.push_back({value.substr(0, value.rfind('=')), value.substr(value.rfind('=') + 1)});
        if (key == "for") options.shapeNodes.push_back(value);
    }
    const std::string model = line.substr(0, end);
    const bool isOurs = model.starts_with("tests/");
    const std::string path = (isOurs ? MARROWFEN_SOURCE_DIR "/" : "/usr/share/assimp/models/") + model;
    ImportResult result = importModel(path, options);
    // An error is a line that begins with the file; whatever else an import gives, a scene file can say, to the last
    // bit.
    if (!result.scene) {
        EXPECT_TRUE(result.error.starts_with(path + ": ") && result.error.find('\n') == std::string::npos) << line;
        result.error.erase(0, path.size() + 2);
    }
    EXPECT_TRUE(!result.scene || parseScene(sceneText(*result.scene), model).scene == result.scene) << line;
    return result;
}

TEST(ForeignModels, BecomeTheScenesThatAreKnown) {
    std::ifstream file(kExpected);
    ASSERT_TRUE(file.good()) << kExpected;
    std::vector<std::pair<std::string, std::string>> models;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("== ")) {
            models.emplace_back(line.substr(3), "");
        } else {
            models.back().second += line + "\n";
        }
    }
    ASSERT_GT(models.size(), 30U);
    const char* anew = std::getenv("MARROWFEN_FACTS");
    std::ostringstream written;
    for (const auto& [model, expected] : models) {
        const std::string facts = factsOf(importAsSaid(model));
        EXPECT_TRUE(anew != nullptr || facts == expected) << model << ":\n" << facts << "was:\n" << expected;
        written << "== " << model << "\n" << facts;
    }
    if (anew != nullptr) std::ofstream(anew) << written.str();
}

}  // namespace
}  // namespace marrowfen::standin
