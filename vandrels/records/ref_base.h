// Reference records: the base record that wraps one merged scene item (reference 0, its target) and holds the
// animatable records of the animatables below it (references 1 to n). The node and material records derive
// from it (records/ref_node.h, records/ref_material.h).
// A record hangs itself on its target's property list, so the record of a scene item can be found from it.
// It keeps a tree of the target's sub-animatables from which its animatable records are made and addressed.
#pragma once

#include "frame/class_ids.h"
#include "records/ref_base_interface.h"
#include "records/ref_sub_anim.h"
#include "ref.h"

#include <cstdint>
#include <memory>

class RefAnim;
class RecordOwner;
struct NotifyInfo;

// Property id under which a record hangs on its target.
#define REFBASE_PROPERTY_ID 0x8663DFA6

class RefBase : public ReferenceTarget, public AnimProperty, public RefBaseInterface {
public:
    RefBase() = default;
    ~RefBase() override;

    Class_ID ClassID() override { return REFBASE_CLASS_ID; }
    SClass_ID SuperClassID() override { return REFBASE_SUPER_CLASS_ID; }

    // AnimProperty: the target's property list only unlinks the record, never deletes it.
    DWORD ID() override { return REFBASE_PROPERTY_ID; }
    BOOL DontDelete() override { return TRUE; }

    // The record protocol the helper drives.
    virtual bool AcceptsReset(RefAnim* /*record*/, DWORD /*mask*/) { return true; }
    // Rescans a structure that changed, lets every animatable record collect, and rescans again if needed.
    virtual void Collect();
    virtual void CaptureBaseline() {}
    // Every animatable record re-applies its overrides onto GetAnimRoot().
    virtual void Override();
    // Rebinds to newTarget; when bound, keeps only the records with overrides, re-applies them and rebuilds.
    virtual void Update(ReferenceTarget* newTarget);
    virtual void CollectIfBound();
    virtual void FinishLoad() {}
    // Asks every animatable record not yet met in the current reset pass whether it stays.
    virtual void ResetOverrides(DWORD mask);
    virtual void ApplyNamePrefix(const MSTR& /*prefix*/) {}
    // The helper's name prefix, or empty without a helper or while the helper does not prefix names.
    virtual MSTR GetNamePrefix();
    virtual ReferenceTarget* GetTarget() { return target_; }
    // The helper that owns the record (not a reference); null until a helper adopts it.
    virtual RecordOwner* GetHelper() { return helper_; }
    void SetHelper(RecordOwner* helper) { helper_ = helper; }
    // True when any animatable record reports an override.
    virtual bool HasOverrides();
    virtual bool IsHelperNested();
    // Root of the sub-animatable tree and of the animatable records' paths: the target.
    virtual Animatable* GetAnimRoot() { return target_; }
    // The record's diagnostics on the listener; mode 1 adds every animatable record's own print.
    virtual void PrintData(int mode);
    virtual MSTR GetInfo();
    // keep 0: drop the animatable records without overrides and the empty entries.
    virtual void OnRefAnimsChanged(int keep);
    virtual MSTR GetTypeName();

    int NumRefAnims() const { return refAnims_.Count(); }
    // Entry i of the animatable records (may be null); an index outside the list throws the host's
    // out-of-range exception.
    RefAnim* GetRefAnim(int i) const { return refAnims_[i]; }
    // Appends record as a new reference; it becomes the record's owner.
    void AppendRefAnim(RefAnim* record);

    // Services to the animatable records.
    // A new record of the kind for code, holding anim at the given paths (taken over), appended to the list;
    // null when no kind is made for code or the record's type differs from it. Throws MAXException when
    // setting the animatable fails.
    RefAnim* CreateRefAnim(std::uint32_t code, Animatable* anim, const Tab<WStr*>& names, const Tab<int>& numbers,
                           std::uint8_t initialState);
    // This record's animatable record that holds anim at numbers, or null.
    RefAnim* FindRecordForPath(Animatable* anim, const Tab<int>& numbers);
    // Deletes every animatable record but except whose number path begins with numbers.
    void DropRecordsUnderPath(const Tab<WStr*>& names, const Tab<int>& numbers, RefAnim* except);
    // Frees the sub-animatable tree and builds it anew, making the records it calls for.
    void BuildSubAnimTree();
    const RefSubAnim* GetSubAnimTree() const { return tree_.get(); }
    // Compares the stored tree with the live sub-anims, makes records for what changed, and rebuilds.
    void Rescan();

    // References: 0 the target, 1 to n the animatable records; subclasses append theirs after these.
    int NumRefs() override { return NumBaseRefs(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    BOOL IsRealDependency(ReferenceTarget* target) override;

    // A fresh, unbound record of the same class that keeps only the animatable records with overrides.
    RefTargetHandle Clone(RemapDir& remap) override;
    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;

    // Chunks 0x0000 (format version) and 0x0022 (number of animatable records).
    IOResult Save(ISave* isave) override;
    // Reads the chunks in any order through LoadChunk; unknown chunks are skipped.
    IOResult Load(ILoad* iload) override;

    BaseInterface* GetInterface(Interface_ID id) override;
    using ReferenceTarget::GetInterface;

    // RefBaseInterface
    int ScriptNumRefAnims() override { return NumRefAnims(); }
    ReferenceTarget* ScriptGetRefAnim(int index) override;

    // The number of the reset pass in progress; BeginResetPass starts the next one.
    static int CurrentResetPass();
    static int BeginResetPass();

protected:
    int NumBaseRefs() const { return 1 + refAnims_.Count(); }
    // One chunk open in iload. The base reads 0x0000 (and ignores it) and 0x0022 (sizes the animatable records
    // with null entries for the host to restore); subclasses take their own chunks and pass the rest on.
    virtual IOResult LoadChunk(ILoad* iload);
    IOResult SaveFormatChunk(ISave* isave);
    IOResult SaveRefAnimCountChunk(ISave* isave);
    void prune();
    // The re-entry guard: set while an override, update, tree build or rescan of this record runs.
    int IsBusy() const { return busy_; }
    void SetBusy(int busy) { busy_ = busy; }
    // Empties the animatable-record list without touching references (a failed load leaves only null entries).
    void ClearRefAnimSlots() { refAnims_.ZeroCount(); }

private:
    friend struct RefBaseWalk;
    void bindTarget(ReferenceTarget* target);
    void onPostProcess();
    void unregisterPostProcess();
    static void postProcessProc(void* param, NotifyInfo* info);

    RecordOwner* helper_ = nullptr;
    ReferenceTarget* target_ = nullptr;
    Tab<RefAnim*> refAnims_;
    std::unique_ptr<RefSubAnim> tree_;
    int busy_ = 0;
    int rescanQueued_ = 0;
    int structureDirty_ = 0;
};

// The record that a scene item carries on its property list, or null.
RefBase* FindRecordOf(Animatable* item);
