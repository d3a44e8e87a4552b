// The duplicated-names warning: lists the names that occur more than once among a reference's nodes.
#pragma once

#include "strclass.h"
#include "tab.h"

class INode;
class VandrelsHelper;

namespace vandrels {

// Every name that occurs more than once among nodes (compared exactly), listed once at its second occurrence,
// each followed by "\r\n".
MSTR DuplicatedNamesText(const Tab<INode*>& nodes);

// The warning shown after a load that met duplicated names: the list of nodes, the don't-show-again box; ticking
// it hides the warning from then on.
void ShowDuplicatedNamesWarning(VandrelsHelper* helper, const Tab<INode*>& nodes);

// The helper's own "show duplicated names": an information box when there are none, else the list without the
// don't-show-again box.
void ShowHelperDuplicatedNames(VandrelsHelper* helper);

}  // namespace vandrels
