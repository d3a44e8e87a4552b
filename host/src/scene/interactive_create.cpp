#include "scene/interactive_create.h"

#include "inode.h"
#include "maxapi.h"
#include "mouseman.h"
#include "object.h"

namespace hostrt {
namespace {
// The host's stand-in viewport: the construction plane is the world XY plane, one pixel one unit.
class PlaneViewExp : public ViewExp {
public:
    Point3 SnapPoint(IPoint2& in, IPoint2& out, Matrix3*, DWORD) override {
        out = in;
        return Point3(float(in.x), float(in.y), 0.0f);
    }
};
}  // namespace

CreateResult CreateInteractively(Object* obj, const std::vector<CreateMouseEvent>& events) {
    CreateResult result;
    if (!obj) return result;
    CreateMouseCallBack* proc = obj->GetCreateMouseCallBack();
    PlaneViewExp vpt;
    int point = 0;
    for (const CreateMouseEvent& e : events) {
        if (!result.node) {
            if (e.msg != MOUSE_POINT) continue;  // nothing is created before the first click
            result.node = GetCOREInterface()->CreateObjectNode(obj);
            if (!proc) return result;
        }
        Matrix3 mat = result.node->GetNodeTM(GetCOREInterface()->GetTime());
        result.lastAnswer = proc->proc(&vpt, e.msg, point, 0, e.m, mat);
        ++result.calls;
        if (result.lastAnswer == CREATE_ABORT) {
            GetCOREInterface()->DeleteNode(result.node, FALSE);
            result.node = nullptr;
            return result;
        }
        result.node->SetNodeTM(GetCOREInterface()->GetTime(), mat);
        if (result.lastAnswer == CREATE_STOP) return result;
        if (e.msg == MOUSE_POINT) ++point;
    }
    return result;
}

}  // namespace hostrt
