// Handles in MAXScript: an object's animatable handle (getHandleByAnim, getAnimByHandle) and a node's own
// handle (`maxOps.getNodeByHandle`, the number `node.handle` answers). The two number spaces differ, as they do
// in the host users know.
#include "maxscript/scene_values.h"

#include "inode.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"

namespace hostrt::mxs {

void RegisterSceneHandleFunctions() {
    RegisterGlobalFunction(L"getHandleByAnim", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getHandleByAnim", args, 1);
        const Value& v = args.positional[0];
        if (!v.Is(Kind::HostObject)) throw ConversionError(v, L"MAXWrapper");
        if (!v.Anim()) throw RuntimeError(L"Attempt to access deleted scene object");
        return Value::Int(int(v.Handle()));
    });
    RegisterGlobalFunction(L"getAnimByHandle", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getAnimByHandle", args, 1);
        return Value::Host(Animatable::GetAnimByHandle(AnimHandle(ToInt(args.positional[0]))));
    });
    auto maxOps = std::make_shared<NamespaceObject>(L"maxOps");
    maxOps->Function(L"getNodeByHandle", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"maxOps.getNodeByHandle", args, 1);
        const int handle = ToInt(args.positional[0]);
        return handle > 0 ? Value::Host(GetCOREInterface()->GetINodeByHandle(ULONG(handle))) : Value::Undefined();
    });
    RegisterNamespace(maxOps);
}

}  // namespace hostrt::mxs
