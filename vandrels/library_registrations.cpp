// What the library registers with the host the moment it is attached: the core interface "Vandrels" and the
// MAXScript primitive `OpenVandrelsManager`. Only Vandrels.dlo compiles this file; programs that link the
// layers themselves (the plug-in tests) leave the host's tables to the loaded library.
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/manager_requests.h"
#include "script/vandrels_interface.h"

namespace {
// The one instance, registered with the host as the core interface "Vandrels" while the library loads.
VandrelsInterface vandrelsInterface;
}  // namespace

using namespace vandrels;

def_visible_primitive(OpenVandrelsManager, "OpenVandrelsManager");

Value* OpenVandrelsManager_cf(Value**, int count) {
    check_arg_count(OpenVandrelsManager, 0, count);
    Interface* ip = GetCOREInterface();
    throw RuntimeError(ManagerUnavailableText(ip && ip->HasUserInterface()));
}
