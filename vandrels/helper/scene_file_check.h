// Whether a reference file can be read as a scene file now, asked of the host without loading anything: a reload
// asks before it takes the old content out, so a file that is being rewritten, was cut short or was replaced by a
// folder leaves the reference as it was.
#pragma once

#include "strclass.h"

namespace vandrels {

// "" when the host reads path as a whole scene file; otherwise the host's reason, naming the file
// ("<path>: cannot open: Is a directory").
MSTR SceneFileReadProblem(const MSTR& path);

}  // namespace vandrels
