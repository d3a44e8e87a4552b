// BitArray: a resizable array of bits (scripts write them #{1, 3..5}; bit i of a script is index i-1 here).
#pragma once

#include "maxtypes.h"

#include <vector>

class BitArray {
public:
    BitArray() = default;
    explicit BitArray(int n) : bits_(n < 0 ? 0 : std::size_t(n), false) {}
    int GetSize() const { return int(bits_.size()); }
    void SetSize(int n, int save = 0);
    int operator[](int i) const { return i >= 0 && i < GetSize() && bits_[std::size_t(i)] ? 1 : 0; }
    void Set(int i) { Set(i, 1); }
    void Set(int i, int b);
    void Clear(int i) { Set(i, 0); }
    void SetAll() { bits_.assign(bits_.size(), true); }
    void ClearAll() { bits_.assign(bits_.size(), false); }
    int NumberSet() const;
    bool IsEmpty() const { return NumberSet() == 0; }
    bool AnyBitSet() const { return !IsEmpty(); }
    bool operator==(const BitArray& o) const { return bits_ == o.bits_; }
    bool operator!=(const BitArray& o) const { return !(*this == o); }

private:
    std::vector<bool> bits_;
};
