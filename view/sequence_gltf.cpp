#include "view/sequence_gltf.h"

#include <cmath>

#include "ground/at.h"
#include "ground/excerpt.h"

namespace marrowfen::view {

namespace {

constexpr float kFallbackFrameRate = 30;  // of a sequence whose duration is none

// The keys of one sequence and where they stand in the file.
struct Timeline {
    const Shape::Sequence& sequence;
    double secondsPerKey = 0;
    int32_t everyKey = -1;      // accessor of the times of all keys
    int32_t firstAndLast = -1;  // accessor of the times of a node that never moves; made on first use

    size_t numKeys() const { return static_cast<size_t>(sequence.numKeyFrames); }
    float timeOf(size_t key) const { return static_cast<float>(static_cast<double>(key) * secondsPerKey); }
};

int32_t addTimes(GltfFile& file, const std::vector<float>& times) {
    return file.addFloats("SCALAR", times, GltfFile::Use::Plain, GltfFile::Bounds::Given);
}

// Times must rise from key to key, also as 32-bit floats.
double secondsPerKey(const Shape::Sequence& sequence, const std::string& name, std::vector<std::string>& warnings) {
    const double step = static_cast<double>(sequence.duration) / sequence.numKeyFrames;
    constexpr double kShortest = 1e-6;
    constexpr double kLongest = 1e6;
    if (step >= kShortest && step <= kLongest) return step;
    warnings.push_back("sequence \"" + name + "\": no usable duration, shown at 30 frames a second");
    return 1 / kFallbackFrameRate;
}

// Adds a sampler for the keys, `width` floats each. What never changes is said with two keys, so that the animation
// keeps its length, or with the only one.
int32_t addSampler(GltfFile& file, Timeline& timeline, nlohmann::json& samplers, const char* type,
                   std::vector<float> keys) {
    const size_t width = keys.size() / timeline.numKeys();
    bool still = timeline.numKeys() > 2;
    for (size_t i = width; still && i < keys.size(); ++i) still = keys[i] == keys[i - width];
    int32_t* times = still ? &timeline.firstAndLast : &timeline.everyKey;
    if (*times < 0) {
        std::vector<float> seconds;
        for (size_t key = 0; key < timeline.numKeys(); ++key) {
            if (!still || key == 0 || key + 1 == timeline.numKeys()) seconds.push_back(timeline.timeOf(key));
        }
        *times = addTimes(file, seconds);
    }
    if (still) keys.resize(2 * width);
    samplers.push_back({{"input", *times}, {"output", file.addFloats(type, keys, GltfFile::Use::Plain)}});
    return static_cast<int32_t>(samplers.size()) - 1;
}

std::vector<float> rotationKeys(const Shape& shape, size_t first, size_t count) {
    std::vector<float> keys;
    Quaternion before;
    for (size_t i = first; i < first + count; ++i) {
        Quaternion q = commonRotation(shape.nodeRotations[i]);
        // q and -q turn alike; the nearer one keeps viewers from interpolating the long way round.
        if (q.x * before.x + q.y * before.y + q.z * before.z + q.w * before.w < 0) q = {-q.x, -q.y, -q.z, -q.w};
        before = q;
        keys.insert(keys.end(), {q.x, q.y, q.z, q.w});
    }
    return keys;
}

std::vector<float> translationKeys(const Shape& shape, size_t first, size_t count) {
    std::vector<float> keys;
    for (size_t i = first; i < first + count; ++i) {
        const Point3 p = finiteTranslation(shape.nodeTranslations[i]);
        keys.insert(keys.end(), {p.x, p.y, p.z});
    }
    return keys;
}

// Adds a sampler and the channels of every member of the set. The keys of the i-th member are the i-th block after
// the sequence's base.
template <class AddNodeSampler>
void addChannels(const IndexSet& set, const std::vector<std::vector<int32_t>>& placements, const char* path,
                 nlohmann::json& channels, AddNodeSampler addNodeSampler) {
    size_t block = 0;
    for (size_t node = 0; node < set.size(); ++node) {
        if (!set.test(node)) continue;
        const int32_t sampler = addNodeSampler(block++);
        for (const int32_t placed : placements[node]) {
            channels.push_back({{"sampler", sampler}, {"target", {{"node", placed}, {"path", path}}}});
        }
    }
}

nlohmann::json sequenceFacts(const Shape::Sequence& s) {
    return {{"cyclic", (s.flags & Shape::Cyclic) != 0},
            {"blend", (s.flags & Shape::Blend) != 0},
            {"priority", s.priority},
            {"frames", s.numKeyFrames},
            {"duration", std::isfinite(s.duration) ? s.duration : 0}};
}

bool animatesMoreThanNodes(const Shape::Sequence& s) {
    for (const IndexSet* set :
         {&s.scaleMatters, &s.decalMatters, &s.iflMatters, &s.visMatters, &s.frameMatters, &s.matFrameMatters}) {
        if (set->count() != 0) return true;
    }
    return s.numGroundFrames > 0 || s.numTriggers > 0;
}

void addSequence(GltfFile& file, const Shape& shape, const Shape::Sequence& sequence,
                 const std::vector<std::vector<int32_t>>& placements, std::vector<std::string>& warnings) {
    const std::string name = excerpt(at(shape.names, sequence.nameIndex));
    nlohmann::json samplers = nlohmann::json::array();
    nlohmann::json channels = nlohmann::json::array();
    if (sequence.numKeyFrames > 0) {
        Timeline timeline{sequence, secondsPerKey(sequence, name, warnings)};
        const size_t count = timeline.numKeys();
        addChannels(sequence.rotationMatters, placements, "rotation", channels, [&](size_t block) {
            const size_t first = static_cast<size_t>(sequence.baseRotation) + block * count;
            return addSampler(file, timeline, samplers, "VEC4", rotationKeys(shape, first, count));
        });
        addChannels(sequence.translationMatters, placements, "translation", channels, [&](size_t block) {
            const size_t first = static_cast<size_t>(sequence.baseTranslation) + block * count;
            return addSampler(file, timeline, samplers, "VEC3", translationKeys(shape, first, count));
        });
    }
    if (animatesMoreThanNodes(sequence)) {
        warnings.push_back("sequence \"" + name + "\": only rotations and translations are shown");
    }
    if (channels.empty()) {
        warnings.push_back("sequence \"" + name + "\" moves no node and is left out");
        return;
    }
    file.add("animations",
             {{"name", name}, {"samplers", samplers}, {"channels", channels}, {"extras", sequenceFacts(sequence)}});
}

}  // namespace

Quaternion commonRotation(const Quaternion& q) {
    const double length = std::sqrt(double{q.x} * q.x + double{q.y} * q.y + double{q.z} * q.z + double{q.w} * q.w);
    constexpr double kShortest = 1e-6;
    if (!std::isfinite(length) || length < kShortest) return {};
    return {static_cast<float>(-q.x / length), static_cast<float>(-q.y / length), static_cast<float>(-q.z / length),
            static_cast<float>(q.w / length)};
}

Point3 finiteTranslation(const Point3& p) {
    return {std::isfinite(p.x) ? p.x : 0, std::isfinite(p.y) ? p.y : 0, std::isfinite(p.z) ? p.z : 0};
}

void addAnimations(GltfFile& file, const Shape& shape, const std::vector<std::vector<int32_t>>& placements,
                   std::vector<std::string>& warnings) {
    for (const Shape::Sequence& sequence : shape.sequences) {
        addSequence(file, shape, sequence, placements, warnings);
    }
}

}  // namespace marrowfen::view
