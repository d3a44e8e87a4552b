// StringTabRestore: the undo record of an array of owned strings. It keeps deep copies of the array as it was
// (for undo) and as it is when undone (for redo), and puts a copy back into the live array.
#pragma once

#include "hold.h"
#include "tab.h"

class StringTabRestore : public RestoreObj {
public:
    // live must outlive the undo step; the record takes a deep copy of it now.
    explicit StringTabRestore(Tab<WStr*>* live);
    ~StringTabRestore() override;
    StringTabRestore(const StringTabRestore&) = delete;
    StringTabRestore& operator=(const StringTabRestore&) = delete;

    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"StringTabRestore"); }

private:
    Tab<WStr*>* live_;
    Tab<WStr*> undo_;
    Tab<WStr*> redo_;
};

// Helpers for arrays of owned strings.
Tab<WStr*> CopyStringTab(const Tab<WStr*>& from);
void FreeStringTab(Tab<WStr*>& tab);
