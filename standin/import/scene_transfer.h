#pragma once

// A load result as bytes, for the way from the process that reads a model to the one that wants the scene. Both are the
// same program on the same machine, so the bytes are the values as they lie in memory.

#include <optional>
#include <string>

#include "standin/host/scene.h"

namespace marrowfen::standin {

std::string packResult(const LoadResult& result);

// None when the bytes aren't a whole result.
std::optional<LoadResult> unpackResult(const std::string& bytes);

}  // namespace marrowfen::standin
