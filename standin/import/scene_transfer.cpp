#include "standin/import/scene_transfer.h"

#include <algorithm>
#include <cstring>

#include "standin/host/load_notices.h"
#include "standin/host/scene_check.h"
#include "standin/host/scene_fields.h"

// A list, map or text is its count and its entries; an optional value is preceded by a byte that says whether it is
// there, a shader parameter's value by its kind. The answer may come from a process that a crafted model has taken
// over, so the unpacker believes nothing: neither counts nor depths, nor that numbers mean anything.

namespace marrowfen::standin {

namespace {

// Numbers, points and corners, which lie in the bytes as they lie in memory: every pattern of bits is a value.
template <class T>
constexpr bool kPlain =
    std::is_trivially_copyable_v<T> && !SceneRecord<T> && !kIsOptional<T> && !std::is_same_v<T, bool>;

using Count = uint64_t;

class Packer {
public:
    std::string bytes;

    template <SceneRecord Record>
    void put(const Record& record) {
        forEachField<Record>([&](const auto& field) { put(record.*field.member); });
    }

    template <class T>
    requires kPlain<T>
    void put(const T& value) { putRaw(&value, sizeof value); }

    void put(bool flag) { bytes += flag ? '\1' : '\0'; }

    void put(const std::string& text) {
        put(Count{text.size()});
        bytes += text;
    }

    void put(const Message& message) {
        put(std::string(message.kind->code));
        put(message.place);
        put(message.name);
        put(message.text);
    }

    template <class T>
    void put(const std::vector<T>& entries) {
        put(Count{entries.size()});
        if constexpr (kPlain<T>) {
            putRaw(entries.data(), entries.size() * sizeof(T));
        } else {
            for (const T& entry : entries) put(entry);
        }
    }

    template <class First, class Second>
    void put(const std::pair<First, Second>& pair) {
        put(pair.first);
        put(pair.second);
    }

    template <class T>
    void put(const std::optional<T>& value) {
        put(value.has_value());
        if (value) put(*value);
    }

    void put(const ShaderParameter::Value& value) {
        put(static_cast<uint8_t>(value.index()));
        std::visit([&](const auto& known) { put(known); }, value);
    }

private:
    void putRaw(const void* data, size_t size) { bytes.append(static_cast<const char*>(data), size); }
};

// The fewest bytes that a value takes: what is left of an answer bounds how many there can be.
template <class T>
struct Fewest {
    static constexpr size_t kBytes = kPlain<T> ? sizeof(T) : 1;
};
template <>
struct Fewest<std::string> {
    static constexpr size_t kBytes = sizeof(Count);
};
template <>
struct Fewest<Message> {
    static constexpr size_t kBytes = 3 * sizeof(Count) + sizeof(Message::Place);
};
template <class T>
struct Fewest<std::vector<T>> {
    static constexpr size_t kBytes = sizeof(Count);
};
template <class First, class Second>
struct Fewest<std::pair<First, Second>> {
    static constexpr size_t kBytes = Fewest<First>::kBytes + Fewest<Second>::kBytes;
};
template <SceneRecord Record>
struct Fewest<Record> {
    template <class... T>
    static constexpr size_t sum(const std::tuple<Field<Record, T>...>&) {
        return (Fewest<T>::kBytes + ...);
    }
    static constexpr size_t kBytes = sum(kFields<Record>);
};

// After the first fault nothing more is taken.
class Unpacker {
public:
    explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

    bool isWhole() const { return ok_ && at_ == bytes_.size(); }
    bool isTooDeep() const { return isTooDeep_; }

    template <SceneRecord Record>
    void take(Record& record) {
        forEachField<Record>([&](const auto& field) { take(record.*field.member); });
    }

    void take(Node& node) {
        isTooDeep_ = isTooDeep_ || depth_ == kDeepestNode;
        ok_ = ok_ && !isTooDeep_;
        if (!ok_) return;
        ++depth_;
        take<Node>(node);
        --depth_;
    }

    template <class T>
    requires kPlain<T>
    void take(T& value) { takeRaw(&value, sizeof value); }

    void take(bool& flag) {
        uint8_t byte = 0;
        take(byte);
        ok_ = ok_ && byte <= 1;
        flag = byte == 1;
    }

    void take(std::string& text) {
        text.resize(takeCount(1));
        takeRaw(text.data(), text.size());
    }

    void take(Message& message) {
        std::string code;
        take(code);
        take(message.place);
        take(message.name);
        take(message.text);
        const auto* const* kind = std::find_if(std::begin(load::kKinds), std::end(load::kKinds),
                                               [&](const MessageKind* known) { return known->code == code; });
        ok_ = ok_ && kind != std::end(load::kKinds) &&
              static_cast<unsigned>(message.place) <= static_cast<unsigned>(Message::Place::Clip);
        if (ok_) message.kind = *kind;
    }

    template <class T>
    void take(std::vector<T>& entries) {
        entries.resize(takeCount(Fewest<T>::kBytes));
        if constexpr (kPlain<T>) {
            takeRaw(entries.data(), entries.size() * sizeof(T));
        } else {
            for (size_t i = 0; i < entries.size() && ok_; ++i) take(entries[i]);
        }
    }

    template <class First, class Second>
    void take(std::pair<First, Second>& pair) {
        take(pair.first);
        take(pair.second);
    }

    template <class T>
    void take(std::optional<T>& value) {
        bool isThere = false;
        take(isThere);
        if (isThere) take(value.emplace());
    }

    void take(ShaderParameter::Value& value) {
        uint8_t kind = 0;
        take(kind);
        takeKind(value, kind, std::make_index_sequence<std::variant_size_v<ShaderParameter::Value>>());
    }

private:
    const std::string_view bytes_;
    size_t at_ = 0;
    int depth_ = 0;  // nodes around the next one
    bool ok_ = true;
    bool isTooDeep_ = false;

    size_t left() const { return bytes_.size() - at_; }

    void takeRaw(void* data, size_t size) {
        ok_ = ok_ && size <= left();
        if (!ok_ || size == 0) return;
        std::memcpy(data, bytes_.data() + at_, size);
        at_ += size;
    }

    size_t takeCount(size_t fewestBytes) {
        Count count = 0;
        take(count);
        ok_ = ok_ && count <= left() / fewestBytes;
        return ok_ ? static_cast<size_t>(count) : 0;
    }

    template <size_t... kKind>
    void takeKind(ShaderParameter::Value& value, uint8_t kind, std::index_sequence<kKind...>) {
        ok_ = ok_ && kind < sizeof...(kKind);
        ((ok_ && kind == kKind ? take(value.emplace<kKind>()) : void()), ...);
    }
};

LoadResult failed(const std::string& name, const std::string& error) { return {{}, name + ": " + error, {}}; }

}  // namespace

std::string packResult(const LoadResult& result, std::string bytes) {
    Packer packer{std::move(bytes)};
    packer.put(result.scene);
    packer.put(result.error);
    packer.put(result.warnings);
    return std::move(packer.bytes);
}

LoadResult unpackResult(std::string_view bytes, const std::string& name) {
    Unpacker unpacker(bytes);
    LoadResult result;
    unpacker.take(result.scene);
    unpacker.take(result.error);
    unpacker.take(result.warnings);
    if (unpacker.isTooDeep()) return failed(name, tooDeepText());
    if (!unpacker.isWhole() || result.scene.has_value() != result.error.empty()) {
        return failed(name, "makes the reader crash");
    }
    if (!result.scene) return result;
    ScenePlace place;
    checkScene(*result.scene, place, result.warnings);
    return place.ok() ? std::move(result) : failed(name, place.error());
}

}  // namespace marrowfen::standin
