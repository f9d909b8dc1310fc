#pragma once

#include <filesystem>

namespace marrowfen::standin {

enum class FilePlace { Outside, Missing, There };

// Where a file lies that a model names: its own are the model itself and what is in its folder or below it. A path that
// leads elsewhere is Outside, through a symbolic link too, and isn't touched if it can be told by its text. Anything
// but a file, such as a pipe, which may never end, is Missing.
FilePlace placeOfFile(const std::filesystem::path& model, const std::filesystem::path& path);

}  // namespace marrowfen::standin
