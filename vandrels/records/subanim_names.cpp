// The address space's fixed entry names come from the module's string table.
#include "frame/module.h"
#include "records/subanim_space.h"

MSTR SubAnimSlotName(int stringId) { return GetStringCopy(stringId); }
