#pragma once

// What each verb does, by the names of the table in option_table.cpp.

#include "cli/arguments.h"

namespace marrowfen::cli {

Outcome runExport(const Arguments& arguments, const Session& session);
Outcome runExplain(const Arguments& arguments, const Session& session);
Outcome runImport(const Arguments& arguments, const Session& session);
Outcome runAddNode(const Arguments& arguments, const Session& session);
Outcome runInspect(const Arguments& arguments, const Session& session);
Outcome runDump(const Arguments& arguments, const Session& session);
Outcome runDiff(const Arguments& arguments, const Session& session);
Outcome runView(const Arguments& arguments, const Session& session);
Outcome runFormats(const Arguments& arguments, const Session& session);
Outcome runCompletion(const Arguments& arguments, const Session& session);
Outcome runMan(const Arguments& arguments, const Session& session);

}  // namespace marrowfen::cli
