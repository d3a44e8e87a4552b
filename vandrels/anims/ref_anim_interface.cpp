#include "anims/ref_anim_interface.h"

#include "anims/ref_anim.h"
#include "frame/class_desc.h"
#include "resource.h"

namespace {

// The base record's descriptor and the interface description, made together: the description lists itself
// on the descriptor; the kinds' descriptors add it themselves.
struct RefAnimClass {
    SimpleClassDesc<RefAnim> desc{IDS_CLASS_REFANIM, L"RefAnim", REFANIM_SUPER_CLASS_ID, REFANIM_CLASS_ID};
    FPInterfaceDesc fp{REFANIM_INTERFACE_ID,
                       L"RefAnim",
                       0,
                       &desc,
                       FP_MIXIN,
                       {FPFunctionDef(RefAnimInterface::kGetPathSize, L"GetPathSize", TYPE_INT),
                        FPFunctionDef(RefAnimInterface::kSetPathSize, L"SetPathSize", TYPE_VOID,
                                      {FPParamDef(L"Size", TYPE_INT)}),
                        FPFunctionDef(RefAnimInterface::kGetPathItem, L"GetPathItem", TYPE_STRING,
                                      {FPParamDef(L"Index", TYPE_INDEX)}),
                        FPFunctionDef(RefAnimInterface::kSetPathItem, L"SetPathItem", TYPE_VOID,
                                      {FPParamDef(L"Index", TYPE_INDEX), FPParamDef(L"PathItem", TYPE_STRING)}),
                        FPFunctionDef(RefAnimInterface::kGetPathByNumberItem, L"GetPathByNumberItem", TYPE_INT,
                                      {FPParamDef(L"Index", TYPE_INDEX)}),
                        FPFunctionDef(RefAnimInterface::kSetPathByNumberItem, L"SetPathByNumberItem", TYPE_VOID,
                                      {FPParamDef(L"Index", TYPE_INDEX), FPParamDef(L"PathItem", TYPE_INT)})}};
};

RefAnimClass& refAnimClass() {
    static RefAnimClass c;
    return c;
}

// The arguments of a call; a call without any still reads through an empty list, so a missing argument
// raises the host's out-of-bounds error.
const FPParams& Args(FPParams* params) {
    static const FPParams none;
    return params ? *params : none;
}

}  // namespace

ClassDesc2* GetRefAnimDesc() { return &refAnimClass().desc; }

FPInterfaceDesc* RefAnimInterfaceDesc() { return &refAnimClass().fp; }

void AddRefAnimInterface(ClassDesc* desc) { desc->AddInterface(RefAnimInterfaceDesc()); }

FPInterfaceDesc* RefAnimInterface::GetDesc() { return RefAnimInterfaceDesc(); }

FPStatus RefAnimInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* params) {
    switch (fid) {
    case kGetPathSize: result = FPValue(ScriptGetPathSize()); return FPS_OK;
    case kSetPathSize: ScriptSetPathSize(Args(params).params[0].i); return FPS_OK;
    case kGetPathItem: result = FPValue(ScriptGetPathItem(Args(params).params[0].i)); return FPS_OK;
    case kSetPathItem: {
        const FPParams& args = Args(params);
        const int index = args.params[0].i;
        ScriptSetPathItem(index, args.params[1].s);
        return FPS_OK;
    }
    case kGetPathByNumberItem: result = FPValue(ScriptGetPathByNumberItem(Args(params).params[0].i)); return FPS_OK;
    case kSetPathByNumberItem: {
        const FPParams& args = Args(params);
        const int index = args.params[0].i;
        ScriptSetPathByNumberItem(index, args.params[1].i);
        return FPS_OK;
    }
    default: return FPS_NO_SUCH_FUNCTION;
    }
}
