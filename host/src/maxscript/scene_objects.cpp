// Object and modifier classes in MAXScript: constructors with keyword parameters (`box name:"b" length:10`,
// `bend angle:30`), modifier stacks (addModifier, deleteModifier, `.modifiers`), modifier properties, and the
// space-warp binding.
#include "maxscript/scene_values.h"

#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "object.h"
#include "scene/node_operations.h"

namespace hostrt::mxs {

namespace {

struct ObjectClass {
    const wchar_t* name;       // the script class
    const wchar_t* superclass;
    SClass_ID sid;
    Class_ID cid;
    const wchar_t* nodeName;   // base of the names of new nodes
    bool targeted;             // aims at a target node of its own
};

const ObjectClass kObjectClasses[] = {
    {L"Box", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID, L"Box", false},
    {L"Sphere", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID, L"Sphere", false},
    {L"BoneGeometry", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_BONE_CLASS_ID, L"Bone", false},
    {L"Spray", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_PARTICLE_CLASS_ID, L"Spray", false},
    {L"TargetObject", L"GeometryClass", GEOMOBJECT_CLASS_ID, Class_ID(TARGET_CLASS_ID, 0), L"Target", false},
    {L"Circle", L"shape", SHAPE_CLASS_ID, HOST_CIRCLE_CLASS_ID, L"Circle", false},
    {L"OmniLight", L"light", LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID, L"Omni", false},
    {L"TargetSpot", L"light", LIGHT_CLASS_ID, HOST_TARGET_SPOT_CLASS_ID, L"Spot", true},
    {L"FreeCamera", L"camera", CAMERA_CLASS_ID, HOST_FREE_CAMERA_CLASS_ID, L"Camera", false},
    {L"TargetCamera", L"camera", CAMERA_CLASS_ID, HOST_TARGET_CAMERA_CLASS_ID, L"Camera", true},
    {L"Dummy", L"helper", HELPER_CLASS_ID, Class_ID(DUMMY_CLASS_ID, 0), L"Dummy", false},
    {L"Point", L"helper", HELPER_CLASS_ID, HOST_POINT_HELPER_CLASS_ID, L"Point", false},
    {L"Wind", L"SpacewarpObject", WSM_OBJECT_CLASS_ID, HOST_SPACE_WARP_CLASS_ID, L"Wind", false},
    {L"Cylinder", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_CYLINDER_CLASS_ID, L"Cylinder", false},
    {L"Plane", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_PLANE_CLASS_ID, L"Plane", false},
    {L"Teapot", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_TEAPOT_CLASS_ID, L"Teapot", false},
    {L"Cone", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_CONE_CLASS_ID, L"Cone", false},
    {L"Torus", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_TORUS_CLASS_ID, L"Torus", false},
    {L"Tube", L"GeometryClass", GEOMOBJECT_CLASS_ID, HOST_TUBE_CLASS_ID, L"Tube", false},
    {L"FreeSpot", L"light", LIGHT_CLASS_ID, HOST_FREE_SPOT_CLASS_ID, L"FSpot", false},
    {L"DirectionalLight", L"light", LIGHT_CLASS_ID, HOST_DIRECTIONAL_LIGHT_CLASS_ID, L"FDirect", false},
    {L"TargetDirectionalLight", L"light", LIGHT_CLASS_ID, HOST_TARGET_DIRECTIONAL_LIGHT_CLASS_ID, L"Direct", true},
};

struct ModifierClass {
    const wchar_t* name;
    const wchar_t* superclass;
    SClass_ID sid;
    Class_ID cid;
};

const ModifierClass kModifierClasses[] = {
    {L"Bend", L"modifier", OSM_CLASS_ID, HOST_BEND_CLASS_ID},
    {L"Taper", L"modifier", OSM_CLASS_ID, HOST_TAPER_CLASS_ID},
    {L"SpaceWarpBinding", L"SpacewarpModifier", WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID},
    {L"Twist", L"modifier", OSM_CLASS_ID, HOST_TWIST_CLASS_ID},
    {L"TurboSmooth", L"modifier", OSM_CLASS_ID, HOST_TURBOSMOOTH_CLASS_ID},
    {L"Edit_Poly", L"modifier", OSM_CLASS_ID, HOST_EDIT_POLY_CLASS_ID},
    {L"UVWmap", L"modifier", OSM_CLASS_ID, HOST_UVWMAP_CLASS_ID},
    {L"Shell", L"modifier", OSM_CLASS_ID, HOST_SHELL_CLASS_ID},
    {L"Symmetry", L"modifier", OSM_CLASS_ID, HOST_SYMMETRY_CLASS_ID},
    {L"Skin", L"modifier", OSM_CLASS_ID, HOST_SKIN_CLASS_ID},
};

Value MakeNode(CallContext& ctx, const ObjectClass& cls, CallArgs& args) {
    if (!args.positional.empty()) throw ArgCountError(cls.name, 0, int(args.positional.size()));
    auto* obj = dynamic_cast<Object*>(CreateHostInstance(cls.sid, cls.cid, cls.name));
    if (!obj) throw RuntimeError(std::wstring(L"Cannot create ") + cls.name + L": its class makes no object");
    INode* node = GetCOREInterface()->CreateObjectNode(obj);
    // New nodes are numbered from 001 ("Camera001"), whatever the object calls itself.
    node->SetName(UniqueNodeName(MSTR((std::wstring(cls.nodeName) + L"001").c_str())).data());
    if (cls.cid == HOST_BONE_CLASS_ID) node->SetBoneNodeOnOff(TRUE, ctx.interp.Time());
    const Value nodeValue = Value::Host(node);
    if (cls.targeted) {
        INode* target = nullptr;
        if (const Value* given = args.Keyword(L"target")) {
            target = NodeArg(*given);
        } else {
            auto* targetObj = dynamic_cast<Object*>(
                CreateHostInstance(GEOMOBJECT_CLASS_ID, Class_ID(TARGET_CLASS_ID, 0), L"TargetObject"));
            target = GetCOREInterface()->CreateObjectNode(targetObj);
        }
        node->SetTMController(CreateLookatControl(target));
        ApplyKeywords(ctx, nodeValue, args, {L"target"});
        if (!args.Keyword(L"target")) target->SetName((MSTR(node->GetName()) + MSTR(L".Target")).data());
        return nodeValue;
    }
    ApplyKeywords(ctx, nodeValue, args);
    return nodeValue;
}

Modifier* AsModifier(const Value& v) {
    Modifier* mod = v.Is(Kind::HostObject) ? dynamic_cast<Modifier*>(v.Anim()) : nullptr;
    if (!mod) throw ConversionError(v, L"Modifier");
    return mod;
}

// The derived objects of a node, top of the stack first: the world-space one, then the object-space ones.
std::vector<IDerivedObject*> Stack(INode* node) {
    std::vector<IDerivedObject*> out;
    if (IDerivedObject* ws = node->GetWSMDerivedObject()) out.push_back(ws);
    for (Object* o = node->GetObjectRef(); o && o->SuperClassID() == GEN_DERIVOB_CLASS_ID;) {
        auto* d = static_cast<IDerivedObject*>(o);
        if (!d->IsWorldSpace()) out.push_back(d);
        o = d->GetObjRef();
    }
    return out;
}

struct StackEntry {
    IDerivedObject* owner;
    int index;
};

std::vector<StackEntry> Entries(INode* node) {
    std::vector<StackEntry> out;
    for (IDerivedObject* d : Stack(node))
        for (int i = 0; i < d->NumModifiers(); ++i) out.push_back({d, i});
    return out;
}

// addModifier nodes mod: one modifier on every node given; two or more nodes share it (an instanced modifier).
Value AddModifier(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"addModifier", args, 2);
    const std::vector<INode*> nodes = NodeListArg(ctx, args.positional[0]);
    Modifier* mod = AsModifier(args.positional[1]);
    // before:i places the modifier below the i-th one (counting the object-space stack from the top).
    int before = 0;
    if (const Value* b = args.Keyword(L"before"); b && !b->Is(Kind::Unsupplied)) before = ToInt(*b);
    for (INode* node : nodes) {
        const std::wstring which = PrintForm(Value::Host(node));
        if (mod->SuperClassID() != WSM_CLASS_ID && !node->GetObjectRef())
            throw RuntimeError(L"addModifier: " + which + L" has no object");
        if (!GetCOREInterface()->AddModifier(*node, *mod, before))
            throw RuntimeError(L"addModifier: before:" + std::to_wstring(before) + L" is out of range for " + which);
    }
    return Value::Ok();
}

// The modifier of a stack by 1-based number or by name; -1 when none.
int FindEntry(const std::vector<StackEntry>& entries, const Value& key) {
    if (key.IsNumber()) {
        const int i = ToInt(key);
        return i >= 1 && i <= int(entries.size()) ? i - 1 : -1;
    }
    if (key.Is(Kind::HostObject)) {
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (entries[i].owner->GetModifier(entries[i].index) == key.Anim()) return int(i);
        return -1;
    }
    const std::wstring name = ToText(key);
    for (std::size_t i = 0; i < entries.size(); ++i)
        if (EqualsNoCase(entries[i].owner->GetModifier(entries[i].index)->GetName().data(), name)) return int(i);
    return -1;
}

Value DeleteModifier(CallContext&, CallArgs& args) {
    CheckArgCount(L"deleteModifier", args, 2);
    INode* node = NodeArg(args.positional[0]);
    const std::vector<StackEntry> entries = Entries(node);
    const int i = FindEntry(entries, args.positional[1]);
    if (i < 0) return Value::Bool(false);
    const StackEntry& e = entries[std::size_t(i)];
    return Value::Bool(GetCOREInterface()->DeleteModifier(*node, *e.owner->GetModifier(e.index)));
}

// `node.modifiers`: the node's stack as it is when read.
class ModifierList : public ExtObject {
public:
    explicit ModifierList(INode* node) : handle_(Animatable::GetHandleByAnim(node)) {}
    std::wstring ClassName() const override { return L"ModifierArray"; }
    std::wstring Describe() const override {
        std::wstring out = L"#(";
        const auto entries = Entries(node());
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (i) out += L", ";
            out += PrintForm(Value::Host(entries[i].owner->GetModifier(entries[i].index)));
        }
        return out + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(int(Entries(node()).size()));
        return std::nullopt;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        const auto entries = Entries(node());
        const int i = FindEntry(entries, index);
        if (i < 0) return index.IsNumber() ? throw RuntimeError(L"Index out of range: " + PrintForm(index) +
                                                                L" in modifiers of " + PrintForm(Value::Host(node())))
                                           : Value::Undefined();
        return Value::Host(entries[std::size_t(i)].owner->GetModifier(entries[std::size_t(i)].index));
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (const StackEntry& e : Entries(node())) items.push_back(Value::Host(e.owner->GetModifier(e.index)));
        return items;
    }

private:
    INode* node() const {
        auto* n = dynamic_cast<INode*>(Animatable::GetAnimByHandle(handle_));
        if (!n) throw RuntimeError(L"Attempt to access deleted scene object");
        return n;
    }
    AnimHandle handle_;
};

void RegisterModifierHandler() {
    HostObjectHandler h;
    h.name = L"modifier";
    h.accepts = [](Animatable* a) { return dynamic_cast<Modifier*>(a) != nullptr; };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) -> std::optional<Value> {
        auto* mod = dynamic_cast<Modifier*>(a);
        if (EqualsNoCase(name, L"name")) return Value::String(mod->GetName().data());
        if (EqualsNoCase(name, L"enabled")) return Value::Bool(mod->IsEnabled());
        if (EqualsNoCase(name, L"enabledInViews")) return Value::Bool(mod->IsEnabledInViews());
        if (EqualsNoCase(name, L"enabledInRenders")) return Value::Bool(mod->IsEnabledInRender());
        return GetBlockParam(ctx, a, name);
    };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        auto* mod = dynamic_cast<Modifier*>(a);
        if (EqualsNoCase(name, L"name")) mod->SetName(MSTR(ToText(v).c_str()));
        else if (EqualsNoCase(name, L"enabled")) ToBool(v) ? mod->EnableMod() : mod->DisableMod();
        else if (EqualsNoCase(name, L"enabledInViews")) ToBool(v) ? mod->EnableModInViews() : mod->DisableModInViews();
        else if (EqualsNoCase(name, L"enabledInRenders")) ToBool(v) ? mod->EnableModInRender() : mod->DisableModInRender();
        else return SetBlockParam(ctx, a, name, v);
        return true;
    };
    h.describe = [](Animatable* a) -> std::optional<std::wstring> {
        auto cls = ScriptClassOf(a);
        return (cls ? cls->Cls()->name : std::wstring(a->ClassName().data())) + L":" +
               dynamic_cast<Modifier*>(a)->GetName().data();
    };
    h.classOf = [](Animatable* a) { return ScriptClassOf(a); };
    RegisterHostObjectHandler(std::move(h));
}

// Objects and other parameter-block owners (base objects, controllers of blocks): parameters by name.
void RegisterBlockOwnerHandler() {
    HostObjectHandler h;
    h.name = L"parameters";
    h.accepts = [](Animatable* a) { return a->NumParamBlocks() > 0; };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) { return GetBlockParam(ctx, a, name); };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        return SetBlockParam(ctx, a, name, v);
    };
    h.classOf = [](Animatable* a) { return ScriptClassOf(a); };
    RegisterHostObjectHandler(std::move(h));
}

}  // namespace

Value ModifierListValue(INode* node) { return Value::Ext(std::make_shared<ModifierList>(node)); }

std::optional<Value> ModifierByName(INode* node, const std::wstring& name) {
    // Spaces of a modifier's name read as underscores in a property name ($b.Edit_Poly).
    auto scripted = [](std::wstring text) {
        for (wchar_t& c : text)
            if (c == L' ') c = L'_';
        return text;
    };
    for (const StackEntry& e : Entries(node)) {
        Modifier* mod = e.owner->GetModifier(e.index);
        if (EqualsNoCase(scripted(mod->GetName().data()), scripted(name))) return Value::Host(mod);
    }
    return std::nullopt;
}

void RegisterSceneObjectFunctions() {
    RegisterBlockOwnerHandler();
    RegisterModifierHandler();
    for (const ObjectClass& cls : kObjectClasses)
        RegisterHostClass(cls.name, cls.superclass, cls.cid,
                          [&cls](CallContext& ctx, CallArgs& args) { return MakeNode(ctx, cls, args); });
    for (const ModifierClass& cls : kModifierClasses)
        RegisterHostClass(cls.name, cls.superclass, cls.cid, [&cls](CallContext& ctx, CallArgs& args) {
            if (!args.positional.empty()) throw ArgCountError(cls.name, 0, int(args.positional.size()));
            const Value mod = Value::Host(CreateHostInstance(cls.sid, cls.cid, cls.name));
            ApplyKeywords(ctx, mod, args);
            return mod;
        });
    RegisterGlobalFunction(L"addModifier", AddModifier);
    RegisterGlobalFunction(L"deleteModifier", DeleteModifier);
    RegisterGlobalFunction(L"validModifier", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"validModifier", args, 2);
        NodeArg(args.positional[0]);
        const Value& m = args.positional[1];
        return Value::Bool(m.Is(Kind::HostObject) && dynamic_cast<Modifier*>(m.Anim()));
    });
    // bindSpaceWarp node warpNode: a binding on the node's world-space stack that follows the warp.
    RegisterGlobalFunction(L"bindSpaceWarp", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"bindSpaceWarp", args, 2);
        INode* node = NodeArg(args.positional[0]);
        INode* warp = NodeArg(args.positional[1]);
        Object* warpObj = warp->GetBaseObject();
        if (!warpObj || warpObj->SuperClassID() != WSM_OBJECT_CLASS_ID)
            throw RuntimeError(L"bindSpaceWarp: " + PrintForm(args.positional[1]) + L" is no space warp");
        const Value binding = Value::Host(
            CreateHostInstance(WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L"SpaceWarpBinding"));
        SetBlockParam(ctx, binding.Anim(), L"node", args.positional[1]);
        GetCOREInterface()->AddModifier(*node, *static_cast<Modifier*>(binding.Anim()));
        return binding;
    });
}

}  // namespace hostrt::mxs
