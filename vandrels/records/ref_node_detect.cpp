// The node record's detection of local edits: the reference messages of its node (and of the helper's scene
// events, sent as the library's node messages) set override bits and store the local values.
#include "frame/module_state.h"
#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "records/node_messages.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

namespace {

RefNode* gApplyingModifiers = nullptr;

// The undo step a layer change gets of its own when the host is not holding already.
constexpr const MCHAR* kLayerOverrideStep = L"Layer Override";

}  // namespace

ModifierOverrideScope::ModifierOverrideScope(RefNode* applying) : previous_(gApplyingModifiers) {
    gApplyingModifiers = applying;
}
ModifierOverrideScope::~ModifierOverrideScope() { gApplyingModifiers = previous_; }
RefNode* ModifierOverrideScope::Applying() { return gApplyingModifiers; }

RefResult RefNode::NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                                    RefMessage message, BOOL propagate) {
    INode* node = GetNode();
    const bool fromNode = node && hTarget == node;
    const int mode = vandrels::GetOperationMode();
    if (mode == vandrels::kModeLoading) {
        if (fromNode && message == nodemsg::kSubAnimStructure)
            return RefBase::NotifyRefChanged(changeInt, hTarget, partID, message, propagate);
        if (fromNode && message == nodemsg::kNodeHandleChanged) {
            NotifyDependents(FOREVER, 0, nodemsg::kDependentChanged);
            return REF_STOP;
        }
        if (message == nodemsg::kParentReapply && hTarget && hTarget == data_.parent) {
            if ((data_.overrideFlags & kNodeParent) && node) overrideParent(node);
            return REF_STOP;
        }
        // The node messages of another record's modifier re-application are heard as when idle.
        RefNode* applying = ModifierOverrideScope::Applying();
        if (!applying || applying == this) return REF_STOP;
    } else if (mode != vandrels::kModeIdle) {
        return REF_STOP;
    } else if (theHold.RestoreOrRedoing()) {
        // Undo brings the flags back through their own records; the sub-animatable tree and the values the
        // record reads follow the node, so that an undone edit neither comes back nor hides the same edit made again.
        if (fromNode && message == nodemsg::kSubAnimStructure)
            return RefBase::NotifyRefChanged(changeInt, hTarget, partID, message, propagate);
        if (fromNode) followUndoneValues(node, partID, message);
        return REF_STOP;
    }
    if (message == nodemsg::kTargetQuery) {
        partID = reinterpret_cast<PartID>(node);
        return REF_STOP;
    }
    if (IsBusy() || !hTarget) return REF_STOP;
    if (fromNode) {
        if (message == nodemsg::kControllerReplaced || message == nodemsg::kSubAnimStructure ||
            message == nodemsg::kNodeChanged) {
            if (partID == nodemsg::kPartIgnored) return REF_STOP;
            if (partID != nodemsg::kPartStructureLater) onModifierMessage(message, partID);
            RefBase::NotifyRefChanged(changeInt, hTarget, partID, message, propagate);
            if (partID != nodemsg::kPartStructureLater && GetNode()) onGeneralChange(GetNode());
            return REF_STOP;
        }
        onOwnNodeMessage(node, partID, message);
        return REF_STOP;
    }
    // A modifier of a mirror: its toggles or its name.
    const SClass_ID sc = hTarget->SuperClassID();
    if (sc == OSM_CLASS_ID || sc == WSM_CLASS_ID) {
        mods_.OnModifierMessage(hTarget, message);
        return REF_STOP;
    }
    // A stored child: it went to another parent, or a helper adopted it as a referenced node.
    if (sc != BASENODE_CLASS_ID) return REF_STOP;
    const int position = data_.children.IndexOf(static_cast<INode*>(hTarget));
    if (position < 0) return REF_STOP;
    INode* child = data_.children[position];
    if (message == nodemsg::kParentChanged && child->GetParentNode() != node) removeChild(position);
    else if (message == nodemsg::kNodeAdopted && FindNodeRecord(child)) removeChild(position);
    return REF_STOP;
}

void RefNode::onOwnNodeMessage(INode* node, PartID& partID, RefMessage message) {
    switch (message) {
        case nodemsg::kParentChanged:
            onParentChanged(node);
            return;
        case nodemsg::kChildAttached:
            onChildAttached(reinterpret_cast<INode*>(partID));
            return;
        case nodemsg::kGroupChanged:
            if (data_.overrideFlags & kNodeChildren) return;
            SetOverrideFlags(kNodeGrouping, kNodeGrouping);
            data_.groupFlags = nodestate::ReadGroupFlags(node);
            return;
        case nodemsg::kLayerChanged:
            onLayerChanged(node);
            return;
        case nodemsg::kDisplayChanged:
            setFlagsSilently(kNodeDisplayProps, kNodeDisplayProps);
            setDisplayProps(nodestate::ReadDisplay(node));
            return;
        case nodemsg::kRenderChanged:
        case nodemsg::kRenderSwitch:
        case nodemsg::kRenderValue:
            onRenderMessage(node);
            return;
        case nodemsg::kUserPropsChanged:
            SetOverrideFlags(kNodeUserProps, kNodeUserProps);
            node->GetUserPropBuffer(data_.userProps);
            return;
        case nodemsg::kBoneChanged:
            SetOverrideFlags(kNodeBoneProps, kNodeBoneProps);
            data_.boneProps = nodestate::ReadBone(node);
            return;
        case nodemsg::kMaterial: {
            Mtl* mtl = node->GetMtl();
            if (mtl == data_.material) return;
            if (!(data_.overrideFlags & kNodeMaterial)) {
                data_.material = nullptr;  // the baseline was no reference
                SetOverrideFlags(kNodeMaterial, kNodeMaterial);
            }
            setMaterialRef(mtl);
            return;
        }
        case nodemsg::kWireColor: {
            const DWORD color = node->GetWireColor();
            if (color != data_.wireColor) setFlagsSilently(kNodeWireColor, kNodeWireColor);
            data_.wireColor = color;
            return;
        }
        case nodemsg::kDisplay:
            onDisplayMessage(node, partID);
            return;
        case nodemsg::kObjectChanged:
        case nodemsg::kModifierStackChanged:
            onModifierMessage(message, partID);
            return;
        default:
            return;
    }
}

void RefNode::followUndoneValues(INode* node, PartID partID, RefMessage message) {
    switch (message) {
        case nodemsg::kDisplayChanged:
            setDisplayProps(nodestate::ReadDisplay(node));
            return;
        case nodemsg::kRenderChanged:
        case nodemsg::kRenderSwitch:
        case nodemsg::kRenderValue:
            data_.renderProps = nodestate::ReadRender(node);
            return;
        case nodemsg::kUserPropsChanged:
            node->GetUserPropBuffer(data_.userProps);
            return;
        case nodemsg::kBoneChanged:
            data_.boneProps = nodestate::ReadBone(node);
            return;
        case nodemsg::kWireColor:
            data_.wireColor = node->GetWireColor();
            return;
        case nodemsg::kDisplay: {
            std::uint16_t bits = data_.displayBits;
            if (partID & nodemsg::kPartHidden)
                bits = std::uint16_t((bits & ~kDisplayHiddenBit) | (node->IsHidden() ? kDisplayHiddenBit : 0));
            if (partID & nodemsg::kPartFrozen)
                bits = std::uint16_t((bits & ~kDisplayFrozenBit) | (node->IsFrozen() ? kDisplayFrozenBit : 0));
            data_.displayBits = bits;
            if (!(partID & (nodemsg::kPartHidden | nodemsg::kPartFrozen))) setDisplayProps(nodestate::ReadDisplay(node));
            return;
        }
        default:
            return;
    }
}

void RefNode::onParentChanged(INode* node) {
    INode* parent = node->GetParentNode();
    ReferenceTarget* stored = nullptr;
    if (parent && !parent->IsRootNode()) {
        RefNode* parentRecord = FindNodeRecord(parent);
        stored = parentRecord ? static_cast<ReferenceTarget*>(parentRecord) : parent;
    }
    SetOverrideFlags(kNodeParent, kNodeParent);
    ReplaceReference(Slots().Parent(), stored);
    // The node keeps its place in the world under the new parent.
    const TimeValue t = GetCOREInterface()->GetTime();
    Matrix3 tm = node->GetNodeTM(t);
    node->SetNodeTM(t, tm);
}

void RefNode::onChildAttached(INode* child) {
    SetOverrideFlags(kNodeChildren, kNodeChildren);
    // A referenced child comes back under this node by itself; only local children are kept.
    if (!child || FindNodeRecord(child) || data_.children.IndexOf(child) >= 0) return;
    appendChild(child);
}

void RefNode::onLayerChanged(INode* node) {
    const bool ownStep = !theHold.Holding();
    if (ownStep) theHold.Begin();
    try {
        SetOverrideFlags(kNodeLayer, kNodeLayer);
        ReplaceReference(Slots().Layer(), node->GetLayer());
    } catch (...) {
        if (ownStep) theHold.Cancel();
        throw;
    }
    if (ownStep) theHold.Accept(kLayerOverrideStep);
}

void RefNode::onRenderMessage(INode* node) {
    const NodeRenderProps live = nodestate::ReadRender(node);
    if (!(data_.overrideFlags & kNodeRenderProps) && nodestate::RenderDiffers(live, data_.renderProps))
        SetOverrideFlags(kNodeRenderProps, kNodeRenderProps);
    data_.renderProps = live;
}

void RefNode::onDisplayMessage(INode* node, PartID part) {
    if (part & nodemsg::kPartHidden) {
        const std::uint16_t hidden = node->IsHidden() ? kDisplayHiddenBit : 0;
        if ((data_.displayBits & kDisplayHiddenBit) != hidden) SetOverrideFlags(kNodeHidden, kNodeHidden);
        data_.displayBits = std::uint16_t((data_.displayBits & ~kDisplayHiddenBit) | hidden);
    }
    if (part & nodemsg::kPartFrozen) {
        const std::uint16_t frozen = node->IsFrozen() ? kDisplayFrozenBit : 0;
        if ((data_.displayBits & kDisplayFrozenBit) != frozen) SetOverrideFlags(kNodeFrozen, kNodeFrozen);
        data_.displayBits = std::uint16_t((data_.displayBits & ~kDisplayFrozenBit) | frozen);
    }
    if (part & (nodemsg::kPartHidden | nodemsg::kPartFrozen)) return;
    const NodeDisplayProps live = nodestate::ReadDisplay(node);
    if (nodestate::DisplayDiffers(live, displayProps())) SetOverrideFlags(kNodeDisplayProps, kNodeDisplayProps);
    setDisplayProps(live);
}

void RefNode::onGeneralChange(INode* node) {
    onRenderMessage(node);
    onDisplayMessage(node, 0);
}

void RefNode::onModifierMessage(RefMessage message, PartID part) {
    INode* node = GetNode();
    if (!node) return;
    const bool structure = message == nodemsg::kModifierStackChanged ||
                           (message == nodemsg::kObjectChanged && part == nodemsg::kPartObjectChain &&
                            mods_.TakeBaseObjectWatch());
    if (structure) {
        // A count that changed leaves the sub-animatable tree behind the shifted paths: it is built afresh.
        if (mods_.OnStackChanged())
            BuildSubAnimTree();
        else
            Rescan();
        return;
    }
    if (message == nodemsg::kControllerReplaced || message == nodemsg::kSubAnimStructure ||
        message == nodemsg::kNodeChanged)
        mods_.VerifyObjectSpace();
}
