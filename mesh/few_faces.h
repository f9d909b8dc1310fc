#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <type_traits>

#include "mesh/face_table.h"
#include "mesh/lanes.h"

namespace marrowfen {

// Alignments and lengths of the edges of a vertex with few faces and neighbours, four at once. Edges are numbered as
// the neighbours; the first face and neighbour fill up the last lanes.
template <size_t kBlocks>
class FewFaces {
public:
    static constexpr size_t kMost = kBlocks * 4;

    // Gives each neighbour a bit of its own. The vertex must have none, unless it is its own neighbour.
    void setNeighbors(std::span<const uint32_t> neighbors, std::span<const Site> sites, std::span<uint16_t> bits) {
        assert(!neighbors.empty() && neighbors.size() <= kMost);
        neighborCount_ = neighbors.size();
        copyLanes(positions_[0], sites[neighbors[0]]);
        fillRest(positions_, neighborCount_, positions_[0]);
        for (size_t i = 0; i < neighborCount_; ++i) {
            bits[neighbors[i]] = static_cast<uint16_t>(1U << i);
            copyLanes(positions_[i], sites[neighbors[i]]);
        }
    }

    // After the neighbours, whose bits tell which of them a face uses.
    void setFaces(std::span<const uint32_t> faces, FaceTable& table, std::span<const uint16_t> bits) {
        assert(!faces.empty() && faces.size() <= kMost);
        faceCount_ = faces.size();
        copyLanes(normals_[0], table.withNormal(faces[0]));
        fillRest(normals_, faceCount_, normals_[0]);
        Pattern neighborsOf{};
        for (size_t f = 0; f < faces.size(); ++f) {
            const FaceTable::Face& face = table.withNormal(faces[f]);
            const auto& [a, b, c] = face.corners;
            const uint32_t used = uint32_t{bits[a]} | bits[b] | bits[c];
            if constexpr (kAreBytes) {
                neighborsOf = std::rotr(neighborsOf | used, 8);
            } else {
                neighborsOf[f] = static_cast<uint16_t>(used);
            }
            copyLanes(normals_[f], face);
        }
        if constexpr (kAreBytes) neighborsOf >>= 8 * (kMaxBytes - faces.size());
        neighborsOf_ = neighborsOf;
    }

    // For each neighbour the smallest over all faces of the largest dot product with its own faces. One that isn't a
    // number counts as the lowest. Returns kMost, or a neighbour that has exactly one face, and no alignments: the
    // vertex is on a border.
    size_t computeAlignments(Lanes (&alignments)[kBlocks]) {
        computeDots();
        Lanes least[kMost];
        fillRest(least, neighborCount_, allLanes(kLowest));  // which costs no less than the first neighbour
        for (size_t i = 0; i < neighborCount_; ++i) {
            const uint32_t faces = facesAt(i);
            const bool isOneOrNone = (faces & (faces - 1)) == 0;
            if (isOneOrNone && faces != 0) return i;
            least[i] = isOneOrNone ? allLanes(kLowest) : leastOfLargest(faces);
        }
        for (size_t b = 0; b < kBlocks; ++b) {
            const Lanes* const l = least + 4 * b;
            alignments[b] = lowestOfEach(l[0], l[1], l[2], l[3]);
        }
        return kMost;
    }

    // From the neighbours to a point.
    void computeLengths(const Point3& from, Lanes (&lengths)[kBlocks]) const {
        for (size_t b = 0; b < kBlocks; ++b) {
            const PointLanes n = pointLanes(positions_ + 4 * b);
            const Lanes x = n.x - from.x, y = n.y - from.y, z = n.z - from.z;
            lengths[b] = squareRoots(x * x + y * y + z * z);
        }
    }

private:
    static constexpr float kLowest = -std::numeric_limits<float>::infinity();
    static constexpr size_t kMaxBytes = 8;
    static constexpr bool kAreBytes = kMost <= kMaxBytes;
    using Pattern = std::conditional_t<kAreBytes, uint64_t, std::array<uint16_t, kMost>>;

    // A site's position or a face's normal, and what stands behind it.
    template <class Record>
    static void copyLanes(Lanes& lanes, const Record& record) {
        static_assert(sizeof(Record) >= sizeof(Lanes));
        std::memcpy(&lanes, &record, sizeof(Lanes));
    }

    // All but the first ones, and some of those: most vertices need the last block only.
    static void fillRest(Lanes (&lanes)[kMost], size_t count, Lanes value) {
        if (count <= kMost - 4) std::fill(lanes, lanes + kMost - 4, value);
        std::fill(lanes + kMost - 4, lanes + kMost, value);
    }

    void computeDots() {
        PointLanes normals[kBlocks];
        for (size_t b = 0; b < kBlocks; ++b) normals[b] = pointLanes(normals_ + 4 * b);
        for (size_t f = 0; f < faceCount_; ++f) {
            const Lanes n = normals_[f];
            const Lanes x = __builtin_shufflevector(n, n, 0, 0, 0, 0), y = __builtin_shufflevector(n, n, 1, 1, 1, 1),
                        z = __builtin_shufflevector(n, n, 2, 2, 2, 2);
            for (size_t b = 0; b < kBlocks; ++b) {
                dots_[f][b] = higher(normals[b].x * x + normals[b].y * y + normals[b].z * z, allLanes(kLowest));
            }
        }
    }

    // The faces that use a neighbour, each a bit.
    uint32_t facesAt(size_t neighbor) const {
        uint32_t faces = 0;
        if constexpr (kAreBytes) {
            // One bit of each byte; they go side by side.
            faces = static_cast<uint32_t>((neighborsOf_ >> neighbor & 0x0101010101010101) * 0x0102040810204080 >> 56);
        } else {
            for (size_t f = 0; f < kMost; ++f) faces |= (neighborsOf_[f] >> neighbor & 1U) << f;
        }
        return faces;
    }

    // The smallest over all faces of the largest dot product with these, in four parts.
    Lanes leastOfLargest(uint32_t faces) const {
        Lanes largest[kBlocks];
        std::copy_n(dots_[std::countr_zero(faces)], kBlocks, largest);
        for (faces &= faces - 1; faces != 0; faces &= faces - 1) {
            const Lanes* const dots = dots_[std::countr_zero(faces)];
            for (size_t b = 0; b < kBlocks; ++b) largest[b] = higher(dots[b], largest[b]);
        }
        Lanes least = largest[0];
        for (size_t b = 1; b < kBlocks; ++b) least = lower(largest[b], least);
        return least;
    }

    size_t neighborCount_, faceCount_;
    Lanes positions_[kMost];  // of the neighbours
    Lanes normals_[kMost];    // of the faces
    Lanes dots_[kMost][kBlocks];
    Pattern neighborsOf_;  // that a face uses, each a bit: a byte or a number for each face
};

}  // namespace marrowfen
