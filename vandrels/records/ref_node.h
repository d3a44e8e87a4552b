// The node record: wraps one scene node merged from a reference file (reference 0). It keeps the node's name in
// the reference file, the node's state as merged (the baseline) and, per property the user changed locally, the
// local value and an override bit; on a reload it moves the scene's references to the freshly merged node.
#pragma once

#include "geom.h"
#include "records/node_state.h"
#include "records/node_record_slots.h"
#include "records/ref_base.h"
#include "records/ref_modifier.h"

#include <cstdint>
#include <functional>

class INode;
class Mtl;
class MAXException;
struct NotifyInfo;

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

class RefNode;

// While a node record re-applies its modifier overrides during a load, the other node records hear the node
// messages that the re-application causes; the modifier monitoring holds this scope for that time.
class ModifierOverrideScope {
public:
    explicit ModifierOverrideScope(RefNode* applying);
    ~ModifierOverrideScope();
    ModifierOverrideScope(const ModifierOverrideScope&) = delete;
    ModifierOverrideScope& operator=(const ModifierOverrideScope&) = delete;
    // The record re-applying its modifier overrides, or null.
    static RefNode* Applying();

private:
    RefNode* previous_;
};

class RefNode : public RefBase, public RefNodeInterface {
public:
    // A record without node (the host's, before a scene file fills it): nodeLoaded is 0.
    RefNode();
    // A record for node owned by helper: it takes the node's name as its reference name and builds its modifier
    // mirrors and animatable records. Throws MAXException ("Error Creating RefNode") when that fails.
    RefNode(INode* node, RecordOwner* helper);
    ~RefNode() override;

    Class_ID ClassID() override { return REFNODE_CLASS_ID; }

    INode* GetNode();
    const MSTR& GetName() const { return referenceName_; }
    // 1 once a load bound the record to a merged node (cleared by the collect pass before saving).
    int IsNodeLoaded() const { return nodeLoaded_; }
    // Whether the node was present when the last collect began (what an unload or a duplicate works on).
    int WasNodeLoadedAtCollect() const { return nodeLoadedAtCollect_; }
    void SetName(const MSTR& name) { referenceName_ = name; }
    std::uint32_t GetOverrideFlags() const { return overrideFlags_; }
    // The local children the record keeps (nodes without records of their own attached under its node).
    const Tab<INode*>& GetChildren() const { return children_; }
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
    std::uint8_t GetGroupFlags() const { return groupFlags_; }
    ReferenceTarget* GetStoredParent() const { return parent_; }
    ReferenceTarget* GetStoredLayer() const { return layer_; }
    ReferenceTarget* GetLocalDependent() const { return localDependent_; }
    const Tab<ReferenceTarget*>& GetExclusionLights() const { return exclusionLights_; }
    const Tab<ReferenceTarget*>& GetExclusionOthers() const { return exclusionOthers_; }
    const Tab<int>& GetExclusionModes() const { return exclusionModes_; }
    const Tab<int>& GetSelectionSets() const { return selectionSets_; }
    std::int32_t GetNodeKind() const { return nodeKind_; }
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
    // Modifier monitoring (records/ref_node_mods.cpp).
    // Builds the mirrors of the node's stacks and takes over the change entries of a node record that shares a
    // derived object with this node. Throws MAXException ("Error Monitoring Modifiers in RefNode") on failure.
    void MonitorModifiers();
    // Reset "Modifiers": every entry counts as referenced again and the change lists are emptied; a locally
    // replaced object-space stack is dropped.
    void ResetModifiers();
    // Reset "Base Object": drops the object-space entries of a locally replaced stack.
    void DropObjectSpaceRecords();
    // The mirrors and change lists as the diagnostics print them.
    MSTR ModifierLines();
    // Detection (CheckToggles, CheckRename, CheckStack, VerifyObjectSpace), CollectModifiers,
    // ApplyModifierOverrides and their undo record RefModsRestore come with the modifier overrides.

    // References: the base ones, then material, parent, children, layer, the modifiers of the world-space and
    // then the object-space mirror, exclusion lights, local dependent and the other exclusion items.
    // The record's reference slots, in the layout of node_record_slots.h.
    vandrels::NodeRecordSlots Slots() const {
        return vandrels::NodeRecordSlots({NumBaseRefs(), children_.Count(), wsMods_.Count(), osMods_.Count(),
                                          exclusionLights_.Count(), exclusionOthers_.Count()});
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
    MSTR ScriptGetName() override { return referenceName_; }
    // Sets the reference name and renames a present node that carries no local name.
    void ScriptSetName(const MCHAR* name) override;

    // Work lists of the exclusion-list scans (records/exclusion_lists.h): the lights, and the other items with
    // the index of their node list, whose lists name this record's node; a collect compares and empties them.
    struct ScratchExclusion {
        ReferenceTarget* item;
        int listIndex;
    };
    Tab<ReferenceTarget*>& ScratchLights() { return scratchLights_; }
    Tab<ScratchExclusion>& ScratchOthers() { return scratchOthers_; }

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    static void notifyProc(void* param, NotifyInfo* info);
    void registerNotifications();
    void unregisterNotifications();
    std::int32_t computeNodeKind(INode* node);
    // Sets the masked bits without an undo record (collect's list refreshes, wire colour, display messages).
    void setFlagsSilently(std::uint32_t mask, std::uint32_t value) {
        overrideFlags_ = (overrideFlags_ & ~mask) | (value & mask);
    }
    void setDisplayProps(const NodeDisplayProps& display);
    NodeDisplayProps displayProps() const;

    // Detection (records/ref_node_detect.cpp).
    void onOwnNodeMessage(INode* node, PartID& partID, RefMessage message);
    void onParentChanged(INode* node);
    void onChildAttached(INode* child);
    void onLayerChanged(INode* node);
    void onRenderMessage(INode* node);
    void onDisplayMessage(INode* node, PartID part);
    void onGeneralChange(INode* node);
    // Modifier monitoring's share of the node's messages (REFMSG_MODIFIER_STACK_CHANGED, REFMSG_CHANGE with the
    // object-chain part, the mirror check of a general change) and of the collect pass; they come with the modifier overrides.
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
    // The slot of the position-th entry of list (the world-space or the object-space mirror).
    int modSlot(const Tab<RefModifier*>& list, int position) const {
        return &list == &wsMods_ ? Slots().WorldSpaceModifier(position) : Slots().ObjectSpaceModifier(position);
    }
    // Appends entry to list (the world-space or object-space mirror) and references its modifier.
    void appendModEntry(Tab<RefModifier*>& list, RefModifier* entry, ReferenceTarget* mod);
    // Lets go of the modifiers of list and frees its entries.
    void dropModEntries(Tab<RefModifier*>& list);
    void freeModLists();
    int mergeInstancedChanges(int sharedCount, RefNode* other);
    IOResult saveModifierChunks(ISave* isave);
    IOResult loadModifierChunk(ILoad* iload, bool& taken);
    void cloneModifiersTo(RefNode* dst);

    int step_ = 0;  // the string id of the step word in force, or 0 (the string buffer is shared: no pointer)

    MSTR referenceName_;
    std::int32_t nodeLoaded_ = 0;
    std::int32_t nodeLoadedAtCollect_ = 0;
    std::uint32_t overrideFlags_ = 0;
    MSTR overriddenName_;
    Mtl* material_ = nullptr;
    ReferenceTarget* parent_ = nullptr;
    Tab<INode*> children_;
    std::uint8_t groupFlags_ = 0;
    ReferenceTarget* layer_ = nullptr;
    NodeObjectOffset objectOffset_;
    NodeSkinPose skinPose_;
    std::uint32_t wireColor_ = 0;
    std::uint16_t displayBits_ = 0;
    std::uint8_t displayValues_[2] = {};
    NodeRenderProps renderProps_;
    MSTR userProps_;
    NodeBoneProps boneProps_;
    std::uint16_t tmLocks_ = 0;
    Tab<ReferenceTarget*> exclusionLights_;
    Tab<ReferenceTarget*> scratchLights_;
    ReferenceTarget* localDependent_ = nullptr;
    std::int32_t nodeKind_ = 0;
    Tab<int> selectionSets_;
    Tab<ReferenceTarget*> exclusionOthers_;
    Tab<int> exclusionModes_;
    Tab<ScratchExclusion> scratchOthers_;
    INode* placeholderFor_ = nullptr;
    Tab<RefModifier*> osMods_;
    Tab<RefModifier*> wsMods_;
    Tab<ModDeleted*> deletedMods_;
    Tab<ModChangedName*> renamedMods_;
    Tab<ModChangedToggles*> toggledMods_;
    int modLoadCursor_[5] = {};  // next position that a loaded entry chunk fills, per list
    std::int32_t modCountsAtMerge_[2] = {0, 0};
    int notificationsRegistered_ = 0;
};
