// The step that processes the helpers of a scene file once the scene is open (NOTIFY_FILE_POST_OPEN and NOTIFY_FILE_POST_MERGE3),
// registered while helpers created during the open wait in the loaded-helpers list.
#pragma once

namespace vandrels {

void RegisterSceneOpenedStep();
void UnregisterSceneOpenedStep();

}  // namespace vandrels
