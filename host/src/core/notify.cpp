// Host broadcast notifications: registration in order, dispatch over a snapshot that skips entries
// unregistered meanwhile, so handlers may register, unregister and broadcast while they run. Registrations are
// kept per code and indexed, so that registering, unregistering and broadcasting do not grow with the number of
// registrations of other handlers (plug-ins register one per record, by the ten thousand).
#include "notify.h"

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <unordered_map>
#include <vector>

namespace {

struct Registration {
    NOTIFYPROC proc;
    void* param;
    int code;
    bool alive = true;
};

struct Key {
    NOTIFYPROC proc;
    void* param;
    int code;
    bool operator==(const Key&) const = default;
};

struct KeyHash {
    std::size_t operator()(const Key& k) const {
        std::size_t h = std::hash<std::uintptr_t>()(reinterpret_cast<std::uintptr_t>(k.proc));
        h ^= std::hash<void*>()(k.param) + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
        h ^= std::hash<int>()(k.code) + 0x9e3779b97f4a7c15ull + (h << 6) + (h >> 2);
        return h;
    }
};

using Handlers = std::list<std::shared_ptr<Registration>>;  // one code's registrations, oldest first

struct Registry {
    std::unordered_map<int, Handlers> byCode;
    std::unordered_map<Key, Handlers::iterator, KeyHash> index;

    // Takes one registration out; false when it is not there.
    bool remove(const Key& key) {
        auto found = index.find(key);
        if (found == index.end()) return false;
        (*found->second)->alive = false;
        byCode.find(key.code)->second.erase(found->second);
        index.erase(found);
        return true;
    }
};

Registry& registry() {
    static auto* regs = new Registry();  // lives until the process ends
    return *regs;
}

}  // namespace

int RegisterNotification(NOTIFYPROC proc, void* param, int code) {
    if (!proc) return 0;
    Registry& regs = registry();
    const Key key{proc, param, code};
    if (regs.index.count(key)) return 1;  // already registered
    Handlers& handlers = regs.byCode[code];
    handlers.push_back(std::make_shared<Registration>(Registration{proc, param, code}));
    regs.index.emplace(key, std::prev(handlers.end()));
    return 1;
}

int UnRegisterNotification(NOTIFYPROC proc, void* param, int code) {
    return registry().remove(Key{proc, param, code}) ? 1 : 0;
}

int UnRegisterNotification(NOTIFYPROC proc, void* param) {
    Registry& regs = registry();
    bool any = false;
    for (auto& [code, handlers] : regs.byCode)
        if (regs.remove(Key{proc, param, code})) any = true;
    return any ? 1 : 0;
}

void BroadcastNotification(int code) { BroadcastNotification(code, nullptr); }

void BroadcastNotification(int code, void* callParam) {
    Registry& regs = registry();
    auto found = regs.byCode.find(code);
    if (found == regs.byCode.end() || found->second.empty()) return;
    const std::vector<std::shared_ptr<Registration>> snapshot(found->second.begin(), found->second.end());
    for (auto& r : snapshot) {
        if (!r->alive) continue;
        NotifyInfo info{code, callParam};
        r->proc(r->param, &info);
    }
}
