// hostrt::Node, the host's INode: a named item of the scene graph with a 32-bit handle, a parent and ordered
// children (host links, not references), the seven node references of inode.h and every node property with
// the messages, notifications and node events its changes send.
#pragma once

#include "inode.h"
#include "io/scene_links.h"
#include "ioapi.h"
#include "scene/scene_events.h"

#include <memory>
#include <optional>
#include <vector>

namespace hostrt {

class NodeExtensions;

class Node : public INode, public ISceneLinks {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530001, 0x00000001);

    // A node outside any tree; it joins the scene node container. With loading set, its state comes from Load.
    explicit Node(bool loading = false);
    // A root node: the scene root or the tree root of an external-scene entry. Roots are not in the container.
    static Node* MakeRoot(const MSTR& name);
    ~Node() override;

    // The node of a handle; null when there is none or it is being deleted.
    static Node* ByHandle(ULONG handle);
    static Node* From(INode* node) { return dynamic_cast<Node*>(node); }

    // ---- Host side of the graph.
    Node* Parent() const { return parent_; }
    const std::vector<Node*>& Children() const { return children_; }
    // The root above this node (this node for a root; null for a node outside any tree).
    Node* TreeRoot();
    // Whether node is this node or one of its ancestors.
    bool IsSelfOrAncestor(const Node* node) const;
    // Makes child the last child of this node, without messages, notifications or transform changes.
    void LinkChild(Node* child);
    // Makes child child number index of this node (the last one when index is out of range), likewise silently.
    void LinkChildAt(Node* child, int index);
    // Position of child among this node's children, -1 when it is none of them.
    int ChildIndex(const Node* child) const;
    // Takes this node out of its parent's children, without messages.
    void Unlink();
    // For a temporary root made to save some nodes: the children its save writes. The nodes keep their real
    // parents.
    void SetSavedChildren(std::vector<Node*> nodes) { children_ = std::move(nodes); }
    // Names a node that is not in the scene yet, without notifications or undo.
    void InitName(const MSTR& name) { assignName(name); }
    bool IsDeleted() const { return TestAFlag(A_IS_DELETED) != FALSE; }
    // Selection state, kept in step with the scene's selection list by the scene.
    void SetSelectedFlag(bool on) { selected_ = on; }
    // Roles of the scene parts that follow the scene root in a scene file (kept by the scene root only).
    std::vector<int>& PartRoles() { return partRoles_; }
    // The scene's animation range as a scene file holds it (kept by the scene root only; none: the default).
    std::optional<Interval>& SceneAnimRange() { return sceneAnimRange_; }
    // External-scene entries of a root node.
    struct XRefEntry {
        MaxSDK::AssetManagement::AssetUser asset;
        Node* tree = nullptr;
    };
    std::vector<XRefEntry>& XRefEntries() { return xrefs_; }
    // The slot of this node in the scene node container, -1 when it is not there.
    int containerSlot = -1;

    // ---- Animatable, references, persistence.
    Class_ID ClassID() override { return kClassID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Node"; }
    int NumSubs() override { return kNumSubs; }
    Animatable* SubAnim(int i) override;
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override;
    BOOL CanAssignController(int subAnim) override;
    BOOL AssignController(Animatable* control, int subAnim) override;
    BaseInterface* GetInterface(Interface_ID id) override;
    using INode::GetInterface;

    int NumRefs() override { return NODE_NUM_REFS; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    // Nodes are owned by the scene: they never delete themselves when their last dependent lets go.
    RefResult MaybeAutoDelete() override { return REF_FAIL; }
    RefTargetHandle Clone(RemapDir& remap) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

    // Links: the children, in order.
    int NumLinks() override { return int(children_.size()); }
    ReferenceTarget* GetLink(int i) override;
    void SetLink(int i, ReferenceTarget* target) override;

    // ---- INode.
    const MCHAR* GetName() override { return name_.data(); }
    void SetName(const MCHAR* name) override;
    ULONG GetHandle() override { return handle_; }
    BOOL IsRootNode() override { return isRoot_; }

    INode* GetParentNode() override { return parent_; }
    int NumberOfChildren() override { return int(children_.size()); }
    INode* GetChildNode(int i) override;
    void AttachChild(INode* node, int keepTM = 1) override;
    void Detach(TimeValue t, int keepTM = 1) override;

    Object* GetObjectRef() override;
    void SetObjectRef(Object* obj) override;
    Object* GetObjOrWSMRef() override;
    IDerivedObject* GetWSMDerivedObject() override;
    IDerivedObject* CreateWSMDerivedObject() override;
    Object* GetBaseObject() override;

    Control* GetTMController() override;
    BOOL SetTMController(Control* c) override;
    Control* GetVisController() override;
    void SetVisController(Control* c) override;
    Control* GetImageBlurMultController() override;
    void SetImageBlurMultController(Control* c) override;
    Control* GetMotBlurOnOffController() override;
    void SetMotBlurOnOffController(Control* c) override;
    Matrix3 GetNodeTM(TimeValue t, Interval* valid = nullptr) override;
    void SetNodeTM(TimeValue t, Matrix3& tm) override;
    Matrix3 GetParentTM(TimeValue t) override;
    Matrix3 GetObjectTM(TimeValue t, Interval* valid = nullptr) override;

    Point3 GetObjOffsetPos() override { return offsetPos_; }
    void SetObjOffsetPos(Point3 p) override;
    Quat GetObjOffsetRot() override { return offsetRot_; }
    void SetObjOffsetRot(Quat q) override;
    ScaleValue GetObjOffsetScale() override { return offsetScale_; }
    void SetObjOffsetScale(ScaleValue sv) override;

    Mtl* GetMtl() override;
    void SetMtl(Mtl* mtl) override;
    DWORD GetWireColor() override { return wireColor_; }
    void SetWireColor(DWORD color) override;
    ILayer* GetLayer() override;

    int IsHidden(DWORD hflags = 0, BOOL forRenderer = FALSE) override { return hidden_; }
    void Hide(BOOL onOff) override;
    int IsFrozen() override { return frozen_; }
    void Freeze(BOOL onOff) override;
    int Selected() override { return selected_; }

    BOOL GetDisplayFlag(int which) override;
    void SetDisplayFlag(int which, BOOL onOff) override;
    BYTE GetDisplayValue(int which) override;
    void SetDisplayValue(int which, BYTE value) override;
    BOOL GetRenderFlag(int which) override;
    void SetRenderFlag(int which, BOOL onOff) override;
    DWORD GetRenderValue(int which) override;
    void SetRenderValue(int which, DWORD value) override;

    void GetUserPropBuffer(MSTR& buf) override { buf = userProps_; }
    void SetUserPropBuffer(const MSTR& buf) override;
    BOOL GetUserPropString(const MSTR& key, MSTR& value) override;
    void SetUserPropString(const MSTR& key, const MSTR& value) override;

    BOOL GetBoneNodeOnOff() override { return bone_.on; }
    void SetBoneNodeOnOff(BOOL onOff, TimeValue t) override;
    BOOL GetBoneFlag(int which) override;
    void SetBoneFlag(int which, BOOL onOff) override;
    BYTE GetBoneValue(int which) override;
    void SetBoneValue(int which, BYTE value) override;

    BOOL GetTransformLock(int type, int axis) override;
    void SetTransformLock(int type, int axis, BOOL onOff) override;

    BOOL IsGroupMember() override { return groupBit(kGroupMember); }
    BOOL IsGroupHead() override { return groupBit(kGroupHead); }
    BOOL IsOpenGroupMember() override { return groupBit(kOpenGroupMember); }
    BOOL IsOpenGroupHead() override { return groupBit(kOpenGroupHead); }
    void SetGroupMember(BOOL b) override { setGroupBit(kGroupMember, b); }
    void SetGroupHead(BOOL b) override { setGroupBit(kGroupHead, b); }
    void SetGroupMemberOpen(BOOL b) override { setGroupBit(kOpenGroupMember, b); }
    void SetGroupHeadOpen(BOOL b) override { setGroupBit(kOpenGroupHead, b); }

    INode* GetTarget() override;
    INode* GetLookatNode() override;

    BOOL AddNewXRefFile(const MaxSDK::AssetManagement::AssetUser& file, BOOL loadNow = TRUE,
                        BOOL hideInManagerUI = FALSE) override;
    BOOL AddNewXRefFile(const MCHAR* file) override;
    int GetXRefFileCount() override { return int(xrefs_.size()); }
    MaxSDK::AssetManagement::AssetUser GetXRefAsset(int i) override;
    MSTR GetXRefFile(int i) override;
    INode* GetXRefTree(int i) override;
    BOOL DeleteXRefFile(int i) override;

private:
    friend class NodeExtensions;
    static constexpr int kNumSubs = 7;
    static constexpr DWORD kGroupMember = 0x1, kGroupHead = 0x2, kOpenGroupMember = 0x4, kOpenGroupHead = 0x8;

    // Property state; the extension interfaces read and write it too.
    struct RenderState {
        DWORD flags = 0;          // NODE_REND_NUM_FLAGS node switches
        DWORD propSwitches = 0;   // the render-properties interface's switches
        DWORD extSwitches = 0;    // the second extension's switches
        DWORD values[NODE_REND_NUM_VALUES] = {};
        DWORD propValues[NODE_RENDERPROPS_NUM_VALUES] = {};
        bool operator==(const RenderState&) const = default;
    };
    struct DisplayState {
        DWORD flags = 0;  // NODE_DISP_NUM_FLAGS node switches, then bit 30 extension 1, bit 31 extension 2
        BYTE values[NODE_DISP_NUM_VALUES] = {};
        bool operator==(const DisplayState&) const = default;
    };
    struct BoneState {
        BOOL on = FALSE;
        DWORD flags = 0;
        BYTE values[NODE_BONE_NUM_VALUES] = {};
        bool operator==(const BoneState&) const = default;
    };
    struct SkinPose {
        Point3 pos;
        Quat rot;
        Point3 scale{1.f, 1.f, 1.f};
        Quat scaleOrient;
        bool operator==(const SkinPose&) const = default;
    };
    static constexpr DWORD kDispExt1 = 1u << 30, kDispExt2 = 1u << 31;

    void copyPropertiesTo(Node* to) const;
    Control* controllerAt(int ref);
    void setController(int ref, Control* c);
    void setDisplay(const DisplayState& s, DWORD part);
    void setRender(const RenderState& s, RefMessage msg);
    void setBone(const BoneState& s);
    void setSkinPose(const SkinPose& s);
    void setOffset(const Point3& p, const Quat& q, const ScaleValue& s);
    void setLocks(DWORD locks);
    void setGroupBit(DWORD bit, BOOL on);
    BOOL groupBit(DWORD bit) const { return (groupFlags_ & bit) ? TRUE : FALSE; }
    void setHidden(bool on);
    void setFrozen(bool on);
    // Common tail of a property change: the save-required flag and the node event.
    void changed(NodeEvent kind);
    void broadcastTable(int code);
    void broadcastProperty(int code, int propertyId);
    void attachTo(Node* parent, bool keepTM, TimeValue t);

    MSTR name_;  // changed only through assignName, which keeps the name index current
    void assignName(const MSTR& name);
    ULONG handle_ = 0;
    bool isRoot_ = false;
    bool loading_ = false;
    Node* parent_ = nullptr;
    std::vector<Node*> children_;
    RefTargetHandle refs_[NODE_NUM_REFS] = {};

    DWORD wireColor_ = 0;
    BOOL hidden_ = FALSE, frozen_ = FALSE, selected_ = FALSE;
    DisplayState display_;
    RenderState render_;
    MSTR userProps_;
    BoneState bone_;
    Point3 offsetPos_;
    Quat offsetRot_;
    ScaleValue offsetScale_;
    DWORD locks_ = 0;
    DWORD groupFlags_ = 0;
    SkinPose skin_;

    std::vector<int> partRoles_;
    std::optional<Interval> sceneAnimRange_;
    std::vector<XRefEntry> xrefs_;
    std::unique_ptr<NodeExtensions> ext_;

    struct PostLoad : PostLoadCallback {
        Node* node = nullptr;
        void proc(ILoad* iload) override;
    } postLoad_;
};

// Registers the node and scene node container classes. Idempotent.
void RegisterNodeClasses();

}  // namespace hostrt
