#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/inspect_report.h"
#include "cli/shape_facts.h"

namespace marrowfen::cli {

namespace {

// Keys in the order of the code, and floats with no more digits than they have.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, int64_t, uint64_t, float>;

Json point(const Point3& p) { return {p.x, p.y, p.z}; }
Json quaternion(const Quaternion& q) { return {q.x, q.y, q.z, q.w}; }

// One element for each of the first records.
template <class Record, class Make>
Json listOf(const std::vector<Record>& records, Make make, size_t most = SIZE_MAX) {
    Json list = Json::array();
    for (size_t i = 0; i < std::min(records.size(), most); ++i) list.push_back(make(records[i], i));
    return list;
}

const char* kindWord(LevelKind kind) {
    switch (kind) {
        case LevelKind::Visible:
            return "visible";
        case LevelKind::Collision:
            return "collision";
        case LevelKind::LineOfSight:
            return "lineOfSight";
    }
    return "";
}

Json nodes(const ShapeFile& file) {
    const Shape& shape = file.shape;
    return listOf(shape.nodes, [&](const Shape::Node& node, size_t i) {
        Json json = {{"name", nameAt(shape, node.name)}};
        if (file.kind == ShapeFileKind::Dsq) return json;
        json["parent"] = node.parent;
        json["rotation"] = quaternion(shape.nodeDefRotations[i]);
        json["translation"] = point(shape.nodeDefTranslations[i]);
        return json;
    });
}

Json objects(const Shape& shape) {
    return listOf(shape.objects, [&](const Shape::Object& object, size_t) {
        return Json{{"name", nameAt(shape, object.name)},
                    {"node", object.node},
                    {"firstMesh", object.firstMesh},
                    {"numMeshes", object.numMeshes}};
    });
}

Json meshes(const Shape& shape, const ShapeFacts& shapeFacts) {
    return listOf(shape.meshes, [&](const Mesh& mesh, size_t i) {
        const MeshFacts facts = shapeFacts.of(i);
        return Json{{"type", meshTypeWord(mesh.type)}, {"triangles", facts.triangles},
                    {"strips", facts.strips},          {"vertices", facts.vertices},
                    {"bones", mesh.nodeIndex.size()},  {"clusters", mesh.clusters.size()},
                    {"frames", mesh.numFrames},        {"flags", allFlagWords(mesh.flags, kMeshFlagWords)}};
    });
}

Json detailLevels(const Shape& shape, const ShapeFacts& shapeFacts) {
    const auto make = [&](const Shape::DetailLevel& level, size_t) {
        const LevelFacts facts = shapeFacts.of(level);
        return Json{{"name", nameAt(shape, level.name)},
                    {"kind", kindWord(levelKind(shape, level))},
                    {"size", level.size},
                    {"subshape", level.subshape},
                    {"objectDetail", level.objectDetail},
                    {"polyCount", level.polyCount},
                    {"triangles", facts.triangles},
                    {"strips", facts.strips},
                    {"vertices", facts.vertices},
                    {"materials", facts.materials},
                    {"meshes", facts.meshes}};
    };
    return listOf(shape.detailLevels, make, kMostLevels);
}

Json materials(const Shape& shape) {
    return listOf(shape.materials, [&](const Shape::Material& material, size_t) {
        return Json{{"name", material.name},
                    {"flags", allFlagWords(material.flags, kMaterialFlagWords)},
                    {"reflectance", material.reflectance},
                    {"bump", material.bump},
                    {"detail", material.detail},
                    {"detailScale", material.detailScale},
                    {"reflection", material.reflection}};
    });
}

Json sequences(const Shape& shape) {
    return listOf(shape.sequences, [&](const Shape::Sequence& sequence, size_t) {
        return Json{{"name", nameAt(shape, sequence.nameIndex)},
                    {"frames", sequence.numKeyFrames},
                    {"seconds", sequence.duration},
                    {"rate", frameRate(sequence)},
                    {"priority", sequence.priority},
                    {"flags", allFlagWords(sequence.flags, kSequenceFlagWords)},
                    {"nodes", animatedNodes(sequence)},
                    {"triggers", sequence.numTriggers},
                    {"groundFrames", sequence.numGroundFrames}};
    });
}

Json sizes(const Shape& shape) {
    return listOf(shape.partSizes(), [](const Shape::PartSize& part, size_t) {
        return Json{{"part", part.part}, {"bytes", part.bytes}};
    });
}

Json problemList(const std::vector<ShapeProblem>& problems) {
    return listOf(problems, [](const ShapeProblem& problem, size_t) {
        return Json{{"code", problem.kind->code},
                    {"severity", severityWord(problem.kind->severity)},
                    {"what", problem.kind->headline},
                    {"count", problem.count},
                    {"where", problem.where}};
    });
}

void addShape(Json& json, const ShapeFile& file) {
    const Shape& shape = file.shape;
    json["blocks"] = {{"words", file.words}, {"halves", file.halves}, {"bytes", file.narrow}, {"rest", file.rest}};
    json["bounds"] = {{"min", point(shape.bounds.min)}, {"max", point(shape.bounds.max)}};
    json["center"] = point(shape.center);
    json["radius"] = shape.radius;
    json["tubeRadius"] = shape.tubeRadius;
    json["smallestSize"] = shape.smallestSize;
    json["smallestDetailLevel"] = shape.smallestDetailLevel;
    json["objects"] = objects(shape);
    const ShapeFacts facts(shape);
    json["meshes"] = meshes(shape, facts);
    json["detailLevels"] = detailLevels(shape, facts);
    json["materials"] = materials(shape);
}

}  // namespace

std::string inspectJson(const ShapeFile& file, const std::vector<ShapeProblem>& problems) {
    const bool dts = file.kind == ShapeFileKind::Dts;
    Json json = {{"file", file.path},
                 {"format", dts ? "dts" : "dsq"},
                 {"version", file.version.layout()},
                 {"versionWord", file.version.word},
                 {"bytes", file.bytes}};
    json["nodes"] = nodes(file);
    if (dts) addShape(json, file);
    json["sequences"] = sequences(file.shape);
    if (dts) json["sizes"] = sizes(file.shape);
    json["problems"] = problemList(problems);
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace marrowfen::cli
