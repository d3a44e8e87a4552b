// Registration of the material classes (standard, multi/sub-object, bitmap and checker maps) and of the scene
// parts they bring: the scene material library and the material editor slots.
#pragma once

namespace hostrt {

// Registers the classes and the two scene parts. Idempotent.
void RegisterMaterialClasses();

}  // namespace hostrt
