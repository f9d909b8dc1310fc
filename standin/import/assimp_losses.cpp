#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <set>

#include "ground/counted.h"
#include "ground/whole_file.h"
#include "standin/import/assimp_axes.h"
#include "standin/import/assimp_reading.h"
#include "standin/import/own_files.h"

namespace marrowfen::standin {

namespace {

constexpr std::string_view kObjReader = "Wavefront Object Importer";

// What a reader leaves out: of every file, or of those that say they have more of it than the reader takes.
struct ReaderLoss {
    std::string_view reader;
    const char* what;
    std::vector<size_t> countsAt = {};  // where in the file
    uint32_t most = 0;                  // of which nothing is lost
};
constexpr const char* kFirstFrame = "of a file whose animations are of vertices, the first frame alone is read";
const ReaderLoss kReaderLosses[] = {
    {kBlenderReader,
     "a .blend file is read without its modifiers and animations: export glTF from Blender to have what it shows"},
    {"Inter-Quake Model Importer", "of an IQM file the meshes alone are read, without bones and animations", {68, 76}},
    {"Quake II Mesh Importer", kFirstFrame, {40}, 1},
    {"Quake III Mesh Importer", kFirstFrame, {76}, 1},
    {"Return To Castle Wolfenstein Mesh Importer", kFirstFrame, {76}, 1},
    {"Unreal Mesh Importer", kFirstFrame}};

// The reader passes over the unit of an AMF file, and over all volumes of a mesh but one.
void checkAmf(AssimpReading& reading) {
    const std::string text = readWholeFile(reading.path);
    const std::pair<const char*, double> kUnits[] = {
        {"millimeter", 0.001}, {"inch", 0.0254}, {"feet", 0.3048}, {"meter", 1}, {"micrometer", 1e-6}};
    const size_t head = std::min(text.find("<amf"), text.size());
    const std::string opening = text.substr(head, text.find('>', head) - head);
    for (const auto& [name, metres] : kUnits) {
        if (opening.find(std::string("unit=\"") + name + '"') != std::string::npos) reading.model.unit = metres;
    }
    size_t there = 0, read = 0;
    for (size_t at = text.find("<triangle>"); at != std::string::npos; at = text.find("<triangle>", at + 1)) ++there;
    for (const SourceMesh& mesh : reading.model.meshes) read += mesh.corners.size() / 3;
    if (read >= there) return;
    reading.model.remarks.push_back(
        aboutScene(load::kReaderLoss, counted(there - read, "triangle is", "triangles are") +
                                          " lost: of the volumes and materials of an AMF mesh, one is read"));
}

// Assimp passes over a material library that isn't there without a word.
void noteMissingLibraries(AssimpReading& reading) {
    std::ifstream file(reading.path);
    std::set<std::string> told;
    for (std::string line; std::getline(file, line);) {
        const size_t begin = line.starts_with("mtllib ") ? line.find_first_not_of(" \r", 6) : std::string::npos;
        if (begin == std::string::npos) continue;
        std::string name = line.substr(begin);
        while (!name.empty() && std::isspace(static_cast<unsigned char>(name.back())) != 0) name.pop_back();
        const FilePlace place = placeOfFile(reading.path, reading.path.parent_path() / name);
        if (place == FilePlace::There || !told.insert(name).second) continue;
        const char* why = place == FilePlace::Missing ? " isn't found beside the model"
                                                      : " lies outside the model's folder and isn't opened";
        reading.model.remarks.push_back(aboutScene(load::kMissingFile, "material library " + cleanText(name) + why));
    }
}

bool hasLost(const AssimpReading& reading, const ReaderLoss& loss) {
    if (loss.countsAt.empty()) return true;
    std::ifstream file(reading.path, std::ios::binary);
    return std::any_of(loss.countsAt.begin(), loss.countsAt.end(), [&](size_t at) {
        std::array<unsigned char, 4> count{};
        file.seekg(static_cast<std::streamoff>(at));
        file.read(reinterpret_cast<char*>(count.data()), count.size());
        return (count[0] | count[1] << 8 | count[2] << 16 | static_cast<uint32_t>(count[3]) << 24) > loss.most;
    });
}

}  // namespace

void makeUpForReader(AssimpReading& reading) {
    if (reading.format == kObjReader) noteMissingLibraries(reading);
    if (reading.format == kAmfReader) checkAmf(reading);
    for (const ReaderLoss& loss : kReaderLosses) {
        if (reading.format == loss.reader && hasLost(reading, loss)) {
            reading.model.remarks.push_back(aboutScene(load::kReaderLoss, loss.what));
        }
    }
}

}  // namespace marrowfen::standin
