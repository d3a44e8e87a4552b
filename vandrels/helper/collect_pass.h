// The collect pass of one helper: its records take in the scene's current state before the referenced content
// leaves the scene (saving, unloading) or is copied (duplicating).
#pragma once

class VandrelsHelper;

namespace vandrels {

// Fills the node records' exclusion work lists, lets every material record and then every node record collect
// when it is bound, records how the user renamed the reference's layers, and counts the pass (passCounter).
// Record failures travel up as MAXException.
void RunCollectPass(VandrelsHelper* helper);

}  // namespace vandrels
