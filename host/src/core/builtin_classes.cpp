// Registers the host's own classes in the class directory, so scene files that hold them can be read back.
#include "class_directory.h"
#include "paramblock_classes.h"
#include "scene/scene.h"

namespace hostrt {

void RegisterCustAttribContainerClass();

void RegisterBuiltinClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    RegisterCustAttribContainerClass();
    RegisterParamBlockClasses();
    RegisterSceneClasses();
}

}  // namespace hostrt
