#pragma once

// Where a walk through a scene is, as a JSON path, and the first fault that it met.

#include <string>
#include <string_view>

#include "standin/host/scene_words.h"

namespace marrowfen::standin {

class ScenePlace {
public:
    // Goes into a member or an entry, and out again when it is destroyed.
    class Step {
    public:
        Step(ScenePlace& place, std::string_view key) : Step(place, key, 0) {}
        Step(ScenePlace& place, size_t index) : Step(place, {}, index) {}
        ~Step() { place_.last_ = before_; }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        friend class ScenePlace;

        Step(ScenePlace& place, std::string_view key, size_t index)
            : place_(place), before_(place.last_), key_(key), index_(index) {
            place.last_ = this;
        }

        ScenePlace& place_;
        const Step* before_;
        std::string_view key_;  // null of an entry
        size_t index_;
    };

    // Keeps "path: what" unless there is a fault already.
    void fail(const std::string& what);
    void failOutside(double number, WholeBounds bounds);

    std::string path() const;
    bool ok() const { return error_.empty(); }
    const std::string& error() const { return error_; }

private:
    const Step* last_ = nullptr;
    std::string error_;
};

}  // namespace marrowfen::standin
