// Scope guards around the host's undo system for the reference operations: a suspended undo system resumed for
// the length of an operation, and the nested hold that an unload records its changes in.
#pragma once

#include "hold.h"

namespace vandrels {

// Resumes a suspended undo system for its lifetime and suspends it again as often as it was.
class HoldResumedScope {
public:
    HoldResumedScope() {
        while (theHold.IsSuspended()) {
            theHold.Resume();
            ++count_;
        }
    }
    ~HoldResumedScope() {
        for (int i = 0; i < count_; ++i) theHold.Suspend();
    }
    HoldResumedScope(const HoldResumedScope&) = delete;
    HoldResumedScope& operator=(const HoldResumedScope&) = delete;
    bool Resumed() const { return count_ > 0; }

private:
    int count_ = 0;
};

// While the host is holding, a nested hold of its own for its lifetime: accepted as one undo entry of that name
// (also when the operation fails, so that the enclosing hold stays whole).
class NestedHoldScope {
public:
    explicit NestedHoldScope(const MCHAR* name) : name_(name), begun_(theHold.Holding() != FALSE) {
        if (begun_) theHold.Begin();
    }
    ~NestedHoldScope() { Accept(); }
    void Accept() {
        if (!begun_) return;
        begun_ = false;
        theHold.Accept(name_);
    }
    NestedHoldScope(const NestedHoldScope&) = delete;
    NestedHoldScope& operator=(const NestedHoldScope&) = delete;

private:
    const MCHAR* name_;
    bool begun_;
};

}  // namespace vandrels
