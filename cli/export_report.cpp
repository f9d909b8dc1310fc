#include "cli/export_report.h"

#include <set>

#include "builder/notices.h"
#include "ground/comma_list.h"
#include "ground/counted.h"
#include "shape/shape_questions.h"

namespace marrowfen::cli {

namespace {

constexpr size_t kNamesShown = 8;    // of a grouped warning
constexpr size_t kLevelsShown = 16;  // with their triangles: a shape may have thousands

std::string listed(const std::vector<std::string>& names) {
    std::string text;
    for (size_t i = 0; i < names.size() && i < kNamesShown; ++i) text += (i > 0 ? ", " : "") + names[i];
    if (names.size() > kNamesShown) text += " and " + std::to_string(names.size() - kNamesShown) + " more";
    return text;
}

}  // namespace

std::string exportSummary(const std::string& output, const Shape& shape, bool isShapeFile, uintmax_t bytes) {
    std::vector<std::string> parts;
    if (isShapeFile) {
        std::string triangles;
        size_t visible = 0;
        const std::vector<int64_t> perMesh = trianglesPerMesh(shape);
        for (const Shape::DetailLevel& level : shape.detailLevels) {
            if (levelKind(shape, level) != LevelKind::Visible) continue;
            if (++visible > kLevelsShown) continue;
            triangles += (visible > 1 ? ", " : "") + std::to_string(countTriangles(shape, level, perMesh));
        }
        if (visible > kLevelsShown) triangles += ", ...";
        const size_t hidden = shape.detailLevels.size() - visible;
        parts.push_back(counted(visible, "detail level", "detail levels"));
        if (visible > 0) parts.back() += " (" + triangles + (triangles == "1" ? " triangle)" : " triangles)");
        if (hidden > 0) parts.push_back(counted(hidden, "collision level", "collision levels"));
        parts.push_back(counted(shape.materials.size(), "material", "materials"));
    }
    parts.push_back(counted(shape.nodes.size(), "node", "nodes"));
    parts.push_back(counted(shape.sequences.size(), "sequence", "sequences"));
    parts.push_back(std::to_string(bytes) + " bytes");
    std::string text = output + ": ";
    text += commaList(parts);
    return text;
}

std::string refusalHint(const std::vector<Message>& messages) {
    for (const Message& message : messages) {
        if (message.kind->severity == Severity::Error) return message.text + ": " + message.kind->headline;
    }
    return {};
}

std::vector<std::string> groupedWarnings(const std::vector<Message>& messages) {
    std::vector<std::string> warnings;
    for (const MessageKind* kind : kExportMessageKinds) {
        std::vector<std::string> texts;
        std::set<std::string> said;
        for (const Message& message : messages) {
            if (message.kind != kind) continue;
            // A tag that is unknown on many layers is said once.
            if (kind == &kUnknownTag && !said.insert(message.text).second) continue;
            texts.push_back(message.text);
        }
        if (texts.empty()) continue;
        if (kind == &kClipLeftOut) {
            warnings.push_back(counted(texts.size(), "animation isn't", "animations aren't") +
                               " in the file: give --with-animation, or export to a .dsq file");
        } else {
            warnings.push_back(kind->headline + (": " + listed(texts)));
        }
    }
    return warnings;
}

}  // namespace marrowfen::cli
