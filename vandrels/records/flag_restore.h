// The undo records of some bits of a record's override flag word: LongFlagRestore for the node records' 32-bit
// word, ShortFlagRestore for the material records' 16-bit word. Each keeps the word's address, the mask of the
// bits that changed and their value before the change.
#pragma once

#include "hold.h"

#include <cstdint>

template <class Word> class FlagRestore : public RestoreObj {
public:
    // word must outlive the undo step; oldValue holds the masked bits as they were before the change.
    FlagRestore(Word* word, Word mask, Word oldValue, const MCHAR* name)
        : word_(word), mask_(mask), undo_(Word(oldValue & mask)), name_(name) {}

    void Restore(int isUndo) override {
        if (isUndo) redo_ = Word(*word_ & mask_);
        *word_ = Word((*word_ & ~mask_) | undo_);
    }
    void Redo() override { *word_ = Word((*word_ & ~mask_) | redo_); }
    MSTR Description() override { return MSTR(name_); }

private:
    Word* word_;
    Word mask_;
    Word undo_;
    Word redo_ = 0;
    const MCHAR* name_;
};

class LongFlagRestore : public FlagRestore<std::uint32_t> {
public:
    LongFlagRestore(std::uint32_t* word, std::uint32_t mask, std::uint32_t oldValue)
        : FlagRestore(word, mask, oldValue, L"LongFlagRestore") {}
};

class ShortFlagRestore : public FlagRestore<std::uint16_t> {
public:
    ShortFlagRestore(std::uint16_t* word, std::uint16_t mask, std::uint16_t oldValue)
        : FlagRestore(word, mask, oldValue, L"ShortFlagRestore") {}
};

// Set the masked bits of word to value (only those bits), putting a restore object on the undo stack first when
// the host is holding and the bits really change.
void SetLongFlags(std::uint32_t& word, std::uint32_t mask, std::uint32_t value);
void SetShortFlags(std::uint16_t& word, std::uint16_t mask, std::uint16_t value);
