// The node record's modifier mirrors: one RefModifier per entry of the node's world-space and object-space
// stacks, the change lists (deleted, renamed, toggled referenced modifiers) and the counts at the last merge;
// building them, noticing the user's stack edits, putting the edits back on a reload, resets, chunks and the
// diagnostics lines. The node record owns the mirrors and keeps their modifiers among its references.
#pragma once

#include "ioapi.h"
#include "records/ref_modifier.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

class INode;
class RefBase;
class RefNode;
struct ModWorkList;
class ReferenceTarget;

// Which mirror an entry belongs to.
enum class ModMirror { WorldSpace, ObjectSpace };

// What the mirrors need of the node record that owns them.
class ModifierMirrorOwner {
public:
    virtual INode* MirrorNode() = 0;
    // Points the record's reference for entry position of mirror at mod (null lets go); keepOld keeps a
    // released modifier alive for an undo step that may bring it back.
    virtual void SetMirrorReference(ModMirror mirror, int position, ReferenceTarget* mod, bool keepOld) = 0;
    virtual std::uint32_t MirrorFlags() = 0;
    // Sets the masked override bits, undoably when undoable and the host is holding.
    virtual void SetMirrorFlags(std::uint32_t mask, std::uint32_t value, bool undoable) = 0;
    // Whether the helper saves the referenced content with the scene.
    virtual bool MirrorsPersist() = 0;
    // The record whose animatable records are addressed through "Mods" paths.
    virtual RefBase& MirrorRecord() = 0;

protected:
    ~ModifierMirrorOwner() = default;
};

class NodeModifierMirrors {
public:
    explicit NodeModifierMirrors(ModifierMirrorOwner& owner) : owner_(owner) {}
    ~NodeModifierMirrors() { FreeAll(); }
    NodeModifierMirrors(const NodeModifierMirrors&) = delete;
    NodeModifierMirrors& operator=(const NodeModifierMirrors&) = delete;

    Tab<RefModifier*>& List(ModMirror mirror) { return mirror == ModMirror::WorldSpace ? wsMods_ : osMods_; }
    const Tab<RefModifier*>& WorldSpace() const { return wsMods_; }
    const Tab<RefModifier*>& ObjectSpace() const { return osMods_; }
    const Tab<ModDeleted*>& Deleted() const { return deletedMods_; }
    const Tab<ModChangedName*>& Renamed() const { return renamedMods_; }
    const Tab<ModChangedToggles*>& Toggled() const { return toggledMods_; }
    std::int32_t CountAtMerge(ModMirror mirror) const { return countsAtMerge_[mirror == ModMirror::WorldSpace ? 0 : 1]; }

    // Building (modifier_mirrors.cpp).
    // Mirrors the node's stacks afresh and takes over the change entries of a node record that shares a derived
    // object with the node; answers whether it took any over.
    bool Monitor();
    // Reset "Modifiers": every entry counts as referenced again and the change lists are emptied; a locally
    // replaced object-space stack is dropped.
    void Reset();
    // Reset "Base Object": drops the object-space entries of a locally replaced stack.
    void DropObjectSpace();
    // The mirrors and change lists as the diagnostics print them.
    MSTR Lines() const;
    // The reference of entry position of mirror (null for a boundary or an empty position).
    ReferenceTarget* Reference(ModMirror mirror, int position) const;
    // The host restores a reference into entry position (a load, an undo of a reference change).
    void RestoreReference(ModMirror mirror, int position, ReferenceTarget* target);
    // Whether the entry at position holds a referenced modifier (no real dependency while referenced content
    // does not count).
    bool HoldsReferencedOnly(ModMirror mirror, int position) const;
    // The clone's mirrors: copies of the entries referencing the same modifiers, and of the change lists.
    void CloneTo(NodeModifierMirrors& dst) const;
    // Lets go of every modifier and frees all entries (a failed load).
    void DropAll();
    void FreeAll();

    // Detection while the user works (modifier_detection.cpp).
    // A message from a modifier the mirrors reference: 80 checks its toggles, 247 and 645 its name.
    void OnModifierMessage(ReferenceTarget* mod, std::uint32_t message);
    // The node's stack changed (249, 80 with the object-chain part): answers whether a recorded count changed
    // (then the sub-animatable tree is to be rebuilt rather than rescanned).
    bool OnStackChanged();
    // A general change of the node: the object-space mirror must still match the live chain.
    void VerifyObjectSpace();
    // Armed after a stack check; a message 80 with the object-chain part is followed only while armed.
    bool TakeBaseObjectWatch();

    // Collect and re-application (modifier_application.cpp).
    // Captures the contexts of the local modifiers still in their stacks.
    void CollectLocal();
    // Puts the recorded stack edits onto the freshly merged stacks (the node's modifier overrides).
    void Apply();
    // After a load: drops local entries whose modifier did not come back.
    void Relink();

    // Chunks (modifier_mirrors_io.cpp).
    IOResult Save(ISave* isave) const;
    // Takes the chunk open in iload when it is one of the mirrors'; taken tells.
    IOResult LoadChunk(ILoad* iload, bool& taken);
    void BeginLoad();

    // The whole state, for the undo record (records/mods_restore.h).
    struct Snapshot;
    std::unique_ptr<Snapshot> TakeSnapshot() const;
    void RestoreSnapshot(const Snapshot& snapshot);

private:
    void append(ModMirror mirror, RefModifier* entry, ReferenceTarget* mod);
    void insert(ModMirror mirror, int position, RefModifier* entry, ReferenceTarget* mod);
    void remove(ModMirror mirror, int position, bool keepOld);
    void dropEntries(ModMirror mirror, bool keepOld = false);
    int takeOverSharedChanges(IDerivedObject* shared, NodeModifierMirrors& other);
    void checkToggles(ModMirror mirror, int position);
    void checkRename(ModMirror mirror, int position);
    void markChanged(bool undoable);
    void markObjectSpaceReplaced();
    bool checkStack(ModMirror mirror);
    bool checkWorldSpace();
    bool checkObjectSpace();
    void recordDeleted(const RefModifier& entry);
    // Puts a RefModsRestore for the owner when the host holds and none is in the open undo step yet.
    void putUndoRecord();
    void applyChangeLists(ModWorkList& work);
    void applyWorldSpace(ModWorkList& work);
    void applyObjectSpace(ModWorkList& work);
    // Mirrors mirror's live stack afresh: the modifiers of locals as the local entries stored for them, every
    // other one as referenced, with the name and chain index it came with.
    void rebuild(ModMirror mirror, const ModWorkList& work,
                 const std::unordered_map<Modifier*, const RefModifier*>& locals);

    ModifierMirrorOwner& owner_;
    Tab<RefModifier*> osMods_;
    Tab<RefModifier*> wsMods_;
    Tab<ModDeleted*> deletedMods_;
    Tab<ModChangedName*> renamedMods_;
    Tab<ModChangedToggles*> toggledMods_;
    std::int32_t countsAtMerge_[2] = {0, 0};
    int loadCursor_[5] = {};  // next position that a loaded entry chunk fills, per list
    bool baseObjectWatch_ = false;
};

// A copy of the mirrors for the undo record: entries with the modifiers they reference, the change lists and the
// counts at merge.
struct NodeModifierMirrors::Snapshot {
    using Entry = std::pair<std::unique_ptr<RefModifier>, ReferenceTarget*>;  // a null entry stays null
    std::vector<Entry> worldSpace, objectSpace;
    Tab<ModDeleted*> deleted;
    Tab<ModChangedName*> renamed;
    Tab<ModChangedToggles*> toggled;
    std::int32_t countsAtMerge[2] = {0, 0};

    Snapshot() = default;
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot() {
        FreeModList(deleted);
        FreeModList(renamed);
        FreeModList(toggled);
    }
};
