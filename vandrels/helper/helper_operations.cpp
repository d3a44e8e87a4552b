// The helper's reference operations that wait for the unloading pipeline: each logs its call
// (operation_log.h), does nothing and answers the failure result 0. Loading (helper_load.cpp), making a
// reference local (helper_merge.cpp), dismissing it (helper_dismiss.cpp) and showing the duplicated names are
// in place.
#include "helper/operation_log.h"
#include "helper/vandrels_helper.h"
#include "ui/dup_names_dialog.h"

int VandrelsHelper::Reload() {
    vandrels::LogOperation(L"Reload");
    return 0;  // placeholder: reload = unload + load inside a batch, not in place yet
}

int VandrelsHelper::Unload() {
    vandrels::LogOperation(L"Unload");
    return 0;  // placeholder: the unloading pipeline is not in place yet
}

int VandrelsHelper::Reset() {
    vandrels::LogOperation(L"Reset");
    return 0;  // placeholder: reset = dismiss + load
}

int VandrelsHelper::Overwrite() {
    vandrels::LogOperation(L"Overwrite");
    return 0;  // placeholder
}

int VandrelsHelper::SaveAs(const MCHAR*) {
    vandrels::LogOperation(L"SaveAs");
    return 0;  // placeholder
}

void VandrelsHelper::ShowDupNames() { vandrels::ShowHelperDuplicatedNames(this); }
