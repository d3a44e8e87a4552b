// Writing a scene file: every object reachable from the roots, with its class, its own chunks, its
// references, host links and custom-attribute container (layout in docs/scene-files.md).
#pragma once

#include "ref.h"

#include <cstdint>
#include <vector>

namespace hostrt {

// The objects a scene file holds, in file order: depth first from the roots, for each object its references
// in index order, then its custom-attribute container, then its host links. A reference whose maker says it
// is no real dependency is followed only when its target is reachable through real references anyway.
std::vector<ReferenceTarget*> CollectSceneObjects(const std::vector<ReferenceTarget*>& roots);

// The bytes of a scene file holding roots and what they reach. Throws SceneFileError (naming fileLabel)
// when an object's class is not registered or an object fails to save.
std::vector<std::uint8_t> WriteSceneFile(const std::vector<ReferenceTarget*>& roots, const MSTR& fileLabel);

}  // namespace hostrt
