// Helpers shared by the parameter block sources: error texts, value fitting, controller reads and writes,
// and changing a maker's references without undo records of the reference system.
#pragma once

#include "core/paired_scopes.h"

#include "hold.h"
#include "iparamb2.h"

namespace hostrt {

// "an integer", "a string", ...: for error messages.
const MCHAR* KindName(ValueKind kind);
// "parameter 'Name' (id 3) of block 'Parameters' (id 0) of class Foo".
MSTR DescribeParam(const ParamBlockDesc2& desc, const ParamDef& def);
// v converted to the parameter's kind; raises MAXException saying what (what) did not fit where.
ParamValue FitToParam(const ParamBlockDesc2& desc, const ParamDef& def, const ParamValue& v, const MCHAR* what);

// The value a new entry gets: zero with P_NO_INIT, the original default with P_RESET_DEFAULT, else the class
// default.
ParamValue CreationDefault(const ParamDef& def);

// Controllers of integer parameters are float controllers (values round to the nearest integer); Point3 and
// colour parameters use Point3 controllers, Point4 and AColor parameters Point4 controllers.
bool ControllerTakes(ValueKind kind);
ParamValue ControllerGet(Control* c, TimeValue t, ValueKind kind, Interval& valid);
void ControllerSet(Control* c, TimeValue t, const ParamValue& v);

// While alive, reference changes made by a block are not recorded by the reference system: the block puts its
// own undo records, which know the block's slot layout.
using HoldSuspension = HoldSuspendedScope;

// True when changes should be recorded for undo now.
inline bool Recording() { return theHold.Holding() && !theHold.RestoreOrRedoing(); }

// Keeps reference targets alive for an undo record: pins them, and unpins those still alive when destroyed.
class PinSet {
public:
    PinSet() = default;
    PinSet(const PinSet&) = delete;
    PinSet& operator=(const PinSet&) = delete;
    ~PinSet();
    void Add(ReferenceTarget* t);

private:
    std::vector<std::pair<ReferenceTarget*, AnimHandle>> pinned_;
};

// Offers each target auto-deletion (it goes when nothing needs it); targets deleted meanwhile are skipped.
void OfferDeletion(const std::vector<ReferenceTarget*>& targets);

// Undo record of one parameter of a block: its entries before and after the change. Block::RestoreParam(index,
// tabIndex, entries) puts entries back and announces the change. The record pins every target it holds.
template <class Block> class ParamRestore : public RestoreObj {
public:
    ParamRestore(Block* block, int index, int tabIndex, std::vector<PB2Entry> before)
        : block_(block), handle_(Animatable::GetHandleByAnim(block)), index_(index), tab_(tabIndex),
          before_(std::move(before)) {
        pin(before_);
    }
    void SetAfter(std::vector<PB2Entry> after) {
        after_ = std::move(after);
        pin(after_);
    }
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Parameter change"); }

private:
    void pin(const std::vector<PB2Entry>& entries) {
        for (const PB2Entry& e : entries) {
            pins_.Add(e.value.AsRef());
            pins_.Add(e.control);
        }
    }
    void apply(const std::vector<PB2Entry>& entries) {
        if (Animatable::GetAnimByHandle(handle_) == block_) block_->RestoreParam(index_, tab_, entries);
    }
    Block* block_;
    AnimHandle handle_;
    int index_;
    int tab_;
    std::vector<PB2Entry> before_, after_;
    PinSet pins_;
};

}  // namespace hostrt
