// What the library registers with the host the moment it is attached: the core interface "Vandrels", the
// MAXScript primitive `OpenVandrelsManager`, and what it hooks up once the host has started. Only Vandrels.dlo compiles this file; programs that link the
// layers themselves (the plug-in tests) leave the host's tables to the loaded library.
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/manager_requests.h"
#include "script/vandrels_interface.h"
#include "notify.h"
#include "ui/helper_rollout.h"
#include "ui/host_menu.h"
#include "ui/manager_primitive.h"

namespace {
// The one instance, registered with the host as the core interface "Vandrels" while the library loads.
VandrelsInterface vandrelsInterface;
}  // namespace

using namespace vandrels;

def_visible_primitive(OpenVandrelsManager, "OpenVandrelsManager");

Value* OpenVandrelsManager_cf(Value**, int count) {
    check_arg_count(OpenVandrelsManager, 0, count);
    OpenManagerWindow();
    return &ok;
}

namespace {
// Once the host has started: the helper rollout's procedure, and the Vandrels menu of a graphical host.
struct StartupRegistrations {
    StartupRegistrations() {
        RegisterNotification(&AttachHelperRolloutProc, nullptr, NOTIFY_SYSTEM_STARTUP);
        RegisterNotification(&AddVandrelsMenu, nullptr, NOTIFY_SYSTEM_STARTUP);
    }
    ~StartupRegistrations() {
        UnRegisterNotification(&AttachHelperRolloutProc, nullptr);
        UnRegisterNotification(&AddVandrelsMenu, nullptr);
    }
} startupRegistrations;
}  // namespace
