#include "helper/operation_log.h"

#include "ifnpub.h"

#include <map>
#include <string>

namespace vandrels {
namespace {
std::map<std::wstring, int>& Counts() {
    static std::map<std::wstring, int> counts;
    return counts;
}

enum { fn_count = 0, fn_clear = 1 };

class OperationLogInterface : public FPStaticInterface {
public:
    OperationLogInterface()
        : FPStaticInterface(VANDRELS_OPERATION_LOG_ID, L"VandrelsOperationLog", 0, nullptr, FP_CORE | FP_TEST_INTERFACE) {
        AppendFunction(fn_count, L"Count", TYPE_INT, {FPParamDef(L"operation", TYPE_STRING)});
        AppendFunction(fn_clear, L"Clear", TYPE_VOID);
    }

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fn_count: {
            FPParams none;
            result = FPValue(CountOfOperation((p ? p : &none)->params[0].s));
            return FPS_OK;
        }
        case fn_clear:
            ClearOperationLog();
            return FPS_OK;
        default:
            return FPS_NO_SUCH_FUNCTION;
        }
    }
};

OperationLogInterface theOperationLog;
}  // namespace

void LogOperation(const MCHAR* name) { ++Counts()[name]; }

int CountOfOperation(const MCHAR* name) {
    auto it = Counts().find(name ? name : L"");
    return it == Counts().end() ? 0 : it->second;
}

void ClearOperationLog() { Counts().clear(); }

}  // namespace vandrels
