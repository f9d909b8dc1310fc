// `marrowfen formats`: what can be read, and how well it is tried.

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "cli/commands.h"
#include "standin/import/model_import.h"

namespace marrowfen::cli {

namespace {

struct Format {
    const char* name;
    const char* endings;
    const char* tried;
};

// Tried means: with models that others made, counted and drawn by another reader as well.
constexpr Format kFormats[] = {
    {"Scene file", ".scene.json", "exact: says all that an exporter can see"},
    {"glTF 2.0", ".gltf .glb .vrm", "well tried: meshes, skins, animations, materials, compressed files"},
    {"Autodesk FBX", ".fbx", "tried: meshes, skins, animations; versions 7 and up"},
    {"Collada", ".dae .zae", "tried: meshes, skins, animations"},
    {"Wavefront OBJ", ".obj", "tried: meshes, materials"},
    {"STL, PLY, OFF", ".stl .ply .off", "tried: meshes"},
    {"3D Studio", ".3ds", "tried: meshes, materials"},
    {"trueSpace", ".cob", "tried: meshes, materials"},
    {"Blender", ".blend", "meshes of old files only: let Blender export glTF"},
    {"BVH", ".bvh", "motion capture, for .dsq files"},
};

std::string formatsText() {
    std::ostringstream out;
    out.exceptions(std::ios::badbit);  // else it keeps to itself that it got no memory
    out << std::left;
    for (const Format& format : kFormats) {
        out << std::setw(16) << format.name << std::setw(18) << format.endings << format.tried << '\n';
    }
    out << "\nRead by Assimp, and tried for coming to an end only:\n";
    std::string line;
    for (const std::string& ending : standin::otherEndings()) {
        const bool listed = std::any_of(std::begin(kFormats), std::end(kFormats), [&](const Format& format) {
            return (std::string(format.endings) + " ").find(ending + " ") != std::string::npos;
        });
        if (listed) continue;
        if (line.size() + ending.size() > 110) {
            out << "   " << line << '\n';
            line.clear();
        }
        line += " " + ending;
    }
    out << "   " << line << '\n';
    return out.str();
}

}  // namespace

Outcome runFormats(const Arguments&, const Session&) { return printResult(formatsText()); }

}  // namespace marrowfen::cli
