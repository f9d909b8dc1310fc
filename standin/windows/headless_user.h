#pragma once

// Stands for the person in front of a machine without a screen: the calls of include/windows.h hand every question to a
// HeadlessUser. One desktop serves the process, and one thread.

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace marrowfen::headless {

// What a program asks of the save dialog.
struct SaveQuestion {
    std::vector<std::pair<std::string, std::string>> filters;  // label and pattern
    int selectedFilter = 0;                                    // from 1
    std::string initialPath;
    std::string defaultExtension;
    unsigned flags = 0;  // OFN_
    int bufferSize = 0;
    HWND owner = nullptr;
    HINSTANCE instance = nullptr;
    bool hasFolder = false;
    bool hasTitle = false;
};

struct Message {
    std::string text;
    std::string caption;
    unsigned style = 0;  // MB_
    HWND owner = nullptr;
};

class HeadlessUser {
public:
    virtual ~HeadlessUser() = default;

    // What is typed into the save dialog; none cancels it. The dialog adds the default extension to a name without
    // one, and fails on a folder that doesn't exist and on a path that its buffer can't hold.
    virtual std::optional<std::string> savePath(const SaveQuestion& question) = 0;

    // Whether an existing file may be replaced; no cancels the save dialog.
    virtual bool mayOverwrite(const std::string&) { return true; }

    // Sees a message box and closes it with its OK button.
    virtual void readMessage(const Message& message) = 0;

    // A window was painted at once.
    virtual void seeRepaint(HWND) {}

    // A modal dialog is up. One that is still up on return gets WM_CLOSE.
    virtual void useModalDialog(HWND) {}
};

struct Control {
    int id = -1;
    std::string kind;  // as in the resource script: "GROUPBOX", ...; the window class of a "CONTROL"
    std::string text;
};

struct DialogTemplate {
    int id = 0;
    std::string caption;
    std::vector<Control> controls;
};

// The dialogs of a resource script. The numbers behind the names come from the #define lines of the text before them.
std::vector<DialogTemplate> readDialogs(std::string_view script);

// The desktop on which windows exist while it lives. At most one at a time.
class Desktop {
public:
    Desktop(HeadlessUser& user, std::vector<DialogTemplate> dialogs);
    ~Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;

    // What the library with those dialogs is loaded as.
    HINSTANCE library() const;

    // The dialogs that are open, the oldest first; the number of the resource that a dialog was made of, 0 for none.
    std::vector<HWND> openDialogs() const;
    int resourceOf(HWND dialog) const;
    HWND ownerOf(HWND dialog) const;
    HWND focus() const;
    bool isRedrawn(HWND control) const;  // not switched off by WM_SETREDRAW
};

}  // namespace marrowfen::headless
