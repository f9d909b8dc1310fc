#pragma once

// The passes that make a shape of what the scan found, in the order of the build. Each says what it takes; an error is
// the shape's, and what comes after it isn't to be run.

#include <string>
#include <vector>

#include "builder/notices.h"
#include "builder/records.h"
#include "host/materials.h"
#include "shape/shape.h"

namespace marrowfen {

// Nodes (builder/nodes.cpp): bones, then markers, then "Root", each with its pose at the host's active time.
void createNodes(const std::vector<BoneInfo>& bones, const std::vector<MarkerInfo>& markers, Shape& shape,
                 Notices& notices);
std::vector<Shape::Pose> bonePoses(const std::vector<BoneInfo>& bones);  // relative to the parent bone
Shape::Pose markerPose(const MarkerInfo& marker);                        // in scene space

// The visible object, with a mesh and a detail level a layer (builder/objects.cpp). The layers that are checked are
// not empty, and the first of them has a mesh of its own.
void checkDetailLayers(const std::vector<LayerInfo>& detailLayers, Shape& shape, Notices& notices);
void createObjects(const std::vector<LayerInfo>& detailLayers, MaterialConversion& materials, Shape& shape,
                   Notices& notices);
// Tells of layers that no engine shows, and of tags that spoil each other.
void tellUselessLayers(const std::vector<LayerInfo>& detailLayers, Notices& notices);
void addDetailLevel(const std::string& name, float size, Shape& shape);  // of the last mesh

// Collision meshes around or beside the visible ones, whose bounds are those of the shape (builder/collisions.cpp).
void createCollisionMeshes(const std::vector<LayerInfo>& layers, MaterialConversion& materials, Shape& shape,
                           Notices& notices);
void createLosCollisionMeshes(const std::vector<LayerInfo>& layers, MaterialConversion& materials, Shape& shape,
                              Notices& notices);
// Tells of collision layers of one kind whose shape isn't that of the last one, which decides for all.
void tellOverruledLayers(const std::vector<LayerInfo>& layers, Notices& notices);

// Sequences (builder/sequences.cpp): each clip is played, and bones and markers leave a key a frame.
void exportClips(const std::vector<ClipInfo>& clips, const std::vector<BoneInfo>& bones,
                 const std::vector<MarkerInfo>& markers, Shape& shape, Notices& notices);
// The clips that can become sequences of so many nodes. Others are told of.
std::vector<ClipInfo> playableClips(const std::vector<ClipInfo>& clips, int32_t nodes, Notices& notices);

}  // namespace marrowfen
