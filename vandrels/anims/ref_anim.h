// The animatable record: holds one animatable below its owner record's target (reference 0), the path that
// addresses it there (names and sub-anim numbers, level by level) and the override state that says what the
// user changed on it locally. The kinds of animatable records derive from it (anims/ref_anim_family.h).
#pragma once

#include "frame/class_ids.h"
#include "ref.h"

#include <cstdint>

class RefBase;

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

class RefAnim : public ReferenceTarget {
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

    // The name path; the record takes the strings over (and frees the ones it had).
    void SetPath(const Tab<WStr*>& names);
    // A copy of the name path (the same string pointers).
    Tab<WStr*> GetPath() const { return path_; }
    void SetPathByNumber(const Tab<int>& numbers) { pathByNumber_ = numbers; }
    Tab<int> GetPathByNumber() const { return pathByNumber_; }

    std::uint8_t GetOverrideState() const { return overrideState_; }
    void SetOverrideState(std::uint8_t state) { overrideState_ = state; }
    std::uint8_t TestOverrideBits(std::uint8_t bits) const { return overrideState_ & bits; }
    // A record reports an override when any state bit is set.
    bool HasOverride() const { return overrideState_ != 0; }

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
    // Refreshes the record's state from the scene below root.
    virtual void Collect(Animatable* root);
    // Puts the record's animatable back at its path below root after a fresh merge.
    virtual void Override(Animatable* root);
    // A plain record: one whose type is the generic code of its class.
    virtual bool IsGeneric() { return GetType() == 0x00010001; }
    // Answers 0 to keep the record, 1 to drop it, 2 to keep it with the reference's original put back live.
    virtual int ResetOverrides(DWORD mask);
    // Whether local (non-referenced) scene content uses anim.
    virtual bool IsLocDep(Animatable* anim);
    // "\n" and GetInfo() to the listener.
    virtual void PrintData();
    // The record's type, animatable, paths, override state and last step, one per line.
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
    // Changes of the held animatable stop at the record: they are not passed on to its dependents.
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

protected:
    // A chunk of the kind's own, open in iload; unknown chunks are skipped.
    virtual IOResult LoadChunk(ILoad* /*iload*/) { return IO_OK; }
    IOResult SaveBaseChunks(ISave* isave);
    IOResult SaveWrappedBaseChunks(ISave* isave);

private:
    IOResult loadChunks(ILoad* iload, bool wrapped);
    void freePath();

    RefBase* owner_ = nullptr;
    ReferenceTarget* anim_ = nullptr;
    Tab<WStr*> path_;
    Tab<int> pathByNumber_;
    std::uint8_t overrideState_ = 0;
    int option_ = 0;
    int lastOperation_ = -1;
    int resetStamp_ = 0;
};
