// The animatable record: holds one animatable below its owner record's target (reference 0), the path that
// addresses it there (names and sub-anim numbers, level by level) and the override state that says what the
// user changed on it locally. The kinds of animatable records derive from it (anims/ref_anim_family.h).
#pragma once

#include "anims/record_codes.h"
#include "anims/ref_anim_interface.h"
#include "frame/class_ids.h"
#include "ref.h"

#include <cstdint>

class IDerivedObject;
class INode;
class LocDepFlag;
class ModContext;
class Object;
class RefBase;
class RefNode;
class RecordOwner;

// Override state bits, in the order diagnostics print them.
enum RefAnimOverride : std::uint8_t {
    kOverrideReplaced = 0x01,  // the animatable at the path was replaced locally; the record holds the local one
    kOverrideModified = 0x02,  // the animatable was changed locally
    kOverrideLocDep = 0x04,    // local (non-referenced) scene content uses the animatable
    kOverrideAdded = 0x08,
    kOverrideRemoved = 0x10,
    kOverrideRenamed = 0x20,
    kOverrideToggled = 0x40,
};

class RefAnim : public ReferenceTarget, public RefAnimInterface {
public:
    RefAnim() = default;
    ~RefAnim() override;

    Class_ID ClassID() override { return REFANIM_CLASS_ID; }
    SClass_ID SuperClassID() override { return REFANIM_SUPER_CLASS_ID; }

    // Record type code: the first part of the class identifier unless a kind says otherwise.
    virtual std::uint32_t GetType() { return ClassID().PartA(); }

    // The held animatable (reference 0).
    Animatable* GetAnim() const { return anim_; }

    // The owner record: the node or material record whose list holds this record (not a reference).
    RefBase* GetOwner() const { return owner_; }
    void SetOwner(RefBase* owner) { owner_ = owner; }
    // The owner's target (the root of the paths), or null without owner.
    Animatable* GetOwnerTarget();
    // The owner when it is a node record, else null; and that record's node.
    RefNode* GetOwnerNodeRecord();
    INode* GetOwnerNode();
    RecordOwner* GetHelper();

    // The name path; the record takes the strings over (and frees the ones it had).
    void SetPath(const Tab<WStr*>& names);
    // A copy of the name path (the same string pointers).
    Tab<WStr*> GetPath() const { return path_; }
    // With hold, the old numbers go on the undo stack first (PathByNumberRestore).
    void SetPathByNumber(const Tab<int>& numbers, bool hold = false);
    Tab<int> GetPathByNumber() const { return pathByNumber_; }
    void HoldPathByNumber();

    std::uint8_t GetOverrideState() const { return overrideState_; }
    void SetOverrideState(std::uint8_t state) { overrideState_ = state; }
    // Sets or clears bits (undoable with hold while the host holds); answers the new state when setting and
    // the previous one when clearing.
    std::uint8_t SetOverrideBits(std::uint8_t bits, bool on, bool hold);
    std::uint8_t TestOverrideBits(std::uint8_t bits) const { return overrideState_ & bits; }
    // A record reports an override when any state bit is set.
    bool HasOverride() const { return overrideState_ != 0; }
    bool IsModified() const { return TestOverrideBits(kOverrideModified) != 0; }
    bool IsUnchanged(int /*index*/) const { return !TestOverrideBits(kOverrideModified | kOverrideReplaced); }

    int GetOption() const { return option_; }
    void SetOption(int value) { option_ = value; }
    // String-table id of the last step the record performed; -1 before the first.
    int GetLastOperation() const { return lastOperation_; }
    int GetResetStamp() const { return resetStamp_; }
    void SetResetStamp(int stamp) { resetStamp_ = stamp; }

    // The operations the owner record drives (collect, override, reset, diagnostics).
    // Makes anim the held animatable (reference 0) after OverrideLocDep; the step is "SetAnim".
    virtual void SetAnim(Animatable* anim);
    // Hands everything local that used a LocDep record's animatable over to anim.
    virtual void OverrideLocDep(Animatable* anim);
    // Refreshes the LocDep bit of a clean record.
    virtual void Collect(Animatable* root);
    virtual void ReleaseSnapshot() {}
    // Puts the record's animatable back at its path below root after a fresh merge.
    virtual void Override(Animatable* root);
    virtual void Refresh() {}
    // The parts of a reload the node record carries out after the records were overridden.
    virtual void NotifyOwnerNode() {}

    // Paths. ResolvePath walks names and numbers down from root through the module's sub-anim address space:
    // a level is taken by its stored number when the entry there carries the stored name, else by the first
    // entry of that name. It answers false when the lists are empty or differ in length, a level is not found,
    // or the animatable found is held at the same numbers by another record of the owner.
    virtual bool ResolvePath(Animatable* root, const Tab<WStr*>& names, const Tab<int>& numbers, Animatable*& anim,
                             Animatable*& parent, int& subIndex, int& hint, Tab<int>& resolved);
    // ResolvePath with the record's own path; the step is "GetAnimByPath".
    virtual bool GetAnimByPath(Animatable* root, Animatable*& anim, Animatable*& parent, int& subIndex, int& hint,
                               Tab<int>& resolved);
    // Whether another record of the same owner holds anim at numbers.
    bool IsPathTaken(Animatable* anim, const Tab<int>& numbers);

    // A plain record: one whose type is the generic code of its class.
    virtual bool IsGeneric() { return GetType() == kCodePlain; }
    // Answers 0 to keep the record, 1 to drop it, 2 to keep it with the reference's original put back live.
    virtual int ResetOverrides(DWORD mask);
    // Whether local (non-referenced) scene content uses anim; cached per pass on anim (LocDepFlag).
    virtual bool IsLocDep(Animatable* anim);
    void AttachLocDepFlag(Animatable* anim, LocDepFlag* flag);
    LocDepFlag* FindLocDepFlag(Animatable* anim);
    // The helper's pass counter, 0 without helper.
    DWORD GetPassStamp();
    bool IsPersistRef();

    // Whether a change of this part leaves the record clean: the structural and display-only parts, or any
    // part while the module's monitor is suspended.
    bool IsIgnoredPart(PartID partID);
    // Marks the record Modified (undoable) unless it is already, and makes it the record for its path.
    void MarkModified();
    // Marks every other record that holds the same animatable Modified (undoable).
    void MarkSharersModified();
    // Whether found (below parent) may simply be asked to replace itself by the held animatable.
    bool CanReplace(Animatable* found, Animatable* parent);

    // Moving local users from one animatable to its counterpart. TransferAnim first matches the sub-anims
    // that are worth it, level by level; without parent everything moves (TransferAll), else every dependent
    // of old except parent.
    void TransferAnim(Animatable* oldAnim, Animatable* newAnim, Animatable* parent = nullptr);
    // Transfers each pair of sub-anims of oldAnim and newAnim (by index) that is worth it.
    void TransferSubAnims(Animatable* oldAnim, Animatable* newAnim);
    void TransferAll(Animatable* oldAnim, Animatable* newAnim);
    // maker replaces reference refIndex with anim (undoably); anim's dependents hear of it.
    void ReplaceSubRef(ReferenceMaker* maker, Animatable* anim, int refIndex);
    // Replaces the custom attributes of to by those of from, then moves from's users to to.
    void CopyCustAttribs(Animatable* from, Animatable* to);
    // Moves old's users to new except the modifier stacks that hold old (after matching their sub-anims), and
    // tells new's dependents.
    void TransferModifier(Animatable* oldAnim, Animatable* newAnim);

    // Modifiers (anims/ref_anim_modifier.cpp). A modifier's path ends in a derived object: the record's
    // parent there is the top derived object of the chain, and the modifier's index counts across the chain.
    // Puts a Modified record's modifier back in place of the merged one at its path: same stack position, with
    // modContext, or with derivedObject's top context when derivedObject holds the modifier on top. A path
    // whose parent is no derived object takes the plain Override.
    virtual void OverrideModifier(Animatable* root, IDerivedObject* derivedObject, ModContext* modContext);
    // The context of the held modifier in the derived object that holds it at the record's path, or null.
    virtual ModContext* GetModContext(Animatable* root);
    // A placeholder object with a derived object that holds the modifier with its current context; null
    // without modifier, or when that context is missing or carries no local data. The context found goes to
    // outContext.
    virtual Object* MakeHolderObject(Animatable* root, ModContext** outContext);
    // The same with the given context (none gives the modifier an empty one).
    virtual Object* MakeHolderObject(Animatable* root, ModContext* modContext);
    // Appends the animatables a kind holds besides its own; the base holds none.
    virtual void AddHeldAnims(Tab<Animatable*>& /*list*/) {}
    // A record whose path one level up still reaches its animatable hands it to a new Modified record of the
    // owner at that shorter path (a modifier record for a modifier) and lets go of it. Paths resolve under the
    // owner's target.
    virtual void PromoteToParent(Animatable* root);

    // Helper services (anims/ref_anim_services.cpp); nothing without a helper.
    // The helper makes a node record for node (see RecordOwner::AdoptNode).
    virtual void AdoptNode(INode* node, const MCHAR* name);
    // The helper forgets name from its list of locally deleted nodes (undoable).
    virtual void ForgetHelperName(const MCHAR* name);
    // Puts the record on the helper's list of records to finish after the current load.
    virtual void RegisterWithHelper();

    // "\n" and GetInfo() to the listener.
    virtual void PrintData();
    // The record's type, animatable, its owner at the path, the paths, override state and last step.
    virtual MSTR GetInfo();
    // The class's display name from the string table.
    virtual MSTR GetTypeName();

    // References: 0 is the animatable; every index answers it.
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return anim_; }
    void SetReference(int, RefTargetHandle target) override { anim_ = target; }
    // The animatable is a real dependency only while the record carries it as its own: Modified, Replaced or
    // LocDep. A clean record keeps its animatable weakly, so scene saves leave referenced content out.
    BOOL IsRealDependency(ReferenceTarget* target) override;
    // Reference 0 moves only while loading, and, while the transfer guard is on, only for a clean record.
    BOOL CanTransferReference(int i) override;
    // The change monitor: a change of the held animatable while idle makes a clean record Modified. Changes
    // stop at the record: they are not passed on to its dependents.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    // A fresh record of the same class with the paths and the override state; the animatable is cloned only
    // when it is a real dependency. Owner, option, last operation and reset stamp start anew.
    RefTargetHandle Clone(RemapDir& remap) override;
    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;

    // The base chunks 0x0023 to 0x0028. Kinds with state of their own save them wrapped in 0x0029
    // (SaveWrappedBaseChunks) ahead of their own chunks.
    IOResult Save(ISave* isave) override;
    // Reads the base chunks, at the top level or wrapped in 0x0029; every other chunk goes to LoadChunk.
    IOResult Load(ILoad* iload) override;

    BaseInterface* GetInterface(Interface_ID id) override;
    using ReferenceTarget::GetInterface;

    // RefAnimInterface: the path as scripts see it.
    int ScriptGetPathSize() override { return path_.Count(); }
    void ScriptSetPathSize(int size) override;
    MSTR ScriptGetPathItem(int index) override;
    void ScriptSetPathItem(int index, const MCHAR* name) override;
    int ScriptGetPathByNumberItem(int index) override;
    void ScriptSetPathByNumberItem(int index, int number) override;

protected:
    // A chunk of the kind's own, open in iload; unknown chunks are skipped.
    virtual IOResult LoadChunk(ILoad* /*iload*/) { return IO_OK; }
    IOResult SaveBaseChunks(ISave* isave);
    IOResult SaveWrappedBaseChunks(ISave* isave);
    void SetLastOperation(int step) { lastOperation_ = step; }

private:
    IOResult loadChunks(ILoad* iload, bool wrapped);
    void freePath();
    // The steps of Override that put the held animatable back below each kind of parent: 0 stops the
    // override, 1 put the animatable back, 2 found nothing to do.
    int overrideInBlock(Animatable* parent, Animatable* found, int subIndex, bool replaced);
    int overrideInBlock2(Animatable* parent, Animatable* found, int subIndex, int hint, bool replaced);
    int overrideInParent(Animatable* parent, Animatable* found, int subIndex, bool replaced);
    // The option rule: a found controller that does not split is overridden only with the option set.
    bool blockedByOption(Animatable* found);

    RefBase* owner_ = nullptr;
    ReferenceTarget* anim_ = nullptr;
    Tab<WStr*> path_;
    Tab<int> pathByNumber_;
    std::uint8_t overrideState_ = 0;
    int option_ = 0;
    int lastOperation_ = -1;
    int resetStamp_ = 0;
};
