// The save dialog of a machine without a screen: asks the user for a path and treats it as the real dialog does. Where
// the real one stays open for another try, this one fails.

#include <commdlg.h>
#include <sys/stat.h>

#include <cstring>

#include "standin/windows/desktop_state.h"

namespace marrowfen::headless {

namespace {

SaveQuestion readQuestion(const OPENFILENAMEA& question) {
    SaveQuestion result;
    const char* text = question.lpstrFilter;
    while (text != nullptr && *text != '\0') {
        const std::string label = text;
        const std::string pattern = text + label.size() + 1;
        text += label.size() + pattern.size() + 2;
        result.filters.emplace_back(label, pattern);
    }
    result.selectedFilter = static_cast<int>(question.nFilterIndex);
    result.initialPath = question.lpstrFile;
    result.defaultExtension = question.lpstrDefExt != nullptr ? question.lpstrDefExt : "";
    result.flags = question.Flags;
    result.bufferSize = static_cast<int>(question.nMaxFile);
    result.owner = question.hwndOwner;
    result.instance = question.hInstance;
    result.hasFolder = question.lpstrInitialDir != nullptr;
    result.hasTitle = question.lpstrTitle != nullptr;
    return result;
}

std::string withDefaultExtension(const std::string& path, const std::string& extension) {
    const size_t slash = path.rfind('/');
    const bool hasExtension = path.find('.', slash == std::string::npos ? 0 : slash) != std::string::npos;
    return hasExtension || extension.empty() ? path : path + "." + extension;
}

bool folderExists(const std::string& path) {
    const size_t slash = path.rfind('/');
    struct stat found;
    return slash == std::string::npos ||
           (stat(path.substr(0, slash + 1).c_str(), &found) == 0 && S_ISDIR(found.st_mode));
}

}  // namespace

}  // namespace marrowfen::headless

BOOL GetSaveFileNameA(OPENFILENAMEA* question) {
    using namespace marrowfen::headless;
    if (theDesktop == nullptr) return FALSE;
    const SaveQuestion asked = readQuestion(*question);
    const auto typed = theDesktop->user.savePath(asked);
    if (!typed || typed->empty()) return FALSE;
    const std::string path = withDefaultExtension(*typed, asked.defaultExtension);
    if ((asked.flags & OFN_PATHMUSTEXIST) != 0 && !folderExists(path)) return FALSE;
    struct stat found;
    const bool exists = stat(path.c_str(), &found) == 0;
    if (exists && (asked.flags & OFN_OVERWRITEPROMPT) != 0 && !theDesktop->user.mayOverwrite(path)) return FALSE;
    if (path.size() >= question->nMaxFile) return FALSE;
    std::memcpy(question->lpstrFile, path.c_str(), path.size() + 1);
    return TRUE;
}
