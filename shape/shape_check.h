#pragma once

// What is wrong with a shape that was read: a file can be well-formed and still make no sense.

#include <cstddef>
#include <string>
#include <vector>

#include "shape/shape.h"

namespace marrowfen {

// One kind of trouble, however often it occurs.
struct ShapeProblem {
    std::string what;                // "node with a parent that isn't there"
    bool broken = false;             // whoever follows the shape's links leaves a table or never comes back
    size_t count = 0;                // records that have it
    std::vector<std::string> where;  // the first few of them: "node 3 (parent 99)"

    std::string text() const;  // one line
};

// What a file holds of a shape: a DSQ file has no default pose, objects, states and meshes.
enum class ShapeFileKind { Dts, Dsq };

// Empty for a good shape. Without a broken problem each index that isn't -1 lies inside its table, each range too, and
// each chain of parents or clusters ends. (Sorted meshes keep two oddities: one without clusters may start its walk at
// cluster 0, and frameVertexCount counts the vertices before equal ones were merged.)
std::vector<ShapeProblem> findProblems(const Shape& shape, ShapeFileKind kind = ShapeFileKind::Dts);

bool anyBroken(const std::vector<ShapeProblem>& problems);

}  // namespace marrowfen
