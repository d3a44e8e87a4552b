// The helper's error report: what failed, which reference it was (its description), the step in force and the
// host's reason, shown in the "Reference Error" report.
#pragma once

#include "strclass.h"

class MAXException;
class VandrelsHelper;

namespace vandrels {

// "Name: <helper node>\nRefNodes: n, RefMaterials: n, RefLayers: n\nNodesToDelete: n, RenamedLayers: n", or
// "Unknown Reference Data" when the helper cannot be described.
MSTR DescribeHelper(VandrelsHelper* helper);

// message, "\n", the description, "\nLastOperation: " + step (when one is in force), "\n\n" + the reason of a
// host exception; shown through the reference error report. Answers the text.
MSTR ReportHelperError(VandrelsHelper* helper, const MSTR& message, const MCHAR* step, const MAXException* cause);

}  // namespace vandrels
