// Scope guards for the host's paired calls: the undo buffer suspended and resumed, reference messages switched
// off and on. Whatever runs between the two calls may throw; the
// guard makes the second call on every way out.
#pragma once

#include "hold.h"
#include "ref.h"

namespace hostrt {

// Suspends the undo buffer for its lifetime.
class HoldSuspendedScope {
public:
    HoldSuspendedScope() { theHold.Suspend(); }
    ~HoldSuspendedScope() { theHold.Resume(); }
    HoldSuspendedScope(const HoldSuspendedScope&) = delete;
    HoldSuspendedScope& operator=(const HoldSuspendedScope&) = delete;
};

// Switches reference messages off for its lifetime.
class RefMessagesOffScope {
public:
    RefMessagesOffScope() { DisableRefMsgs(); }
    ~RefMessagesOffScope() { EnableRefMsgs(); }
    RefMessagesOffScope(const RefMessagesOffScope&) = delete;
    RefMessagesOffScope& operator=(const RefMessagesOffScope&) = delete;
};

}  // namespace hostrt
