// The node record's state: the reference name, the load flags, the override bits with each category's local
// value, the exclusion and selection-set lists (the modifier mirrors live in records/modifier_mirrors.h). RefNode holds
// it privately and changes it only through its methods.
#pragma once

#include "geom.h"
#include "records/node_state.h"
#include "strclass.h"
#include "tab.h"

#include <cstdint>

class INode;
class Mtl;
class ReferenceTarget;

// One entry of the work list of the other exclusion items: the item and the index of its node list.
struct RefNodeScratchExclusion {
    ReferenceTarget* item;
    int listIndex;
};

struct RefNodeState {
    int step = 0;  // the string id of the step word in force, or 0 (the string buffer is shared: no pointer)

    // Name and load state.
    MSTR referenceName;
    std::int32_t nodeLoaded = 0;
    std::int32_t nodeLoadedAtCollect = 0;
    // The override bits (RefNodeFlag) and each category's local value.
    std::uint32_t overrideFlags = 0;
    MSTR overriddenName;
    Mtl* material = nullptr;
    ReferenceTarget* parent = nullptr;
    Tab<INode*> children;
    std::uint8_t groupFlags = 0;
    ReferenceTarget* layer = nullptr;
    NodeObjectOffset objectOffset;
    NodeSkinPose skinPose;
    std::uint32_t wireColor = 0;
    std::uint16_t displayBits = 0;
    std::uint8_t displayValues[2] = {};
    NodeRenderProps renderProps;
    MSTR userProps;
    NodeBoneProps boneProps;
    std::uint16_t tmLocks = 0;
    // Exclusion lists, local dependent, node kind, named selection sets.
    Tab<ReferenceTarget*> exclusionLights;
    Tab<ReferenceTarget*> scratchLights;
    ReferenceTarget* localDependent = nullptr;
    std::int32_t nodeKind = 0;
    Tab<int> selectionSets;
    Tab<ReferenceTarget*> exclusionOthers;
    Tab<int> exclusionModes;
    Tab<RefNodeScratchExclusion> scratchOthers;  // the exclusion scans' work lists, emptied by a collect
    INode* placeholderFor = nullptr;
    int notificationsRegistered = 0;
};
