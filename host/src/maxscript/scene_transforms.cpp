// Moving, rotating and scaling nodes from MAXScript (`move`, `rotate`, `scale`, honouring `in coordsys` and
// `about`), the pivot, bounding boxes from the objects' sizes (`.min`, `.max`, `.center`, `.boundingBox`,
// `nodeGetBoundingBox`), and the collections of nodes by kind (`geometry`, `lights`, `cameras`, `helpers`,
// `shapes`) with `getCurrentSelection`.
#include "maxscript/scene_values.h"

#include "inode.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "object.h"
#include "scene/controllers/transform_math.h"
#include "scene/objects/object_extents.h"

namespace hostrt::mxs {

namespace {

// The rotation (no translation, no scale) of a transform.
Matrix3 RotationPart(const Matrix3& m) { return Decompose(m).rotation; }

// The axes `in coordsys` chose for node: the world, the parent's, the node's own, or another node's.
Matrix3 CoordAxes(CallContext& ctx, INode* node, TimeValue t) {
    const Value& cs = ctx.interp.CoordSystem();
    if (cs.Is(Kind::Name)) {
        if (EqualsNoCase(cs.Text(), L"parent")) return RotationPart(node->GetParentTM(t));
        if (EqualsNoCase(cs.Text(), L"local")) return RotationPart(node->GetNodeTM(t));
        return Matrix3();
    }
    if (INode* other = AsNode(cs)) return RotationPart(other->GetNodeTM(t));
    return Matrix3();
}

// The world box of a node's object at t (a point at the node's position when it has no size).
Box3 WorldBox(INode* node, TimeValue t) {
    const Box3 local = ObjectSizeBox(node->GetObjectRef(), t);
    const Matrix3 tm = node->GetObjectTM(t);
    Box3 out;
    for (int corner = 0; corner < 8; ++corner) {
        const Point3 p((corner & 1) ? local.pmax.x : local.pmin.x, (corner & 2) ? local.pmax.y : local.pmin.y,
                       (corner & 4) ? local.pmax.z : local.pmin.z);
        out += p * tm;
    }
    return out;
}

Box3 WorldBox(const std::vector<INode*>& nodes, TimeValue t) {
    Box3 out;
    for (INode* n : nodes) {
        const Box3 b = WorldBox(n, t);
        out += b.pmin;
        out += b.pmax;
    }
    return out;
}

Point3 Centre(const Box3& b) { return b.IsEmpty() ? Point3() : (b.pmin + b.pmax) * 0.5f; }

// The centre the `about` context chose for node among nodes: its pivot, the selection's centre, a point or a
// node's position.
Point3 TransformCentre(CallContext& ctx, INode* node, const std::vector<INode*>& nodes, TimeValue t) {
    const Value& about = ctx.interp.TransformCentre();
    if (about.Is(Kind::Point3)) return about.AsPoint3();
    if (INode* other = AsNode(about)) return other->GetNodeTM(t).GetTrans();
    if (about.Is(Kind::Name)) {
        if (EqualsNoCase(about.Text(), L"selection")) return Centre(WorldBox(SelectedNodes(), t));
        if (EqualsNoCase(about.Text(), L"center")) return Centre(WorldBox(nodes, t));
        if (EqualsNoCase(about.Text(), L"coordsys")) return CoordAxes(ctx, node, t).GetTrans();
    }
    return node->GetNodeTM(t).GetTrans();
}

// Applies change (given in the chosen axes, about the chosen centre) to every node of the first argument.
Value Transform(CallContext& ctx, CallArgs& args, const wchar_t* fn, const std::function<Matrix3(const Value&)>& make) {
    CheckArgCount(fn, args, 2);
    const TimeValue t = ctx.interp.Time();
    const std::vector<INode*> nodes = NodeListArg(ctx, args.positional[0]);
    const Matrix3 change = make(args.positional[1]);
    for (INode* node : nodes) {
        const Matrix3 axes = CoordAxes(ctx, node, t);
        const Point3 centre = TransformCentre(ctx, node, nodes, t);
        const Matrix3 around = TransMatrix(-centre) * Inverse(axes) * change * axes * TransMatrix(centre);
        Matrix3 moved = node->GetNodeTM(t) * around;
        node->SetNodeTM(t, moved);
    }
    return Value::Ok();
}

Value BoxValue(const Box3& b) { return Value::Array({Value::P3(b.pmin), Value::P3(b.pmax)}); }

// Which kind of node a collection holds, by its object's superclass.
bool OfSuperclass(INode* node, SClass_ID sid) {
    Object* base = node->GetBaseObject();
    if (!base || base->SuperClassID() != sid) return false;
    // Look-at targets are geometry to the host but no one's geometry.
    return !(sid == GEOMOBJECT_CLASS_ID && node->GetLookatNode() != nullptr);
}

// A live collection of the scene's nodes of one superclass (`geometry`, `lights`...).
class KindSet : public ExtObject {
public:
    KindSet(std::wstring name, SClass_ID sid) : name_(std::move(name)), sid_(sid) {}
    std::wstring ClassName() const override { return L"ObjectSet"; }
    std::wstring Describe() const override { return L"$" + name_; }
    std::vector<INode*> Nodes() const {
        std::vector<INode*> out;
        for (INode* n : SceneNodes())
            if (OfSuperclass(n, sid_)) out.push_back(n);
        return out;
    }
    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(int(Nodes().size()));
        return NodeGroupProperty(ctx, Nodes(), name);
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        const std::vector<INode*> nodes = Nodes();
        const int i = ToInt(index);
        if (i < 1 || i > int(nodes.size()))
            throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in " + Describe());
        return Value::Host(nodes[std::size_t(i - 1)]);
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (INode* n : Nodes()) items.push_back(Value::Host(n));
        return items;
    }
    bool MapsPropertyAssignment() const override { return true; }

private:
    std::wstring name_;
    SClass_ID sid_;
};

}  // namespace

std::optional<Value> NodeGroupProperty(CallContext& ctx, const std::vector<INode*>& nodes, const std::wstring& name) {
    const TimeValue t = ctx.interp.Time();
    if (EqualsNoCase(name, L"center")) return Value::P3(Centre(WorldBox(nodes, t)));
    if (EqualsNoCase(name, L"min")) return Value::P3(nodes.empty() ? Point3() : WorldBox(nodes, t).pmin);
    if (EqualsNoCase(name, L"max")) return Value::P3(nodes.empty() ? Point3() : WorldBox(nodes, t).pmax);
    return std::nullopt;
}

std::optional<Value> GetNodeSpatialProperty(CallContext& ctx, INode* node, const std::wstring& name) {
    const TimeValue t = ctx.interp.Time();
    if (EqualsNoCase(name, L"pivot")) return Value::P3(node->GetNodeTM(t).GetTrans());
    if (EqualsNoCase(name, L"boundingBox")) return BoxValue(WorldBox(node, t));
    return NodeGroupProperty(ctx, {node}, name);
}

bool SetNodeSpatialProperty(CallContext& ctx, INode* node, const std::wstring& name, const Value& v) {
    if (!EqualsNoCase(name, L"pivot")) {
        if (EqualsNoCase(name, L"boundingBox") || EqualsNoCase(name, L"min") || EqualsNoCase(name, L"max") ||
            EqualsNoCase(name, L"center"))
            throw RuntimeError(L"Cannot set " + name + L" of " + PrintForm(Value::Host(node)));
        return false;
    }
    // The pivot moves; the object stays where it is in the world (its offset takes up the difference).
    const TimeValue t = ctx.interp.Time();
    Matrix3 tm = node->GetNodeTM(t);
    const Point3 shift = ToPoint3(v) - tm.GetTrans();
    const Point3 localShift = Inverse(tm).VectorTransform(shift);
    tm.SetTrans(ToPoint3(v));
    node->SetNodeTM(t, tm);
    node->SetObjOffsetPos(node->GetObjOffsetPos() - localShift);
    return true;
}

void RegisterSceneTransformFunctions() {
    RegisterGlobalFunction(L"move", [](CallContext& ctx, CallArgs& args) {
        return Transform(ctx, args, L"move", [](const Value& v) { return TransMatrix(ToPoint3(v)); });
    });
    RegisterGlobalFunction(L"rotate", [](CallContext& ctx, CallArgs& args) {
        return Transform(ctx, args, L"rotate", [](const Value& v) { return RotationOf(QuatArg(v)); });
    });
    RegisterGlobalFunction(L"scale", [](CallContext& ctx, CallArgs& args) {
        return Transform(ctx, args, L"scale", [](const Value& v) { return ScaleMatrix(ToPoint3(v)); });
    });
    // nodeGetBoundingBox node tm: the corners of the node's box in the space of tm.
    RegisterGlobalFunction(L"nodeGetBoundingBox", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"nodeGetBoundingBox", args, 2);
        INode* node = NodeArg(args.positional[0]);
        if (!args.positional[1].Is(Kind::Matrix3)) throw ConversionError(args.positional[1], L"Matrix3");
        const TimeValue t = ctx.interp.Time();
        const Box3 local = ObjectSizeBox(node->GetObjectRef(), t);
        const Matrix3 toSpace = node->GetObjectTM(t) * Inverse(args.positional[1].AsMatrix());
        Box3 out;
        for (int corner = 0; corner < 8; ++corner)
            out += Point3((corner & 1) ? local.pmax.x : local.pmin.x, (corner & 2) ? local.pmax.y : local.pmin.y,
                          (corner & 4) ? local.pmax.z : local.pmin.z) * toSpace;
        return BoxValue(out);
    });
    const std::pair<const wchar_t*, SClass_ID> kinds[] = {{L"geometry", GEOMOBJECT_CLASS_ID},
                                                          {L"lights", LIGHT_CLASS_ID},
                                                          {L"cameras", CAMERA_CLASS_ID},
                                                          {L"helpers", HELPER_CLASS_ID},
                                                          {L"shapes", SHAPE_CLASS_ID},
                                                          {L"spacewarps", WSM_OBJECT_CLASS_ID}};
    for (const auto& [name, sid] : kinds) {
        std::wstring n = name;
        SClass_ID s = sid;
        RegisterSystemVariable(name, {[n, s] { return Value::Ext(std::make_shared<KindSet>(n, s)); }, nullptr});
    }
    RegisterGlobalFunction(L"getCurrentSelection", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getCurrentSelection", args, 0);
        return NodeArray(SelectedNodes());
    });
}

}  // namespace hostrt::mxs
