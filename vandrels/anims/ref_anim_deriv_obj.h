// The record of a derived object deeper in a node's object chain: it keeps the names and on/off switches of the
// derived object's modifiers and how many derived objects lie below it, marks a local rename or switch as Renamed
// or Toggled, and puts those names and switches on the freshly merged derived object after a reload.
#pragma once

#include "anims/ref_anim.h"

#include <cstdint>
#include <vector>

class IDerivedObject;

class RefAnimDerivObj : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_DERIVOBJ_CLASS_ID; }

    // A modifier's switches as the record keeps them: on, on in the viewports, on in renders.
    enum Toggle : int { kOn = 0x1, kInViews = 0x2, kInRender = 0x4 };

    const std::vector<MSTR>& GetModNames() const { return modNames_; }
    const std::vector<int>& GetModToggles() const { return modToggles_; }
    int GetNumNested() const { return numNested_; }

    // The base, then a record without local renames or switches reads the derived object.
    void SetAnim(Animatable* anim) override;
    // The base collect, then the derived object is compared with what the record keeps.
    void Collect(Animatable* root) override;
    // Names and switches kept for a local change go on the merged derived object (modifier by modifier, while
    // both stacks hold the same number of modifiers); then the record follows it.
    void Override(Animatable* root) override;
    // Changes of the stack while idle are compared at once; other changes are left to the modifiers' records.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    MSTR GetInfo() override;

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;
    // 0x0029 the base chunks; 0x002A the number of modifiers and of nested derived objects (two int32); one
    // 0x002B per modifier with its name; 0x002C the switches, one int32 per modifier.
    IOResult Save(ISave* isave) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    IDerivedObject* derived() const;
    void read(IDerivedObject* derived);
    // Compares the held derived object with the record: a rename sets Renamed, a switch Toggled (undoably).
    void compare();

    std::vector<MSTR> modNames_;
    std::vector<int> modToggles_;
    int numNested_ = 0;
};
