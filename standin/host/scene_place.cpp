#include "standin/host/scene_place.h"

#include <algorithm>

#include "standin/host/json_document.h"

namespace marrowfen::standin {
namespace {

// A path that is longer loses its middle.
constexpr size_t kLongestPath = 40;

bool isPlainKey(std::string_view key) {
    return !key.empty() && std::all_of(key.begin(), key.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
}

}  // namespace

std::string ScenePlace::path() const {
    std::string text;
    for (size_t i = 0; i < steps_.size(); ++i) {
        if (steps_.size() > kLongestPath && i == kLongestPath / 2) {
            text += "...";
            i = steps_.size() - kLongestPath / 2;
        }
        const Part& step = steps_[i];
        if (step.key.data() == nullptr) {
            text += "[" + std::to_string(step.index) + "]";
        } else if (isPlainKey(step.key)) {
            text += (text.empty() ? "" : ".") + std::string(step.key);
        } else {
            text += "[" + jsonQuoted(std::string(step.key)) + "]";
        }
    }
    return text;
}

void ScenePlace::fail(const std::string& what) {
    if (!ok()) return;
    const std::string where = path();
    error_ = where.empty() ? what : where + ": " + what;
}

void ScenePlace::failOutside(double number, WholeBounds bounds) {
    fail("number " + numberText(number) + " is outside " + std::to_string(bounds.lowest) + " to " +
         std::to_string(bounds.highest));
}

}  // namespace marrowfen::standin
