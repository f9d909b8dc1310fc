#include "standin/import/model_import.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ground/ascii.h"
#include "ground/excerpt.h"
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
    return {};
}

// The parts of an import as bytes, each behind its length; the scene's own come first.
struct Parts {
    std::string bytes;
    size_t at = 0;
    bool ok = true;

    void put(const std::string& part) {
        const uint64_t size = part.size();
        bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
        bytes += part;
    }
    size_t count() { return static_cast<size_t>(std::strtoull(get().c_str(), nullptr, 10)); }
    std::string get() {
        uint64_t size = 0;
        ok = ok && bytes.size() - at >= sizeof size;
        if (!ok) return {};
        std::memcpy(&size, bytes.data() + at, sizeof size);
        at += sizeof size;
        ok = size <= bytes.size() - at;
        if (!ok) return {};
        at += size;
        return bytes.substr(at - size, size);
    }
};

std::string pack(const ImportResult& result) {
    Parts parts;
    parts.put(packResult(result));
    parts.put(std::to_string(result.files.size()));
    for (const LookedFor& file : result.files) parts.put((file.found ? "+" : "-") + file.path);
    parts.put(std::to_string(result.details.size()));
    for (const std::string& line : result.details) parts.put(line);
    for (const auto& [name, content] : result.textures) {
        parts.put(name);
        parts.put(content);
    }
    return std::move(parts.bytes);
}

ImportResult failed(const std::string& error) { return {{{}, error, {}}, {}, {}, {}}; }

// Whatever the other process says, nothing but a picture is written, and nowhere but beside the output.
bool isPictureName(const std::string& name) {
    static const std::vector<std::string> kEndings = {"png", "jpg",  "jpeg", "bmp",  "tga", "dds", "gif", "tif", "tiff",
                                                      "psd", "webp", "ktx",  "ktx2", "hdr", "exr", "pcx", "ppm", "pgm"};
    const size_t dot = name.find('.');
    const auto isPlain = [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-';
    };
    return dot != std::string::npos && dot > 0 &&
           std::all_of(name.begin(), name.begin() + static_cast<ptrdiff_t>(dot), isPlain) &&
           std::any_of(kEndings.begin(), kEndings.end(),
                       [&](const std::string& ending) { return equalIgnoringCase(ending, name.substr(dot + 1)); });
}

ImportResult unpack(std::string bytes, const std::string& path) {
    Parts parts{std::move(bytes)};
    ImportResult result{unpackResult(parts.get(), path), {}, {}, {}};
    for (size_t left = parts.count(); left > 0 && parts.ok; --left) {
        const std::string file = parts.get();
        if (!file.empty()) result.files.push_back({file.substr(1), file[0] == '+'});
    }
    if (!result.scene) return result;
    for (size_t left = parts.count(); left > 0 && parts.ok; --left) result.details.push_back(parts.get());
    while (parts.ok && parts.at < parts.bytes.size()) {
        std::string name = parts.get();
        if (!isPictureName(name))
            return failed(path + ": a texture called " + excerpt(name) + " isn't a picture's file");
        result.textures.emplace_back(std::move(name), parts.get());
    }
    return result;
}

}  // namespace

ImportResult importModel(const std::string& path, const ImportOptions& options) {
    const std::string fault = pathFault(path);
    if (!fault.empty()) return failed(path + ": " + fault);
    const RunLimits limits{options.memoryMegabytes, options.cpuSeconds, options.wallSeconds};
    RunOutcome outcome = runIsolated(limits, [&] { return pack(readModel(path, options)); });
    if (!outcome.failure.empty()) return failed(path + ": " + outcome.failure);
    return unpack(std::move(outcome.output), path);
}

}  // namespace marrowfen::standin
