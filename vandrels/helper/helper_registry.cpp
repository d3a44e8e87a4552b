#include "helper/helper_registry.h"

namespace vandrels {

Tab<VandrelsHelper*>& HelperRegistry() {
    static Tab<VandrelsHelper*> registry;
    return registry;
}

Tab<VandrelsHelper*>& LoadedHelpers() {
    static Tab<VandrelsHelper*> loadedHelpers;
    return loadedHelpers;
}

}  // namespace vandrels
