// Names for new reference helper nodes: the name a reference file gives, and the increment that makes a name
// unique among the helpers of the scene.
#pragma once

#include "strclass.h"

#include <functional>

namespace vandrels {

// The file part of fileName (after the last "\" or "/") cut at its first "."; a file part without "." is taken
// whole. "D:\a\tree.old.max" gives "tree".
MSTR NameFromFileName(const MCHAR* fileName);

// The next name: a trailing run of digits becomes its value plus one, left-padded with "0" to the run's length
// or 3 digits, whichever is longer; a name without trailing digits gets "001". Box gives Box001, Box9 Box010,
// Box999 Box1000.
MSTR IncrementName(const MSTR& name);

// Most increments tried before the last candidate is taken as it is.
constexpr long kMaxNameIncrements = 10000000;

// name, incremented while taken(name) answers true, at most maxIncrements times (then the last candidate).
MSTR MakeUniqueName(const MSTR& name, const std::function<bool(const MSTR&)>& taken,
                    long maxIncrements = kMaxNameIncrements);

}  // namespace vandrels
