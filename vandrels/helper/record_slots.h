// Adding a record to the helper's reference layout: the record's list gets an empty slot, then the helper
// references the record at that slot's index, so the host records the addition like any reference change.
#pragma once

class INode;
class Mtl;
class RefMaterial;
class RefNode;
class VandrelsHelper;

namespace vandrels {

// A new node record for node owned by helper, appended after the helper's node records. Throws MAXException
// when the record cannot be made.
RefNode* AppendNodeRecord(VandrelsHelper* helper, INode* node);
// The same for a material record, appended after the material records.
RefMaterial* AppendMaterialRecord(VandrelsHelper* helper, Mtl* mtl);

}  // namespace vandrels
