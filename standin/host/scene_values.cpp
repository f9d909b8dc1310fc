#include <cmath>

#include "standin/host/scene_check.h"
#include "standin/host/scene_fields.h"

// Walks every field of every record.

namespace marrowfen::standin {
namespace {

class ValueChecker {
public:
    explicit ValueChecker(ScenePlace& place) : place_(place) {}

    template <SceneRecord Record>
    void check(const Record& record) {
        forEachField<Record>([&](const auto& field) {
            if (place_.ok()) checkField(record.*field.member, field.key, field.rules);
        });
    }

private:
    ScenePlace& place_;

    template <class T>
    void checkField(const T& value, const char* key, const FieldRules& rules) {
        if (key == nullptr) return check(value);
        const ScenePlace::Step step(place_, key);
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

void checkValues(const Scene& scene, ScenePlace& place) { ValueChecker(place).check(scene); }

}  // namespace marrowfen::standin
