// Resource numbers, for the sources and for the resource script. Numbers only: the resource compiler reads this too.

// Dialogs
#define IDD_PANEL 107
#define IDD_PROGRESS 109
#define IDD_ABOUT 112

// Bitmaps
#define IDB_ICON 101
#define IDB_ABOUT 111

// Controls of the panel
#define IDC_NODE_NAME 1000
#define IDC_ADD_NODE 1001
#define IDC_EXPORT_DTS 1002
#define IDC_ABOUT 1003
#define IDC_EXPORT_FRAME 1004
#define IDC_NODE_FRAME 1005
#define IDC_WITH_ANIMATION 1006
#define IDC_EXPORT_DSQ 1013

// Controls of the progress dialog
#define IDC_PROGRESS_BAR 1009
#define IDC_PROGRESS_TEXT 1010
