// Routines the records and the helper share: finding a scene item's record, describing an item in one line
// for error reports, and the rule that strips a reference's name prefix from a merged name.
#pragma once

#include "inode.h"
#include "records/ref_base.h"
#include "records/ref_node.h"
#include "strclass.h"

// The record that the item carries on its property list (see RefBase), or null.
inline RefBase* FindRecord(Animatable* item) { return FindRecordOf(item); }

// The node record of a node: its record, only when that is a RefNode.
inline RefNode* FindNodeRecord(INode* node) {
    RefBase* record = FindRecordOf(node);
    return record && record->ClassID() == REFNODE_CLASS_ID ? static_cast<RefNode*>(record) : nullptr;
}

// One line naming an item for diagnostics: "NULL", or the class name followed by
// "(<anim handle>) SuperClassID:<sc> ClassID:(<a>,<b>)". A parameter block 2 is followed by the descriptions of
// its dependents (animatable records left out) between "\n<Dependents:" and "\n>".
MSTR DescribeItem(Animatable* item);

// Strips "<prefix>_" from the front of name: answers 0 when it did (or when prefix is empty, leaving name
// alone) and 1 when name does not carry the prefix.
int StripNamePrefix(const MCHAR* prefix, MSTR& name);
