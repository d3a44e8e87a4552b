// Registration of the host's parameter block classes (superclasses 0x82 and 8) in the class directory.
#pragma once

namespace hostrt {

// Registers both parameter block classes, so scene files holding blocks can be read back. Idempotent.
void RegisterParamBlockClasses();

}  // namespace hostrt
