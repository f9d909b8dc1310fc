#include "tests/plain/plain_decimate.h"

#include <algorithm>
#include <limits>
#include <list>

#include "tests/plain/plain_math.h"

namespace marrowfen::plain {
namespace {

struct Face;

template <class T>
bool has(const std::vector<T*>& list, const T* entry) {
    return std::find(list.begin(), list.end(), entry) != list.end();
}
template <class T>
void remove(std::vector<T*>& list, T* entry) {
    const auto found = std::find(list.begin(), list.end(), entry);
    if (found != list.end()) list.erase(found);
}

struct Vertex {
    Point3 position;
    uint32_t id;
    std::vector<Vertex*> neighbors;
    std::vector<Face*> faces;
    float cost = 0;
    Vertex* target = nullptr;
};

struct Face {
    Vertex* vertices[3];
    Point3 normal;
    const Primitive* primitive;

    bool uses(const Vertex* v) const { return vertices[0] == v || vertices[1] == v || vertices[2] == v; }

    void computeNormal() {
        const Point3 p0 = vertices[0]->position, p1 = vertices[1]->position, p2 = vertices[2]->position;
        normal = unit(outer(p2 - p1, p1 - p0));
    }

    void connect() {
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                if (i != j) addNeighbor(vertices[i], vertices[j]);
            }
        }
    }
    static void addNeighbor(Vertex* a, Vertex* b) {
        if (!has(a->neighbors, b)) a->neighbors.push_back(b);
    }
};

struct Decimator {
    std::list<Vertex> vertexStore;
    std::list<Face> faceStore;
    std::vector<Vertex*> vertices;
    std::vector<Face*> faces;

    explicit Decimator(const Mesh& mesh) {
        std::vector<Vertex*> byId;
        for (uint32_t i = 0; i < mesh.vertexes.size(); ++i) {
            vertexStore.push_back({mesh.vertexes[i], i, {}, {}});
            vertices.push_back(&vertexStore.back());
        }
        byId = vertices;
        for (const Primitive& p : mesh.primitives) {
            const uint32_t* v = &mesh.indices[p.firstElement];
            faceStore.push_back({{byId[v[0]], byId[v[1]], byId[v[2]]}, {}, &p});
            Face* face = &faceStore.back();
            face->computeNormal();
            faces.push_back(face);
            for (Vertex* corner : face->vertices) corner->faces.push_back(face);
            face->connect();
        }
        for (Vertex* v : vertices) computeCollapse(v);
    }

    static bool isOnBorder(const Vertex* u) {
        return std::any_of(u->neighbors.begin(), u->neighbors.end(), [&](const Vertex* w) {
            return std::count_if(u->faces.begin(), u->faces.end(), [&](const Face* f) { return f->uses(w); }) == 1;
        });
    }

    static float collapseCost(const Vertex* u, const Vertex* v) {
        float curvature = 0;
        for (const Face* f : u->faces) {
            float m = 1;
            for (const Face* s : u->faces) {
                if (!s->uses(v)) continue;
                const float turn = (1.0F - inner(f->normal, s->normal)) / 2.0F;
                if (turn < m) m = turn;
            }
            if (m > curvature) curvature = m;
        }
        if (isOnBorder(u)) curvature = 1;
        return measure(v->position - u->position) * curvature;
    }

    static void computeCollapse(Vertex* u) {
        u->target = nullptr;
        u->cost = u->neighbors.empty() ? -0.01F : std::numeric_limits<float>::infinity();
        for (Vertex* v : u->neighbors) {
            const float cost = collapseCost(u, v);
            if (cost < u->cost) {
                u->target = v;
                u->cost = cost;
            }
        }
    }

    static void part(Vertex* x, Vertex* w) {
        const auto usesW = [&](const Face* f) { return f->uses(w); };
        if (std::none_of(x->faces.begin(), x->faces.end(), usesW)) remove(x->neighbors, w);
    }

    void destroyFace(Face* face) {
        remove(faces, face);
        for (Vertex* v : face->vertices) remove(v->faces, face);
        for (int i = 0; i < 3; ++i) {
            part(face->vertices[i], face->vertices[(i + 1) % 3]);
            part(face->vertices[(i + 1) % 3], face->vertices[i]);
        }
    }

    void destroyVertex(Vertex* u) {
        while (!u->neighbors.empty()) {
            Vertex* first = u->neighbors[0];
            remove(first->neighbors, u);
            remove(u->neighbors, first);
        }
        remove(vertices, u);
    }

    void moveFace(Face* face, Vertex* u, Vertex* v) {
        *std::find(face->vertices, face->vertices + 3, u) = v;
        remove(u->faces, face);
        v->faces.push_back(face);
        for (Vertex* w : face->vertices) {
            part(u, w);
            part(w, u);
        }
        face->connect();
        face->computeNormal();
    }

    void collapse(Vertex* u, Vertex* v) {
        if (v == nullptr) return destroyVertex(u);
        const std::vector<Vertex*> copy = u->neighbors;
        for (size_t i = u->faces.size(); i-- > 0;) {
            if (i < u->faces.size() && u->faces[i]->uses(v)) destroyFace(u->faces[i]);
        }
        for (size_t i = u->faces.size(); i-- > 0;) moveFace(u->faces[i], u, v);
        destroyVertex(u);
        for (Vertex* w : copy) {
            if (w != u) computeCollapse(w);
        }
    }

    void run(int32_t target) {
        while (static_cast<int32_t>(faces.size()) > target && !vertices.empty()) {
            Vertex* u = vertices[0];
            for (Vertex* v : vertices) {
                if (v->cost < u->cost) u = v;
            }
            if (u->target == nullptr && !u->neighbors.empty()) break;  // no cost is finite
            collapse(u, u->target);
        }
    }
};

}  // namespace

void decimate(Mesh& mesh, int32_t percent) {
    Decimator decimator(mesh);
    decimator.run(
        static_cast<int32_t>(static_cast<uint32_t>(mesh.primitives.size()) * static_cast<uint32_t>(percent) / 100));
    Mesh output;
    for (const Face* face : decimator.faces) {
        output.primitives.push_back(
            {static_cast<uint32_t>(output.indices.size()), 3, face->primitive->material, face->primitive->sourcePoly});
        for (const Vertex* v : face->vertices) output.indices.push_back(v->id);
    }
    mesh.primitives = output.primitives;
    mesh.indices = output.indices;
}

}  // namespace marrowfen::plain
