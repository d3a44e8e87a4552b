// The modifier mirrors while the user works: toggles and names of referenced modifiers, and the stack checks
// after a structural change (one modifier added, deleted or replaced in place; anything else replaces the whole
// object-space stack), with the animatable records addressed through the changed modifiers kept in step.
#include "records/modifier_mirrors.h"

#include "anims/ref_anim.h"
#include "hold.h"
#include "inode.h"
#include "object.h"
#include "records/modifier_chain.h"
#include "records/ref_base.h"
#include "records/ref_node_flags.h"

#include <vector>

namespace {

// A modifier the mirrors let go of while the host holds may come back with an undo: it is not deleted then.
bool KeepForUndo() { return theHold.Holding(); }

// The node's entry of the sub-anim address space through which every modifier of its chain is addressed; a
// modifier's entry below it is its index plus one.
constexpr int kModsEntry = 2;

// One position of a stack as the mirrors list it: a modifier, or the boundary between two derived objects.
struct StackToken {
    Modifier* mod = nullptr;  // null for a boundary
    bool boundary() const { return mod == nullptr; }
};

// The live object-space chain of node from the top, in the mirror's shape.
std::vector<StackToken> LiveObjectSpace(INode* node) {
    std::vector<StackToken> out;
    for (IDerivedObject* d = modchain::AsDerived(node->GetObjectRef()); d;) {
        for (int i = 0; i < d->NumModifiers(); ++i) out.push_back({d->GetModifier(i)});
        d = modchain::AsDerived(d->GetObjRef());
        if (d) out.push_back({});
    }
    return out;
}

std::vector<StackToken> LiveWorldSpace(INode* node) {
    std::vector<StackToken> out;
    if (IDerivedObject* ws = node->GetWSMDerivedObject())
        for (int i = 0; i < ws->NumModifiers(); ++i) out.push_back({ws->GetModifier(i)});
    return out;
}

std::vector<StackToken> MirrorTokens(const Tab<RefModifier*>& list) {
    std::vector<StackToken> out;
    for (RefModifier* entry : list) {
        if (entry && entry->state == kModBoundary)
            out.push_back({});
        else
            out.push_back({entry ? entry->GetModifier() : nullptr});
    }
    return out;
}

bool SameFrom(const std::vector<StackToken>& a, std::size_t i, const std::vector<StackToken>& b, std::size_t j) {
    if (a.size() - i != b.size() - j) return false;
    for (; i < a.size(); ++i, ++j)
        if (a[i].mod != b[j].mod) return false;
    return true;
}

int CountMods(const std::vector<StackToken>& tokens, std::size_t from = 0) {
    int n = 0;
    for (std::size_t i = from; i < tokens.size(); ++i) n += tokens[i].boundary() ? 0 : 1;
    return n;
}

// The animatable records of record addressed through the modifier at chain index (bottom-up), or behind it.
bool ThroughModifier(RefAnim* anim, int index, bool behind) {
    if (!anim) return false;
    const Tab<int> path = anim->GetPathByNumber();
    if (path.Count() < 2 || path[0] != kModsEntry) return false;
    return behind ? path[1] >= index + 1 : path[1] == index + 1;
}

void DropThroughModifier(RefBase& record, int index) {
    for (int i = record.NumRefAnims() - 1; i >= 0; --i) {
        RefAnim* anim = record.GetRefAnim(i);
        if (!ThroughModifier(anim, index, false)) continue;
        const Tab<int> path = anim->GetPathByNumber();
        Tab<int> prefix;
        prefix.Append(path[0]);
        prefix.Append(path[1]);
        record.DropRecordsUnderPath(Tab<WStr*>(), prefix, nullptr);
    }
}

// Records addressed through a modifier at or above index keep addressing the same modifier after one was
// inserted (delta 1) or removed (delta -1) at index.
void ShiftBehind(RefBase& record, int index, int delta) {
    for (int i = 0; i < record.NumRefAnims(); ++i) {
        RefAnim* anim = record.GetRefAnim(i);
        if (!ThroughModifier(anim, index, true)) continue;
        Tab<int> path = anim->GetPathByNumber();
        path[1] += delta;
        anim->SetPathByNumber(path, true);
    }
}

void DropAllThroughMods(RefBase& record) {
    Tab<int> prefix;
    prefix.Append(kModsEntry);
    record.DropRecordsUnderPath(Tab<WStr*>(), prefix, nullptr);
}

}  // namespace

// ------------------------------------------------------------------------------------------ toggles and names

void NodeModifierMirrors::OnModifierMessage(ReferenceTarget* mod, std::uint32_t message) {
    const bool toggles = message == REFMSG_CHANGE;
    const bool name = message == REFMSG_NODE_NAMECHANGE || message == REFMSG_MODIFIER_NAME_CHANGED;
    if (!mod || (!toggles && !name)) return;
    for (ModMirror mirror : {ModMirror::WorldSpace, ModMirror::ObjectSpace}) {
        // A locally replaced object-space stack is not watched entry by entry.
        if (mirror == ModMirror::ObjectSpace && (owner_.MirrorFlags() & kNodeObjectSpaceReplaced)) continue;
        Tab<RefModifier*>& list = List(mirror);
        for (int k = 0; k < list.Count(); ++k) {
            if (!list[k] || list[k]->modifier != mod) continue;
            if (toggles)
                checkToggles(mirror, k);
            else
                checkRename(mirror, k);
        }
    }
}

namespace {

// A referenced object-space or world-space modifier whose changes the mirrors follow.
Modifier* WatchedModifier(RefModifier* entry) {
    if (!entry || entry->state != kModFromReference) return nullptr;
    Modifier* mod = entry->GetModifier();
    if (!mod) return nullptr;
    const SClass_ID sc = mod->SuperClassID();
    return sc == OSM_CLASS_ID || sc == WSM_CLASS_ID ? mod : nullptr;
}

template <class T> T* FindChange(Tab<T*>& list, const MSTR& name, std::int32_t index) {
    for (T* change : list)
        if (change && change->name == name && EffectiveModIndex(change->index) == index) return change;
    return nullptr;
}

}  // namespace

void NodeModifierMirrors::checkToggles(ModMirror mirror, int position) {
    RefModifier* entry = List(mirror)[position];
    Modifier* mod = WatchedModifier(entry);
    if (!mod) return;
    const std::uint8_t live = ReadModifierToggles(mod);
    if (live == entry->toggles) return;
    putUndoRecord();
    ModChangedToggles* change = FindChange(toggledMods_, entry->name, entry->index);
    if (!change) {
        change = new ModChangedToggles;
        change->name = entry->name;
        change->index = entry->index;
        toggledMods_.Append(change);
        markChanged(false);
    }
    change->toggles = live;
    entry->toggles = live;
}

void NodeModifierMirrors::checkRename(ModMirror mirror, int position) {
    RefModifier* entry = List(mirror)[position];
    Modifier* mod = WatchedModifier(entry);
    if (!mod) return;
    const MSTR live = mod->GetName(false);
    ModChangedName* change = FindChange(renamedMods_, entry->name, entry->index);
    if (live == (change ? change->newName : entry->name)) return;
    putUndoRecord();
    if (!change) {
        change = new ModChangedName;
        change->name = entry->name;
        change->index = entry->index;
        renamedMods_.Append(change);
        markChanged(false);
    }
    change->newName = live;
}

void NodeModifierMirrors::markChanged(bool undoable) {
    if (!(owner_.MirrorFlags() & kNodeModifiers)) owner_.SetMirrorFlags(kNodeModifiers, kNodeModifiers, undoable);
}

// ------------------------------------------------------------------------------------------ stack checks

bool NodeModifierMirrors::TakeBaseObjectWatch() {
    const bool armed = baseObjectWatch_;
    baseObjectWatch_ = false;
    return armed;
}

bool NodeModifierMirrors::OnStackChanged() {
    if (!owner_.MirrorNode()) return false;
    putUndoRecord();
    const std::int32_t before[2] = {countsAtMerge_[0], countsAtMerge_[1]};
    checkWorldSpace();
    if (!(owner_.MirrorFlags() & (kNodeObjectSpaceReplaced | kNodeClothChanged))) checkObjectSpace();
    baseObjectWatch_ = true;
    return before[0] != countsAtMerge_[0] || before[1] != countsAtMerge_[1];
}

// The one-step difference between a mirror and its live stack.
struct StackDifference {
    enum Kind { None, Added, Removed, ReplacedInPlace, Other } kind = None;
    std::size_t at = 0;          // position in the mirror (and the live stack)
    bool withBoundary = false;   // a derived object began or ended with the modifier
};

namespace {

StackDifference Compare(const std::vector<StackToken>& mirror, const std::vector<StackToken>& live) {
    StackDifference d;
    std::size_t p = 0;
    while (p < mirror.size() && p < live.size() && mirror[p].mod == live[p].mod) ++p;
    if (p == mirror.size() && p == live.size()) return d;
    d.at = p;
    const int mirrorMods = CountMods(mirror), liveMods = CountMods(live);
    if (liveMods == mirrorMods + 1 && p < live.size() && !live[p].boundary()) {
        if (SameFrom(mirror, p, live, p + 1)) return d.kind = StackDifference::Added, d;
        if (p + 1 < live.size() && live[p + 1].boundary() && SameFrom(mirror, p, live, p + 2))
            return d.kind = StackDifference::Added, d.withBoundary = true, d;
    } else if (mirrorMods == liveMods + 1 && p < mirror.size() && !mirror[p].boundary()) {
        if (SameFrom(mirror, p + 1, live, p)) return d.kind = StackDifference::Removed, d;
        if (p + 1 < mirror.size() && mirror[p + 1].boundary() && SameFrom(mirror, p + 2, live, p))
            return d.kind = StackDifference::Removed, d.withBoundary = true, d;
    } else if (mirrorMods == liveMods && p < mirror.size() && p < live.size() && !mirror[p].boundary() &&
               !live[p].boundary() && SameFrom(mirror, p + 1, live, p + 1)) {
        return d.kind = StackDifference::ReplacedInPlace, d;
    }
    d.kind = StackDifference::Other;
    return d;
}

}  // namespace

// The chain index (bottom-up over the whole chain) of the modifier at position of mirror, given the live
// modifiers behind it in that mirror and the object-space modifiers below a world-space one.
static int ChainIndex(ModMirror mirror, const std::vector<StackToken>& tokens, std::size_t position, int osBelow) {
    const int behind = CountMods(tokens, position + 1);
    return mirror == ModMirror::WorldSpace ? osBelow + behind : behind;
}

bool NodeModifierMirrors::checkStack(ModMirror mirror) {
    INode* node = owner_.MirrorNode();
    const bool ws = mirror == ModMirror::WorldSpace;
    const std::vector<StackToken> live = ws ? LiveWorldSpace(node) : LiveObjectSpace(node);
    const std::vector<StackToken> recorded = MirrorTokens(List(mirror));
    const StackDifference d = Compare(recorded, live);
    if (d.kind == StackDifference::None) return true;
    markChanged(true);
    RefBase& record = owner_.MirrorRecord();
    const int osBelow = ws ? CountMods(LiveObjectSpace(node)) : 0;
    const int position = int(d.at);
    Tab<RefModifier*>& list = List(mirror);
    switch (d.kind) {
    case StackDifference::Added: {
        Modifier* mod = live[d.at].mod;
        const int index = ChainIndex(mirror, live, d.at, osBelow);
        ShiftBehind(record, index, 1);
        auto* entry = new RefModifier(mod, kModLocal, index);
        entry->SetContext(modchain::ContextOf(node, mod));
        insert(mirror, position, entry, mod);
        if (d.withBoundary) insert(mirror, position + 1, RefModifier::Boundary(), nullptr);
        break;
    }
    case StackDifference::Removed: {
        const int index = ChainIndex(mirror, recorded, d.at, osBelow);
        RefModifier* gone = list[position];
        if (gone && gone->state == kModFromReference) recordDeleted(*gone);
        DropThroughModifier(record, index);
        ShiftBehind(record, index + 1, -1);
        if (d.withBoundary) remove(mirror, position + 1, KeepForUndo());
        remove(mirror, position, KeepForUndo());
        break;
    }
    case StackDifference::ReplacedInPlace: {
        const int index = ChainIndex(mirror, live, d.at, osBelow);
        RefModifier* old = list[position];
        if (old && old->state == kModFromReference) recordDeleted(*old);
        DropThroughModifier(record, index);
        Modifier* mod = live[d.at].mod;
        auto* entry = new RefModifier(mod, kModLocal, index);
        entry->SetContext(modchain::ContextOf(node, mod));
        remove(mirror, position, KeepForUndo());
        insert(mirror, position, entry, mod);
        break;
    }
    default:
        return false;
    }
    countsAtMerge_[ws ? 0 : 1] = CountMods(live);
    return true;
}

bool NodeModifierMirrors::checkWorldSpace() {
    // Any larger change of the world-space stack is mirrored afresh, its new modifiers as local ones.
    if (checkStack(ModMirror::WorldSpace)) return true;
    INode* node = owner_.MirrorNode();
    const int osBelow = CountMods(LiveObjectSpace(node));
    dropEntries(ModMirror::WorldSpace, KeepForUndo());
    const std::vector<StackToken> live = LiveWorldSpace(node);
    for (std::size_t i = 0; i < live.size(); ++i) {
        auto* entry = new RefModifier(live[i].mod, kModLocal, ChainIndex(ModMirror::WorldSpace, live, i, osBelow));
        entry->SetContext(modchain::ContextOf(node, live[i].mod));
        append(ModMirror::WorldSpace, entry, live[i].mod);
    }
    countsAtMerge_[0] = int(live.size());
    return false;
}

bool NodeModifierMirrors::checkObjectSpace() {
    if (checkStack(ModMirror::ObjectSpace)) return true;
    markObjectSpaceReplaced();
    return false;
}

void NodeModifierMirrors::markObjectSpaceReplaced() {
    INode* node = owner_.MirrorNode();
    owner_.SetMirrorFlags(kNodeModifiers | kNodeObjectSpaceReplaced, kNodeModifiers | kNodeObjectSpaceReplaced, true);
    DropAllThroughMods(owner_.MirrorRecord());
    dropEntries(ModMirror::ObjectSpace, KeepForUndo());
    // The first entry keeps the replaced stack's top item, so that a reload can put the local stack back.
    Object* top = node->GetObjectRef();
    auto* entry = new RefModifier;
    entry->state = kModLocal;
    if (top) entry->name = top->GetObjectName(false);
    append(ModMirror::ObjectSpace, entry, top);
    countsAtMerge_[1] = modchain::CountModifiers(top);
}

void NodeModifierMirrors::recordDeleted(const RefModifier& entry) {
    auto* deleted = new ModDeleted;
    deleted->name = entry.name;
    deleted->index = entry.index;
    deletedMods_.Append(deleted);
}

void NodeModifierMirrors::VerifyObjectSpace() {
    INode* node = owner_.MirrorNode();
    if (!node || (owner_.MirrorFlags() & (kNodeObjectSpaceReplaced | kNodeClothChanged))) return;
    IDerivedObject* current = modchain::AsDerived(node->GetObjectRef());
    int at = 0;  // position in the current derived object
    for (int k = 0; k < osMods_.Count(); ++k) {
        RefModifier* entry = osMods_[k];
        if (entry && entry->state == kModBoundary) {
            IDerivedObject* next = current ? modchain::AsDerived(current->GetObjRef()) : nullptr;
            if (!next || at == 0) {
                // A boundary with nothing behind it, or before the first modifier: it no longer separates anything.
                remove(ModMirror::ObjectSpace, k--, KeepForUndo());
                markChanged(true);
                continue;
            }
            if (at != current->NumModifiers()) return markObjectSpaceReplaced();
            current = next;
            at = 0;
            continue;
        }
        if (!current || at >= current->NumModifiers()) return markObjectSpaceReplaced();
        if (!entry || entry->modifier != current->GetModifier(at)) return markObjectSpaceReplaced();
        ++at;
    }
}
