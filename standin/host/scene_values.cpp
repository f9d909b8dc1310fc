#include <cmath>

#include "standin/host/json_document.h"
#include "standin/host/load_notices.h"
#include "standin/host/scene_check.h"
#include "standin/host/scene_fields.h"

// Walks every field of every record.

namespace marrowfen::standin {
namespace {

// The square of a distance beyond about ten times this is no 32-bit float any more: bounds and radii come out infinite.
constexpr float kFarthestPlace = 1e18F;

class ValueChecker {
public:
    explicit ValueChecker(ScenePlace& place) : place_(place) {}

    template <SceneRecord Record>
    void check(const Record& record) {
        forEachField<Record>([&](const auto& field) {
            if (place_.ok()) checkField(record.*field.member, field.key, field.rules);
        });
    }

    // Empty if every place is near enough.
    std::string farPlaces() const {
        return farCount_ > 1 ? firstFar_ + " (" + std::to_string(farCount_) + " such numbers)" : firstFar_;
    }

private:
    ScenePlace& place_;
    bool isPlace_ = false;  // what is checked
    std::string firstFar_;
    size_t farCount_ = 0;

    template <class T>
    void checkField(const T& value, const char* key, const FieldRules& rules) {
        if (key == nullptr) return check(value);
        const ScenePlace::Step step(place_, key);
        isPlace_ = rules.isPlace;
        checkRules(value, key, rules);
        if (place_.ok()) check(value);
    }

    template <class T>
    void checkRules(const T&, const char*, const FieldRules&) {}

    void checkRules(int32_t number, const char*, const FieldRules& rules) {
        if (number < rules.whole.lowest || number > rules.whole.highest) place_.failOutside(number, rules.whole);
    }

    template <class T>
    void checkRules(const std::vector<T>& list, const char* key, const FieldRules& rules) {
        const CountBounds& bounds = rules.count;
        if (list.size() >= bounds.fewest && list.size() <= bounds.most) return;
        place_.fail(std::to_string(list.size()) + " " + key + ", " + bounds.owner + " has " +
                    (bounds.fewest > 0 ? std::to_string(bounds.fewest) + " to " : "at most ") +
                    std::to_string(bounds.most));
    }

    void check(bool) {}
    template <std::integral Int>
    void check(Int) {}
    void check(const Corner&) {}

    void check(float number) {
        if (!std::isfinite(number)) place_.fail("a number that isn't finite");
        if (!isPlace_ || std::abs(number) <= kFarthestPlace || farCount_++ > 0) return;
        firstFar_ = place_.path() + ": " + numberText(number) + " is beyond " + numberText(kFarthestPlace) +
                    ", where distances don't fit 32-bit floats";
    }

    void check(const std::string& text) {
        if (text.find('\0') != std::string::npos) {
            place_.fail("a zero byte inside a text, which the host's texts end with");
        }
    }

    void check(const ShaderParameter::Value& value) {
        std::visit([&](const auto& known) { check(known); }, value);
    }

    template <class T>
    void check(const std::optional<T>& value) {
        if (value) check(*value);
    }

    template <class T, size_t N>
    void check(const std::array<T, N>& numbers) {
        for (const T number : numbers) check(number);
    }

    template <class T>
    void check(const std::vector<T>& list) {
        for (size_t i = 0; i < list.size() && place_.ok(); ++i) {
            const ScenePlace::Step step(place_, i);
            check(list[i]);
        }
    }

    template <class T>
    void check(const std::vector<std::pair<std::string, T>>& map) {
        for (const auto& [key, value] : map) {
            if (!place_.ok()) return;
            const ScenePlace::Step step(place_, key);
            if (key.find('\0') != std::string::npos) place_.fail("a zero byte inside a key");
            check(value);
        }
    }
};

}  // namespace

void checkValues(const Scene& scene, ScenePlace& place, std::vector<Message>& warnings) {
    ValueChecker checker(place);
    checker.check(scene);
    if (const std::string far = checker.farPlaces(); !far.empty()) warnings.push_back(aboutScene(load::kFarPlace, far));
}

}  // namespace marrowfen::standin
