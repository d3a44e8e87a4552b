// Registration of the host's controller classes in the class directory.
#pragma once

namespace hostrt {

// Registers the keyed float, point3, position and scale controllers, the Euler XYZ rotation, the
// position-rotation-scale and look-at transforms and the float list controller. Idempotent.
void RegisterControllerClasses();

}  // namespace hostrt
