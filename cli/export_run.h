#pragma once

// One export: the plug-in over a scene, with the files delivered and what there is to tell as a record.

#include <string>
#include <vector>

#include "cli/scene_options.h"

namespace marrowfen::cli {

struct ExportOptions {
    std::string scene;
    std::string output;  // ends in .dts or .dsq
    bool withAnimation = false;
    bool strict = false;
    bool dryRun = false;
    SceneOptions loading;
};

// Whether an export can go to a file of this name.
bool isExportName(const std::string& path);

struct ToldMessage {
    std::string code;      // stable
    std::string severity;  // "error", "warning" or "note"
    std::string place;     // "scene", "layer", "node" or "clip"
    std::string name;      // of the layer, node or clip; empty for none
    std::string text;
};

struct ExportResult {
    Outcome outcome;
    std::string summary;                    // of what was made, one line; empty for nothing
    std::vector<ToldMessage> messages;      // warnings and the error
    std::vector<standin::LookedFor> files;  // that were asked for, the scene first
    std::vector<std::string> written;       // the output, its log, textures
    bool isUnchanged = false;               // nothing was done, for nothing has changed
};

// Tells warnings, details, progress and the summary on the way; the outcome is the caller's to tell.
ExportResult exportScene(const ExportOptions& options, const Session& session);

}  // namespace marrowfen::cli
