// A scope in which the host records no undo objects: for record changes that must not be undone on their own
// (the refreshes of collect, reference lists whose slots shift).
#pragma once

#include "hold.h"

class UndoBypass {
public:
    UndoBypass() { theHold.Suspend(); }
    ~UndoBypass() { theHold.Resume(); }
    UndoBypass(const UndoBypass&) = delete;
    UndoBypass& operator=(const UndoBypass&) = delete;
};
