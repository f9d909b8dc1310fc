#include "tests/plain/plain_collapse.h"

#include <cmath>

#include "tests/plain/plain_math.h"

namespace marrowfen::plain {
namespace {

constexpr float kTolerance = 5e-05F;
constexpr float kLeastSquaredLength = 1e-07F;

bool same(const Point3& a, const Point3& b) {
    return std::fabs(a.x - b.x) < kTolerance && std::fabs(a.y - b.y) < kTolerance && std::fabs(a.z - b.z) < kTolerance;
}

bool same(const Point2D& a, const Point2D& b) {
    return std::fabs(a.x - b.x) < kTolerance && std::fabs(a.y - b.y) < kTolerance;
}

bool sameVertex(const Mesh& mesh, size_t a, size_t b) {
    return same(mesh.vertexes[a], mesh.vertexes[b]) && same(mesh.texturevertexes[a], mesh.texturevertexes[b]);
}

bool matches(const Mesh& mesh, const std::vector<int32_t>& groups, size_t i, size_t j) {
    if (!sameVertex(mesh, i, j) || groups[i] != groups[j]) return false;
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    for (size_t f = 1; f < static_cast<size_t>(mesh.numFrames); ++f) {
        for (size_t m = 1; m < static_cast<size_t>(mesh.matFrames); ++m) {
            if (!same(mesh.vertexes[i + f * perFrame], mesh.vertexes[j + f * perFrame])) return false;
            if (!same(mesh.texturevertexes[i + m * perFrame], mesh.texturevertexes[j + m * perFrame])) return false;
        }
    }
    if (mesh.mindices.empty()) return true;
    size_t a = i, b = j;
    do {
        if (a == b || mesh.mindices[a] == a || mesh.mindices[b] == b) break;
        a = mesh.mindices[a];
        b = mesh.mindices[b];
    } while (sameVertex(mesh, a, b));
    return sameVertex(mesh, a, b);
}

void renumber(std::vector<uint32_t>& list, size_t i, size_t j) {
    for (uint32_t& entry : list) {
        if (entry == i) {
            entry = static_cast<uint32_t>(j);
        } else if (entry > i) {
            --entry;
        }
    }
}

template <class T>
void erase(std::vector<T>& table, size_t at) {
    table.erase(table.begin() + static_cast<std::ptrdiff_t>(at));
}

void merge(Mesh& mesh, std::vector<int32_t>& groups, std::vector<int32_t>& remap, size_t i, size_t j) {
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    renumber(mesh.indices, i, j);
    renumber(mesh.mindices, i, j);
    if (!mesh.mindices.empty()) erase(mesh.mindices, i);
    for (auto f = static_cast<size_t>(mesh.numFrames); f-- > 0;) {
        erase(mesh.vertexes, i + f * perFrame);
        erase(mesh.normals, i + f * perFrame);
    }
    for (auto m = static_cast<size_t>(mesh.matFrames); m-- > 0;) erase(mesh.texturevertexes, i + m * perFrame);
    erase(groups, i);
    --mesh.vertsPerFrame;
    for (size_t k = i; k < remap.size(); ++k) {
        if (remap[k] == static_cast<int32_t>(i)) {
            remap[k] = static_cast<int32_t>(j);
        } else if (remap[k] > static_cast<int32_t>(i)) {
            --remap[k];
        }
    }
}

// A vector that is too short to have a direction stays as it is.
Point3 direction(const Point3& v) { return inner(v, v) > kLeastSquaredLength ? unit(v) : v; }

}  // namespace

std::string collapseVertices(Mesh& mesh, std::vector<int32_t>& groups, std::vector<int32_t>& remap) {
    remap.resize(static_cast<size_t>(mesh.vertsPerFrame));
    for (size_t k = 0; k < remap.size(); ++k) remap[k] = static_cast<int32_t>(k);
    for (size_t i = remap.size(); i-- > 1;) {
        for (size_t j = i; j-- > 0;) {
            if (!matches(mesh, groups, i, j)) continue;
            merge(mesh, groups, remap, i, j);
            break;
        }
    }
    return computeNormals(mesh, groups, mesh.normals);
}

std::string computeNormals(const Mesh& mesh, const std::vector<int32_t>& groups, std::vector<Point3>& normals) {
    const std::vector<Point3>& v = mesh.vertexes;
    const auto perFrame = static_cast<size_t>(mesh.vertsPerFrame);
    std::vector<int> counts(v.size());
    normals.assign(v.size(), {});
    for (size_t base = 0; base < v.size(); base += perFrame) {
        for (const Primitive& primitive : mesh.primitives) {
            if ((primitive.material & Primitive::TypeMask) != 0) return "Assertion error while computing normals";
            const uint32_t* corner = &mesh.indices[primitive.firstElement];
            const Point3 p0 = v[base + corner[0]];
            const Point3 n = outer(direction(v[base + corner[2]] - p0), direction(v[base + corner[1]] - p0));
            if (!(inner(n, n) > kLeastSquaredLength)) continue;
            for (size_t m = 0; m < perFrame; ++m) {
                for (size_t c = 0; c < 3; ++c) {
                    const int32_t a = groups[corner[c]], b = groups[m];
                    if (!same(v[base + m], v[base + corner[c]]) || ((a & b) == 0 && a != b)) continue;
                    normals[base + m] = normals[base + m] + unit(n);
                    ++counts[base + m];
                }
            }
        }
    }
    for (size_t k = 0; k < v.size(); ++k) {
        if (counts[k] > 0) normals[k] = direction(normals[k]);
    }
    for (const bool ofSameGroup : {true, false}) {
        for (size_t k = 0; k < v.size(); ++k) {
            for (size_t m = 0; m < v.size() && counts[k] == 0; ++m) {
                if (counts[m] == 0 || !same(v[m], v[k])) continue;
                if (ofSameGroup && groups[m % perFrame] != groups[k % perFrame]) continue;
                normals[k] = normals[m];
                counts[k] = 1;
            }
        }
    }
    for (size_t k = 0; k < v.size(); ++k) {
        if (counts[k] == 0) normals[k] = {0, 0, 1};
    }
    return "";
}

}  // namespace marrowfen::plain
