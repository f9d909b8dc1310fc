#include "cli/shape_diff.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>

#include "cli/geometry_diff.h"
#include "cli/shape_facts.h"
#include "ground/at.h"
#include "ground/byte_order.h"
#include "ground/comma_list.h"

namespace marrowfen::cli {

namespace {

// The facts of one thing, each behind the word for it: two things are the same if these are.
using Facts = std::vector<std::pair<std::string, std::string>>;

// Things by their names; of several with one name the later ones get a number.
struct Things {
    std::vector<std::string> order;
    std::map<std::string, Facts> facts;

    // The name that the thing has here.
    const std::string& add(const std::string& name, Facts found) {
        std::string key = name;
        for (int copy = 2; facts.count(key) > 0; ++copy) key = name + " #" + std::to_string(copy);
        order.push_back(key);
        facts[key] = std::move(found);
        return order.back();
    }
};

std::string exact(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.7g", static_cast<double>(value));
    return text;
}

std::string exact(std::initializer_list<float> values) {
    std::string text;
    for (const float value : values) text += (text.empty() ? "(" : ", ") + exact(value);
    return text + ")";
}

std::string exact(const Point3& p) { return exact({p.x, p.y, p.z}); }
std::string exact(const Quaternion& q) { return exact({q.x, q.y, q.z, q.w}); }

std::string words(const std::vector<std::string>& list) {
    std::string text;
    for (const std::string& word : list) text += (text.empty() ? "" : " ") + word;
    return text.empty() ? "none" : text;
}

// A digest for what is too long to be told: its change is, and no more.
class Digest {
public:
    void add(uint32_t bits) {
        for (int shift = 0; shift < 32; shift += 8) hash_ = (hash_ ^ (bits >> shift & 0xFF)) * 0x100000001B3;
    }
    void add(float value) { add(floatBits(value)); }
    void add(const Point2D& p) { add(p.x), add(p.y); }
    void add(const Point3& p) { add(p.x), add(p.y), add(p.z); }
    void add(const Quaternion& q) { add(q.x), add(q.y), add(q.z), add(q.w); }
    template <class Entry>
    void add(const std::vector<Entry>& list) {
        for (const Entry& entry : list) add(entry);
    }
    std::string text() const { return "\n" + std::to_string(hash_); }  // told by its line feed

private:
    uint64_t hash_ = 0xCBF29CE484222325;
};

Things nodesOf(const Shape& shape, ShapeFileKind kind) {
    Things things;
    for (size_t i = 0; i < shape.nodes.size(); ++i) {
        const int32_t parent = shape.nodes[i].parent;
        Facts facts;
        if (kind == ShapeFileKind::Dts) {
            facts = {{"parent", hasIndex(shape.nodes, parent) ? nameAt(shape, at(shape.nodes, parent).name) : "none"},
                     {"place", exact(shape.nodeDefTranslations[i])},
                     {"rotation", exact(shape.nodeDefRotations[i])}};
        }
        things.add(nameAt(shape, shape.nodes[i].name), facts);
    }
    return things;
}

Things objectsOf(const Shape& shape) {
    Things things;
    for (const Shape::Object& object : shape.objects) {
        const bool onNode = hasIndex(shape.nodes, object.node);
        things.add(nameAt(shape, object.name),
                   {{"node", onNode ? nameAt(shape, at(shape.nodes, object.node).name) : "none"},
                    {"meshes", std::to_string(object.numMeshes)}});
    }
    return things;
}

// The kinds of a level's meshes and what their vertices hang on; how they look is told apart from it.
void addMeshes(const Shape& shape, const std::vector<int32_t>& meshes, Facts& facts) {
    Digest weights;
    std::vector<std::string> kinds;
    for (const int32_t i : meshes) {
        const Mesh& mesh = at(shape.meshes, i);
        kinds.emplace_back(meshTypeWord(mesh.type));
        for (std::string& word : allFlagWords(mesh.flags, kMeshFlagWords)) kinds.push_back(std::move(word));
        weights.add(mesh.vweight);
        for (const int32_t node : mesh.nodeIndex) weights.add(static_cast<uint32_t>(node));
    }
    facts.insert(facts.end(), {{"meshes", words(kinds)}, {"weights", weights.text()}});
}

// meshes: those of each level.
Things levelsOf(const Shape& shape, std::map<std::string, MeshGroup>& meshes) {
    Things things;
    const ShapeFacts shapeFacts(shape);
    for (size_t i = 0; i < std::min(shape.detailLevels.size(), size_t{256}); ++i) {
        const Shape::DetailLevel& level = shape.detailLevels[i];
        const LevelFacts found = shapeFacts.of(level);
        std::vector<std::string> materials;
        for (const uint32_t m : found.materials) {
            materials.push_back(m < shape.materials.size() ? shape.materials[m].name : "?");
        }
        Facts facts = {{"size", exact(level.size)},
                       {"triangles", std::to_string(found.triangles)},
                       {"strips", std::to_string(found.strips)},
                       {"vertices", std::to_string(found.vertices)},
                       {"materials", words(materials)}};
        addMeshes(shape, found.meshes, facts);
        meshes.emplace(things.add(nameAt(shape, level.name), std::move(facts)), MeshGroup{shape, found.meshes});
    }
    return things;
}

Things materialsOf(const Shape& shape) {
    Things things;
    for (const Shape::Material& material : shape.materials) {
        things.add(material.name, {{"flags", words(allFlagWords(material.flags, kMaterialFlagWords))},
                                   {"reflection", exact(material.reflection)},
                                   {"detail scale", exact(material.detailScale)}});
    }
    return things;
}

template <class Key>
std::string keysText(const std::vector<Key>& table, int32_t base, const IndexSet& nodes, int32_t numKeyFrames) {
    Digest digest;
    const int64_t count = static_cast<int64_t>(nodes.count()) * numKeyFrames;
    for (int64_t i = 0; i < count && hasIndex(table, base + i); ++i) digest.add(at(table, base + i));
    return digest.text();
}

Things sequencesOf(const Shape& shape) {
    Things things;
    for (const Shape::Sequence& s : shape.sequences) {
        things.add(nameAt(shape, s.nameIndex),
                   {{"frames", std::to_string(s.numKeyFrames)},
                    {"seconds", exact(s.duration)},
                    {"priority", std::to_string(s.priority)},
                    {"flags", words(allFlagWords(s.flags, kSequenceFlagWords))},
                    {"nodes", std::to_string(animatedNodes(s))},
                    {"rotation keys", keysText(shape.nodeRotations, s.baseRotation, s.rotationMatters, s.numKeyFrames)},
                    {"translation keys",
                     keysText(shape.nodeTranslations, s.baseTranslation, s.translationMatters, s.numKeyFrames)},
                    {"triggers", std::to_string(s.numTriggers)}});
    }
    return things;
}

// "triangles 120 -> 60, positions differ"
std::string changes(const Facts& before, const Facts& after) {
    std::string text;
    for (size_t i = 0; i < std::min(before.size(), after.size()); ++i) {
        const auto& [what, old] = before[i];
        const std::string& now = after[i].second;
        if (old == now) continue;
        const bool isDigest = old.starts_with('\n');
        addToList(text, what + (isDigest ? " differ" : " " + old + " -> " + now));
    }
    return text;
}

using MoreChanges = std::function<std::vector<std::string>(const std::string& name)>;

// more: what else differs in a thing that is on both sides.
void compare(const char* kind, const Things& before, const Things& after, std::vector<std::string>& lines,
             const MoreChanges& more = {}) {
    for (const std::string& name : before.order) {
        const auto now = after.facts.find(name);
        if (now == after.facts.end()) {
            lines.push_back("- " + std::string(kind) + " " + name);
            continue;
        }
        std::string text = changes(before.facts.at(name), now->second);
        for (const std::string& change : more ? more(name) : std::vector<std::string>()) addToList(text, change);
        if (!text.empty()) lines.push_back("! " + std::string(kind) + " " + name + ": " + text);
    }
    for (const std::string& name : after.order) {
        if (before.facts.count(name) == 0) lines.push_back("+ " + std::string(kind) + " " + name);
    }
}

Things wholeOf(const ShapeFile& file) {
    if (file.bytes == 0) return {};
    Facts facts = {{"version", std::to_string(file.version.word)}};
    if (file.kind == ShapeFileKind::Dts) {
        facts.insert(facts.end(), {{"bounds", exact(file.shape.bounds.min) + " to " + exact(file.shape.bounds.max)},
                                   {"radius", exact(file.shape.radius)},
                                   {"smallest size", exact(file.shape.smallestSize)}});
    }
    Things things;
    things.add("as a whole", std::move(facts));
    return things;
}

}  // namespace

std::vector<std::string> differences(const ShapeFile& before, const ShapeFile& after) {
    std::vector<std::string> lines;
    compare("file", wholeOf(before), wholeOf(after), lines);
    compare("node", nodesOf(before.shape, before.kind), nodesOf(after.shape, after.kind), lines);
    if (before.kind == ShapeFileKind::Dts) {
        compare("object", objectsOf(before.shape), objectsOf(after.shape), lines);
        std::map<std::string, MeshGroup> old, now;
        const Things oldLevels = levelsOf(before.shape, old), newLevels = levelsOf(after.shape, now);
        compare("level", oldLevels, newLevels, lines,
                [&](const std::string& name) { return geometryDifferences(old.at(name), now.at(name)); });
        compare("material", materialsOf(before.shape), materialsOf(after.shape), lines);
    }
    compare("sequence", sequencesOf(before.shape), sequencesOf(after.shape), lines);
    if (lines.empty() && dumpOf(before.shape) != dumpOf(after.shape)) {
        lines.emplace_back("! tables: in another order, or with other numbers: marrowfen dump shows them");
    }
    return lines;
}

}  // namespace marrowfen::cli
