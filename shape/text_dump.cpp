#include "ground/shape_dumper.h"
#include "shape/shape.h"
#include "shape/shape_words.h"

// One block a table, one block a record, with the field names of the records.

namespace marrowfen {

namespace {

// A record: its kind word, then its fields in braces. Each dumpEntry below is a table's row of fields.
template <class Fields>
void dumpRecord(ShapeDumper& out, const char* kind, Fields fields) {
    out << kind << out.indentation() << "{\n";
    fields();
    out << out.indentation() << "}\n";
}

void dumpEntry(ShapeDumper& out, float value) { out << value; }
void dumpEntry(ShapeDumper& out, const std::string& name) { out << name; }
void dumpEntry(ShapeDumper& out, const Point3& point) { out << point; }
void dumpEntry(ShapeDumper& out, const Mesh& mesh) { mesh.dump(out); }

void dumpEntry(ShapeDumper& out, const Quaternion& q) {
    dumpRecord(out, "quaternion\n", [&] {
        out.field("\tx = ", q.x);
        out.field("\ty = ", q.y);
        out.field("\tz = ", q.z);
        out.field("\tw = ", q.w);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::Node& node) {
    dumpRecord(out, "node\n", [&] {
        out.field("\tname = ", node.name);
        out.field("\tparent = ", node.parent);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::Object& object) {
    dumpRecord(out, "object\n", [&] {
        out.field("\tname = ", object.name);
        out.field("\tnumMeshes = ", object.numMeshes);
        out.field("\tfirstMesh = ", object.firstMesh);
        out.field("\tnode = ", object.node);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::Decal& decal) {
    dumpRecord(out, "decal\n", [&] {
        out.field("\tname = ", decal.name);
        out.field("\tnumMeshes = ", decal.numMeshes);
        out.field("\tfirstMesh = ", decal.firstMesh);
        out.field("\tobject = ", decal.object);
        out.field("\tsibling = ", decal.sibling);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::IflMaterial& ifl) {
    dumpRecord(out, "IFLmaterial\n", [&] {
        out.field("\tname = ", ifl.name);
        out.field("\tslot = ", ifl.slot);
        out.field("\tfirstFrame = ", ifl.firstFrame);
        out.field("\ttime = ", ifl.time);
        out.field("\tnumFrames = ", ifl.numFrames);
    });
}

// Not in the order in which a file stores the fields.
void dumpEntry(ShapeDumper& out, const Shape::SubShape& subshape) {
    dumpRecord(out, "subshape\n", [&] {
        out.field("\tfirstDecal = ", subshape.firstDecal);
        out.field("\tfirstNode = ", subshape.firstNode);
        out.field("\tfirstObject = ", subshape.firstObject);
        out.field("\tnumDecals = ", subshape.numDecals);
        out.field("\tnumNodes = ", subshape.numNodes);
        out.field("\tnumObjects = ", subshape.numObjects);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::ObjectState& state) {
    dumpRecord(out, "objectstate\n", [&] {
        out.field("\tvis = ", state.vis);
        out.field("\tframe = ", state.frame);
        out.field("\tmatFrame = ", state.matFrame);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::DecalState& state) {
    dumpRecord(out, "decalstate\n", [&] { out.field("\tframe = ", state.frame); });
}

void dumpEntry(ShapeDumper& out, const Shape::Trigger& trigger) {
    dumpRecord(out, "trigger\n", [&] {
        out.field("\tstate = ", trigger.state);
        out.field("\tpos = ", trigger.pos);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::DetailLevel& level) {
    dumpRecord(out, "detaillevel\n", [&] {
        out.field("\tname = ", level.name);
        out.field("\tsubshape = ", level.subshape);
        out.field("\tobjectDetail = ", level.objectDetail);
        out.field("\tsize = ", level.size);
        out.field("\tavgError = ", level.avgError);
        out.field("\tmaxError = ", level.maxError);
        out.field("\tpolyCount = ", level.polyCount);
    });
}

void dumpEntry(ShapeDumper& out, const Shape::Material& material) {
    dumpRecord(out, "material\n", [&] {
        out.field("\tname = ", material.name);
        out.field("\tflags = ", flagsText(material.flags, kMaterialFlagWords));
        out.field("\treflectance = ", material.reflectance);
        out.field("\tbump = ", material.bump);
        out.field("\tdetail = ", material.detail);
        out.field("\tdetailScale = ", material.detailScale);
        out.field("\treflection = ", material.reflection);
    });
}

void dumpIndexSet(ShapeDumper& out, const char* label, const IndexSet& set) {
    const std::string& margin = out.indentation();
    out << "\n" << margin << label << margin << "\t\t{\n";
    for (size_t i = 0; i < set.size(); ++i) {
        if (set.test(i)) out << margin << "\t\t\t" << i << "\n";
    }
    out << margin << "\t\t}\n";
}

void dumpMatters(ShapeDumper& out, const Shape::Sequence& sequence) {
    out << "\n" << out.indentation() << "\tmatters\n" << out.indentation() << "\t{\n";
    dumpIndexSet(out, "\t\tdecal\n", sequence.decalMatters);
    dumpIndexSet(out, "\t\tframe\n", sequence.frameMatters);
    dumpIndexSet(out, "\t\tifl\n", sequence.iflMatters);
    dumpIndexSet(out, "\t\tmatframe\n", sequence.matFrameMatters);
    dumpIndexSet(out, "\t\trotation\n", sequence.rotationMatters);
    dumpIndexSet(out, "\t\tscale\n", sequence.scaleMatters);
    dumpIndexSet(out, "\t\ttranslation\n", sequence.translationMatters);
    dumpIndexSet(out, "\t\tvis\n", sequence.visMatters);
    out << out.indentation() << "\t}\n";
}

void dumpEntry(ShapeDumper& out, const Shape::Sequence& sequence) {
    dumpRecord(out, "sequence\n", [&] {
        out.field("\tnameIndex = ", sequence.nameIndex);
        out.field("\tflags = ", flagsText(sequence.flags, kSequenceFlagWords));
        out.field("\tnumKeyFrames = ", sequence.numKeyFrames);
        out.field("\tduration = ", sequence.duration);
        out.field("\tpriority = ", sequence.priority);
        out.field("\tfirstGroundFrame = ", sequence.firstGroundFrame);
        out.field("\tnumGroundFrames = ", sequence.numGroundFrames);
        out.field("\tbaseRotation = ", sequence.baseRotation);
        out.field("\tbaseTranslation = ", sequence.baseTranslation);
        out.field("\tbaseScale = ", sequence.baseScale);
        out.field("\tbaseObjectState = ", sequence.baseObjectState);
        out.field("\tbaseDecalState = ", sequence.baseDecalState);
        out.field("\tfirstTrigger = ", sequence.firstTrigger);
        out.field("\tnumTriggers = ", sequence.numTriggers);
        out.field("\ttoolBegin = ", sequence.toolBegin);
        dumpMatters(out, sequence);
    });
}

void dumpCounts(ShapeDumper& out, const Shape& shape) {
    const auto line = [&](const char* label, auto value) { out << label << value << "\n"; };
    line("\tnumNodes = ", shape.nodes.size());
    line("\tnumObjects = ", shape.objects.size());
    line("\tnumDecals = ", shape.decals.size());
    line("\tnumSubShapes = ", shape.subshapes.size());
    line("\tnumIFLmaterials = ", shape.IFLmaterials.size());
    line("\tnumNodeRotations = ", shape.nodeRotations.size());
    line("\tnumNodeTranslations = ", shape.nodeTranslations.size());
    line("\tnumScalesUniform = ", shape.nodeScalesUniform.size());
    line("\tnumScalesAligned = ", shape.nodeScalesAligned.size());
    line("\tnumScalesArbitrary = ", shape.nodeScalesArbitrary.size());
    line("\tnumGroundTranslations = ", shape.groundTranslations.size());
    line("\tnumObjectStates = ", shape.objectStates.size());
    line("\tnumDecalStates = ", shape.decalStates.size());
    line("\tnumTriggers = ", shape.triggers.size());
    line("\tnumDetailLevels = ", shape.detailLevels.size());
    line("\tnumMeshes = ", shape.meshes.size());
    line("\tnumNames = ", shape.names.size());
    line("\tsmallestSize = ", truncatedToInt32(shape.smallestSize));
    line("\tsmallestDetailLevel = ", shape.smallestDetailLevel);
}

void dumpBounds(ShapeDumper& out, const Shape& shape) {
    out << "\n\tbounds\n\t{\n";
    out << "\t\tradius = " << shape.radius << "\n";
    out << "\t\ttubeRadius = " << shape.tubeRadius << "\n";
    out << "\t\tcenter = " << shape.center << "\n";
    out << "\t\tbounds = " << shape.bounds << "\n";
    out << "\t}\n";
}

template <class Entry>
void dumpSection(ShapeDumper& out, const char* name, const std::vector<Entry>& entries) {
    out << "\n\t" << name << "\n\t{\n";
    for (const Entry& entry : entries) {
        out << "\t\t";
        dumpEntry(out, entry);
        out << "\n";
    }
    out << "\t}\n";
}

}  // namespace

void Shape::dumpText(std::ostream& stream, std::string_view only) const {
    ShapeDumper out(stream);
    const auto isWanted = [&](const char* name) { return only.empty() || only == name; };
    const auto section = [&](const char* name, const auto& entries) {
        if (isWanted(name)) dumpSection(out, name, entries);
    };
    out << "shape\n{\n";
    out.indent();
    if (isWanted("counts")) dumpCounts(out, *this);
    out.indent();
    if (isWanted("bounds")) dumpBounds(out, *this);
    section("nodes", nodes);
    section("objects", objects);
    section("decals", decals);
    section("IFLmaterials", IFLmaterials);
    section("subshapes", subshapes);
    section("nodeDefRotations", nodeDefRotations);
    section("nodeDefTranslations", nodeDefTranslations);
    section("nodeTranslations", nodeTranslations);
    section("nodeRotations", nodeRotations);
    section("nodeScalesUniform", nodeScalesUniform);
    section("nodeScalesAligned", nodeScalesAligned);
    section("nodeScalesArbitrarys", nodeScalesArbitrary);
    section("nodeScaleRotsArbitrary", nodeScaleRotsArbitrary);
    section("groundTranslations", groundTranslations);
    section("groundRotations", groundRotations);
    section("objectStates", objectStates);
    section("decalStates", decalStates);
    section("triggers", triggers);
    section("detailLevels", detailLevels);
    section("meshes", meshes);
    section("names", names);
    section("sequences", sequences);
    section("materials", materials);
    out << "}\n";
}

}  // namespace marrowfen
