#include "standin/import/model_import.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

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
        result.textures.emplace_back(std::move(name), parts.get());
    }
    return result;
}

ImportResult failed(const std::string& error) { return {{{}, error, {}}, {}, {}, {}}; }

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
