// A scene part whose item is a fresh T for every new scene. The scene keeps the item locked while it is current
// and disposes of the previous one itself, so installing needs nothing more.
#pragma once

#include "scene/scene_parts.h"

namespace hostrt {

template <class T> ScenePart OwnedScenePart(ScenePartRole role) {
    return ScenePart{
        role,
        [] { return static_cast<ReferenceTarget*>(new T()); },
        [](ReferenceTarget*, ReferenceTarget*) {},
    };
}

}  // namespace hostrt
