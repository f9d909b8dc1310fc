#include <algorithm>
#include <cmath>

#include "ground/at.h"
#include "standin/import/source_model.h"

// Numbers that aren't finite are refused here once, for all readers and later passes.

namespace marrowfen::standin {

namespace {

bool isFiniteVector(const aiVector3D& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

std::string meshName(const SourceModel& source, size_t mesh) {
    const std::string& name = source.meshes[mesh].name;
    return "mesh " + std::to_string(mesh) + (name.empty() ? "" : " (" + name + ")");
}

// A face whose corners don't span an area has no normal, and readers' own results have none that is a number for it.
bool spansArea(const SourceMesh& mesh, size_t first) {
    const auto at = [&](size_t c) { return Vector(mesh.positions[mesh.corners[first + c]]); };
    return ((at(1) - at(0)) ^ (at(2) - at(0))).SquareLength() > 0;
}

void checkMesh(SourceModel& source, size_t index) {
    SourceMesh& mesh = source.meshes[index];
    for (size_t v = 0; v < mesh.positions.size(); ++v) {
        if (!isFiniteVector(mesh.positions[v])) {
            return source.fail(meshName(source, index) + ": vertex " + std::to_string(v) + " isn't finite");
        }
        if (!mesh.uvs.empty() && (!std::isfinite(mesh.uvs[v][0]) || !std::isfinite(mesh.uvs[v][1]))) {
            return source.fail(meshName(source, index) + ": the texture coordinate of vertex " + std::to_string(v) +
                               " isn't finite");
        }
    }
    for (size_t c = 0; !mesh.normals.empty() && c < mesh.corners.size(); ++c) {
        if (isFiniteVector(mesh.normals[mesh.corners[c]]) || !spansArea(mesh, c - c % 3)) continue;
        return source.fail(meshName(source, index) + ": the normal of vertex " + std::to_string(mesh.corners[c]) +
                           " isn't finite");
    }
    for (const SourceBone& bone : mesh.bones) {
        if (isFinite(bone.boneFromMesh)) continue;
        return source.fail(meshName(source, index) + ", bone " + at(source.nodes, bone.node).name +
                           ": its bind pose isn't finite");
    }
}

bool isSound(const SourceTrack& track) {
    const auto finite = [](auto x) { return std::isfinite(x); };
    return std::all_of(track.times.begin(), track.times.end(), finite) &&
           std::all_of(track.values.begin(), track.values.end(), finite) &&
           std::is_sorted(track.times.begin(), track.times.end());
}

// What is wrong with a clip, empty for nothing.
std::string clipFault(const SourceModel& source, const SourceClip& clip) {
    if (!std::isfinite(clip.seconds)) return "its duration isn't finite";
    for (const SourceChannel& channel : clip.channels) {
        if (isSound(channel.location) && isSound(channel.rotation) && isSound(channel.scale)) continue;
        return "a key of " + at(source.nodes, channel.node).name + " isn't finite or goes back in time";
    }
    return {};
}

}  // namespace

void checkSource(SourceModel& source) {
    for (size_t m = 0; m < source.meshes.size() && source.error.empty(); ++m) checkMesh(source, m);
    for (const SourceNode& node : source.nodes) {
        if (!isFinite(node.local)) source.fail("node " + node.name + ": its transform isn't finite");
    }
    // An animation's fault is none of the meshes'.
    std::erase_if(source.clips, [&](const SourceClip& clip) {
        const std::string fault = clipFault(source, clip);
        if (!fault.empty()) source.remarks.push_back(skippedAnimation(clip.name, " is skipped: " + fault));
        return !fault.empty();
    });
}

}  // namespace marrowfen::standin
