// The bitmap manager's folder history: kept in the host's INI file, section "<title> History", keys "Path1",
// "Path2", ... in order; shown in a file dialog template's combo box.
#include "bitmap.h"

#include "commdlg.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"

#include <algorithm>
#include <string>

namespace {

std::wstring Section(const MSTR& title) { return std::wstring(title.data()) + L" History"; }
std::wstring Key(int i) { return L"Path" + std::to_wstring(i + 1); }

}  // namespace

void bmmHistoryList::Reset() {
    title_ = L"";
    dialog_ = nullptr;
    mru_ = mruText_ = 0;
    paths_.clear();
}

void bmmHistoryList::Init(const MCHAR* title) {
    title_ = title ? title : L"";
    paths_.clear();
}

void bmmHistoryList::SetDlgInfo(HWND dialog, int mru, int mruText) {
    dialog_ = dialog;
    mru_ = mru;
    mruText_ = mruText;
}

void bmmHistoryList::LoadDefaults() { paths_.clear(); }

void bmmHistoryList::LoadList() {
    paths_.clear();
    const hostrt::IniFile& ini = hostrt::HostIni();
    for (int i = 0; i < kMaxEntries && ini.Contains(Section(title_), Key(i)); ++i)
        paths_.emplace_back(ini.Get(Section(title_), Key(i)).c_str());
}

void bmmHistoryList::SaveList() {
    hostrt::IniFile& ini = hostrt::HostIni();
    ini.RemoveSection(Section(title_));
    for (int i = 0; i < Count(); ++i) ini.Set(Section(title_), Key(i), paths_[std::size_t(i)].data());
}

void bmmHistoryList::ListToDialog() {
    if (!dialog_) return;
    SendDlgItemMessageW(dialog_, mru_, CB_RESETCONTENT, 0, 0);
    for (const MSTR& path : paths_) SendDlgItemMessageW(dialog_, mru_, CB_ADDSTRING, 0, LPARAM(path.data()));
    if (!paths_.empty()) SendDlgItemMessageW(dialog_, mru_, CB_SETCURSEL, 0, 0);
}

void bmmHistoryList::NewPath(const MCHAR* path) {
    const MSTR entry = path ? path : L"";
    paths_.erase(std::remove(paths_.begin(), paths_.end(), entry), paths_.end());
    paths_.insert(paths_.begin(), entry);
    if (Count() > kMaxEntries) paths_.resize(kMaxEntries);
    ListToDialog();
}

void bmmHistoryList::SetPath() {
    if (!dialog_) return;
    const LRESULT item = SendDlgItemMessageW(dialog_, mru_, CB_GETCURSEL, 0, 0);
    if (item < 0 || item >= Count()) return;
    // As a user would: the folder typed into the file-name field, then OK, which moves the dialog into it.
    HWND fileDialog = GetParent(dialog_);
    SendMessageW(fileDialog, CDM_SETCONTROLTEXT, edt1, LPARAM(paths_[std::size_t(item)].data()));
    SendMessageW(fileDialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
}

const MCHAR* bmmHistoryList::Path(int i) const {
    return i >= 0 && i < Count() ? paths_[std::size_t(i)].data() : nullptr;
}
