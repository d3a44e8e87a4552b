// The modifier mirrors: building them from the node's stacks, taking over the change entries of a node that
// shares a derived object, their references, cloning, the resets and the diagnostics lines.
#include "records/modifier_mirrors.h"

#include "inode.h"
#include "object.h"
#include "records/modifier_chain.h"
#include "records/mods_restore.h"
#include "records/ref_node_flags.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

#include <cstdlib>
#include <unordered_set>

namespace {

// A node record other than self whose node uses derived: the nodes among derived's dependents, followed up
// through derived objects stacked on it.
struct SharingRecordSearch {
    const NodeModifierMirrors* self;
    std::unordered_set<ReferenceTarget*> seen;

    RefNode* find(ReferenceTarget* derived) {
        if (!derived || !seen.insert(derived).second) return nullptr;
        DependentIterator it(derived);
        while (ReferenceMaker* dep = it.Next()) {
            const SClass_ID sc = dep->SuperClassID();
            if (sc == BASENODE_CLASS_ID) {
                RefNode* record = FindNodeRecord(static_cast<INode*>(dep));
                if (record && &record->ModifierMirrors() != self) return record;
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

bool NodeModifierMirrors::Monitor() {
    INode* node = owner_.MirrorNode();
    if (!node) return false;
    dropEntries(ModMirror::WorldSpace);
    dropEntries(ModMirror::ObjectSpace);
    // Indices count every modifier of the chain, the world-space stack included, from the top down to 0.
    int next = modchain::CountModifiers(node->GetObjOrWSMRef()) - 1;

    countsAtMerge_[0] = 0;
    if (IDerivedObject* ws = node->GetWSMDerivedObject()) {
        countsAtMerge_[0] = ws->NumModifiers();
        for (int i = 0; i < ws->NumModifiers(); ++i) {
            Modifier* mod = ws->GetModifier(i);
            append(ModMirror::WorldSpace, new RefModifier(mod, kModFromReference, next--), mod);
        }
    }

    countsAtMerge_[1] = 0;
    for (IDerivedObject* derived = modchain::AsDerived(node->GetObjectRef()); derived;) {
        countsAtMerge_[1] += derived->NumModifiers();
        for (int i = 0; i < derived->NumModifiers(); ++i) {
            Modifier* mod = derived->GetModifier(i);
            append(ModMirror::ObjectSpace, new RefModifier(mod, kModFromReference, next--), mod);
        }
        derived = modchain::AsDerived(derived->GetObjRef());
        if (derived) append(ModMirror::ObjectSpace, RefModifier::Boundary(), nullptr);
    }

    // A derived object shared with another referenced node: its change entries apply here as well. The
    // modifiers from that derived object down carry the same indices in both records.
    for (IDerivedObject* derived = modchain::AsDerived(node->GetObjectRef()); derived;
         derived = modchain::AsDerived(derived->GetObjRef())) {
        SharingRecordSearch search{this, {}};
        if (RefNode* other = search.find(derived))
            return takeOverSharedChanges(derived, other->ModifierMirrors()) > 0;
    }
    return false;
}

int NodeModifierMirrors::takeOverSharedChanges(IDerivedObject* shared, NodeModifierMirrors& other) {
    // Change indices number the stacks as merged. The shared part holds the indices below the lowest index of the
    // other record's entries above it; when the other record has already re-applied its changes, the modifiers it
    // deleted from the shared part are gone from the live count but not from that range.
    std::unordered_set<ReferenceTarget*> inShared;
    for (IDerivedObject* d = shared; d; d = modchain::AsDerived(d->GetObjRef()))
        for (int i = 0; i < d->NumModifiers(); ++i) inShared.insert(d->GetModifier(i));
    int limit = modchain::CountModifiers(shared);
    int lowestAbove = -1;
    for (const Tab<RefModifier*>* list : {&other.wsMods_, &other.osMods_})
        for (RefModifier* entry : *list)
            if (entry && entry->modifier && entry->state != kModBoundary && entry->index >= 0 &&
                !inShared.count(entry->modifier) && (lowestAbove < 0 || entry->index < lowestAbove))
                lowestAbove = entry->index;
    if (lowestAbove > limit) limit = lowestAbove;
    return TakeOverEntries(deletedMods_, other.deletedMods_, limit) +
           TakeOverEntries(renamedMods_, other.renamedMods_, limit) +
           TakeOverEntries(toggledMods_, other.toggledMods_, limit);
}

// ------------------------------------------------------------------------------------------ entries

void NodeModifierMirrors::append(ModMirror mirror, RefModifier* entry, ReferenceTarget* mod) {
    insert(mirror, List(mirror).Count(), entry, mod);
}

void NodeModifierMirrors::insert(ModMirror mirror, int position, RefModifier* entry, ReferenceTarget* mod) {
    if (entry) entry->modifier = nullptr;
    List(mirror).Insert(position, 1, &entry);
    if (!entry || !mod) return;
    // The entry keeps its own toggles (a restored reference would read them from the modifier, as a load does).
    const std::uint8_t toggles = entry->toggles;
    owner_.SetMirrorReference(mirror, position, mod, false);
    entry->toggles = toggles;
}

void NodeModifierMirrors::remove(ModMirror mirror, int position, bool keepOld) {
    Tab<RefModifier*>& list = List(mirror);
    if (list[position] && list[position]->modifier) owner_.SetMirrorReference(mirror, position, nullptr, keepOld);
    delete list[position];
    list.Delete(position, 1);
}

void NodeModifierMirrors::dropEntries(ModMirror mirror, bool keepOld) {
    Tab<RefModifier*>& list = List(mirror);
    for (int k = 0; k < list.Count(); ++k)
        if (list[k] && list[k]->modifier) owner_.SetMirrorReference(mirror, k, nullptr, keepOld);
    FreeModList(list);
}

void NodeModifierMirrors::DropAll() {
    dropEntries(ModMirror::WorldSpace);
    dropEntries(ModMirror::ObjectSpace);
    FreeAll();
}

void NodeModifierMirrors::FreeAll() {
    FreeModList(wsMods_);
    FreeModList(osMods_);
    FreeModList(deletedMods_);
    FreeModList(renamedMods_);
    FreeModList(toggledMods_);
}

ReferenceTarget* NodeModifierMirrors::Reference(ModMirror mirror, int position) const {
    const Tab<RefModifier*>& list = mirror == ModMirror::WorldSpace ? wsMods_ : osMods_;
    return list[position] ? list[position]->modifier : nullptr;
}

void NodeModifierMirrors::RestoreReference(ModMirror mirror, int position, ReferenceTarget* target) {
    RefModifier*& entry = List(mirror)[position];
    // A modifier restored into an empty position (saved as referenced) stands there as referenced.
    if (!entry && target) entry = new RefModifier(dynamic_cast<Modifier*>(target), kModFromReference, -1);
    if (!entry) return;
    if (!entry->modifier && target)
        if (Modifier* mod = dynamic_cast<Modifier*>(target)) entry->toggles = ReadModifierToggles(mod);
    entry->modifier = target;
}

bool NodeModifierMirrors::HoldsReferencedOnly(ModMirror mirror, int position) const {
    const RefModifier* entry = (mirror == ModMirror::WorldSpace ? wsMods_ : osMods_)[position];
    return entry && entry->state == kModFromReference;
}

void NodeModifierMirrors::CloneTo(NodeModifierMirrors& dst) const {
    dst.countsAtMerge_[0] = countsAtMerge_[0];
    dst.countsAtMerge_[1] = countsAtMerge_[1];
    // The clone's entries reference the same modifiers.
    for (RefModifier* entry : wsMods_)
        dst.append(ModMirror::WorldSpace, entry ? entry->Copy() : nullptr, entry ? entry->modifier : nullptr);
    for (RefModifier* entry : osMods_)
        dst.append(ModMirror::ObjectSpace, entry ? entry->Copy() : nullptr, entry ? entry->modifier : nullptr);
    FreeModList(dst.deletedMods_);
    FreeModList(dst.renamedMods_);
    FreeModList(dst.toggledMods_);
    dst.deletedMods_ = CopyModList(deletedMods_);
    dst.renamedMods_ = CopyModList(renamedMods_);
    dst.toggledMods_ = CopyModList(toggledMods_);
}

// ------------------------------------------------------------------------------------------ resets

void NodeModifierMirrors::Reset() {
    for (RefModifier* entry : wsMods_) {
        if (!entry) continue;
        entry->state = kModFromReference;
        entry->modContext.reset();
    }
    if (owner_.MirrorFlags() & kNodeObjectSpaceReplaced) {
        dropEntries(ModMirror::ObjectSpace);
        owner_.SetMirrorFlags(kNodeObjectSpaceReplaced, 0, true);
    } else {
        for (RefModifier* entry : osMods_) {
            if (!entry || entry->state == kModBoundary) continue;
            entry->state = kModFromReference;
            entry->modContext.reset();
        }
    }
    FreeModList(deletedMods_);
    FreeModList(renamedMods_);
    FreeModList(toggledMods_);
}

void NodeModifierMirrors::DropObjectSpace() {
    if (!(owner_.MirrorFlags() & kNodeObjectSpaceReplaced)) return;
    dropEntries(ModMirror::ObjectSpace);
    owner_.SetMirrorFlags(kNodeObjectSpaceReplaced, 0, true);
}

// ------------------------------------------------------------------------------------------ diagnostics

MSTR NodeModifierMirrors::Lines() const {
    MSTR out = L"\nWSRefMods: ";
    for (RefModifier* entry : wsMods_) {
        if (!entry) {
            out += L"\nNull RefMod: ";
            continue;
        }
        out += EntryHead(entry->name, entry->index);
        out.append_printf(L", State: %d, Toggles: %d, Modifier: %d", int(entry->state), int(entry->toggles),
                          HandleOf(entry->modifier));
    }
    out += L"\nOSRefMods: ";
    for (RefModifier* entry : osMods_) {
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
    for (ModDeleted* entry : deletedMods_)
        out += entry ? EntryHead(entry->name, entry->index) : MSTR(L"\nNull DeletedMod: ");
    out += L"\nRenamedMods: ";
    for (ModChangedName* entry : renamedMods_)
        out += entry ? EntryHead(entry->name, entry->index) + L", NewName: " + entry->newName
                     : MSTR(L"\nNull RenamedMod: ");
    out += L"\nToggledMods: ";
    for (ModChangedToggles* entry : toggledMods_) {
        if (!entry) {
            out += L"\nNull toggledMod: ";
            continue;
        }
        out += EntryHead(entry->name, entry->index);
        out.append_printf(L", Toggles: %d", int(entry->toggles));
    }
    return out;
}

// ------------------------------------------------------------------------------------------ undo

void NodeModifierMirrors::putUndoRecord() { RefModsRestore::PutFor(owner_.MirrorRecord(), *this); }

std::unique_ptr<NodeModifierMirrors::Snapshot> NodeModifierMirrors::TakeSnapshot() const {
    auto snapshot = std::make_unique<Snapshot>();
    auto copy = [](const Tab<RefModifier*>& list, std::vector<Snapshot::Entry>& out) {
        for (RefModifier* entry : list)
            out.emplace_back(entry ? std::unique_ptr<RefModifier>(entry->Copy()) : nullptr,
                             entry ? entry->modifier : nullptr);
    };
    copy(wsMods_, snapshot->worldSpace);
    copy(osMods_, snapshot->objectSpace);
    snapshot->deleted = CopyModList(deletedMods_);
    snapshot->renamed = CopyModList(renamedMods_);
    snapshot->toggled = CopyModList(toggledMods_);
    snapshot->countsAtMerge[0] = countsAtMerge_[0];
    snapshot->countsAtMerge[1] = countsAtMerge_[1];
    return snapshot;
}

void NodeModifierMirrors::RestoreSnapshot(const Snapshot& snapshot) {
    // Modifiers the mirrors let go of stay alive: the stacks' own undo records may bring them back.
    dropEntries(ModMirror::WorldSpace, true);
    dropEntries(ModMirror::ObjectSpace, true);
    for (const Snapshot::Entry& e : snapshot.worldSpace)
        append(ModMirror::WorldSpace, e.first ? e.first->Copy() : nullptr, e.second);
    for (const Snapshot::Entry& e : snapshot.objectSpace)
        append(ModMirror::ObjectSpace, e.first ? e.first->Copy() : nullptr, e.second);
    FreeModList(deletedMods_);
    FreeModList(renamedMods_);
    FreeModList(toggledMods_);
    deletedMods_ = CopyModList(snapshot.deleted);
    renamedMods_ = CopyModList(snapshot.renamed);
    toggledMods_ = CopyModList(snapshot.toggled);
    countsAtMerge_[0] = snapshot.countsAtMerge[0];
    countsAtMerge_[1] = snapshot.countsAtMerge[1];
}
