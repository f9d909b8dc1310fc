#pragma once

// What the plug-in's own sources share. Includes windows.h, so nothing outside plugin/ includes this but its tests.

#include <windows.h>

#include "host/host_program.h"

namespace marrowfen::plugin {

inline constexpr char kCaption[] = "Marrowfen";

// One instance per loaded plug-in, set and read on the host's user-interface thread. A window of null doesn't exist.
struct Module {
    HINSTANCE instance = nullptr;  // holds the dialog resources
    void* secondWord = nullptr;    // of tsxGetData
    HWND mainView = nullptr;       // the host's; owner of the panel
    HWND panel = nullptr;
    HWND progress = nullptr;
    HostVersion host;  // of the last left click
};

extern Module theModule;

// The error of memory that isn't there: the host mustn't die of it.
inline constexpr char kNoMemoryText[] = "Out of memory.";

// A task-modal message box owned by the panel.
void showMessage(const char* text, UINT icon);

// The panel (panel.cpp).
void openPanel();
void closePanel();

// Shows the About box until it is dismissed (about.cpp).
void showAboutBox();

// What the buttons "Export" and "Export DSQ" do, from the question for the output file to the last message
// (export_commands.cpp).
void exportDts();
void exportDsq();

// Tells of memory that wasn't there, in a box and to who listens (export_commands.cpp).
void reportNoMemory();

// The progress dialog (progress_dialog.cpp). It shows a text and a percentage; setProgress repaints it at once.
void showProgressDialog();
void setProgress(const char* text, int percent);
void closeProgressDialog();

// Appends the lines of the host's node list to the panel's combo box; without a list it stays empty
// (node_helper.cpp).
void loadNodeList(HWND panel);

// Adds a marker cube of this name to the scene, on the layer of named nodes, which is created when there is none
// (node_helper.cpp).
void addNode(const char* name);

}  // namespace marrowfen::plugin
