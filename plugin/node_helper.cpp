#include <sys/stat.h>
#include <windows.h>

#include <fstream>
#include <optional>
#include <string>

#include "builder/layer_names.h"
#include "host/host_program.h"
#include "host/layers.h"
#include "host/marker_cube.h"
#include "plugin/module.h"
#include "plugin/resources/resource.h"

namespace marrowfen::plugin {

namespace {

constexpr size_t kListPathSize = 264;  // the terminating zero included
constexpr size_t kPieceSize = 63;      // bytes of a line that become one entry
constexpr char kNodesLayer[] = "nodes";

// Empty when there is no host folder, or one whose path would have to be cut: the list of another folder is worse
// than none.
std::string nodeListPath() {
    const std::optional<std::string> folder = hostFolder();
    if (!folder) return {};
    std::string path = *folder + "\\tsx\\marrowfen\\node_list.txt";
    if (path.size() >= kListPathSize) return {};
#ifndef _WIN32
    for (char& c : path) c = c == '\\' ? '/' : c;
#endif
    return path;
}

// Reading anything else, such as a FIFO, might never end.
bool isFile(const std::string& path) {
#ifdef _WIN32
    return !path.empty();
#else
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
#endif
}

// Text mode, the same on every platform: CR LF is a line end, Ctrl-Z is the end. -1 at the end.
int getTextCharacter(std::istream& file) {
    constexpr int kCtrlZ = 0x1A;
    int c = file.get();
    if (c == '\r' && file.peek() == '\n') c = file.get();
    // Nothing behind it is read, however the file is cut into pieces.
    if (c == kCtrlZ) file.setstate(std::ios::failbit);
    return file ? c : -1;
}

// The next line without its line end, or what of it fits a piece; false at the end of the file.
bool readPiece(std::istream& file, std::string& piece) {
    piece.clear();
    while (piece.size() < kPieceSize) {
        const int c = getTextCharacter(file);
        if (c == -1) return !piece.empty();
        if (c == '\n') return true;
        piece += static_cast<char>(c);
    }
    return true;
}

// The first layer whose name begins like a layer of named nodes; -1 for none.
short findNodesLayer() {
    const short count = numberOfLayerSlots();
    for (short slot = 0; slot < count; ++slot) {
        const std::optional<std::string> name = layerName(slot);
        if (name && roleOfName(*name) == LayerRole::Nodes) return slot;
    }
    return -1;
}

}  // namespace

void loadNodeList(HWND panel) {
    const std::string path = nodeListPath();
    if (!isFile(path)) return;
    std::ifstream file(path, std::ios::binary);
    if (!file) return;
    SendDlgItemMessageA(panel, IDC_NODE_NAME, WM_SETREDRAW, FALSE, 0);
    std::string piece;
    while (readPiece(file, piece)) {
        SendDlgItemMessageA(panel, IDC_NODE_NAME, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(piece.c_str()));
    }
    SendDlgItemMessageA(panel, IDC_NODE_NAME, WM_SETREDRAW, TRUE, 0);
}

void addNode(const char* name) {
    if (name[0] == '\0') {
        showMessage("Please enter a name for the node", MB_ICONINFORMATION);
        SendDlgItemMessageA(theModule.panel, IDC_NODE_NAME, WM_SETFOCUS, 0, 0);
        return;
    }
    short layer = findNodesLayer();
    if (layer < 0) layer = addLayer(kNodesLayer);
    if (layer < 0) {
        showMessage("Unable to create node layer.", MB_ICONERROR);
        return;
    }
    if (!addMarkerCube(name, layer)) showMessage("Unable to create node.", MB_ICONERROR);
}

}  // namespace marrowfen::plugin
