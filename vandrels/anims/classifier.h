// The animatable classifier: for an animatable met while an owner record walks the sub-anims of its scene
// item, the record type code that says which kind of animatable record it needs and whether the walk goes on
// below it. It asks the host only; it keeps no state and never fails.
#pragma once

#include "ref.h"

#include <cstdint>

// Bits of a record type code above the kind number (the low 16 bits); they steer the owner's walk.
constexpr std::uint32_t kCodeMakeRecord = 0x00010000;      // the tree build makes (or reuses) a clean record
constexpr std::uint32_t kCodeWalkSubs = 0x00020000;        // walk the sub-anims; without it only entry 0
constexpr std::uint32_t kCodeCountReplaced = 0x00040000;   // a rescan counts a replaced animatable here too
constexpr std::uint32_t kCodeKindOnReplace = 0x00080000;   // a rescan makes this kind (else a plain record)
constexpr std::uint32_t kCodeOption = 0x00100000;          // the record's option word becomes 1
constexpr std::uint32_t kCodeNoRescanRecord = 0x00200000;  // a rescan never makes a record here
constexpr std::uint32_t kCodeNodeSubAnim = 0x00400000;     // only in the code of a node met as a sub-anim

// The two special codes: no record of its own (walk the sub-anims; a rescan makes a plain record), and ignore.
constexpr std::uint32_t kCodeNoRecord = 0;
constexpr std::uint32_t kCodeIgnore = 2;

// The record type code of anim, met below parent (null at the top of a walk). A null anim answers 0.
std::uint32_t ClassifyAnim(Animatable* anim, Animatable* parent);
