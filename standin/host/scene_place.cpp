#include "standin/host/scene_place.h"

#include <algorithm>
#include <vector>

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
    std::vector<const Step*> steps;
    for (const Step* step = last_; step != nullptr; step = step->before_) steps.insert(steps.begin(), step);
    std::string text;
    for (size_t i = 0; i < steps.size(); ++i) {
        if (steps.size() > kLongestPath && i == kLongestPath / 2) {
            text += "...";
            i = steps.size() - kLongestPath / 2;
        }
        const Step& step = *steps[i];
        if (step.key_.data() == nullptr) {
            text += "[" + std::to_string(step.index_) + "]";
        } else if (isPlainKey(step.key_)) {
            text += (text.empty() ? "" : ".") + std::string(step.key_);
        } else {
            text += "[" + jsonQuoted(std::string(step.key_)) + "]";
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
