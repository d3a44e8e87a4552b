// Adding references: one file named by a script (a new frozen helper node named after its file, on the current
// layer, with its parameters written and, when asked, its reference loaded), or the files a user picks in the
// file dialog.
#pragma once

#include "inode.h"

namespace vandrels {

// Creates the helper node and answers it. A missing file still makes a helper (so that its path can be
// corrected); its load then fails with the load's own report, after a listener line that names the file and the
// helper. No file name at all (null or empty) is refused with a MAXException before anything is created.
INode* AddVandrel(const MCHAR* fileName, const MCHAR* proxyFileName, bool load, bool active, bool proxyViewport,
                  bool proxyRender);

// Asks for one or more reference files, starting in the folder remembered in "LastFileDir", and adds one loaded
// helper per file; only the new helpers stay selected in the manager. Cancel changes nothing.
void AddVandrelDialog();

}  // namespace vandrels
