// Any bytes as the answer of the process that reads models: whatever has taken it over, the answer is an error or a
// scene that a scene file could hold, and that exports like one.

#include <string>

#include "fuzz/require.h"
#include "fuzz/scene_export.h"
#include "standin/import/model_import.h"

using namespace marrowfen;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const standin::ImportResult result = standin::unpackImport(bytes, "fuzz.model");
    REQUIRE(result.scene.has_value() == result.error.empty());
    for (const auto& file : result.files) REQUIRE(file.path.find_first_of("\n\r\x1B") == std::string::npos);
    for (const auto& [name, content] : result.textures) REQUIRE(name.find_first_of("/\\\n") == std::string::npos);
    if (!result.scene) return 0;
    const standin::ImportResult again = standin::unpackImport(standin::packImport(result), "again");
    REQUIRE(again.scene == result.scene && again.warnings.size() >= result.warnings.size());
    REQUIRE(again.details == result.details && again.textures == result.textures);
    exportBoth(*result.scene);
    return 0;
}
