#include "standin/import/own_files.h"

#include <system_error>

namespace marrowfen::standin {

namespace {

namespace fs = std::filesystem;

bool liesBelow(const fs::path& folder, const fs::path& path) {
    const fs::path way = path.lexically_relative(folder);
    return !way.empty() && *way.begin() != "..";
}

}  // namespace

FilePlace placeOfFile(const fs::path& model, const fs::path& path) {
    std::error_code fault;
    const fs::path named = fs::absolute(path, fault).lexically_normal();
    const fs::path namedModel = fs::absolute(model, fault).lexically_normal();
    const fs::path folder = namedModel.parent_path();
    if (!liesBelow(folder, named)) return FilePlace::Outside;
    if (!fs::is_regular_file(named, fault)) return FilePlace::Missing;
    // The model itself may be a link: the user has named it.
    if (named == namedModel || liesBelow(fs::canonical(folder, fault), fs::canonical(named, fault))) {
        return FilePlace::There;
    }
    return FilePlace::Outside;
}

}  // namespace marrowfen::standin
