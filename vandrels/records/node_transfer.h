// Moving the references of a scene item's dependents over to another item (a record's item replaced by a
// freshly merged one), with the filter that keeps host bookkeeping and Particle Flow wiring in place, and the
// test whether an animatable's local state is worth moving to its counterpart.
#pragma once

#include "maxtypes.h"

class Animatable;
class ReferenceMaker;
class ReferenceTarget;

// Identity of the owner of the latest parameter block 2 the transfer filter examined; part of the failure text.
struct TransferTrace {
    SClass_ID ownerSuperClass = 0;
    Class_ID ownerClass = Class_ID(0, 0);
};

// Whether reference index of dependent may move from oldItem to its replacement. Parameter blocks 2 are decided
// by their owner, which is noted in trace.
bool MayTransferReference(ReferenceMaker* dependent, int index, ReferenceTarget* oldItem, TransferTrace& trace);

// Points every reference of oldItem's dependents that the filter allows at newItem instead. With notify, newItem
// then tells its dependents that its structure and its object chain changed. A failure throws MAXException
// (code 0) listing the dependents visited and the latest block owner examined.
void TransferNodeReferences(ReferenceTarget* oldItem, ReferenceTarget* newItem, bool notify);

// Whether the state of oldSub should move to newSub, found at the same place below parent.
bool IsWorthTransferring(Animatable* oldSub, Animatable* newSub, Animatable* parent);
