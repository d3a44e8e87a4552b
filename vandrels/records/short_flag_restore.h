// ShortFlagRestore: the undo record of some bits of a 16-bit flag word (a material record's flags). It keeps the
// word's address, the mask of the bits that changed and their value before the change.
#pragma once

#include "hold.h"

#include <cstdint>

class ShortFlagRestore : public RestoreObj {
public:
    // word must outlive the undo step; oldValue holds the masked bits as they were before the change.
    ShortFlagRestore(std::uint16_t* word, std::uint16_t mask, std::uint16_t oldValue);

    void Restore(int isUndo) override;
    void Redo() override;
    MSTR Description() override { return MSTR(L"ShortFlagRestore"); }

private:
    std::uint16_t* word_;
    std::uint16_t mask_;
    std::uint16_t undo_;
    std::uint16_t redo_ = 0;
};

// Sets the masked bits of word to value (only those bits), putting a ShortFlagRestore on the undo stack first
// when the host is holding and the bits really change.
void SetShortFlags(std::uint16_t& word, std::uint16_t mask, std::uint16_t value);
