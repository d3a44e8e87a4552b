// The undo record of a modifier-stack change on a node record: the mirrors and change lists before the change
// (and, once undone, after it), so that undo and redo put the record's view of the stacks back with the stacks.
#pragma once

#include "hold.h"
#include "records/modifier_mirrors.h"

#include <memory>

class RefBase;

class RefModsRestore : public RestoreObj {
public:
    // The record's host flag bit that says a RefModsRestore is in the open undo step.
    static constexpr DWORD kPutFlag = 0x1000;

    // Puts one for record (whose mirrors are mirrors) when the host holds and the open step has none yet.
    static void PutFor(RefBase& record, NodeModifierMirrors& mirrors);

    RefModsRestore(RefBase& record, NodeModifierMirrors& mirrors);
    void Restore(int isUndo) override;
    void Redo() override;
    int Size() override { return 120; }
    void EndHold() override;
    MSTR Description() override { return MSTR(L"RefModsRestore"); }

private:
    // The mirrors while their record is alive, else null.
    NodeModifierMirrors* mirrors() const;

    AnimHandle record_;
    NodeModifierMirrors* mirrors_;
    std::unique_ptr<NodeModifierMirrors::Snapshot> undo_;
    std::unique_ptr<NodeModifierMirrors::Snapshot> redo_;
};
