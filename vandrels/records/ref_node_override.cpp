// The node record's re-application of its override categories after a reload, in their fixed order, and the
// reset that clears chosen categories (with the filter by node kind and the animatable records' filter).
#include "anims/ref_anim.h"
#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "object.h"
#include "frame/module_state.h"
#include "records/exclusion_lists.h"
#include "records/node_messages.h"
#include "records/pending_selection_sets.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "resource.h"

#include <vector>

namespace {

constexpr SClass_ID kDerivedObjectSuper = GEN_DERIVOB_CLASS_ID;

// Puts node on the include/exclude list of a light (once).
void AddNodeToExclusionList(ReferenceTarget* item, INode* node) {
    auto* light = dynamic_cast<LightObject*>(item);
    ExclList* list = light ? light->GetExclList() : nullptr;
    if (list && list->FindNode(node) < 0) list->AddNode(node);
}

Object* BelowDerived(Object* obj) {
    return obj && obj->SuperClassID() == kDerivedObjectSuper ? static_cast<IDerivedObject*>(obj)->GetObjRef()
                                                             : nullptr;
}

// Reset mask bits.
enum ResetMask : DWORD {
    kResetSelectedNodes = 0x2,
    kResetBaseObject = 0x800,
    kResetModifiers = 0x1000,
    kResetTransform = 0x2000,
    kResetMaterial = 0x4000,
    kResetObjectProperties = 0x8000,
    kResetParenting = 0x10000,
    kResetName = 0x20000,
    kResetLayer = 0x40000,
};

// The category of each node kind in the reset mask.
struct KindCategory {
    std::int32_t kind;
    DWORD maskBit;
};
constexpr KindCategory kKindCategories[] = {
    {0x10, 0x8},    {0x40, 0x10},  {0x30, 0x20}, {0x20, 0x40}, {0x50, 0x80}, {0x830, 0x100},
    {kNodeKindParticles, 0x200}, {kNodeKindBone, 0x400},
};

DWORD CategoryOf(std::int32_t kind) {
    for (const KindCategory& c : kKindCategories)
        if (c.kind == kind) return c.maskBit;
    return 0;
}

// The first index of an animatable record's number path (the node's own sub-anims) and the reset entry that
// reaches the records below it.
DWORD ResetEntryOfSubAnim(int index) {
    switch (index) {
        case 0:  // "CAC"
        case 4:  // "BO"
            return kResetBaseObject;
        case 1:  // "Vis"
        case 6:  // "IMBM"
        case 7:  // "MBO"
            return kResetObjectProperties;
        case 2:  // "Mods"
            return kResetModifiers;
        case 3:  // "TM"
            return kResetTransform;
        default:
            return 0;
    }
}

constexpr std::uint32_t kObjectPropertyBits =
    kNodeDisplayProps | kNodeRenderProps | kNodeUserProps | kNodeBoneProps | kNodeWireColor | kNodeFrozen | kNodeHidden;

// The pass number of the last reset that reached a derived object's modifiers.
constexpr DWORD kModsResetFlagId = 0x8663DFAB;
class ModsResetFlag : public AnimProperty {
public:
    explicit ModsResetFlag(int pass) : pass(pass) {}
    DWORD ID() override { return kModsResetFlagId; }
    int pass;
};

// Marks obj as reset in pass; false when it was already.
bool MarkModsReset(Object* obj, int pass) {
    auto* flag = static_cast<ModsResetFlag*>(obj->GetAProp(kModsResetFlagId));
    if (!flag) {
        obj->AddAProp(new ModsResetFlag(pass));
        return true;
    }
    if (flag->pass == pass) return false;
    flag->pass = pass;
    return true;
}

// The nodes whose object chain holds obj (through derived objects stacked on it).
void NodesUsing(ReferenceTarget* obj, std::vector<INode*>& nodes, int depth = 0) {
    if (depth > 64) return;
    DependentIterator it(obj);
    while (ReferenceMaker* dep = it.Next()) {
        const SClass_ID sc = dep->SuperClassID();
        if (sc == BASENODE_CLASS_ID)
            nodes.push_back(static_cast<INode*>(dep));
        else if (sc == kDerivedObjectSuper)
            NodesUsing(static_cast<ReferenceTarget*>(dep), nodes, depth + 1);
    }
}

}  // namespace

// ------------------------------------------------------------------------------------------ Override

void RefNode::Override() {
    runInErrorFrame(L"Error Overriding RefNode", L"Unknown Error Overriding RefNode", [&] {
        INode* node = GetNode();
        if (!node) return;
        const int wasBusy = IsBusy();
        SetBusy(1);
        const std::uint32_t f = data_.overrideFlags;
        const TimeValue t = GetCOREInterface()->GetTime();
        auto stepIf = [&](std::uint32_t bit, int word) {
            if (!(f & bit)) return false;
            data_.step = word;
            return true;
        };
        if (stepIf(kNodeOverriddenName, IDS_OVR_NAME)) node->SetName(data_.overriddenName.data());
        if (stepIf(kNodeMaterial, IDS_OVR_MATERIAL)) {
            node->SetMtl(data_.material);
            if (data_.material) {
                Interval valid = FOREVER;
                data_.material->Update(t, valid);
            }
        }
        if (stepIf(kNodeParent, IDS_OVR_PARENT)) overrideParent(node);
        if (stepIf(kNodeGrouping, IDS_OVR_GROUPING)) nodestate::WriteGroupFlags(node, data_.groupFlags);
        if (stepIf(kNodeLayer, IDS_OVR_LAYER)) overrideLayer(node);
        if (stepIf(kNodeObjectOffset, IDS_OVR_OBJECT_OFFSET_TM)) nodestate::WriteObjectOffset(node, data_.objectOffset);
        if (stepIf(kNodeSkinPose, IDS_OVR_SKIN_POSE)) nodestate::WriteSkinPose(node, data_.skinPose);
        if (stepIf(kNodeWireColor, IDS_OVR_WIRE_COLOR)) node->SetWireColor(data_.wireColor);
        if (stepIf(kNodeHidden, IDS_OVR_HIDDEN)) node->Hide((data_.displayBits & kDisplayHiddenBit) ? TRUE : FALSE);
        if (stepIf(kNodeFrozen, IDS_OVR_FROZEN)) node->Freeze((data_.displayBits & kDisplayFrozenBit) ? TRUE : FALSE);
        if (stepIf(kNodeDisplayProps, IDS_OVR_PROPS_DISPLAY)) nodestate::WriteDisplay(node, displayProps());
        if (stepIf(kNodeRenderProps, IDS_OVR_PROPS_RENDER)) nodestate::WriteRender(node, data_.renderProps);
        if (stepIf(kNodeUserProps, IDS_OVR_PROPS_USER)) node->SetUserPropBuffer(data_.userProps);
        if (stepIf(kNodeBoneProps, IDS_OVR_PROPS_BONE)) nodestate::WriteBone(node, data_.boneProps);
        if (stepIf(kNodeTmLocks, IDS_OVR_TM_LOCKS_FLAGS)) nodestate::WriteTmLocks(node, data_.tmLocks);
        overrideExclusionLists(node);
        if (stepIf(kNodeSelectionSets, IDS_OVR_SELECTION_SETS)) overrideSelectionSets(node);
        if (stepIf(kNodeObjectLocalDep, IDS_OVR_OBJ_LOC_DEP)) overrideObjectLocalDependent(node);
        // The modifier overrides and the animatable records re-apply under the step word in force.
        applyModifierOverrides();
        RefBase::Override();
        SetBusy(1);
        if (stepIf(kNodeChildren, IDS_OVR_CHILDREN)) overrideChildren(node);
        SetBusy(wasBusy);
    });
}

void RefNode::overrideParent(INode* node) {
    if (!data_.parent) {
        node->Detach(GetCOREInterface()->GetTime(), FALSE);
        return;
    }
    INode* parent = data_.parent->SuperClassID() == REFBASE_SUPER_CLASS_ID ? static_cast<RefNode*>(data_.parent)->GetNode()
                                                                      : static_cast<INode*>(data_.parent);
    // An unbound parent record attaches its children when its own node comes (message 0x8663DF21).
    if (parent && parent != node->GetParentNode()) parent->AttachChild(node, FALSE);
}

void RefNode::overrideLayer(INode* node) {
    auto* stored = static_cast<ILayer*>(data_.layer);
    if (!stored) return;
    ILayerManager* layers = GetCOREInterface()->GetLayerManager();
    for (int i = 0; i < layers->GetLayerCount(); ++i)
        if (layers->GetLayer(i) == stored) {
            stored->AddToLayer(node);
            return;
        }
    if (ILayer* same = layers->GetLayer(stored->GetName())) {
        same->AddToLayer(node);
        ReplaceReference(Slots().Layer(), same);
        return;
    }
    layers->AddLayer(stored);
    stored->AddToLayer(node);
}

void RefNode::overrideExclusionLists(INode* node) {
    if (data_.overrideFlags & kNodeExclusionList) {
        data_.step = IDS_OVR_EXCL_LIST;
        for (ReferenceTarget* item : data_.exclusionLights) AddNodeToExclusionList(item, node);
    }
    if (data_.overrideFlags & kNodeExclusionMisc) {
        data_.step = IDS_OVR_EXCL_LIST_MISC;
        data_.exclusionModes.SetCount(data_.exclusionOthers.Count());
        for (int i = 0; i < data_.exclusionOthers.Count(); ++i)
            if (data_.exclusionOthers[i]) AddNodeToNodeList(data_.exclusionOthers[i], data_.exclusionModes[i], node);
    }
}

void RefNode::takeOverExclusion(ReferenceTarget* item, int listIndex) {
    INode* node = GetNode();
    if (!item || !node || vandrels::GetOperationMode() != vandrels::kModeLoading) return;
    if (listIndex < 0) {
        if (data_.overrideFlags & kNodeExclusionList) AddNodeToExclusionList(item, node);
    } else if (data_.overrideFlags & kNodeExclusionMisc) {
        AddNodeToNodeList(item, listIndex, node);
    }
}

void RefNode::overrideSelectionSets(INode* node) {
    if (!IsHelperNested())
        for (int setIndex : data_.selectionSets) AddPendingSelectionMember(node, setIndex);
    data_.selectionSets.ZeroCount();
    SetOverrideFlags(kNodeSelectionSets, 0);
}

void RefNode::overrideObjectLocalDependent(INode* node) {
    if (data_.overrideFlags & kNodeObjectSpaceReplaced) return;
    Object* fresh = node->GetObjectRef();
    auto* old = dynamic_cast<Object*>(data_.localDependent);
    ReferenceTarget* oldAbove = nullptr;
    while (fresh && old && fresh != old) {
        // Every local user of the old object (not the animatable records, not the level above) takes the new one.
        std::vector<ReferenceMaker*> users;
        DependentIterator it(old);
        while (ReferenceMaker* dep = it.Next()) users.push_back(dep);
        for (ReferenceMaker* user : users) {
            if (user == this || user == oldAbove || user->SuperClassID() == REFANIM_SUPER_CLASS_ID) continue;
            for (int j = 0; j < user->NumRefs(); ++j)
                if (user->GetReference(j) == old && user->CanTransferReference(j)) user->ReplaceReference(j, fresh);
        }
        fresh->NotifyDependents(FOREVER, 0, nodemsg::kSubAnimStructure);
        fresh->NotifyDependents(FOREVER, nodemsg::kPartObjectChain, nodemsg::kObjectChanged);
        Object* freshBelow = BelowDerived(fresh);
        Object* oldBelow = BelowDerived(old);
        if (!freshBelow || !oldBelow) break;
        oldAbove = old;
        fresh = freshBelow;
        old = oldBelow;
    }
    if (data_.localDependent) DeleteReference(Slots().LocalDependent());
}

bool RefNode::ReapplyRefusedLinks() {
    INode* node = GetNode();
    if (!node) return false;
    bool made = false;
    if (data_.overrideFlags & kNodeParent) {
        INode* before = node->GetParentNode();
        if (data_.parent) overrideParent(node);
        made = node->GetParentNode() != before;
    }
    if (data_.overrideFlags & kNodeChildren)
        for (INode* child : data_.children)
            if (child && child->GetParentNode() != node) {
                node->AttachChild(child, FALSE);
                made = made || child->GetParentNode() == node;
            }
    return made;
}

void RefNode::overrideChildren(INode* node) {
    for (INode* child : data_.children)
        if (child && child->GetParentNode() != node) node->AttachChild(child, FALSE);
    NotifyDependents(FOREVER, 0, nodemsg::kParentReapply);
}

// ------------------------------------------------------------------------------------------ reset

bool RefNode::AcceptsReset(RefAnim* record, DWORD mask) {
    if (!record) return false;
    const Tab<int> numbers = record->GetPathByNumber();
    if (numbers.Count() == 0) return false;
    const DWORD entry = ResetEntryOfSubAnim(numbers[0]);
    return entry && (mask & entry);
}

void RefNode::ResetOverrides(DWORD mask) {
    runInErrorFrame(L"Error Resetting RefNode", L"Unknown Error Resetting RefNode", [&] {
        INode* node = GetNode();
        if (!(mask & kResetSelectedNodes)) {
            if (data_.nodeLoaded && node) data_.nodeKind = computeNodeKind(node);
            if (!(mask & CategoryOf(data_.nodeKind))) return;
        }
        if (mask & kResetBaseObject) DropObjectSpaceRecords();
        if (mask & kResetModifiers) resetModifiersOncePerPass(node);
        if (mask & kResetTransform) SetOverrideFlags(kNodeObjectOffset | kNodeSkinPose, 0);
        if (mask & kResetMaterial) {
            if (data_.overrideFlags & kNodeMaterial) DeleteReference(Slots().Material());
            SetOverrideFlags(kNodeMaterial, 0);
            data_.material = node ? node->GetMtl() : nullptr;
        }
        if (mask & kResetObjectProperties) SetOverrideFlags(kObjectPropertyBits, 0);
        if (mask & kResetParenting) {
            SetOverrideFlags(kNodeParent, 0);
            if (data_.parent) DeleteReference(Slots().Parent());
            SetOverrideFlags(kNodeChildren, 0);
            dropChildren();
            SetOverrideFlags(kNodeGrouping, 0);
        }
        if (mask & kResetName) SetOverrideFlags(kNodeOverriddenName, 0);
        if (mask & kResetLayer) {
            SetOverrideFlags(kNodeLayer, 0);
            if (data_.layer) DeleteReference(Slots().Layer());
        }
        RefBase::ResetOverrides(mask);
    });
}

void RefNode::resetModifiersOncePerPass(INode* node) {
    const int pass = CurrentResetPass();
    bool chainHasDerived = false;
    bool freshInPass = false;
    for (Object* obj = node ? node->GetObjectRef() : nullptr; obj && obj->SuperClassID() == kDerivedObjectSuper;
         obj = BelowDerived(obj)) {
        chainHasDerived = true;
        if (!MarkModsReset(obj, pass)) continue;
        freshInPass = true;
        // The other nodes of this helper sharing the derived object, whose stacks changed, are reset with it.
        std::vector<INode*> sharing;
        NodesUsing(obj, sharing);
        for (INode* other : sharing) {
            RefNode* record = other == node ? nullptr : FindNodeRecord(other);
            if (record && record->GetHelper() == GetHelper() && (record->GetOverrideFlags() & kNodeModifiers))
                record->ResetModifiers();
        }
    }
    if (!chainHasDerived || freshInPass) ResetModifiers();
}
