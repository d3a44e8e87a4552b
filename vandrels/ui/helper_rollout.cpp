#include "ui/helper_rollout.h"

#include "helper/helper_params.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "iparamb2.h"
#include "notify.h"
#include "resource.h"
#include "ui/file_dialog.h"
#include "winshim.h"

namespace vandrels {

namespace {

class VandrelsHelperDlgProc : public ParamMap2UserDlgProc {
public:
    INT_PTR DlgProc(TimeValue t, IParamMap2* map, HWND, UINT msg, WPARAM wParam, LPARAM) override {
        if (msg != WM_COMMAND || !map) return FALSE;
        IParamBlock2* block = map->GetParamBlock();
        VandrelsHelper* helper = block ? static_cast<VandrelsHelper*>(block->GetOwner()) : nullptr;
        if (!helper) return FALSE;
        switch (LOWORD(wParam)) {
        case IDC_BROWSE_FILE: return Browse(helper, vh_file_name, L"Select File for Reference ", t);
        case IDC_BROWSE_PROXY_FILE: return Browse(helper, vh_proxy_file_name, L"Select Proxy File for Reference ", t);
        case IDC_RELOAD: helper->Reload(); return TRUE;
        case IDC_RESET: helper->Reset(); return TRUE;
        case IDC_MERGE: helper->Merge(); return TRUE;
        default: return FALSE;
        }
    }

private:
    static INT_PTR Browse(VandrelsHelper* helper, ParamID param, const MCHAR* titleStart, TimeValue t) {
        INode* node = helper->GetNode();
        const MSTR title = MSTR(titleStart) + (node ? node->GetName() : L"");
        const MCHAR* current = helper->ParamBlock()->GetStr(param, t);
        MSTR file = current ? current : L"";
        if (PickFiles(file, title.data())) helper->ParamBlock()->SetValue(param, t, file);
        return TRUE;
    }
};

VandrelsHelperDlgProc g_proc;

}  // namespace

void AttachHelperRolloutProc(void*, NotifyInfo*) { GetVandrelsHelperParamBlockDesc()->SetUserDlgProc(&g_proc); }

}  // namespace vandrels
