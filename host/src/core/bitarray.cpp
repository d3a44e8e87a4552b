// BitArray: a resizable array of bits.
#include "bitarray.h"

#include <algorithm>

void BitArray::SetSize(int n, int save) {
    if (n < 0) n = 0;
    if (!save) bits_.assign(std::size_t(n), false);
    else bits_.resize(std::size_t(n), false);
}

void BitArray::Set(int i, int b) {
    if (i >= 0 && i < GetSize()) bits_[std::size_t(i)] = b != 0;
}

int BitArray::NumberSet() const { return int(std::count(bits_.begin(), bits_.end(), true)); }
