// The helper's reference operations. Each logs its call (operation_log.h). Their pipelines (loading, unloading,
// reloading, merging, dismissing, resetting, writing the reference file) replace the bodies below; until then
// each does nothing and answers the failure result 0.
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

int VandrelsHelper::Dismiss() {
    vandrels::LogOperation(L"Dismiss");
    return 0;  // placeholder
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
