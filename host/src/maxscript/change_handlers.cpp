// Change handlers: `when transform $a changes do ...`, `when $a deleted obj do ...`. A handler watches its
// nodes through a reference maker of its own (changes and deletion reach it as reference messages) and
// through the scene's node events (renames, selection, links, delivered when the host operation ends). It
// runs its body, with the node that changed when a parameter is written, and never for a change its own
// body makes. An error in the body is written to the listener; the change that set it off goes on. Reset,
// new and open end every handler before the old scene goes.
#include "maxscript/evaluator.h"

#include "inode.h"
#include "iscene_events.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/definitions.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "maxscript/scene_values.h"
#include "notify.h"
#include "ref.h"

#include <algorithm>

namespace hostrt::mxs {

namespace {

class ChangeHandler;

// The handlers in force, in the order they were made.
std::vector<std::shared_ptr<ChangeHandler>>& Active() {
    static std::vector<std::shared_ptr<ChangeHandler>> active;
    return active;
}

class ChangeHandler : public ExtObject, public std::enable_shared_from_this<ChangeHandler> {
public:
    ChangeHandler(std::wstring attribute, Value id, Value body, bool passesNode)
        : attribute_(std::move(attribute)), id_(std::move(id)), body_(std::move(body)), passesNode_(passesNode) {}
    ~ChangeHandler() override { watcher_.reset(); }

    void Watch(const std::vector<INode*>& nodes) {
        for (INode* n : nodes) lastTM_.emplace_back(n->GetHandle(), n->GetNodeTM(GetCOREInterface()->GetTime()));
        watcher_ = std::make_unique<Watcher>(*this, nodes);
    }

    std::wstring ClassName() const override { return L"ChangeHandler"; }
    std::wstring Describe() const override { return L"<ChangeHandler:" + attribute_ + L">"; }

    const std::wstring& Attribute() const { return attribute_; }
    const Value& Id() const { return id_; }
    bool Watches(INode* node) const { return watcher_ && watcher_->Holds(node); }
    void Remove() { watcher_.reset(); }

    void Fire(INode* node) {
        if (busy_ || !watcher_) return;
        // The body may delete this handler (and the script may hold it nowhere else): it lives to the end.
        const std::shared_ptr<ChangeHandler> self = shared_from_this();
        busy_ = true;
        Interpreter& in = Interpreter::Current();
        try {
            CallArgs args;
            if (passesNode_) args.positional.push_back(Value::Host(node));
            in.Call(body_, args);
        } catch (const ScriptError& e) {
            ListenerWrite(L"-- Error in change handler (" + attribute_ + L")\n" + e.Report());
        }
        busy_ = false;
    }

    // A reference message from a watched node.
    void Heard(INode* node, RefMessage message) {
        if (message == REFMSG_TARGET_DELETED) {
            if (attribute_ == L"deleted") Fire(node);
            return;
        }
        if (message == REFMSG_CONTROLREF_CHANGE && attribute_ == L"controller") return Fire(node);
        if (message == REFMSG_SUBANIM_STRUCTURE_CHANGED && attribute_ == L"subanimstructure") return Fire(node);
        if (message != REFMSG_CHANGE) return;
        // A change of the node's transform is told apart by comparing it with the one seen last.
        bool moved = false;
        for (auto& [handle, tm] : lastTM_) {
            if (handle != node->GetHandle()) continue;
            const Matrix3 now = node->GetNodeTM(GetCOREInterface()->GetTime());
            moved = !now.Equals(tm, 0.f);
            tm = now;
        }
        if (attribute_ == L"transform" ? moved
                                       : (attribute_ == L"any" ||
                                          (!moved && (attribute_ == L"geometry" || attribute_ == L"topology" ||
                                                      attribute_ == L"parameters"))))
            Fire(node);
    }

private:
    class Watcher : public ReferenceMaker {
    public:
        Watcher(ChangeHandler& owner, const std::vector<INode*>& nodes) : owner_(owner), nodes_(nodes.size()) {
            for (std::size_t i = 0; i < nodes.size(); ++i) ReplaceReference(int(i), nodes[i]);
        }
        ~Watcher() override { DeleteAllRefs(); }
        int NumRefs() override { return int(nodes_.size()); }
        RefTargetHandle GetReference(int i) override { return nodes_[std::size_t(i)]; }
        void SetReference(int i, RefTargetHandle target) override { nodes_[std::size_t(i)] = target; }
        // A script's handler does not keep the nodes it watches alive.
        BOOL IsRealDependency(ReferenceTarget*) override { return FALSE; }
        RefResult NotifyRefChanged(const Interval&, RefTargetHandle target, PartID&, RefMessage message, BOOL) override {
            if (message >= REFMSG_USER) return REF_SUCCEED;
            if (auto* node = dynamic_cast<INode*>(target); node && Holds(node)) owner_.Heard(node, message);
            return REF_SUCCEED;
        }
        bool Holds(INode* node) const {
            return std::find(nodes_.begin(), nodes_.end(), static_cast<RefTargetHandle>(node)) != nodes_.end();
        }

    private:
        ChangeHandler& owner_;
        std::vector<RefTargetHandle> nodes_;
    };

    std::wstring attribute_;
    Value id_;
    Value body_;
    bool passesNode_;
    bool busy_ = false;
    std::vector<std::pair<ULONG, Matrix3>> lastTM_;
    std::unique_ptr<Watcher> watcher_;
};

// The scene's node events for the handlers of names, selection and links.
class NodeEvents : public INodeEventCallback {
public:
    void NameChanged(NodeKeyTab& nodes) override { Deliver(nodes, L"names"); }
    void SelectionChanged(NodeKeyTab& nodes) override { Deliver(nodes, L"select"); }
    void LinkChanged(NodeKeyTab& nodes) override {
        Deliver(nodes, L"parent");
        Deliver(nodes, L"children");
    }

private:
    static void Deliver(NodeKeyTab& keys, const wchar_t* attribute) {
        const auto handlers = Active();  // a handler may delete handlers
        for (int i = 0; i < keys.Count(); ++i) {
            INode* node = NodeEventNamespace::GetNodeByKey(keys[i]);
            if (!node) continue;
            for (const auto& h : handlers) {
                if (h->Attribute() != attribute) continue;
                // A parent hears about its children's links as well.
                INode* parent = node->GetParentNode();
                if (h->Watches(node)) h->Fire(node);
                else if (h->Attribute() == L"children" && parent && h->Watches(parent)) h->Fire(parent);
            }
        }
    }
};

void RemoveHandlers(const std::function<bool(const ChangeHandler&)>& which);

void ListenToNodeEvents() {
    static NodeEvents events;
    static bool registered = false;
    if (registered) return;
    if (ISceneEventManager* manager = GetISceneEventManager()) {
        manager->RegisterCallback(&events);
        registered = true;
    }
    // The nodes of the scene are about to go: so are the handlers watching them.
    auto endAll = [](void*, NotifyInfo*) { RemoveHandlers([](const ChangeHandler&) { return true; }); };
    for (int code : {NOTIFY_SYSTEM_PRE_RESET, NOTIFY_SYSTEM_PRE_NEW, NOTIFY_FILE_PRE_OPEN})
        RegisterNotification(endAll, nullptr, code);
}

void RemoveHandlers(const std::function<bool(const ChangeHandler&)>& which) {
    auto& active = Active();
    std::vector<std::shared_ptr<ChangeHandler>> gone;
    for (const auto& h : active)
        if (which(*h)) gone.push_back(h);
    for (const auto& h : gone) {
        h->Remove();
        std::erase(active, h);
    }
}

}  // namespace

Value Evaluator::When(Interpreter& in, const ast::When& n, const ScopePtr& scope) {
    CallContext ctx{in, n.line, n.column};
    const std::vector<INode*> nodes = NodeListArg(ctx, in.Eval(*n.objects, scope));
    Value id;
    for (const ast::KeywordArg& k : n.keywords) {
        const Value v = in.Eval(*k.value, scope);
        if (EqualsNoCase(k.name, L"id")) id = v;
    }
    // The body runs as a function of the node (when a parameter is written) in this scope, from its script.
    const ast::Node* written = n.body.get();
    auto program = in.program_;
    Value body = NativeFunction(L"when " + n.attribute, [written, program, scope, param = n.param](CallContext& c, CallArgs& args) {
        auto local = std::make_shared<Scope>();
        local->parent = scope;
        if (!param.empty()) local->vars[param] = args.positional.empty() ? Value() : args.positional[0];
        const std::shared_ptr<const ast::Program> saved = SwapProgram(c.interp, program);
        try {
            Value v = c.interp.Eval(*written, local);
            SwapProgram(c.interp, saved);
            return v;
        } catch (...) {
            SwapProgram(c.interp, saved);
            throw;
        }
    });
    auto handler = std::make_shared<ChangeHandler>(n.attribute, id, body, !n.param.empty());
    handler->Watch(nodes);
    Active().push_back(handler);
    ListenToNodeEvents();
    return Value::Ext(handler);
}

void RegisterChangeHandlerBuiltins() {
    RegisterGlobalFunction(L"deleteChangeHandler", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"deleteChangeHandler", args, 1);
        const Value& v = args.positional[0];
        auto* h = v.Is(Kind::Ext) ? dynamic_cast<ChangeHandler*>(v.ExtObj().get()) : nullptr;
        if (!h) throw ConversionError(v, L"ChangeHandler");
        RemoveHandlers([h](const ChangeHandler& x) { return &x == h; });
        return Value::Ok();
    });
    RegisterGlobalFunction(L"deleteAllChangeHandlers", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"deleteAllChangeHandlers", args, 0);
        const Value* id = args.Keyword(L"id");
        RemoveHandlers([id](const ChangeHandler& h) { return !id || ValuesEqual(h.Id(), *id); });
        return Value::Ok();
    });
}

}  // namespace hostrt::mxs
