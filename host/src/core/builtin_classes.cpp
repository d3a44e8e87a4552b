// Registers the host's own classes in the class directory, so scene files that hold them can be read back.
#include "class_directory.h"
#include "paramblock_classes.h"
#include "scene/controllers/controller_classes.h"
#include "scene/layers/layer_manager.h"
#include "scene/materials/material_classes.h"
#include "scene/named_sets.h"
#include "scene/objects/object_classes.h"
#include "scene/scene.h"
#include "scene/scene_effects.h"

namespace hostrt {

void RegisterCustAttribContainerClass();

void RegisterBuiltinClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    RegisterCustAttribContainerClass();
    RegisterParamBlockClasses();
    RegisterControllerClasses();
    RegisterObjectClasses();
    RegisterMaterialClasses();
    RegisterLayerClasses();
    RegisterNamedSelSetClasses();
    RegisterSceneEffectClasses();
    RegisterSceneClasses();
}

}  // namespace hostrt
