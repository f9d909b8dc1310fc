#include "view/added_sequences.h"

#include <algorithm>
#include <map>

#include "ground/ascii.h"
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
    for (size_t n = 0; n < shape.nodes.size(); ++n) {
        byName.emplace(lowerCased(shape.names[static_cast<size_t>(shape.nodes[n].name)]), static_cast<int32_t>(n));
    }
    std::vector<int32_t> matches;
    std::string missing;
    for (const Shape::Node& node : dsq.nodes) {
        const std::string& name = dsq.names[static_cast<size_t>(node.name)];
        const auto found = byName.find(lowerCased(name));
        matches.push_back(found == byName.end() ? -1 : found->second);
        if (found == byName.end()) missing += (missing.empty() ? "" : ", ") + name;
    }
    if (!missing.empty()) warnings.push_back("the shape has no node for the sequences' " + missing);
    return matches;
}

// Copies the keys of the members that have a match, in the order of the shape's nodes, to the end of its table.
template <class Key>
IndexSet copyKeys(const IndexSet& members, const std::vector<int32_t>& matches, const std::vector<Key>& from,
                  size_t base, size_t keys, size_t numNodes, std::vector<Key>& to) {
    std::map<int32_t, size_t> firstKeys;  // shape node -> its first key in `from`
    size_t block = base;
    for (size_t i = 0; i < std::min(members.size(), matches.size()); ++i) {
        if (!members.test(i)) continue;
        if (matches[i] >= 0) firstKeys.emplace(matches[i], block);
        block += keys;
    }
    IndexSet moved;
    moved.resize(numNodes);
    for (const auto& [node, first] : firstKeys) {
        moved.set(static_cast<size_t>(node));
        const auto begin = from.begin() + static_cast<std::ptrdiff_t>(first);
        to.insert(to.end(), begin, begin + static_cast<std::ptrdiff_t>(keys));
    }
    return moved;
}

}  // namespace

std::string addSequences(Shape& shape, Shape dsq, std::vector<std::string>& warnings) {
    dsq.nodeDefRotations.resize(dsq.nodes.size());
    dsq.nodeDefTranslations.resize(dsq.nodes.size());
    const std::string fault = findFault(dsq);
    if (!fault.empty()) return fault;

    const std::vector<int32_t> matches = matchNodes(shape, dsq, warnings);
    for (const Shape::Sequence& sequence : dsq.sequences) {
        const auto keys = static_cast<size_t>(std::max(0, sequence.numKeyFrames));
        Shape::Sequence added = sequence;
        added.nameIndex = shape.findOrAddName(dsq.names[static_cast<size_t>(sequence.nameIndex)]);
        added.baseRotation = static_cast<int32_t>(shape.nodeRotations.size());
        added.baseTranslation = static_cast<int32_t>(shape.nodeTranslations.size());
        added.rotationMatters =
            copyKeys(sequence.rotationMatters, matches, dsq.nodeRotations, static_cast<size_t>(sequence.baseRotation),
                     keys, shape.nodes.size(), shape.nodeRotations);
        added.translationMatters =
            copyKeys(sequence.translationMatters, matches, dsq.nodeTranslations,
                     static_cast<size_t>(sequence.baseTranslation), keys, shape.nodes.size(), shape.nodeTranslations);
        shape.sequences.push_back(added);
    }
    return {};
}

}  // namespace marrowfen::view
