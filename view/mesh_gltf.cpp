#include "view/mesh_gltf.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "ground/at.h"
#include "ground/counted.h"
#include "shape/drawn_triangles.h"

namespace marrowfen::view {

namespace {

constexpr size_t kJointsPerVertex = 4;  // glTF's first set of joints

// Leaves out triangles that glTF can't hold; returns how many.
size_t dropUnplacedTriangles(const Mesh& mesh, std::vector<TriangleRun>& runs) {
    size_t dropped = 0;
    for (TriangleRun& run : runs) {
        dropped += std::erase_if(run.triangles, [&](const Triangle& t) {
            return !std::all_of(t.begin(), t.end(), [&](uint32_t v) { return isFinite(mesh.vertexes[v]); });
        });
    }
    std::erase_if(runs, [](const TriangleRun& run) { return run.triangles.empty(); });
    return dropped;
}

// The vertices that the triangles use, in rising order; the triangles are renumbered to positions in this list.
std::vector<uint32_t> compactVertices(std::vector<TriangleRun>& runs, size_t numVertexes) {
    constexpr uint32_t kUnused = 0xFFFFFFFF;
    std::vector<uint32_t> numbers(numVertexes, kUnused);
    for (const TriangleRun& run : runs) {
        for (const Triangle& t : run.triangles) {
            for (const uint32_t v : t) numbers[v] = 0;
        }
    }
    std::vector<uint32_t> used;
    for (uint32_t v = 0; v < numVertexes; ++v) {
        if (numbers[v] == kUnused) continue;
        numbers[v] = static_cast<uint32_t>(used.size());
        used.push_back(v);
    }
    for (TriangleRun& run : runs) {
        for (Triangle& t : run.triangles) {
            for (uint32_t& v : t) v = numbers[v];
        }
    }
    return used;
}

void put(std::vector<float>& out, const Point3& p) { out.insert(out.end(), {p.x, p.y, p.z}); }

// A unit vector along the normal; up where the mesh has none.
Point3 unitNormal(const Mesh& mesh, uint32_t v) {
    constexpr Point3 kUp{0, 0, 1};
    if (v >= mesh.normals.size()) return kUp;
    const Point3& n = mesh.normals[v];
    const double length = std::sqrt(double{n.x} * n.x + double{n.y} * n.y + double{n.z} * n.z);
    if (!std::isfinite(length) || length == 0) return kUp;
    return {static_cast<float>(n.x / length), static_cast<float>(n.y / length), static_cast<float>(n.z / length)};
}

Point2D finiteTexture(const Mesh& mesh, uint32_t v) {
    if (v >= mesh.texturevertexes.size()) return {};
    const Point2D& t = mesh.texturevertexes[v];
    return std::isfinite(t.x) && std::isfinite(t.y) ? t : Point2D{};
}

nlohmann::json addVertexAttributes(GltfFile& file, const Mesh& mesh, const std::vector<uint32_t>& vertices) {
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<float> textures;
    for (const uint32_t v : vertices) {
        put(positions, mesh.vertexes[v]);
        put(normals, unitNormal(mesh, v));
        const Point2D t = finiteTexture(mesh, v);
        textures.insert(textures.end(), {t.x, t.y});
    }
    using Use = GltfFile::Use;
    return {{"POSITION", file.addFloats("VEC3", positions, Use::Vertices, GltfFile::Bounds::Given)},
            {"NORMAL", file.addFloats("VEC3", normals, Use::Vertices)},
            {"TEXCOORD_0", file.addFloats("VEC2", textures, Use::Vertices)}};
}

struct Influence {
    uint16_t joint = 0;
    float weight = 0;
};

// The positive weights of each vertex, heaviest first, at most four, no joint twice.
std::vector<std::vector<Influence>> influencesOf(const Mesh& mesh) {
    std::vector<std::vector<Influence>> influences(mesh.vertexes.size());
    for (size_t i = 0; i < mesh.vindex.size(); ++i) {
        if (!(mesh.vweight[i] > 0) || !std::isfinite(mesh.vweight[i])) continue;
        std::vector<Influence>& of = at(influences, mesh.vindex[i]);
        const auto joint = static_cast<uint16_t>(mesh.vbone[i]);
        const auto same = std::find_if(of.begin(), of.end(), [&](const Influence& in) { return in.joint == joint; });
        if (same == of.end()) of.push_back({joint, mesh.vweight[i]});
    }
    for (std::vector<Influence>& of : influences) {
        std::stable_sort(of.begin(), of.end(),
                         [](const Influence& a, const Influence& b) { return a.weight > b.weight; });
        if (of.size() > kJointsPerVertex) of.resize(kJointsPerVertex);
    }
    return influences;
}

// Adds joints and weights of the vertices; true when some vertex needed the joint of the whole shape.
bool addSkinAttributes(GltfFile& file, const Mesh& mesh, const std::vector<uint32_t>& vertices,
                       nlohmann::json& attributes) {
    const auto shapeJoint = static_cast<uint16_t>(mesh.nodeIndex.size());
    const std::vector<std::vector<Influence>> influences = influencesOf(mesh);
    std::vector<uint16_t> joints;
    std::vector<float> weights;
    bool usesShapeJoint = false;
    for (const uint32_t v : vertices) {
        std::vector<Influence> of = influences[v];
        if (of.empty()) {
            of.push_back({shapeJoint, 1});
            usesShapeJoint = true;
        }
        double sum = 0;
        for (const Influence& in : of) sum += in.weight;
        of.resize(kJointsPerVertex);
        for (const Influence& in : of) {
            joints.push_back(in.joint);
            weights.push_back(static_cast<float>(in.weight / sum));
        }
    }
    attributes["JOINTS_0"] = file.addJoints(joints);
    attributes["WEIGHTS_0"] = file.addFloats("VEC4", weights, GltfFile::Use::Vertices);
    return usesShapeJoint;
}

// glTF stores matrices column by column and insists on the last row of an affine one.
int32_t addInverseBindMatrices(GltfFile& file, const Mesh& mesh, bool withShapeJoint,
                               std::vector<std::string>& warnings, const std::string& name) {
    std::vector<Matrix44> transforms = mesh.initialTransforms;
    if (withShapeJoint) transforms.emplace_back();
    std::vector<float> values;
    bool finite = true;
    for (const Matrix44& transform : transforms) {
        for (size_t column = 0; column < 4; ++column) {
            for (size_t row = 0; row < 3; ++row) {
                const float value = transform.m[row][column];
                finite = finite && std::isfinite(value);
                values.push_back(std::isfinite(value) ? value : 0);
            }
            values.push_back(column == 3 ? 1.0F : 0.0F);
        }
    }
    if (!finite) warnings.push_back(name + ": an initial transform of the skin isn't finite");
    return file.addFloats("MAT4", values, GltfFile::Use::Plain);
}

nlohmann::json addPrimitives(GltfFile& file, const std::vector<TriangleRun>& runs, const nlohmann::json& attributes,
                             const MaterialMap& materials) {
    nlohmann::json primitives = nlohmann::json::array();
    for (const TriangleRun& run : runs) {
        std::vector<uint32_t> indices;
        indices.reserve(run.triangles.size() * 3);
        // Clockwise in a shape, counter-clockwise in glTF.
        for (const Triangle& t : run.triangles) indices.insert(indices.end(), {t[0], t[2], t[1]});
        nlohmann::json primitive = {{"attributes", attributes}, {"indices", file.addIndices(indices)}};
        const int32_t material = run.material < 0 ? materials.withoutMaterial : at(materials.ofShape, run.material);
        if (material >= 0) primitive["material"] = material;
        primitives.push_back(std::move(primitive));
    }
    return primitives;
}

}  // namespace

GltfMesh addMesh(GltfFile& file, const Mesh& mesh, const std::string& name, const MaterialMap& materials,
                 std::vector<std::string>& warnings) {
    std::vector<TriangleRun> runs = trianglesOf(mesh);
    const size_t dropped = dropUnplacedTriangles(mesh, runs);
    if (dropped != 0) {
        warnings.push_back(name + ": " + counted(dropped, "triangle", "triangles") +
                           " with corners at no finite place left out");
    }
    if (mesh.numFrames > 1) warnings.push_back(name + ": only the first of its vertex frames is shown");
    if (runs.empty()) return {};

    const std::vector<uint32_t> vertices = compactVertices(runs, mesh.vertexes.size());
    GltfMesh result;
    result.vertices = vertices.size();
    for (const TriangleRun& run : runs) result.triangles += run.triangles.size();
    nlohmann::json attributes = addVertexAttributes(file, mesh, vertices);
    if (mesh.type == MeshType::Skin) {
        result.hasShapeJoint = addSkinAttributes(file, mesh, vertices, attributes);
        result.inverseBindMatrices = addInverseBindMatrices(file, mesh, result.hasShapeJoint, warnings, name);
    }
    result.mesh =
        file.add("meshes", {{"name", name}, {"primitives", addPrimitives(file, runs, attributes, materials)}});
    return result;
}

}  // namespace marrowfen::view
