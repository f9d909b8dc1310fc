// The text of a glTF file, a zero byte, and the bytes of its buffer: an error of one line, or a scene that the parent
// takes and that exports. The lengths of the file's chunks come out right whatever the bytes, and half of the changes
// are to whole tokens of the text, so that more than its parser is reached.

#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

#include "fuzz/damage.h"
#include "fuzz/require.h"
#include "fuzz/scene_export.h"
#include "ground/byte_order.h"
#include "standin/import/model.h"
#include "standin/import/scene_transfer.h"

using namespace marrowfen;

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace {

std::string chunk(const char* kind, std::string content, char filler) {
    content.resize((content.size() + 3) / 4 * 4, filler);
    std::string bytes;
    put32(bytes, static_cast<uint32_t>(content.size()));
    return bytes + std::string(kind, 4) + content;
}

std::string glbOf(const std::string& input) {
    const size_t end = std::min(input.find('\0'), input.size());
    std::string chunks = chunk("JSON", input.substr(0, end), ' ');
    if (end < input.size()) chunks += chunk("BIN", input.substr(end + 1), '\0');
    std::string head = "glTF";
    put32(head, 2);
    put32(head, static_cast<uint32_t>(12 + chunks.size()));
    return head + chunks;
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned int seed) {
    if (seed % 2 == 0) return LLVMFuzzerMutate(data, size, most);
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t end = std::min(input.find('\0'), size);
    const fuzz::Damages damages(input.substr(0, end));
    if (damages.changes() == 0) return LLVMFuzzerMutate(data, size, most);
    const std::string changed = damages.change(seed / 2 % damages.changes()) + input.substr(end);
    if (changed.size() > most) return LLVMFuzzerMutate(data, size, most);
    std::copy(changed.begin(), changed.end(), data);
    return changed.size();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string kPath = "/dev/shm/marrowfen-fuzz-" + std::to_string(getpid()) + ".glb";
    std::ofstream(kPath, std::ios::binary) << glbOf({reinterpret_cast<const char*>(data), size});
    const standin::ImportResult read = standin::readModel(kPath, {});
    unlink(kPath.c_str());
    REQUIRE(read.scene.has_value() == read.error.empty());
    REQUIRE(read.error.find('\n') == std::string::npos);
    if (!read.scene) return 0;
    const standin::LoadResult taken = standin::unpackResult(standin::packResult(read), "taken");
    REQUIRE(taken.scene == read.scene || !taken.error.empty());
    if (taken.scene) exportBoth(*taken.scene);
    return 0;
}
