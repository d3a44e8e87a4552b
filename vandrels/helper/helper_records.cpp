#include "helper/helper_records.h"

#include "helper/vandrels_helper.h"
#include "records/ref_base.h"
#include "records/string_tab_restore.h"

namespace vandrels {

bool IsRecord(ReferenceTarget* target) { return target && target->SuperClassID() == REFBASE_SUPER_CLASS_ID; }

void SetRecordHelper(RefBase* record, VandrelsHelper* helper) {
    if (record) record->SetHelper(helper);
}

bool RecordHasOverrides(RefBase* record) { return record && record->HasOverrides(); }

void PutNamesRestore(Tab<WStr*>& names) { theHold.Put(new StringTabRestore(&names)); }

}  // namespace vandrels
