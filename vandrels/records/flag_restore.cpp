#include "records/flag_restore.h"

namespace {
template <class Restore, class Word> void SetFlags(Word& word, Word mask, Word value) {
    const Word next = Word((word & ~mask) | (value & mask));
    if (next == word) return;
    if (theHold.Holding()) theHold.Put(new Restore(&word, mask, word));
    word = next;
}
}  // namespace

void SetLongFlags(std::uint32_t& word, std::uint32_t mask, std::uint32_t value) {
    SetFlags<LongFlagRestore>(word, mask, value);
}

void SetShortFlags(std::uint16_t& word, std::uint16_t mask, std::uint16_t value) {
    SetFlags<ShortFlagRestore>(word, mask, value);
}
