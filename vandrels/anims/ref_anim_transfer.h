// Moving references from one animatable to its counterpart: the module-wide transfer guard that keeps
// Modified records on their own animatable while a LocDep record hands its users over, and the dependents
// enumerator the transfers use.
#pragma once

#include "ref.h"

#include <vector>

namespace vandrels {

bool IsTransferGuardOn();
// Sets the guard for its lifetime and puts the previous state back on every way out.
class TransferGuardScope {
public:
    explicit TransferGuardScope(bool on);
    ~TransferGuardScope();
    TransferGuardScope(const TransferGuardScope&) = delete;
    TransferGuardScope& operator=(const TransferGuardScope&) = delete;

private:
    bool saved_;
};

}  // namespace vandrels

// Collects every dependent enumerated, in enumeration order.
class TransRefEnumProc : public DependentEnumProc {
public:
    int proc(ReferenceMaker* rmaker) override {
        dependents.push_back(rmaker);
        return DEP_ENUM_CONTINUE;
    }
    std::vector<ReferenceMaker*> dependents;
};

// Tells target's dependents that its structure (REFMSG_SUBANIM_STRUCTURE_CHANGED) and then its value
// (REFMSG_CHANGE) changed, over all time.
void NotifyStructureAndChange(ReferenceTarget* target);
