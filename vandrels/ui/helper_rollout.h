// The reference helper's rollout procedure (VandrelsHelperDlgProc): the parameters' controls are bound by the
// host's parameter map; the procedure handles the rollout's five buttons: the two "..." buttons pick the
// reference file and the proxy file, Reload, Reset and Merge run the helper's operations.
#pragma once

#include "notify.h"

namespace vandrels {

// Attaches the procedure to the helper's block description; a notification procedure for the host's start-up
// (the description is made on first use, which must not happen while the library's static objects are made).
void AttachHelperRolloutProc(void* param, NotifyInfo* info);

}  // namespace vandrels
