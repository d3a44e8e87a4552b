// What the scene functions of MAXScript share: nodes as script values, node collections (`objects`,
// `selection`), the script classes of the host's objects, and parameter-block properties by name.
#pragma once

#include "maxscript/registry.h"
#include "maxscript/value.h"

#include <optional>
#include <string>
#include <vector>

class Control;
class INode;
class ReferenceTarget;

namespace hostrt::mxs {

// Registers every scene function, class, variable and handler (once).
void RegisterSceneBuiltins();

// The themes, each in its own file.
void RegisterSceneNodeFunctions();       // node properties, $paths, hide/select/delete/copy...
void RegisterSceneObjectFunctions();     // object and modifier classes, modifier stacks
void RegisterSceneMaterialFunctions();   // materials, maps, sceneMaterials, meditMaterials
void RegisterSceneLayerFunctions();      // LayerManager and layers
void RegisterSceneSetFunctions();        // named selection sets
void RegisterSceneFileFunctions();       // save, load, reset, merge, saveNodes, render
void RegisterSceneAnimationFunctions();  // controllers, keys, quat and eulerAngles values
void RegisterSceneActionFunctions();     // actionMan
void RegisterSceneHandleFunctions();     // getHandleByAnim, getAnimByHandle, maxOps.getNodeByHandle
void RegisterSceneSubAnimFunctions();    // anim[#name], $b.pos.controller (registered first: asked last)
void RegisterSceneTransformFunctions();
void RegisterSceneAnimRangeFunctions();  // interval values, animationRange
void RegisterSceneEditingFunctions();    // getClassInstances, modPanel, instanceMgr, polyop  // move, rotate, scale, bounding boxes, geometry/lights/... collections

// ---- Nodes.
// The node a value holds; null for anything else (a deleted node throws the usual runtime error).
INode* AsNode(const Value& v);
// The node a value holds, else "-- Unable to convert: <v> to type: node".
INode* NodeArg(const Value& v);
// Nodes of a node, an array of nodes or a node collection; anything else is a conversion error naming fn.
std::vector<INode*> NodeListArg(CallContext& ctx, const Value& v);
Value NodeArray(const std::vector<INode*>& nodes);
// Every node of the scene, parents before children (no roots).
std::vector<INode*> SceneNodes();
std::vector<INode*> SelectedNodes();

// A live collection of nodes (`objects`, `selection`): count, 1-based indexing, iteration.
class NodeSet : public ExtObject {
public:
    enum class Which { Objects, Selection };
    explicit NodeSet(Which which) : which_(which) {}
    std::wstring ClassName() const override { return L"ObjectSet"; }
    std::wstring Describe() const override { return which_ == Which::Objects ? L"$objects" : L"$selection"; }
    std::vector<INode*> Nodes() const { return which_ == Which::Objects ? SceneNodes() : SelectedNodes(); }
    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override;
    std::optional<Value> GetIndex(CallContext& ctx, const Value& index) override;
    std::optional<std::vector<Value>> Items(CallContext& ctx) override;
    // `selection.wirecolor = red` sets every node's.
    bool MapsPropertyAssignment() const override { return true; }

private:
    Which which_;
};

// ---- Script classes of host classes (`box`, `bend`, `standardMaterial`...).
// Registers a class that makes instances of the host class cid (constructor given or none) and remembers it
// as the class classOf answers for those instances.
Value RegisterHostClass(const std::wstring& name, const std::wstring& superclass, Class_ID cid, NativeFn ctor);
// The registered script class of an animatable's class; nullopt when none.
std::optional<Value> ScriptClassOf(Animatable* anim);
// The host class a script class makes; nullopt for classes of no host class.
std::optional<Class_ID> HostClassIdOf(const Value& cls);
// A new instance of a host class from the class directory; a runtime error naming what when it is missing.
ReferenceTarget* CreateHostInstance(SClass_ID sid, Class_ID cid, const std::wstring& what);

// ---- Parameter-block properties: every block of the object, parameters by internal name (no case).
std::optional<Value> GetBlockParam(CallContext& ctx, Animatable* anim, const std::wstring& name);
// False when no block has the parameter; a value of the wrong kind is a conversion error.
bool SetBlockParam(CallContext& ctx, Animatable* anim, const std::wstring& name, const Value& value);
// The internal names of the object's parameters (for showProperties-like listings).
std::vector<std::wstring> BlockParamNames(Animatable* anim);

// Applies the keyword arguments of a constructor as property assignments on target.
void ApplyKeywords(CallContext& ctx, const Value& target, const CallArgs& args,
                   const std::vector<std::wstring>& skip = {});

// Rotations: `quat x y z w` and `eulerAngles x y z` (degrees) values.
Value QuatValue(const Quat& q);
// A quat or eulerAngles value as a rotation; anything else is a conversion error.
Quat QuatArg(const Value& v);

// A controller's value as a script value, and setting it (`.value`).
Value ControllerScriptValue(Control* c, TimeValue t);
void SetControllerScriptValue(Control* c, TimeValue t, const Value& v);
// The controller of an animatable parameter by name; null when the parameter has none or there is none.
Control* BlockParamController(Animatable* anim, const std::wstring& name);

// The modifier stack of a node as `.modifiers` shows it (count, indexing by number or name, iteration).
Value ModifierListValue(INode* node);
// The node's modifier of that name (`$b.bend`); nullopt when none.
std::optional<Value> ModifierByName(INode* node, const std::wstring& name);

// ---- Where nodes are: `.pivot`, `.boundingBox`, `.min`, `.max`, `.center`; nullopt / false for other names.
std::optional<Value> GetNodeSpatialProperty(CallContext& ctx, INode* node, const std::wstring& name);
bool SetNodeSpatialProperty(CallContext& ctx, INode* node, const std::wstring& name, const Value& v);
// `.center`, `.min`, `.max` of a group of nodes (the world box around their objects).
std::optional<Value> NodeGroupProperty(CallContext& ctx, const std::vector<INode*>& nodes, const std::wstring& name);

// Colours: script colours have components 0..255, host colours 0..1.
Value ColorValue(const Point3& c);
Point3 ColorArg(const Value& v);

}  // namespace hostrt::mxs
