// INode: an item of the scene graph. A node has a name, a handle, a parent and children, an object (the top
// of its object chain), a transform controller evaluated relative to its parent, a material, a layer, and the
// display, render, user and bone properties the user edits. Nodes are made and kept by the scene.
#pragma once

#include "assetmanagement.h"
#include "baseinterface.h"
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
// Two one-byte display values (GetDisplayValue/SetDisplayValue): what the vertex colours show (0 colour,
// 1 illumination, 2 alpha, 3 colour plus illumination, 4 soft selection, 5 a map channel) and that map channel.
#define NODE_DISP_VALUE_VERTEX_COLOR_TYPE 0
#define NODE_DISP_VALUE_VERTEX_COLOR_CHANNEL 1
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
// Node render values (GetRenderValue/SetRenderValue), 32 bits each. Changing one sends 576 and broadcasts 197.
#define NODE_REND_VALUE_GBUFFER_CHANNEL 0    // the object channel of the G-buffer
#define NODE_REND_VALUE_MOTION_BLUR 1        // 0 none, 1 object, 2 image
#define NODE_REND_VALUE_IMAGE_BLUR_MULT 2    // the image motion-blur multiplier, as float bits
#define NODE_REND_VALUE_BLUR_SAMPLES 3       // motion-blur samples
#define NODE_REND_VALUE_BLUR_DURATION 4      // motion-blur duration in frames, as float bits
#define NODE_REND_NUM_VALUES 5

// Bone switches and settings (bone on/off is separate).
enum NodeBoneFlag { NODE_BONE_AUTO_ALIGN = 0, NODE_BONE_FREEZE_LENGTH, NODE_BONE_AXIS_FLIP, NODE_BONE_NUM_FLAGS };
// Bone settings, one byte each: the stretch axis (0 x, 1 y, 2 z) and the stretch kind (0 scale, 1 squash, 2 none).
#define NODE_BONE_VALUE_AXIS 0
#define NODE_BONE_VALUE_SCALE_TYPE 1
#define NODE_BONE_NUM_VALUES 2

// Transform lock types and axes (GetTransformLock/SetTransformLock).
#define INODE_LOCKPOS 0
#define INODE_LOCKROT 1
#define INODE_LOCKSCL 2
#define INODE_LOCK_X 0
#define INODE_LOCK_Y 1
#define INODE_LOCK_Z 2

// Reference messages a node sends to its dependents (besides those of its object and controllers, which pass
// through the node with the node as the changed target).
#ifndef REFMSG_CONTROLREF_CHANGE
#define REFMSG_CONTROLREF_CHANGE 0x000000FA           // 250: a controller or the object of a slot was replaced
#endif
#ifndef REFMSG_NODE_WIRECOLOR_CHANGED
#define REFMSG_NODE_WIRECOLOR_CHANGED 0x00000210      // 528
#endif
#ifndef REFMSG_NODE_MATERIAL_CHANGED
#define REFMSG_NODE_MATERIAL_CHANGED 0x00000235       // 565
#endif
#ifndef REFMSG_NODE_RENDERING_PROP_CHANGED
#define REFMSG_NODE_RENDERING_PROP_CHANGED 0x00000238  // 568: a render switch
#endif
#ifndef REFMSG_NODE_RENDERING_VALUE_CHANGED
#define REFMSG_NODE_RENDERING_VALUE_CHANGED 0x00000240  // 576: a render value
#endif
#ifndef REFMSG_NODE_DISPLAY_PROP_CHANGED
#define REFMSG_NODE_DISPLAY_PROP_CHANGED 0x00000241   // 577, part: which display property
#endif
// Parts of REFMSG_NODE_DISPLAY_PROP_CHANGED: hidden, frozen; 0 for every other display property.
#define NODE_DISPLAY_PART_HIDDEN 0x1
#define NODE_DISPLAY_PART_FROZEN 0x2

// Notifications about nodes (BroadcastNotification). Call parameters in brackets.
#ifndef NOTIFY_NODE_LINKED
#define NOTIFY_NODE_LINKED 0x0000003B                 // 59: a node got a new parent [the node]
#endif
#ifndef NOTIFY_NODE_CREATED
#define NOTIFY_NODE_CREATED 0x00000040                // 64: a node was made [the node]; also sent on unfreeze
#endif
#ifndef NOTIFY_NODE_UNFREEZE
#define NOTIFY_NODE_UNFREEZE 0x00000040               // 64 [the node]
#endif
#ifndef NOTIFY_SCENE_ADDED_NODE
#define NOTIFY_SCENE_ADDED_NODE 0x00000043            // 67: a node entered the scene (create, clone, merge) [the node]
#endif
#ifndef NOTIFY_SCENE_PRE_DELETED_NODE
#define NOTIFY_SCENE_PRE_DELETED_NODE 0x00000044      // 68: a node is about to be deleted [the node]
#endif
#ifndef NOTIFY_SCENE_POST_DELETED_NODE
#define NOTIFY_SCENE_POST_DELETED_NODE 0x00000045     // 69: a node was deleted [null]
#endif
#ifndef NOTIFY_POST_NODE_BONE_PROP_CHANGED
#define NOTIFY_POST_NODE_BONE_PROP_CHANGED 0x00000082     // 130 [INodeTab*]
#endif
#ifndef NOTIFY_POST_NODE_USER_PROP_CHANGED
#define NOTIFY_POST_NODE_USER_PROP_CHANGED 0x00000084     // 132 [INodeTab*]
#endif
#ifndef NOTIFY_NODE_RENAMED
#define NOTIFY_NODE_RENAMED 0x00000099                    // 153 [NameChange*]
#endif
#ifndef NOTIFY_POST_NODE_RENDER_PROP_CHANGED
#define NOTIFY_POST_NODE_RENDER_PROP_CHANGED 0x000000C5   // 197 [INodeTab*]
#endif
#ifndef NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED
#define NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED 0x000000C7  // 199 [INodeTab*]
#endif
#ifndef NOTIFY_NODE_PROPERTY_CHANGED
#define NOTIFY_NODE_PROPERTY_CHANGED 0x000000D5           // 213 [NodePropertyChange*]
#endif
#ifndef NOTIFY_NODE_STRUCTURE_CHANGED
#define NOTIFY_NODE_STRUCTURE_CHANGED 0x000000D6          // 214 [NodePropertyChange*]
#endif

class INode;

// Call parameter of NOTIFY_NODE_RENAMED. The texts are valid during the broadcast only.
struct NameChange {
    const MCHAR* oldName;
    const MCHAR* newName;
    INode* node;
};

// Call parameter of NOTIFY_NODE_PROPERTY_CHANGED (213: a property without a notification of its own changed)
// and NOTIFY_NODE_STRUCTURE_CHANGED (214: a controller or the object of the node was replaced; the property id
// is then NODE_PROP_STRUCTURE).
struct NodePropertyChange {
    INode* node;
    int propertyId;
};
#define NODE_PROP_OBJ_OFFSET 1
#define NODE_PROP_TRANSFORM_LOCKS 2
#define NODE_PROP_SKIN_POSE 3
#define NODE_PROP_GROUP 4
#define NODE_PROP_STRUCTURE 214

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

    // Look-at relation: the node this node's transform controller aims at, and the node whose transform
    // controller aims at this node; null when none.
    virtual INode* GetTarget() { return nullptr; }
    virtual INode* GetLookatNode() { return nullptr; }

    // External-scene entries, kept by the scene root (other nodes answer 0, null or FALSE). An entry is made
    // from an external-scene asset (kXRefAsset) without reading the file, becomes the last entry, and has a
    // tree root of its own (IsRootNode true) under which nodes can be attached. Entries and the nodes under
    // their trees are never written by a save. The name form makes the external-scene asset of that name;
    // loadNow and hideInManagerUI are accepted for the SDK's sake. An empty asset or an asset of another type
    // is refused (FALSE).
    virtual BOOL AddNewXRefFile(const MaxSDK::AssetManagement::AssetUser& file, BOOL loadNow = TRUE,
                                BOOL hideInManagerUI = FALSE) { return FALSE; }
    virtual BOOL AddNewXRefFile(const MCHAR* file) { return FALSE; }
    virtual int GetXRefFileCount() { return 0; }
    // The asset of entry i (the empty asset for a bad index) and its file name ("" for a bad index).
    virtual MaxSDK::AssetManagement::AssetUser GetXRefAsset(int i) { return {}; }
    virtual MSTR GetXRefFile(int i) { return MSTR(); }
    virtual INode* GetXRefTree(int i) { return nullptr; }
    virtual BOOL DeleteXRefFile(int i) { return FALSE; }
};

// Nodes of the scene: an interface of scene-wide queries lives on Interface (maxapi.h).
#define INODE_SKINPOSE_INTERFACE Interface_ID(0x37FF3962, 0x66F226DE)
#define NODE_RENDERPROPS_INTERFACE Interface_ID(0x3B8525B5, 0x7FD53834)
#define NODE_EXTENSION1_INTERFACE Interface_ID(0x6B071E99, 0x44EF2511)
#define NODE_EXTENSION2_INTERFACE Interface_ID(0x6B071E44, 0x44E025F8)

// Extension interfaces of a node, answered by INode::GetInterface(Interface_ID). Their setters send the same
// messages and notifications as the node's own properties of that kind.

// The skin pose: position, rotation, scale and scale orientation. No message.
class INodeSkinPose : public BaseInterface {
public:
    Interface_ID GetID() override { return INODE_SKINPOSE_INTERFACE; }
    virtual Point3 GetSkinPos() = 0;
    virtual void SetSkinPos(const Point3& p) = 0;
    virtual Quat GetSkinRot() = 0;
    virtual void SetSkinRot(const Quat& q) = 0;
    virtual Point3 GetSkinScale() = 0;
    virtual void SetSkinScale(const Point3& s) = 0;
    virtual Quat GetSkinScaleOrient() = 0;
    virtual void SetSkinScaleOrient(const Quat& q) = 0;
};

// Render properties (the node's global-illumination settings): ten switches (568 and 197 on change) and nine
// 32-bit values (576 and 197). Switches: excluded, occluder, receiver, diffuse, specular, excluded from regather,
// global mesh settings, meshing, illumination stored to the mesh, adaptive subdivision. Values: refine steps,
// refine steps done, mesh size, ray multiplier, minimum, maximum and initial mesh size (the sizes and the
// multiplier as float bits), contrast threshold (float bits), subdivision level.
#define NODE_RENDERPROPS_NUM_SWITCHES 10
#define NODE_RENDERPROPS_NUM_VALUES 9
class INodeRenderProperties : public BaseInterface {
public:
    Interface_ID GetID() override { return NODE_RENDERPROPS_INTERFACE; }
    virtual BOOL GetRenderSwitch(int which) = 0;
    virtual void SetRenderSwitch(int which, BOOL onOff) = 0;
    virtual DWORD GetRenderPropValue(int which) = 0;
    virtual void SetRenderPropValue(int which, DWORD value) = 0;
};

// First extension (display properties): one display switch, never degrade (577 part 0 and 199).
class INodeExtension1 : public BaseInterface {
public:
    Interface_ID GetID() override { return NODE_EXTENSION1_INTERFACE; }
    virtual BOOL GetDisplaySwitch() = 0;
    virtual void SetDisplaySwitch(BOOL onOff) = 0;
};

// Second extension (layer properties): one display switch, display by layer (577 part 0 and 199), and three
// render switches (568 and 197): render by layer, motion blur by layer, global illumination by layer.
#define NODE_EXTENSION2_NUM_RENDER_SWITCHES 3
class INodeExtension2 : public BaseInterface {
public:
    Interface_ID GetID() override { return NODE_EXTENSION2_INTERFACE; }
    virtual BOOL GetDisplaySwitch() = 0;
    virtual void SetDisplaySwitch(BOOL onOff) = 0;
    virtual BOOL GetRenderSwitch(int which) = 0;
    virtual void SetRenderSwitch(int which, BOOL onOff) = 0;
};
