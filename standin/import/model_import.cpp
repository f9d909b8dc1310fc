#include "standin/import/model_import.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <vector>

#include "ground/ascii.h"
#include "ground/excerpt.h"
#include "standin/host/large_pages.h"
#include "standin/import/isolated_run.h"
#include "standin/import/model.h"
#include "standin/import/scene_transfer.h"

namespace marrowfen::standin {

namespace {

// Why a path can't be a model, empty if it can.
std::string pathFault(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::strerror(errno);
    if (S_ISDIR(status.st_mode)) return "is a folder";
    // Anything but a file may never end.
    if (!S_ISREG(status.st_mode)) return "isn't a file";
    return access(path.c_str(), R_OK) == 0 ? std::string() : std::strerror(errno);
}

// What comes with the scene, as bytes: each part behind its length, a list behind its count. The scene follows.
class PartWriter {
public:
    std::string bytes;

    void put(std::string_view part) {
        const uint64_t size = part.size();
        bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
        bytes += part;
    }

    template <class List, class Put>
    void putEach(const List& list, const Put& putEntry) {
        put(std::to_string(list.size()));
        for (const auto& entry : list) putEntry(entry);
    }
};

// After the first fault there is nothing more.
class PartReader {
public:
    explicit PartReader(std::string_view bytes) : left(bytes) {}

    std::string_view left;

    bool ok() const { return ok_; }

    std::string_view get() {
        uint64_t size = 0;
        if (left.size() >= sizeof size) std::memcpy(&size, left.data(), sizeof size);
        ok_ = ok_ && left.size() >= sizeof size && size <= left.size() - sizeof size;
        if (!ok_) return left = {};
        const std::string_view part = left.substr(sizeof size, static_cast<size_t>(size));
        left.remove_prefix(sizeof size + part.size());
        return part;
    }

    template <class Take>
    void forEach(const Take& takeEntry) {
        for (size_t count = std::strtoull(std::string(get()).c_str(), nullptr, 10); count > 0 && ok_; --count) {
            takeEntry();
        }
    }

private:
    bool ok_ = true;
};

ImportResult failed(const std::string& error) { return {{{}, error, {}}, {}, {}, {}}; }

// Whatever the other process says, nothing but a picture is written, and nowhere but beside the output.
bool isPictureName(const std::string& name) {
    static const std::vector<std::string> kEndings = {"png", "jpg",  "jpeg", "bmp",  "tga",  "dds", "gif",
                                                      "tif", "tiff", "psd",  "webp", "avif", "ktx", "ktx2",
                                                      "hdr", "exr",  "pcx",  "ppm",  "pgm"};
    const size_t dot = name.find('.');
    const auto isPlain = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
    };
    return dot != std::string::npos && dot > 0 &&
           std::all_of(name.begin(), name.begin() + static_cast<ptrdiff_t>(dot), isPlain) &&
           std::any_of(kEndings.begin(), kEndings.end(),
                       [&](const std::string& ending) { return equalIgnoringCase(ending, name.substr(dot + 1)); });
}

// Paths go into depfiles and other lists of lines, where more lines would be rules of their own.
bool isOneLine(std::string_view path) {
    return std::none_of(path.begin(), path.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; });
}

// Formats that hold everything in one file, and which the library reads.
bool standsAlone(const std::string& path) {
    static const char* const kEndings[] = {".3ds", ".ac",  ".ase", ".bvh", ".cob",  ".csm", ".dae",
                                           ".dxf", ".fbx", ".hmp", ".lwo", ".ms3d", ".nff", ".obj",
                                           ".off", ".ply", ".raw", ".smd", ".stl",  ".ter", ".x"};
    const std::string ending = std::filesystem::path(path).extension().string();
    return std::any_of(std::begin(kEndings), std::end(kEndings),
                       [&](const char* known) { return equalIgnoringCase(ending, known); });
}

// Some of the library's readers take all they get for a damaged file. What a sound one of a size needs at the most
// (surfaces that are divided, movements that are drawn as skeletons) is a good deal less.
RunLimits limitsFor(const std::string& path, const ImportOptions& options) {
    constexpr uintmax_t kMegabytes = 4096, kSeconds = 30;
    RunLimits limits{kMegabytes, kSeconds, 2 * kSeconds};
    if (std::error_code fault; standsAlone(path)) {
        const uintmax_t kilobytes = std::filesystem::file_size(path, fault) >> 10;
        limits.memoryMegabytes = static_cast<unsigned>(std::min(192 + kilobytes / 10, kMegabytes));
        limits.cpuSeconds = static_cast<unsigned>(std::min(2 + kilobytes / 50, kSeconds));
    }
    if (options.memoryMegabytes > 0) limits.memoryMegabytes = options.memoryMegabytes;
    if (options.cpuSeconds > 0) limits.cpuSeconds = options.cpuSeconds;
    if (options.wallSeconds > 0) limits.wallSeconds = options.wallSeconds;
    const std::string folder = std::filesystem::path(path).parent_path().string();
    limits.readable = {path, folder.empty() ? "." : folder};
    return limits;
}

}  // namespace

std::string packImport(const ImportResult& result) {
    PartWriter parts;
    parts.bytes.reserve(kUsualAnswer);
    putOnLargePages(parts.bytes.data(), kUsualAnswer);
    parts.putEach(result.files, [&](const LookedFor& file) { parts.put((file.found ? "+" : "-") + file.path); });
    parts.putEach(result.details, [&](const std::string& line) { parts.put(line); });
    parts.putEach(result.textures, [&](const auto& texture) {
        parts.put(texture.first);
        parts.put(texture.second);
    });
    return packResult(result, std::move(parts.bytes));
}

ImportResult unpackImport(std::string_view bytes, const std::string& path) {
    constexpr size_t kGrowth = 2;  // of an answer, on its way to a scene
    useLargePages(bytes.size() * kGrowth);
    PartReader parts(bytes);
    ImportResult result;
    parts.forEach([&] {
        const std::string_view file = parts.get();
        const std::string_view name = file.substr(std::min<size_t>(file.size(), 1));
        if (name == path || (!name.empty() && isOneLine(name))) {
            result.files.push_back({std::string(name), file[0] == '+'});
        }
    });
    parts.forEach([&] { result.details.emplace_back(parts.get()); });
    std::string fault;
    parts.forEach([&] {
        const std::string name(parts.get());
        if (!isPictureName(name)) fault = "a texture called " + excerpt(name) + " isn't a picture's file";
        result.textures.emplace_back(name, parts.get());
    });
    if (!fault.empty()) return failed(path + ": " + fault);
    static_cast<LoadResult&>(result) = unpackResult(parts.left, path);
    return result;
}

ImportResult importModel(const std::string& path, const ImportOptions& options) {
    const std::string fault = pathFault(path);
    if (!fault.empty()) return failed(path + ": " + fault);
    const RunOutcome outcome =
        runIsolated(limitsFor(path, options), [&] { return packImport(readModel(path, options)); });
    if (!outcome.failure.empty()) return failed(path + ": " + outcome.failure);
    return unpackImport(outcome.output, path);
}

}  // namespace marrowfen::standin
