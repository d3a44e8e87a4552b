// The registry of core interfaces. It is made on first use and never destroyed, so static interfaces of
// plug-in libraries can register during the libraries' static initialisation and unregister at any time.
#include "core/fnpub.h"

#include <algorithm>
#include <mutex>

namespace {

struct CoreRegistry {
    std::mutex lock;
    std::vector<FPInterface*> interfaces;
};

CoreRegistry& Registry() {
    static CoreRegistry* registry = new CoreRegistry;
    return *registry;
}

}  // namespace

namespace hostrt {

bool RegisterCoreInterface(FPInterface* fpi) {
    if (!fpi) return false;
    CoreRegistry& reg = Registry();
    std::lock_guard guard(reg.lock);
    const Interface_ID id = fpi->GetID();
    for (FPInterface* known : reg.interfaces) {
        if (known == fpi) return true;
        if (known->GetID() == id) return false;
    }
    reg.interfaces.push_back(fpi);
    return true;
}

void UnregisterCoreInterface(FPInterface* fpi) {
    CoreRegistry& reg = Registry();
    std::lock_guard guard(reg.lock);
    std::erase(reg.interfaces, fpi);
}

FPInterface* FindCoreInterface(const MCHAR* internalName) {
    if (!internalName) return nullptr;
    const MSTR wanted(internalName);
    CoreRegistry& reg = Registry();
    std::lock_guard guard(reg.lock);
    for (FPInterface* fpi : reg.interfaces) {
        FPInterfaceDesc* desc = fpi->GetDesc();
        if (desc && desc->internal_name.EqualsNoCase(wanted)) return fpi;
    }
    return nullptr;
}

std::vector<FPInterface*> CoreInterfaces() {
    CoreRegistry& reg = Registry();
    std::lock_guard guard(reg.lock);
    return reg.interfaces;
}

}  // namespace hostrt

void RegisterCOREInterface(FPInterface* fpi) { hostrt::RegisterCoreInterface(fpi); }

FPInterface* GetCOREInterface(Interface_ID id) {
    for (FPInterface* fpi : hostrt::CoreInterfaces())
        if (fpi->GetID() == id) return fpi;
    return nullptr;
}
