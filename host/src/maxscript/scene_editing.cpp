// What editing scripts reach besides properties: instances of a class in the scene (`getClassInstances`), the
// modifier panel (`modPanel`), instances (`instanceMgr`) and the editable-poly functions (`polyop`), which
// answer a clear error since the host's objects carry no meshes.
#include "maxscript/scene_values.h"

#include "inode.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/evaluator.h"
#include "maxscript/interpreter.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"
#include "object.h"
#include "scene/scene.h"

#include <algorithm>
#include <set>

namespace hostrt::mxs {

namespace {

// Everything the scene holds, each once: the nodes and what they reference, and the scene's other parts.
void Collect(ReferenceMaker* maker, std::set<ReferenceMaker*>& seen, std::vector<Animatable*>& out) {
    if (!maker || !seen.insert(maker).second) return;
    out.push_back(maker);
    for (int i = 0; i < maker->NumRefs(); ++i) Collect(maker->GetReference(i), seen, out);
}

std::vector<Animatable*> SceneAnimatables() {
    std::set<ReferenceMaker*> seen;
    std::vector<Animatable*> out;
    // Children are no references of their parents: every node is a start of its own.
    for (INode* node : SceneNodes()) Collect(node, seen, out);
    for (ReferenceTarget* root : Scene::Instance().ContentRoots()) Collect(root, seen, out);
    return out;
}

Value GetClassInstances(CallContext&, CallArgs& args) {
    CheckArgCount(L"getClassInstances", args, 1);
    const Value& cls = args.positional[0];
    const auto cid = HostClassIdOf(cls);
    if (!cid) throw RuntimeError(L"getClassInstances needs a class of scene objects, got: " + PrintForm(cls));
    ArrayData found;
    for (Animatable* a : SceneAnimatables())
        if (a->ClassID() == *cid && !dynamic_cast<INode*>(a)) found.push_back(Value::Host(a));
    return Value::Array(std::move(found));
}

// The modifiers and objects of a node's stack, top first.
std::vector<BaseObject*> StackOf(INode* node) {
    std::vector<BaseObject*> out;
    for (Object* obj = node->GetObjOrWSMRef(); obj;) {
        if (obj->SuperClassID() != GEN_DERIVOB_CLASS_ID) {
            out.push_back(obj);
            break;
        }
        auto* derived = static_cast<IDerivedObject*>(obj);
        for (int i = 0; i < derived->NumModifiers(); ++i) out.push_back(derived->GetModifier(i));
        obj = derived->GetObjRef();
    }
    return out;
}

BaseObject* StackItemArg(const Value& v, const wchar_t* fn) {
    auto* item = v.Is(Kind::HostObject) ? dynamic_cast<BaseObject*>(v.Anim()) : nullptr;
    if (!item) throw RuntimeError(std::wstring(fn) + L" needs a modifier or an object, got: " + PrintForm(v));
    return item;
}

void RegisterModPanel() {
    auto modPanel = std::make_shared<NamespaceObject>(L"modPanel");
    modPanel->Function(L"getCurrentObject", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"modPanel.getCurrentObject", args, 0);
        Interface* ip = GetCOREInterface();
        BaseObject* current = ip->GetCommandPanelTaskMode() == TASK_MODE_MODIFY ? ip->GetCurEditObject() : nullptr;
        return current ? Value::Host(current) : Value::Undefined();
    });
    // setCurrentObject item [node:n]: item must be on the stack of the node given or of a selected node.
    modPanel->Function(L"setCurrentObject", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"modPanel.setCurrentObject", args, 1);
        BaseObject* item = StackItemArg(args.positional[0], L"modPanel.setCurrentObject");
        std::vector<INode*> nodes = SelectedNodes();
        if (const Value* n = args.Keyword(L"node"); n && !n->Is(Kind::Unsupplied)) nodes = NodeListArg(ctx, *n);
        for (INode* node : nodes) {
            const std::vector<BaseObject*> stack = StackOf(node);
            if (std::find(stack.begin(), stack.end(), item) == stack.end()) continue;
            GetCOREInterface()->SetCommandPanelTaskMode(TASK_MODE_MODIFY);
            GetCOREInterface()->SetCurEditObject(item);
            return Value::Ok();
        }
        throw RuntimeError(L"modPanel.setCurrentObject: " + PrintForm(args.positional[0]) +
                           L" is not on the stack of a selected node");
    });
    // addModToSelection mod: one instance of mod on every selected node, made the current object.
    modPanel->Function(L"addModToSelection", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"modPanel.addModToSelection", args, 1);
        auto* mod = args.positional[0].Is(Kind::HostObject) ? dynamic_cast<Modifier*>(args.positional[0].Anim())
                                                            : nullptr;
        if (!mod) throw ConversionError(args.positional[0], L"Modifier");
        const std::vector<INode*> nodes = SelectedNodes();
        if (nodes.empty()) return Value::Bool(false);
        for (INode* node : nodes)
            if (!GetCOREInterface()->AddModifier(*node, *mod))
                throw RuntimeError(L"modPanel.addModToSelection: cannot add " + PrintForm(args.positional[0]) +
                                   L" to " + PrintForm(Value::Host(node)));
        GetCOREInterface()->SetCommandPanelTaskMode(TASK_MODE_MODIFY);
        GetCOREInterface()->SetCurEditObject(mod);
        return Value::Bool(true);
    });
    RegisterNamespace(modPanel);
}

// The nodes whose stacks hold item (a modifier) or whose object is item.
std::vector<INode*> UsersOf(Animatable* item) {
    std::vector<INode*> out;
    for (INode* node : SceneNodes()) {
        const std::vector<BaseObject*> stack = StackOf(node);
        if (std::find(stack.begin(), stack.end(), item) != stack.end()) out.push_back(node);
    }
    return out;
}

void RegisterInstanceMgr() {
    auto instanceMgr = std::make_shared<NamespaceObject>(L"instanceMgr");
    // getInstances item &result: the nodes sharing the node's object, or the nodes whose stacks hold the
    // modifier; answers their count.
    instanceMgr->Function(L"getInstances", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"instanceMgr.getInstances", args, 2);
        const Value& v = args.positional[0];
        std::vector<INode*> users;
        if (INode* node = AsNode(v)) {
            Object* obj = node->GetObjectRef();
            for (INode* other : SceneNodes())
                if (obj && other->GetObjectRef() == obj) users.push_back(other);
        } else if (v.Is(Kind::HostObject) && dynamic_cast<Modifier*>(v.Anim())) {
            users = UsersOf(v.Anim());
        } else {
            throw RuntimeError(L"instanceMgr.getInstances needs a node or a modifier, got: " + PrintForm(v));
        }
        const Value result = NodeArray(users);
        ValueReference* out = args.references.size() > 1 ? AsReference(args.references[1]) : nullptr;
        if (!out) throw RuntimeError(L"instanceMgr.getInstances gives the nodes back through a reference (&var)");
        out->Set(result);
        return Value::Int(int(users.size()));
    });
    instanceMgr->Function(L"canMakeModifiersUnique", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"instanceMgr.canMakeModifiersUnique", args, 2);
        auto* mod = args.positional[1].Is(Kind::HostObject) ? dynamic_cast<Modifier*>(args.positional[1].Anim())
                                                            : nullptr;
        if (!mod) throw ConversionError(args.positional[1], L"Modifier");
        return Value::Bool(UsersOf(mod).size() > 1);
    });
    RegisterNamespace(instanceMgr);
}

// polyop: the host's objects are parametric without meshes, so every function says what it needs.
void RegisterPolyop() {
    auto polyop = std::make_shared<NamespaceObject>(L"polyop");
    for (const wchar_t* fn : {L"getNumVerts", L"getNumFaces", L"getNumEdges", L"getVert", L"setVert",
                              L"getVertSelection", L"setVertSelection", L"getFaceSelection", L"setFaceSelection",
                              L"getEdgeSelection", L"setEdgeSelection", L"getFaceCenter", L"getFaceMatID",
                              L"setFaceMatID", L"deleteFaces", L"deleteVerts", L"attach", L"detachFaces",
                              L"getMapSupport", L"getNumMapVerts"}) {
        const std::wstring name = std::wstring(L"polyop.") + fn;
        polyop->Function(fn, [name](CallContext&, CallArgs& args) -> Value {
            if (args.positional.empty()) throw ArgCountError(name, 1, 0);
            const Value& obj = args.positional[0];
            throw RuntimeError(name + L" needs an Editable Poly object, got: " + PrintForm(obj) +
                               L" (collapse it to an Editable Poly first; this host's objects have no meshes)");
        });
    }
    RegisterNamespace(polyop);
}

}  // namespace

void RegisterSceneEditingFunctions() {
    RegisterGlobalFunction(L"getClassInstances", GetClassInstances);
    RegisterModPanel();
    RegisterInstanceMgr();
    RegisterPolyop();
}

}  // namespace hostrt::mxs
