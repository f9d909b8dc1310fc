#include "shape/sequence_record.h"

#include "ground/block_stream.h"

namespace marrowfen {

namespace {

constexpr size_t kWordBits = 32;

// The sets that end a record, in their order.
constexpr IndexSet Shape::Sequence::*kSets[] = {&Shape::Sequence::rotationMatters, &Shape::Sequence::translationMatters,
                                                &Shape::Sequence::scaleMatters,    &Shape::Sequence::decalMatters,
                                                &Shape::Sequence::iflMatters,      &Shape::Sequence::visMatters,
                                                &Shape::Sequence::frameMatters,    &Shape::Sequence::matFrameMatters};

// What the versions differ in.
struct SequenceLayout {
    uint32_t version;

    bool hasFlagWord() const { return version > 21; }        // before, three of the flags are bytes
    bool hasAllSets() const { return version > 21; }         // before, translations and scales have none
    bool hasSeparateTables() const { return version > 20; }  // before, translations and scales have no base

    bool has(IndexSet Shape::Sequence::*set) const {
        return hasAllSets() || (set != &Shape::Sequence::translationMatters && set != &Shape::Sequence::scaleMatters);
    }
};

// A set is bits in words. The number of words stands there twice, and the second counts.
void exchangeSet(ByteWriter& bytes, const IndexSet& set) {
    std::vector<uint32_t> words((set.size() + kWordBits - 1) / kWordBits);
    for (size_t i = 0; i < set.size(); ++i) {
        if (set.test(i)) words[i / kWordBits] |= uint32_t{1} << (i % kWordBits);
    }
    bytes.count(words);
    bytes.list(words);
}

void exchangeSet(ByteReader& bytes, IndexSet& set) {
    std::vector<uint32_t> words;
    bytes.count(words);
    bytes.entries(bytes.read<uint32_t>(), words);
    set.resize(words.size() * kWordBits);
    for (size_t i = 0; i < set.size(); ++i) set.set(i, (words[i / kWordBits] >> (i % kWordBits) & 1) != 0);
}

uint32_t readFlagBytes(ByteReader& bytes) {
    uint32_t flags = 0;
    for (const uint32_t flag : {Shape::Blend, Shape::Cyclic, Shape::MakePath}) {
        if (bytes.read<uint8_t>() != 0) flags |= flag;
    }
    return flags;
}

template <class Bytes, class AnySequence>
void exchangeFields(Bytes& bytes, const SequenceLayout& layout, AnySequence& s) {
    assert(kOldestVersion <= layout.version && layout.version <= kFormatVersion);
    if (layout.hasFlagWord()) bytes.value(s.flags);
    bytes.values(s.numKeyFrames, s.duration);
    if constexpr (std::is_same_v<Bytes, ByteReader>) {
        if (!layout.hasFlagWord()) s.flags = readFlagBytes(bytes);
    }
    bytes.values(s.priority, s.firstGroundFrame, s.numGroundFrames, s.baseRotation);
    if (layout.hasSeparateTables()) bytes.values(s.baseTranslation, s.baseScale);
    bytes.values(s.baseObjectState, s.baseDecalState, s.firstTrigger, s.numTriggers, s.toolBegin);
    for (const auto set : kSets) {
        if (layout.has(set)) exchangeSet(bytes, s.*set);
    }
}

}  // namespace

void exchangeSequence(ByteWriter& bytes, const Shape::Sequence& sequence) {
    exchangeFields(bytes, SequenceLayout{kFormatVersion}, sequence);
}

void exchangeSequence(ByteReader& bytes, uint32_t version, Shape::Sequence& sequence) {
    const SequenceLayout layout{version};
    exchangeFields(bytes, layout, sequence);
    // Older files have one set for the nodes that move and turn, and one table of keys.
    if (!layout.hasSeparateTables()) sequence.baseTranslation = sequence.baseRotation;
    if (!layout.hasAllSets()) sequence.translationMatters = sequence.rotationMatters;
}

}  // namespace marrowfen
