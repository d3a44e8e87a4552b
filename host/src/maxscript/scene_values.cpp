// Nodes as script values, node collections, script classes of host classes and parameter-block properties.
#include "maxscript/scene_values.h"

#include "core/class_directory.h"
#include "inode.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "scene/node.h"
#include "scene/node_operations.h"
#include "scene/scene.h"

#include <cmath>
#include <map>
#include <mutex>

namespace hostrt::mxs {

void RegisterSceneBuiltins() {
    static std::once_flag once;
    std::call_once(once, [] {
        RegisterSceneSubAnimFunctions();
        RegisterSceneNodeFunctions();
        RegisterSceneObjectFunctions();
        RegisterSceneMaterialFunctions();
        RegisterSceneLayerFunctions();
        RegisterSceneSetFunctions();
        RegisterSceneFileFunctions();
        RegisterSceneAnimationFunctions();
        RegisterSceneActionFunctions();
        RegisterSceneHandleFunctions();
        RegisterSceneTransformFunctions();
        RegisterSceneAnimRangeFunctions();
        RegisterSceneEditingFunctions();
    });
}

INode* AsNode(const Value& v) {
    if (!v.Is(Kind::HostObject)) return nullptr;
    Animatable* anim = v.Anim();
    if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
    return dynamic_cast<INode*>(anim);
}

INode* NodeArg(const Value& v) {
    INode* node = AsNode(v);
    if (!node) throw ConversionError(v, L"node");
    return node;
}

std::vector<INode*> NodeListArg(CallContext& ctx, const Value& v) {
    if (INode* node = AsNode(v)) return {node};
    std::vector<INode*> nodes;
    if (v.Is(Kind::Array)) {
        for (const Value& item : v.Items()) nodes.push_back(NodeArg(item));
        return nodes;
    }
    if (v.Is(Kind::Ext)) {
        if (auto* set = dynamic_cast<NodeSet*>(v.ExtObj().get())) return set->Nodes();
        // Any other collection of nodes (`geometry`, `lights`...).
        if (auto items = v.ExtObj()->Items(ctx)) {
            for (const Value& item : *items) nodes.push_back(NodeArg(item));
            return nodes;
        }
    }
    throw ConversionError(v, L"node");
}

Value NodeArray(const std::vector<INode*>& nodes) {
    ArrayData items;
    for (INode* n : nodes) items.push_back(Value::Host(n));
    return Value::Array(std::move(items));
}

std::vector<INode*> SceneNodes() {
    std::vector<INode*> out;
    for (Node* n : NodesBelow(Scene::Instance().RootNode())) out.push_back(n);
    return out;
}

std::vector<INode*> SelectedNodes() {
    std::vector<INode*> out;
    for (Node* n : Scene::Instance().Selection()) out.push_back(n);
    return out;
}

std::optional<Value> NodeSet::GetProperty(CallContext& ctx, const std::wstring& name) {
    if (EqualsNoCase(name, L"count")) return Value::Int(int(Nodes().size()));
    return NodeGroupProperty(ctx, Nodes(), name);
}

std::optional<Value> NodeSet::GetIndex(CallContext&, const Value& index) {
    const std::vector<INode*> nodes = Nodes();
    const int i = ToInt(index);
    if (i < 1 || i > int(nodes.size())) throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in " +
                                                           Describe());
    return Value::Host(nodes[std::size_t(i - 1)]);
}

std::optional<std::vector<Value>> NodeSet::Items(CallContext&) {
    std::vector<Value> items;
    for (INode* n : Nodes()) items.push_back(Value::Host(n));
    return items;
}

// ---- Script classes of host classes.

namespace {

struct ClassKey {
    ULONG a, b;
    bool operator<(const ClassKey& o) const { return a != o.a ? a < o.a : b < o.b; }
};

std::map<ClassKey, Value>& ScriptClasses() {
    static std::map<ClassKey, Value> classes;
    return classes;
}

}  // namespace

Value RegisterHostClass(const std::wstring& name, const std::wstring& superclass, Class_ID cid, NativeFn ctor) {
    Value cls = RegisterClass(name, superclass, std::move(ctor));
    ScriptClasses()[{cid.PartA(), cid.PartB()}] = cls;
    return cls;
}

std::optional<Value> ScriptClassOf(Animatable* anim) {
    if (!anim) return std::nullopt;
    const Class_ID cid = anim->ClassID();
    auto it = ScriptClasses().find({cid.PartA(), cid.PartB()});
    if (it == ScriptClasses().end()) return std::nullopt;
    return it->second;
}

std::optional<Class_ID> HostClassIdOf(const Value& cls) {
    if (!cls.Is(Kind::Class)) return std::nullopt;
    for (const auto& [key, value] : ScriptClasses())
        if (value.Cls() == cls.Cls()) return Class_ID(key.a, key.b);
    return std::nullopt;
}

ReferenceTarget* CreateHostInstance(SClass_ID sid, Class_ID cid, const std::wstring& what) {
    ClassDesc* cd = ClassDirectory::Instance().Find(sid, cid);
    if (!cd) throw RuntimeError(L"Cannot create " + what + L": its class is not registered");
    auto* target = static_cast<ReferenceTarget*>(cd->Create(FALSE));
    if (!target) throw RuntimeError(L"Cannot create " + what + L": its class made nothing");
    return target;
}

// ---- Parameter blocks.

namespace {

struct ParamHit {
    IParamBlock2* block = nullptr;
    ParamID id = -1;
    ParamDef* def = nullptr;
};

std::optional<ParamHit> FindParam(Animatable* anim, const std::wstring& name) {
    if (!anim) return std::nullopt;
    // A light's colour also reads as `rgb`.
    if (EqualsNoCase(name, L"rgb") && anim->SuperClassID() == LIGHT_CLASS_ID) return FindParam(anim, L"color");
    for (int b = 0; b < anim->NumParamBlocks(); ++b) {
        IParamBlock2* block = anim->GetParamBlock(b);
        if (!block || !block->GetDesc()) continue;
        for (int i = 0; i < block->NumParams(); ++i) {
            const ParamID id = block->IndextoID(i);
            ParamDef& def = block->GetParamDef(id);
            if (!def.int_name.isNull() && EqualsNoCase(def.int_name.data(), name)) return ParamHit{block, id, &def};
        }
    }
    return std::nullopt;
}

bool IsColorType(int type) { return type == TYPE_RGBA || type == TYPE_FRGBA || type == TYPE_COLOR; }

Value ReadParam(const ParamHit& hit, TimeValue t, int tab) {
    Interval valid = FOREVER;
    const int type = base_type(hit.def->type);
    switch (hit.def->Kind()) {
    case hostrt::ValueKind::Int: {
        int v = 0;
        hit.block->GetValue(hit.id, t, v, valid, tab);
        return type == TYPE_BOOL ? Value::Bool(v != 0) : Value::Int(v);
    }
    case hostrt::ValueKind::Float: {
        float v = 0;
        hit.block->GetValue(hit.id, t, v, valid, tab);
        return Value::Float(type == TYPE_ANGLE ? float(v * 180.0 / M_PI) : v);
    }
    case hostrt::ValueKind::Point3:
    case hostrt::ValueKind::Point4: {
        if (IsColorType(type)) {
            if (hit.def->Kind() == hostrt::ValueKind::Point3) {
                Color c;
                hit.block->GetValue(hit.id, t, c, valid, tab);
                return ColorValue(Point3(c.r, c.g, c.b));
            }
            AColor c;
            hit.block->GetValue(hit.id, t, c, valid, tab);
            return ColorValue(Point3(c.r, c.g, c.b));
        }
        Point3 p;
        hit.block->GetValue(hit.id, t, p, valid, tab);
        return Value::P3(p);
    }
    case hostrt::ValueKind::Point2: {
        Point2 p;
        hit.block->GetValue(hit.id, t, p, valid, tab);
        return Value::P2(p);
    }
    case hostrt::ValueKind::Matrix3: {
        Matrix3 m;
        hit.block->GetValue(hit.id, t, m, valid, tab);
        return Value::Matrix(m);
    }
    case hostrt::ValueKind::String: {
        MSTR s;
        hit.block->GetValue(hit.id, t, s, valid, tab);
        return Value::String(s.data());
    }
    case hostrt::ValueKind::Ref: {
        ReferenceTarget* r = nullptr;
        hit.block->GetValue(hit.id, t, r, valid, tab);
        return Value::Host(r);
    }
    default: return Value::Undefined();
    }
}

void WriteParam(const ParamHit& hit, TimeValue t, int tab, const Value& v) {
    const int type = base_type(hit.def->type);
    BOOL ok = FALSE;
    switch (hit.def->Kind()) {
    case hostrt::ValueKind::Int:
        ok = hit.block->SetValue(hit.id, t, type == TYPE_BOOL ? (ToBool(v) ? 1 : 0) : ToInt(v), tab);
        break;
    case hostrt::ValueKind::Float: {
        const float f = ToFloat(v);
        ok = hit.block->SetValue(hit.id, t, type == TYPE_ANGLE ? float(f * M_PI / 180.0) : f, tab);
        break;
    }
    case hostrt::ValueKind::Point3:
    case hostrt::ValueKind::Point4:
        if (IsColorType(type)) {
            const Point3 c = ColorArg(v);
            ok = hit.def->Kind() == hostrt::ValueKind::Point4 ? hit.block->SetValue(hit.id, t, AColor(c.x, c.y, c.z, 1.f), tab)
                                                              : hit.block->SetValue(hit.id, t, Color(c.x, c.y, c.z), tab);
        } else {
            ok = hit.block->SetValue(hit.id, t, ToPoint3(v), tab);
        }
        break;
    case hostrt::ValueKind::String: ok = hit.block->SetValue(hit.id, t, MSTR(ToText(v).c_str()), tab); break;
    case hostrt::ValueKind::Ref: {
        ReferenceTarget* r = nullptr;
        if (!v.IsUndefined()) {
            if (!v.Is(Kind::HostObject)) throw ConversionError(v, L"MAXWrapper");
            r = dynamic_cast<ReferenceTarget*>(v.Anim());
        }
        ok = hit.block->SetValue(hit.id, t, r, tab);
        break;
    }
    default: break;
    }
    if (!ok)
        throw RuntimeError(L"Cannot set " + std::wstring(hit.def->int_name.data()) + L" to " + PrintForm(v));
}

}  // namespace

std::optional<Value> GetBlockParam(CallContext& ctx, Animatable* anim, const std::wstring& name) {
    auto hit = FindParam(anim, name);
    if (!hit) return std::nullopt;
    if (hit->def->IsTable()) {
        ArrayData items;
        for (int i = 0; i < hit->block->Count(hit->id); ++i) items.push_back(ReadParam(*hit, ctx.interp.Time(), i));
        return Value::Array(std::move(items));
    }
    return ReadParam(*hit, ctx.interp.Time(), 0);
}

bool SetBlockParam(CallContext& ctx, Animatable* anim, const std::wstring& name, const Value& value) {
    auto hit = FindParam(anim, name);
    if (!hit) return false;
    if (hit->def->IsTable()) {
        if (!value.Is(Kind::Array)) throw ConversionError(value, L"Array");
        hit->block->SetCount(hit->id, int(value.Items().size()));
        // Entries an array grew by (`.count = n`) are undefined: they keep the table's empty value.
        for (std::size_t i = 0; i < value.Items().size(); ++i)
            if (!value.Items()[i].IsUndefined() || hit->def->Kind() == hostrt::ValueKind::Ref)
                WriteParam(*hit, ctx.interp.Time(), int(i), value.Items()[i]);
        return true;
    }
    WriteParam(*hit, ctx.interp.Time(), 0, value);
    return true;
}

Control* BlockParamController(Animatable* anim, const std::wstring& name) {
    auto hit = FindParam(anim, name);
    return hit && !hit->def->IsTable() ? hit->block->GetController(hit->id) : nullptr;
}

std::vector<std::wstring> BlockParamNames(Animatable* anim) {
    std::vector<std::wstring> names;
    for (int b = 0; anim && b < anim->NumParamBlocks(); ++b) {
        IParamBlock2* block = anim->GetParamBlock(b);
        if (!block || !block->GetDesc()) continue;
        for (int i = 0; i < block->NumParams(); ++i) {
            ParamDef& def = block->GetParamDef(block->IndextoID(i));
            if (!def.int_name.isNull()) names.push_back(def.int_name.data());
        }
    }
    return names;
}

void ApplyKeywords(CallContext& ctx, const Value& target, const CallArgs& args, const std::vector<std::wstring>& skip) {
    for (const auto& [name, value] : args.keywords) {
        bool skipped = false;
        for (const std::wstring& s : skip) skipped = skipped || EqualsNoCase(s, name);
        if (!skipped) ctx.interp.SetProperty(target, name, value);
    }
}

Value ColorValue(const Point3& c) { return Value::Col(AColor(c.x * 255.f, c.y * 255.f, c.z * 255.f, 255.f)); }

Point3 ColorArg(const Value& v) {
    if (v.Is(Kind::Color)) return Point3(v.AsColor().r / 255.f, v.AsColor().g / 255.f, v.AsColor().b / 255.f);
    if (v.Is(Kind::Point3)) return v.AsPoint3() / 255.f;
    throw ConversionError(v, L"Color");
}

}  // namespace hostrt::mxs
