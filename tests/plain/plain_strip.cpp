#include "tests/plain/plain_strip.h"

#include <algorithm>
#include <array>
#include <limits>

namespace marrowfen::plain {
namespace {

using Corners = std::array<uint32_t, 3>;

struct Stripper {
    std::vector<Corners> faces;
    uint32_t material = 0;
    int32_t sourcePoly = 0;

    std::vector<int> neighborCount;
    std::vector<bool> used;
    std::vector<std::vector<bool>> adjacency;
    std::vector<int64_t> cache = std::vector<int64_t>(16, -1);  // oldest first
    std::vector<int> candidates;
    int lastFace = -1;
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;
    std::string error;

    void fail(const std::string& text) {
        if (error.empty()) error = text;
    }
    void assertion(int number) { fail("Assertion failed when stripping (" + std::to_string(number) + ")"); }
    bool inCache(uint32_t v) const { return std::count(cache.begin(), cache.end(), v) > 0; }
    bool inNewest(uint32_t v) const { return std::count(cache.end() - 3, cache.end(), v) > 0; }
    static bool has(const Corners& face, uint32_t v) { return std::count(face.begin(), face.end(), v) > 0; }
    static bool hasEdge(const Corners& f, uint32_t p, uint32_t q) {
        return (f[0] == p && f[1] == q) || (f[1] == p && f[2] == q) || (f[2] == p && f[0] == q);
    }

    static bool isAdjacent(const Corners& f, const Corners& g) {
        if (has(g, f[0]) && has(g, f[1]) && has(g, f[2])) return false;
        return hasEdge(g, f[1], f[0]) || hasEdge(g, f[2], f[1]) || hasEdge(g, f[0], f[2]);
    }

    void buildAdjacency() {
        const size_t count = faces.size();
        adjacency.assign(count, std::vector<bool>(count));
        neighborCount.assign(count, 0);
        used.assign(count, false);
        for (size_t f = 0; f + 1 < count; ++f) {
            for (size_t g = f + 1; g < count; ++g) {
                if (!isAdjacent(faces[f], faces[g])) continue;
                adjacency[f][g] = adjacency[g][f] = true;
                ++neighborCount[f];
                ++neighborCount[g];
            }
        }
    }

    void addToCache(uint32_t v) {
        cache.erase(cache.begin());
        cache.push_back(v);
    }

    void emit(uint32_t v) {
        indices.push_back(v);
        ++primitives.back().numElements;
        addToCache(v);
    }

    void check(int face) {
        if (!std::equal(cache.end() - 3, cache.end(), indices.end() - 3)) assertion(11);
        for (int i = 0; face >= 0 && i < 3; ++i) {
            if (!inNewest(faces[face][i])) assertion(8 + i);
        }
    }

    int pickStart() {
        int start = -1;
        for (const int f : candidates) {
            if (start < 0 && !used[f]) start = f;
        }
        candidates.clear();
        if (start >= 0) return start;
        int best = -1;
        for (size_t g = 0; g < faces.size(); ++g) {
            if (used[g]) continue;
            int score = neighborCount[g];
            for (const uint32_t v : faces[g]) score += inCache(v) ? 16 : 0;
            if (score > best) {
                best = score;
                start = static_cast<int>(g);
            }
        }
        return start;
    }

    void take(int face, int assertionNumber) {
        for (size_t g = 0; g < faces.size(); ++g) {
            if (used[g] || static_cast<int>(g) == face || !adjacency[face][g]) continue;
            if (--neighborCount[g] < 0) assertion(assertionNumber);
        }
        used[face] = true;
        neighborCount[face] = 0;
        lastFace = face;
    }

    bool start() {
        const int face = pickStart();
        if (face < 0) return false;
        for (const uint32_t v : faces[face]) emit(v);
        check(face);
        take(face, 4);
        return true;
    }

    // The face's corners turned so that the one that is not among the newest three comes last.
    Corners orient(int face) {
        const Corners& p = faces[face];
        int missing = 0;
        int at = 2;
        for (int i = 0; i < 3; ++i) {
            if (inNewest(p[i])) continue;
            ++missing;
            at = i;
        }
        if (missing != 1) assertion(5);
        return {p[(at + 1) % 3], p[(at + 2) % 3], p[at]};
    }

    bool isLastEdge(const Corners& o) const {
        const int64_t newer = cache[15], older = cache[14];
        return (older == o[0] && newer == o[1]) || (older == o[1] && newer == o[0]);
    }

    float score(int face) {
        if (face < 0) return -std::numeric_limits<float>::infinity();
        const Corners o = orient(face);
        float s = -5.0F * static_cast<float>(neighborCount[face]);
        if (primitives.back().numElements != 3 && isLastEdge(o)) s += 3.0F;
        if (inCache(o[2])) s += 1.0F;
        return s;
    }

    int faceAcross(uint32_t p, uint32_t q) const {
        int best = -1;
        for (size_t g = 0; g < faces.size(); ++g) {
            if (used[g] || !adjacency[lastFace][g] || !hasEdge(faces[g], q, p)) continue;
            if (best < 0 || neighborCount[g] < neighborCount[best]) best = static_cast<int>(g);
        }
        return best;
    }

    bool joinFirstTriangle(const Corners& o, int next) {
        for (int turn = 0; turn < 3; ++turn) {
            if (isLastEdge(o)) {
                emit(o[2]);
                check(next);
                return true;
            }
            std::rotate(indices.end() - 3, indices.end() - 2, indices.end());
            std::rotate(cache.end() - 3, cache.end() - 2, cache.end());
            check(lastFace);
        }
        fail("Assertion error while stripping: infinite loop");
        return false;
    }

    void join(const Corners& o, int next) {
        if (!isLastEdge(o)) {
            const uint32_t x = indices[indices.size() - 3];
            indices.insert(indices.end() - 1, x);
            ++primitives.back().numElements;
            cache.erase(cache.begin());
            cache.insert(cache.end() - 1, x);
            check(-1);
        }
        emit(o[2]);
        check(next);
    }

    bool extend() {
        if (!error.empty()) return false;
        check(lastFace);
        const Corners p = faces[lastFace];
        std::array<int, 3> next{faceAcross(p[0], p[1]), faceAcross(p[1], p[2]), faceAcross(p[2], p[0])};
        const bool first = primitives.back().numElements == 3;
        for (int& g : next) {
            if (!first && g >= 0 && !has(faces[g], indices.back())) g = -1;
        }
        if (next == std::array<int, 3>{-1, -1, -1}) return false;
        const float x = score(next[0]), y = score(next[1]), z = score(next[2]);
        if (!error.empty()) return false;
        const int chosen = x >= y && x >= z ? next[0] : y >= x && y >= z ? next[1] : next[2];
        const Corners o = orient(chosen);
        if (!first) {
            join(o, chosen);
        } else if (!joinFirstTriangle(o, chosen)) {
            return false;
        }
        for (const int g : next) {
            if (g >= 0 && g != chosen) candidates.push_back(g);
        }
        take(chosen, 7);
        return true;
    }

    void run() {
        buildAdjacency();
        for (;;) {
            primitives.push_back({static_cast<uint32_t>(indices.size()), 0, material, sourcePoly});
            if (!start()) break;
            while (extend()) {
            }
            if (!error.empty()) return;
        }
        primitives.pop_back();
        if (std::count(used.begin(), used.end(), false) > 0) assertion(1);
        if (std::count(neighborCount.begin(), neighborCount.end(), 0) < std::ssize(faces)) assertion(2);
    }
};

}  // namespace

void strip(Mesh& mesh) {
    std::vector<Primitive> primitives;
    std::vector<uint32_t> indices;
    for (size_t first = 0; first < mesh.primitives.size();) {
        const Primitive& p = mesh.primitives[first];
        Stripper stripper;
        stripper.material =
            0x60000000 |
            ((p.material & Primitive::NoMaterial) != 0 ? Primitive::NoMaterial : p.material & Primitive::MaterialMask);
        stripper.sourcePoly = p.sourcePoly;
        size_t end = first;
        for (; end < mesh.primitives.size() && mesh.primitives[end].material == p.material &&
               mesh.primitives[end].sourcePoly == p.sourcePoly;
             ++end) {
            const uint32_t* v = &mesh.indices[mesh.primitives[end].firstElement];
            stripper.faces.push_back({v[0], v[1], v[2]});
        }
        const bool wholeList = first == 0 && end == mesh.primitives.size();
        stripper.run();
        mesh.setError(stripper.error);
        if (!stripper.error.empty() && !wholeList) break;
        for (Primitive& s : stripper.primitives) {
            s.firstElement += static_cast<uint32_t>(indices.size());
            primitives.push_back(s);
        }
        indices.insert(indices.end(), stripper.indices.begin(), stripper.indices.end());
        first = end;
    }
    mesh.primitives = primitives;
    mesh.indices = indices;
}

}  // namespace marrowfen::plain
