// Library resources: the compiled resource tables a plug-in library exports, found through its handle, and
// LoadStringW reading their strings.
#include "platform/resource_tables.h"
#include "winshim.h"

#include <dlfcn.h>

#include <algorithm>
#include <cwchar>
#include <mutex>
#include <unordered_map>

namespace hostrt {

const MaxResourceModule* ResourceModuleOf(HINSTANCE instance) {
    if (!instance) return nullptr;
    static std::mutex lock;
    static std::unordered_map<HINSTANCE, const MaxResourceModule*> known;
    std::lock_guard guard(lock);
    auto it = known.find(instance);
    if (it != known.end()) return it->second;
    const MaxResourceModule* module = nullptr;
    if (auto fn = reinterpret_cast<MaxResourceModuleFn>(dlsym(instance, MAX_RESOURCE_MODULE_SYMBOL))) module = fn();
    known.emplace(instance, module);
    return module;
}

const MaxResourceDialog* FindDialogResource(HINSTANCE instance, UINT id) {
    const MaxResourceModule* module = ResourceModuleOf(instance);
    if (!module || !module->dialogs) return nullptr;
    const MaxResourceDialog* end = module->dialogs + module->numDialogs;
    const MaxResourceDialog* hit =
        std::lower_bound(module->dialogs, end, id, [](const MaxResourceDialog& d, UINT v) { return d.id < v; });
    return hit != end && hit->id == id ? hit : nullptr;
}

}  // namespace hostrt

int LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int bufferMax) {
    if (!buffer || bufferMax <= 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    buffer[0] = L'\0';
    const MaxResourceModule* module = hostrt::ResourceModuleOf(instance);
    if (!module) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    const MaxResourceString* end = module->strings + module->numStrings;
    const MaxResourceString* hit =
        std::lower_bound(module->strings, end, id, [](const MaxResourceString& s, UINT v) { return s.id < v; });
    if (hit == end || hit->id != id) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    const int n = int(std::min<std::size_t>(std::wcslen(hit->text), std::size_t(bufferMax - 1)));
    std::wmemcpy(buffer, hit->text, std::size_t(n));
    buffer[n] = L'\0';
    return n;
}
