#include "helper/scene_save.h"

namespace vandrels {

// The saving pipeline comes next; until then the host writes the scene as it stands.
void PreSave(NotifyInfo*) {}
void PostSave(NotifyInfo*) {}

}  // namespace vandrels
