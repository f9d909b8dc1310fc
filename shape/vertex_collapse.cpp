#include <algorithm>
#include <cassert>
#include <cstddef>
#include <numeric>

#include "shape/shape.h"
#include "shape/vertex_grid.h"

// Every vertex, from the last to the first, is merged into the highest-numbered earlier vertex that equals it. At its
// turn all earlier vertices are still there under their first numbers, so a merge is recorded as "old number -> lower
// old number" and the tables are renumbered and closed up once, at the end. Candidates come from a grid over position,
// texture coordinates and group, from which a vertex is taken at its turn.

namespace marrowfen {
namespace {

using Grid = VertexGrid<5>;

struct Merges {
    std::vector<uint32_t> target;  // per vertex: a lower vertex that it is merged into, itself for a survivor
    uint32_t survivors = 0;

    bool survives(size_t vertex) const { return target[vertex] == vertex; }

    // The vertex that stands for this one by now. Numbers past the vertices stay what they are.
    uint32_t resolve(uint32_t vertex) {
        while (vertex < target.size() && target[vertex] != vertex) {
            assert(target[vertex] < vertex);
            target[vertex] = target[target[vertex]];  // halves the way for the next search
            vertex = target[vertex];
        }
        return vertex;
    }
};

bool samePosition(const Mesh& mesh, size_t a, size_t b) {
    const Point3& p = mesh.vertexes[a];
    const Point3& q = mesh.vertexes[b];
    return isWithinTolerance(p.x, q.x) && isWithinTolerance(p.y, q.y) && isWithinTolerance(p.z, q.z);
}

bool sameTexture(const Mesh& mesh, size_t a, size_t b) {
    const Point2D& p = mesh.texturevertexes[a];
    const Point2D& q = mesh.texturevertexes[b];
    return isWithinTolerance(p.x, q.x) && isWithinTolerance(p.y, q.y);
}

// Later frames count only where there are later material frames as well.
bool matchesInLaterFrames(const Mesh& mesh, size_t a, size_t b) {
    if (mesh.numFrames == 1 || mesh.matFrames == 1) return true;
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    assert(a < perFrame && b < perFrame);
    for (size_t start = perFrame; start < mesh.vertexes.size(); start += perFrame) {
        if (!samePosition(mesh, start + a, start + b)) return false;
    }
    for (size_t start = perFrame; start < mesh.texturevertexes.size(); start += perFrame) {
        if (!sameTexture(mesh, start + a, start + b)) return false;
    }
    return true;
}

// Follows the merge chains of both vertices while their members equal each other. Chains that run in a circle or leave
// the vertices end there.
bool matchesAlongMergeChains(const Mesh& mesh, Merges& merges, uint32_t a, uint32_t b) {
    if (mesh.mindices.empty()) return true;
    const auto vertexCount = static_cast<uint32_t>(mesh.vertsPerFrame);
    const auto areEqual = [&] { return samePosition(mesh, a, b) && sameTexture(mesh, a, b); };
    for (uint32_t step = 0; step < vertexCount && a != b && areEqual(); ++step) {
        const uint32_t nextA = merges.resolve(mesh.mindices[a]);
        const uint32_t nextB = merges.resolve(mesh.mindices[b]);
        if (nextA == a || nextB == b || nextA >= vertexCount || nextB >= vertexCount) break;
        a = nextA;
        b = nextB;
    }
    return areEqual();
}

Grid::Coordinates coordinatesOf(const Mesh& mesh, size_t vertex) {
    const Point3& p = mesh.vertexes[vertex];
    const Point2D& t = mesh.texturevertexes[vertex];
    return {p.x, p.y, p.z, t.x, t.y};
}

Merges findMerges(const Mesh& mesh, const std::vector<int32_t>& groups) {
    const auto vertexCount = static_cast<uint32_t>(mesh.vertsPerFrame);
    assert(groups.size() == vertexCount);
    Grid grid(vertexCount);
    for (size_t i = 0; i < vertexCount; ++i) grid.add(coordinatesOf(mesh, i), static_cast<uint32_t>(groups[i]));

    Merges merges;
    merges.target.resize(vertexCount);
    std::iota(merges.target.begin(), merges.target.end(), 0U);
    merges.survivors = vertexCount;
    for (uint32_t i = vertexCount; i-- > 0;) {
        grid.removeLast();
        uint32_t best = i;  // none
        grid.visitNear(coordinatesOf(mesh, i), static_cast<uint32_t>(groups[i]), [&](size_t found) {
            const auto j = static_cast<uint32_t>(found);
            if (best != i && j < best) return false;
            if (!matchesInLaterFrames(mesh, i, j) || !matchesAlongMergeChains(mesh, merges, i, j)) return true;
            best = j;
            return false;
        });
        assert(best <= i);
        merges.target[i] = best;
        if (best != i) --merges.survivors;
    }
    assert(grid.size() == 0);
    assert(vertexCount == 0 || merges.survivors > 0);
    return merges;
}

// The number that each old vertex has once the tables are closed up.
std::vector<int32_t> newNumbers(const Merges& merges) {
    std::vector<int32_t> numbers(merges.target.size());
    int32_t next = 0;
    for (size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = merges.survives(i) ? next++ : numbers[merges.target[i]];
    }
    assert(next == static_cast<int32_t>(merges.survivors));
    return numbers;
}

// Numbers past the vertices keep their distance from the end.
void renumber(std::vector<uint32_t>& list, const std::vector<int32_t>& numbers, uint32_t merged) {
    for (uint32_t& entry : list) {
        entry = entry < numbers.size() ? static_cast<uint32_t>(numbers[entry]) : entry - merged;
    }
}

// Keeps the entries of survivors, in every frame that the table holds.
template <class T>
void closeUp(std::vector<T>& table, const Merges& merges) {
    assert(table.size() % merges.target.size() == 0);
    [[maybe_unused]] const size_t frames = table.size() / merges.target.size();
    size_t kept = 0;
    for (size_t i = 0, vertex = 0; i < table.size(); ++i) {
        if (merges.survives(vertex)) table[kept++] = table[i];
        if (++vertex == merges.target.size()) vertex = 0;
    }
    assert(kept == frames * merges.survivors);
    table.resize(kept);
}

bool hasFittingTextureTable(const Mesh& mesh) {
    return mesh.vertexes.size() * static_cast<size_t>(mesh.matFrames) ==
           mesh.texturevertexes.size() * static_cast<size_t>(mesh.numFrames);
}

// Are there vertsPerFrame entries for each frame, group and merge index?
bool hasFittingVertexCount(const Mesh& mesh, size_t groupCount) {
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    return mesh.vertsPerFrame >= 0 && mesh.numFrames > 0 && mesh.matFrames > 0 &&
           perFrame * static_cast<size_t>(mesh.numFrames) == mesh.vertexes.size() && perFrame == groupCount &&
           (mesh.mindices.empty() || perFrame == mesh.mindices.size());
}

}  // namespace

void Shape::collapseVertices(Mesh& mesh, std::vector<int32_t>& groups, std::vector<int32_t>& remap) {
    if (hasError()) return;
    if (mesh.vertexes.size() != mesh.normals.size()) {
        setError("Assertion failed when collapsing vertices (2)");
        return;
    }
    // Tables that don't fit together are refused before anything is read past their ends.
    if (!hasFittingVertexCount(mesh, groups.size())) {
        setError("Assertion failed:  vertex number mismatch");
        return;
    }
    if (!hasFittingTextureTable(mesh)) {
        setError("Shape::collapseVertices (3)");
        return;
    }

    const Merges merges = findMerges(mesh, groups);
    remap = newNumbers(merges);
    assert(remap.size() == groups.size());

    // Renumber what points at vertices.
    const uint32_t merged = static_cast<uint32_t>(remap.size()) - merges.survivors;
    renumber(mesh.indices, remap, merged);
    renumber(mesh.mindices, remap, merged);

    // Close up the tables.
    if (merged != 0) {
        closeUp(mesh.vertexes, merges);
        closeUp(mesh.normals, merges);
        closeUp(mesh.texturevertexes, merges);
        closeUp(groups, merges);
        if (!mesh.mindices.empty()) closeUp(mesh.mindices, merges);
        mesh.vertsPerFrame = static_cast<int32_t>(merges.survivors);
    }
    assert(hasFittingVertexCount(mesh, groups.size()) && hasFittingTextureTable(mesh));

    computeNormals(mesh.primitives, mesh.indices, mesh.vertexes, mesh.normals, groups, mesh.vertsPerFrame,
                   mesh.numFrames, mesh.mindices);
    if (mesh.vertexes.size() != mesh.normals.size()) setError("Shape::collapseVertices (4)");
}

}  // namespace marrowfen
