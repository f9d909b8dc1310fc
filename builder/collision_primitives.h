#pragma once

#include "mesh/mesh.h"
#include "ground/math.h"

namespace marrowfen {

// A generated collision mesh: vertices in shape space with normals, strips without a material.
class CollisionPrimitive {
public:
    virtual ~CollisionPrimitive() = default;
    const Mesh& mesh() const { return mesh_; }

protected:
    virtual void generate() = 0;
    void addPrimitive(std::initializer_list<uint32_t> elements);
    void addVertex(const Point3& position, const Point2D& texture, const Point3& normal);

    Mesh mesh_;
};

// A prism about the z axis through the centre of the box, from its bottom to its top, with the given radius.
class CylinderPrimitive : public CollisionPrimitive {
public:
    // detail: segments in units of 1/64; between 4 and 64 of them, an even number.
    CylinderPrimitive(const Box& box, float radius, float detail);

private:
    void generate() override;
    void addRing(float z, uint32_t segments);
    void addPrimitiveVertex(const Point3& position);

    float segmentDetail_;
};

// The box itself: its sides as one strip, its top and its bottom.
class BoxPrimitive : public CollisionPrimitive {
public:
    explicit BoxPrimitive(const Box& box);

private:
    void generate() override;
};

}  // namespace marrowfen
