#include <windows.h>
// windows.h has to come first.
#include <commctrl.h>
#include <commdlg.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <string>
#include <utility>

#include "builder/shape_builder.h"
#include "plugin/export_log.h"
#include "plugin/export_messages.h"
#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

namespace {

constexpr int kOutputPathSize = 500;  // the terminating zero included

MessageListener theListener;

// What the two commands differ in besides the mode.
struct FileKind {
    const char* filter;  // pairs of label and pattern, each zero-terminated, and a further zero
    const char* extension;
    void (*write)(const ShapeBuilder& shape, std::ostream& output, ExportMode mode);
};

void writeShapeFile(const ShapeBuilder& shape, std::ostream& output, ExportMode mode) {
    shape.writeDts(output, mode == ExportMode::ShapeWithAnimation);
}

void writeSequenceFile(const ShapeBuilder& shape, std::ostream& output, ExportMode) { shape.writeDsq(output); }

constexpr FileKind kShapeFile = {"DTS Files\0*.dts\0All\0*.*\0", "dts", writeShapeFile};
constexpr FileKind kSequenceFile = {"DSQ Files\0*.dsq\0All\0*.*\0", "dsq", writeSequenceFile};

bool isAnimationChecked() {
    return SendDlgItemMessageA(theModule.panel, IDC_WITH_ANIMATION, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void initializeProgressBarClass() {
    INITCOMMONCONTROLSEX classes = {};
    classes.dwSize = sizeof classes;
    classes.dwICC = ICC_PROGRESS_CLASS;
    InitCommonControlsEx(&classes);
}

// The path that the user chose; empty when the dialog was cancelled or failed.
std::string askForOutputPath(const FileKind& kind) {
    char path[kOutputPathSize] = "";
    OPENFILENAMEA question = {};
    question.lStructSize = sizeof question;
    question.hInstance = GetModuleHandleA(nullptr);
    question.lpstrFilter = kind.filter;
    question.nFilterIndex = 1;
    question.lpstrFile = path;
    question.nMaxFile = kOutputPathSize;
    question.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_ENABLESIZING;
    question.lpstrDefExt = kind.extension;
    return GetSaveFileNameA(&question) ? path : "";
}

void tell(const MessageKind& kind, const std::string& text) {
    if (theListener) theListener({&kind, Message::Place::Scene, {}, text});
}

void tellWriteFault(int why) {
    if (why != 0) tell(kWriteFailed, std::strerror(why));
}

void reportError(const std::string& text, std::ostream& log) {
    closeProgressDialog();
    log << "Error: " << text;
    showMessage(text.c_str(), MB_ICONERROR);
}

void save(const ShapeBuilder& shape, const std::string& path, const FileKind& kind, ExportMode mode,
          std::ostream& log) {
    setProgress("Saving shape...", 60);
    log << "Saving shape...";
    std::ofstream output(path, std::ios::binary | std::ios::trunc);
    kind.write(shape, output, mode);
    output.flush();
    tellWriteFault(output ? 0 : errno);
    log << "done" << std::endl;
    log << "done" << std::endl << std::endl;
    log << "Export Complete" << std::endl;
    closeProgressDialog();
    showMessage("Export Complete", MB_ICONINFORMATION);
    output.close();
    tellWriteFault(output ? 0 : errno);
}

void buildAndSave(const std::string& path, const FileKind& kind, ExportMode mode, std::ostream& log) {
    const ShapeBuilder shape(log, mode, theListener);
    if (shape.hasError()) {
        reportError(shape.error(), log);
    } else {
        save(shape, path, kind, mode, log);
    }
}

void exportTo(const std::string& path, const FileKind& kind, ExportMode mode) {
    showProgressDialog();
    setProgress("Beginning export...", 0);
    ExportLog log(path + ".log");
    setProgress("Starting log file...", 10);
    log.writeBanner(theModule.host);
    setProgress("Exploring shape (This may take a while)...", 20);
    try {
        buildAndSave(path, kind, mode, log);
    } catch (const std::bad_alloc&) {
        log << "Error: " << kNoMemoryText;
        throw;
    }
    log.close();
    tellWriteFault(log.fault());
}

void runExport(const FileKind& kind, ExportMode mode) {
    initializeProgressBarClass();
    const std::string path = askForOutputPath(kind);
    if (!path.empty()) exportTo(path, kind, mode);
}

}  // namespace

void listenToExports(MessageListener listener) { theListener = std::move(listener); }

void exportDts() {
    // The check box counts as it is when the button is pressed, before the dialog comes up.
    runExport(kShapeFile, isAnimationChecked() ? ExportMode::ShapeWithAnimation : ExportMode::ShapeOnly);
}

void reportNoMemory() {
    closeProgressDialog();
    tell(kNoMemory, {});
    showMessage(kNoMemoryText, MB_ICONERROR);
}

void exportDsq() { runExport(kSequenceFile, ExportMode::SequencesOnly); }

}  // namespace marrowfen::plugin
