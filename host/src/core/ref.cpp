// The reference system: handles, property lists, references kept both ways, message propagation, dependent
// walks, reference transfer, deletion and auto-deletion.
#include "ref.h"

#include "core/class_directory.h"
#include "core/paired_scopes.h"

#include "hold.h"
#include "ref_internal.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace {

// Never destroyed: objects may still be released while the process exits.
std::unordered_map<AnimHandle, Animatable*>& liveAnims() {
    static auto* live = new std::unordered_map<AnimHandle, Animatable*>();
    return *live;
}
AnimHandle nextHandle = 1;
int refMsgsDisabled = 0;

template <class T> std::vector<T*> uniqueInOrder(const RefList<T>& v) { return v.Unique(); }

// Offers each target auto-deletion; targets deleted meanwhile by an earlier one's deletion are skipped.
void autoDeleteEach(const std::vector<ReferenceTarget*>& targets) {
    std::vector<std::pair<ReferenceTarget*, AnimHandle>> items;
    for (ReferenceTarget* t : targets) items.emplace_back(t, Animatable::GetHandleByAnim(t));
    for (auto& [t, h] : items)
        if (Animatable::GetAnimByHandle(h) == t) t->MaybeAutoDelete();
}

bool holdRecords() { return theHold.Holding() && !theHold.IsSuspended() && !theHold.RestoreOrRedoing(); }

}  // namespace

namespace {

// Where makers with many references hold their targets, so that finding the slot of one target does not scan
// every slot of, say, a helper holding a hundred thousand records. Only slots from kSlotHintsFrom on are noted
// (a short scan finds the others). Makers may move references between their slots without telling the host, so
// a hint is checked before it is trusted, and a wrong one has the maker's hints taken afresh.
constexpr int kSlotHintsFrom = 32;
using SlotHints = std::unordered_map<ReferenceMaker*, std::unordered_map<ReferenceTarget*, int>>;
SlotHints& slotHints() {
    static auto* hints = new SlotHints();  // lives until the process ends
    return *hints;
}

void forgetSlot(ReferenceMaker* maker, ReferenceTarget* target) {
    SlotHints& hints = slotHints();
    if (hints.empty()) return;
    auto it = hints.find(maker);
    if (it == hints.end()) return;
    it->second.erase(target);
    if (it->second.empty()) hints.erase(it);
}

}  // namespace

// The both-ways bookkeeping of references: the maker's list of held targets and the target's dependents.
struct RefBookkeeping {
    static void attach(ReferenceMaker* maker, ReferenceTarget* target) {
        maker->held_.Add(target);
        target->deps_.Add(maker);
    }
    static void detach(ReferenceMaker* maker, ReferenceTarget* target) {
        maker->held_.RemoveOne(target);
        target->deps_.RemoveOne(maker);
        if (!maker->held_.Contains(target)) forgetSlot(maker, target);
    }
    static void dropDependent(ReferenceTarget* target, ReferenceMaker* maker) { target->deps_.RemoveOne(maker); }
    static bool isDependent(ReferenceTarget* target, ReferenceMaker* maker) { return target->deps_.Contains(maker); }
    // Sets the slot and keeps the bookkeeping; answers the target that was replaced.
    static ReferenceTarget* set(ReferenceMaker* maker, int which, ReferenceTarget* target) {
        ReferenceTarget* old = maker->GetReference(which);
        if (old == target) return nullptr;
        if (target) attach(maker, target);
        maker->SetReference(which, target);
        if (old) detach(maker, old);
        if (target && which >= kSlotHintsFrom) slotHints()[maker][target] = which;
        return old;
    }
    // Calls slot(i) for every slot i of maker that holds target. A target held once, at a noted slot, is found
    // without a scan.
    template <class F> static void forEachSlotHolding(ReferenceMaker* maker, ReferenceTarget* target, F slot) {
        if (const int hinted = hintedSlot(maker, target); hinted >= 0) {
            slot(hinted);
            return;
        }
        for (int i = 0; i < maker->NumRefs(); ++i)
            if (maker->GetReference(i) == target) slot(i);
    }

private:
    // The noted slot of a target that the maker holds once; -1 when there is none to trust.
    static int hintedSlot(ReferenceMaker* maker, ReferenceTarget* target) {
        SlotHints& hints = slotHints();
        if (hints.empty()) return -1;
        auto it = hints.find(maker);
        if (it == hints.end() || maker->held_.Count(target) != 1) return -1;
        for (int attempt = 0; attempt < 2; ++attempt) {
            auto found = it->second.find(target);
            if (found == it->second.end()) return -1;
            const int i = found->second;
            if (i < maker->NumRefs() && maker->GetReference(i) == target) return i;
            if (attempt == 0) renote(maker, it->second);
        }
        return -1;
    }
    // Takes the maker's hints afresh from its slots.
    static void renote(ReferenceMaker* maker, std::unordered_map<ReferenceTarget*, int>& noted) {
        noted.clear();
        const int count = maker->NumRefs();
        for (int i = kSlotHintsFrom; i < count; ++i)
            if (ReferenceTarget* t = maker->GetReference(i)) noted.emplace(t, i);
    }
};

namespace {

// Undo record of one reference change. Both targets are pinned, so they outlive their last reference while
// the record can still bring them back.
class RefRestore : public RestoreObj {
public:
    RefRestore(ReferenceMaker* maker, int which, ReferenceTarget* oldT, ReferenceTarget* newT)
        : maker_(maker), makerHandle_(Animatable::GetHandleByAnim(maker)), which_(which), old_(oldT), new_(newT),
          oldHandle_(Animatable::GetHandleByAnim(oldT)), newHandle_(Animatable::GetHandleByAnim(newT)) {
        if (old_) old_->PinForUndo();
        if (new_) new_->PinForUndo();
    }
    ~RefRestore() override {
        if (alive(old_, oldHandle_)) old_->UnpinForUndo();
        if (alive(new_, newHandle_)) new_->UnpinForUndo();
    }
    void Restore(int) override { apply(old_, oldHandle_); }
    void Redo() override { apply(new_, newHandle_); }
    MSTR Description() override { return MSTR(L"Reference change"); }

private:
    static bool alive(ReferenceTarget* t, AnimHandle h) { return t && Animatable::GetAnimByHandle(h) == t; }
    void apply(ReferenceTarget* target, AnimHandle h) {
        if (Animatable::GetAnimByHandle(makerHandle_) != maker_) return;
        if (target && (!alive(target, h) || target->TestAFlag(A_IS_DELETED))) return;
        if (which_ >= maker_->NumRefs()) return;
        RefBookkeeping::set(maker_, which_, target);
    }
    ReferenceMaker* maker_;
    AnimHandle makerHandle_;
    int which_;
    ReferenceTarget* old_;
    ReferenceTarget* new_;
    AnimHandle oldHandle_, newHandle_;
};

}  // namespace

// ---------------------------------------------------------------------------------------------- Animatable

int AnimPropertyList::FindProperty(DWORD id, int start) {
    for (int i = std::max(start, 0); i < Count(); ++i)
        if ((*this)[i] && (*this)[i]->ID() == id) return i;
    return -1;
}

Animatable::Animatable() : handle_(nextHandle++) { liveAnims().emplace(handle_, this); }

Animatable::~Animatable() {
    for (AnimProperty* ap : aprops)
        if (ap && !ap->DontDelete()) delete ap;
    aprops.ZeroCount();
    DeleteCustAttribContainer();
    liveAnims().erase(handle_);
}

// A class that does not name itself is named by its descriptor in the class directory ("" when it has none).
void Animatable::GetClassName(MSTR& s, bool) const {
    auto* self = const_cast<Animatable*>(this);
    const ClassDesc* desc = hostrt::ClassDirectory::Instance().Find(self->SuperClassID(), self->ClassID());
    s = desc ? MSTR(const_cast<ClassDesc*>(desc)->ClassName()) : MSTR();
}

AnimHandle Animatable::GetHandleByAnim(const Animatable* anim) { return anim ? anim->handle_ : 0; }

Animatable* Animatable::GetAnimByHandle(AnimHandle handle) {
    auto it = liveAnims().find(handle);
    return it == liveAnims().end() ? nullptr : it->second;
}

AnimProperty* Animatable::GetAProp(DWORD id) {
    int i = aprops.FindProperty(id);
    return i < 0 ? nullptr : aprops[i];
}

int Animatable::AddAProp(AnimProperty* ap) { return aprops.Append(ap); }

BOOL Animatable::RemoveAProp(AnimProperty* ap) {
    if (!aprops.Remove(ap)) return FALSE;
    if (!ap->DontDelete()) delete ap;
    return TRUE;
}

BOOL Animatable::DeleteAProp(DWORD id) {
    AnimProperty* ap = GetAProp(id);
    return ap ? RemoveAProp(ap) : FALSE;
}

void Animatable::SetCustAttribContainer(ICustAttribContainer* container) {
    if (cc == container) return;
    DeleteCustAttribContainer();
    cc = container;
    if (cc) cc->SetOwner(this);
}

void Animatable::DeleteCustAttribContainer() {
    if (!cc) return;
    ICustAttribContainer* c = cc;
    cc = nullptr;
    c->SetOwner(nullptr);
    c->DeleteMe();
}

// ------------------------------------------------------------------------------------------ ReferenceMaker

ReferenceMaker::~ReferenceMaker() {
    // The subclass's slots are gone by now: release what the bookkeeping says this maker held.
    std::vector<ReferenceTarget*> held(held_.begin(), held_.end());
    const std::vector<ReferenceTarget*> distinct = held_.Unique();
    held_.Clear();
    slotHints().erase(this);
    for (ReferenceTarget* t : held) RefBookkeeping::dropDependent(t, this);
    autoDeleteEach(distinct);
}

RefResult ReferenceMaker::ReplaceReference(int which, RefTargetHandle newtarg, BOOL delOld) {
    if (which < 0 || which >= NumRefs()) return REF_FAIL;
    ReferenceTarget* old = GetReference(which);
    if (old == newtarg) return REF_SUCCEED;
    if (holdRecords()) theHold.Put(new RefRestore(this, which, old, newtarg));
    RefBookkeeping::set(this, which, newtarg);
    if (old && delOld) old->MaybeAutoDelete();
    return REF_SUCCEED;
}

RefResult ReferenceMaker::DeleteReference(int which, BOOL delOld) {
    if (which < 0 || which >= NumRefs()) return REF_FAIL;
    if (!GetReference(which)) return REF_SUCCEED;
    return ReplaceReference(which, nullptr, delOld);
}

RefResult ReferenceMaker::DeleteAllRefsFromMe() {
    for (int i = 0; i < NumRefs(); ++i) DeleteReference(i);
    // Whatever the slots no longer show but the bookkeeping still holds.
    std::vector<ReferenceTarget*> rest(held_.begin(), held_.end());
    const std::vector<ReferenceTarget*> distinct = held_.Unique();
    for (ReferenceTarget* t : rest) RefBookkeeping::detach(this, t);
    autoDeleteEach(distinct);
    return REF_SUCCEED;
}

int ReferenceMaker::FindRef(RefTargetHandle rtarg) {
    if (!rtarg) {
        for (int i = 0; i < NumRefs(); ++i)
            if (!GetReference(i)) return i;
        return -1;
    }
    int first = -1;
    RefBookkeeping::forEachSlotHolding(this, rtarg, [&first](int i) {
        if (first < 0) first = i;
    });
    return first;
}

bool DependentEnumProc::Visited(ReferenceMaker* rmaker) {
    if (std::find(visited_.begin(), visited_.end(), rmaker) != visited_.end()) return true;
    visited_.push_back(rmaker);
    return false;
}

// ----------------------------------------------------------------------------------------- ReferenceTarget

namespace {
// Targets that are passing a message on right now; a cycle of references does not pass it round again.
std::vector<ReferenceTarget*>& forwarding() {
    static std::vector<ReferenceTarget*> chain;
    return chain;
}
}  // namespace

ReferenceTarget::~ReferenceTarget() {
    // Nobody may keep pointing at a destroyed target: clear every slot that still holds it.
    std::vector<ReferenceMaker*> deps = uniqueInOrder(deps_);
    for (ReferenceMaker* m : deps) {
        RefBookkeeping::forEachSlotHolding(m, this, [m](int i) { m->SetReference(i, nullptr); });
        while (m->held_.RemoveOne(this)) {
        }
        forgetSlot(m, this);
    }
    deps_.Clear();
}

void ReferenceTarget::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    if (!from || !to) return;
    remap.AddEntry(from, to);
    if (ICustAttribContainer* c = from->GetCustAttribContainer()) {
        to->AllocCustAttribContainer();
        ICustAttribContainer* dst = to->GetCustAttribContainer();
        for (int i = 0; i < c->GetNumCustAttribs(); ++i)
            if (CustAttrib* ca = c->GetCustAttrib(i)) dst->AppendCustAttrib(static_cast<CustAttrib*>(remap.CloneRef(ca)));
    }
}

RefResult ReferenceTarget::NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message,
                                            SClass_ID sclass, BOOL propagate, RefTargetHandle hTarg) {
    if (refMsgsDisabled > 0) return REF_SUCCEED;
    ReferenceTarget* sender = hTarg ? hTarg : this;
    auto& chain = forwarding();
    chain.push_back(this);
    for (ReferenceMaker* dep : uniqueInOrder(deps_)) {
        if (!RefBookkeeping::isDependent(this, dep)) continue;  // dropped by an earlier receiver
        if (sclass != NOTIFY_ALL && dep->SuperClassID() != sclass) continue;
        AnimHandle h = Animatable::GetHandleByAnim(dep);
        RefResult r = dep->NotifyRefChanged(changeInt, sender, partID, message, propagate);
        if (Animatable::GetAnimByHandle(h) != dep) continue;  // deleted while handling the message
        if (r == REF_STOP || !propagate || !dep->IsRefTarget()) continue;
        auto* t = static_cast<ReferenceTarget*>(dep);
        if (std::find(chain.begin(), chain.end(), t) != chain.end()) continue;
        t->NotifyDependents(changeInt, partID, message, sclass, propagate);
    }
    chain.pop_back();
    return REF_SUCCEED;
}

int ReferenceTarget::DoEnumDependents(DependentEnumProc* dep) {
    // The target itself comes first, then its dependents, depth first, each once.
    if (dep->Visited(this)) return 0;
    int r = dep->proc(this);
    if (r == DEP_ENUM_HALT) return 1;
    if (r == DEP_ENUM_SKIP) return 0;
    for (ReferenceMaker* m : uniqueInOrder(deps_)) {
        if (!RefBookkeeping::isDependent(this, m)) continue;
        if (m->IsRefTarget()) {
            if (static_cast<ReferenceTarget*>(m)->DoEnumDependents(dep)) return 1;
        } else if (!dep->Visited(m) && dep->proc(m) == DEP_ENUM_HALT) {
            return 1;
        }
    }
    return 0;
}

RefResult ReferenceTarget::TransferReferences(RefTargetHandle oldTarget, BOOL delOld) {
    if (!oldTarget || oldTarget == this) return REF_FAIL;
    for (ReferenceMaker* m : uniqueInOrder(oldTarget->deps_)) {
        if (m == this || !RefBookkeeping::isDependent(oldTarget, m)) continue;
        RefBookkeeping::forEachSlotHolding(m, oldTarget, [m, this](int i) {
            if (m->CanTransferReference(i)) m->ReplaceReference(i, this, FALSE);
        });
    }
    if (delOld) oldTarget->MaybeAutoDelete();
    return REF_SUCCEED;
}

RefResult ReferenceTarget::DeleteAllRefsToMe() {
    for (ReferenceMaker* m : uniqueInOrder(deps_)) {
        RefBookkeeping::forEachSlotHolding(m, this, [m](int i) { m->ReplaceReference(i, nullptr, FALSE); });
        // Slots the maker no longer shows: drop the bookkeeping too.
        while (RefBookkeeping::isDependent(this, m)) RefBookkeeping::detach(m, this);
    }
    return REF_SUCCEED;
}

RefResult ReferenceTarget::DeleteMe() {
    if (TestAFlag(A_IS_DELETED)) return REF_SUCCEED;
    SetAFlag(A_IS_DELETED);
    {
        hostrt::HoldSuspendedScope suspended;
        NotifyDependents(FOREVER, PART_ALL, REFMSG_TARGET_DELETED, NOTIFY_ALL, FALSE);  // only the direct dependents
        DeleteAllRefsToMe();
        DeleteAllRefsFromMe();
    }
    if (pins_ > 0) return REF_SUCCEED;  // an undo record still needs it; deleted when it lets go
    DeleteThis();
    return REF_SUCCEED;
}

bool ReferenceTarget::HasRealDependents() {
    for (ReferenceMaker* m : deps_)
        if (m->IsRealDependency(this)) return true;
    return false;
}

RefResult ReferenceTarget::MaybeAutoDelete() {
    if (TestAFlag(A_LOCK_TARGET | A_IS_DELETED) || pins_ > 0 || HasRealDependents()) return REF_FAIL;
    return DeleteMe();
}

void ReferenceTarget::UnpinForUndo() {
    if (pins_ > 0) --pins_;
    if (pins_ > 0) return;
    if (TestAFlag(A_IS_DELETED))
        DeleteThis();  // deleted while an undo record pinned it
    else
        MaybeAutoDelete();
}

DependentIterator::DependentIterator(ReferenceTarget* target)
    : target_(target), snapshot_(target ? target->Dependents().Unique() : std::vector<ReferenceMaker*>{}) {}

ReferenceMaker* DependentIterator::Next() {
    while (pos_ < snapshot_.size()) {
        ReferenceMaker* m = snapshot_[pos_++];
        if (target_->Dependents().Contains(m)) return m;
    }
    return nullptr;
}

void DisableRefMsgs() { ++refMsgsDisabled; }
void EnableRefMsgs() { if (refMsgsDisabled > 0) --refMsgsDisabled; }
bool RefMsgsEnabled() { return refMsgsDisabled == 0; }

namespace hostrt {

void RestoreReference(ReferenceMaker* maker, int i, ReferenceTarget* target) {
    if (!maker || i < 0 || i >= maker->NumRefs()) return;
    RefBookkeeping::set(maker, i, target);
}

std::size_t LiveAnimatableCount() { return liveAnims().size(); }

}  // namespace hostrt
