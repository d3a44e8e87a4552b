// The scene's named selection sets: named, ordered lists of nodes, kept as one scene part. Members are
// references of the sets object, so a node deleted from the scene leaves every set it was in.
#pragma once

#include "ref.h"

#include <vector>

namespace hostrt {

// The named selection sets of one scene. Set names are unique (compared without regard to case) and never
// empty. Members are the object's references, laid out set after set; a member whose node was deleted reads
// as absent (the counts and indices below skip it). Changing the sets is not recorded for undo.
//
// Broadcasts: 184 after a set is made (call parameter: MSTR* holding its name), 185 after a set is removed
// (MSTR* holding its name), 188 after a set is renamed (NameChange* with the old and the new name, no node).
class NamedSelSets : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48535E01, 0x00000001);

    int Count() const { return int(sets_.size()); }
    // Name of set i; empty for an index out of range.
    MSTR Name(int i) const;
    // Index of the set of that name, -1 when none.
    int Find(const MSTR& name) const;
    // Number of live members of set i (0 for an index out of range).
    int ItemCount(int i) const;
    // Live member j of set i; null when out of range.
    INode* Item(int i, int j) const;
    // The live members of set i, in order.
    std::vector<INode*> Items(int i) const;

    // Makes a new last set of these nodes (null entries and repeats are left out). False, changing nothing,
    // when the name is empty or taken.
    bool Add(const INodeTab& nodes, const MSTR& name);
    // Gives the set of that name these nodes instead; false when there is no such set.
    bool Replace(const INodeTab& nodes, const MSTR& name);
    bool Remove(const MSTR& name);
    // False when i is out of range, the name is empty or another set has it. Renaming a set to its own name
    // (same case) changes nothing and broadcasts nothing.
    bool Rename(int i, const MSTR& name);
    // Removes every set (185 for each, last first).
    void Clear();

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"NamedSelectionSets"; }
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // A deleted node leaves its sets at once.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    // Set names and member counts (members come back as references).
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    struct Set {
        MSTR name;
        std::vector<ReferenceTarget*> members;  // the reference slots; null for a deleted member
    };
    int firstSlot(int set) const;
    // Replaces the members of set i, keeping the reference bookkeeping right.
    void assign(int i, const std::vector<INode*>& nodes);
    // Drops the empty slots of every set.
    void compact();

    std::vector<Set> sets_;
};

// The named selection sets of the open scene (never null).
NamedSelSets& SceneNamedSelSets();

// Registers the sets class and the scene part that keeps one sets object per scene. Idempotent.
void RegisterNamedSelSetClasses();

}  // namespace hostrt
