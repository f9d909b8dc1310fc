#pragma once

#include <map>
#include <tuple>
#include <vector>

#include "standin/import/gltf_document.h"
#include "standin/import/gltf_primitives.h"
#include "standin/import/source_model.h"

namespace marrowfen::standin {

// A glTF file on its way to a source model. The steps are taken in the order in which they stand here, as long as the
// model has no error.
struct GltfReading {
    GltfDocument document;
    SourceModel model;
    std::vector<int32_t> nodeOf;  // by the file's node, in the source model; kNone for those of other scenes
    std::vector<GltfUvs> uvsOf;   // by material
    std::vector<GltfSkin> skins;
    std::map<int32_t, std::vector<int32_t>> copiesOf;  // by node: those that hold its mesh in its stead
    // By the file's mesh and skin, and how far the node pushes its morph targets.
    std::map<std::tuple<int, int, std::vector<double>>, std::vector<int32_t>> meshesOf;

    const tinygltf::Model& file() const { return document.model(); }
};

void addNodes(GltfReading& reading);      // those of the scene that the file opens with; fills nodeOf and copiesOf
void addMaterials(GltfReading& reading);  // with their images, and one more for primitives without; fills uvsOf
void addSkins(GltfReading& reading);
void addMeshes(GltfReading& reading);  // of the nodes that are in the model
void addClips(GltfReading& reading);   // a faulty one is left out with a remark

// Of a list that the file may have left out or cut short.
inline double numberOr(const std::vector<double>& numbers, size_t index, double otherwise) {
    return index < numbers.size() ? numbers[index] : otherwise;
}

template <typename Number>
Matrix matrixOfColumns(const Number* numbers) {
    Matrix matrix;
    for (unsigned i = 0; i < 16; ++i) matrix[i % 4][i / 4] = static_cast<double>(numbers[i]);
    return matrix;
}

}  // namespace marrowfen::standin
