#include <cassert>

#include "ground/at.h"
#include "mesh/normal_encoding.h"
#include "shape/shape.h"

namespace marrowfen {

void Shape::sortMesh(Mesh& mesh) {
    if (hasError()) return;
    mesh.sort();
    if (mesh.hasError()) {
        setError(mesh.error());
        return;
    }

    mesh.vertsPerFrame = count32(mesh.vertexes);
    std::vector<int32_t> groups(mesh.vertexes.size(), 1);
    std::vector<int32_t> remap;
    collapseVertices(mesh, groups, remap);
    mesh.vertsPerFrame = 0;

    // Sorting and merging change the number of vertices, and a file holds one encoded normal per vertex.
    mesh.encodedNormals.clear();
    mesh.encodedNormals.reserve(mesh.normals.size());
    for (const Point3& normal : mesh.normals) mesh.encodedNormals.push_back(encodeNormal(normal));
    assert(hasError() || mesh.encodedNormals.size() == mesh.vertexes.size());
}

}  // namespace marrowfen
