// The helper's compound operations: reloading (unload, then load, in one batch), resetting (dismiss, then load)
// and writing the reference back to its own file; and showing the duplicated names.
#include "helper/helper_error_report.h"
#include "helper/helper_params.h"
#include "helper/scene_file_check.h"
#include "helper/merge_reference_file.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "helper/dup_names_dialog.h"
#include "listener.h"
#include "maxapi.h"
#include "maxexception.h"
#include "winshim.h"

namespace {
constexpr int kReloadPromptMilliseconds = 2000;

// A loaded reference whose file is there but cannot be read as a scene now (cut short while it is rewritten,
// replaced by a folder, unreadable) keeps its content: the reload would take it out with nothing to bring back.
// Answers true after reporting why. A missing file is left to the load, which reports it.
bool KeepsContentForUnreadableFile(VandrelsHelper* helper) {
    if (!helper->IsLoaded()) return false;
    const MSTR path = vandrels::ChooseReferenceFile(helper);
    if (path.isNull() || !PathFileExistsW(path.data())) return false;
    const MSTR problem = vandrels::SceneFileReadProblem(path);
    if (problem.isNull()) return false;
    mprintf(L"\nError Reloading Reference: %s; the reference was left as it was\n", problem.data());
    mflush();
    const MAXException cause(problem);
    vandrels::ReportHelperError(helper, L"Error Reloading Reference", nullptr, &cause);
    return true;
}

}  // namespace

int VandrelsHelper::Reload() {
    if (KeepsContentForUnreadableFile(this)) return 0;
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
