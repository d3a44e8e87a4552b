#include "records/mods_restore.h"

#include "records/ref_base.h"

void RefModsRestore::PutFor(RefBase& record, NodeModifierMirrors& mirrors) {
    if (!theHold.Holding() || theHold.IsSuspended() || theHold.RestoreOrRedoing() || record.TestAFlag(kPutFlag))
        return;
    record.SetAFlag(kPutFlag);
    theHold.Put(new RefModsRestore(record, mirrors));
}

RefModsRestore::RefModsRestore(RefBase& record, NodeModifierMirrors& mirrors)
    : record_(Animatable::GetHandleByAnim(&record)), mirrors_(&mirrors), undo_(mirrors.TakeSnapshot()) {}

NodeModifierMirrors* RefModsRestore::mirrors() const {
    return Animatable::GetAnimByHandle(record_) ? mirrors_ : nullptr;
}

void RefModsRestore::Restore(int isUndo) {
    NodeModifierMirrors* m = mirrors();
    if (!m) return;
    if (isUndo) redo_ = m->TakeSnapshot();
    m->RestoreSnapshot(*undo_);
}

void RefModsRestore::Redo() {
    NodeModifierMirrors* m = mirrors();
    if (m && redo_) m->RestoreSnapshot(*redo_);
}

void RefModsRestore::EndHold() {
    if (Animatable* record = Animatable::GetAnimByHandle(record_)) record->ClearAFlag(kPutFlag);
}
