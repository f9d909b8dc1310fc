#pragma once

// What is wrong with a shape that was read: a file can be well-formed and still make no sense.

#include <cstddef>
#include <string>
#include <vector>

#include "ground/message.h"
#include "shape/shape.h"

namespace marrowfen {

// One kind of trouble, however often it occurs.
struct ShapeProblem {
    const MessageKind* kind = nullptr;  // one of problem_kinds.h
    size_t count = 0;                   // how often it occurs
    std::vector<std::string> where;     // the first few times: "nodes[3].parent: 99"

    bool isError() const { return kind->severity == Severity::Error; }
    std::string text() const;  // one line: "node with a parent that isn't there: nodes[3].parent: 99"
};

// What a file holds of a shape: a DSQ file has no default pose, objects, states and meshes.
enum class ShapeFileKind { Dts, Dsq };

// Empty for a good shape. Without an error each index that isn't -1 lies inside its table, each range too, and
// each chain of parents or clusters ends. (Sorted meshes keep two oddities: one without clusters may start its walk at
// cluster 0, and frameVertexCount counts the vertices before equal ones were merged.)
std::vector<ShapeProblem> findProblems(const Shape& shape, ShapeFileKind kind = ShapeFileKind::Dts);

bool anyBroken(const std::vector<ShapeProblem>& problems);

}  // namespace marrowfen
