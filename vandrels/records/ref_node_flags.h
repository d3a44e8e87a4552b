// The node record's override bits and the node kinds it computes from its node's object.
#pragma once

#include <cstdint>

// The override bits of a node record's flag word.
enum RefNodeFlag : std::uint32_t {
    kNodeLocalDependents = 0x1,
    kNodeOverriddenName = 0x2,
    kNodeNameWithoutPrefix = 0x4,
    kNodeMaterial = 0x8,
    kNodeModifiers = 0x10,
    kNodeObjectSpaceReplaced = 0x20,
    kNodeParent = 0x40,
    kNodeChildren = 0x80,
    kNodeGrouping = 0x100,
    kNodeLayer = 0x200,
    kNodeObjectOffset = 0x400,
    kNodeSkinPose = 0x800,
    kNodeWireColor = 0x1000,
    kNodeHidden = 0x2000,
    kNodeFrozen = 0x4000,
    kNodeDisplayProps = 0x8000,
    kNodeRenderProps = 0x10000,
    kNodeUserProps = 0x20000,
    kNodeBoneProps = 0x40000,
    kNodeClothChanged = 0x80000,
    kNodeTmLocks = 0x100000,
    kNodeExclusionList = 0x200000,
    kNodeObjectLocalDep = 0x400000,
    kNodeSelectionSets = 0x800000,
    kNodeExclusionMisc = 0x1000000,
};

// Node kinds a record computes from its node's object (besides the object's superclass: geometry 0x10, shapes
// 0x40, lights 0x30, cameras 0x20, helpers 0x50, space warps 0x830).
constexpr std::int32_t kNodeKindBone = 0x28BF6E8D;
constexpr std::int32_t kNodeKindParticles = std::int32_t(0xFFFFFF03);
