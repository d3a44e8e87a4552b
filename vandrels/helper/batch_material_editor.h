// The compact material editor across a reference batch: a slot showing a material that animatable records hold
// would keep the old material when a reload replaces it. While the batch runs such materials sit in a holder
// node ("VDCMEHolder"), whose references follow the records' transfers to the fresh materials, and the slots
// show new standard materials; closing the batch puts the held materials back into their slots.
#pragma once

namespace vandrels {

// Takes the held materials out of their slots (makes the holder node when one was taken).
void HoldEditorMaterials();
// Puts the held materials (or maps) back into their slots and deletes the holder node.
void RestoreEditorMaterials();

}  // namespace vandrels
