// Objects and modifier stacks: the objects a node can hold (geometry, shapes, lights, cameras, helpers, space
// warps), derived objects that stack modifiers on an object, modifiers and their contexts.
#pragma once

#include "control.h"
#include "geom.h"
#include "ref.h"

class INode;
class IDerivedObject;
class CreateMouseCallBack;

// Numeric interface answered by particle systems.
#define I_PARTICLEOBJ 0x000010D0

// Reference messages of modifiers and derived objects.
#ifndef REFMSG_NODE_NAMECHANGE
#define REFMSG_NODE_NAMECHANGE 0x000000F7  // 247: a name changed (modifier, material)
#endif
#ifndef REFMSG_MODIFIER_NAME_CHANGED
#define REFMSG_MODIFIER_NAME_CHANGED 0x00000285  // 645: a modifier's name changed (sent after 247)
#endif
#ifndef REFMSG_MODIFIER_STACK_CHANGED
#define REFMSG_MODIFIER_STACK_CHANGED 0x000000F9  // 249: a modifier was added, deleted or replaced
#endif
// Part of the REFMSG_CHANGE that follows a structural change of an object chain.
#define PART_OBJECT_CHAIN 0x800037FF

// Anything that can sit in an object chain: objects and modifiers.
class BaseObject : public ReferenceTarget {
public:
    // The name shown to the user; the class name unless a class says otherwise.
    virtual MSTR GetObjectName(bool localized = true);
    virtual CreateMouseCallBack* GetCreateMouseCallBack() { return nullptr; }
};

class Object : public BaseObject {
public:
    // The object below every derived object (this object when it is no derived object).
    virtual Object* FindBaseObject() { return this; }
    virtual Interval ObjectValidity(TimeValue t) { return FOREVER; }
    BOOL IsParticleSystem() { return GetInterface(I_PARTICLEOBJ) != nullptr; }
};

class GeomObject : public Object {
public:
    SClass_ID SuperClassID() override { return GEOMOBJECT_CLASS_ID; }
};

class ShapeObject : public GeomObject {
public:
    SClass_ID SuperClassID() override { return SHAPE_CLASS_ID; }
};

class HelperObject : public Object {
public:
    SClass_ID SuperClassID() override { return HELPER_CLASS_ID; }
};

class CameraObject : public Object {
public:
    SClass_ID SuperClassID() override { return CAMERA_CLASS_ID; }
};

class WSMObject : public Object {
public:
    SClass_ID SuperClassID() override { return WSM_OBJECT_CLASS_ID; }
};

// The include/exclude list of a light. Its nodes are references of the light, so a deleted node leaves an
// empty entry (null) behind until it is removed.
class ExclList {
public:
    virtual ~ExclList() = default;
    virtual int Count() = 0;
    virtual INode* operator[](int i) = 0;
    virtual int FindNode(INode* node) = 0;  // -1 when absent
    virtual int AddNode(INode* node) = 0;   // answers the index
    virtual void RemoveNode(int i) = 0;
    virtual void RemoveNode(INode* node) = 0;
    // Include (TRUE) or exclude (FALSE) list.
    virtual BOOL IsInclude() = 0;
    virtual void SetInclude(BOOL include) = 0;
};

class LightObject : public Object {
public:
    SClass_ID SuperClassID() override { return LIGHT_CLASS_ID; }
    // The light's include/exclude list; null for lights without one.
    virtual ExclList* GetExclList() { return nullptr; }
};

// Where a modifier applies: a transform and a box (either may be absent) and the modifier's local data.
class ModContext {
public:
    ModContext() = default;
    ModContext(Matrix3* tm, Box3* box, void* localData = nullptr);  // copies tm and box
    ModContext(const ModContext& other);
    ModContext& operator=(const ModContext& other);
    ~ModContext();

    Matrix3* tm = nullptr;
    Box3* box = nullptr;
    void* localData = nullptr;
};

// A modifier: a named item of a modifier stack with three toggles. A rename sends 247 and 645 to the
// dependents; a toggle change sends 80.
class Modifier : public BaseObject {
public:
    // The name the user sees; the class name until it is set. Several modifiers may share a name.
    virtual MSTR GetName(bool localized = true);
    virtual void SetName(const MSTR& name);

    BOOL IsEnabled() { return on_; }
    void EnableMod() { setToggle(on_, true); }
    void DisableMod() { setToggle(on_, false); }
    BOOL IsEnabledInViews() { return inViews_; }
    void EnableModInViews() { setToggle(inViews_, true); }
    void DisableModInViews() { setToggle(inViews_, false); }
    BOOL IsEnabledInRender() { return inRender_; }
    void EnableModInRender() { setToggle(inRender_, true); }
    void DisableModInRender() { setToggle(inRender_, false); }

protected:
    // Saves and loads the name and toggles (chunks 0x4000 and 0x4001); subclasses call these from Save and
    // Load (Load: for chunks it does not know itself, LoadModifierChunk answers whether it took the chunk).
    IOResult SaveModifier(ISave* isave);
    bool LoadModifierChunk(ILoad* iload, IOResult& res);
    // Copies name and toggles to a clone.
    void CopyModifierState(Modifier* to);

private:
    class StateRestore;
    void setToggle(bool& toggle, bool on);
    MSTR name_;
    bool named_ = false;
    bool on_ = true, inViews_ = true, inRender_ = true;
};

class OSModifier : public Modifier {
public:
    SClass_ID SuperClassID() override { return OSM_CLASS_ID; }
};

class WSModifier : public Modifier {
public:
    SClass_ID SuperClassID() override { return WSM_CLASS_ID; }
};

// A derived object stacks modifiers on the object it references. Modifier index 0 is the top of the stack.
// Adding, deleting or replacing a modifier makes the nodes that use the derived object send 249 and 80 (part
// 0x800037FF) to their dependents.
class IDerivedObject : public Object {
public:
    SClass_ID SuperClassID() override { return GEN_DERIVOB_CLASS_ID; }
    virtual bool IsWorldSpace() = 0;
    virtual int NumModifiers() = 0;
    virtual Modifier* GetModifier(int index) = 0;
    virtual ModContext* GetModContext(int index) = 0;
    // Inserts mod in front of position before (0 = on top); a null context gets an empty one.
    virtual void AddModifier(Modifier* mod, ModContext* mc = nullptr, int before = 0) = 0;
    virtual void DeleteModifier(int index = 0) = 0;
    virtual void SetModifier(int index, Modifier* mod) = 0;
    // The object below; may be another derived object.
    virtual Object* GetObjRef() = 0;
    virtual RefResult ReferenceObject(Object* obj) = 0;
    Object* FindBaseObject() override;
};

// Broadcast around the host's modifier operations (Interface::AddModifier/DeleteModifier); call parameter: a
// NotifyModAddDelParam.
#define NOTIFY_PRE_MODIFIER_ADDED 0x00000071
#define NOTIFY_POST_MODIFIER_ADDED 0x00000072
#define NOTIFY_PRE_MODIFIER_DELETED 0x00000073
#define NOTIFY_POST_MODIFIER_DELETED 0x00000074
struct NotifyModAddDelParam {
    INode* node;
    Modifier* mod;
    ModContext* mc;
};

// A new object-space (or world-space) derived object over obj.
IDerivedObject* CreateDerivedObject(Object* obj = nullptr);
IDerivedObject* CreateWSDerivedObject(Object* obj = nullptr);
