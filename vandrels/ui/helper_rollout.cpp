// The reference helper's rollout procedure (VandrelsHelperDlgProc): the parameters' controls are bound by the
// host's parameter map; this handles the rollout's five buttons: the two "..." buttons pick the reference file
// and the proxy file, Reload, Reset and Merge run the helper's operations. It is attached to the helper's
// parameter block description when the host starts.
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
        const MCHAR* current = helper->pblock->GetStr(param, t);
        MSTR file = current ? current : L"";
        if (PickFiles(file, title.data())) helper->pblock->SetValue(param, t, file);
        return TRUE;
    }
};

VandrelsHelperDlgProc g_proc;

void AttachProc(void*, NotifyInfo*) { GetVandrelsHelperParamBlockDesc()->SetUserDlgProc(&g_proc); }

// Attaches the procedure to the helper's block description once the host has started (the description is made
// on first use, which must not happen while the library's static objects are being made).
struct RolloutProcAttachment {
    RolloutProcAttachment() { RegisterNotification(&AttachProc, nullptr, NOTIFY_SYSTEM_STARTUP); }
    ~RolloutProcAttachment() { UnRegisterNotification(&AttachProc, nullptr); }
} g_attachment;

}  // namespace

}  // namespace vandrels
