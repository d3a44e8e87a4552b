// The check the scripting interface makes before it loads a reference again: a helper whose reference file is
// missing, cannot be read as a scene file (or that names none) is left as it is, with a listener line that names the file and the helper, as a
// reload or a reset would otherwise take its content out of the scene with nothing to load back.
#pragma once

#include "strclass.h"

class VandrelsHelper;

namespace vandrels {

// Why the helper's reference cannot be loaded now: "" when the file it would load (its proxy or main file, as
// loading chooses) exists and reads as a scene file, else a one-line explanation naming the helper and the file.
MSTR ReferenceFileProblem(VandrelsHelper* helper);

// When there is a problem, writes the explanation and what became of the helper (consequence) to the listener as
// one error line, and answers true.
bool ReportReferenceFileProblem(VandrelsHelper* helper, const MCHAR* consequence);

// What became of a helper whose file was missing.
inline constexpr const MCHAR* kAddedWithoutContent = L"the helper was added without content";
inline constexpr const MCHAR* kLeftAsItWas = L"the helper was left as it was";

}  // namespace vandrels
