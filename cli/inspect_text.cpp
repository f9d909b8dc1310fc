#include <algorithm>
#include <cstdio>

#include "cli/inspect_report.h"
#include "cli/shape_facts.h"
#include "cli/terminal_text.h"
#include "ground/at.h"

namespace marrowfen::cli {

namespace {

constexpr size_t kDeepestIndent = 24;  // levels of the node tree that are drawn; a file may nest without end

std::string number(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(value));
    return text;
}

std::string tuple(const Point3& p) { return "(" + number(p.x) + ", " + number(p.y) + ", " + number(p.z) + ")"; }

// A name as a terminal may show it.
std::string shown(const std::string& text) { return text.empty() ? "\"\"" : forTerminal(text); }

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text.empty() ? "-" : text;
}

std::string headline(const char* title, size_t count) {
    return "\n" + std::string(title) + " (" + std::to_string(count) + ")\n";
}

// Columns as wide as their widest cell, the first row holding their titles. Columns whose title begins with '>' have
// their cells on the right.
class Table {
public:
    explicit Table(std::vector<std::string> titles) {
        for (std::string& title : titles) {
            right_.push_back(title[0] == '>');
            if (right_.back()) title.erase(0, 1);
        }
        rows_.push_back(std::move(titles));
    }

    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

    std::string text() const {
        std::vector<size_t> widths(right_.size());
        for (const auto& row : rows_) {
            for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
        }
        std::string all;
        for (const auto& row : rows_) {
            std::string line;
            for (size_t c = 0; c < row.size(); ++c) {
                const std::string gap(widths[c] - row[c].size(), ' ');
                line += "  " + (right_[c] ? gap + row[c] : row[c] + gap);
            }
            line.erase(line.find_last_not_of(' ') + 1);
            all += line + "\n";
        }
        return all;
    }

private:
    std::vector<std::vector<std::string>> rows_;
    std::vector<bool> right_;
};

// With the whole word where that says more.
std::string versionText(const VersionWord& version) {
    std::string text = "version " + std::to_string(version.layout());
    if (version.word == version.layout()) return text;
    char word[16];
    std::snprintf(word, sizeof word, "0x%08X", static_cast<unsigned>(version.word));
    return text + " (version word " + word + ")";
}

std::string titleText(const ShapeFile& file) {
    const bool dts = file.kind == ShapeFileKind::Dts;
    std::string text = shown(file.path) + ": " + (dts ? "DTS shape" : "DSQ sequences") + ", " +
                       versionText(file.version) + ", " + std::to_string(file.bytes) + " bytes\n";
    if (!dts) return text;
    return text + "  blocks of 32, 16 and 8 bits: " + std::to_string(file.words) + ", " + std::to_string(file.halves) +
           " and " + std::to_string(file.narrow) + " bytes; sequences and materials: " + std::to_string(file.rest) +
           " bytes\n";
}

std::string boundsText(const Shape& shape) {
    return "\nBounds " + tuple(shape.bounds.min) + " to " + tuple(shape.bounds.max) + "\n  center " +
           tuple(shape.center) + ", radius " + number(shape.radius) + ", tube radius " + number(shape.tubeRadius) +
           ", smallest size " + number(shape.smallestSize) + "\n";
}

std::string nodesText(const Shape& shape) {
    std::string text = headline("Nodes", shape.nodes.size());
    for (const auto& [node, depth] : nodeTree(shape)) {
        text +=
            std::string(2 + 2 * std::min(depth, kDeepestIndent), ' ') + shown(nameAt(shape, shape.nodes[node].name));
        text += "\n";
    }
    return text;
}

std::string objectsText(const Shape& shape) {
    if (shape.objects.empty()) return {};
    Table table({"name", "node", ">meshes", ">first mesh"});
    for (const Shape::Object& object : shape.objects) {
        const bool onNode = hasIndex(shape.nodes, object.node);
        table.add({shown(nameAt(shape, object.name)),
                   onNode ? shown(nameAt(shape, at(shape.nodes, object.node).name)) : "?",
                   std::to_string(object.numMeshes), std::to_string(object.firstMesh)});
    }
    return headline("Objects", shape.objects.size()) + table.text();
}

std::string meshWords(const Shape& shape, const std::vector<int32_t>& meshes) {
    std::vector<std::string> words;
    for (const int32_t i : meshes) {
        const Mesh& mesh = at(shape.meshes, i);
        words.emplace_back(meshTypeWord(mesh.type));
        for (std::string& word : allFlagWords(mesh.flags, kMeshFlagWords)) words.push_back(std::move(word));
    }
    return joined(words);
}

// The levels of some kinds.
std::string levelsText(const Shape& shape, const ShapeFacts& shapeFacts, const char* title,
                       std::initializer_list<LevelKind> kinds) {
    Table table({"name", ">size", ">triangles", ">strips", ">vertices", ">materials", "meshes"});
    size_t count = 0;
    for (const Shape::DetailLevel& level : shape.detailLevels) {
        if (std::count(kinds.begin(), kinds.end(), levelKind(shape, level)) == 0 || ++count > kMostLevels) continue;
        const LevelFacts facts = shapeFacts.of(level);
        table.add({shown(nameAt(shape, level.name)), number(level.size), std::to_string(facts.triangles),
                   std::to_string(facts.strips), std::to_string(facts.vertices), std::to_string(facts.materials.size()),
                   meshWords(shape, facts.meshes)});
    }
    return count == 0 ? "" : headline(title, count) + table.text();
}

std::string materialsText(const Shape& shape) {
    if (shape.materials.empty()) return {};
    Table table({">#", "name", "flags"});
    for (size_t i = 0; i < shape.materials.size(); ++i) {
        const Shape::Material& material = shape.materials[i];
        table.add({std::to_string(i), shown(material.name), joined(allFlagWords(material.flags, kMaterialFlagWords))});
    }
    return headline("Materials", shape.materials.size()) + table.text();
}

std::string sequencesText(const Shape& shape) {
    if (shape.sequences.empty()) return {};
    Table table({"name", ">frames", ">seconds", ">a second", ">priority", ">nodes", "flags"});
    for (const Shape::Sequence& sequence : shape.sequences) {
        table.add({shown(nameAt(shape, sequence.nameIndex)), std::to_string(sequence.numKeyFrames),
                   number(sequence.duration), number(frameRate(sequence)), std::to_string(sequence.priority),
                   std::to_string(animatedNodes(sequence)), joined(allFlagWords(sequence.flags, kSequenceFlagWords))});
    }
    return headline("Sequences", shape.sequences.size()) + table.text();
}

std::string problemsText(const std::vector<ShapeProblem>& problems) {
    if (problems.empty()) return "\nNo problems found.\n";
    std::string text = headline("Problems", problems.size());
    for (const ShapeProblem& problem : problems) text += "  " + findingText(problem) + "\n";
    return text;
}

// Where the bytes are.
std::string sizesText(const Shape& shape) {
    Table table({"part", ">bytes"});
    const std::vector<Shape::PartSize> parts = shape.partSizes();
    for (const Shape::PartSize& part : parts) table.add({part.part, std::to_string(part.bytes)});
    return headline("Sizes", parts.size()) + table.text();
}

}  // namespace

std::string findingText(const ShapeProblem& problem) {
    std::string text = severityWord(problem.kind->severity) + std::string(" ") + problem.kind->code + " ";
    for (size_t i = 0; i < problem.where.size(); ++i) text += (i == 0 ? "" : ", ") + shown(problem.where[i]);
    if (problem.count > problem.where.size())
        text += " and " + std::to_string(problem.count - problem.where.size()) + " more";
    return text + " (" + problem.kind->headline + ")";
}

std::string inspectText(const ShapeFile& file, const std::vector<ShapeProblem>& problems) {
    const Shape& shape = file.shape;
    std::string text = titleText(file);
    if (file.kind == ShapeFileKind::Dts) text += boundsText(shape);
    text += nodesText(shape);
    text += objectsText(shape);
    const ShapeFacts facts(shape);
    text += levelsText(shape, facts, "Detail levels", {LevelKind::Visible});
    text += levelsText(shape, facts, "Collision levels", {LevelKind::Collision, LevelKind::LineOfSight});
    text += materialsText(shape);
    text += sequencesText(shape);
    if (file.kind == ShapeFileKind::Dts) text += sizesText(shape);
    return text + problemsText(problems);
}

}  // namespace marrowfen::cli
