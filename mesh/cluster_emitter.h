#pragma once

#include <cstdint>
#include <vector>

#include "mesh/mesh.h"
#include "mesh/sort_tree.h"

namespace marrowfen {

struct EmittedClusters {
    std::vector<Cluster> clusters;  // a walk starts at the first and ends at a link of -1
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;
};

// Lays the tree out as clusters. Children stand twice, once for a viewer on either side of their parent's plane,
// without the faces that turn their back on that viewer. Clusters that neither draw nor decide anything are left out.
EmittedClusters emitClusters(const SortFaces& faces, const SortNode& root);

}  // namespace marrowfen
