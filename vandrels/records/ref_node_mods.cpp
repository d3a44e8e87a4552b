// The node record's share of the modifier monitoring: building the mirrors at construction, the mirrors'
// references among the record's slots, and the dependency test of their modifiers.
#include "frame/module_state.h"
#include "hold.h"
#include "maxexception.h"
#include "records/flag_restore.h"
#include "records/record_owner.h"
#include "records/ref_node.h"

void RefNode::MonitorModifiers() {
    try {
        if (mods_.Monitor()) data_.overrideFlags |= kNodeModifiers;
    } catch (const MAXException& e) {
        fail(L"Error Monitoring Modifiers in RefNode", 0, &e);
    } catch (...) {
        fail(L"Unknown Error Monitoring Modifiers in RefNode", 0, nullptr);
    }
}

void RefNode::SetMirrorReference(ModMirror mirror, int position, ReferenceTarget* mod, bool keepOld) {
    const int slot = mirror == ModMirror::WorldSpace ? Slots().WorldSpaceModifier(position)
                                                     : Slots().ObjectSpaceModifier(position);
    // The mirrors' undo record restores their references; a host record of the slot would name a slot that
    // other lists' changes can move.
    theHold.Suspend();
    ReplaceReference(slot, mod, keepOld ? FALSE : TRUE);
    theHold.Resume();
}

void RefNode::SetMirrorFlags(std::uint32_t mask, std::uint32_t value, bool undoable) {
    if (undoable)
        SetOverrideFlags(mask, value);
    else
        setFlagsSilently(mask, value);
}

bool RefNode::MirrorsPersist() {
    RecordOwner* helper = GetHelper();
    return helper && helper->GetPersistRef();
}

BOOL RefNode::IsRealDependency(ReferenceTarget* target) {
    const BOOL base = RefBase::IsRealDependency(target);
    if (!base || !target || !vandrels::AreRecordsInessential() || (GetHelper() && GetHelper()->GetPersistRef()))
        return base;
    bool referencedOnly = false;
    for (int i = 0; i < NumRefs(); ++i) {
        if (GetReference(i) != target) continue;
        const vandrels::NodeRecordSlots::Slot slot = Slots().At(i);
        const bool inMirror = slot.kind == vandrels::NodeRecordSlot::WorldSpaceModifier ||
                              slot.kind == vandrels::NodeRecordSlot::ObjectSpaceModifier;
        if (!inMirror) return base;  // held by another slot as well
        const ModMirror mirror =
            slot.kind == vandrels::NodeRecordSlot::WorldSpaceModifier ? ModMirror::WorldSpace : ModMirror::ObjectSpace;
        if (!mods_.HoldsReferencedOnly(mirror, slot.index)) return base;
        referencedOnly = true;
    }
    return referencedOnly ? FALSE : base;
}

// ------------------------------------------------------------------------------------------ collect and reload

void RefNode::collectModifierChanges() { mods_.CollectLocal(); }

void RefNode::applyModifierOverrides() {
    try {
        // Other records hear the node messages this re-application causes; this one does not.
        ModifierOverrideScope scope(this);
        mods_.Apply();
    } catch (const MAXException& e) {
        fail(L"Error Overriding Modifiers in RefNode", 0, &e);
    } catch (...) {
        fail(L"Unknown Error Overriding Modifiers in RefNode", 0, nullptr);
    }
}

void RefNode::relinkModifierReferences() { mods_.Relink(); }
