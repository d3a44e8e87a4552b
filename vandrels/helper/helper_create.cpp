// Interactive creation of a helper: the first click colours the new node and places it, the second ends it.
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxapi.h"
#include "mouseman.h"

namespace {

// Colour number 20 of the host's user interface, as a wire colour.
DWORD HelperWireColor() {
    const Point3 c = GetUIColor(20);
    const DWORD r = DWORD(c.x * 255.0f), g = DWORD(c.y * 255.0f), b = DWORD(c.z * 255.0f);
    return r | (g << 8) | (b << 16);
}

class VandrelsHelperCreateCallBack : public CreateMouseCallBack {
public:
    void SetObj(VandrelsHelper* helper) { helper_ = helper; }

    int proc(ViewExp* vpt, int msg, int point, int, IPoint2 m, Matrix3& mat) override {
        if (!helper_ || !vpt) return CREATE_ABORT;
        if (msg == MOUSE_ABORT) return CREATE_ABORT;
        if (msg != MOUSE_POINT && msg != MOUSE_MOVE) return CREATE_CONTINUE;
        if (point == 0) {
            ULONG handle = 0;
            helper_->NotifyDependents(FOREVER, reinterpret_cast<PartID>(&handle), REFMSG_GET_NODE_HANDLE);
            if (INode* node = handle ? GetCOREInterface()->GetINodeByHandle(handle) : nullptr) {
                node->SetWireColor(HelperWireColor());
                helper_->SetCreating(true);
                mat.SetTrans(vpt->SnapPoint(m, m, nullptr, SNAP_IN_3D));
            }
        } else if (point == 1) {
            mat.SetTrans(vpt->SnapPoint(m, m, nullptr, SNAP_IN_3D));
            if (msg == MOUSE_POINT) {
                helper_->SetCreating(false);
                return CREATE_STOP;
            }
        }
        return CREATE_CONTINUE;
    }

private:
    VandrelsHelper* helper_ = nullptr;
};

VandrelsHelperCreateCallBack theCreateCallBack;

}  // namespace

CreateMouseCallBack* VandrelsHelper::GetCreateMouseCallBack() {
    theCreateCallBack.SetObj(this);
    return &theCreateCallBack;
}
