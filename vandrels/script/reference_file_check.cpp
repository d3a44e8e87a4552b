#include "script/reference_file_check.h"

#include "helper/merge_reference_file.h"
#include "helper/scene_file_check.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "listener.h"
#include "winshim.h"

namespace vandrels {

namespace {

MSTR HelperName(VandrelsHelper* helper) {
    INode* node = helper ? helper->GetNode() : nullptr;
    return node && node->GetName() ? MSTR(node->GetName()) : MSTR(L"(without a node)");
}

}  // namespace

MSTR ReferenceFileProblem(VandrelsHelper* helper) {
    if (!helper || !helper->ParamBlock()) return MSTR();
    const MSTR path = ChooseReferenceFile(helper);
    if (path.isNull()) return L"the reference helper " + HelperName(helper) + L" names no reference file";
    if (!PathFileExistsW(path.data()))
        return L"the reference file " + path + L" of the helper " + HelperName(helper) + L" does not exist";
    const MSTR unreadable = SceneFileReadProblem(path);
    if (!unreadable.isNull())
        return L"the reference file of the helper " + HelperName(helper) + L" cannot be read (" + unreadable + L")";
    return MSTR();
}

bool ReportReferenceFileProblem(VandrelsHelper* helper, const MCHAR* consequence) {
    const MSTR problem = ReferenceFileProblem(helper);
    if (problem.isNull()) return false;
    mprintf(L"\nError: %s; %s\n", problem.data(), consequence);
    mflush();
    return true;
}

}  // namespace vandrels
