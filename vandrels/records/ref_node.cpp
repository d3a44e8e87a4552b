#include "records/ref_node.h"

#include "frame/record_failure.h"
#include "anims/ref_anim.h"
#include "frame/module.h"
#include "frame/module_state.h"
#include "records/record_owner.h"
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "object.h"
#include "records/flag_restore.h"
#include "records/node_messages.h"
#include "records/node_transfer.h"
#include "records/scene_utils.h"
#include "resource.h"

#include <cmath>
#include <unordered_set>

namespace {

// The host notifications after which the record lets go of its node: scene reset, new scene, file open and
// shutdown.
constexpr int kDropCodes[] = {NOTIFY_FILE_PRE_OPEN, NOTIFY_SYSTEM_PRE_RESET, NOTIFY_SYSTEM_PRE_NEW,
                              NOTIFY_SYSTEM_SHUTDOWN};
constexpr ULONG kParticleInterface = 0x10D0;
const Class_ID kTargetObjectClass(0x1020, 0);
constexpr SClass_ID kLightSuper = 0x30;
constexpr SClass_ID kCameraSuper = 0x20;

// prefix + "_" + name, or name alone without a prefix.
MSTR Prefixed(const MSTR& prefix, const MSTR& name) { return prefix.isNull() ? name : prefix + L"_" + name; }

int HandleOf(Animatable* item) { return item ? int(Animatable::GetHandleByAnim(item)) : 0; }

}  // namespace

// ------------------------------------------------------------------------------------------ construction

RefNode::RefNode() { registerNotifications(); }

RefNode::RefNode(INode* node, RecordOwner* helper) {
    SetHelper(helper);
    registerNotifications();
    runInErrorFrame(L"Error Creating RefNode", L"Unknown Error Creating RefNode", [&] {
        if (!node) return;
        nodeLoaded_ = 1;
        ReplaceReference(0, node);
        referenceName_ = node->GetName();
        MonitorModifiers();
        // The merged state is the baseline the first collect compares with.
        CaptureBaseline();
        // Outside idle the reference does not build the tree by itself.
        if (GetTarget() && vandrels::GetOperationMode() != vandrels::kModeIdle) BuildSubAnimTree();
    });
}

RefNode::~RefNode() {
    unregisterNotifications();
    freeModLists();
}

INode* RefNode::GetNode() { return static_cast<INode*>(GetTarget()); }

void RefNode::SetOverrideFlags(std::uint32_t mask, std::uint32_t value) { SetLongFlags(overrideFlags_, mask, value); }

void RefNode::registerNotifications() {
    if (notificationsRegistered_) return;
    for (int code : kDropCodes) RegisterNotification(&RefNode::notifyProc, this, code);
    notificationsRegistered_ = 1;
}

void RefNode::unregisterNotifications() {
    if (!notificationsRegistered_) return;
    for (int code : kDropCodes) UnRegisterNotification(&RefNode::notifyProc, this, code);
    notificationsRegistered_ = 0;
}

void RefNode::notifyProc(void* param, NotifyInfo* info) {
    auto* record = static_cast<RefNode*>(param);
    // Opening a file for another purpose than as the scene keeps the node.
    if (info && info->intcode == NOTIFY_FILE_PRE_OPEN && info->callParam &&
        *static_cast<FileIOType*>(info->callParam) != IOTYPE_MAX)
        return;
    if (record->GetTarget()) record->DeleteReference(0);
}

// ------------------------------------------------------------------------------------------ failures

void RefNode::runInErrorFrame(const MCHAR* words, const MCHAR* unknownWords, const std::function<void()>& op) {
    // A frame inside another operation's frame (Override inside Update) keeps the outer step word for the outer
    // report.
    const int outer = step_;
    step_ = 0;
    try {
        op();
        step_ = outer;
    } catch (const MAXException& e) {
        const int failed = step_;
        step_ = outer;
        fail(words, failed, &e);
    } catch (...) {
        const int failed = step_;
        step_ = outer;
        fail(unknownWords, failed, nullptr);
    }
}

void RefNode::fail(const MCHAR* words, int step, const MAXException* cause) {
    MSTR description;
    try {
        description = GetInfo();
    } catch (...) {
        INode* node = GetNode();
        description = node ? MSTR(node->GetName()) : MSTR(L"Unknown Name");
    }
    const vandrels::RecordFailure failure{words, description, vandrels::RecordFailure::StepOf(step),
                                          vandrels::RecordFailure::CauseOf(cause)};
    SetBusy(0);
    DeleteReference(0);
    failure.Throw();
}

// ------------------------------------------------------------------------------------------ references

int RefNode::NumRefs() { return Slots().Count(); }

RefTargetHandle RefNode::GetReference(int i) {
    using vandrels::NodeRecordSlot;
    const vandrels::NodeRecordSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) return i < 0 ? RefBase::GetReference(i) : nullptr;
    const int k = slot.index;
    switch (slot.kind) {
    case NodeRecordSlot::Base: return RefBase::GetReference(i);
    case NodeRecordSlot::Material: return (overrideFlags_ & kNodeMaterial) ? material_ : nullptr;
    case NodeRecordSlot::Parent: return parent_;
    case NodeRecordSlot::Child: return children_[k];
    case NodeRecordSlot::Layer: return layer_;
    case NodeRecordSlot::WorldSpaceModifier: return wsMods_[k] ? wsMods_[k]->modifier : nullptr;
    case NodeRecordSlot::ObjectSpaceModifier: return osMods_[k] ? osMods_[k]->modifier : nullptr;
    case NodeRecordSlot::ExclusionLight: return exclusionLights_[k];
    case NodeRecordSlot::LocalDependent: return localDependent_;
    case NodeRecordSlot::ExclusionOther: return exclusionOthers_[k];
    }
    return nullptr;
}

void RefNode::SetReference(int i, RefTargetHandle target) {
    using vandrels::NodeRecordSlot;
    const vandrels::NodeRecordSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) {
        if (i < 0) RefBase::SetReference(i, target);
        return;
    }
    const int k = slot.index;
    switch (slot.kind) {
    case NodeRecordSlot::Base:
        if (i == 0 && target && target->SuperClassID() != BASENODE_CLASS_ID) target = nullptr;
        RefBase::SetReference(i, target);
        // The first node bound names the record.
        if (i == 0 && target && referenceName_.isNull()) referenceName_ = static_cast<INode*>(target)->GetName();
        break;
    case NodeRecordSlot::Material: material_ = dynamic_cast<Mtl*>(target); break;
    case NodeRecordSlot::Parent: parent_ = target; break;
    case NodeRecordSlot::Child: children_[k] = dynamic_cast<INode*>(target); break;
    case NodeRecordSlot::Layer: layer_ = target; break;
    case NodeRecordSlot::WorldSpaceModifier:
    case NodeRecordSlot::ObjectSpaceModifier: {
        Tab<RefModifier*>& list = slot.kind == NodeRecordSlot::WorldSpaceModifier ? wsMods_ : osMods_;
        RefModifier*& entry = list[k];
        // A modifier restored into an empty position (saved as referenced) stands there as referenced.
        if (!entry && target) entry = new RefModifier(dynamic_cast<Modifier*>(target), kModFromReference, -1);
        if (!entry) return;
        if (!entry->modifier && target)
            if (Modifier* mod = dynamic_cast<Modifier*>(target)) entry->toggles = ReadModifierToggles(mod);
        entry->modifier = target;
        break;
    }
    case NodeRecordSlot::ExclusionLight: {
        ReferenceTarget* old = exclusionLights_[k];
        exclusionLights_[k] = target;
        if (old && target != old) takeOverExclusion(target, -1);
        break;
    }
    case NodeRecordSlot::LocalDependent: localDependent_ = target; break;
    case NodeRecordSlot::ExclusionOther: {
        ReferenceTarget* old = exclusionOthers_[k];
        exclusionOthers_[k] = target;
        if (old && target != old) takeOverExclusion(target, k < exclusionModes_.Count() ? exclusionModes_[k] : 0);
        break;
    }
    }
}

BOOL RefNode::CanTransferReference(int i) {
    return i >= Slots().Material() && vandrels::GetOperationMode() == vandrels::kModeLoading;
}

// ------------------------------------------------------------------------------------------ protocol

void RefNode::Collect() {
    runInErrorFrame(L"Error Collecting RefNode", L"Unknown Error Collecting RefNode", [&] {
        nodeLoadedAtCollect_ = nodeLoaded_;
        if (!nodeLoaded_) return;
        RecordOwner* helper = GetHelper();
        if (!(vandrels::GetOperationMode() == vandrels::kModeSaving && helper && helper->GetPersistRef()))
            nodeLoaded_ = 0;
        INode* node = GetNode();
        if (!node) return;
        detectCollectedValues(node);
        refreshExclusionLights();
        refreshExclusionOthers();
        if (overrideFlags_ & kNodeModifiers) collectModifierChanges();
        refreshLocalDependent(node);
        nodeKind_ = computeNodeKind(node);
        RefBase::Collect();
        recomputeLocalDependentsBit(node);
    });
}

void RefNode::CaptureBaseline() {
    INode* node = GetNode();
    if (!node) return;
    if (!(overrideFlags_ & kNodeMaterial)) material_ = node->GetMtl();
    if (!(overrideFlags_ & kNodeObjectOffset)) objectOffset_ = nodestate::ReadObjectOffset(node);
    if (!(overrideFlags_ & kNodeWireColor)) wireColor_ = node->GetWireColor();
    if (!(overrideFlags_ & kNodeHidden))
        displayBits_ = std::uint16_t((displayBits_ & ~kDisplayHiddenBit) | (node->IsHidden() ? kDisplayHiddenBit : 0));
    if (!(overrideFlags_ & kNodeFrozen))
        displayBits_ = std::uint16_t((displayBits_ & ~kDisplayFrozenBit) | (node->IsFrozen() ? kDisplayFrozenBit : 0));
    if (!(overrideFlags_ & kNodeDisplayProps)) setDisplayProps(nodestate::ReadDisplay(node));
    if (!(overrideFlags_ & kNodeRenderProps)) renderProps_ = nodestate::ReadRender(node);
    if (!(overrideFlags_ & kNodeSkinPose)) skinPose_ = nodestate::ReadSkinPose(node);
    if (!(overrideFlags_ & kNodeUserProps)) node->GetUserPropBuffer(userProps_);
    if (!(overrideFlags_ & kNodeTmLocks)) tmLocks_ = nodestate::ReadTmLocks(node);
}

NodeDisplayProps RefNode::displayProps() const {
    NodeDisplayProps display;
    display.bits = std::uint16_t(displayBits_ & kDisplaySwitchBits);
    display.values[0] = displayValues_[0];
    display.values[1] = displayValues_[1];
    return display;
}

void RefNode::setDisplayProps(const NodeDisplayProps& display) {
    displayBits_ = std::uint16_t((displayBits_ & ~kDisplaySwitchBits) | (display.bits & kDisplaySwitchBits));
    displayValues_[0] = display.values[0];
    displayValues_[1] = display.values[1];
}

void RefNode::Update(ReferenceTarget* newTarget) {
    runInErrorFrame(L"Error Updating RefNode", L"Unknown Error Updating RefNode", [&] {
        SetBusy(1);
        auto* fresh = dynamic_cast<INode*>(newTarget);
        if (!fresh) {
            SetBusy(0);
            return;
        }
        nodeLoaded_ = 1;
        INode* old = GetNode();
        if (old == fresh) old = nullptr;
        if (!GetNode()) {
            ReplaceReference(0, fresh);
        } else if (old) {
            step_ = IDS_STEP_UPDATE_PRE_TRANSFER;
            TransferNodeReferences(old, fresh, false);
            if (GetNode() != fresh) ReplaceReference(0, fresh);
            step_ = IDS_STEP_UPDATE_POST_TRANSFER;
            fresh->NotifyDependents(FOREVER, 0, nodemsg::kNodeTransferred);
            step_ = IDS_STEP_UPDATE_TRANSFER;
        }
        for (int k = children_.Count() - 1; k >= 0; --k)
            if (!children_[k]) children_.Delete(k, 1);
        prune();
        step_ = IDS_STEP_UPDATE_CLEANED;
        Override();
        // What the reload brought, with the overrides applied, is the baseline of the next collect.
        CaptureBaseline();
        step_ = IDS_STEP_UPDATE_OVERRIDE_REF;
        BuildSubAnimTree();
        if (old) GetCOREInterface()->DeleteNode(old, FALSE);
        SetBusy(0);
    });
}

void RefNode::FinishLoad() {
    nodeLoaded_ = nodeLoadedAtCollect_;
    if (placeholderFor_) {
        INode* placeholder = GetNode();
        INode* real = placeholderFor_;
        placeholderFor_ = nullptr;
        if (placeholder && placeholder != real) {
            TransferNodeReferences(placeholder, real, false);
            if (GetNode() != real) ReplaceReference(0, real);
            GetCOREInterface()->DeleteNode(placeholder, FALSE);
        }
    }
    if (!nodeLoaded_) return;
    relinkModifierReferences();
    if (overrideFlags_ & kNodeSelectionSets) {
        selectionSets_.ZeroCount();
        SetOverrideFlags(kNodeSelectionSets, 0);
    }
}

void RefNode::ApplyNamePrefix(const MSTR& prefix) {
    INode* node = GetNode();
    if (!node || (overrideFlags_ & kNodeNameWithoutPrefix)) return;
    node->SetName(Prefixed(prefix, (overrideFlags_ & kNodeOverriddenName) ? overriddenName_ : referenceName_));
}

bool RefNode::HasOverrides() { return overrideFlags_ != 0 || RefBase::HasOverrides(); }

void RefNode::OnNodeRenamed(const MSTR& newName) {
    if (theHold.RestoreOrRedoing()) {
        // The undo record brings the bits back; the local name follows the node.
        if (!(overrideFlags_ & kNodeOverriddenName)) return;
        overriddenName_ = newName;
        if (!(overrideFlags_ & kNodeNameWithoutPrefix)) StripNamePrefix(GetNamePrefix().data(), overriddenName_);
        return;
    }
    overriddenName_ = newName;
    SetOverrideFlags(kNodeOverriddenName, kNodeOverriddenName);
    if (overrideFlags_ & kNodeNameWithoutPrefix) return;
    if (StripNamePrefix(GetNamePrefix().data(), overriddenName_) != 0)
        SetOverrideFlags(kNodeNameWithoutPrefix, kNodeNameWithoutPrefix);
}

void RefNode::OnSelectionSetRemoved(int setIndex) {
    for (int k = selectionSets_.Count() - 1; k >= 0; --k) {
        if (selectionSets_[k] == setIndex)
            selectionSets_.Delete(k, 1);
        else if (selectionSets_[k] > setIndex)
            --selectionSets_[k];
    }
}

// ------------------------------------------------------------------------------------------ node state

std::int32_t RefNode::computeNodeKind(INode* node) {
    if (node->GetBoneNodeOnOff()) return kNodeKindBone;
    Object* obj = node->GetBaseObject();
    if (!obj) obj = node->GetObjectRef();
    if (!obj) return 0;
    if (obj->GetInterface(kParticleInterface)) return kNodeKindParticles;
    if (obj->ClassID() == kTargetObjectClass) {
        if (INode* looker = node->GetLookatNode())
            if (Object* lookerObj = looker->GetBaseObject()) {
                const SClass_ID sc = lookerObj->SuperClassID();
                if (sc == kLightSuper || sc == kCameraSuper) return std::int32_t(sc);
            }
    }
    return std::int32_t(obj->SuperClassID());
}

// ------------------------------------------------------------------------------------------ local dependents

namespace {

constexpr SClass_ID kNodeSuper = BASENODE_CLASS_ID;
constexpr SClass_ID kHelperOwnedSuper = 0x8663DFA7;
constexpr SClass_ID kRefTargetSuper = 256;
const Class_ID kFollowOwnerClass(0x5DDB3626, 0x23B708DB);
const Class_ID kInstanceMgrClass(8738, 0);
const Class_ID kSkippedClass(0x55293BB4, 0x4AD13DAD);
const Class_ID kManagedClasses[] = {Class_ID(3200, 0), Class_ID(0xEE448B23, 0), Class_ID(0x8D73B8AA, 0x90F2EE71),
                                    Class_ID(0x17356912, 0)};

struct LocalDependentWalk {
    RefNode* self;
    std::unordered_set<ReferenceTarget*> seen;

    bool walk(ReferenceTarget* item) {
        if (!item || !seen.insert(item).second) return false;
        DependentIterator it(item);
        while (ReferenceMaker* dep = it.Next()) {
            if (dep == static_cast<ReferenceMaker*>(self)) continue;
            const SClass_ID sc = dep->SuperClassID();
            if (sc == kHelperOwnedSuper) continue;
            if (sc == kNodeSuper) {
                if (!FindNodeRecord(static_cast<INode*>(dep))) return true;
                continue;
            }
            if (sc == REFBASE_SUPER_CLASS_ID || sc == REFANIM_SUPER_CLASS_ID) {
                if (dep->IsRealDependency(item)) return true;
                continue;
            }
            if (sc == kRefTargetSuper) {
                const Class_ID id = dep->ClassID();
                if (id == kSkippedClass) continue;
                if (id == kInstanceMgrClass) {
                    for (const Class_ID& managed : kManagedClasses)
                        if (item->ClassID() == managed) return true;
                    continue;
                }
                if (id == kFollowOwnerClass) {
                    if (walk(dynamic_cast<ReferenceTarget*>(dep))) return true;
                    continue;
                }
            }
            if (auto* target = dynamic_cast<ReferenceTarget*>(dep); target && walk(target)) return true;
        }
        return false;
    }
};

}  // namespace

bool RefNode::HasLocalDependents(ReferenceTarget* item) {
    LocalDependentWalk walk{this, {}};
    return walk.walk(item);
}

// ------------------------------------------------------------------------------------------ diagnostics

MSTR RefNode::GetTypeName() {
    const MCHAR* name = GetString(IDS_CLASS_REFNODE);
    return name && *name ? MSTR(name) : MSTR(L"RefNode");
}

namespace {

MSTR StateLines(std::int32_t nodeLoaded, std::uint32_t flags, Mtl* material) {
    MSTR info = nodeLoaded ? L"\nNode Loaded: TRUE" : L"\nNode Loaded: FALSE";
    info.append_printf(L"\nOverridden Flags: %d", int(flags));
    if ((flags & kNodeMaterial) && material)
        info.append_printf(L"\nOverridden Material: %d", HandleOf(material));
    else
        info += L"\nOverridden Material: None";
    return info;
}

}  // namespace

MSTR RefNode::GetInfo() {
    INode* node = GetNode();
    MSTR info = L"Node: " + referenceName_;
    info.append_printf(L" - %d", HandleOf(node));
    if (node) {
        try {
            MSTR details = L"\nBase Object: " + DescribeItem(node->GetObjectRef());
            details += L"\nController: " + DescribeItem(node->GetTMController());
            info += details;
        } catch (...) {
            info += L"\nFailed to retrieve Node Info";
        }
    }
    return info + StateLines(nodeLoaded_, overrideFlags_, material_) + ModifierLines();
}

void RefNode::PrintData(int mode) {
    const int handle = HandleOf(GetNode());
    if (mode == 1) {
        mprintf(L"\n\n***************************\nRefNode: %s - %d\n\n", referenceName_.data(), handle);
        mputs(StateLines(nodeLoaded_, overrideFlags_, material_).data());
        mputs(ModifierLines().data());
        mputs(L"\n");
        mflush();
    } else {
        mprintf(L"\nRefNode: %s - %d\n", referenceName_.data(), handle);
    }
    RefBase::PrintData(mode);
}

// ------------------------------------------------------------------------------------------ cloning

namespace {

// Points the clone's parent reference at the parent record's clone, or at the original when it was not cloned.
class ParentPatch : public PostPatchProc {
public:
    ParentPatch(RefNode* clone, int index, ReferenceTarget* parent) : clone_(clone), index_(index), parent_(parent) {}
    int Proc(RemapDir& remap) override {
        ReferenceTarget* mapped = remap.FindMapping(parent_);
        clone_->ReplaceReference(index_, mapped ? mapped : parent_);
        return TRUE;
    }

private:
    RefNode* clone_;
    int index_;
    ReferenceTarget* parent_;
};

}  // namespace

void RefNode::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    RefBase::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefNode*>(from);
    auto* dst = dynamic_cast<RefNode*>(to);
    if (!src || !dst) return;
    const std::uint32_t flags = src->overrideFlags_;
    dst->referenceName_ = src->referenceName_;
    dst->nodeLoaded_ = src->nodeLoaded_;
    dst->nodeLoadedAtCollect_ = src->nodeLoadedAtCollect_;
    dst->overrideFlags_ = flags;
    dst->nodeKind_ = src->nodeKind_;
    if (flags & kNodeOverriddenName) dst->overriddenName_ = src->overriddenName_;
    if (flags & kNodeGrouping) dst->groupFlags_ = src->groupFlags_;
    if (flags & kNodeObjectOffset) dst->objectOffset_ = src->objectOffset_;
    if (flags & kNodeSkinPose) dst->skinPose_ = src->skinPose_;
    if (flags & kNodeWireColor) dst->wireColor_ = src->wireColor_;
    if (flags & (kNodeHidden | kNodeFrozen | kNodeDisplayProps)) {
        dst->displayBits_ = src->displayBits_;
        dst->displayValues_[0] = src->displayValues_[0];
        dst->displayValues_[1] = src->displayValues_[1];
    }
    if (flags & kNodeRenderProps) dst->renderProps_ = src->renderProps_;
    if (flags & kNodeUserProps) dst->userProps_ = src->userProps_;
    if (flags & kNodeBoneProps) dst->boneProps_ = src->boneProps_;
    if (flags & kNodeTmLocks) dst->tmLocks_ = src->tmLocks_;
    if (flags & kNodeSelectionSets) dst->selectionSets_ = src->selectionSets_;
    dst->modCountsAtMerge_[0] = src->modCountsAtMerge_[0];
    dst->modCountsAtMerge_[1] = src->modCountsAtMerge_[1];
    src->cloneModifiersTo(dst);
    const vandrels::NodeRecordSlots slots = dst->Slots();
    if (flags & kNodeMaterial)
        dst->ReplaceReference(slots.Material(), src->material_);
    else
        dst->material_ = src->material_;
    if (ReferenceTarget* parent = src->parent_) {
        if (parent->SuperClassID() == REFBASE_SUPER_CLASS_ID)
            remap.AddPostPatchProc(new ParentPatch(dst, slots.Parent(), parent), true);
        else
            dst->ReplaceReference(slots.Parent(), parent);
    }
}

// ------------------------------------------------------------------------------------------ scripting

BaseInterface* RefNode::GetInterface(Interface_ID id) {
    if (id == REFNODE_INTERFACE_ID) return static_cast<RefNodeInterface*>(this);
    return RefBase::GetInterface(id);
}

ReferenceTarget* RefNode::ScriptGetRefAnimChecked(int index) { return GetRefAnim(index); }

void RefNode::ScriptSetName(const MCHAR* name) {
    referenceName_ = name ? MSTR(name) : MSTR();
    INode* node = GetNode();
    if (!node || (overrideFlags_ & kNodeOverriddenName)) return;
    vandrels::OperationModeScope mode(vandrels::kModeRenaming);
    node->SetName(Prefixed(GetNamePrefix(), referenceName_));
}
