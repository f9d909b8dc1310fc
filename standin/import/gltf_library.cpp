// The glTF library's own code, compiled here: Debian's built library lays its classes out in another way than its
// header. It gets no files and no images to open.

#include <nlohmann/json.hpp>

#define TINYGLTF_IMPLEMENTATION
#define TINYGLTF_NO_INCLUDE_JSON
#define TINYGLTF_NO_EXTERNAL_IMAGE
#include <tiny_gltf.h>
