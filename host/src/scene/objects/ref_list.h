// RefList: a run of reference slots whose number changes (modifiers, list entries, listed nodes), kept as the
// last references of its owner, each with a value beside its target; edits are undoable while holding.
#pragma once

#include "core/ref_internal.h"
#include "hold.h"
#include "ref.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace hostrt {

template <class Extra> class RefList {
public:
    struct Slot {
        ReferenceTarget* target = nullptr;
        Extra extra{};
    };
    using Slots = std::vector<Slot>;

    // The run starts at reference index first of owner; afterUndo runs after an undo or redo changed the run.
    RefList(ReferenceMaker* owner, int first, std::function<void()> afterUndo = {})
        : owner_(owner), first_(first), afterUndo_(std::move(afterUndo)) {}
    RefList(const RefList&) = delete;
    RefList& operator=(const RefList&) = delete;

    int First() const { return first_; }
    int Count() const { return int(slots_.size()); }
    bool InRange(int i) const { return i >= 0 && i < Count(); }
    ReferenceTarget* Target(int i) const { return InRange(i) ? slots_[std::size_t(i)].target : nullptr; }
    const Extra& ExtraAt(int i) const { return slots_[std::size_t(i)].extra; }
    Extra& ExtraAt(int i) { return slots_[std::size_t(i)].extra; }
    const Slots& All() const { return slots_; }
    // Index of the first slot holding target, -1 when none.
    int IndexOf(const ReferenceTarget* target) const {
        for (std::size_t i = 0; i < slots_.size(); ++i)
            if (slots_[i].target == target) return int(i);
        return -1;
    }

    // For the owner's GetReference/SetReference (reference index, not slot index).
    bool Owns(int ref) const { return ref >= first_ && ref < first_ + Count(); }
    ReferenceTarget* GetRef(int ref) const { return Owns(ref) ? slots_[std::size_t(ref - first_)].target : nullptr; }
    void SetRef(int ref, ReferenceTarget* target) {
        if (Owns(ref)) slots_[std::size_t(ref - first_)].target = target;
    }
    // Load: n empty slots (their targets come back as references), with extras given later.
    void ResizeForLoad(int n) { slots_.assign(std::size_t(n < 0 ? 0 : n), Slot{}); }

    // Structural edits. Removed or replaced targets delete themselves when nothing needs them (and no undo
    // record holds them) if delOld is set.
    void Insert(int at, ReferenceTarget* target, Extra extra = Extra{}) {
        at = std::clamp(at, 0, Count());
        edit([&](Slots& s) { s.insert(s.begin() + at, Slot{target, std::move(extra)}); }, false);
    }
    void Remove(int at, bool delOld = true) {
        if (!InRange(at)) return;
        edit([&](Slots& s) { s.erase(s.begin() + at); }, delOld);
    }
    void Replace(int at, ReferenceTarget* target, bool delOld = true) {
        if (!InRange(at) || slots_[std::size_t(at)].target == target) return;
        edit([&](Slots& s) { s[std::size_t(at)].target = target; }, delOld);
    }
    void SetExtra(int at, Extra extra) {
        if (!InRange(at)) return;
        edit([&](Slots& s) { s[std::size_t(at)].extra = std::move(extra); }, false);
    }
    // Any change of the whole run at once.
    void Edit(const std::function<void(Slots&)>& change, bool delOld = true) { edit(change, delOld); }

private:
    class ListRestore : public RestoreObj {
    public:
        ListRestore(RefList* list, Slots before, Slots after)
            : list_(list), owner_(list->owner_), ownerHandle_(Animatable::GetHandleByAnim(list->owner_)),
              before_(std::move(before)), after_(std::move(after)) {
            for (auto* s : {&before_, &after_})
                for (const Slot& slot : *s)
                    if (slot.target) {
                        pinned_.emplace_back(slot.target, Animatable::GetHandleByAnim(slot.target));
                        slot.target->PinForUndo();
                    }
        }
        ~ListRestore() override {
            for (auto& [t, h] : pinned_)
                if (Animatable::GetAnimByHandle(h) == t) t->UnpinForUndo();
        }
        void Restore(int) override { apply(before_); }
        void Redo() override { apply(after_); }
        MSTR Description() override { return MSTR(L"Reference list change"); }

    private:
        void apply(const Slots& slots) {
            if (Animatable::GetAnimByHandle(ownerHandle_) != owner_) return;
            list_->assign(slots);
            if (list_->afterUndo_) list_->afterUndo_();
        }
        RefList* list_;
        ReferenceMaker* owner_;
        AnimHandle ownerHandle_;
        Slots before_, after_;
        std::vector<std::pair<ReferenceTarget*, AnimHandle>> pinned_;
    };

    static bool usable(ReferenceTarget* t) { return t && !t->TestAFlag(A_IS_DELETED); }

    // Makes the run equal slots, keeping the bookkeeping; no messages, no undo, no deletion. Targets that
    // were deleted meanwhile come back as empty slots.
    void assign(const Slots& slots) {
        for (int k = Count() - 1; k >= 0; --k) RestoreReference(owner_, first_ + k, nullptr);
        slots_.clear();
        for (const Slot& s : slots) slots_.push_back(Slot{nullptr, s.extra});
        for (std::size_t k = 0; k < slots.size(); ++k)
            if (usable(slots[k].target)) RestoreReference(owner_, first_ + int(k), slots[k].target);
    }

    void edit(const std::function<void(Slots&)>& change, bool delOld) {
        Slots before = slots_;
        Slots after = slots_;
        change(after);
        const bool record = theHold.Holding() && !theHold.RestoreOrRedoing();
        ListRestore* rec = record ? new ListRestore(this, before, after) : nullptr;
        assign(after);
        if (rec) theHold.Put(rec);
        if (!delOld) return;
        // Handles first: deleting one target may delete another.
        std::vector<std::pair<ReferenceTarget*, AnimHandle>> dropped;
        for (const Slot& s : before) {
            ReferenceTarget* t = s.target;
            const bool kept = std::any_of(after.begin(), after.end(), [t](const Slot& a) { return a.target == t; });
            const bool listed =
                std::any_of(dropped.begin(), dropped.end(), [t](const auto& d) { return d.first == t; });
            if (t && !kept && !listed) dropped.emplace_back(t, Animatable::GetHandleByAnim(t));
        }
        for (auto& [t, h] : dropped)
            if (Animatable::GetAnimByHandle(h) == t) t->MaybeAutoDelete();
    }

    ReferenceMaker* owner_;
    int first_;
    std::function<void()> afterUndo_;
    Slots slots_;
};

// An extra that carries nothing (include/exclude lists).
struct NoExtra {};

}  // namespace hostrt
