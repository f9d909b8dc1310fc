#include "tests/export/shape_text.h"

#include <sstream>

#include "ground/at.h"
#include "mesh/mesh_words.h"
#include "shape/shape_words.h"

namespace marrowfen {
namespace {

// Adding zero turns -0 into 0: the sign is noise to a reader.
std::ostream& operator<<(std::ostream& out, const Point3& p) {
    return out << '(' << p.x + 0 << ' ' << p.y + 0 << ' ' << p.z + 0 << ')';
}

std::ostream& operator<<(std::ostream& out, const Quaternion& q) {
    return out << '(' << q.x + 0 << ' ' << q.y + 0 << ' ' << q.z + 0 << ' ' << q.w + 0 << ')';
}

std::ostream& operator<<(std::ostream& out, const Box& box) { return out << box.min << " to " << box.max; }

// Without the blanks that the dump has inside.
template <size_t Count>
std::string bracedWords(uint32_t flags, const FlagWord (&words)[Count]) {
    const std::string text = flagsText(flags, words);
    return text == "( )" ? "{}" : "{" + text.substr(2, text.size() - 4) + "}";
}

class Writer {
public:
    explicit Writer(const Shape& shape) : shape_(shape) {}

    std::string section(const std::string& name) {
        if (name == "names") names();
        if (name == "nodes") nodes();
        if (name == "objects") objects();
        if (name == "detail levels") detailLevels();
        if (name == "meshes") meshes();
        if (name == "materials") materials();
        if (name == "sequences") sequences();
        if (name == "measures") measures();
        return out_.str();
    }

private:
    std::string quoted(int32_t name) const { return '"' + shape_.names.at(static_cast<size_t>(name)) + '"'; }

    void names() {
        for (const std::string& name : shape_.names) out_ << name << '\n';
    }

    void nodes() {
        for (size_t i = 0; i < shape_.nodes.size(); ++i) {
            const Shape::Node& n = shape_.nodes[i];
            out_ << i << ' ' << quoted(n.name) << " parent " << n.parent << " rotation " << shape_.nodeDefRotations[i]
                 << " translation " << shape_.nodeDefTranslations[i] << '\n';
        }
    }

    void objects() {
        for (const Shape::Object& o : shape_.objects) {
            out_ << quoted(o.name) << " node " << o.node << " meshes " << o.firstMesh << " + " << o.numMeshes << '\n';
        }
        for (const Shape::SubShape& s : shape_.subshapes) {
            out_ << "subshape " << s.firstNode << " + " << s.numNodes << " nodes, " << s.firstObject << " + "
                 << s.numObjects << " objects, " << s.firstDecal << " + " << s.numDecals << " decals\n";
        }
        for (const Shape::ObjectState& s : shape_.objectStates) {
            out_ << "state vis " << s.vis << " frame " << s.frame << " matFrame " << s.matFrame << '\n';
        }
    }

    void detailLevels() {
        for (const Shape::DetailLevel& d : shape_.detailLevels) {
            out_ << quoted(d.name) << " subshape " << d.subshape << " objectDetail " << d.objectDetail << " size "
                 << d.size << " errors " << d.avgError << ' ' << d.maxError << " polyCount " << d.polyCount << '\n';
        }
    }

    void meshes() {
        for (size_t i = 0; i < shape_.meshes.size(); ++i) {
            out_ << i << ' ';
            mesh(shape_.meshes[i]);
        }
    }

    void mesh(const Mesh& m) {
        static const char* const kTypes[] = {"Standard", "Skin", "Decal", "Sorted", "Null"};
        out_ << kTypes[static_cast<int>(m.type)];
        if (m.type == MeshType::Null) {
            out_ << '\n';
            return;
        }
        out_ << ' ' << bracedWords(m.flags, kMeshFlagWords) << " frames " << m.numFrames << " parent " << m.parent
             << " bounds " << m.bounds << " center " << m.center << " radius " << m.radius << '\n';
        for (size_t v = 0; v < m.vertexes.size(); ++v) {
            out_ << "    " << v << ": " << m.vertexes[v] << " uv (" << m.texturevertexes[v].x << ' '
                 << m.texturevertexes[v].y << ')';
            if (v < m.normals.size()) out_ << " normal " << m.normals[v];
            if (v < m.vbone.size()) out_ << " node " << m.nodeIndex.at(static_cast<size_t>(m.vbone[v]));
            out_ << '\n';
        }
        for (const Primitive& p : m.primitives) primitive(m, p);
        if (m.type == MeshType::Skin) initialTransforms(m);
        for (const Cluster& c : m.clusters) {
            out_ << "    cluster of primitives " << c.startPrimitive << " to " << c.endPrimitive << ", plane "
                 << c.planeNormal << ' ' << c.planeConstant << ", front " << c.frontCluster << " back " << c.backCluster
                 << '\n';
        }
    }

    void primitive(const Mesh& m, const Primitive& p) {
        out_ << "    " << ((p.material & Primitive::Strip) != 0 ? "strip" : "triangles");
        if ((p.material & Primitive::NoMaterial) != 0) {
            out_ << " without material:";
        } else {
            out_ << " of material " << (p.material & Primitive::MaterialMask) << ':';
        }
        for (uint32_t e = 0; e < p.numElements; ++e) out_ << ' ' << m.indices[p.firstElement + e];
        out_ << '\n';
    }

    void initialTransforms(const Mesh& m) {
        for (size_t slot = 0; slot < m.nodeIndex.size(); ++slot) {
            out_ << "    slot of node " << m.nodeIndex[slot] << ':';
            for (int row = 0; row < 3; ++row) {
                const float* r = m.initialTransforms[slot].m[row];
                out_ << " (" << r[0] + 0 << ' ' << r[1] + 0 << ' ' << r[2] + 0 << ' ' << r[3] + 0 << ')';
            }
            out_ << '\n';
        }
    }

    void materials() {
        for (size_t i = 0; i < shape_.materials.size(); ++i) {
            const Shape::Material& m = shape_.materials[i];
            out_ << i << " \"" << m.name << "\" " << bracedWords(m.flags, kMaterialFlagWords) << " reflectance "
                 << m.reflectance << " bump " << m.bump << " detail " << m.detail << " detailScale " << m.detailScale
                 << " reflection " << m.reflection << '\n';
        }
    }

    void sequences() {
        for (const Shape::Sequence& s : shape_.sequences) {
            out_ << quoted(s.nameIndex) << ' ' << bracedWords(s.flags, kSequenceFlagWords) << " keys " << s.numKeyFrames
                 << " duration " << s.duration << " priority " << s.priority << " base " << s.baseRotation << ' '
                 << s.baseTranslation << " matters " << s.rotationMatters.size() << ' ' << s.translationMatters.size()
                 << '\n';
            for (size_t node = 0; node < s.rotationMatters.size(); ++node) {
                if (!s.rotationMatters.test(node) || !s.translationMatters.test(node)) continue;
                out_ << "    node " << node << '\n';
                for (int32_t key = 0; key < s.numKeyFrames; ++key) {
                    const size_t entry = static_cast<size_t>(s.baseRotation) +
                                         node * static_cast<size_t>(s.numKeyFrames) + static_cast<size_t>(key);
                    out_ << "        " << shape_.nodeRotations.at(entry) << " at " << shape_.nodeTranslations.at(entry)
                         << '\n';
                }
            }
        }
        out_ << "key tables " << shape_.nodeRotations.size() << ' ' << shape_.nodeTranslations.size() << '\n';
    }

    void measures() {
        out_ << "bounds " << shape_.bounds << "\ncenter " << shape_.center << "\nradius " << shape_.radius
             << "\ntubeRadius " << shape_.tubeRadius << "\nsmallestSize " << shape_.smallestSize
             << "\nsmallestDetailLevel " << shape_.smallestDetailLevel << '\n';
    }

    const Shape& shape_;
    std::ostringstream out_;
};

}  // namespace

std::string shapeText(const Shape& shape, const std::string& section) { return Writer(shape).section(section); }

}  // namespace marrowfen
