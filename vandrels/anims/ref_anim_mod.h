// The records of modifiers: besides the base record (or the record with references, for modifiers that hold
// references) a modifier record keeps the modifier's context in its stack and, while the modifier carries a local
// change, a holder object: a derived object on a placeholder that keeps the modifier with that context while the
// referenced node is away (saved scenes, unloads), so that the modifier goes back into the freshly merged stack
// at its place after a reload.
#pragma once

#include "anims/record_codes.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_with_refs.h"

#include "notify.h"
#include "object.h"

#include <memory>

// The modifier state both modifier records share: reference 1 (the holder object) and the kept context.
template <class Base> class ModifierRecord : public Base {
public:
    ~ModifierRecord() override;

    // The context kept at the last collect (or loaded), or null.
    ModContext* GetKeptContext() const { return context_.get(); }
    Object* GetHolderObject() const { return holder_; }

    // The base collect; a Modified record then keeps its modifier's context and makes its holder object (not
    // while saving a reference that persists). While saving, the holder goes again once the save is over; while
    // duplicating, the record goes on the helper's list of records to finish.
    void Collect(Animatable* root) override;
    // A Modified record puts its modifier back in place of the merged one (with the holder's or the kept
    // context); a clean one follows the merged modifier. The holder object goes.
    void Override(Animatable* root) override;
    // Lets go of the holder object.
    void ReleaseSnapshot() override;

    // References: 0 the modifier, 1 the holder object, then the base kind's further references.
    int NumRefs() override { return Base::NumRefs() + 1; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // The holder object keeps the modifier alive in saved scenes.
    BOOL IsRealDependency(ReferenceTarget* target) override;

    void BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) override;
    // The base kind's chunks, then, with a kept context, 0x0933: its transform (52 bytes, identity when it has
    // none) and its box (24 bytes, empty when it has none).
    IOResult Save(ISave* isave) override;

protected:
    IOResult LoadChunk(ILoad* iload) override;

private:
    static void onPostSave(void* param, NotifyInfo* info);
    void stopWaitingForSave();

    std::unique_ptr<ModContext> context_;
    Object* holder_ = nullptr;
    bool waitingForSave_ = false;
};

class RefAnimMod : public ModifierRecord<RefAnim> {
public:
    Class_ID ClassID() override { return REFANIM_MOD_CLASS_ID; }
    bool IsGeneric() override { return GetType() == kCodeMod; }
};

class RefAnimWithRefsMod : public ModifierRecord<RefAnimWithRefs> {
public:
    Class_ID ClassID() override { return REFANIM_WITHREFSMOD_CLASS_ID; }
    bool IsGeneric() override { return GetType() == kCodeWithRefsMod; }

protected:
    // Reference 1 is the holder object: the held items follow it.
    int HeldRefsFirstIndex() override { return 2; }
};

extern template class ModifierRecord<RefAnim>;
extern template class ModifierRecord<RefAnimWithRefs>;
