// The node record's modifier mirrors: building them from the node's stacks, taking over the change entries of
// a node that shares a derived object, their references, cloning, the resets and the diagnostics lines.
#include "frame/module_state.h"
#include "records/record_owner.h"
#include "inode.h"
#include "maxexception.h"
#include "object.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

#include <cstdlib>
#include <unordered_set>

namespace {

bool IsDerivedObject(Object* obj) { return obj && obj->SuperClassID() == GEN_DERIVOB_CLASS_ID; }

// The number of modifiers in every derived object from top down the chain.
int CountChainModifiers(Object* top) {
    int total = 0;
    for (Object* o = top; IsDerivedObject(o); o = static_cast<IDerivedObject*>(o)->GetObjRef())
        total += static_cast<IDerivedObject*>(o)->NumModifiers();
    return total;
}

// A node record other than self whose node uses derived: the nodes among derived's dependents, followed up
// through derived objects stacked on it.
struct SharingRecordSearch {
    RefNode* self;
    std::unordered_set<ReferenceTarget*> seen;

    RefNode* find(ReferenceTarget* derived) {
        if (!derived || !seen.insert(derived).second) return nullptr;
        DependentIterator it(derived);
        while (ReferenceMaker* dep = it.Next()) {
            const SClass_ID sc = dep->SuperClassID();
            if (sc == BASENODE_CLASS_ID) {
                RefNode* record = FindNodeRecord(static_cast<INode*>(dep));
                if (record && record != self) return record;
            } else if (sc == GEN_DERIVOB_CLASS_ID) {
                if (RefNode* record = find(static_cast<IDerivedObject*>(dep))) return record;
            }
        }
        return nullptr;
    }
};

// Takes over theirs' entries whose index lies below limit: an unmarked entry of mine with the same name (the one
// nearest in index among several) is overwritten, otherwise a copy is added; either way it ends up marked.
// Answers how many entries were taken over.
template <class T> int TakeOverEntries(Tab<T*>& mine, const Tab<T*>& theirs, int limit) {
    int taken = 0;
    for (T* entry : theirs) {
        if (!entry) continue;
        const int index = EffectiveModIndex(entry->index);
        if (index >= limit) continue;
        T* best = nullptr;
        int bestDistance = 0;
        for (T* candidate : mine) {
            if (!candidate || candidate->matched || candidate->name != entry->name) continue;
            const int distance = std::abs(EffectiveModIndex(candidate->index) - index);
            if (!best || distance < bestDistance) {
                best = candidate;
                bestDistance = distance;
            }
        }
        if (best)
            *best = *entry;
        else
            best = mine[mine.Append(entry->Copy())];
        best->matched = 1;
        ++taken;
    }
    return taken;
}

int HandleOf(Animatable* item) { return item ? int(Animatable::GetHandleByAnim(item)) : 0; }

MSTR EntryHead(const MSTR& name, std::int32_t index) {
    MSTR line = L"\nName: " + name;
    line.append_printf(L", Index: %d", int(index));
    return line;
}

}  // namespace

// ------------------------------------------------------------------------------------------ building

void RefNode::MonitorModifiers() {
    try {
        INode* node = GetNode();
        if (!node) return;
        dropModEntries(data_.wsMods);
        dropModEntries(data_.osMods);
        // Indices count every modifier of the chain, the world-space stack included, from the top down to 0.
        const int total = CountChainModifiers(node->GetObjOrWSMRef());
        int next = total - 1;

        if (IDerivedObject* ws = node->GetWSMDerivedObject()) {
            data_.modCountsAtMerge[0] = ws->NumModifiers();
            for (int i = 0; i < ws->NumModifiers(); ++i) {
                Modifier* mod = ws->GetModifier(i);
                appendModEntry(data_.wsMods, new RefModifier(mod, kModFromReference, next--), mod);
            }
        }

        data_.modCountsAtMerge[1] = 0;
        for (Object* o = node->GetObjectRef(); IsDerivedObject(o);) {
            auto* derived = static_cast<IDerivedObject*>(o);
            data_.modCountsAtMerge[1] += derived->NumModifiers();
            for (int i = 0; i < derived->NumModifiers(); ++i) {
                Modifier* mod = derived->GetModifier(i);
                appendModEntry(data_.osMods, new RefModifier(mod, kModFromReference, next--), mod);
            }
            o = derived->GetObjRef();
            if (IsDerivedObject(o)) appendModEntry(data_.osMods, RefModifier::Boundary(), nullptr);
        }

        // A derived object shared with another referenced node: its change entries apply here as well. The
        // modifiers from that derived object down carry the same indices in both records.
        int taken = 0;
        for (Object* o = node->GetObjectRef(); IsDerivedObject(o);) {
            auto* derived = static_cast<IDerivedObject*>(o);
            SharingRecordSearch search{this, {}};
            if (RefNode* other = search.find(derived)) {
                taken = mergeInstancedChanges(CountChainModifiers(derived), other);
                break;
            }
            o = derived->GetObjRef();
        }
        if (taken) data_.overrideFlags |= kNodeModifiers;
    } catch (const MAXException& e) {
        fail(L"Error Monitoring Modifiers in RefNode", 0, &e);
    } catch (...) {
        fail(L"Unknown Error Monitoring Modifiers in RefNode", 0, nullptr);
    }
}

int RefNode::mergeInstancedChanges(int sharedCount, RefNode* other) {
    return TakeOverEntries(data_.deletedMods, other->data_.deletedMods, sharedCount) +
           TakeOverEntries(data_.renamedMods, other->data_.renamedMods, sharedCount) +
           TakeOverEntries(data_.toggledMods, other->data_.toggledMods, sharedCount);
}

// ------------------------------------------------------------------------------------------ entries

void RefNode::appendModEntry(Tab<RefModifier*>& list, RefModifier* entry, ReferenceTarget* mod) {
    if (entry) entry->modifier = nullptr;
    const int position = list.Append(entry);
    if (entry && mod) ReplaceReference(modSlot(list, position), mod);
}

void RefNode::dropModEntries(Tab<RefModifier*>& list) {
    for (int k = 0; k < list.Count(); ++k)
        if (list[k] && list[k]->modifier) DeleteReference(modSlot(list, k));
    FreeModList(list);
}

void RefNode::freeModLists() {
    FreeModList(data_.wsMods);
    FreeModList(data_.osMods);
    FreeModList(data_.deletedMods);
    FreeModList(data_.renamedMods);
    FreeModList(data_.toggledMods);
}

void RefNode::cloneModifiersTo(RefNode* dst) {
    // The clone's entries reference the same modifiers.
    for (RefModifier* entry : data_.wsMods)
        dst->appendModEntry(dst->data_.wsMods, entry ? entry->Copy() : nullptr, entry ? entry->modifier : nullptr);
    for (RefModifier* entry : data_.osMods)
        dst->appendModEntry(dst->data_.osMods, entry ? entry->Copy() : nullptr, entry ? entry->modifier : nullptr);
    FreeModList(dst->data_.deletedMods);
    FreeModList(dst->data_.renamedMods);
    FreeModList(dst->data_.toggledMods);
    dst->data_.deletedMods = CopyModList(data_.deletedMods);
    dst->data_.renamedMods = CopyModList(data_.renamedMods);
    dst->data_.toggledMods = CopyModList(data_.toggledMods);
}

// ------------------------------------------------------------------------------------------ resets

void RefNode::ResetModifiers() {
    for (RefModifier* entry : data_.wsMods) {
        if (!entry) continue;
        entry->state = kModFromReference;
        entry->modContext.reset();
    }
    if (data_.overrideFlags & kNodeObjectSpaceReplaced) {
        dropModEntries(data_.osMods);
        SetOverrideFlags(kNodeObjectSpaceReplaced, 0);
    } else {
        for (RefModifier* entry : data_.osMods) {
            if (!entry || entry->state == kModBoundary) continue;
            entry->state = kModFromReference;
            entry->modContext.reset();
        }
    }
    FreeModList(data_.deletedMods);
    FreeModList(data_.renamedMods);
    FreeModList(data_.toggledMods);
}

void RefNode::DropObjectSpaceRecords() {
    if (!(data_.overrideFlags & kNodeObjectSpaceReplaced)) return;
    dropModEntries(data_.osMods);
    SetOverrideFlags(kNodeObjectSpaceReplaced, 0);
}

// ------------------------------------------------------------------------------------------ diagnostics

MSTR RefNode::ModifierLines() {
    MSTR out = L"\nWSRefMods: ";
    for (RefModifier* entry : data_.wsMods) {
        if (!entry) {
            out += L"\nNull RefMod: ";
            continue;
        }
        out += EntryHead(entry->name, entry->index);
        out.append_printf(L", State: %d, Toggles: %d, Modifier: %d", int(entry->state), int(entry->toggles),
                          HandleOf(entry->modifier));
    }
    out += L"\nOSRefMods: ";
    for (RefModifier* entry : data_.osMods) {
        if (!entry) {
            out += L"\nNull RefMod: ";
            continue;
        }
        out += EntryHead(entry->name, entry->index);
        out.append_printf(L", State: %d, Toggles: %d - %d", int(entry->state), int(entry->toggles),
                          HandleOf(entry->modifier));
        if (entry->modifier) {
            MSTR className;
            entry->modifier->GetClassName(className, false);
            out += L" (" + className + L")";
        }
    }
    out += L"\nDeletedMods: ";
    for (ModDeleted* entry : data_.deletedMods)
        out += entry ? EntryHead(entry->name, entry->index) : MSTR(L"\nNull DeletedMod: ");
    out += L"\nRenamedMods: ";
    for (ModChangedName* entry : data_.renamedMods)
        out += entry ? EntryHead(entry->name, entry->index) + L", NewName: " + entry->newName
                     : MSTR(L"\nNull RenamedMod: ");
    out += L"\nToggledMods: ";
    for (ModChangedToggles* entry : data_.toggledMods) {
        if (!entry) {
            out += L"\nNull toggledMod: ";
            continue;
        }
        out += EntryHead(entry->name, entry->index);
        out.append_printf(L", Toggles: %d", int(entry->toggles));
    }
    return out;
}

// ------------------------------------------------------------------------------------------ dependency

BOOL RefNode::IsRealDependency(ReferenceTarget* target) {
    const BOOL base = RefBase::IsRealDependency(target);
    if (!base || !target || !vandrels::AreRecordsInessential() || (GetHelper() && GetHelper()->GetPersistRef()))
        return base;
    bool referencedOnly = false;
    for (int i = 0; i < NumRefs(); ++i) {
        if (GetReference(i) != target) continue;
        const vandrels::NodeRecordSlots::Slot slot = Slots().At(i);
        const bool mirror = slot.kind == vandrels::NodeRecordSlot::WorldSpaceModifier ||
                            slot.kind == vandrels::NodeRecordSlot::ObjectSpaceModifier;
        if (!mirror) return base;  // held by another slot as well
        const RefModifier* entry =
            slot.kind == vandrels::NodeRecordSlot::WorldSpaceModifier ? data_.wsMods[slot.index] : data_.osMods[slot.index];
        if (!entry || entry->state != kModFromReference) return base;
        referencedOnly = true;
    }
    return referencedOnly ? FALSE : base;
}

// ------------------------------------------------------------------------------------------ monitoring hooks

// The modifier monitoring's steps in the record's protocol: the stack checks of a collect whose modifiers
// changed (bit 0x10), the re-application after the node's own categories and the re-linking of the modifier
// references once a load finished. They arrive with the modifier overrides; until then they leave the mirrors
// as the construction built them.
void RefNode::collectModifierChanges() {}
void RefNode::applyModifierOverrides() {}
void RefNode::relinkModifierReferences() {}
