#pragma once

// Collects the problems of a shape, a kind each.

#include <charconv>
#include <cmath>

#include "ground/at.h"
#include "shape/problem_kinds.h"
#include "shape/shape_check.h"

namespace marrowfen {

class ProblemList {
public:
    // where is called for the first few only.
    template <class Where>
    void add(const MessageKind& kind, Where where) {
        ShapeProblem& problem = find(kind);
        if (++problem.count <= kShown) problem.where.push_back(where());
        assert(!problem.where.empty());
    }

    std::vector<ShapeProblem> problems;

private:
    static constexpr size_t kShown = 3;

    ShapeProblem& find(const MessageKind& kind) {
        for (ShapeProblem& problem : problems) {
            if (problem.kind == &kind) return problem;
        }
        return problems.emplace_back(ShapeProblem{&kind, 0, {}});
    }
};

// "nodes[3]", or with the offending value "nodes[3].parent: 99".
inline std::string place(const std::string& table, size_t i) { return table + "[" + std::to_string(i) + "]"; }

template <class Value>
std::string place(const std::string& table, size_t i, const char* field, Value value) {
    constexpr size_t kLongestNumber = 32;
    char text[kLongestNumber];
    std::to_chars_result end{};
    if constexpr (std::is_floating_point_v<Value>) {
        end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
    } else {
        end = std::to_chars(text, text + sizeof text, value);
    }
    assert(end.ec == std::errc());
    return place(table, i) + "." + field + ": " + std::string(text, end.ptr);
}

template <class Table>
bool isIndexOrNone(int64_t i, const Table& table) {
    return i == -1 || hasIndex(table, i);
}

// Whether entries first to first + count - 1 are all there.
template <class Table>
bool isRange(int64_t first, int64_t count, const Table& table) {
    return first >= 0 && count >= 0 && first + count <= static_cast<int64_t>(table.size());
}

// Parts of findProblems.
void checkMeshes(const Shape& shape, ProblemList& list);                         // shape/mesh_check.cpp
void checkSequences(const Shape& shape, ShapeFileKind kind, ProblemList& list);  // shape/sequence_check.cpp

}  // namespace marrowfen
