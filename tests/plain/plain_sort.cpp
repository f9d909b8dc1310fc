#include "tests/plain/plain_sort.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "tests/plain/plain_math.h"

namespace marrowfen::plain {
namespace {

constexpr int kMaxDepth = 2;
constexpr float kOnPlane = 0.0001F;
constexpr float kExclusion = 0.99F;

using Set = std::vector<bool>;

struct SortFace {
    bool used = false;
    Point3 normal;
    float constant = 0;
    Set front, behind, spanning, coplanar;
};

struct SortNode {
    std::vector<SortFace> faces;
    std::vector<Set> drawFirst, drawLast;
    std::vector<size_t> leafOrder;
    Point3 normal;
    float constant = 0;
    int depth = 0;
    std::unique_ptr<SortNode> front, back;
};

bool none(const Set& set) { return std::find(set.begin(), set.end(), true) == set.end(); }
bool has(const Set& set, size_t f) { return f < set.size() && set[f]; }

struct Sorter {
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;
    std::vector<Point3> vertexes, normals;
    std::vector<Point2D> texture;

    std::vector<Cluster> clusters;
    std::vector<Primitive> outPrimitives;
    std::vector<uint32_t> outIndices;
    std::vector<Point3> exclusions;

    uint32_t index(size_t f, size_t corner) const { return indices[primitives[f].firstElement + corner]; }
    Point3 point(size_t f, size_t corner) const { return vertexes[index(f, corner)]; }

    SortFace makeFace(size_t f) const {
        const Point3 p0 = point(f, 0), p1 = point(f, 1), p2 = point(f, 2);
        const Point3 e0 = p1 - p0, e1 = p2 - p1, e2 = p0 - p2;
        const float d0 = inner(e0, e0), d1 = inner(e1, e1), d2 = inner(e2, e2);
        SortFace face;
        if (d1 <= d0 && d2 <= d0) {
            face.normal = unit(-outer(e1, e2));
        } else if (d2 <= d1 && d0 <= d1) {
            face.normal = unit(-outer(e2, e0));
        } else {
            face.normal = unit(-outer(e0, e1));
        }
        face.constant = inner(face.normal, p0);
        return face;
    }

    // Fills the four sets of face f of the node.
    void classify(SortNode& node, size_t f) const {
        SortFace& face = node.faces[f];
        for (Set* set : {&face.front, &face.behind, &face.spanning, &face.coplanar})
            set->assign(primitives.size(), false);
        for (size_t g = 0; g < primitives.size(); ++g) {
            if (g == f || node.faces[g].used) continue;
            bool front = false, behind = false;
            for (size_t corner = 0; corner < 3; ++corner) {
                const float d = inner(face.normal, point(g, corner));
                if (d > face.constant + kOnPlane) {
                    front = true;
                } else if (d < face.constant - kOnPlane) {
                    behind = true;
                }
            }
            (front ? behind ? face.spanning : face.front : behind ? face.behind : face.coplanar)[g] = true;
        }
    }

    static void removeFromSets(SortNode& node, size_t g) {
        for (SortFace& face : node.faces) {
            for (Set* set : {&face.front, &face.behind, &face.spanning, &face.coplanar}) {
                if (g < set->size()) (*set)[g] = false;
            }
        }
    }

    void peel(SortNode& node) const {
        const size_t count = node.faces.size();
        for (;;) {
            Set first(count), last(count);
            for (size_t f = 0; f < count; ++f) {
                SortFace& face = node.faces[f];
                if (!face.used && none(face.behind) && none(face.spanning)) first[f] = face.used = true;
            }
            for (size_t f = 0; f < count; ++f) {
                SortFace& face = node.faces[f];
                if (!face.used && none(face.front) && none(face.spanning)) last[f] = face.used = true;
            }
            node.drawFirst.push_back(first);
            node.drawLast.insert(node.drawLast.begin(), last);
            if (none(first) && none(last)) return;
            for (size_t f = 0; f < count; ++f) {
                if (first[f] || last[f]) removeFromSets(node, f);
            }
        }
    }

    int pick(const SortNode& node) const {
        int best = -1, bestSpanning = 0, bestDifference = 0;
        for (size_t f = 0; f < node.faces.size(); ++f) {
            if (node.faces[f].used) continue;
            int front = 0, behind = 0, spanning = 0;
            for (size_t g = 0; g < node.faces.size(); ++g) {
                if (node.faces[g].used) continue;
                front += has(node.faces[f].front, g);
                behind += has(node.faces[f].behind, g);
                spanning += has(node.faces[f].spanning, g);
            }
            const int difference = std::abs(front - behind);
            if (best < 0 || spanning < bestSpanning || (spanning == bestSpanning && difference < bestDifference)) {
                best = static_cast<int>(f), bestSpanning = spanning, bestDifference = difference;
            }
        }
        return best;
    }

    uint32_t between(uint32_t a, uint32_t b, float t) {
        vertexes.push_back(vertexes[a] + (vertexes[b] - vertexes[a]) * t);
        texture.push_back(texture[a] + (texture[b] - texture[a]) * t);
        normals.push_back(unit(normals[a] + (normals[b] - normals[a]) * t));
        return static_cast<uint32_t>(vertexes.size() - 1);
    }

    void add(SortNode& node, size_t g, uint32_t a, uint32_t b, uint32_t c) {
        primitives.push_back({static_cast<uint32_t>(indices.size()), 3, primitives[g].material, 0});
        indices.insert(indices.end(), {a, b, c});
        node.faces.push_back(makeFace(primitives.size() - 1));
    }

    void split(SortNode& node, size_t g, const Point3& n, float k) {
        float d[3];
        bool apart = true;
        for (size_t i = 0; i < 3; ++i) {
            d[i] = inner(n, point(g, i));
            apart = apart && std::fabs(d[i] - k) >= kOnPlane;
        }
        size_t first = 0;
        if (apart) {
            const int mask = (d[0] < k ? 1 : 0) + (d[1] < k ? 2 : 0) + (d[2] < k ? 4 : 0);
            if (mask == 0 || mask == 7) return;
            first = mask == 1 || mask == 6 ? 0 : mask == 2 || mask == 5 ? 1 : 2;
        } else {
            while (std::fabs(d[first] - k) >= kOnPlane) ++first;
        }
        const size_t second = (first + 1) % 3, third = (first + 2) % 3;
        const uint32_t a = index(g, first), b = index(g, second), e = index(g, third);
        if (apart) {
            const uint32_t m1 = between(a, b, (k - d[first]) / (d[second] - d[first]));
            const uint32_t m2 = between(a, e, (k - d[first]) / (d[third] - d[first]));
            add(node, g, a, m1, m2);
            add(node, g, m1, b, m2);
            add(node, g, e, m2, b);
        } else {
            const uint32_t m = between(b, e, (k - d[second]) / (d[third] - d[second]));
            add(node, g, a, b, m);
            add(node, g, a, m, e);
        }
        node.faces[g].used = true;
    }

    void orderByHeight(SortNode& node) const {
        std::vector<size_t> down, up;
        const auto top = [&](size_t f) { return std::max({point(f, 0).z, point(f, 1).z, point(f, 2).z}); };
        for (size_t f = 0; f < node.faces.size(); ++f) {
            if (node.faces[f].used) continue;
            const bool looksDown = node.faces[f].normal.z <= 0;
            std::vector<size_t>& list = looksDown ? down : up;
            auto at = list.begin();
            while (at != list.end() && !(looksDown ? top(*at) < top(f) : top(*at) > top(f))) ++at;
            list.insert(at, f);
        }
        node.leafOrder = down;
        node.leafOrder.insert(node.leafOrder.end(), up.begin(), up.end());
    }

    // A copy of the node's states in which only the faces of one side of the chosen plane are active.
    std::unique_ptr<SortNode> makeChild(const SortNode& node, size_t chosen, bool isFront) {
        auto child = std::make_unique<SortNode>();
        child->depth = node.depth + 1;
        child->faces = node.faces;
        const SortFace& plane = node.faces[chosen];
        for (size_t f = 0; f < node.faces.size(); ++f) {
            const float facing = inner(node.faces[f].normal, plane.normal);
            const bool faces = isFront ? facing > 0 : facing < 0;
            const bool active =
                has(isFront ? plane.front : plane.behind, f) || ((has(plane.coplanar, f) || f == chosen) && faces);
            if (!node.faces[f].used && active) continue;
            removeFromSets(*child, f);
            child->faces[f].used = true;
        }
        divide(*child);
        return child;
    }

    void divide(SortNode& node) {
        if (std::all_of(node.faces.begin(), node.faces.end(), [](const SortFace& f) { return f.used; })) return;
        peel(node);
        const int picked = pick(node);
        if (picked < 0) return;
        if (node.depth >= kMaxDepth) return orderByHeight(node);

        const auto chosen = static_cast<size_t>(picked);
        const SortFace plane = node.faces[chosen];
        bool anySplit = false;
        for (size_t g = 0; g < plane.spanning.size(); ++g) {
            if (node.faces[g].used || !plane.spanning[g]) continue;
            split(node, g, plane.normal, plane.constant);
            anySplit = true;
        }
        for (size_t f = 0; anySplit && f < node.faces.size(); ++f) {
            if (!node.faces[f].used) classify(node, f);
        }

        node.back = makeChild(node, chosen, false);
        if (!node.back->front && !node.back->back && node.back->drawFirst.empty() && node.back->drawLast.empty()) {
            node.back.reset();
        }
        while (node.faces.size() < primitives.size()) {
            node.faces.push_back(makeFace(node.faces.size()));
            node.faces.back().used = true;
        }
        node.front = makeChild(node, chosen, true);
        node.normal = plane.normal;
        node.constant = plane.constant;
    }

    void emit(const std::vector<size_t>& faces, bool continuing) {
        std::vector<size_t> left = faces;
        bool isOpen = continuing && !outPrimitives.empty();
        while (!left.empty()) {
            std::vector<size_t> skipped;
            for (const size_t f : left) {
                const uint32_t material = primitives[f].material;
                if (isOpen && material != outPrimitives.back().material) {
                    skipped.push_back(f);
                    continue;
                }
                const Point3 normal = makeFace(f).normal;
                if (std::any_of(exclusions.begin(), exclusions.end(),
                                [&](const Point3& e) { return inner(normal, e) > kExclusion; })) {
                    continue;
                }
                if (!isOpen) outPrimitives.push_back({static_cast<uint32_t>(outIndices.size()), 0, material, 0});
                isOpen = true;
                outPrimitives.back().numElements += 3;
                for (size_t corner = 0; corner < 3; ++corner) outIndices.push_back(index(f, corner));
            }
            left = skipped;
            isOpen = false;
        }
    }

    void emit(const std::vector<Set>& sets, bool continuing) {
        const size_t start = outPrimitives.size();
        for (const Set& set : sets) {
            std::vector<size_t> faces;
            for (size_t f = 0; f < set.size(); ++f) {
                if (set[f]) faces.push_back(f);
            }
            emit(faces, continuing || outPrimitives.size() > start);
        }
    }

    void emit(const SortNode& node, int32_t end) {
        const auto count = [](const auto& list) { return static_cast<int32_t>(list.size()); };
        const size_t i = clusters.size();
        const auto closing = static_cast<int32_t>(i + 1);
        clusters.resize(i + 2);
        const int32_t start = clusters[i].startPrimitive = count(outPrimitives);
        emit(node.drawFirst, false);
        clusters[i].endPrimitive = count(outPrimitives);
        clusters[i].planeNormal = node.normal;
        clusters[i].planeConstant = node.constant;
        if (node.front && node.back) {
            const int32_t m = count(clusters);
            emit(*node.front, closing);
            clusters[i].frontCluster = count(clusters);
            exclusions.push_back(-node.normal);
            emit(*node.back, m);
            exclusions.pop_back();
            const int32_t m2 = count(clusters);
            emit(*node.back, closing);
            clusters[i].backCluster = count(clusters);
            exclusions.push_back(node.normal);
            emit(*node.front, m2);
            exclusions.pop_back();
        } else if (node.front) {
            clusters[i].frontCluster = clusters[i].backCluster = count(clusters);
            emit(*node.front, closing);
        } else {
            emit(node.leafOrder, count(outPrimitives) > start);
            emit(node.drawLast, count(outPrimitives) > start);
            clusters[i].endPrimitive = count(outPrimitives);
            clusters[i].frontCluster = clusters[i].backCluster = end;
            clusters.pop_back();
            return;
        }
        Cluster& last = clusters[i + 1];
        last.startPrimitive = count(outPrimitives);
        emit(node.drawLast, false);
        clusters[i + 1].endPrimitive = count(outPrimitives);
        clusters[i + 1].frontCluster = clusters[i + 1].backCluster = end;
    }

    void removeEmpty() {
        for (size_t i = 0; i < clusters.size(); ++i) {
            const Cluster empty = clusters[i];
            if (empty.startPrimitive != empty.endPrimitive || empty.frontCluster != empty.backCluster) continue;
            for (Cluster& c : clusters) {
                for (int32_t* link : {&c.frontCluster, &c.backCluster}) {
                    if (*link == static_cast<int32_t>(i)) *link = empty.frontCluster;
                    if (*link > static_cast<int32_t>(i)) --*link;
                }
            }
            clusters.erase(clusters.begin() + static_cast<std::ptrdiff_t>(i));
            i = static_cast<size_t>(-1);
        }
    }
};

}  // namespace

void sort(Mesh& mesh) {
    Sorter s{mesh.primitives, mesh.indices, mesh.vertexes, mesh.normals, mesh.texturevertexes, {}, {}, {}, {}};
    SortNode root;
    for (size_t f = 0; f < s.primitives.size(); ++f) root.faces.push_back(s.makeFace(f));
    for (size_t f = 0; f < s.primitives.size(); ++f) s.classify(root, f);
    s.divide(root);
    s.emit(root, -1);
    s.removeEmpty();
    mesh.frameStartCluster.push_back(0);
    mesh.frameFirstVertex.push_back(0);
    mesh.frameVertexCount.push_back(static_cast<int32_t>(s.vertexes.size()));
    mesh.frameFirstTexVertex.push_back(0);
    mesh.clusters = s.clusters;
    mesh.primitives = s.outPrimitives;
    mesh.indices = s.outIndices;
    mesh.vertexes = s.vertexes;
    mesh.normals = s.normals;
    mesh.texturevertexes = s.texture;
}

}  // namespace marrowfen::plain
