#include "shape/sequence_record.h"

#include "shape/coding.h"
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

}  // namespace marrowfen
