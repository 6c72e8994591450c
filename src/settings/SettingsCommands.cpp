#include "settings/SettingsCommands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <span>

#include "files/TextFiles.h"
#include "link/Link.h"
#include "model/Blocks.h"
#include "model/Cells.h"
#include "settings/SettingsFormat.h"
#include "shell/AppState.h"

namespace {

constexpr size_t OpenTitleLine = 165;
constexpr size_t SaveTitleLine = 166;
constexpr DWORD WriteReplyLength = 3;

// A caption without a line of its own is the same in every language.
constexpr size_t NoLine = LangLineCount;
constexpr const char* FileErrorCaption = "I/O Error";

struct Box {
    size_t text;
    size_t caption;
    UINT style;
};
constexpr Box Unreadable = {167, NoLine, MB_OK | MB_ICONEXCLAMATION};
constexpr Box Unwritable = {174, NoLine, MB_OK | MB_ICONEXCLAMATION};
constexpr Box Mismatch = {168, 169, MB_OK | MB_ICONEXCLAMATION};
constexpr Box WriteFailed = {171, 170, MB_OK | MB_ICONEXCLAMATION};
constexpr Box Overwrite = {173, 172, MB_YESNO | MB_ICONINFORMATION};

int Show(const Box& box) {
    const char* caption = box.caption == NoLine ? FileErrorCaption : LangTable[box.caption].data();
    return MessageBoxA(PageWindow, LangTable[box.text].data(), caption, box.style);
}

using Path = std::array<char, PathSize>;

// Shows what path holds and puts the chosen file there; false if the user turns back.
bool AskForFile(BOOL (*ask)(OPENFILENAMEA*), size_t titleLine, Path& path) {
    const SettingsFormat& format = SettingsFormatOf(ControllerFamily);
    OPENFILENAMEA dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = PageWindow;
    dialog.lpstrFilter = format.filter;
    dialog.lpstrDefExt = format.extension;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrTitle = LangTable[titleLine].data();
    dialog.Flags = OFN_EXPLORER;
    return ask(&dialog) != 0;
}

// The file to save to; false if the user turns back. The name that was refused shows in the next dialog.
bool AskForTarget(Path& path) {
    do {
        if (!AskForFile(GetSaveFileNameA, SaveTitleLine, path)) {
            return false;
        }
    } while (FileOpens(path.data()) && Show(Overwrite) != IDYES);
    return true;
}

void ReadAllBlocks(const SettingsFormat& format) {
    ReadLiveBlock();
    ReadParamBlockA();
    ReadParamBlockB();
    if (format.family == Family4) {
        ReadParamBlockC();
    }
}

// A key without a number stands for the value that the controller holds, so that the engine runs as before. False if
// that value is not known.
bool FillGaps(const SettingsFormat& format) {
    const auto given = std::span(CellGiven).first(format.cells.size());
    if (std::ranges::find(given, false) == given.end()) {
        return true;
    }
    if (LinkServed()) {
        ReadAllBlocks(format);
    }
    for (size_t value = 0; value < given.size(); ++value) {
        const MirrorByte place = CellMirror(format.cells[value], format.family);
        if (!given[value] && MirrorValue({place.mirror, 0}) != BlockMarker) {
            return false;
        }
        if (!given[value]) {
            CellImage[value] = MirrorValue(place);
        }
    }
    return true;
}

// Ends at the first write that is not confirmed.
bool WriteCells(const SettingsFormat& format) {
    for (size_t value = 0; value < format.cells.size(); ++value) {
        // A write that is not even sent leaves the count alone.
        LastByteCount = 0;
        WriteCell(format.cells[value], CellImage[value]);
        if (LastByteCount != WriteReplyLength) {
            return false;
        }
    }
    return true;
}

}  // namespace

void OpenSettings() {
    Path path{};
    if (AskForFile(GetOpenFileNameA, OpenTitleLine, path)) {
        LoadSettingsFile(path.data());
    }
}

void SaveSettings() {
    Path path{};
    if (AskForTarget(path)) {
        SaveSettingsFile(path.data());
    }
}

// The format is chosen anew after the dialog: behind it another controller may have been linked, and what decides is
// the one that the values go to or come from.
void LoadSettingsFile(const char* path) {
    std::FILE* file = OpenTextFile(path);
    if (!file) {
        Show(Unreadable);
        return;
    }
    const SettingsFormat& format = SettingsFormatOf(ControllerFamily);
    ScanSettings(file, format);
    if (!SettingsMatch(format)) {
        Show(Mismatch);
    } else if (!FillGaps(format) || !WriteCells(format)) {
        Show(WriteFailed);
    }
}

void SaveSettingsFile(const char* path) {
    std::FILE* file = BeginReplacing(path);
    if (!file) {
        Show(Unwritable);
        return;
    }
    const SettingsFormat& format = SettingsFormatOf(ControllerFamily);
    ReadAllBlocks(format);
    WriteSettings(file, format);
    if (!EndReplacing(file, path)) {
        Show(Unwritable);
    }
}
