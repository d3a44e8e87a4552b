// The helper's compound operations: reloading (unload, then load, in one batch), resetting (dismiss, then load)
// and writing the reference back to its own file; and showing the duplicated names.
#include "helper/helper_params.h"
#include "helper/merge_reference_file.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"
#include "helper/dup_names_dialog.h"

namespace {
constexpr int kReloadPromptMilliseconds = 2000;
}

int VandrelsHelper::Reload() {
    vandrels::BatchScope batch;
    Unload();
    const int result = Load();
    if (result == 1) GetCOREInterface()->DisplayTempPrompt(L"Reload Successful", kReloadPromptMilliseconds);
    batch.Close();
    return result;
}

int VandrelsHelper::Reset() {
    // One batch for both halves: the host is prepared once.
    vandrels::BatchScope batch;
    Dismiss();
    const int result = Load();
    batch.Close();
    return result;
}

int VandrelsHelper::Overwrite() {
    if (!data_.pblock) return 0;
    return SaveAs(vandrels::ReferenceFilePath(this, data_.pblock->GetInt(vh_use_proxy_in_viewport) != 0).data());
}

void VandrelsHelper::ShowDupNames() { vandrels::ShowHelperDuplicatedNames(this); }
