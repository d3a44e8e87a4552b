// The reset mask of the advanced reset: which node categories and which parameter groups a reset touches.
#pragma once

#include "bitarray.h"
#include "maxtypes.h"

namespace vandrels {

// Mode bits.
constexpr DWORD kResetReferences = 0x1;  // whole references
constexpr DWORD kResetNodes = 0x2;       // selected nodes
// Categories: Geometry 0x8 ... Bone Objects 0x400; parameter groups: Base Object 0x800 ... Deleted Nodes 0x80000.
constexpr DWORD kResetFirstCategoryBit = 0x8;
constexpr DWORD kResetAllCategories = 0x7F8;
constexpr DWORD kResetFirstParameterBit = 0x800;
constexpr DWORD kResetAllParameters = 0xFF800;
constexpr DWORD kResetMaterial = 0x4000;

// The category and parameter bits chosen by two bit arrays (bit 0 is the script's bit 1). No array chooses
// every category or every parameter group; an empty array chooses none. Bits past the eighth category and the
// ninth parameter group are ignored.
DWORD BuildResetMask(const BitArray* categories, const BitArray* parameters);

}  // namespace vandrels
