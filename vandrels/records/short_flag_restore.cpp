#include "records/short_flag_restore.h"

ShortFlagRestore::ShortFlagRestore(std::uint16_t* word, std::uint16_t mask, std::uint16_t oldValue)
    : word_(word), mask_(mask), undo_(std::uint16_t(oldValue & mask)) {}

void ShortFlagRestore::Restore(int isUndo) {
    if (isUndo) redo_ = std::uint16_t(*word_ & mask_);
    *word_ = std::uint16_t((*word_ & ~mask_) | undo_);
}

void ShortFlagRestore::Redo() { *word_ = std::uint16_t((*word_ & ~mask_) | redo_); }

void SetShortFlags(std::uint16_t& word, std::uint16_t mask, std::uint16_t value) {
    const std::uint16_t next = std::uint16_t((word & ~mask) | (value & mask));
    if (next == word) return;
    if (theHold.Holding()) theHold.Put(new ShortFlagRestore(&word, mask, word));
    word = next;
}
