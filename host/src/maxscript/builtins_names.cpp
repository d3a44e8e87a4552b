// uniqueName <prefix> [numDigits:n]: the prefix followed by the lowest number (zero-padded to numDigits,
// 3 by default) that no node of the scene is named.
#include "maxscript/builtins.h"

#include "inode.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/scene_values.h"

#include <unordered_set>

namespace hostrt::mxs {

void RegisterNameBuiltins() {
    RegisterGlobalFunction(L"uniqueName", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"uniqueName", args, 1);
        const std::wstring prefix = ToText(args.positional[0]);
        const Value* digitsArg = args.Keyword(L"numDigits");
        const int digits = digitsArg ? ToInt(*digitsArg) : 3;
        if (digits < 0 || digits > 12) throw RuntimeError(L"uniqueName: numDigits must be 0 to 12, got: " + std::to_wstring(digits));
        std::unordered_set<std::wstring> taken;
        for (INode* n : SceneNodes()) taken.insert(FoldCase(n->GetName()));
        for (long long i = 1;; ++i) {
            std::wstring number = std::to_wstring(i);
            if (int(number.size()) < digits) number.insert(0, std::size_t(digits) - number.size(), L'0');
            if (!taken.count(FoldCase(prefix + number))) return Value::String(prefix + number);
        }
    });
}

}  // namespace hostrt::mxs
