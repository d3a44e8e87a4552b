// Scene-level items besides the node tree (the scene material library, the layer manager, the named selection
// sets, ...). Each is a reference target made fresh for every new scene, saved as one of the scene file's
// roots (in role order, after the root node) and installed again when a file is opened.
#pragma once

#include "ref.h"

#include <functional>

namespace hostrt {

// Fixed roles: a role's position among the file's roots never changes meaning.
enum class ScenePartRole : int {
    MaterialLibrary = 1,
    LayerManager = 2,
    NamedSelectionSets = 3,
    SceneEffects = 4,
    MaterialEditor = 5,
};

struct ScenePart {
    ScenePartRole role;
    // Makes the item of an empty scene.
    std::function<ReferenceTarget*()> make;
    // Makes item the scene's current one (item came from make or from an opened file). previous is the item it
    // replaces (null the first time); the scene destroys it after install returns, with the rest of the old scene.
    std::function<void(ReferenceTarget* item, ReferenceTarget* previous)> install;
};

// Registers a part; the scene makes and installs its item at once and for every scene after.
void RegisterScenePart(const ScenePart& part);
// The current item of a role; null when the role has no registered part.
ReferenceTarget* ScenePartItem(ScenePartRole role);

}  // namespace hostrt
