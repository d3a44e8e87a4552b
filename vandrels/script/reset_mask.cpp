#include "reset_mask.h"

namespace vandrels {

namespace {

DWORD BitsFrom(const BitArray* chosen, int count, DWORD firstBit, DWORD all) {
    if (!chosen) return all;
    DWORD bits = 0;
    for (int i = 0; i < count && i < chosen->GetSize(); ++i)
        if ((*chosen)[i]) bits |= firstBit << i;
    return bits;
}

}  // namespace

DWORD BuildResetMask(const BitArray* categories, const BitArray* parameters) {
    return BitsFrom(categories, 8, kResetFirstCategoryBit, kResetAllCategories) |
           BitsFrom(parameters, 9, kResetFirstParameterBit, kResetAllParameters);
}

}  // namespace vandrels
