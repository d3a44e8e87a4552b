// The scene-event manager: registered node-event callbacks and the events pending for them.
#include "scene/scene_events.h"

#include "scene/node.h"

#include <array>
#include <iostream>
#include <unordered_set>
#include <vector>

namespace hostrt {

namespace {

using Key = NodeEventNamespace::NodeKey;
constexpr int kKinds = int(NodeEvent::Count);
// Rounds of delivery in one flush: callbacks that keep changing nodes are cut off after that many.
constexpr int kMaxRounds = 64;

struct Pending {
    std::array<std::vector<Key>, kKinds> keys;
    std::array<std::unordered_set<Key>, kKinds> seen;
    bool empty() const {
        for (const auto& k : keys)
            if (!k.empty()) return false;
        return true;
    }
};

class SceneEventManager final : public ISceneEventManager {
public:
    CallbackKey RegisterCallback(INodeEventCallback* cb, BOOL, DWORD, BOOL) override {
        if (!cb) return 0;
        const CallbackKey key = nextKey_++;
        callbacks_.push_back({key, cb});
        return key;
    }
    void UnRegisterCallback(CallbackKey key) override {
        for (auto it = callbacks_.begin(); it != callbacks_.end(); ++it)
            if (it->first == key) {
                callbacks_.erase(it);
                return;
            }
    }
    INodeEventCallback* GetCallbackByKey(CallbackKey key) override {
        for (auto& [k, cb] : callbacks_)
            if (k == key) return cb;
        return nullptr;
    }

    void Raise(NodeEvent kind, Key key) {
        if (callbacks_.empty() || key == 0) return;
        const int k = int(kind);
        if (pending_.seen[std::size_t(k)].insert(key).second) pending_.keys[std::size_t(k)].push_back(key);
        if (depth_ == 0) Deliver();
    }
    void Open() { ++depth_; }
    void Close() {
        if (depth_ > 0 && --depth_ == 0) Deliver();
    }

    void Deliver() {
        if (delivering_) return;  // what the callbacks cause is delivered by the running loop
        delivering_ = true;
        for (int round = 0; round < kMaxRounds && !pending_.empty(); ++round) {
            Pending events = std::move(pending_);
            pending_ = Pending();
            const auto snapshot = callbacks_;
            for (auto& [key, cb] : snapshot) {
                if (!registered(key)) continue;
                try {
                    deliverTo(key, cb, events);
                } catch (const std::exception& e) {
                    std::cerr << "maxhost: a node-event callback failed: " << e.what() << "\n";
                } catch (...) {
                    std::cerr << "maxhost: a node-event callback failed\n";
                }
            }
        }
        if (!pending_.empty()) {
            std::cerr << "maxhost: node-event callbacks kept changing nodes; later events were dropped\n";
            pending_ = Pending();
        }
        delivering_ = false;
    }

private:
    bool registered(CallbackKey key) const {
        for (auto& [k, cb] : callbacks_)
            if (k == key) return true;
        return false;
    }
    void deliverTo(CallbackKey key, INodeEventCallback* cb, const Pending& events) {
        using Method = void (INodeEventCallback::*)(NodeKeyTab&);
        static constexpr std::array<Method, kKinds> methods = {
            &INodeEventCallback::Added,
            &INodeEventCallback::Deleted,
            &INodeEventCallback::LinkChanged,
            &INodeEventCallback::LayerChanged,
            &INodeEventCallback::GroupChanged,
            &INodeEventCallback::ModelStructured,
            &INodeEventCallback::ControllerStructured,
            &INodeEventCallback::MaterialStructured,
            &INodeEventCallback::NameChanged,
            &INodeEventCallback::WireColorChanged,
            &INodeEventCallback::RenderPropertiesChanged,
            &INodeEventCallback::DisplayPropertiesChanged,
            &INodeEventCallback::UserPropertiesChanged,
            &INodeEventCallback::PropertiesOtherEvent,
            &INodeEventCallback::SelectionChanged,
            &INodeEventCallback::HideChanged,
            &INodeEventCallback::FreezeChanged,
        };
        cb->CallbackBegin();
        for (int k = 0; k < kKinds; ++k) {
            const auto& keys = events.keys[std::size_t(k)];
            if (keys.empty()) continue;
            if (!registered(key)) return;
            NodeKeyTab tab;
            tab.vec() = keys;
            (cb->*methods[std::size_t(k)])(tab);
        }
        if (registered(key)) cb->CallbackEnd();
    }

    std::vector<std::pair<CallbackKey, INodeEventCallback*>> callbacks_;
    CallbackKey nextKey_ = 1;
    Pending pending_;
    int depth_ = 0;
    bool delivering_ = false;
};

SceneEventManager& manager() {
    static SceneEventManager m;
    return m;
}

}  // namespace

void RaiseNodeEvent(NodeEvent kind, NodeEventNamespace::NodeKey key) { manager().Raise(kind, key); }

NodeEventBatch::NodeEventBatch() { manager().Open(); }
NodeEventBatch::~NodeEventBatch() { manager().Close(); }

void FlushNodeEvents() { manager().Deliver(); }

}  // namespace hostrt

ISceneEventManager* GetISceneEventManager() { return &hostrt::manager(); }

namespace NodeEventNamespace {
INode* GetNodeByKey(NodeKey key) { return hostrt::Node::ByHandle(key); }
NodeKey GetKeyByNode(INode* node) { return node ? node->GetHandle() : 0; }
}  // namespace NodeEventNamespace
