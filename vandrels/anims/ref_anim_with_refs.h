// The record of an animatable that holds references of its own (a controller aiming at a node, an object with a
// texture): besides the animatable it keeps the items the animatable refers to, so that a local swap of one of
// them marks the record Modified and the items follow a node's reload like every reference of a record.
#pragma once

#include "anims/record_codes.h"
#include "anims/ref_anim.h"

class RefAnimWithRefs : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_WITHREFS_CLASS_ID; }
    bool IsGeneric() override { return GetType() == kCodeWithRefs; }

    // The items the animatable referred to when the list was last read, in the animatable's reference order
    // (its empty references left out).
    const Tab<ReferenceTarget*>& GetHeldRefs() const { return heldRefs_; }
    // 1 while the list follows the animatable (re-read whenever the record takes a new one); 0 once the record
    // carries a local change and the list holds the local items.
    int IsFollowing() const { return following_; }

    // The base, then a clean record reads the animatable's items.
    void SetAnim(Animatable* anim) override;
    // The base change monitor; besides, a change of the animatable while idle that leaves it referring to other
    // items marks the record Modified (undoably) and the list takes the new items.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    // References: 0 the animatable, 1.. the held items. The items are weak: they keep nothing alive.
    int NumRefs() override { return 1 + heldRefs_.Count(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    BOOL IsRealDependency(ReferenceTarget* target) override;

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;
    // The base chunks wrapped in 0x0029, then 0x002A with the number of held items.
    IOResult Save(ISave* isave) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;
    // The index of the first held item among the record's references (kinds that hold more references first
    // move it up).
    virtual int HeldRefsFirstIndex() { return 1; }
    // The count chunk alone (kinds that add chunks of their own write it after the wrapped base chunks).
    IOResult SaveHeldRefsCount(ISave* isave);

private:
    // The animatable's non-empty references now.
    Tab<ReferenceTarget*> currentRefs();
    // The held list becomes refs (references released and taken as the list changes).
    void holdRefs(const Tab<ReferenceTarget*>& refs);

    Tab<ReferenceTarget*> heldRefs_;
    int following_ = 1;
};
