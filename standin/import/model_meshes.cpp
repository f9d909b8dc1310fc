#include <algorithm>
#include <bit>
#include <cmath>

#include "ground/at.h"
#include "standin/import/mesh_sides.h"
#include "standin/import/model.h"

// Importers split a vertex wherever its normal, texture coordinate or colour differs between faces. Here the parts are
// joined again, since what the host holds, and what the exporter's corner merging, adjacency and decimation want, is a
// connected surface whose corners have texture coordinates of their own.
//
// Visible meshes are joined by position and normal: a host's vertex has one normal, so a hard edge is one between
// vertices. What nobody sees (collision, bounds) is joined by position alone. Parts on different bones stay apart.

namespace marrowfen::standin {

namespace {

constexpr double kSameNormal = 0.99996;   // cosine of half a degree: what files differ by where nobody meant to
constexpr size_t kMostMaterials = 32767;  // the host numbers a polyhedron's materials in 16 bits

struct Bits {
    std::array<uint32_t, 4> words;

    bool operator==(const Bits&) const = default;
};

// Numbers by bits: a table with open places, since a node of its own for each entry costs more than the search.
class NumberOfBits {
public:
    // The number that these bits have, and whether they are new and this one is theirs now.
    std::pair<int32_t, bool> tryAdd(const Bits& bits, int32_t number) {
        if (2 * (count_ + 1) > entries_.size()) grow();
        Entry& entry = entries_[placeOf(bits)];
        const bool isNew = entry.number == kNone;
        if (isNew) entry = {bits, number}, ++count_;
        return {entry.number, isNew};
    }

private:
    struct Entry {
        Bits bits;
        int32_t number = kNone;
    };
    std::vector<Entry> entries_;  // a power of two
    size_t count_ = 0;

    static size_t hashOf(const Bits& bits) {
        uint64_t hash = 0x9E3779B97F4A7C15U;
        for (const uint32_t word : bits.words) {
            hash = (hash ^ word) * 0xFF51AFD7ED558CCDU;
            hash ^= hash >> 32;
        }
        return static_cast<size_t>(hash);
    }

    size_t placeOf(const Bits& bits) const {
        size_t at = hashOf(bits) & (entries_.size() - 1);
        while (entries_[at].number != kNone && !(entries_[at].bits == bits)) at = (at + 1) & (entries_.size() - 1);
        return at;
    }

    void grow() {
        constexpr size_t kFirstSize = 64;
        std::vector<Entry> old(entries_.empty() ? kFirstSize : 4 * entries_.size());
        std::swap(old, entries_);
        for (const Entry& entry : old) {
            if (entry.number != kNone) entries_[placeOf(entry.bits)] = entry;
        }
    }
};

uint32_t bitsOf(float value) { return std::bit_cast<uint32_t>(value); }

struct JoinedVertex {
    int32_t bone = kNoNode;
    int32_t next = kNone;     // the next vertex at this position on the same bone
    Vec3 normal = {0, 0, 0};  // outward, of no length where the host computes it
    bool severalBones = false;
};

// Which node a vertex of a mesh hangs on.
struct Hold {
    int32_t bone = kNoNode;
    bool several = false;
};

// One mesh on its way into a polyhedron.
struct Part {
    const SourceMesh* mesh = nullptr;
    Matrix sceneFromMesh;
    bool hasNormals = false;
    bool mirrored = false;
    bool facesInward = false;    // its faces are to be turned round
    bool normalsInward = false;  // its normals are to be turned round
    bool hasBacks = false;       // every face is there a second time, seen from behind
    std::vector<Hold> holds;
    int32_t material = 0;               // position in the polyhedron's list
    std::vector<int32_t> joined, uvOf;  // per vertex, kNone until it is met
};

class Joiner {
public:
    Joiner(Model& model, int32_t node);

    void add(int32_t meshIndex);
    Polyhedron finish(BoneVertices& held);

private:
    int16_t layer() const { return at(model_.nodes, node_).layer; }
    Part preparePart(int32_t meshIndex);
    std::vector<Hold> findHolds(const SourceMesh& mesh);
    int32_t materialSlot(int32_t material);
    bool showsBacks(const Part& part);
    void addTriangle(Part& part, std::array<uint32_t, 3> corners);
    void addBack(Part& part, const std::array<uint32_t, 3>& corners, const std::array<Vec3, 3>& at);
    Vec3 scenePosition(const Part& part, uint32_t vertex);
    Vec3 sceneNormal(const Part& part, uint32_t vertex) const;
    int32_t joinedVertex(Part& part, uint32_t vertex, const Vec3& position, const Vec3& faceNormal);
    int32_t findOrAdd(const Vec3& position, const Vec3& normal, const Hold& hold);
    int32_t uvIndex(Part& part, uint32_t vertex);

    Model& model_;
    int32_t node_;
    bool detail_;
    bool hasNormals_ = false;
    Polyhedron result_;
    std::vector<JoinedVertex> vertices_;
    NumberOfBits firstAt_;   // vertices by position and bone
    NumberOfBits uvNumber_;  // by value
    std::vector<int32_t> materialSlots_;
};

Vec3 toVec3(const Vector& v) {
    // Adding zero makes a negative zero positive, so that equal positions have equal bits.
    return {static_cast<float>(v.x) + 0.0F, static_cast<float>(v.y) + 0.0F, static_cast<float>(v.z) + 0.0F};
}

Vector toVector(const Vec3& v) { return {v[0], v[1], v[2]}; }

Vec3 unitOrZero(const Vector& v) {
    const double length = v.Length();
    return length > 0 && std::isfinite(length) ? toVec3(v / length) : Vec3{0, 0, 0};
}

bool isSameNormal(const Vec3& a, const Vec3& b) { return a == b || toVector(a) * toVector(b) >= kSameNormal; }

Joiner::Joiner(Model& model, int32_t node) : model_(model), node_(node), detail_(isDetailLayer(model, layer())) {
    for (const int32_t mesh : at(model.nodes, node).source->meshes) {
        const SourceMesh& source = at(model.source.meshes, mesh);
        if (detail_ && (source.flat || hasUsableNormals(source))) hasNormals_ = true;
    }
}

std::vector<Hold> Joiner::findHolds(const SourceMesh& mesh) {
    Hold whole;
    whole.bone = boneAbove(model_, node_);
    std::vector<Hold> holds(mesh.positions.size(), whole);
    for (size_t v = 0; v < mesh.holds.size(); ++v) {
        if (mesh.holds[v].bone == kNone) continue;
        const int32_t bone = at(mesh.bones, mesh.holds[v].bone).node;
        if (at(model_.nodes, bone).bone) holds[v] = {bone, mesh.holds[v].several};
    }
    return holds;
}

int32_t Joiner::materialSlot(int32_t material) {
    materialSlots_.resize(model_.source.materials.size(), kNone);
    int32_t& slot = at(materialSlots_, material);
    if (slot == kNone) {
        slot = static_cast<int32_t>(result_.materials.size());
        result_.materials.emplace_back(at(model_.materialKeys, material));
        if (result_.materials.size() > kMostMaterials) model_.fail("a node has too many materials");
    }
    return slot;
}

Part Joiner::preparePart(int32_t meshIndex) {
    const SourceMesh& mesh = at(model_.source.meshes, meshIndex);
    Part part;
    part.mesh = &mesh;
    part.sceneFromMesh = sceneFromMesh(model_, node_, meshIndex);
    part.mirrored = part.sceneFromMesh.Determinant() < 0;
    part.hasNormals = hasUsableNormals(mesh);
    // Which of the two is right, the enclosed volume tells.
    if (normalsOpposeFaces(mesh)) {
        ++model_.notes.turnedMeshes;
        part.normalsInward = enclosedVolume(mesh) > 0;
        part.facesInward = !part.normalsInward;
    }
    part.holds = findHolds(mesh);
    if (!detail_) part.holds.assign(mesh.positions.size(), Hold());
    part.material = materialSlot(mesh.material);
    part.joined.assign(mesh.positions.size(), kNone);
    part.uvOf.assign(mesh.positions.size(), kNone);
    part.hasBacks = showsBacks(part);
    return part;
}

// The back of what encloses a volume is never seen, unless there are holes to see it through.
bool Joiner::showsBacks(const Part& part) {
    const SourceMaterial& material = at(model_.source.materials, part.mesh->material);
    if (!material.doubleSided || !detail_ || model_.options.singleSided) return false;
    if (material.alpha == SourceMaterial::Alpha::Opaque && isClosed(*part.mesh)) return false;
    if (!hasNormals_) ++model_.notes.backsWithout;
    return hasNormals_;
}

Vec3 Joiner::scenePosition(const Part& part, uint32_t vertex) {
    const Vec3 position = toVec3(part.sceneFromMesh * Vector(part.mesh->positions[vertex]));
    if (!std::all_of(position.begin(), position.end(), [](float x) { return std::isfinite(x); })) {
        model_.fail("node " + at(model_.nodes, node_).name + ": a vertex is beyond all numbers");
    }
    return position;
}

// Normals go by the cofactors, which a flattening transform has too. They carry the determinant's sign, which is taken
// off: an outward normal stays one in a mirror.
Vec3 Joiner::sceneNormal(const Part& part, uint32_t vertex) const {
    const Matrix& m = part.sceneFromMesh;
    const Vector x(m.a1, m.b1, m.c1), y(m.a2, m.b2, m.c2), z(m.a3, m.b3, m.c3);
    const aiVector3D& n = part.mesh->normals[vertex];
    const Vector normal =
        (y ^ z) * static_cast<double>(n.x) + (z ^ x) * static_cast<double>(n.y) + (x ^ y) * static_cast<double>(n.z);
    return unitOrZero(part.mirrored != part.normalsInward ? -normal : normal);
}

int32_t Joiner::findOrAdd(const Vec3& position, const Vec3& normal, const Hold& hold) {
    const Bits key = {
        {bitsOf(position[0]), bitsOf(position[1]), bitsOf(position[2]), static_cast<uint32_t>(hold.bone)}};
    const auto [first, isNew] = firstAt_.tryAdd(key, static_cast<int32_t>(vertices_.size()));
    int32_t found = isNew ? kNone : first;
    int32_t last = kNone;
    while (found != kNone && !isSameNormal(at(vertices_, found).normal, normal)) {
        last = found;
        found = at(vertices_, found).next;
    }
    if (found != kNone) return found;
    found = static_cast<int32_t>(vertices_.size());
    if (last != kNone) at(vertices_, last).next = found;
    JoinedVertex vertex;
    vertex.bone = hold.bone;
    vertex.normal = normal;
    vertices_.push_back(vertex);
    result_.vertices.push_back(position);
    return found;
}

int32_t Joiner::joinedVertex(Part& part, uint32_t vertex, const Vec3& position, const Vec3& faceNormal) {
    if (part.joined[vertex] != kNone) return part.joined[vertex];
    Vec3 normal = {0, 0, 0};
    if (hasNormals_ && part.hasNormals) normal = sceneNormal(part, vertex);
    // Without a normal of its own a vertex has those of its faces, so it is looked up corner by corner.
    const bool ofFace = hasNormals_ && normal == Vec3{0, 0, 0};
    const int32_t joined = findOrAdd(position, ofFace ? faceNormal : normal, part.holds[vertex]);
    if (part.holds[vertex].several) at(vertices_, joined).severalBones = true;
    if (!ofFace) part.joined[vertex] = joined;
    return joined;
}

int32_t Joiner::uvIndex(Part& part, uint32_t vertex) {
    if (part.mesh->uvs.empty()) return kNone;
    int32_t& index = part.uvOf[vertex];
    if (index != kNone) return index;
    const Vec2 uv = {part.mesh->uvs[vertex][0] + 0.0F, part.mesh->uvs[vertex][1] + 0.0F};
    const auto [number, isNew] =
        uvNumber_.tryAdd(Bits{{bitsOf(uv[0]), bitsOf(uv[1]), 0, 0}}, static_cast<int32_t>(result_.uvs.size()));
    if (isNew) result_.uvs.push_back(uv);
    return index = number;
}

void Joiner::addTriangle(Part& part, std::array<uint32_t, 3> corners) {
    // A file's faces are anticlockwise seen from outside, the host's are clockwise: [a b c] -> [a c b]. A mirror has
    // turned them already, and so has a file whose faces look inward.
    if (part.mirrored == part.facesInward) std::swap(corners[1], corners[2]);
    std::array<Vec3, 3> at;
    for (size_t c = 0; c < 3; ++c) at[c] = scenePosition(part, corners[c]);
    if (at[0] == at[1] || at[1] == at[2] || at[2] == at[0]) {
        ++model_.notes.degenerateFaces;
        return;
    }
    const Vector outward = (toVector(at[2]) - toVector(at[0])) ^ (toVector(at[1]) - toVector(at[0]));
    const Vec3 faceNormal = hasNormals_ ? unitOrZero(outward) : Vec3{0, 0, 0};
    Face face;
    face.material = part.material;
    for (size_t c = 0; c < 3; ++c) {
        face.corners.push_back({joinedVertex(part, corners[c], at[c], faceNormal), uvIndex(part, corners[c])});
    }
    result_.faces.push_back(std::move(face));
    if (part.hasBacks) addBack(part, corners, at);
}

void Joiner::addBack(Part& part, const std::array<uint32_t, 3>& corners, const std::array<Vec3, 3>& at) {
    ++model_.notes.backs;
    Face back;
    back.material = part.material;
    for (const size_t c : {size_t{0}, size_t{2}, size_t{1}}) {
        const Vec3 front = marrowfen::at(vertices_, result_.faces.back().corners[c].vertex).normal;
        const int32_t vertex = findOrAdd(at[c], {0 - front[0], 0 - front[1], 0 - front[2]}, part.holds[corners[c]]);
        back.corners.push_back({vertex, result_.faces.back().corners[c].uv});
    }
    result_.faces.push_back(std::move(back));
}

void Joiner::add(int32_t meshIndex) {
    Part part = preparePart(meshIndex);
    const std::vector<uint32_t>& corners = part.mesh->corners;
    for (size_t c = 0; c + 2 < corners.size() && model_.error.empty(); c += 3) {
        addTriangle(part, {corners[c], corners[c + 1], corners[c + 2]});
    }
}

Polyhedron Joiner::finish(BoneVertices& held) {
    if (hasNormals_) {
        result_.normals.emplace();
        // The host's normals point inward.
        for (const JoinedVertex& vertex : vertices_) {
            const Vec3& normal = vertex.normal;
            result_.normals->push_back({0 - normal[0], 0 - normal[1], 0 - normal[2]});
        }
    }
    // Corners of parts without texture coordinates read (0, 0).
    int32_t noUv = 0;
    const bool lacksUv = std::any_of(result_.faces.begin(), result_.faces.end(),
                                     [](const Face& face) { return face.corners[0].uv == kNone; });
    if (lacksUv && !result_.uvs.empty()) {
        noUv = static_cast<int32_t>(result_.uvs.size());
        result_.uvs.push_back({0, 0});
    }
    for (Face& face : result_.faces) {
        for (Corner& corner : face.corners) corner.uv = corner.uv == kNone ? noUv : corner.uv;
    }
    std::map<int32_t, std::vector<int32_t>> verticesOf;
    for (size_t v = 0; v < vertices_.size(); ++v) {
        if (vertices_[v].bone != kNoNode) verticesOf[vertices_[v].bone].push_back(static_cast<int32_t>(v));
        if (vertices_[v].severalBones) ++model_.notes.lightVertices;
    }
    for (auto& [bone, vertices] : verticesOf) held[{layer(), bone}].emplace_back(nodeId(node_), std::move(vertices));
    if (!detail_ && boneAbove(model_, node_) != kNoNode) ++model_.notes.stillCollisions;
    return std::move(result_);
}

}  // namespace

Polyhedron convertMeshes(Model& model, int32_t node, BoneVertices& held) {
    Joiner joiner(model, node);
    for (const int32_t mesh : at(model.nodes, node).source->meshes) {
        if (model.error.empty()) joiner.add(mesh);
    }
    return joiner.finish(held);
}

}  // namespace marrowfen::standin
