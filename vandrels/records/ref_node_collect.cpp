// The node record's collect pass beyond the base: the values compared with the baseline, the exclusion lists
// taken from the helper's scans, the local dependent in the node's object chain and the local-dependents bit.
#include "inode.h"
#include "object.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "records/undo_bypass.h"

#include <unordered_set>

namespace {

constexpr SClass_ID kDerivedObjectSuper = GEN_DERIVOB_CLASS_ID;

bool IsDerived(Object* obj) { return obj && obj->SuperClassID() == kDerivedObjectSuper; }

}  // namespace

void RefNode::detectCollectedValues(INode* node) {
    const NodeObjectOffset offset = nodestate::ReadObjectOffset(node);
    if (!(overrideFlags_ & kNodeObjectOffset) && nodestate::OffsetsDiffer(offset, objectOffset_))
        SetOverrideFlags(kNodeObjectOffset, kNodeObjectOffset);
    objectOffset_ = offset;

    const NodeSkinPose pose = nodestate::ReadSkinPose(node);
    if (!(overrideFlags_ & kNodeSkinPose) && nodestate::SkinPosesDiffer(skinPose_, pose))
        SetOverrideFlags(kNodeSkinPose, kNodeSkinPose);
    skinPose_ = pose;

    MSTR props;
    node->GetUserPropBuffer(props);
    if (!(overrideFlags_ & kNodeUserProps) && props != userProps_) SetOverrideFlags(kNodeUserProps, kNodeUserProps);
    userProps_ = props;

    const std::uint16_t locks = nodestate::ReadTmLocks(node);
    if (!(overrideFlags_ & kNodeTmLocks) && locks != tmLocks_) SetOverrideFlags(kNodeTmLocks, kNodeTmLocks);
    tmLocks_ = locks;
}

void RefNode::refreshExclusionLights() {
    for (int i = exclusionLights_.Count() - 1; i >= 0; --i)
        if (!exclusionLights_[i]) exclusionLights_.Delete(i, 1);
    const std::unordered_set<ReferenceTarget*> scanned(scratchLights_.begin(), scratchLights_.end());
    for (int i = exclusionLights_.Count() - 1; i >= 0; --i)
        if (!scanned.count(exclusionLights_[i])) removeExclusionLight(i);
    std::unordered_set<ReferenceTarget*> listed(exclusionLights_.begin(), exclusionLights_.end());
    for (ReferenceTarget* light : scratchLights_)
        if (light && listed.insert(light).second) appendExclusionLight(light);
    scratchLights_.ZeroCount();
    setFlagsSilently(kNodeExclusionList, exclusionLights_.Count() ? std::uint32_t(kNodeExclusionList) : 0u);
}

void RefNode::refreshExclusionOthers() {
    for (int i = exclusionOthers_.Count() - 1; i >= 0; --i)
        if (!exclusionOthers_[i]) {
            exclusionOthers_.Delete(i, 1);
            if (i < exclusionModes_.Count()) exclusionModes_.Delete(i, 1);
        }
    exclusionModes_.SetCount(exclusionOthers_.Count());
    auto same = [](ReferenceTarget* item, int index, const ScratchExclusion& entry) {
        return entry.item == item && entry.listIndex == index;
    };
    for (int i = exclusionOthers_.Count() - 1; i >= 0; --i) {
        bool scanned = false;
        for (const ScratchExclusion& entry : scratchOthers_) scanned = scanned || same(exclusionOthers_[i], exclusionModes_[i], entry);
        if (!scanned) removeExclusionOther(i);
    }
    for (const ScratchExclusion& entry : scratchOthers_) {
        if (!entry.item) continue;
        bool listed = false;
        for (int i = 0; i < exclusionOthers_.Count() && !listed; ++i)
            listed = same(exclusionOthers_[i], exclusionModes_[i], entry);
        if (!listed) appendExclusionOther(entry.item, entry.listIndex);
    }
    scratchOthers_.ZeroCount();
    setFlagsSilently(kNodeExclusionMisc, exclusionOthers_.Count() ? std::uint32_t(kNodeExclusionMisc) : 0u);
}

void RefNode::refreshLocalDependent(INode* node) {
    if (overrideFlags_ & kNodeObjectSpaceReplaced) return;
    Object* found = nullptr;
    for (Object* obj = node->GetObjectRef(); obj && !found;) {
        if (HasLocalDependents(obj)) found = obj;
        obj = IsDerived(obj) ? static_cast<IDerivedObject*>(obj)->GetObjRef() : nullptr;
    }
    UndoBypass bypass;
    if (found) {
        if (localDependent_ != found) ReplaceReference(Slots().LocalDependent(), found);
        setFlagsSilently(kNodeObjectLocalDep, kNodeObjectLocalDep);
    } else {
        setFlagsSilently(kNodeObjectLocalDep, 0);
        if (localDependent_) DeleteReference(Slots().LocalDependent());
    }
}

void RefNode::recomputeLocalDependentsBit(INode* node) {
    bool local;
    if (overrideFlags_ & kNodeClothChanged) {
        local = true;
    } else {
        // A local parent node (not a referenced one, which is held through its record) that heads a group.
        INode* parent = nullptr;
        if ((overrideFlags_ & kNodeParent) && parent_ && parent_->SuperClassID() == BASENODE_CLASS_ID)
            parent = static_cast<INode*>(parent_);
        local = (parent && nodestate::QueryGroupState(parent, kGroupHeadBit)) || HasLocalDependents(node);
    }
    setFlagsSilently(kNodeLocalDependents, local ? std::uint32_t(kNodeLocalDependents) : 0u);
}
