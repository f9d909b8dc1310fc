#pragma once

#include <cstdint>
#include <vector>

#include "ground/math.h"
#include "mesh/lanes.h"

namespace marrowfen {

// The triangles around a vertex in a plane across an axis, and a test whether they all face the same way for certain,
// seen from wherever the vertex goes.
class FlatStar {
public:
    // Forgets all triangles. False where the points don't lie in a plane across an axis or aren't finite.
    bool begin(const std::vector<Point3>& points);

    // Whether the point lies in the plane and is finite. The triangles that are added have such corners.
    bool contains(const Point3& p) const;

    // A triangle's corners apart from the vertex. They are numbered from 0.
    void add(const Point3& a, const Point3& b);
    // The last triangle gets its number.
    void remove(size_t number);
    size_t size() const { return count_; }

    // Whether the normals of all triangles with the vertex there are the same unit vector, to the last bit but for the
    // signs of zeros, from whichever corner they are computed; then its distance from each corner is above 0 as well.
    // False may mean that it isn't certain.
    bool facesOneWay(const Point3& vertex) const;

private:
    // Four triangles. Those of the last block that are none are like the last one that is.
    struct Block {
        static constexpr size_t kSize = 4;
        Lanes ax, ay, bx, by;
    };
    struct Corner {
        float x, y;
    };

    Corner inPlane(const Point3& p) const;
    void stretch(const Corner& c);
    void fill(size_t number, const Corner& a, const Corner& b);

    int axis_ = 2;     // across the plane
    float level_ = 0;  // of the plane along it
    Corner least_{}, most_{};
    std::vector<Block> blocks_;
    size_t count_ = 0;
};

}  // namespace marrowfen
