// Reference records: the base record that wraps one merged scene item (reference 0, its target) and holds the
// animatable records of the animatables below it (references 1 to n), and the node and material records.
// A record hangs itself on its target's property list, so the record of a scene item can be found from it.
#pragma once

#include "frame/class_ids.h"
#include "ref.h"

class RefAnim;
class VandrelsHelper;

// Property id under which a record hangs on its target.
#define REFBASE_PROPERTY_ID 0x8663DFA6

class RefBase : public ReferenceTarget, public AnimProperty {
public:
    RefBase() = default;
    ~RefBase() override;

    Class_ID ClassID() override { return REFBASE_CLASS_ID; }
    SClass_ID SuperClassID() override { return REFBASE_SUPER_CLASS_ID; }

    // AnimProperty: the target's property list only unlinks the record, never deletes it.
    DWORD ID() override { return REFBASE_PROPERTY_ID; }
    BOOL DontDelete() override { return TRUE; }

    // The helper that owns the record (not a reference); null until a helper adopts it.
    VandrelsHelper* GetHelper() const { return helper_; }
    void SetHelper(VandrelsHelper* helper) { helper_ = helper; }

    ReferenceTarget* GetTarget() const { return target_; }
    int NumRefAnims() const { return refAnims_.Count(); }
    // Entry i of the animatable records (may be null); an index outside the list throws the host's
    // out-of-range exception.
    RefAnim* GetRefAnim(int i) const { return refAnims_[i]; }
    // Appends record as a new reference; it becomes the record's owner.
    void AppendRefAnim(RefAnim* record);
    // True when any animatable record reports an override.
    bool HasOverrides() const;

    // References: 0 the target, 1 to n the animatable records; subclasses append theirs after these.
    int NumRefs() override { return NumBaseRefs(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // The record answers every message itself; nothing travels on to its dependents.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    // A fresh, unbound record of the same class that keeps only the animatable records with overrides.
    RefTargetHandle Clone(RemapDir& remap) override;
    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;

    // Chunks 0x0000 (format version) and 0x0022 (number of animatable records).
    IOResult Save(ISave* isave) override;
    // Reads the chunks in any order through LoadChunk; unknown chunks are skipped.
    IOResult Load(ILoad* iload) override;

protected:
    int NumBaseRefs() const { return 1 + refAnims_.Count(); }
    // One chunk open in iload. The base reads 0x0000 (and ignores it) and 0x0022 (sizes the animatable records
    // with null entries for the host to restore); subclasses take their own chunks and pass the rest on.
    virtual IOResult LoadChunk(ILoad* iload);
    IOResult SaveFormatChunk(ISave* isave);
    IOResult SaveRefAnimCountChunk(ISave* isave);

private:
    void bindTarget(ReferenceTarget* target);

    VandrelsHelper* helper_ = nullptr;
    ReferenceTarget* target_ = nullptr;
    Tab<RefAnim*> refAnims_;
};

// The record that a scene item carries on its property list, or null.
RefBase* FindRecordOf(Animatable* item);

class RefNode : public RefBase {
public:
    Class_ID ClassID() override { return REFNODE_CLASS_ID; }
};

class RefMaterial : public RefBase {
public:
    Class_ID ClassID() override { return REFMATERIAL_CLASS_ID; }
};
