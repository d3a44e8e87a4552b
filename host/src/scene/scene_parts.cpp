// Scene parts: registration and lookup go through the open scene, which keeps one item of each part.
#include "scene/scene_parts.h"

#include "scene/scene.h"

namespace hostrt {

void RegisterScenePart(const ScenePart& part) { Scene::Instance().RegisterPart(part); }

ReferenceTarget* ScenePartItem(ScenePartRole role) { return Scene::Instance().PartItem(role); }

}  // namespace hostrt
