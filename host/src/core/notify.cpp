// Host broadcast notifications: registration in order, dispatch over a snapshot that skips entries
// unregistered meanwhile, so handlers may register, unregister and broadcast while they run.
#include "notify.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace {

struct Registration {
    NOTIFYPROC proc;
    void* param;
    int code;
    bool alive = true;
};

std::vector<std::shared_ptr<Registration>>& registry() {
    static auto* regs = new std::vector<std::shared_ptr<Registration>>();  // lives until the process ends
    return *regs;
}

}  // namespace

int RegisterNotification(NOTIFYPROC proc, void* param, int code) {
    if (!proc) return 0;
    auto& regs = registry();
    for (auto& r : regs)
        if (r->proc == proc && r->param == param && r->code == code) return 1;  // already registered
    regs.push_back(std::make_shared<Registration>(Registration{proc, param, code}));
    return 1;
}

int UnRegisterNotification(NOTIFYPROC proc, void* param, int code) {
    auto& regs = registry();
    for (auto it = regs.begin(); it != regs.end(); ++it) {
        if ((*it)->proc == proc && (*it)->param == param && (*it)->code == code) {
            (*it)->alive = false;
            regs.erase(it);
            return 1;
        }
    }
    return 0;
}

int UnRegisterNotification(NOTIFYPROC proc, void* param) {
    auto& regs = registry();
    int n = 0;
    for (auto& r : regs)
        if (r->proc == proc && r->param == param) { r->alive = false; ++n; }
    regs.erase(std::remove_if(regs.begin(), regs.end(), [](auto& r) { return !r->alive; }), regs.end());
    return n > 0 ? 1 : 0;
}

void BroadcastNotification(int code) { BroadcastNotification(code, nullptr); }

void BroadcastNotification(int code, void* callParam) {
    std::vector<std::shared_ptr<Registration>> snapshot;
    for (auto& r : registry())
        if (r->code == code) snapshot.push_back(r);
    for (auto& r : snapshot) {
        if (!r->alive) continue;
        NotifyInfo info{code, callParam};
        r->proc(r->param, &info);
    }
}
