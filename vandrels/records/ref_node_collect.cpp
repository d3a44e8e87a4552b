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
    if (!(data_.overrideFlags & kNodeObjectOffset) && nodestate::OffsetsDiffer(offset, data_.objectOffset))
        SetOverrideFlags(kNodeObjectOffset, kNodeObjectOffset);
    data_.objectOffset = offset;

    const NodeSkinPose pose = nodestate::ReadSkinPose(node);
    if (!(data_.overrideFlags & kNodeSkinPose) && nodestate::SkinPosesDiffer(data_.skinPose, pose))
        SetOverrideFlags(kNodeSkinPose, kNodeSkinPose);
    data_.skinPose = pose;

    MSTR props;
    node->GetUserPropBuffer(props);
    if (!(data_.overrideFlags & kNodeUserProps) && props != data_.userProps) SetOverrideFlags(kNodeUserProps, kNodeUserProps);
    data_.userProps = props;

    const std::uint16_t locks = nodestate::ReadTmLocks(node);
    if (!(data_.overrideFlags & kNodeTmLocks) && locks != data_.tmLocks) SetOverrideFlags(kNodeTmLocks, kNodeTmLocks);
    data_.tmLocks = locks;
}

void RefNode::refreshExclusionLights() {
    for (int i = data_.exclusionLights.Count() - 1; i >= 0; --i)
        if (!data_.exclusionLights[i]) data_.exclusionLights.Delete(i, 1);
    const std::unordered_set<ReferenceTarget*> scanned(data_.scratchLights.begin(), data_.scratchLights.end());
    for (int i = data_.exclusionLights.Count() - 1; i >= 0; --i)
        if (!scanned.count(data_.exclusionLights[i])) removeExclusionLight(i);
    std::unordered_set<ReferenceTarget*> listed(data_.exclusionLights.begin(), data_.exclusionLights.end());
    for (ReferenceTarget* light : data_.scratchLights)
        if (light && listed.insert(light).second) appendExclusionLight(light);
    data_.scratchLights.ZeroCount();
    setFlagsSilently(kNodeExclusionList, data_.exclusionLights.Count() ? std::uint32_t(kNodeExclusionList) : 0u);
}

void RefNode::refreshExclusionOthers() {
    for (int i = data_.exclusionOthers.Count() - 1; i >= 0; --i)
        if (!data_.exclusionOthers[i]) {
            data_.exclusionOthers.Delete(i, 1);
            if (i < data_.exclusionModes.Count()) data_.exclusionModes.Delete(i, 1);
        }
    data_.exclusionModes.SetCount(data_.exclusionOthers.Count());
    auto same = [](ReferenceTarget* item, int index, const ScratchExclusion& entry) {
        return entry.item == item && entry.listIndex == index;
    };
    for (int i = data_.exclusionOthers.Count() - 1; i >= 0; --i) {
        bool scanned = false;
        for (const ScratchExclusion& entry : data_.scratchOthers) scanned = scanned || same(data_.exclusionOthers[i], data_.exclusionModes[i], entry);
        if (!scanned) removeExclusionOther(i);
    }
    for (const ScratchExclusion& entry : data_.scratchOthers) {
        if (!entry.item) continue;
        bool listed = false;
        for (int i = 0; i < data_.exclusionOthers.Count() && !listed; ++i)
            listed = same(data_.exclusionOthers[i], data_.exclusionModes[i], entry);
        if (!listed) appendExclusionOther(entry.item, entry.listIndex);
    }
    data_.scratchOthers.ZeroCount();
    setFlagsSilently(kNodeExclusionMisc, data_.exclusionOthers.Count() ? std::uint32_t(kNodeExclusionMisc) : 0u);
}

void RefNode::refreshLocalDependent(INode* node) {
    if (data_.overrideFlags & kNodeObjectSpaceReplaced) return;
    Object* found = nullptr;
    for (Object* obj = node->GetObjectRef(); obj && !found;) {
        if (HasLocalDependents(obj)) found = obj;
        obj = IsDerived(obj) ? static_cast<IDerivedObject*>(obj)->GetObjRef() : nullptr;
    }
    UndoBypass bypass;
    if (found) {
        if (data_.localDependent != found) ReplaceReference(Slots().LocalDependent(), found);
        setFlagsSilently(kNodeObjectLocalDep, kNodeObjectLocalDep);
    } else {
        setFlagsSilently(kNodeObjectLocalDep, 0);
        if (data_.localDependent) DeleteReference(Slots().LocalDependent());
    }
}

void RefNode::recomputeLocalDependentsBit(INode* node) {
    bool local;
    if (data_.overrideFlags & kNodeClothChanged) {
        local = true;
    } else {
        // A local parent node (not a referenced one, which is held through its record) that heads a group.
        INode* parent = nullptr;
        if ((data_.overrideFlags & kNodeParent) && data_.parent && data_.parent->SuperClassID() == BASENODE_CLASS_ID)
            parent = static_cast<INode*>(data_.parent);
        local = (parent && nodestate::QueryGroupState(parent, kGroupHeadBit)) || HasLocalDependents(node);
    }
    setFlagsSilently(kNodeLocalDependents, local ? std::uint32_t(kNodeLocalDependents) : 0u);
}
