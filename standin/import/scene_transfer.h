#pragma once

// A load result as bytes, for the way from the process that reads a model to the one that wants the scene. Both are the
// same program on the same machine, so numbers are their bytes in memory.

#include <string>
#include <string_view>

#include "standin/host/scene.h"

namespace marrowfen::standin {

// Behind the bytes given.
std::string packResult(const LoadResult& result, std::string bytes = {});

// Whatever the bytes are, the scene holds what checkScene asks of one, or there is an error; name stands for the model
// in it. Memory stays within a small multiple of the bytes.
LoadResult unpackResult(std::string_view bytes, const std::string& name);

}  // namespace marrowfen::standin
