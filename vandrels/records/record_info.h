// What a node or material record holds, written for the scene-info listing (`maxhost info` and the helper's
// PrintData mode 2): the record's name in the reference file, its override categories by name, its modifier
// changes, its parameter snapshots and the states of its animatable records.
#pragma once

#include "sceneinfo.h"

#include <cstdint>
#include <vector>

class RefAnim;
class RefMaterial;
class RefNode;

namespace vandrels {

// The names of the override bits set in a node record's flag word, in bit order.
std::vector<MSTR> NodeOverrideNames(std::uint32_t flags);

// One node record as an object of the listing. withNodeState: the record lives in a loaded reference, so
// whether its load found its node is known and listed.
void DescribeNodeRecord(RefNode* record, InfoWriter& out, bool withNodeState);
void DescribeMaterialRecord(RefMaterial* record, InfoWriter& out);

}  // namespace vandrels
