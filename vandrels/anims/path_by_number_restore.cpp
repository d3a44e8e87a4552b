#include "anims/path_by_number_restore.h"

#include "anims/ref_anim.h"

PathByNumberRestore::PathByNumberRestore(RefAnim* record, const Tab<int>& undoNumbers)
    : undo_(undoNumbers), record_(record), handle_(Animatable::GetHandleByAnim(record)) {}

RefAnim* PathByNumberRestore::live() const {
    return Animatable::GetAnimByHandle(handle_) == record_ ? record_ : nullptr;
}

void PathByNumberRestore::Restore(int isUndo) {
    RefAnim* record = live();
    if (!record) return;
    if (isUndo) redo_ = record->GetPathByNumber();
    record->SetPathByNumber(undo_, false);
}

void PathByNumberRestore::Redo() {
    if (RefAnim* record = live()) record->SetPathByNumber(redo_, false);
}

OverrideBitsRestore::OverrideBitsRestore(RefAnim* record, std::uint8_t bits, std::uint8_t oldValue)
    : record_(record), handle_(Animatable::GetHandleByAnim(record)), bits_(bits), undo_(oldValue & bits) {}

RefAnim* OverrideBitsRestore::live() const {
    return Animatable::GetAnimByHandle(handle_) == record_ ? record_ : nullptr;
}

void OverrideBitsRestore::Restore(int isUndo) {
    RefAnim* record = live();
    if (!record) return;
    if (isUndo) redo_ = record->TestOverrideBits(bits_);
    record->SetOverrideState(std::uint8_t((record->GetOverrideState() & ~bits_) | undo_));
}

void OverrideBitsRestore::Redo() {
    if (RefAnim* record = live())
        record->SetOverrideState(std::uint8_t((record->GetOverrideState() & ~bits_) | redo_));
}
