// What the windows read and write of a reference helper through its node: the helper itself, its parameters
// (at time 0) and its scripting interface. A node without a readable helper reads as "no value" and is skipped by
// the writers.
#pragma once

#include "inode.h"
#include "strclass.h"

#include <optional>

class VandrelsHelper;
class VandrelsHelperInterface;

namespace vandrels {

VandrelsHelper* HelperOf(INode* node);
VandrelsHelperInterface* HelperInterfaceOf(INode* node);

std::optional<int> ReadHelperInt(INode* node, int param);
std::optional<MSTR> ReadHelperString(INode* node, int param);
// Writes only where the helper is readable; answers whether it wrote.
bool WriteHelperInt(INode* node, int param, int value);
bool WriteHelperString(INode* node, int param, const MSTR& value);

}  // namespace vandrels
