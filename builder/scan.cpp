#include "builder/shape_builder.h"

#include <algorithm>

#include "builder/node_name.h"
#include "builder/tags.h"
#include "ground/ascii.h"

// The first pass over the host's scene: layers by index, nodes onto their layers, layers into roles by their names.

namespace marrowfen {

namespace {

constexpr size_t kBoundsVertices = 8;  // of a cube

// How the object scan treats a type of node.
struct KnownType {
    int code;
    const char* skippedPrefix;  // logged when the node is on no layer
    const char* title;          // logged when it is on one
};

constexpr KnownType kKnownTypes[] = {
    {TsxJoint, "!\tjoint ", "\tJoint: "},         {TsxBone, "!\tbone ", "\tBone: "},
    {TsxPolyhedron, "!\tpoly ", "\tPoly: "},      {TsxGroup, "!\tgroup ", "\tGroup: "},
    {TsxIkGroup, "!\tik group ", "\tIK Group: "}, {TsxSkeleton, "!\tskeleton ", "\tSkeleton: "},
};

const KnownType* knownType(int code) {
    for (const KnownType& type : kKnownTypes) {
        if (type.code == code) return &type;
    }
    return nullptr;
}

}  // namespace

void ShapeBuilder::scanScene() {
    scanLayers();
    scanObjects();
    categorizeLayers();
    if (hasError()) return;
    moveLayers();
    sortDetailLayers();
    scanClips();
    scanNodes();
}

void ShapeBuilder::scanLayers() {
    log << "Beginning to scan scene for layer information..." << std::endl;
    const int16_t count = tsxGetNumberOfLayers();
    log << count << " layers found" << std::endl;
    layers.resize(count > 0 ? static_cast<size_t>(count) : 0);
    log << "End layer scan" << std::endl << std::endl;
}

void ShapeBuilder::scanObjects() {
    log << "Beginning to scan scene for objects..." << std::endl;
    for (TsxNode* node = tsxSceneGetFirstNode(); node != nullptr; node = tsxGNodeGetNext(node)) scanNode(node);
    log << "End object scan" << std::endl << std::endl;
}

void ShapeBuilder::scanNode(TsxNode* node) {
    const std::string name = nodeName(node);
    const int16_t layerIndex = tsxGetObjectLayerIndex(node);
    const int code = tsxSobjGetType(node);
    if (const KnownType* type = knownType(code)) {
        // A layer index beyond the layers has no record to go to: such a node is on no layer either.
        if (layerIndex <= 0 || static_cast<size_t>(layerIndex) >= layers.size()) {
            log << type->skippedPrefix << name << " isn't on a layer, skipping it." << std::endl;
        } else {
            log << type->title << name << " on layer " << layerIndex << std::endl;
            LayerInfo& layer = layers[static_cast<size_t>(layerIndex)];
            if (code == TsxPolyhedron) layer.polys.push_back({node, {}, name});
            if (code == TsxIkGroup || code == TsxSkeleton) layer.skeletons.push_back(node);
        }
    }
    for (TsxNode* child = tsxGNodeGetFirstChild(node); child != nullptr; child = tsxGNodeGetNext(child)) {
        scanNode(child);
    }
}

void ShapeBuilder::categorizeLayers() {
    log << "Beginning to categorize layers..." << std::endl;
    for (size_t i = 0; i < layers.size(); ++i) {
        const auto index = static_cast<int16_t>(i);
        if (tsxIsLayerValid(index) != 1) {
            log << "Layer " << i << " isn't valid" << std::endl;
            continue;
        }
        LayerInfo& layer = layers[i];
        if (const char* name = tsxGetLayerName(index)) layer.name = name;
        log << "Layer " << i << ": " << layer.name << std::endl;
        categorizeLayer(layer);
        if (hasError()) return;
    }
    log << "End categorization" << std::endl << std::endl;
}

void ShapeBuilder::categorizeLayer(LayerInfo& layer) {
    const std::string& name = layer.name;
    if (beginsWithIgnoringCase(name, "collision")) {
        layer.kind = LayerKind::CollisionLayer;
        parseCollisionTags(name, layer, log);
    } else if (beginsWithIgnoringCase(name, "loscollision")) {
        layer.kind = LayerKind::LosCollisionLayer;
        parseCollisionTags(name, layer, log);
    } else if (beginsWithIgnoringCase(name, "bounds")) {
        takeBoundsObject(layer);
        if (hasError()) return;
        layer.kind = LayerKind::BoundsLayer;
        parseBoundsTags(name, textureOptions, log);
    } else if (beginsWithIgnoringCase(name, "nodes")) {
        layer.kind = LayerKind::NodesLayer;
    } else {
        parseDetailTags(name, layer, log);
        if (!layer.polys.empty() || layer.autoLod) layer.kind = LayerKind::DetailLayer;
    }
}

void ShapeBuilder::takeBoundsObject(const LayerInfo& layer) {
    if (layer.polys.empty()) return;
    TsxNode* poly = layer.polys.front().node;
    if (layer.polys.size() > 1) {
        setError("More than one bounds object found, there can be only one!");
    } else if (boundsObject != nullptr) {
        setError("More than one bounds layers found, there can be only one!");
    } else if (tsxPolyhGetNbrVxs(poly) != kBoundsVertices) {
        setError("Bounds object can only be a cube.");
    } else {
        boundsObject = poly;
    }
}

void ShapeBuilder::moveLayers() {
    log << "Beginning to move meshes & collisions to processing lists..." << std::endl;
    for (size_t i = 0; i < layers.size(); ++i) {
        LayerInfo& layer = layers[i];
        switch (layer.kind) {
            case LayerKind::LosCollisionLayer:
                losCollisionLayers.push_back(std::move(layer));
                break;
            case LayerKind::CollisionLayer:
                collisionLayers.push_back(std::move(layer));
                break;
            case LayerKind::DetailLayer:
                detailLayers.push_back(std::move(layer));
                break;
            case LayerKind::NodesLayer:
                nodeLayers.push_back(std::move(layer));
                break;
            case LayerKind::BoundsLayer:
                break;
            case LayerKind::UnusedLayer:
                log << "  Layer " << layer.name << "(" << i << ") is being dropped" << std::endl;
                break;
        }
    }
    log << "End object move" << std::endl << std::endl;
    layers.clear();
}

void ShapeBuilder::sortDetailLayers() {
    if (detailLayers.empty()) return;
    log << "Beginning to sort objects..." << std::endl;
    std::stable_sort(detailLayers.begin(), detailLayers.end(),
                     [](const LayerInfo& a, const LayerInfo& b) { return a.size > b.size; });
    log << "End object sort" << std::endl << std::endl;
}

void ShapeBuilder::scanClips() {
    log << "Beginning to scan scene for animation information" << std::endl;
    TsxScene* scene = tsxGetScene();
    char** clipNames = nullptr;
    const int count = tsxClipsGetClipNames(scene, &clipNames);
    if (count > 0) {
        log << "  " << count << " animation clips found" << std::endl;
        clips.resize(static_cast<size_t>(count));
        for (size_t k = 0; k < clips.size(); ++k) readClip(scene, clipNames[k], clips[k]);
    } else {
        log << "  No animation clips found to export" << std::endl;
    }
    log << "End animation scan" << std::endl << std::endl;
}

void ShapeBuilder::scanNodes() {
    log << "Beginning node scan" << std::endl;
    for (std::vector<LayerInfo>* list : {&collisionLayers, &detailLayers}) {
        for (LayerInfo& layer : *list) {
            for (TsxNode* start : layer.skeletons) {
                // One that lies inside another has given its bones to that one's walk.
                if (!walkedSkeletons.contains(start)) scanSkeleton(layer, start, -1);
            }
        }
    }
    for (const LayerInfo& layer : nodeLayers) {
        for (const PolyInfo& poly : layer.polys) {
            log << " Found named node " << poly.name << std::endl;
            namedNodes.push_back({poly.node, poly.name});
        }
    }
    log << "End node scan" << std::endl << std::endl;
}

}  // namespace marrowfen
