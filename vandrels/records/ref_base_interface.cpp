#include "records/ref_base_interface.h"

#include "ref.h"

namespace {

// The arguments of a call; a call without any still reads through an empty list, so a missing argument
// raises the host's out-of-bounds error.
const FPParams& Args(FPParams* params) {
    static const FPParams none;
    return params ? *params : none;
}

}  // namespace

FPInterfaceDesc* RefBaseInterface::GetDesc() { return RefBaseInterfaceDesc(); }

FPStatus RefBaseInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* params) {
    switch (fid) {
    case kNumRefAnims: result = FPValue(ScriptNumRefAnims()); return FPS_OK;
    case kGetRefAnim: {
        // Outside the list the answer is undefined rather than an error: an empty reference target (an answer
        // of no type would reach scripts as OK).
        result = FPValue(ScriptGetRefAnim(Args(params).params[0].i));
        return FPS_OK;
    }
    default: return FPS_NO_SUCH_FUNCTION;
    }
}

FPInterfaceDesc* RefNodeInterface::GetDesc() { return RefNodeInterfaceDesc(); }

FPStatus RefNodeInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* params) {
    switch (fid) {
    case kNumRefAnims: result = FPValue(ScriptNumRefAnims()); return FPS_OK;
    case kGetRefAnim: result = FPValue(ScriptGetRefAnimChecked(Args(params).params[0].i)); return FPS_OK;
    case kGetName: result = FPValue(ScriptGetName()); return FPS_OK;
    case kSetName: ScriptSetName(Args(params).params[0].s); return FPS_OK;
    default: return FPS_NO_SUCH_FUNCTION;
    }
}
