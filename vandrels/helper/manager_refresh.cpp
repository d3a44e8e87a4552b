#include "helper/manager_refresh.h"

namespace vandrels {
namespace {
ManagerRefresh g_refresh = nullptr;
}  // namespace

void SetManagerRefresh(ManagerRefresh refresh) { g_refresh = refresh; }

void RequestManagerRefresh() {
    if (g_refresh) g_refresh();
}

}  // namespace vandrels
