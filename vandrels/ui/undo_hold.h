// One undo step for one action of a window: the hold begins with the guard and is accepted under its name when
// the action is done, or cancelled when the action throws.
#pragma once

#include "hold.h"

namespace vandrels {

class UndoHold {
public:
    explicit UndoHold(const MCHAR* name) : name_(name) { theHold.Begin(); }
    ~UndoHold() {
        if (open_) theHold.Cancel();
    }
    UndoHold(const UndoHold&) = delete;
    UndoHold& operator=(const UndoHold&) = delete;
    void Accept() {
        if (!open_) return;
        open_ = false;
        theHold.Accept(name_);
    }

private:
    const MCHAR* name_;
    bool open_ = true;
};

// The names the windows' undo steps carry.
inline constexpr const MCHAR* kParameterChangeUndo = L"Vandrel Parameter Change";
inline constexpr const MCHAR* kSelectionChangeUndo = L"Vandrel Selection Change";

}  // namespace vandrels
