#include "shape/sequence_record.h"

#include "ground/coding.h"
#include "shape/record_fields.h"

namespace marrowfen {

namespace {

void putInt(std::string& out, int32_t value) { put32(out, static_cast<uint32_t>(value)); }

void putIndexSet(std::string& out, const IndexSet& set) {
    std::vector<uint32_t> words((set.size() + 31) / 32);
    for (size_t i = 0; i < set.size(); ++i) {
        if (set.test(i)) words[i / 32] |= uint32_t{1} << (i % 32);
    }
    // The number of words stands there twice.
    put32(out, static_cast<uint32_t>(words.size()));
    put32(out, static_cast<uint32_t>(words.size()));
    for (const uint32_t word : words) put32(out, word);
}

void readIndexSet(ByteReader& in, IndexSet& set) {
    in.read32();
    const uint32_t words = in.read32();
    if (!in.holds(words, 4)) return;
    set.resize(size_t{words} * 32);
    for (size_t i = 0; i < words; ++i) {
        const uint32_t word = in.read32();
        for (size_t bit = 0; bit < 32; ++bit) set.set(i * 32 + bit, (word >> bit & 1) != 0);
    }
}

// Older files keep three of the flags as bytes.
uint32_t readFlagBytes(ByteReader& in) {
    uint32_t flags = 0;
    for (const uint32_t flag : {Shape::Blend, Shape::Cyclic, Shape::MakePath}) {
        if (in.read8() != 0) flags |= flag;
    }
    return flags;
}

}  // namespace

void putSequence(std::string& out, const Shape::Sequence& sequence) {
    put32(out, sequence.flags);
    putInt(out, sequence.numKeyFrames);
    putFloat(out, sequence.duration);
    for (const int32_t value :
         {sequence.priority, sequence.firstGroundFrame, sequence.numGroundFrames, sequence.baseRotation,
          sequence.baseTranslation, sequence.baseScale, sequence.baseObjectState, sequence.baseDecalState,
          sequence.firstTrigger, sequence.numTriggers}) {
        putInt(out, value);
    }
    putFloat(out, sequence.toolBegin);
    for (const auto set : kSequenceSets) putIndexSet(out, sequence.*set);
}

void readSequence(ByteReader& in, uint32_t version, Shape::Sequence& sequence) {
    const bool flagWord = version > 21;        // also index sets for translations and scales
    const bool separateTables = version > 20;  // bases for translations and scales

    if (flagWord) sequence.flags = in.read32();
    sequence.numKeyFrames = in.readInt();
    sequence.duration = in.readFloat();
    if (!flagWord) sequence.flags = readFlagBytes(in);
    sequence.priority = in.readInt();
    sequence.firstGroundFrame = in.readInt();
    sequence.numGroundFrames = in.readInt();
    sequence.baseRotation = in.readInt();
    sequence.baseTranslation = separateTables ? in.readInt() : sequence.baseRotation;
    sequence.baseScale = separateTables ? in.readInt() : 0;
    sequence.baseObjectState = in.readInt();
    sequence.baseDecalState = in.readInt();
    sequence.firstTrigger = in.readInt();
    sequence.numTriggers = in.readInt();
    sequence.toolBegin = in.readFloat();
    for (const auto set : kSequenceSets) {
        const bool newer = set == &Shape::Sequence::translationMatters || set == &Shape::Sequence::scaleMatters;
        if (flagWord || !newer) readIndexSet(in, sequence.*set);
    }
    if (!flagWord) sequence.translationMatters = sequence.rotationMatters;
}

}  // namespace marrowfen
