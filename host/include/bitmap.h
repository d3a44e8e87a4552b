// The bitmap manager's folder history (bmmHistoryList): the folders a user recently picked files from, kept
// under a title in the host's INI file, shown in a combo box of a file dialog's template so that choosing one
// moves the dialog there.
#pragma once

#include "strclass.h"
#include "winshim.h"

#include <vector>

class bmmHistoryList {
public:
    // At most this many folders are kept, the most recent first.
    static constexpr int kMaxEntries = 25;

    // Forgets the title, the dialog and the folders.
    void Reset();
    // Names the list (its place in the INI file) and empties it.
    void Init(const MCHAR* title);
    // The file dialog's template that shows the list: its combo box mru and the combo's label mruText.
    void SetDlgInfo(HWND dialog, int mru, int mruText);
    // Empties the list.
    void LoadDefaults();
    // Reads the list of the title from the INI file; SaveList writes it there.
    void LoadList();
    void SaveList();
    // Fills the combo box with the list, the first folder selected.
    void ListToDialog();
    // Puts a folder at the top (moving it there when it is listed already; an empty text is kept as it is).
    void NewPath(const MCHAR* path);
    // Moves the file dialog to the folder selected in the combo box (nothing when none is selected).
    void SetPath();
    int Count() const { return int(paths_.size()); }
    const MCHAR* Path(int i) const;

private:
    MSTR title_;
    HWND dialog_ = nullptr;
    int mru_ = 0;
    int mruText_ = 0;
    std::vector<MSTR> paths_;
};
