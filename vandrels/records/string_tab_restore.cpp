#include "records/string_tab_restore.h"

Tab<WStr*> CopyStringTab(const Tab<WStr*>& from) {
    Tab<WStr*> copy;
    copy.Resize(from.Count());
    for (WStr* s : from) copy.Append(s ? new WStr(*s) : nullptr);
    return copy;
}

void FreeStringTab(Tab<WStr*>& tab) {
    for (WStr* s : tab) delete s;
    tab.ZeroCount();
}

StringTabRestore::StringTabRestore(Tab<WStr*>* live) : live_(live), undo_(CopyStringTab(*live)) {}

StringTabRestore::~StringTabRestore() {
    FreeStringTab(undo_);
    FreeStringTab(redo_);
}

void StringTabRestore::Restore(int isUndo) {
    if (isUndo) {
        FreeStringTab(redo_);
        redo_ = CopyStringTab(*live_);
    }
    FreeStringTab(*live_);
    *live_ = CopyStringTab(undo_);
}

void StringTabRestore::Redo() {
    FreeStringTab(*live_);
    *live_ = CopyStringTab(redo_);
}
