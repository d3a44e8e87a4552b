#include "helper/render_switch.h"

#include "frame/module_state.h"
#include "helper/helper_registry.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"

#include <optional>

namespace vandrels {

void SwitchForRender(bool rendering) {
    SetRendering(rendering);
    if (GetCOREInterface()->IsNetServer()) return;
    // A reload may merge (and so remove) a later helper of the registry.
    Tab<VandrelsHelper*> helpers = HelperRegistry();
    std::optional<BatchScope> batch;
    for (VandrelsHelper* helper : helpers) {
        if (!HelperRegistry().Contains(helper) || !helper->NeedsRenderSwitching()) continue;
        if (!batch) batch.emplace();
        helper->Reload();
    }
}

}  // namespace vandrels
