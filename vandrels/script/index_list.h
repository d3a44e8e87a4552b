// The rules for the index arrays that scripts pass to the bulk reference operations.
#pragma once

#include "tab.h"

#include <vector>

namespace vandrels {

// The entries of indices (0-based) that name an item of a list of count items, in the order given: an index
// below 0 or not below count is skipped without a message, a repeated one is kept every time. No array gives
// no entries.
std::vector<int> ValidIndices(const Tab<int>* indices, int count);

// The items that indices name, by the same rules.
template <typename T>
std::vector<T> ItemsAt(const Tab<int>* indices, const std::vector<T>& items) {
    std::vector<T> picked;
    for (int i : ValidIndices(indices, int(items.size()))) picked.push_back(items[std::size_t(i)]);
    return picked;
}

}  // namespace vandrels
