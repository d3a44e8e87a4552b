// Registration of the host's object, modifier and derived-object classes in the class directory.
#pragma once

namespace hostrt {

// Registers box, sphere, target, bone, particle system, circle, omni and target spot lights, free and target
// cameras, dummy and point helpers, the space warp, bend, taper, the space-warp binding and both derived
// objects. Idempotent.
void RegisterObjectClasses();

}  // namespace hostrt
