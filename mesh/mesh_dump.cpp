#include "ground/shape_dumper.h"
#include "mesh/mesh.h"
#include "mesh/mesh_words.h"

// The mesh's own lines keep the indentation that the dump began with; the records inside are indented by the dumper.

namespace marrowfen {

namespace {

// Both draw-type bits together give both their words; none of them is "triangles".
std::string primitiveTypeText(uint32_t material) {
    std::string text = flagsText(material, kPrimitiveWords);
    if ((material & Primitive::TypeMask) == Primitive::Triangles) text.insert(2, "triangles ");
    return text;
}

void dumpEntry(ShapeDumper& out, uint32_t index) { out << index; }
void dumpEntry(ShapeDumper& out, int32_t index) { out << index; }
void dumpEntry(ShapeDumper& out, const Point3& point) { out << point; }

void dumpEntry(ShapeDumper& out, const Point2D& point) {
    out << "point2d\n" << out.indentation() << "{\n";
    out.field("\tx = ", point.x);
    out.field("\ty = ", point.y);
    out << out.indentation() << "}\n";
}

void dumpEntry(ShapeDumper& out, const Primitive& primitive) {
    out << "primitive\n" << out.indentation() << "{\n";
    out.field("\tfirstElement = ", primitive.firstElement);
    out.field("\tnumElements = ", primitive.numElements);
    out.field("\ttype = ", primitiveTypeText(primitive.material));
    out.field("\tmaterial = ", primitive.material & Primitive::MaterialMask);
    out << out.indentation() << "}\n";
}

template <class Entry>
void dumpList(ShapeDumper& out, const std::string& margin, const char* heading, const std::vector<Entry>& entries) {
    out << "\n" << margin << heading << margin << "\t{\n";
    out.indent();
    for (const Entry& entry : entries) {
        out << margin << "\t\t";
        dumpEntry(out, entry);
        out << "\n";
    }
    out.outdent();
    out << margin << "\t}\n";
}

}  // namespace

void Mesh::dump(ShapeDumper& out) const {
    const std::string margin = out.indentation();
    const auto scalar = [&](const char* label, const auto& value) { out << margin << label << value << "\n"; };

    out << "mesh\n" << margin << "{\n";
    out.indent();
    scalar("\ttype = ", meshTypeWord(type));
    scalar("\tnumFrames = ", numFrames);
    scalar("\tmatFrames = ", matFrames);
    scalar("\tradius = ", radius);
    scalar("\tvertsPerFrame = ", vertsPerFrame);
    scalar("\tflags = ", flagsText(flags, kMeshFlagWords));
    scalar("\tparent = ", parent);
    scalar("\tbounds = ", bounds);
    scalar("\tcenter = ", center);

    dumpList(out, margin, "\tvertexes\n", vertexes);
    dumpList(out, margin, "\ttexturevertexes\n", texturevertexes);
    dumpList(out, margin, "\tnormals\n", normals);
    dumpList(out, margin, "\tprimitives\n", primitives);
    dumpList(out, margin, "\tindices\n", indices);
    dumpList(out, margin, "\tmindices\n", mindices);
    dumpList(out, margin, "\tvbone\n", vbone);
    dumpList(out, margin, "\tnodeIndex\n", nodeIndex);
    out.outdent();
    out << margin << "}\n";
}

}  // namespace marrowfen
