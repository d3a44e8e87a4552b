// The record type codes: for each kind of animatable record, the walk bits (classifier.h) and the kind number in
// the low 16 bits. The classifier answers them, the factory makes a record for each, and each record reports its
// own; the numbers are file format (a record's type chunk holds them).
#pragma once

#include "anims/classifier.h"

#include <cstdint>

constexpr std::uint32_t kCodePlain = kCodeMakeRecord | 0x01;
constexpr std::uint32_t kCodePlainWithOption = kCodeMakeRecord | kCodeOption | 0x13;
constexpr std::uint32_t kCodeNodeAsSubAnim = kCodeCountReplaced | kCodeNodeSubAnim | 0x0B;
constexpr std::uint32_t kCodePblock = kCodeMakeRecord | kCodeWalkSubs | 0x03;
constexpr std::uint32_t kCodePblock2 = kCodeMakeRecord | kCodeWalkSubs | kCodeNoRescanRecord | 0x04;
constexpr std::uint32_t kCodePblock2ResizeOverride1 = kCodeMakeRecord | kCodeWalkSubs | kCodeNoRescanRecord | 0x29;
constexpr std::uint32_t kCodePblock2ResizeOverride2 = kCodeMakeRecord | kCodeWalkSubs | kCodeNoRescanRecord | 0x2A;
constexpr std::uint32_t kCodePblock2UndoGroup = kCodeMakeRecord | kCodeWalkSubs | 0x36;
constexpr std::uint32_t kCodeIndepRefs = kCodeMakeRecord | kCodeWalkSubs | 0x06;
constexpr std::uint32_t kCodeCA = kCodeMakeRecord | kCodeWalkSubs | 0x07;
constexpr std::uint32_t kCodeListCtrl = kCodeMakeRecord | kCodeWalkSubs | 0x08;
constexpr std::uint32_t kCodeWithRefs = kCodeMakeRecord | kCodeWalkSubs | 0x09;
constexpr std::uint32_t kCodeLocDep = kCodeMakeRecord | kCodeWalkSubs | 0x0C;
constexpr std::uint32_t kCodeLinkCtrl = kCodeMakeRecord | kCodeWalkSubs | 0x0D;
constexpr std::uint32_t kCodeBip = kCodeMakeRecord | 0x0E;
constexpr std::uint32_t kCodePointObj = kCodeMakeRecord | kCodeKindOnReplace | 0x10;
constexpr std::uint32_t kCodeStdLight = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x11;
constexpr std::uint32_t kCodePointMod = kCodeMakeRecord | 0x12;
constexpr std::uint32_t kCodeMod = kCodeMakeRecord | kCodeWalkSubs | 0x14;
constexpr std::uint32_t kCodeWithRefsMod = kCodeMakeRecord | kCodeWalkSubs | 0x15;
constexpr std::uint32_t kCodePFSourceMode1 = kCodeMakeRecord | kCodeWalkSubs | 0x16;
constexpr std::uint32_t kCodePFSource = kCodeMakeRecord | kCodeWalkSubs | 0x17;
constexpr std::uint32_t kCodeSkin = kCodeMakeRecord | kCodeWalkSubs | 0x18;
constexpr std::uint32_t kCodeMorpher = kCodeMakeRecord | kCodeWalkSubs | 0x19;
constexpr std::uint32_t kCodeMtl = kCodeMakeRecord | kCodeWalkSubs | 0x1A;
constexpr std::uint32_t kCodeTexmap = kCodeMakeRecord | kCodeWalkSubs | 0x1B;
constexpr std::uint32_t kCodeText = kCodeMakeRecord | kCodeWalkSubs | 0x1C;
constexpr std::uint32_t kCodeLinkedXForm = kCodeMakeRecord | kCodeWalkSubs | 0x1D;
constexpr std::uint32_t kCodeCloth = kCodeMakeRecord | kCodeWalkSubs | 0x1E;
constexpr std::uint32_t kCodeConstraint = kCodeMakeRecord | kCodeWalkSubs | 0x1F;
constexpr std::uint32_t kCodeMultiSubMtl = kCodeMakeRecord | kCodeWalkSubs | 0x20;
constexpr std::uint32_t kCodeReaction = kCodeMakeRecord | kCodeWalkSubs | 0x24;
constexpr std::uint32_t kCodeBevelProfile = kCodeMakeRecord | kCodeWalkSubs | 0x25;
constexpr std::uint32_t kCodeEuler = kCodeMakeRecord | kCodeWalkSubs | 0x26;
constexpr std::uint32_t kCodePRS = kCodeMakeRecord | kCodeWalkSubs | 0x27;
constexpr std::uint32_t kCodeRWMS = kCodeMakeRecord | kCodeWalkSubs | 0x28;
constexpr std::uint32_t kCodeCAT = kCodeMakeRecord | kCodeWalkSubs | 0x2B;
constexpr std::uint32_t kCodeCam = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x2C;
constexpr std::uint32_t kCodeBoolean = kCodeMakeRecord | kCodeWalkSubs | 0x2D;
constexpr std::uint32_t kCodeTextPlus = kCodeMakeRecord | kCodeWalkSubs | 0x2E;
constexpr std::uint32_t kCodeDerivObj = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x2F;
constexpr std::uint32_t kCodeLayerCtrl = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x30;
constexpr std::uint32_t kCodeXRef = kCodeMakeRecord | kCodeWalkSubs | 0x31;
constexpr std::uint32_t kCodeContainer = kCodeMakeRecord | kCodeKindOnReplace | 0x32;
constexpr std::uint32_t kCodeCATCtrl = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x33;
constexpr std::uint32_t kCodeDataChannel = kCodeMakeRecord | kCodeWalkSubs | kCodeKindOnReplace | 0x35;
constexpr std::uint32_t kCodePFTest = kCodeMakeRecord | kCodeWalkSubs | kCodeNoRescanRecord | 0x37;
constexpr std::uint32_t kCodeRailClone = kCodeMakeRecord | kCodeWalkSubs | 0x38;
constexpr std::uint32_t kCodeBipCtrl = kCodeMakeRecord | kCodeWalkSubs | 0x39;
constexpr std::uint32_t kCodeForest = kCodeMakeRecord | kCodeWalkSubs | 0x3A;
constexpr std::uint32_t kCodeLinkTM = kCodeMakeRecord | kCodeWalkSubs | 0x3B;
