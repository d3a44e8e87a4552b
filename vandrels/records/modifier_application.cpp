// The modifier mirrors after a reload: the change lists are matched to the freshly merged stacks (nearest index
// among same-named modifiers, each modifier once per pass; a change whose modifier is missing waits with its
// index complemented), local modifiers go back at their recorded places, a locally replaced object-space stack
// takes the merged one's place, and the mirrors then show the stacks as they stand. Also the collect pass's
// capture of the local modifiers' contexts.
#include "records/modifier_mirrors.h"

#include "inode.h"
#include "object.h"
#include "records/modifier_chain.h"
#include "records/ref_node_flags.h"

#include <cstdlib>
#include <unordered_map>
#include <vector>

// The merged chain's modifiers from the top (world-space ones first), each with the name it came with, its
// chain index (bottom-up, as the mirrors number them) and a mark for the pass that uses it.
struct ModWorkList {
    struct Item {
        Modifier* mod;
        MSTR name;
        int position;
        bool used;
    };
    std::vector<Item> items;

    explicit ModWorkList(INode* node) {
        int next = modchain::CountModifiers(node->GetObjOrWSMRef()) - 1;
        for (IDerivedObject* d = modchain::AsDerived(node->GetObjOrWSMRef()); d; d = modchain::AsDerived(d->GetObjRef()))
            for (int i = 0; i < d->NumModifiers(); ++i) {
                Modifier* mod = d->GetModifier(i);
                items.push_back({mod, mod ? mod->GetName(false) : MSTR(), next--, false});
            }
    }

    void StartPass() {
        for (Item& item : items) item.used = false;
    }

    // The unused same-named modifier nearest to change's index (the first found on a tie), marked used; the
    // change's index becomes its position, or is complemented when there is none.
    template <class T> Item* Match(T& change) {
        Item* best = nullptr;
        int bestDistance = 0;
        for (Item& item : items) {
            if (item.used || !item.mod || item.name != change.name) continue;
            const int distance = std::abs(item.position - change.index);
            if (!best || distance < bestDistance) {
                best = &item;
                bestDistance = distance;
            }
        }
        if (!best) {
            change.index = ~change.index;
            return nullptr;
        }
        change.index = best->position;
        best->used = true;
        return best;
    }

    const Item* Find(Modifier* mod) const {
        for (const Item& item : items)
            if (item.mod == mod) return &item;
        return nullptr;
    }
};

namespace {

void SetToggles(Modifier* mod, std::uint8_t toggles) {
    const std::uint8_t live = ReadModifierToggles(mod);
    if ((live ^ toggles) & kModToggleOn) (toggles & kModToggleOn) ? mod->EnableMod() : mod->DisableMod();
    if ((live ^ toggles) & kModToggleInViews)
        (toggles & kModToggleInViews) ? mod->EnableModInViews() : mod->DisableModInViews();
    if ((live ^ toggles) & kModToggleInRender)
        (toggles & kModToggleInRender) ? mod->EnableModInRender() : mod->DisableModInRender();
}

// Removes mod from whichever derived object of node's chain holds it.
void DeleteFromChain(INode* node, Modifier* mod) {
    for (IDerivedObject* d = modchain::AsDerived(node->GetObjOrWSMRef()); d; d = modchain::AsDerived(d->GetObjRef()))
        for (int i = 0; i < d->NumModifiers(); ++i)
            if (d->GetModifier(i) == mod) return d->DeleteModifier(i);
}

bool InDerived(IDerivedObject* d, Modifier* mod) {
    for (int i = 0; d && i < d->NumModifiers(); ++i)
        if (d->GetModifier(i) == mod) return true;
    return false;
}

// The entries of a mirror cut at its boundaries, from the top.
std::vector<std::vector<RefModifier*>> Segments(const Tab<RefModifier*>& list) {
    std::vector<std::vector<RefModifier*>> out(1);
    for (RefModifier* entry : list) {
        if (entry && entry->state == kModBoundary)
            out.emplace_back();
        else
            out.back().push_back(entry);
    }
    return out;
}

bool HasLocal(const std::vector<RefModifier*>& segment) {
    for (RefModifier* entry : segment)
        if (entry && entry->state == kModLocal && entry->GetModifier()) return true;
    return false;
}

// Walks one segment of a mirror from the top against derived: a referenced entry passes over the next merged
// modifier, a local one goes in at the current place with its stored context. Answers the local modifiers put.
void PlaceLocals(const std::vector<RefModifier*>& segment, IDerivedObject* derived,
                 std::unordered_map<Modifier*, const RefModifier*>& locals) {
    int at = 0;
    for (RefModifier* entry : segment) {
        if (!entry || entry->state != kModLocal) {
            if (at < derived->NumModifiers()) ++at;
            continue;
        }
        Modifier* mod = entry->GetModifier();
        if (!mod) continue;  // the local modifier is gone: its entry goes with the rebuild
        if (!InDerived(derived, mod)) {
            ModContext context;
            if (entry->modContext) context = *entry->modContext;
            derived->AddModifier(mod, &context, at);
        }
        locals[mod] = entry;
        ++at;
    }
}

}  // namespace

// ------------------------------------------------------------------------------------------ collect

void NodeModifierMirrors::CollectLocal() {
    INode* node = owner_.MirrorNode();
    if (!node) return;
    // The stored context is a copy of transform and box; a modifier's local data stays with its own context.
    auto capture = [&](RefModifier* entry) {
        if (!entry || entry->state != kModLocal) return;
        if (ModContext* context = modchain::ContextOf(node, entry->GetModifier())) entry->SetContext(context);
    };
    for (RefModifier* entry : wsMods_) capture(entry);
    if (owner_.MirrorFlags() & (kNodeObjectSpaceReplaced | kNodeClothChanged)) return;
    for (RefModifier* entry : osMods_) capture(entry);
}

// ------------------------------------------------------------------------------------------ re-application

void NodeModifierMirrors::Apply() {
    INode* node = owner_.MirrorNode();
    if (!node) return;
    for (ModDeleted* c : deletedMods_)
        if (c) c->matched = 0, c->index = EffectiveModIndex(c->index);
    for (ModChangedName* c : renamedMods_)
        if (c) c->matched = 0, c->index = EffectiveModIndex(c->index);
    for (ModChangedToggles* c : toggledMods_)
        if (c) c->matched = 0, c->index = EffectiveModIndex(c->index);

    ModWorkList work(node);
    applyChangeLists(work);
    applyWorldSpace(work);
    applyObjectSpace(work);
    countsAtMerge_[0] = node->GetWSMDerivedObject() ? node->GetWSMDerivedObject()->NumModifiers() : 0;
    countsAtMerge_[1] = modchain::CountModifiers(node->GetObjectRef());
}

void NodeModifierMirrors::applyChangeLists(ModWorkList& work) {
    INode* node = owner_.MirrorNode();
    work.StartPass();
    for (ModChangedToggles* change : toggledMods_)
        if (change)
            if (ModWorkList::Item* item = work.Match(*change)) SetToggles(item->mod, change->toggles);
    work.StartPass();
    for (ModChangedName* change : renamedMods_)
        if (change)
            if (ModWorkList::Item* item = work.Match(*change)) item->mod->SetName(change->newName);
    work.StartPass();
    for (ModDeleted* change : deletedMods_)
        if (change)
            if (ModWorkList::Item* item = work.Match(*change)) DeleteFromChain(node, item->mod);
}

void NodeModifierMirrors::applyWorldSpace(ModWorkList& work) {
    INode* node = owner_.MirrorNode();
    std::unordered_map<Modifier*, const RefModifier*> locals;
    const std::vector<RefModifier*> segment = Segments(wsMods_).front();
    if (HasLocal(segment)) {
        IDerivedObject* ws = node->GetWSMDerivedObject();
        if (!ws) ws = node->CreateWSMDerivedObject();
        if (ws) PlaceLocals(segment, ws, locals);
    }
    rebuild(ModMirror::WorldSpace, work, locals);
}

void NodeModifierMirrors::applyObjectSpace(ModWorkList& work) {
    INode* node = owner_.MirrorNode();
    const std::uint32_t flags = owner_.MirrorFlags();
    if (flags & kNodeObjectSpaceReplaced) {
        // The locally replaced stack, kept by the first entry, takes the merged stack's place.
        RefModifier* first = osMods_.Count() ? osMods_[0] : nullptr;
        if (auto* top = first ? dynamic_cast<Object*>(first->modifier) : nullptr) {
            if (node->GetObjectRef() != top) node->SetObjectRef(top);
            countsAtMerge_[1] = modchain::CountModifiers(top);
        }
        return;
    }
    if (flags & kNodeClothChanged) return;

    std::unordered_map<Modifier*, const RefModifier*> locals;
    std::vector<std::vector<RefModifier*>> segments = Segments(osMods_);
    std::vector<IDerivedObject*> chain;
    for (IDerivedObject* d = modchain::AsDerived(node->GetObjectRef()); d; d = modchain::AsDerived(d->GetObjRef()))
        chain.push_back(d);
    // Segments and derived objects pair from the bottom; segments above the merged top get derived objects of
    // their own, made above the current top.
    const int extra = int(segments.size()) - int(chain.size());
    for (int s = int(segments.size()) - 1; s >= 0; --s) {
        const int c = s - extra;
        IDerivedObject* derived = c >= 0 ? chain[std::size_t(c)] : nullptr;
        if (!HasLocal(segments[std::size_t(s)])) continue;
        if (!derived) {
            Object* top = node->GetObjectRef();
            if (!top) continue;
            derived = CreateDerivedObject(top);
            node->SetObjectRef(derived);
        }
        PlaceLocals(segments[std::size_t(s)], derived, locals);
    }
    rebuild(ModMirror::ObjectSpace, work, locals);
}

void NodeModifierMirrors::rebuild(ModMirror mirror, const ModWorkList& work,
                                  const std::unordered_map<Modifier*, const RefModifier*>& locals) {
    INode* node = owner_.MirrorNode();
    // The new entries are made before the old ones go, so that a local entry's stored fields survive.
    std::vector<std::pair<RefModifier*, Modifier*>> fresh;
    int next = modchain::CountModifiers(node->GetObjOrWSMRef()) - 1;
    auto add = [&](Modifier* mod) {
        const int index = next--;
        auto local = locals.find(mod);
        RefModifier* entry;
        if (local != locals.end()) {
            entry = local->second->Copy();
            entry->name = mod->GetName(false);
            entry->toggles = ReadModifierToggles(mod);
            entry->index = index;
        } else {
            entry = new RefModifier(mod, kModFromReference, index);
            // A referenced entry keeps the name and place the modifier came with, which the change lists use.
            if (const ModWorkList::Item* item = work.Find(mod)) {
                entry->name = item->name;
                entry->index = item->position;
            }
        }
        fresh.emplace_back(entry, mod);
    };
    if (mirror == ModMirror::WorldSpace) {
        if (IDerivedObject* ws = node->GetWSMDerivedObject())
            for (int i = 0; i < ws->NumModifiers(); ++i) add(ws->GetModifier(i));
    } else {
        if (IDerivedObject* ws = node->GetWSMDerivedObject()) next -= ws->NumModifiers();
        for (IDerivedObject* d = modchain::AsDerived(node->GetObjectRef()); d;) {
            for (int i = 0; i < d->NumModifiers(); ++i) add(d->GetModifier(i));
            d = modchain::AsDerived(d->GetObjRef());
            if (d) fresh.emplace_back(RefModifier::Boundary(), nullptr);
        }
    }
    dropEntries(mirror);
    for (auto& [entry, mod] : fresh) append(mirror, entry, mod);
}

void NodeModifierMirrors::Relink() {
    // Entries saved as records got their modifiers back from the host; a local one that did not is gone.
    for (ModMirror mirror : {ModMirror::WorldSpace, ModMirror::ObjectSpace}) {
        Tab<RefModifier*>& list = List(mirror);
        for (int k = list.Count() - 1; k >= 0; --k) {
            RefModifier* entry = list[k];
            if (entry && entry->state == kModLocal && !entry->modifier) remove(mirror, k, false);
        }
    }
}
