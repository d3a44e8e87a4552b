// Adding a reference: a new frozen helper node named after its file, on the current layer, with its
// parameters written and, when asked, its reference loaded.
#pragma once

#include "inode.h"

namespace vandrels {

// Creates the helper node and answers it. The file is not checked: a missing or empty file name still makes a
// helper (loading then reports the problem).
INode* AddVandrel(const MCHAR* fileName, const MCHAR* proxyFileName, bool load, bool active, bool proxyViewport,
                  bool proxyRender);

}  // namespace vandrels
