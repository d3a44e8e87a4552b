// The undo record of a record's number path: undo puts the numbers held back, redo the ones undo replaced.
#pragma once

#include "hold.h"
#include "ref.h"
#include "tab.h"

#include <cstdint>

class RefAnim;

class PathByNumberRestore : public RestoreObj {
public:
    PathByNumberRestore(RefAnim* record, const Tab<int>& undoNumbers);
    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"PathByNumberRestore"); }

private:
    // The record, or null once it is gone.
    RefAnim* live() const;

    Tab<int> undo_;
    Tab<int> redo_;
    RefAnim* record_;
    AnimHandle handle_;
};

// The undo record of some override state bits: their old value, and on undo the value redo puts back.
class OverrideBitsRestore : public RestoreObj {
public:
    OverrideBitsRestore(RefAnim* record, std::uint8_t bits, std::uint8_t oldValue);
    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"OverrideBitsRestore"); }

private:
    RefAnim* live() const;

    RefAnim* record_;
    AnimHandle handle_;
    std::uint8_t bits_;
    std::uint8_t undo_;
    std::uint8_t redo_ = 0;
};
