#include "index_list.h"

namespace vandrels {

std::vector<int> ValidIndices(const Tab<int>* indices, int count) {
    std::vector<int> valid;
    if (!indices) return valid;
    for (int k = 0; k < indices->Count(); ++k) {
        const int index = (*indices)[k];
        if (index >= 0 && index < count) valid.push_back(index);
    }
    return valid;
}

}  // namespace vandrels
