#pragma once

#include "standin/import/gltf_document.h"
#include "standin/import/source_model.h"

namespace marrowfen::standin {

// Which texture coordinates a material's colour is looked up by.
struct GltfUvs {
    int set = 0;
    double scale[2] = {1, 1};
    double offset[2] = {0, 0};
    double rotation = 0;
};

// A skin as the joints' nodes in the source model; kNone for one that isn't there.
struct GltfSkin {
    std::vector<SourceBone> bones;
};

// The triangles of a primitive with what hangs on its vertices; skin may be null, weights are those of the mesh's morph
// targets. Empty, else what is wrong. linesAndPoints counts what is no triangle.
std::string readPrimitive(GltfDocument& document, const tinygltf::Primitive& primitive, const GltfUvs& uvs,
                          const GltfSkin* skin, const std::vector<double>& weights, SourceMesh& mesh,
                          size_t& linesAndPoints);

}  // namespace marrowfen::standin
