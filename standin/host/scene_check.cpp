#include "standin/host/scene_check.h"

#include <unordered_map>
#include <unordered_set>

#include "host/tsxapi.h"
#include "standin/host/json_document.h"
#include "standin/host/scene_fields.h"

namespace marrowfen::standin {
namespace {

class ReferenceChecker {
public:
    ReferenceChecker(const Scene& scene, ScenePlace& place) : scene_(scene), place_(place) {}

    void checkAll();

private:
    struct Identity {
        const Node* node = nullptr;
        int count = 0;  // nodes with this id
    };

    const Scene& scene_;
    ScenePlace& place_;
    std::unordered_map<std::string, Identity> nodes_;  // by id
    std::unordered_set<std::string> materials_;        // keys

    void collectIds(const std::vector<Node>& nodes);

    // The one node that is called so, or a fault and null.
    const Node* referredNode(const std::string& id);
    const Node* referredNode(const std::string& id, int32_t type, const char* typeName);

    // A fault unless 0 <= index < count.
    void checkIndex(const char* what, int32_t index, size_t count);
    void checkCorners(const Polyhedron& polyhedron, const Face& face);
    void checkPolyhedron(const Polyhedron& polyhedron);
    void checkHeldVertices(const HeldVertices& held);
    void checkMuscles(const std::vector<Muscle>& muscles);
    void checkNode(const Node& node);
    void checkKeys(const std::vector<Key>& keys);
    void checkClip(const Clip& clip);

    // Calls check(entry) in the place of each entry, up to the first fault.
    template <class List, class Check>
    void forEach(const char* key, const List& list, Check check) {
        const ScenePlace::Step inList(place_, key);
        for (size_t i = 0; i < list.size() && place_.ok(); ++i) {
            const ScenePlace::Step inEntry(place_, i);
            check(list[i]);
        }
    }
};

void ReferenceChecker::collectIds(const std::vector<Node>& nodes) {
    for (const Node& node : nodes) {
        Identity& identity = nodes_[node.identity()];
        identity.node = &node;
        ++identity.count;
        collectIds(node.children);
    }
}

const Node* ReferenceChecker::referredNode(const std::string& id) {
    const auto found = nodes_.find(id);
    if (found == nodes_.end()) {
        place_.fail("no node has the id " + jsonQuoted(id));
    } else if (found->second.count > 1) {
        place_.fail(std::to_string(found->second.count) + " nodes have the id " + jsonQuoted(id));
    }
    return place_.ok() ? found->second.node : nullptr;
}

const Node* ReferenceChecker::referredNode(const std::string& id, int32_t type, const char* typeName) {
    const Node* node = referredNode(id);
    if (node == nullptr || node->type == type) return node;
    place_.fail("node " + jsonQuoted(id) + " is no " + typeName);
    return nullptr;
}

void ReferenceChecker::checkIndex(const char* what, int32_t index, size_t count) {
    if (index >= 0 && static_cast<size_t>(index) < count) return;
    place_.fail(std::string(what) + " " + std::to_string(index) + " of " + std::to_string(count));
}

void ReferenceChecker::checkCorners(const Polyhedron& polyhedron, const Face& face) {
    forEach("corners", face.corners, [&](const Corner& corner) {
        checkIndex("vertex", corner.vertex, polyhedron.vertices.size());
        if (!polyhedron.uvs.empty()) checkIndex("uv", corner.uv, polyhedron.uvs.size());
    });
}

void ReferenceChecker::checkPolyhedron(const Polyhedron& polyhedron) {
    if (polyhedron.normals && polyhedron.normals->size() != polyhedron.vertices.size()) {
        const ScenePlace::Step step(place_, "normals");
        place_.fail(std::to_string(polyhedron.normals->size()) + " normals for " +
                    std::to_string(polyhedron.vertices.size()) + " vertices");
    }
    forEach("faces", polyhedron.faces, [&](const Face& face) { checkCorners(polyhedron, face); });
    forEach("materials", polyhedron.materials, [&](const std::optional<std::string>& key) {
        if (key && !materials_.contains(*key)) place_.fail("no material has the key " + jsonQuoted(*key));
    });
}

void ReferenceChecker::checkHeldVertices(const HeldVertices& held) {
    for (const auto& [id, vertices] : held) {
        const ScenePlace::Step step(place_, id);
        const Node* polyhedron = referredNode(id, TsxPolyhedron, "polyhedron");
        for (size_t i = 0; i < vertices.size() && place_.ok(); ++i) {
            const ScenePlace::Step inEntry(place_, i);
            checkIndex("vertex", vertices[i], polyhedron->polyhedron.vertices.size());
        }
    }
}

void ReferenceChecker::checkMuscles(const std::vector<Muscle>& muscles) {
    std::unordered_set<std::string> joints;
    forEach("muscles", muscles, [&](const Muscle& muscle) {
        {
            const ScenePlace::Step step(place_, "joint");
            referredNode(muscle.joint, TsxJoint, "joint");
            if (!joints.insert(muscle.joint).second) {
                place_.fail("joint " + jsonQuoted(muscle.joint) + " is there twice, it has one muscle with the bone");
            }
        }
        const ScenePlace::Step step(place_, "vertices");
        checkHeldVertices(muscle.vertices);
    });
}

void ReferenceChecker::checkNode(const Node& node) {
    checkPolyhedron(node.polyhedron);
    checkMuscles(node.muscles);
    {
        const ScenePlace::Step step(place_, "tendon");
        checkHeldVertices(node.tendon);
    }
    forEach("children", node.children, [&](const Node& child) { checkNode(child); });
}

void ReferenceChecker::checkKeys(const std::vector<Key>& keys) {
    for (size_t i = 1; i < keys.size(); ++i) {
        if (keys[i].frame > keys[i - 1].frame) continue;
        const ScenePlace::Step inKey(place_, i);
        const ScenePlace::Step inFrame(place_, "frame");
        place_.fail("frame " + numberText(keys[i].frame) + " after frame " + numberText(keys[i - 1].frame));
    }
}

void ReferenceChecker::checkClip(const Clip& clip) {
    const ScenePlace::Step inKeys(place_, "keys");
    for (const auto& [id, keys] : clip.keys) {
        const ScenePlace::Step inNode(place_, id);
        referredNode(id);
        checkKeys(keys);
        if (!place_.ok()) return;
    }
}

void ReferenceChecker::checkAll() {
    collectIds(scene_.nodes);
    for (const auto& [key, material] : scene_.materials) materials_.insert(key);
    forEach("nodes", scene_.nodes, [&](const Node& node) { checkNode(node); });
    forEach("clips", scene_.clips, [&](const Clip& clip) { checkClip(clip); });
}

}  // namespace

void checkReferences(const Scene& scene, ScenePlace& place) { ReferenceChecker(scene, place).checkAll(); }

void checkScene(const Scene& scene, ScenePlace& place, std::vector<Message>& warnings) {
    checkValues(scene, place, warnings);
    if (place.ok()) checkReferences(scene, place);
}

std::string tooDeepText() { return "nodes are nested more than " + std::to_string(kDeepestNode) + " deep"; }

}  // namespace marrowfen::standin
