// The undo system: theHold collects restore objects between Begin and Accept into one named undo step;
// undo and redo replay the steps. Restore objects hear when their hold ends (EndHold).
#pragma once

#include "strclass.h"

#include <memory>
#include <string>
#include <vector>

class RestoreObj {
public:
    virtual ~RestoreObj() = default;
    // isUndo is 1 when the user undoes (save what redo needs first), 0 when a cancelled hold is rolled back.
    virtual void Restore(int isUndo) = 0;
    virtual void Redo() = 0;
    virtual int Size() { return 1; }
    // The hold that this object was put into was accepted or cancelled.
    virtual void EndHold() {}
    virtual MSTR Description() { return MSTR(L"---"); }
};

class Hold {
public:
    Hold();
    ~Hold();

    // Opens a hold; holds nest, and only the outermost Accept makes an undo step.
    void Begin();
    // Closes the innermost hold; the outermost one becomes the undo step named name.
    void Accept(const MCHAR* name);
    void Accept(const MSTR& name) { Accept(name.data()); }
    // Closes the innermost hold and rolls its changes back.
    void Cancel();
    // Takes ownership of rob while holding (and not suspended); deletes it otherwise.
    void Put(RestoreObj* rob);
    BOOL Holding() const;
    void Suspend() { ++suspend_; }
    void Resume() { if (suspend_ > 0) --suspend_; }
    BOOL IsSuspended() const { return suspend_ > 0; }
    // True while an undo (Restoring) or a redo (Redoing) runs.
    BOOL Restoring() const { return restoring_; }
    BOOL Redoing() const { return redoing_; }
    BOOL RestoreOrRedoing() const { return restoring_ || redoing_; }
    // Depth of open holds.
    int GetBeginDepth() const { return int(levels_.size()); }

    // The undo and redo stacks.
    bool Undo();
    bool Redo();
    void FlushUndoBuffer();
    int NumUndoEntries() const { return int(undo_.size()); }
    int NumRedoEntries() const { return int(redo_.size()); }
    // Name of entry i counted from the top of the stack (0 = the step undo would take back).
    MSTR UndoEntryName(int i) const;
    MSTR RedoEntryName(int i) const;
    // Most steps kept; older ones are dropped.
    void SetUndoLevels(int n) { levels_max_ = n < 1 ? 1 : n; }

private:
    struct Step {
        MSTR name;
        std::vector<std::unique_ptr<RestoreObj>> objects;
    };
    void trim();

    std::vector<std::vector<std::unique_ptr<RestoreObj>>> levels_;
    std::vector<Step> undo_;
    std::vector<Step> redo_;
    int suspend_ = 0;
    bool restoring_ = false;
    bool redoing_ = false;
    int levels_max_ = 1000;
};

extern Hold theHold;
