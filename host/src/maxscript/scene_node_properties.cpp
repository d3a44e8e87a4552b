// Node properties and functions for bone settings, render values, the extension interfaces' switches, display
// values, skin pose, a light's include/exclude list, transform locks and group state. Each property is one row of a table: where the host keeps
// it (which getter and setter of the node or of its interfaces) and how a script writes it (boolean, integer,
// byte, float or one of a few names).
#include "maxscript/scene_node_properties.h"

#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/scene_values.h"
#include "scene/controllers/transform_math.h"
#include "scene/node_operations.h"
#include "object.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace hostrt::mxs {

namespace {

constexpr float kDegreesPerRadian = float(180.0 / M_PI);

// Where a property lives.
enum class Store {
    DisplayFlag,    // GetDisplayFlag/SetDisplayFlag(which)
    DisplayValue,   // GetDisplayValue/SetDisplayValue(which)
    RenderFlag,     // GetRenderFlag/SetRenderFlag(which)
    RenderValue,    // GetRenderValue/SetRenderValue(which)
    BoneOn,         // GetBoneNodeOnOff/SetBoneNodeOnOff
    BoneFlag,       // GetBoneFlag/SetBoneFlag(which)
    BoneValue,      // GetBoneValue/SetBoneValue(which)
    GiSwitch,       // the render-properties interface's switch
    GiValue,        // the render-properties interface's value
    NeverDegrade,   // the first extension's display switch
    DisplayByLayer, // the second extension's display switch
    ByLayerRender,  // the second extension's render switch
};

// How a script writes it.
enum class Form { Bool, Int, Byte, Float, Enum };

struct NodeProperty {
    const wchar_t* name;
    Store store;
    int which;
    Form form;
    std::vector<const wchar_t*> names = {};  // Enum: the names of the values 0, 1, 2 ...
};

const std::vector<NodeProperty>& Properties() {
    static const std::vector<NodeProperty> table = {
        // Display.
        {L"vertexColorsShaded", Store::DisplayFlag, NODE_DISP_SHADED_VERT_COLORS, Form::Bool},
        {L"vertexColorType", Store::DisplayValue, NODE_DISP_VALUE_VERTEX_COLOR_TYPE, Form::Enum,
         {L"color", L"illum", L"alpha", L"color_plus_illum", L"soft_select", L"map_channel"}},
        {L"vertexColorMapChannel", Store::DisplayValue, NODE_DISP_VALUE_VERTEX_COLOR_CHANNEL, Form::Byte},
        {L"neverDegrade", Store::NeverDegrade, 0, Form::Bool},
        {L"displayByLayer", Store::DisplayByLayer, 0, Form::Bool},
        // Render.
        {L"renderOccluded", Store::RenderFlag, NODE_REND_RENDER_OCCLUDED, Form::Bool},
        {L"gbufferChannel", Store::RenderValue, NODE_REND_VALUE_GBUFFER_CHANNEL, Form::Int},
        {L"motionBlur", Store::RenderValue, NODE_REND_VALUE_MOTION_BLUR, Form::Enum, {L"none", L"object", L"image"}},
        {L"imageMotionBlurMultiplier", Store::RenderValue, NODE_REND_VALUE_IMAGE_BLUR_MULT, Form::Float},
        {L"motionBlurSamples", Store::RenderValue, NODE_REND_VALUE_BLUR_SAMPLES, Form::Int},
        {L"motionBlurDuration", Store::RenderValue, NODE_REND_VALUE_BLUR_DURATION, Form::Float},
        {L"renderByLayer", Store::ByLayerRender, 0, Form::Bool},
        {L"motionByLayer", Store::ByLayerRender, 1, Form::Bool},
        {L"globalIlluminationByLayer", Store::ByLayerRender, 2, Form::Bool},
        // Global illumination (the render-properties interface).
        {L"isGIExcluded", Store::GiSwitch, 0, Form::Bool},
        {L"isGIOccluder", Store::GiSwitch, 1, Form::Bool},
        {L"isGIReceiver", Store::GiSwitch, 2, Form::Bool},
        {L"isGIDiffuse", Store::GiSwitch, 3, Form::Bool},
        {L"isGISpecular", Store::GiSwitch, 4, Form::Bool},
        {L"isGIExcludedFromRegather", Store::GiSwitch, 5, Form::Bool},
        {L"GIUseGlobalMeshSettings", Store::GiSwitch, 6, Form::Bool},
        {L"GIMeshingEnabled", Store::GiSwitch, 7, Form::Bool},
        {L"GIStoreIllumToMesh", Store::GiSwitch, 8, Form::Bool},
        {L"GIUseAdaptiveSubdivision", Store::GiSwitch, 9, Form::Bool},
        {L"GINbRefineSteps", Store::GiValue, 0, Form::Int},
        {L"GINbRefineStepsDone", Store::GiValue, 1, Form::Int},
        {L"GIMeshSize", Store::GiValue, 2, Form::Float},
        {L"GIRayMult", Store::GiValue, 3, Form::Float},
        {L"GIMinMeshSize", Store::GiValue, 4, Form::Float},
        {L"GIMaxMeshSize", Store::GiValue, 5, Form::Float},
        {L"GIInitialMeshSize", Store::GiValue, 6, Form::Float},
        {L"GIContrastThreshold", Store::GiValue, 7, Form::Float},
        {L"GISubdivisionLevel", Store::GiValue, 8, Form::Int},
        // Bones.
        {L"boneEnable", Store::BoneOn, 0, Form::Bool},
        {L"boneAutoAlign", Store::BoneFlag, NODE_BONE_AUTO_ALIGN, Form::Bool},
        {L"boneFreezeLength", Store::BoneFlag, NODE_BONE_FREEZE_LENGTH, Form::Bool},
        {L"boneAxisFlip", Store::BoneFlag, NODE_BONE_AXIS_FLIP, Form::Bool},
        {L"boneAxis", Store::BoneValue, NODE_BONE_VALUE_AXIS, Form::Enum, {L"x", L"y", L"z"}},
        {L"boneScaleType", Store::BoneValue, NODE_BONE_VALUE_SCALE_TYPE, Form::Enum, {L"scale", L"squash", L"none"}},
    };
    return table;
}

const NodeProperty* FindProperty(const std::wstring& name) {
    for (const NodeProperty& p : Properties())
        if (EqualsNoCase(p.name, name)) return &p;
    return nullptr;
}

template <class I> I* Extension(INode* node, Interface_ID id) {
    auto* found = static_cast<I*>(node->GetInterface(id));
    if (!found) throw RuntimeError(L"Node " + std::wstring(node->GetName()) + L" has no interface for this property");
    return found;
}
INodeRenderProperties* Gi(INode* n) { return Extension<INodeRenderProperties>(n, NODE_RENDERPROPS_INTERFACE); }
INodeExtension1* DisplayProps(INode* n) { return Extension<INodeExtension1>(n, NODE_EXTENSION1_INTERFACE); }
INodeExtension2* LayerProps(INode* n) { return Extension<INodeExtension2>(n, NODE_EXTENSION2_INTERFACE); }

DWORD ReadRaw(INode* n, const NodeProperty& p) {
    switch (p.store) {
    case Store::DisplayFlag: return n->GetDisplayFlag(p.which) ? 1 : 0;
    case Store::DisplayValue: return n->GetDisplayValue(p.which);
    case Store::RenderFlag: return n->GetRenderFlag(p.which) ? 1 : 0;
    case Store::RenderValue: return n->GetRenderValue(p.which);
    case Store::BoneOn: return n->GetBoneNodeOnOff() ? 1 : 0;
    case Store::BoneFlag: return n->GetBoneFlag(p.which) ? 1 : 0;
    case Store::BoneValue: return n->GetBoneValue(p.which);
    case Store::GiSwitch: return Gi(n)->GetRenderSwitch(p.which) ? 1 : 0;
    case Store::GiValue: return Gi(n)->GetRenderPropValue(p.which);
    case Store::NeverDegrade: return DisplayProps(n)->GetDisplaySwitch() ? 1 : 0;
    case Store::DisplayByLayer: return LayerProps(n)->GetDisplaySwitch() ? 1 : 0;
    case Store::ByLayerRender: return LayerProps(n)->GetRenderSwitch(p.which) ? 1 : 0;
    }
    return 0;
}

void WriteRaw(INode* n, const NodeProperty& p, DWORD raw) {
    switch (p.store) {
    case Store::DisplayFlag: n->SetDisplayFlag(p.which, raw != 0); break;
    case Store::DisplayValue: n->SetDisplayValue(p.which, BYTE(raw)); break;
    case Store::RenderFlag: n->SetRenderFlag(p.which, raw != 0); break;
    case Store::RenderValue: n->SetRenderValue(p.which, raw); break;
    case Store::BoneOn: n->SetBoneNodeOnOff(raw != 0, GetCOREInterface()->GetTime()); break;
    case Store::BoneFlag: n->SetBoneFlag(p.which, raw != 0); break;
    case Store::BoneValue: n->SetBoneValue(p.which, BYTE(raw)); break;
    case Store::GiSwitch: Gi(n)->SetRenderSwitch(p.which, raw != 0); break;
    case Store::GiValue: Gi(n)->SetRenderPropValue(p.which, raw); break;
    case Store::NeverDegrade: DisplayProps(n)->SetDisplaySwitch(raw != 0); break;
    case Store::DisplayByLayer: LayerProps(n)->SetDisplaySwitch(raw != 0); break;
    case Store::ByLayerRender: LayerProps(n)->SetRenderSwitch(p.which, raw != 0); break;
    }
}

DWORD FloatBits(float f) {
    DWORD bits;
    std::memcpy(&bits, &f, sizeof bits);
    return bits;
}
float BitsFloat(DWORD bits) {
    float f;
    std::memcpy(&f, &bits, sizeof f);
    return f;
}

std::wstring EnumChoices(const NodeProperty& p) {
    std::wstring out;
    for (const wchar_t* n : p.names) out += (out.empty() ? L"#" : L", #") + std::wstring(n);
    return out;
}

Value ToScript(const NodeProperty& p, DWORD raw) {
    switch (p.form) {
    case Form::Bool: return Value::Bool(raw != 0);
    case Form::Int: return Value::Int(int(raw));
    case Form::Byte: return Value::Int(int(raw & 0xFF));
    case Form::Float: return Value::Float(BitsFloat(raw));
    case Form::Enum: return raw < p.names.size() ? Value::Name(p.names[raw]) : Value::Int(int(raw));
    }
    return Value::Undefined();
}

DWORD FromScript(const NodeProperty& p, const Value& v) {
    switch (p.form) {
    case Form::Bool: return ToBool(v) ? 1 : 0;
    case Form::Int: return DWORD(ToInt(v));
    case Form::Byte: {
        const int i = ToInt(v);
        if (i < 0 || i > 255)
            throw RuntimeError(std::wstring(p.name) + L" must be between 0 and 255, got " + PrintForm(v));
        return DWORD(i);
    }
    case Form::Float: return FloatBits(ToFloat(v));
    case Form::Enum:
        if (v.Is(Kind::Name))
            for (std::size_t i = 0; i < p.names.size(); ++i)
                if (EqualsNoCase(p.names[i], v.Text())) return DWORD(i);
        throw ConversionError(v, L"one of " + EnumChoices(p));
    }
    return 0;
}

INodeSkinPose* SkinPose(INode* n) { return Extension<INodeSkinPose>(n, INODE_SKINPOSE_INTERFACE); }

// skinRot reads as Euler angles in degrees (x, then y, then z) and takes them, or any rotation value.
Point3 EulerDegrees(const Quat& q) { return EulerXYZFromMatrix(RotationOf(q)) * kDegreesPerRadian; }
Quat RotationArg(const Value& v) {
    if (v.Is(Kind::Point3)) return MatrixToQuat(RotateXYZMatrix(ToPoint3(v) / kDegreesPerRadian));
    return QuatArg(v);
}

// ---- A light's include/exclude list: `excludeList` or `includeList` answers its nodes when the list is of that
// kind (undefined otherwise); setting one makes the list that kind with those nodes (undefined empties it).

ExclList* LightList(INode* node) {
    auto* light = dynamic_cast<LightObject*>(node->GetBaseObject());
    return light ? light->GetExclList() : nullptr;
}

std::optional<Value> GetLightList(INode* node, bool include) {
    ExclList* list = LightList(node);
    if (!list) return std::nullopt;
    if ((list->IsInclude() != FALSE) != include) return Value::Undefined();
    std::vector<INode*> nodes;
    for (int i = 0; i < list->Count(); ++i)
        if (INode* n = (*list)[i]) nodes.push_back(n);
    return NodeArray(nodes);
}

bool SetLightList(CallContext& ctx, INode* node, bool include, const Value& v) {
    ExclList* list = LightList(node);
    if (!list) return false;
    const std::vector<INode*> nodes = v.IsUndefined() ? std::vector<INode*>() : NodeListArg(ctx, v);
    while (list->Count() > 0) list->RemoveNode(list->Count() - 1);
    list->SetInclude(include);
    for (INode* n : nodes) list->AddNode(n);
    return true;
}

// ---- Transform locks: a bit array of nine, #{move x, y, z, rotate x, y, z, scale x, y, z}.

constexpr int kLockCount = 9;

::BitArray LockFlags(INode* node) {
    ::BitArray bits(kLockCount);
    for (int i = 0; i < kLockCount; ++i)
        if (node->GetTransformLock(i / 3, i % 3)) bits.Set(i);
    return bits;
}

::BitArray LockFlagsArg(const Value& v) {
    if (v.Is(Kind::Name)) {
        ::BitArray bits(kLockCount);
        if (EqualsNoCase(v.Text(), L"all")) bits.SetAll();
        else if (!EqualsNoCase(v.Text(), L"none")) throw ConversionError(v, L"#all, #none or BitArray");
        return bits;
    }
    if (!v.Is(Kind::BitArray) && !v.Is(Kind::Array)) throw ConversionError(v, L"BitArray");
    const ::BitArray bits = ToBitArray(v).BitsRef();
    for (int i = kLockCount; i < bits.GetSize(); ++i)
        if (bits[i]) throw RuntimeError(L"Transform lock flags are numbered 1 to 9, got " + PrintForm(v));
    return bits;
}

// ---- Groups: a head is a node whose group members are its descendants down to the next heads.

void SetMembersOpen(INode* parent, bool open) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* child = parent->GetChildNode(i);
        if (!child->IsGroupMember()) continue;
        child->SetGroupMemberOpen(open);
        if (!child->IsGroupHead()) SetMembersOpen(child, open);
    }
}

INode* GroupHeadArg(const wchar_t* fn, const Value& v) {
    INode* head = NodeArg(v);
    if (!head->IsGroupHead()) throw RuntimeError(std::wstring(fn) + L" needs a group head, got " + PrintForm(v));
    return head;
}

void SetGroupMembers(INode* parent, bool member) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* child = parent->GetChildNode(i);
        child->SetGroupMember(member);
        if (!member) child->SetGroupMemberOpen(FALSE);
        if (!child->IsGroupHead()) SetGroupMembers(child, member);
    }
}

// group <nodes> name:<string> prefix:<string> select:<boolean>: a dummy head at the nodes' centre; the nodes
// whose parents are not among them become its children (keeping their place in the world).
Value MakeGroup(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"group", args, 1);
    std::vector<INode*> nodes = NodeListArg(ctx, args.positional[0]);
    if (nodes.empty()) return Value::Undefined();
    const TimeValue t = ctx.interp.Time();
    Point3 centre;
    for (INode* n : nodes) centre += n->GetNodeTM(t).GetTrans();
    centre = centre / float(nodes.size());

    auto* dummy = dynamic_cast<Object*>(CreateHostInstance(HELPER_CLASS_ID, Class_ID(DUMMY_CLASS_ID, 0), L"Dummy"));
    INode* head = GetCOREInterface()->CreateObjectNode(dummy);
    MSTR name;
    if (const Value* given = args.Keyword(L"name")) name = MSTR(ToText(*given).c_str());
    else name = UniqueNodeName(MSTR(args.Keyword(L"prefix") ? ToText(*args.Keyword(L"prefix")).c_str() : L"Group"));
    head->SetName(name.data());
    Matrix3 tm(1);
    tm.SetTrans(centre);
    head->SetNodeTM(t, tm);

    INode* commonParent = nodes[0]->GetParentNode();
    for (INode* n : nodes)
        if (n->GetParentNode() != commonParent) commonParent = nullptr;
    if (commonParent && !commonParent->IsRootNode()) commonParent->AttachChild(head, 1);
    auto inSet = [&nodes](INode* n) { return std::find(nodes.begin(), nodes.end(), n) != nodes.end(); };
    for (INode* n : nodes)
        if (!inSet(n->GetParentNode())) head->AttachChild(n, 1);
    head->SetGroupHead(TRUE);
    SetGroupMembers(head, true);
    if (const Value* select = args.Keyword(L"select"); !select || ToBool(*select)) {
        INodeTab tab;
        tab.Append(1, &head);
        GetCOREInterface()->ClearNodeSelection();
        GetCOREInterface()->SelectNodeTab(tab, TRUE);
    }
    return Value::Host(head);
}

// ungroup <head>: the head's children go to the head's parent, lose their membership, and the head is deleted.
Value Ungroup(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"ungroup", args, 1);
    INode* head = GroupHeadArg(L"ungroup", args.positional[0]);
    SetGroupMembers(head, false);
    INode* parent = head->GetParentNode();
    while (head->NumberOfChildren() > 0) {
        INode* child = head->GetChildNode(0);
        if (parent && !parent->IsRootNode()) parent->AttachChild(child, 1);
        else child->Detach(ctx.interp.Time(), 1);
    }
    INodeTab tab;
    tab.Append(1, &head);
    GetCOREInterface()->DeleteNodes(tab);
    return Value::Ok();
}

void GroupQuery(const wchar_t* fn, BOOL (INode::*query)()) {
    const std::wstring name = fn;
    RegisterGlobalFunction(name, [name, query](CallContext&, CallArgs& args) {
        CheckArgCount(name, args, 1);
        return Value::Bool((NodeArg(args.positional[0])->*query)() != FALSE);
    });
}

void GroupSetter(const wchar_t* fn, void (INode::*set)(BOOL)) {
    const std::wstring name = fn;
    RegisterGlobalFunction(name, [name, set](CallContext&, CallArgs& args) {
        CheckArgCount(name, args, 2);
        (NodeArg(args.positional[0])->*set)(ToBool(args.positional[1]));
        return Value::Ok();
    });
}

}  // namespace

std::optional<Value> GetNodeStateProperty(INode* node, const std::wstring& name) {
    if (const NodeProperty* p = FindProperty(name)) return ToScript(*p, ReadRaw(node, *p));
    if (EqualsNoCase(name, L"excludeList") || EqualsNoCase(name, L"includeList"))
        return GetLightList(node, EqualsNoCase(name, L"includeList"));
    if (EqualsNoCase(name, L"skinPos")) return Value::P3(SkinPose(node)->GetSkinPos());
    if (EqualsNoCase(name, L"skinRot")) return Value::P3(EulerDegrees(SkinPose(node)->GetSkinRot()));
    if (EqualsNoCase(name, L"skinScale")) return Value::P3(SkinPose(node)->GetSkinScale());
    if (EqualsNoCase(name, L"skinScaleOrient")) return QuatValue(SkinPose(node)->GetSkinScaleOrient());
    return std::nullopt;
}

bool SetNodeStateProperty(CallContext& ctx, INode* node, const std::wstring& name, const Value& v) {
    if (const NodeProperty* p = FindProperty(name)) {
        WriteRaw(node, *p, FromScript(*p, v));
        return true;
    }
    if (EqualsNoCase(name, L"excludeList") || EqualsNoCase(name, L"includeList"))
        return SetLightList(ctx, node, EqualsNoCase(name, L"includeList"), v);
    if (EqualsNoCase(name, L"skinPos")) SkinPose(node)->SetSkinPos(ToPoint3(v));
    else if (EqualsNoCase(name, L"skinRot")) SkinPose(node)->SetSkinRot(RotationArg(v));
    else if (EqualsNoCase(name, L"skinScale")) SkinPose(node)->SetSkinScale(ToPoint3(v));
    else if (EqualsNoCase(name, L"skinScaleOrient")) SkinPose(node)->SetSkinScaleOrient(QuatArg(v));
    else return false;
    return true;
}

void RegisterNodeStateFunctions() {
    RegisterGlobalFunction(L"getTransformLockFlags", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getTransformLockFlags", args, 1);
        return Value::Bits(LockFlags(NodeArg(args.positional[0])));
    });
    RegisterGlobalFunction(L"setTransformLockFlags", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"setTransformLockFlags", args, 2);
        const ::BitArray bits = LockFlagsArg(args.positional[1]);
        for (INode* n : NodeListArg(ctx, args.positional[0]))
            for (int i = 0; i < kLockCount; ++i) n->SetTransformLock(i / 3, i % 3, bits[i]);
        return Value::Ok();
    });
    GroupQuery(L"isGroupHead", &INode::IsGroupHead);
    GroupQuery(L"isGroupMember", &INode::IsGroupMember);
    GroupQuery(L"isOpenGroupHead", &INode::IsOpenGroupHead);
    GroupQuery(L"isOpenGroupMember", &INode::IsOpenGroupMember);
    GroupSetter(L"setGroupHead", &INode::SetGroupHead);
    GroupSetter(L"setGroupMember", &INode::SetGroupMember);
    RegisterGlobalFunction(L"setGroupOpen", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"setGroupOpen", args, 2);
        INode* head = GroupHeadArg(L"setGroupOpen", args.positional[0]);
        const bool open = ToBool(args.positional[1]);
        head->SetGroupHeadOpen(open);
        SetMembersOpen(head, open);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"group", MakeGroup);
    RegisterGlobalFunction(L"ungroup", Ungroup);
}

}  // namespace hostrt::mxs
