#include "builder/scan.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "builder/layer_names.h"
#include "builder/refusals.h"
#include "builder/tags.h"
#include "ground/at.h"
#include "ground/comma_list.h"
#include "host/layers.h"

// Layers by slot, nodes onto their layers, layers into roles by their names; then clips, bones and markers.

namespace marrowfen {

namespace {

constexpr int32_t kBoundsVertices = 8;  // of a cube

struct ScannedLayer {
    LayerRole role = LayerRole::Unused;
    LayerInfo info;
};

// How the object scan treats a type of node.
struct KnownType {
    NodeType type;
    const char* skipped;  // logged before the name when the node is on no layer
    const char* title;    // logged before the name when it is on one
};

constexpr KnownType kKnownTypes[] = {
    {NodeType::Joint, "joint ", "\tJoint: "},         {NodeType::Bone, "bone ", "\tBone: "},
    {NodeType::Polyhedron, "poly ", "\tPoly: "},      {NodeType::Group, "group ", "\tGroup: "},
    {NodeType::IkGroup, "ik group ", "\tIK Group: "}, {NodeType::Skeleton, "skeleton ", "\tSkeleton: "},
};

const KnownType* knownType(NodeType type) {
    const auto* const found = std::find_if(std::begin(kKnownTypes), std::end(kKnownTypes),
                                           [&](const KnownType& known) { return known.type == type; });
    return found == std::end(kKnownTypes) ? nullptr : found;
}

// The layers that hold something, by slot.
class LayerScan {
public:
    explicit LayerScan(Notices& notices) : notices_(notices) {}

    void scanSlots();
    void scanObjects();
    void categorize(SceneScan& scan);
    std::vector<LayerInfo> moveTo(SceneScan& scan);  // the nodes layers are left over

private:
    void scanNode(const SceneNode& node, bool isWalked);
    bool noteOnLayer(const SceneNode& node, const KnownType& known, bool isWalked);
    LayerRole categorizeLayer(LayerInfo& layer, SceneScan& scan);

    Notices& notices_;
    std::vector<ScannedLayer> layers_;
};

void LayerScan::scanSlots() {
    std::ostream& log = notices_.log();
    log << "Beginning to scan scene for layer information..." << std::endl;
    const int16_t count = numberOfLayerSlots();
    log << count << " layers found" << std::endl;
    layers_.resize(count > 0 ? static_cast<size_t>(count) : 0);
    log << "End layer scan" << std::endl << std::endl;
}

void LayerScan::scanObjects() {
    notices_.log() << "Beginning to scan scene for objects..." << std::endl;
    for (SceneNode node = SceneNode::firstOfScene(); node; node = node.next()) scanNode(node, false);
    notices_.log() << "End object scan" << std::endl << std::endl;
}

// isWalked: the node lies inside a skeleton or IK group from which bones are scanned, whatever layers they are on.
void LayerScan::scanNode(const SceneNode& node, bool isWalked) {
    if (const KnownType* known = knownType(node.type())) isWalked |= noteOnLayer(node, *known, isWalked);
    for (SceneNode child = node.firstChild(); child; child = child.next()) scanNode(child, isWalked);
}

// Whether bones are scanned from here.
bool LayerScan::noteOnLayer(const SceneNode& node, const KnownType& known, bool isWalked) {
    const std::string name = node.name();
    const int16_t slot = node.layer();
    // A slot beyond the layers has no record to go to: such a node is on no layer either.
    if (slot <= 0 || !hasIndex(layers_, slot)) {
        const std::string line = "!\t" + (known.skipped + name) + " isn't on a layer, skipping it.";
        // A group holds nothing that could be missed.
        if (known.type == NodeType::Group || (isWalked && known.type != NodeType::Polyhedron)) {
            notices_.log() << line << std::endl;
        } else {
            notices_.tell(line, {&kNodeOnNoLayer, Message::Place::Node, name, known.skipped + name});
        }
        return false;
    }
    notices_.log() << known.title << name << " on layer " << slot << std::endl;
    LayerInfo& layer = at(layers_, slot).info;
    if (known.type == NodeType::Polyhedron) layer.polys.push_back({node, {}, name});
    const bool isStart = known.type == NodeType::IkGroup || known.type == NodeType::Skeleton;
    if (isStart) layer.skeletons.push_back(node);
    return isStart;
}

// Stops at the first error.
void LayerScan::categorize(SceneScan& scan) {
    std::ostream& log = notices_.log();
    log << "Beginning to categorize layers..." << std::endl;
    for (size_t i = 0; i < layers_.size(); ++i) {
        const std::optional<std::string> name = layerName(static_cast<int16_t>(i));
        if (!name) {
            log << "Layer " << i << " isn't valid" << std::endl;
            continue;
        }
        log << "Layer " << i << ": " << *name << std::endl;
        layers_[i].info.name = *name;
        layers_[i].role = categorizeLayer(layers_[i].info, scan);
        scan.layers.push_back({static_cast<int16_t>(i), layers_[i].role, layers_[i].info});
        if (!scan.error.empty()) return;
    }
    log << "End categorization" << std::endl << std::endl;
}

std::string namesOf(const std::vector<PolyInfo>& polys) {
    std::string names;
    for (const PolyInfo& poly : polys) addToList(names, poly.name);
    return names;
}

// Why the polyhedra of a bounds layer can't be the shape's bounds; empty when they can.
std::string boundsError(const LayerInfo& layer, const SceneScan& scan, Notices& notices) {
    const std::string place = "layer " + layer.name;
    if (layer.polys.size() > 1) {
        notices.tellRefusal(kBoundsObjects, layer.name, place + " holds " + namesOf(layer.polys));
        return "More than one bounds object found, there can be only one!";
    }
    const PolyInfo& poly = layer.polys.front();
    if (scan.boundsObject) {
        notices.tellRefusal(
            kBoundsLayers, layer.name,
            place + " holds " + poly.name + ", and an earlier bounds layer " + scan.boundsObject.name());
        return "More than one bounds layers found, there can be only one!";
    }
    const int32_t vertices = poly.node.vertexCount();
    if (vertices == kBoundsVertices) return {};
    notices.tellRefusal(kBoundsShape, layer.name,
                        "polyhedron " + poly.name + " on " + place + " has " + std::to_string(vertices) + " vertices");
    return "Bounds object can only be a cube.";
}

void tellNearRole(const LayerInfo& layer, Notices& notices) {
    const std::string role(nearRoleWord(layer.name));
    if (role.empty()) return;
    notices.tell({&kNearRole, Message::Place::Layer, layer.name, layer.name + " (did you mean \"" + role + "\"?)"});
}

LayerRole LayerScan::categorizeLayer(LayerInfo& layer, SceneScan& scan) {
    const LayerRole role = roleOfName(layer.name);
    if (role == LayerRole::Collision || role == LayerRole::LosCollision) {
        parseCollisionTags(layer, notices_);
    } else if (role == LayerRole::Bounds) {
        if (!layer.polys.empty()) {
            scan.error = boundsError(layer, scan, notices_);
            if (!scan.error.empty()) return LayerRole::Unused;
            scan.boundsObject = layer.polys.front().node;
        }
        parseBoundsTags(layer.name, scan.textureOptions, notices_);
    } else if (role == LayerRole::Nodes) {
        tellTagsOfNodesLayer(layer.name, notices_);
    } else {
        parseDetailTags(layer, notices_);
        tellNearRole(layer, notices_);
        if (layer.polys.empty() && !layer.autoLod) return LayerRole::Unused;
    }
    return role;
}

std::vector<LayerInfo> LayerScan::moveTo(SceneScan& scan) {
    std::ostream& log = notices_.log();
    log << "Beginning to move meshes & collisions to processing lists..." << std::endl;
    std::vector<LayerInfo> nodeLayers;
    for (size_t i = 0; i < layers_.size(); ++i) {
        LayerInfo& layer = layers_[i].info;
        switch (layers_[i].role) {
            case LayerRole::LosCollision:
                scan.losCollisionLayers.push_back(std::move(layer));
                break;
            case LayerRole::Collision:
                scan.collisionLayers.push_back(std::move(layer));
                break;
            case LayerRole::Detail:
                scan.detailLayers.push_back(std::move(layer));
                break;
            case LayerRole::Nodes:
                nodeLayers.push_back(std::move(layer));
                break;
            case LayerRole::Bounds:
                break;
            case LayerRole::Unused:
                const std::string line = "  Layer " + layer.name + "(" + std::to_string(i) + ") is being dropped";
                // A slot that holds no layer has no name, and nothing of it can be missed.
                if (layer.name.empty()) {
                    log << line << std::endl;
                } else {
                    notices_.tell(line, {&kLayerDropped, Message::Place::Layer, layer.name, layer.name});
                }
                break;
        }
    }
    log << "End object move" << std::endl << std::endl;
    return nodeLayers;
}

void sortDetailLayers(std::vector<LayerInfo>& detailLayers, std::ostream& log) {
    if (detailLayers.empty()) return;
    log << "Beginning to sort objects..." << std::endl;
    std::stable_sort(detailLayers.begin(), detailLayers.end(),
                     [](const LayerInfo& a, const LayerInfo& b) { return a.size > b.size; });
    log << "End object sort" << std::endl << std::endl;
}

std::vector<MarkerInfo> markersOf(const std::vector<LayerInfo>& nodeLayers, std::ostream& log) {
    std::vector<MarkerInfo> markers;
    for (const LayerInfo& layer : nodeLayers) {
        for (const PolyInfo& poly : layer.polys) {
            log << " Found named node " << poly.name << std::endl;
            markers.push_back({poly.node, poly.name});
        }
    }
    return markers;
}

}  // namespace

SceneScan scanScene(Notices& notices) {
    std::ostream& log = notices.log();
    SceneScan scan;
    LayerScan layers(notices);
    layers.scanSlots();
    layers.scanObjects();
    layers.categorize(scan);
    if (!scan.error.empty()) return scan;
    const std::vector<LayerInfo> nodeLayers = layers.moveTo(scan);
    sortDetailLayers(scan.detailLayers, log);
    scan.clips = scanClips(notices);

    log << "Beginning node scan" << std::endl;
    scan.bones = scanBones({&scan.collisionLayers, &scan.detailLayers}, notices);
    scan.markers = markersOf(nodeLayers, log);
    log << "End node scan" << std::endl << std::endl;
    return scan;
}

}  // namespace marrowfen
