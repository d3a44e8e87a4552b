// INode: an item of the scene graph. A node has a name, a handle, a parent and children, an object (the top
// of its object chain), a transform controller evaluated relative to its parent, a material, a layer, and the
// display, render, user and bone properties the user edits. Nodes are made and kept by the scene.
#pragma once

#include "control.h"
#include "geom.h"
#include "ref.h"

class Object;
class IDerivedObject;
class Mtl;
class ILayer;

// Reference slots of a node.
#define NODE_TM_REF 0         // transform controller
#define NODE_OBJECT_REF 1     // object (the top of the object chain)
#define NODE_MTL_REF 2        // material
#define NODE_VIS_REF 3        // visibility controller
#define NODE_LAYER_REF 4      // layer
#define NODE_IMBLUR_REF 5     // image motion-blur multiplier controller
#define NODE_OBJBLUR_REF 6    // object motion-blur on/off controller
#define NODE_NUM_REFS 7

// The node's own display switches (GetDisplayFlag/SetDisplayFlag); two more are reached through the node
// extension interfaces. Changing one broadcasts 199 and sends 577.
enum NodeDisplayFlag {
    NODE_DISP_BOX_MODE = 0,
    NODE_DISP_ALL_EDGES,
    NODE_DISP_VERT_TICKS,
    NODE_DISP_BACKFACE_CULL,
    NODE_DISP_TRAJECTORY,
    NODE_DISP_SEE_THROUGH,       // xray
    NODE_DISP_IGNORE_EXTENTS,
    NODE_DISP_FROZEN_IN_GRAY,    // show frozen in gray
    NODE_DISP_VERTEX_COLORS,
    NODE_DISP_SHADED_VERT_COLORS,
    NODE_DISP_NUM_FLAGS
};
// Two one-byte display values (GetDisplayValue/SetDisplayValue): the vertex-colour channel and the display
// as-box threshold.
#define NODE_DISP_NUM_VALUES 2

// Node render switches (GetRenderFlag/SetRenderFlag). Changing one sends 568 and broadcasts 197.
enum NodeRenderFlag {
    NODE_REND_RENDERABLE = 0,
    NODE_REND_CAST_SHADOWS,
    NODE_REND_RECEIVE_SHADOWS,
    NODE_REND_APPLY_ATMOSPHERICS,
    NODE_REND_INHERIT_VISIBILITY,
    NODE_REND_PRIMARY_VISIBILITY,
    NODE_REND_SECONDARY_VISIBILITY,
    NODE_REND_RENDER_OCCLUDED,
    NODE_REND_MOTION_BLUR,
    NODE_REND_NUM_FLAGS
};
// Node render values (GetRenderValue/SetRenderValue): 32-bit values such as the G-buffer channel, the motion-blur
// kind, the image motion-blur multiplier (as float bits). Changing one sends 576 and broadcasts 197.
#define NODE_REND_NUM_VALUES 5

// Bone switches and settings (bone on/off is separate).
enum NodeBoneFlag { NODE_BONE_AUTO_ALIGN = 0, NODE_BONE_FREEZE_LENGTH, NODE_BONE_SHOW_AS_LINE, NODE_BONE_NUM_FLAGS };
#define NODE_BONE_NUM_VALUES 2  // axis and stretch kind, one byte each

// Transform lock types and axes (GetTransformLock/SetTransformLock).
#define INODE_LOCKPOS 0
#define INODE_LOCKROT 1
#define INODE_LOCKSCL 2
#define INODE_LOCK_X 0
#define INODE_LOCK_Y 1
#define INODE_LOCK_Z 2

class INode : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return BASENODE_CLASS_ID; }

    // Identity. Names may repeat; a rename broadcasts 153 {old name, new name, node} and is undoable.
    virtual const MCHAR* GetName() = 0;
    virtual void SetName(const MCHAR* name) = 0;
    virtual ULONG GetHandle() = 0;
    // True for the scene root and for the tree roots of external-scene entries.
    virtual BOOL IsRootNode() = 0;

    // Hierarchy. Children keep a stable order. Linking broadcasts 59 with the child.
    virtual INode* GetParentNode() = 0;
    virtual int NumberOfChildren() = 0;
    virtual INode* GetChildNode(int i) = 0;
    // Makes node the last child of this node; keepTM keeps its world transform.
    virtual void AttachChild(INode* node, int keepTM = 1) = 0;
    // Links this node to its scene root at time t.
    virtual void Detach(TimeValue t, int keepTM = 1) = 0;

    // Object chain: the object reference is the top of the object-space chain (an object or a derived object);
    // the world-space derived object, when there is one, sits above it.
    virtual Object* GetObjectRef() = 0;
    virtual void SetObjectRef(Object* obj) = 0;
    virtual Object* GetObjOrWSMRef() = 0;
    virtual IDerivedObject* GetWSMDerivedObject() = 0;
    virtual IDerivedObject* CreateWSMDerivedObject() = 0;
    // The object below every derived object; it decides the node's kind.
    virtual Object* GetBaseObject() = 0;

    // Controllers and transforms. GetNodeTM evaluates the transform controller relative to the parent's world
    // transform (identity under a root).
    virtual Control* GetTMController() = 0;
    virtual BOOL SetTMController(Control* c) = 0;
    virtual Control* GetVisController() = 0;
    virtual void SetVisController(Control* c) = 0;
    virtual Control* GetImageBlurMultController() = 0;
    virtual void SetImageBlurMultController(Control* c) = 0;
    virtual Control* GetMotBlurOnOffController() = 0;
    virtual void SetMotBlurOnOffController(Control* c) = 0;
    virtual Matrix3 GetNodeTM(TimeValue t, Interval* valid = nullptr) = 0;
    virtual void SetNodeTM(TimeValue t, Matrix3& tm) = 0;
    virtual Matrix3 GetParentTM(TimeValue t) = 0;
    // Node transform with the object offset applied.
    virtual Matrix3 GetObjectTM(TimeValue t, Interval* valid = nullptr) = 0;

    // Object offset.
    virtual Point3 GetObjOffsetPos() = 0;
    virtual void SetObjOffsetPos(Point3 p) = 0;
    virtual Quat GetObjOffsetRot() = 0;
    virtual void SetObjOffsetRot(Quat q) = 0;
    virtual ScaleValue GetObjOffsetScale() = 0;
    virtual void SetObjOffsetScale(ScaleValue sv) = 0;

    // Material (565 to dependents), wire colour (528), layer (broadcast 150).
    virtual Mtl* GetMtl() = 0;
    virtual void SetMtl(Mtl* mtl) = 0;
    virtual DWORD GetWireColor() = 0;
    virtual void SetWireColor(DWORD color) = 0;
    virtual ILayer* GetLayer() = 0;

    // Hidden and frozen: 577 to dependents with part 0x1 (hidden) or 0x2 (frozen); broadcast 199.
    virtual int IsHidden(DWORD hflags = 0, BOOL forRenderer = FALSE) = 0;
    virtual void Hide(BOOL onOff) = 0;
    virtual int IsFrozen() = 0;
    virtual void Freeze(BOOL onOff) = 0;
    virtual int Selected() = 0;

    // Display and render properties (see the enums above).
    virtual BOOL GetDisplayFlag(int which) = 0;
    virtual void SetDisplayFlag(int which, BOOL onOff) = 0;
    virtual BYTE GetDisplayValue(int which) = 0;
    virtual void SetDisplayValue(int which, BYTE value) = 0;
    virtual BOOL GetRenderFlag(int which) = 0;
    virtual void SetRenderFlag(int which, BOOL onOff) = 0;
    virtual DWORD GetRenderValue(int which) = 0;
    virtual void SetRenderValue(int which, DWORD value) = 0;

    // User properties: one text; 132 broadcast after a change.
    virtual void GetUserPropBuffer(MSTR& buf) = 0;
    virtual void SetUserPropBuffer(const MSTR& buf) = 0;
    virtual BOOL GetUserPropString(const MSTR& key, MSTR& value) = 0;
    virtual void SetUserPropString(const MSTR& key, const MSTR& value) = 0;

    // Bone properties: 130 broadcast after a change.
    virtual BOOL GetBoneNodeOnOff() = 0;
    virtual void SetBoneNodeOnOff(BOOL onOff, TimeValue t) = 0;
    virtual BOOL GetBoneFlag(int which) = 0;
    virtual void SetBoneFlag(int which, BOOL onOff) = 0;
    virtual BYTE GetBoneValue(int which) = 0;
    virtual void SetBoneValue(int which, BYTE value) = 0;

    // Transform locks.
    virtual BOOL GetTransformLock(int type, int axis) = 0;
    virtual void SetTransformLock(int type, int axis, BOOL onOff) = 0;

    // Group state; a change reaches the scene-event manager's group-changed callbacks.
    virtual BOOL IsGroupMember() = 0;
    virtual BOOL IsGroupHead() = 0;
    virtual BOOL IsOpenGroupMember() = 0;
    virtual BOOL IsOpenGroupHead() = 0;
    virtual void SetGroupMember(BOOL b) = 0;
    virtual void SetGroupHead(BOOL b) = 0;
    virtual void SetGroupMemberOpen(BOOL b) = 0;
    virtual void SetGroupHeadOpen(BOOL b) = 0;
};

// Nodes of the scene: an interface of scene-wide queries lives on Interface (maxapi.h).
#define INODE_SKINPOSE_INTERFACE Interface_ID(0x37FF3962, 0x66F226DE)
#define NODE_RENDERPROPS_INTERFACE Interface_ID(0x3B8525B5, 0x7FD53834)
#define NODE_EXTENSION1_INTERFACE Interface_ID(0x6B071E99, 0x44EF2511)
#define NODE_EXTENSION2_INTERFACE Interface_ID(0x6B071E44, 0x44E025F8)
