// The node record: wraps one scene node merged from a reference file (reference 0). It keeps the node's name in
// the reference file, the node's state as merged (the baseline) and, per property the user changed locally, the
// local value and an override bit; on a reload it moves the scene's references to the freshly merged node.
#pragma once

#include "geom.h"
#include "records/node_state.h"
#include "records/ref_node_state.h"
#include "records/modifier_override_scope.h"
#include "records/node_record_slots.h"
#include "records/ref_node_flags.h"
#include "records/ref_base.h"
#include "records/modifier_mirrors.h"

#include <cstdint>
#include <functional>

class INode;
class Mtl;
class MAXException;
struct NotifyInfo;

class RefNode : public RefBase, public RefNodeInterface, private ModifierMirrorOwner {
public:
    // A record without node (the host's, before a scene file fills it): nodeLoaded is 0.
    RefNode();
    // A record for node owned by helper: it takes the node's name as its reference name and builds its modifier
    // mirrors and animatable records. Throws MAXException ("Error Creating RefNode") when that fails.
    RefNode(INode* node, RecordOwner* helper);
    ~RefNode() override;

    Class_ID ClassID() override { return REFNODE_CLASS_ID; }

    INode* GetNode();
    const MSTR& GetName() const { return data_.referenceName; }
    // 1 once a load bound the record to a merged node (cleared by the collect pass before saving).
    int IsNodeLoaded() const { return data_.nodeLoaded; }
    // Whether the node was present when the last collect began (what an unload or a duplicate works on).
    int WasNodeLoadedAtCollect() const { return data_.nodeLoadedAtCollect; }
    void SetName(const MSTR& name) { data_.referenceName = name; }
    std::uint32_t GetOverrideFlags() const { return data_.overrideFlags; }
    // The local children the record keeps (nodes without records of their own attached under its node).
    const Tab<INode*>& GetChildren() const { return data_.children; }
    // Sets the masked override bits, undoably while the host is holding.
    void SetOverrideFlags(std::uint32_t mask, std::uint32_t value);

    // The record protocol.
    // Filters the animatable records a reset reaches by the first index of their number path.
    bool AcceptsReset(RefAnim* record, DWORD mask) override;
    void Collect() override;
    void CaptureBaseline() override;
    void Update(ReferenceTarget* newTarget) override;
    void FinishLoad() override;
    // Re-applies every stored category in its fixed order (records/ref_node_override.cpp).
    void Override() override;
    // Clears the categories mask selects, then resets the animatable records.
    void ResetOverrides(DWORD mask) override;
    void ApplyNamePrefix(const MSTR& prefix) override;
    bool HasOverrides() override;
    void PrintData(int mode) override;
    MSTR GetInfo() override;
    MSTR GetTypeName() override;

    // The local values the record keeps for its categories.
    std::uint8_t GetGroupFlags() const { return data_.groupFlags; }
    ReferenceTarget* GetStoredParent() const { return data_.parent; }
    ReferenceTarget* GetStoredLayer() const { return data_.layer; }
    ReferenceTarget* GetLocalDependent() const { return data_.localDependent; }
    const Tab<ReferenceTarget*>& GetExclusionLights() const { return data_.exclusionLights; }
    const Tab<ReferenceTarget*>& GetExclusionOthers() const { return data_.exclusionOthers; }
    const Tab<int>& GetExclusionModes() const { return data_.exclusionModes; }
    const Tab<int>& GetSelectionSets() const { return data_.selectionSets; }
    std::int32_t GetNodeKind() const { return data_.nodeKind; }
    // The helper notes the named selection sets holding the node before a save (sets bit 0x800000).
    void AddSelectionSet(int setIndex);
    // The node's set memberships need no restoring (it stayed in its sets): the list is emptied and bit 0x800000
    // cleared (undoably).
    void ForgetSelectionSets();

    // The user renamed the node (forwarded by the helper's scene events).
    void OnNodeRenamed(const MSTR& newName);
    // The named selection set at index setIndex is gone: the record forgets it, and the indices after it move
    // down by one.
    void OnSelectionSetRemoved(int setIndex);
    // Whether a scene item other than the records depends on node.
    bool HasLocalDependents(ReferenceTarget* item);
    // Modifier monitoring (records/ref_node_mods.cpp; the mirrors themselves in records/modifier_mirrors.h).
    // Builds the mirrors of the node's stacks and takes over the change entries of a node record that shares a
    // derived object with this node. Throws MAXException ("Error Monitoring Modifiers in RefNode") on failure.
    void MonitorModifiers();
    // Reset "Modifiers" and "Base Object" (see NodeModifierMirrors::Reset and DropObjectSpace).
    void ResetModifiers() { mods_.Reset(); }
    void DropObjectSpaceRecords() { mods_.DropObjectSpace(); }
    MSTR ModifierLines() const { return mods_.Lines(); }
    NodeModifierMirrors& ModifierMirrors() { return mods_; }

    // References: the base ones, then material, parent, children, layer, the modifiers of the world-space and
    // then the object-space mirror, exclusion lights, local dependent and the other exclusion items.
    // The record's reference slots, in the layout of node_record_slots.h.
    vandrels::NodeRecordSlots Slots() const {
        return vandrels::NodeRecordSlots({NumBaseRefs(), data_.children.Count(), mods_.WorldSpace().Count(),
                                          mods_.ObjectSpace().Count(), data_.exclusionLights.Count(),
                                          data_.exclusionOthers.Count()});
    }
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // Only the node record's own references move, and only while loading.
    BOOL CanTransferReference(int i) override;
    // Detection: the node's own messages and the library's node messages (records/ref_node_detect.cpp).
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;

    IOResult Save(ISave* isave) override;
    // A read error empties the animatable records and answers the error.
    IOResult Load(ILoad* iload) override;

    // While referenced content does not count (saving, unloading, duplicating), a modifier that a mirror entry
    // holds as referenced is no real dependency: it is written as an empty reference and comes again with the
    // reference file. The other references answer as the base record's do.
    BOOL IsRealDependency(ReferenceTarget* target) override;

    BaseInterface* GetInterface(Interface_ID id) override;
    using RefBase::GetInterface;

    // RefNodeInterface
    int ScriptNumRefAnims() override { return NumRefAnims(); }
    ReferenceTarget* ScriptGetRefAnimChecked(int index) override;
    MSTR ScriptGetName() override { return data_.referenceName; }
    // Sets the reference name and renames a present node that carries no local name.
    void ScriptSetName(const MCHAR* name) override;

    // Work lists of the exclusion-list scans (records/exclusion_lists.h): the lights, and the other items with
    // the index of their node list, whose lists name this record's node; a collect compares and empties them.
    using ScratchExclusion = RefNodeScratchExclusion;
    Tab<ReferenceTarget*>& ScratchLights() { return data_.scratchLights; }
    Tab<ScratchExclusion>& ScratchOthers() { return data_.scratchOthers; }

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    static void notifyProc(void* param, NotifyInfo* info);
    void registerNotifications();
    void unregisterNotifications();
    std::int32_t computeNodeKind(INode* node);
    // Sets the masked bits without an undo record (collect's list refreshes, wire colour, display messages).
    void setFlagsSilently(std::uint32_t mask, std::uint32_t value) {
        data_.overrideFlags = (data_.overrideFlags & ~mask) | (value & mask);
    }
    void setDisplayProps(const NodeDisplayProps& display);
    NodeDisplayProps displayProps() const;

    // Detection (records/ref_node_detect.cpp).
    void onOwnNodeMessage(INode* node, PartID& partID, RefMessage message);
    // While the host undoes or redoes: the values the record reads from its node follow the node, and the
    // override bits stay as their own undo records leave them.
    void followUndoneValues(INode* node, PartID partID, RefMessage message);
    void onParentChanged(INode* node);
    void onChildAttached(INode* child);
    void onLayerChanged(INode* node);
    void onRenderMessage(INode* node);
    void onDisplayMessage(INode* node, PartID part);
    void onGeneralChange(INode* node);
    // Modifier monitoring's share of the node's messages (REFMSG_MODIFIER_STACK_CHANGED, REFMSG_CHANGE with the
    // object-chain part, the mirror check of a general change), of the collect pass, of the re-application and
    // of the end of a load (records/ref_node_mods.cpp).
    void onModifierMessage(RefMessage message, PartID part);
    void collectModifierChanges();
    void applyModifierOverrides();
    void relinkModifierReferences();

    // Collect's refreshes (records/ref_node_collect.cpp).
    void detectCollectedValues(INode* node);
    void refreshExclusionLights();
    void refreshExclusionOthers();
    void refreshLocalDependent(INode* node);
    void recomputeLocalDependentsBit(INode* node);

    // Re-application (records/ref_node_override.cpp).
    void overrideParent(INode* node);
    void overrideLayer(INode* node);
    void overrideExclusionLists(INode* node);
    // A load moved an exclusion reference from a stored item to the freshly merged one (which the node's own
    // re-application may have met before): the new item's list (listIndex, or -1 for a light) gets the node.
    void takeOverExclusion(ReferenceTarget* item, int listIndex);
    void overrideSelectionSets(INode* node);
    void overrideObjectLocalDependent(INode* node);
    void overrideChildren(INode* node);
    // Reset of the modifier categories once per reset pass for a shared derived object.
    void resetModifiersOncePerPass(INode* node);
    void dropChildren();

    // Reference bookkeeping of the node record's own lists.
    void setMaterialRef(Mtl* mtl);
    void appendChild(INode* child);
    void removeChild(int position);
    void appendExclusionLight(ReferenceTarget* light);
    void removeExclusionLight(int position);
    void appendExclusionOther(ReferenceTarget* item, int listIndex);
    void removeExclusionOther(int position);
    friend class ChildrenRestore;
    // Ends a failed operation: lets go of the node and throws the composed message.
    [[noreturn]] void fail(const MCHAR* words, int step, const MAXException* cause);
    void runInErrorFrame(const MCHAR* words, const MCHAR* unknownWords, const std::function<void()>& op);

    // ModifierMirrorOwner: the mirrors' modifiers are this record's references.
    INode* MirrorNode() override { return GetNode(); }
    void SetMirrorReference(ModMirror mirror, int position, ReferenceTarget* mod, bool keepOld) override;
    std::uint32_t MirrorFlags() override { return data_.overrideFlags; }
    void SetMirrorFlags(std::uint32_t mask, std::uint32_t value, bool undoable) override;
    bool MirrorsPersist() override;
    RefBase& MirrorRecord() override { return *this; }

    RefNodeState data_;
    NodeModifierMirrors mods_{*this};
};
