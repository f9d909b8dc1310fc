#pragma once

// Where a walk through a scene is, as a JSON path, and the first fault that it met.

#include <string>
#include <string_view>
#include <vector>

#include "standin/host/scene_words.h"

namespace marrowfen::standin {

class ScenePlace {
public:
    // Goes into a member or an entry, and out again when it is destroyed.
    class Step {
    public:
        Step(ScenePlace& place, std::string_view key) : place_(place) { place_.steps_.push_back({key, 0}); }
        Step(ScenePlace& place, size_t index) : place_(place) { place_.steps_.push_back({{}, index}); }
        ~Step() { place_.steps_.pop_back(); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        ScenePlace& place_;
    };

    // Keeps "path: what" unless there is a fault already.
    void fail(const std::string& what);
    void failOutside(double number, WholeBounds bounds);

    std::string path() const;
    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }

private:
    struct Part {
        std::string_view key;  // null of an entry
        size_t index;
    };

    std::vector<Part> steps_;
    std::string error_;
};

}  // namespace marrowfen::standin
