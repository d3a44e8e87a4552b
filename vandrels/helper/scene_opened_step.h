// The step that processes the helpers of a scene file once the scene is open (host notifications 10 and 267),
// registered while helpers created during the open wait in the loaded-helpers list.
#pragma once

namespace vandrels {

void RegisterSceneOpenedStep();
void UnregisterSceneOpenedStep();

}  // namespace vandrels
