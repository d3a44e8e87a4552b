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
        data_.nodeLoaded = 1;
        ReplaceReference(0, node);
        data_.referenceName = node->GetName();
        MonitorModifiers();
        // The merged state is the baseline the first collect compares with.
        CaptureBaseline();
        // Outside idle the reference does not build the tree by itself.
        if (GetTarget() && vandrels::GetOperationMode() != vandrels::kModeIdle) BuildSubAnimTree();
    });
}

RefNode::~RefNode() { unregisterNotifications(); }

INode* RefNode::GetNode() { return static_cast<INode*>(GetTarget()); }

void RefNode::SetOverrideFlags(std::uint32_t mask, std::uint32_t value) { SetLongFlags(data_.overrideFlags, mask, value); }

void RefNode::registerNotifications() {
    if (data_.notificationsRegistered) return;
    for (int code : kDropCodes) RegisterNotification(&RefNode::notifyProc, this, code);
    data_.notificationsRegistered = 1;
}

void RefNode::unregisterNotifications() {
    if (!data_.notificationsRegistered) return;
    for (int code : kDropCodes) UnRegisterNotification(&RefNode::notifyProc, this, code);
    data_.notificationsRegistered = 0;
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
    const int outer = data_.step;
    data_.step = 0;
    try {
        op();
        data_.step = outer;
    } catch (const MAXException& e) {
        const int failed = data_.step;
        data_.step = outer;
        fail(words, failed, &e);
    } catch (...) {
        const int failed = data_.step;
        data_.step = outer;
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
    case NodeRecordSlot::Material: return (data_.overrideFlags & kNodeMaterial) ? data_.material : nullptr;
    case NodeRecordSlot::Parent: return data_.parent;
    case NodeRecordSlot::Child: return data_.children[k];
    case NodeRecordSlot::Layer: return data_.layer;
    case NodeRecordSlot::WorldSpaceModifier: return mods_.Reference(ModMirror::WorldSpace, k);
    case NodeRecordSlot::ObjectSpaceModifier: return mods_.Reference(ModMirror::ObjectSpace, k);
    case NodeRecordSlot::ExclusionLight: return data_.exclusionLights[k];
    case NodeRecordSlot::LocalDependent: return data_.localDependent;
    case NodeRecordSlot::ExclusionOther: return data_.exclusionOthers[k];
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
        if (i == 0 && target && data_.referenceName.isNull()) data_.referenceName = static_cast<INode*>(target)->GetName();
        break;
    case NodeRecordSlot::Material: data_.material = dynamic_cast<Mtl*>(target); break;
    case NodeRecordSlot::Parent: data_.parent = target; break;
    case NodeRecordSlot::Child: data_.children[k] = dynamic_cast<INode*>(target); break;
    case NodeRecordSlot::Layer: data_.layer = target; break;
    case NodeRecordSlot::WorldSpaceModifier: mods_.RestoreReference(ModMirror::WorldSpace, k, target); break;
    case NodeRecordSlot::ObjectSpaceModifier: mods_.RestoreReference(ModMirror::ObjectSpace, k, target); break;
    case NodeRecordSlot::ExclusionLight: {
        ReferenceTarget* old = data_.exclusionLights[k];
        data_.exclusionLights[k] = target;
        if (old && target != old) takeOverExclusion(target, -1);
        break;
    }
    case NodeRecordSlot::LocalDependent: data_.localDependent = target; break;
    case NodeRecordSlot::ExclusionOther: {
        ReferenceTarget* old = data_.exclusionOthers[k];
        data_.exclusionOthers[k] = target;
        if (old && target != old) takeOverExclusion(target, k < data_.exclusionModes.Count() ? data_.exclusionModes[k] : 0);
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
        data_.nodeLoadedAtCollect = data_.nodeLoaded;
        if (!data_.nodeLoaded) return;
        RecordOwner* helper = GetHelper();
        if (!(vandrels::GetOperationMode() == vandrels::kModeSaving && helper && helper->GetPersistRef()))
            data_.nodeLoaded = 0;
        INode* node = GetNode();
        if (!node) return;
        detectCollectedValues(node);
        refreshExclusionLights();
        refreshExclusionOthers();
        if (data_.overrideFlags & kNodeModifiers) collectModifierChanges();
        refreshLocalDependent(node);
        data_.nodeKind = computeNodeKind(node);
        RefBase::Collect();
        recomputeLocalDependentsBit(node);
    });
}

void RefNode::CaptureBaseline() {
    INode* node = GetNode();
    if (!node) return;
    if (!(data_.overrideFlags & kNodeMaterial)) data_.material = node->GetMtl();
    if (!(data_.overrideFlags & kNodeObjectOffset)) data_.objectOffset = nodestate::ReadObjectOffset(node);
    if (!(data_.overrideFlags & kNodeWireColor)) data_.wireColor = node->GetWireColor();
    if (!(data_.overrideFlags & kNodeHidden))
        data_.displayBits = std::uint16_t((data_.displayBits & ~kDisplayHiddenBit) | (node->IsHidden() ? kDisplayHiddenBit : 0));
    if (!(data_.overrideFlags & kNodeFrozen))
        data_.displayBits = std::uint16_t((data_.displayBits & ~kDisplayFrozenBit) | (node->IsFrozen() ? kDisplayFrozenBit : 0));
    if (!(data_.overrideFlags & kNodeDisplayProps)) setDisplayProps(nodestate::ReadDisplay(node));
    if (!(data_.overrideFlags & kNodeRenderProps)) data_.renderProps = nodestate::ReadRender(node);
    if (!(data_.overrideFlags & kNodeSkinPose)) data_.skinPose = nodestate::ReadSkinPose(node);
    if (!(data_.overrideFlags & kNodeUserProps)) node->GetUserPropBuffer(data_.userProps);
    if (!(data_.overrideFlags & kNodeTmLocks)) data_.tmLocks = nodestate::ReadTmLocks(node);
}

NodeDisplayProps RefNode::displayProps() const {
    NodeDisplayProps display;
    display.bits = std::uint16_t(data_.displayBits & kDisplaySwitchBits);
    display.values[0] = data_.displayValues[0];
    display.values[1] = data_.displayValues[1];
    return display;
}

void RefNode::setDisplayProps(const NodeDisplayProps& display) {
    data_.displayBits = std::uint16_t((data_.displayBits & ~kDisplaySwitchBits) | (display.bits & kDisplaySwitchBits));
    data_.displayValues[0] = display.values[0];
    data_.displayValues[1] = display.values[1];
}

void RefNode::Update(ReferenceTarget* newTarget) {
    runInErrorFrame(L"Error Updating RefNode", L"Unknown Error Updating RefNode", [&] {
        SetBusy(1);
        auto* fresh = dynamic_cast<INode*>(newTarget);
        if (!fresh) {
            SetBusy(0);
            return;
        }
        data_.nodeLoaded = 1;
        INode* old = GetNode();
        if (old == fresh) old = nullptr;
        if (!GetNode()) {
            ReplaceReference(0, fresh);
        } else if (old) {
            data_.step = IDS_STEP_UPDATE_PRE_TRANSFER;
            TransferNodeReferences(old, fresh, false);
            if (GetNode() != fresh) ReplaceReference(0, fresh);
            data_.step = IDS_STEP_UPDATE_POST_TRANSFER;
            fresh->NotifyDependents(FOREVER, 0, nodemsg::kNodeTransferred);
            data_.step = IDS_STEP_UPDATE_TRANSFER;
        }
        for (int k = data_.children.Count() - 1; k >= 0; --k)
            if (!data_.children[k]) data_.children.Delete(k, 1);
        prune();
        data_.step = IDS_STEP_UPDATE_CLEANED;
        Override();
        // What the reload brought, with the overrides applied, is the baseline of the next collect.
        CaptureBaseline();
        data_.step = IDS_STEP_UPDATE_OVERRIDE_REF;
        BuildSubAnimTree();
        if (old) GetCOREInterface()->DeleteNode(old, FALSE);
        SetBusy(0);
    });
}

void RefNode::FinishLoad() {
    data_.nodeLoaded = data_.nodeLoadedAtCollect;
    if (data_.placeholderFor) {
        INode* placeholder = GetNode();
        INode* real = data_.placeholderFor;
        data_.placeholderFor = nullptr;
        if (placeholder && placeholder != real) {
            TransferNodeReferences(placeholder, real, false);
            if (GetNode() != real) ReplaceReference(0, real);
            GetCOREInterface()->DeleteNode(placeholder, FALSE);
        }
    }
    if (!data_.nodeLoaded) return;
    relinkModifierReferences();
    if (data_.overrideFlags & kNodeSelectionSets) {
        data_.selectionSets.ZeroCount();
        SetOverrideFlags(kNodeSelectionSets, 0);
    }
}

void RefNode::ApplyNamePrefix(const MSTR& prefix) {
    INode* node = GetNode();
    if (!node || (data_.overrideFlags & kNodeNameWithoutPrefix)) return;
    node->SetName(Prefixed(prefix, (data_.overrideFlags & kNodeOverriddenName) ? data_.overriddenName : data_.referenceName));
}

bool RefNode::HasOverrides() { return data_.overrideFlags != 0 || RefBase::HasOverrides(); }

void RefNode::OnNodeRenamed(const MSTR& newName) {
    if (theHold.RestoreOrRedoing()) {
        // The undo record brings the bits back; the local name follows the node.
        if (!(data_.overrideFlags & kNodeOverriddenName)) return;
        data_.overriddenName = newName;
        if (!(data_.overrideFlags & kNodeNameWithoutPrefix)) StripNamePrefix(GetNamePrefix().data(), data_.overriddenName);
        return;
    }
    data_.overriddenName = newName;
    SetOverrideFlags(kNodeOverriddenName, kNodeOverriddenName);
    if (data_.overrideFlags & kNodeNameWithoutPrefix) return;
    if (StripNamePrefix(GetNamePrefix().data(), data_.overriddenName) != 0)
        SetOverrideFlags(kNodeNameWithoutPrefix, kNodeNameWithoutPrefix);
}

void RefNode::OnSelectionSetRemoved(int setIndex) {
    for (int k = data_.selectionSets.Count() - 1; k >= 0; --k) {
        if (data_.selectionSets[k] == setIndex)
            data_.selectionSets.Delete(k, 1);
        else if (data_.selectionSets[k] > setIndex)
            --data_.selectionSets[k];
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
    MSTR info = L"Node: " + data_.referenceName;
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
    return info + StateLines(data_.nodeLoaded, data_.overrideFlags, data_.material) + ModifierLines();
}

void RefNode::PrintData(int mode) {
    const int handle = HandleOf(GetNode());
    if (mode == 1) {
        mprintf(L"\n\n***************************\nRefNode: %s - %d\n\n", data_.referenceName.data(), handle);
        mputs(StateLines(data_.nodeLoaded, data_.overrideFlags, data_.material).data());
        mputs(ModifierLines().data());
        mputs(L"\n");
        mflush();
    } else {
        mprintf(L"\nRefNode: %s - %d\n", data_.referenceName.data(), handle);
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
    const std::uint32_t flags = src->data_.overrideFlags;
    dst->data_.referenceName = src->data_.referenceName;
    dst->data_.nodeLoaded = src->data_.nodeLoaded;
    dst->data_.nodeLoadedAtCollect = src->data_.nodeLoadedAtCollect;
    dst->data_.overrideFlags = flags;
    dst->data_.nodeKind = src->data_.nodeKind;
    if (flags & kNodeOverriddenName) dst->data_.overriddenName = src->data_.overriddenName;
    if (flags & kNodeGrouping) dst->data_.groupFlags = src->data_.groupFlags;
    if (flags & kNodeObjectOffset) dst->data_.objectOffset = src->data_.objectOffset;
    if (flags & kNodeSkinPose) dst->data_.skinPose = src->data_.skinPose;
    if (flags & kNodeWireColor) dst->data_.wireColor = src->data_.wireColor;
    if (flags & (kNodeHidden | kNodeFrozen | kNodeDisplayProps)) {
        dst->data_.displayBits = src->data_.displayBits;
        dst->data_.displayValues[0] = src->data_.displayValues[0];
        dst->data_.displayValues[1] = src->data_.displayValues[1];
    }
    if (flags & kNodeRenderProps) dst->data_.renderProps = src->data_.renderProps;
    if (flags & kNodeUserProps) dst->data_.userProps = src->data_.userProps;
    if (flags & kNodeBoneProps) dst->data_.boneProps = src->data_.boneProps;
    if (flags & kNodeTmLocks) dst->data_.tmLocks = src->data_.tmLocks;
    if (flags & kNodeSelectionSets) dst->data_.selectionSets = src->data_.selectionSets;
    src->mods_.CloneTo(dst->mods_);
    const vandrels::NodeRecordSlots slots = dst->Slots();
    if (flags & kNodeMaterial)
        dst->ReplaceReference(slots.Material(), src->data_.material);
    else
        dst->data_.material = src->data_.material;
    if (ReferenceTarget* parent = src->data_.parent) {
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
    data_.referenceName = name ? MSTR(name) : MSTR();
    INode* node = GetNode();
    if (!node || (data_.overrideFlags & kNodeOverriddenName)) return;
    vandrels::OperationModeScope mode(vandrels::kModeRenaming);
    node->SetName(Prefixed(GetNamePrefix(), data_.referenceName));
}
