// Controllers for the animatable parameters of the host's block objects.
#include "scene/objects/block_object.h"

#include "scene/controllers/keyed_control.h"

namespace hostrt {

void GiveParamsControllers(IParamBlock2* pb) {
    if (!pb || !pb->GetDesc()) return;
    ParamBlockDesc2* desc = pb->GetDesc();
    for (int i = 0; i < desc->Count(); ++i) {
        const ParamDef& def = desc->GetParamDefByIndex(i);
        if (!def.IsAnimatable() || def.IsTable()) continue;
        if (def.Kind() == ValueKind::Float)
            pb->SetController(def.ID, 0, new FloatKeyControl(), TRUE);
        else if (def.Kind() == ValueKind::Point3)
            pb->SetController(def.ID, 0, new Point3KeyControl(), TRUE);
    }
}

}  // namespace hostrt
