// The animatable-record factory: turns a record type code from the classifier into a bare record of the kind
// that code stands for. Completing the record (owner, path, animatable) is the caller's work.
#pragma once

#include <cstdint>

class RefAnim;

// A new record for code, or null: for codes that no kind is made for, and for the IK-solver code, which
// instead arms the guard that refuses IK solvers on referenced nodes (anims/ik_guard.h).
RefAnim* MakeRefAnim(std::uint32_t code);
