// What the helper asks of its records: the one place where the helper meets the record classes' protocol
// (back pointer, override query, undo of its name lists).
#pragma once

#include "strclass.h"
#include "tab.h"

class ReferenceTarget;
class RefBase;
class VandrelsHelper;

namespace vandrels {

// Whether target is a node or material record (superclass of the records).
bool IsRecord(ReferenceTarget* target);
// Sets the record's back pointer to its helper (null clears it); nothing for a null record.
void SetRecordHelper(RefBase* record, VandrelsHelper* helper);
// Whether the record holds local changes that must survive (records without them are dropped when unloading,
// saving or duplicating).
bool RecordHasOverrides(RefBase* record);
// Puts an undo record of the name list on the host's undo stack.
void PutNamesRestore(Tab<WStr*>& names);

}  // namespace vandrels
