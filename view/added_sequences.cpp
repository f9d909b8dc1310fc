#include "view/added_sequences.h"

#include <algorithm>
#include <map>

#include "ground/ascii.h"
#include "ground/at.h"
#include "ground/comma_list.h"
#include "view/shape_fault.h"

namespace marrowfen::view {

namespace {

std::string lowerCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lowerCase);
    return text;
}

// The shape's node for each node of the file, -1 for none. Of nodes with one name the first takes the keys.
std::vector<int32_t> matchNodes(const Shape& shape, const Shape& dsq, std::vector<std::string>& warnings) {
    std::map<std::string, int32_t> byName;
    for (const Shape::Node& node : shape.nodes) {
        byName.emplace(lowerCased(at(shape.names, node.name)), static_cast<int32_t>(&node - shape.nodes.data()));
    }
    std::vector<int32_t> matches;
    std::string missing;
    for (const Shape::Node& node : dsq.nodes) {
        const std::string& name = at(dsq.names, node.name);
        const auto found = byName.find(lowerCased(name));
        matches.push_back(found == byName.end() ? -1 : found->second);
        if (found == byName.end()) addToList(missing, name);
    }
    if (!missing.empty()) warnings.push_back("the shape has no node for the sequences' " + missing);
    return matches;
}

// How the keys of one sequence move from the file's tables to the shape's.
struct KeyMove {
    int32_t keys;                         // of a node
    const std::vector<int32_t>& matches;  // node of the file -> node of the shape
    size_t numNodes;                      // of the shape

    // Copies the keys of the members that have a match, in the order of the shape's nodes, to the end of its table.
    template <class Key>
    IndexSet copy(const IndexSet& members, const std::vector<Key>& from, int32_t base, std::vector<Key>& to) const {
        IndexSet moved;
        moved.resize(numNodes);
        if (keys <= 0) return moved;
        std::map<int32_t, int64_t> firstKeys;  // shape node -> its first key in `from`
        int64_t block = base;
        for (size_t i = 0; i < std::min(members.size(), matches.size()); ++i) {
            if (!members.test(i)) continue;
            if (matches[i] >= 0) firstKeys.emplace(matches[i], block);
            block += keys;
        }
        for (const auto& [node, first] : firstKeys) {
            moved.set(static_cast<size_t>(node));
            for (int64_t key = first; key < first + keys; ++key) to.push_back(at(from, key));
        }
        return moved;
    }
};

}  // namespace

std::string appendSequences(Shape& shape, const Shape& dsq, std::vector<std::string>& warnings) {
    const std::string fault = findFault(dsq, ShapeFileKind::Dsq);
    if (!fault.empty()) return fault;

    const std::vector<int32_t> matches = matchNodes(shape, dsq, warnings);
    for (const Shape::Sequence& sequence : dsq.sequences) {
        Shape::Sequence added = sequence;
        added.nameIndex = shape.findOrAddName(at(dsq.names, sequence.nameIndex));
        added.baseRotation = count32(shape.nodeRotations);
        added.baseTranslation = count32(shape.nodeTranslations);
        const KeyMove move{sequence.numKeyFrames, matches, shape.nodes.size()};
        added.rotationMatters =
            move.copy(sequence.rotationMatters, dsq.nodeRotations, sequence.baseRotation, shape.nodeRotations);
        added.translationMatters = move.copy(sequence.translationMatters, dsq.nodeTranslations,
                                             sequence.baseTranslation, shape.nodeTranslations);
        shape.sequences.push_back(added);
    }
    return {};
}

}  // namespace marrowfen::view
