// The decision whether a scene save is done merged (the referenced content written into the file as local
// content): the pre-save step asks it with the path being saved.
#pragma once

#include "strclass.h"

namespace vandrels {

// True when merge for network render is on and path lies in the system temporary folder or the host's
// temporary folder (a render job's copy of the scene); otherwise the save-references-merged flag decides.
bool ShouldSaveMerged(const MCHAR* path);

// Character-by-character, case-sensitive prefix test; false when path is shorter than prefix. The host takes
// "\" and "/" alike as separators, so the two count as the same character here.
bool PathStartsWith(const MCHAR* path, const MCHAR* prefix);

}  // namespace vandrels
