// Host-only entry points of the reference system, for the scene reader and the host's own classes.
#pragma once

#include "ref.h"

namespace hostrt {

// Attaches target as reference i of maker with the dependency bookkeeping, without messages and without undo
// (used when a scene file's references are restored after every object is loaded).
void RestoreReference(ReferenceMaker* maker, int i, ReferenceTarget* target);

// Number of live animatables (for leak checks in tests and benchmarks).
std::size_t LiveAnimatableCount();

}  // namespace hostrt
