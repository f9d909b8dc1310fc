// Any bytes as the answer of the process that reads models: whatever has taken it over, the answer is an error or a
// scene that a scene file could hold, and that exports like one.

#include <string>

#include "fuzz/require.h"
#include "fuzz/scene_export.h"
#include "standin/import/scene_transfer.h"

using namespace marrowfen;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const standin::LoadResult result = standin::unpackResult(bytes, "fuzz.model");
    REQUIRE(result.scene.has_value() == result.error.empty());
    if (!result.scene) return 0;
    const standin::LoadResult again = standin::unpackResult(standin::packResult({result.scene, {}, {}}), "again");
    REQUIRE(again.scene == result.scene);
    exportBoth(*result.scene);
    return 0;
}
