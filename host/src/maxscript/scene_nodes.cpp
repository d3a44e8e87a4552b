// Nodes in MAXScript: $paths, node properties (transform, hierarchy, display and render switches, user
// properties), and the node functions hide, freeze, select, delete, copy, instance, getNodeByName.
#include "maxscript/scene_values.h"

#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/scene_node_properties.h"
#include "object.h"
#include "scene/controllers/transform_math.h"
#include "scene/node.h"
#include "scene/scene.h"

namespace hostrt::mxs {

namespace {

Value Arg(const CallArgs& args, std::size_t i) { return args.positional[i]; }

DWORD ToRgb(const Point3& c) {
    auto byte = [](float f) { return DWORD(std::clamp(f, 0.f, 1.f) * 255.f + 0.5f); };
    return byte(c.x) | (byte(c.y) << 8) | (byte(c.z) << 16);
}
Point3 FromRgb(DWORD rgb) {
    return Point3(float(rgb & 0xFF) / 255.f, float((rgb >> 8) & 0xFF) / 255.f, float((rgb >> 16) & 0xFF) / 255.f);
}

Matrix3 Compose(const TransformParts& p) {
    Matrix3 m = ScaleMatrix(p.scale) * p.rotation;
    m.SetTrans(p.position);
    return m;
}

// Node switches reached by a property name: display flags and render flags.
struct Switch {
    const wchar_t* name;
    bool render;
    int which;
};
constexpr Switch kSwitches[] = {
    {L"boxMode", false, NODE_DISP_BOX_MODE},         {L"allEdges", false, NODE_DISP_ALL_EDGES},
    {L"vertexTicks", false, NODE_DISP_VERT_TICKS},   {L"backfaceCull", false, NODE_DISP_BACKFACE_CULL},
    {L"showTrajectory", false, NODE_DISP_TRAJECTORY}, {L"xray", false, NODE_DISP_SEE_THROUGH},
    {L"ignoreExtents", false, NODE_DISP_IGNORE_EXTENTS}, {L"showFrozenInGray", false, NODE_DISP_FROZEN_IN_GRAY},
    {L"showVertexColors", false, NODE_DISP_VERTEX_COLORS}, {L"renderable", true, NODE_REND_RENDERABLE},
    {L"castShadows", true, NODE_REND_CAST_SHADOWS},  {L"receiveShadows", true, NODE_REND_RECEIVE_SHADOWS},
    {L"applyAtmospherics", true, NODE_REND_APPLY_ATMOSPHERICS},
    {L"inheritVisibility", true, NODE_REND_INHERIT_VISIBILITY},
    {L"primaryVisibility", true, NODE_REND_PRIMARY_VISIBILITY},
    {L"secondaryVisibility", true, NODE_REND_SECONDARY_VISIBILITY},
    {L"motionBlurOn", true, NODE_REND_MOTION_BLUR},
};

const Switch* FindSwitch(const std::wstring& name) {
    for (const Switch& s : kSwitches)
        if (EqualsNoCase(s.name, name)) return &s;
    return nullptr;
}

bool Is(const std::wstring& name, std::initializer_list<const wchar_t*> names) {
    for (const wchar_t* n : names)
        if (EqualsNoCase(n, name)) return true;
    return false;
}

// The transform of the coordinate system `in coordsys` chose for positions of node: the world (identity),
// the node's parent, the node itself (local) or another node.
Matrix3 CoordSystemTM(CallContext& ctx, INode* node, TimeValue t) {
    const Value& cs = ctx.interp.CoordSystem();
    if (cs.Is(Kind::Name)) {
        if (EqualsNoCase(cs.Text(), L"parent")) return node->GetParentTM(t);
        if (EqualsNoCase(cs.Text(), L"local")) return node->GetNodeTM(t);
        return Matrix3(TRUE);
    }
    if (INode* other = AsNode(cs)) return other->GetNodeTM(t);
    return Matrix3(TRUE);
}

std::optional<Value> GetNodeProperty(CallContext& ctx, INode* node, const std::wstring& name) {
    const TimeValue t = ctx.interp.Time();
    if (Is(name, {L"name"})) return Value::String(node->GetName());
    if (Is(name, {L"handle", L"inode"})) return Value::Int(int(node->GetHandle()));
    if (Is(name, {L"pos", L"position"}))
        return Value::P3(node->GetNodeTM(t).GetTrans() * Inverse(CoordSystemTM(ctx, node, t)));
    if (Is(name, {L"rotation"})) return QuatValue(MatrixToQuat(Decompose(node->GetNodeTM(t)).rotation));
    if (Is(name, {L"scale"})) return Value::P3(Decompose(node->GetNodeTM(t)).scale);
    if (Is(name, {L"transform"})) return Value::Matrix(node->GetNodeTM(t));
    if (Is(name, {L"objectTransform"})) return Value::Matrix(node->GetObjectTM(t));
    if (Is(name, {L"parent"})) {
        INode* parent = node->GetParentNode();
        return parent && !parent->IsRootNode() ? Value::Host(parent) : Value::Undefined();
    }
    if (Is(name, {L"children"})) {
        std::vector<INode*> children;
        for (int i = 0; i < node->NumberOfChildren(); ++i) children.push_back(node->GetChildNode(i));
        return NodeArray(children);
    }
    if (Is(name, {L"material", L"mat"})) return Value::Host(node->GetMtl());
    if (Is(name, {L"wirecolor"})) return ColorValue(FromRgb(node->GetWireColor()));
    if (Is(name, {L"layer"})) return Value::Host(node->GetLayer());
    if (Is(name, {L"isHidden"})) return Value::Bool(node->IsHidden() != 0);
    if (Is(name, {L"isFrozen"})) return Value::Bool(node->IsFrozen() != 0);
    if (Is(name, {L"isSelected"})) return Value::Bool(node->Selected() != 0);
    if (const Switch* s = FindSwitch(name))
        return Value::Bool((s->render ? node->GetRenderFlag(s->which) : node->GetDisplayFlag(s->which)) != 0);
    if (Is(name, {L"objectOffsetPos"})) return Value::P3(node->GetObjOffsetPos());
    if (Is(name, {L"objectOffsetRot"})) return QuatValue(node->GetObjOffsetRot());
    if (Is(name, {L"objectOffsetScale"})) return Value::P3(node->GetObjOffsetScale().s);
    if (Is(name, {L"baseObject"})) return Value::Host(node->GetBaseObject());
    if (Is(name, {L"controller"})) return Value::Host(node->GetTMController());
    if (Is(name, {L"target"})) return Value::Host(node->GetTarget());
    if (Is(name, {L"modifiers"})) return ModifierListValue(node);
    if (Is(name, {L"isTarget"})) return Value::Bool(node->GetLookatNode() != nullptr);
    if (auto v = GetNodeStateProperty(node, name)) return v;
    if (auto v = GetNodeSpatialProperty(ctx, node, name)) return v;
    // The parameters of the base object read through the node ($box01.length), then its modifiers by name.
    if (auto v = GetBlockParam(ctx, node->GetBaseObject(), name)) return v;
    return ModifierByName(node, name);
}

void SetParent(INode* node, const Value& v, TimeValue t) {
    if (v.IsUndefined()) {
        node->Detach(t, 1);
        return;
    }
    INode* parent = NodeArg(v);
    for (INode* p = parent; p; p = p->GetParentNode())
        if (p == node) throw RuntimeError(L"Cannot link " + PrintForm(Value::Host(node)) + L" to its own descendant " +
                                          PrintForm(v));
    parent->AttachChild(node, 1);
}

bool SetNodeProperty(CallContext& ctx, INode* node, const std::wstring& name, const Value& v) {
    const TimeValue t = ctx.interp.Time();
    if (Is(name, {L"name"})) {
        node->SetName(ToText(v).c_str());
        return true;
    }
    if (Is(name, {L"pos", L"position", L"rotation", L"scale", L"transform"})) {
        Matrix3 tm;
        if (Is(name, {L"transform"})) {
            if (!v.Is(Kind::Matrix3)) throw ConversionError(v, L"Matrix3");
            tm = v.AsMatrix();
        } else {
            TransformParts parts = Decompose(node->GetNodeTM(t));
            if (Is(name, {L"rotation"})) parts.rotation = RotationOf(QuatArg(v));
            else if (Is(name, {L"scale"})) parts.scale = ToPoint3(v);
            else parts.position = ToPoint3(v) * CoordSystemTM(ctx, node, t);
            tm = Compose(parts);
            // A transform with separate tracks gets the one part set, so animating a position keys only it.
            Control* c = node->GetTMController();
            const TransformParts local = Decompose(tm * Inverse(node->GetParentTM(t)));
            if (Control* pos = c ? c->GetPositionController() : nullptr; pos && !Is(name, {L"rotation", L"scale"})) {
                Point3 p = local.position;
                pos->SetValue(t, &p);
                return true;
            }
            if (Control* rot = c ? c->GetRotationController() : nullptr; rot && Is(name, {L"rotation"})) {
                Quat q = MatrixToQuat(local.rotation);
                rot->SetValue(t, &q);
                return true;
            }
            if (Control* scl = c ? c->GetScaleController() : nullptr; scl && Is(name, {L"scale"})) {
                ScaleValue sv(local.scale);
                scl->SetValue(t, &sv);
                return true;
            }
        }
        node->SetNodeTM(t, tm);
        return true;
    }
    if (Is(name, {L"parent"})) {
        SetParent(node, v, t);
        return true;
    }
    if (Is(name, {L"material", L"mat"})) {
        Mtl* mtl = nullptr;
        if (!v.IsUndefined()) {
            mtl = v.Is(Kind::HostObject) ? dynamic_cast<Mtl*>(v.Anim()) : nullptr;
            if (!mtl) throw ConversionError(v, L"Material");
        }
        node->SetMtl(mtl);
        return true;
    }
    if (Is(name, {L"wirecolor"})) {
        node->SetWireColor(ToRgb(ColorArg(v)));
        return true;
    }
    if (Is(name, {L"layer"})) {
        auto* layer = v.Is(Kind::HostObject) ? dynamic_cast<ILayer*>(v.Anim()) : nullptr;
        if (!layer) throw ConversionError(v, L"MixinInterface:LayerProperties");
        layer->AddToLayer(node);
        return true;
    }
    if (Is(name, {L"isHidden"})) {
        node->Hide(ToBool(v));
        return true;
    }
    if (Is(name, {L"isFrozen"})) {
        node->Freeze(ToBool(v));
        return true;
    }
    if (Is(name, {L"isSelected"})) {
        INodeTab tab;
        tab.Append(1, &node);
        GetCOREInterface()->SelectNodeTab(tab, ToBool(v));
        return true;
    }
    if (const Switch* s = FindSwitch(name)) {
        if (s->render) node->SetRenderFlag(s->which, ToBool(v));
        else node->SetDisplayFlag(s->which, ToBool(v));
        return true;
    }
    if (Is(name, {L"objectOffsetPos"})) {
        node->SetObjOffsetPos(ToPoint3(v));
        return true;
    }
    if (Is(name, {L"objectOffsetRot"})) {
        node->SetObjOffsetRot(QuatArg(v));
        return true;
    }
    if (Is(name, {L"objectOffsetScale"})) {
        node->SetObjOffsetScale(ScaleValue(ToPoint3(v)));
        return true;
    }
    if (Is(name, {L"controller"})) {
        auto* c = v.Is(Kind::HostObject) ? dynamic_cast<Control*>(v.Anim()) : nullptr;
        if (!c || c->SuperClassID() != CTRL_MATRIX3_CLASS_ID) throw ConversionError(v, L"Matrix3Controller");
        node->SetTMController(c);
        return true;
    }
    if (Is(name, {L"children", L"baseObject", L"modifiers", L"handle", L"isTarget", L"target"}))
        throw RuntimeError(L"Cannot set " + name + L" of " + PrintForm(Value::Host(node)));
    if (SetNodeStateProperty(ctx, node, name, v)) return true;
    if (SetNodeSpatialProperty(ctx, node, name, v)) return true;
    return SetBlockParam(ctx, node->GetBaseObject(), name, v);
}

std::wstring ClassNameOfNode(INode* node) {
    Object* base = node->GetBaseObject();
    if (!base) return L"Node";
    if (auto cls = ScriptClassOf(base)) return cls->Cls()->name;
    return base->ClassName().data();
}

// ---- $paths.

std::vector<INode*> MatchPath(const std::wstring& path) {
    std::vector<std::wstring> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        if (i == path.size() || path[i] == L'/') {
            parts.push_back(path.substr(start, i - start));
            start = i + 1;
        }
    }
    std::vector<INode*> level;
    level.push_back(Scene::Instance().RootNode());
    for (std::size_t p = 0; p < parts.size(); ++p) {
        std::vector<INode*> next;
        for (INode* parent : level) {
            // The first part matches anywhere in the scene; later parts among the children of the earlier.
            std::vector<INode*> candidates;
            if (p == 0) candidates = SceneNodes();
            else
                for (int i = 0; i < parent->NumberOfChildren(); ++i) candidates.push_back(parent->GetChildNode(i));
            for (INode* n : candidates)
                if (WildcardMatch(n->GetName(), parts[p], true)) next.push_back(n);
            if (p == 0) break;
        }
        level = std::move(next);
    }
    return level;
}

Value ResolvePath(CallContext&, const std::wstring& path) {
    if (path.empty()) {
        const std::vector<INode*> sel = SelectedNodes();
        if (sel.empty()) return Value::Undefined();
        if (sel.size() == 1) return Value::Host(sel[0]);
        return Value::Ext(std::make_shared<NodeSet>(NodeSet::Which::Selection));
    }
    std::vector<INode*> nodes = MatchPath(path);
    if (path.find_first_of(L"*?") != std::wstring::npos) return NodeArray(nodes);
    return nodes.empty() ? Value::Undefined() : Value::Host(nodes[0]);
}

// ---- Functions.

void EachNode(CallContext& ctx, const wchar_t* fn, CallArgs& args, const std::function<void(INode*)>& f) {
    CheckArgCount(fn, args, 1);
    for (INode* n : NodeListArg(ctx, Arg(args, 0))) f(n);
}

INodeTab Tab(const std::vector<INode*>& nodes) {
    INodeTab tab;
    for (INode* n : nodes) tab.Append(1, &n);
    return tab;
}

Value CloneFunction(CallContext& ctx, CallArgs& args, int kind, const wchar_t* fn) {
    std::vector<INode*> nodes = NodeListArg(ctx, Arg(args, 0));
    INodeTab tab = Tab(nodes), sources, clones;
    GetCOREInterface()->CloneNodes(tab, Point3(), false, kind, &sources, &clones);
    std::vector<INode*> result;
    for (int i = 0; i < clones.Count(); ++i) result.push_back(clones[i]);
    if (AsNode(Arg(args, 0))) return result.empty() ? Value::Undefined() : Value::Host(result[0]);
    return NodeArray(result);
}

Value UserPropValue(const std::wstring& text) {
    if (auto n = ParseNumber(text)) {
        if (text.find_first_of(L".eE") == std::wstring::npos && *n == double(int(*n))) return Value::Int(int(*n));
        return Value::Float(float(*n));
    }
    if (EqualsNoCase(text, L"true")) return Value::Bool(true);
    if (EqualsNoCase(text, L"false")) return Value::Bool(false);
    return Value::String(text);
}

void RegisterNodeHandler() {
    HostObjectHandler h;
    h.name = L"node";
    h.accepts = [](Animatable* a) { return dynamic_cast<INode*>(a) != nullptr; };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) {
        return GetNodeProperty(ctx, static_cast<INode*>(dynamic_cast<INode*>(a)), name);
    };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        return SetNodeProperty(ctx, dynamic_cast<INode*>(a), name, v);
    };
    h.describe = [](Animatable* a) -> std::optional<std::wstring> {
        INode* node = dynamic_cast<INode*>(a);
        if (node->IsRootNode()) return std::wstring(L"$<root>");
        return L"$" + ClassNameOfNode(node) + L":" + node->GetName() + L" @ " +
               PrintForm(Value::P3(node->GetNodeTM(Interpreter::Current().Time()).GetTrans()));
    };
    h.classOf = [](Animatable* a) -> std::optional<Value> {
        INode* node = dynamic_cast<INode*>(a);
        Object* base = node->GetBaseObject();
        if (!base) return std::nullopt;
        if (auto cls = ScriptClassOf(base)) return cls;
        return FindDescriptorClass(base->ClassName().data());
    };
    h.interfaceHosts = [](Animatable* a) -> std::vector<Animatable*> {
        INode* node = dynamic_cast<INode*>(a);
        std::vector<Animatable*> hosts;
        if (Object* obj = node->GetObjectRef()) hosts.push_back(obj);
        if (Object* base = node->GetBaseObject(); base && base != node->GetObjectRef()) hosts.push_back(base);
        return hosts;
    };
    RegisterHostObjectHandler(std::move(h));
}

}  // namespace

void RegisterSceneNodeFunctions() {
    // The scene's nodes and paths, unless the embedding code put its own in place first.
    if (!GetNodeConverters().toAnimatable)
        SetNodeConverters({[](INode* n) -> Animatable* { return n; },
                           [](Animatable* a) -> INode* { return dynamic_cast<INode*>(a); }});
    if (!GetPathResolver()) SetPathResolver(ResolvePath);
    RegisterNodeHandler();
    RegisterNodeStateFunctions();

    RegisterSystemVariable(L"objects", {[] { return Value::Ext(std::make_shared<NodeSet>(NodeSet::Which::Objects)); },
                                        nullptr});
    RegisterSystemVariable(L"selection",
                           {[] { return Value::Ext(std::make_shared<NodeSet>(NodeSet::Which::Selection)); }, nullptr});
    RegisterSystemVariable(L"rootNode", {[] { return Value::Host(GetCOREInterface()->GetRootNode()); }, nullptr});

    RegisterGlobalFunction(L"hide", [](CallContext& ctx, CallArgs& args) {
        EachNode(ctx, L"hide", args, [](INode* n) { n->Hide(TRUE); });
        return Value::Ok();
    });
    RegisterGlobalFunction(L"unhide", [](CallContext& ctx, CallArgs& args) {
        EachNode(ctx, L"unhide", args, [](INode* n) { n->Hide(FALSE); });
        return Value::Ok();
    });
    RegisterGlobalFunction(L"freeze", [](CallContext& ctx, CallArgs& args) {
        EachNode(ctx, L"freeze", args, [](INode* n) { n->Freeze(TRUE); });
        return Value::Ok();
    });
    RegisterGlobalFunction(L"unfreeze", [](CallContext& ctx, CallArgs& args) {
        EachNode(ctx, L"unfreeze", args, [](INode* n) { n->Freeze(FALSE); });
        return Value::Ok();
    });
    RegisterGlobalFunction(L"select", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"select", args, 1);
        INodeTab tab = Tab(NodeListArg(ctx, Arg(args, 0)));
        GetCOREInterface()->ClearNodeSelection();
        GetCOREInterface()->SelectNodeTab(tab, TRUE);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"selectMore", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"selectMore", args, 1);
        INodeTab tab = Tab(NodeListArg(ctx, Arg(args, 0)));
        GetCOREInterface()->SelectNodeTab(tab, TRUE);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"deselect", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"deselect", args, 1);
        INodeTab tab = Tab(NodeListArg(ctx, Arg(args, 0)));
        GetCOREInterface()->SelectNodeTab(tab, FALSE);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"clearSelection", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"clearSelection", args, 0);
        GetCOREInterface()->ClearNodeSelection();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"delete", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"delete", args, 1);
        std::vector<INode*> nodes = NodeListArg(ctx, Arg(args, 0));
        INodeTab tab = Tab(nodes);
        GetCOREInterface()->DeleteNodes(tab);
        return Value::Int(int(nodes.size()));
    });
    // copy keeps copying arrays and strings; nodes are cloned.
    const std::optional<Value> valueCopy = FindGlobalFunction(L"copy");
    RegisterGlobalFunction(L"copy", [valueCopy](CallContext& ctx, CallArgs& args) {
        if (args.positional.size() == 1 && AsNode(Arg(args, 0))) return CloneFunction(ctx, args, NODE_COPY, L"copy");
        if (!valueCopy) throw ArgCountError(L"copy", 1, int(args.positional.size()));
        return ctx.interp.Call(*valueCopy, args, ctx.line, ctx.column);
    });
    RegisterGlobalFunction(L"instance", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"instance", args, 1);
        return CloneFunction(ctx, args, NODE_INSTANCE, L"instance");
    });
    RegisterGlobalFunction(L"reference", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"reference", args, 1);
        return CloneFunction(ctx, args, NODE_REFERENCE, L"reference");
    });
    RegisterGlobalFunction(L"getNodeByName", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getNodeByName", args, 1);
        const std::wstring name = ToText(Arg(args, 0));
        const Value* exact = args.Keyword(L"exact");
        const Value* ignoreCase = args.Keyword(L"ignoreCase");
        const bool caseless = !(exact && ToBool(*exact)) && !(ignoreCase && !ToBool(*ignoreCase));
        for (INode* n : SceneNodes())
            if (caseless ? EqualsNoCase(n->GetName(), name) : name == n->GetName()) return Value::Host(n);
        return Value::Undefined();
    });
    RegisterGlobalFunction(L"isValidNode", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"isValidNode", args, 1);
        const Value& v = Arg(args, 0);
        return Value::Bool(v.Is(Kind::HostObject) && v.Anim() && dynamic_cast<INode*>(v.Anim()));
    });
    // Properties by name, for any value (node switches in a loop: getProperty b #xray).
    RegisterGlobalFunction(L"getProperty", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"getProperty", args, 2);
        return ctx.interp.GetProperty(Arg(args, 0), ToText(Arg(args, 1)));
    });
    RegisterGlobalFunction(L"setProperty", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"setProperty", args, 3);
        ctx.interp.SetProperty(Arg(args, 0), ToText(Arg(args, 1)), Arg(args, 2));
        return Arg(args, 2);
    });
    // distance between points or nodes (their positions).
    RegisterGlobalFunction(L"distance", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"distance", args, 2);
        auto where = [&ctx](const Value& v) {
            if (INode* n = AsNode(v)) return n->GetNodeTM(ctx.interp.Time()).GetTrans();
            return ToPoint3(v);
        };
        return Value::Float((where(Arg(args, 0)) - where(Arg(args, 1))).Length());
    });
    RegisterGlobalFunction(L"getUserPropBuffer", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getUserPropBuffer", args, 1);
        MSTR buf;
        NodeArg(Arg(args, 0))->GetUserPropBuffer(buf);
        return Value::String(buf.data());
    });
    RegisterGlobalFunction(L"setUserPropBuffer", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"setUserPropBuffer", args, 2);
        NodeArg(Arg(args, 0))->SetUserPropBuffer(MSTR(ToText(Arg(args, 1)).c_str()));
        return Value::Ok();
    });
    RegisterGlobalFunction(L"getUserProp", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getUserProp", args, 2);
        MSTR value;
        if (!NodeArg(Arg(args, 0))->GetUserPropString(MSTR(ToText(Arg(args, 1)).c_str()), value))
            return Value::Undefined();
        return UserPropValue(value.data());
    });
    RegisterGlobalFunction(L"setUserProp", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"setUserProp", args, 3);
        NodeArg(Arg(args, 0))->SetUserPropString(MSTR(ToText(Arg(args, 1)).c_str()),
                                                MSTR(DisplayForm(Arg(args, 2)).c_str()));
        return Value::Ok();
    });
}

}  // namespace hostrt::mxs
