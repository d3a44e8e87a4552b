// hostrt::Node property setters: each change records its undo step while the hold is holding, sends the
// node's reference message, broadcasts its notification, marks the scene changed and raises its node event.
// Also the node's extension interfaces and its external-scene entries.
#include "hold.h"
#include "imtl.h"
#include "maxapi.h"
#include "notify.h"
#include "scene/materials/material_library.h"
#include "scene/node.h"
#include "scene/node_extensions.h"
#include "scene/scene.h"

#include <functional>

namespace hostrt {

namespace {

// Undo record of one node property: the value before and after, put back through the node's own setter (so
// undo and redo send the same messages as the edit). Finds the node by handle, so a deleted node is skipped.
template <class T> class NodeValueRestore : public RestoreObj {
public:
    using Apply = void (*)(Node*, const T&);
    NodeValueRestore(Node* node, T before, T after, Apply apply, const MCHAR* what)
        : handle_(node->GetHandle()), before_(std::move(before)), after_(std::move(after)), apply_(apply),
          what_(what) {}
    void Restore(int) override { applyValue(before_); }
    void Redo() override { applyValue(after_); }
    MSTR Description() override { return MSTR(what_); }

private:
    void applyValue(const T& v) {
        if (Node* n = Node::ByHandle(handle_)) apply_(n, v);
    }
    ULONG handle_;
    T before_, after_;
    Apply apply_;
    const MCHAR* what_;
};

template <class T>
void recordChange(Node* node, const T& before, const T& after, void (*apply)(Node*, const T&), const MCHAR* what) {
    if (theHold.Holding()) theHold.Put(new NodeValueRestore<T>(node, before, after, apply, what));
}

bool validIndex(int which, int count) { return which >= 0 && which < count; }

DWORD withBit(DWORD word, DWORD bit, bool on) { return on ? (word | bit) : (word & ~bit); }

}  // namespace

// ---------------------------------------------------------------------------------------------- plumbing

void Node::changed(NodeEvent kind) {
    if (loading_) return;
    if (!isRoot_) Scene::Instance().SetSaveRequired(true);
    RaiseNodeEvent(kind, handle_);
}

void Node::broadcastTable(int code) {
    INodeTab nodes;
    nodes.Append(this);
    BroadcastNotification(code, &nodes);
}

void Node::broadcastProperty(int code, int propertyId) {
    NodePropertyChange change{this, propertyId};
    BroadcastNotification(code, &change);
}

// ------------------------------------------------------------------------------------------------ identity

void Node::SetName(const MCHAR* name) {
    const MSTR newName(name ? name : L"");
    if (newName == name_) return;
    NodeEventBatch batch;
    const MSTR oldName = name_;
    recordChange<MSTR>(this, oldName, newName, [](Node* n, const MSTR& v) { n->SetName(v.data()); }, L"Rename");
    assignName(newName);
    NameChange change{oldName.data(), name_.data(), this};
    BroadcastNotification(NOTIFY_NODE_RENAMED, &change);
    changed(NodeEvent::NameChanged);
}

// ------------------------------------------------------------------------------------- material, colour

void Node::SetMtl(Mtl* mtl) {
    if (refs_[NODE_MTL_REF] == mtl) return;
    NodeEventBatch batch;
    ReplaceReference(NODE_MTL_REF, mtl);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_NODE_MATERIAL_CHANGED);
    if (mtl) {
        Interval valid = FOREVER;
        mtl->Update(GetCOREInterface()->GetTime(), valid);
        // A material given to a node is a scene material.
        SceneMtlLibrary().Add(mtl);
    }
    changed(NodeEvent::MaterialStructured);
}

void Node::SetWireColor(DWORD color) {
    if (color == wireColor_) return;
    NodeEventBatch batch;
    recordChange<DWORD>(this, wireColor_, color, [](Node* n, const DWORD& v) { n->SetWireColor(v); }, L"Wire Color");
    wireColor_ = color;
    NotifyDependents(FOREVER, 0, REFMSG_NODE_WIRECOLOR_CHANGED);
    changed(NodeEvent::WireColorChanged);
}

// ----------------------------------------------------------------------------------- hidden and frozen

void Node::Hide(BOOL onOff) { setHidden(onOff != FALSE); }
void Node::Freeze(BOOL onOff) { setFrozen(onOff != FALSE); }

void Node::setHidden(bool on) {
    if (bool(hidden_) == on) return;
    NodeEventBatch batch;
    recordChange<bool>(this, !on, on, [](Node* n, const bool& v) { n->setHidden(v); }, L"Hide");
    hidden_ = on;
    // Hiding is not one of the display properties: its dependents hear it, the display-property listeners not.
    NotifyDependents(FOREVER, NODE_DISPLAY_PART_HIDDEN, REFMSG_NODE_DISPLAY_PROP_CHANGED);
    changed(NodeEvent::HideChanged);
}

void Node::setFrozen(bool on) {
    if (bool(frozen_) == on) return;
    NodeEventBatch batch;
    recordChange<bool>(this, !on, on, [](Node* n, const bool& v) { n->setFrozen(v); }, L"Freeze");
    frozen_ = on;
    NotifyDependents(FOREVER, NODE_DISPLAY_PART_FROZEN, REFMSG_NODE_DISPLAY_PROP_CHANGED);
    if (!on) BroadcastNotification(NOTIFY_NODE_UNFREEZE, static_cast<INode*>(this));
    changed(NodeEvent::FreezeChanged);
}

// ------------------------------------------------------------------------------------------------ display

void Node::setDisplay(const DisplayState& s, DWORD part) {
    if (s == display_) return;
    NodeEventBatch batch;
    recordChange<DisplayState>(this, display_, s, [](Node* n, const DisplayState& v) { n->setDisplay(v, 0); },
                               L"Display Properties");
    display_ = s;
    NotifyDependents(FOREVER, part, REFMSG_NODE_DISPLAY_PROP_CHANGED);
    broadcastTable(NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED);
    changed(NodeEvent::DisplayPropertiesChanged);
}

BOOL Node::GetDisplayFlag(int which) {
    return validIndex(which, NODE_DISP_NUM_FLAGS) && (display_.flags & (1u << which)) ? TRUE : FALSE;
}

void Node::SetDisplayFlag(int which, BOOL onOff) {
    if (!validIndex(which, NODE_DISP_NUM_FLAGS)) return;
    DisplayState s = display_;
    s.flags = withBit(s.flags, 1u << which, onOff != FALSE);
    setDisplay(s, 0);
}

BYTE Node::GetDisplayValue(int which) {
    return validIndex(which, NODE_DISP_NUM_VALUES) ? display_.values[which] : 0;
}

void Node::SetDisplayValue(int which, BYTE value) {
    if (!validIndex(which, NODE_DISP_NUM_VALUES)) return;
    DisplayState s = display_;
    s.values[which] = value;
    setDisplay(s, 0);
}

// ------------------------------------------------------------------------------------------------- render

void Node::setRender(const RenderState& s, RefMessage msg) {
    if (s == render_) return;
    NodeEventBatch batch;
    recordChange<RenderState>(
        this, render_, s,
        [](Node* n, const RenderState& v) {
            const bool values = std::equal(std::begin(v.values), std::end(v.values), std::begin(n->render_.values)) &&
                                std::equal(std::begin(v.propValues), std::end(v.propValues),
                                           std::begin(n->render_.propValues));
            n->setRender(v, values ? REFMSG_NODE_RENDERING_PROP_CHANGED : REFMSG_NODE_RENDERING_VALUE_CHANGED);
        },
        L"Render Properties");
    render_ = s;
    NotifyDependents(FOREVER, PART_ALL, msg);
    broadcastTable(NOTIFY_POST_NODE_RENDER_PROP_CHANGED);
    changed(NodeEvent::RenderPropertiesChanged);
}

BOOL Node::GetRenderFlag(int which) {
    return validIndex(which, NODE_REND_NUM_FLAGS) && (render_.flags & (1u << which)) ? TRUE : FALSE;
}

void Node::SetRenderFlag(int which, BOOL onOff) {
    if (!validIndex(which, NODE_REND_NUM_FLAGS)) return;
    RenderState s = render_;
    s.flags = withBit(s.flags, 1u << which, onOff != FALSE);
    setRender(s, REFMSG_NODE_RENDERING_PROP_CHANGED);
}

DWORD Node::GetRenderValue(int which) { return validIndex(which, NODE_REND_NUM_VALUES) ? render_.values[which] : 0; }

void Node::SetRenderValue(int which, DWORD value) {
    if (!validIndex(which, NODE_REND_NUM_VALUES)) return;
    RenderState s = render_;
    s.values[which] = value;
    setRender(s, REFMSG_NODE_RENDERING_VALUE_CHANGED);
}

// ------------------------------------------------------------------------------------------ user properties

void Node::SetUserPropBuffer(const MSTR& buf) {
    if (buf == userProps_) return;
    NodeEventBatch batch;
    recordChange<MSTR>(this, userProps_, buf, [](Node* n, const MSTR& v) { n->SetUserPropBuffer(v); },
                       L"User Properties");
    userProps_ = buf;
    broadcastTable(NOTIFY_POST_NODE_USER_PROP_CHANGED);
    changed(NodeEvent::UserPropertiesChanged);
}

namespace {
// The user-property text holds lines "key = value"; keys compare without case, surrounding blanks ignored.
std::wstring trim(const std::wstring& s) {
    const auto b = s.find_first_not_of(L" \t\r");
    if (b == std::wstring::npos) return {};
    return s.substr(b, s.find_last_not_of(L" \t\r") - b + 1);
}
struct PropLine {
    std::size_t begin, end;  // the line, without its line break
    std::wstring key, value;
};
std::vector<PropLine> propLines(const std::wstring& text) {
    std::vector<PropLine> lines;
    std::size_t pos = 0;
    while (pos <= text.size()) {
        std::size_t end = text.find(L'\n', pos);
        if (end == std::wstring::npos) end = text.size();
        const std::wstring line = text.substr(pos, end - pos);
        const auto eq = line.find(L'=');
        if (eq != std::wstring::npos) lines.push_back({pos, end, trim(line.substr(0, eq)), trim(line.substr(eq + 1))});
        if (end == text.size()) break;
        pos = end + 1;
    }
    return lines;
}
}  // namespace

BOOL Node::GetUserPropString(const MSTR& key, MSTR& value) {
    const MSTR wanted(trim(key.str()));
    for (const PropLine& l : propLines(userProps_.str()))
        if (MSTR(l.key).EqualsNoCase(wanted)) {
            value = MSTR(l.value);
            return TRUE;
        }
    return FALSE;
}

void Node::SetUserPropString(const MSTR& key, const MSTR& value) {
    const MSTR wanted(trim(key.str()));
    std::wstring text = userProps_.str();
    const std::wstring line = wanted.str() + L" = " + value.str();
    bool replaced = false;
    for (const PropLine& l : propLines(text))
        if (MSTR(l.key).EqualsNoCase(wanted)) {
            text.replace(l.begin, l.end - l.begin, line);
            replaced = true;
            break;
        }
    if (!replaced) {
        if (!text.empty() && text.back() != L'\n') text += L"\r\n";
        text += line;
    }
    SetUserPropBuffer(MSTR(text));
}

// --------------------------------------------------------------------------------------------------- bone

void Node::setBone(const BoneState& s) {
    if (s == bone_) return;
    NodeEventBatch batch;
    recordChange<BoneState>(this, bone_, s, [](Node* n, const BoneState& v) { n->setBone(v); }, L"Bone Properties");
    bone_ = s;
    broadcastTable(NOTIFY_POST_NODE_BONE_PROP_CHANGED);
    changed(NodeEvent::PropertiesOtherEvent);
}

void Node::SetBoneNodeOnOff(BOOL onOff, TimeValue) {
    BoneState s = bone_;
    s.on = onOff ? TRUE : FALSE;
    setBone(s);
}

BOOL Node::GetBoneFlag(int which) {
    return validIndex(which, NODE_BONE_NUM_FLAGS) && (bone_.flags & (1u << which)) ? TRUE : FALSE;
}

void Node::SetBoneFlag(int which, BOOL onOff) {
    if (!validIndex(which, NODE_BONE_NUM_FLAGS)) return;
    BoneState s = bone_;
    s.flags = withBit(s.flags, 1u << which, onOff != FALSE);
    setBone(s);
}

BYTE Node::GetBoneValue(int which) { return validIndex(which, NODE_BONE_NUM_VALUES) ? bone_.values[which] : 0; }

void Node::SetBoneValue(int which, BYTE value) {
    if (!validIndex(which, NODE_BONE_NUM_VALUES)) return;
    BoneState s = bone_;
    s.values[which] = value;
    setBone(s);
}

// ----------------------------------------------------------------- offset, locks, group state, skin pose

void Node::setOffset(const Point3& p, const Quat& q, const ScaleValue& s) {
    if (p == offsetPos_ && q == offsetRot_ && s == offsetScale_) return;
    NodeEventBatch batch;
    struct Offset {
        Point3 p;
        Quat q;
        ScaleValue s;
    };
    recordChange<Offset>(this, {offsetPos_, offsetRot_, offsetScale_}, {p, q, s},
                         [](Node* n, const Offset& v) { n->setOffset(v.p, v.q, v.s); }, L"Object Offset");
    offsetPos_ = p;
    offsetRot_ = q;
    offsetScale_ = s;
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    broadcastProperty(NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_OBJ_OFFSET);
    changed(NodeEvent::PropertiesOtherEvent);
}

void Node::SetObjOffsetPos(Point3 p) { setOffset(p, offsetRot_, offsetScale_); }
void Node::SetObjOffsetRot(Quat q) { setOffset(offsetPos_, q, offsetScale_); }
void Node::SetObjOffsetScale(ScaleValue sv) { setOffset(offsetPos_, offsetRot_, sv); }

void Node::setLocks(DWORD locks) {
    if (locks == locks_) return;
    NodeEventBatch batch;
    recordChange<DWORD>(this, locks_, locks, [](Node* n, const DWORD& v) { n->setLocks(v); }, L"Transform Locks");
    locks_ = locks;
    broadcastProperty(NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_TRANSFORM_LOCKS);
    changed(NodeEvent::PropertiesOtherEvent);
}

BOOL Node::GetTransformLock(int type, int axis) {
    if (!validIndex(type, 3) || !validIndex(axis, 3)) return FALSE;
    return (locks_ & (1u << (3 * type + axis))) ? TRUE : FALSE;
}

void Node::SetTransformLock(int type, int axis, BOOL onOff) {
    if (!validIndex(type, 3) || !validIndex(axis, 3)) return;
    setLocks(withBit(locks_, 1u << (3 * type + axis), onOff != FALSE));
}

void Node::setGroupBit(DWORD bit, BOOL on) {
    const DWORD flags = withBit(groupFlags_, bit, on != FALSE);
    if (flags == groupFlags_) return;
    NodeEventBatch batch;
    recordChange<DWORD>(
        this, groupFlags_, flags,
        [](Node* n, const DWORD& v) {
            for (DWORD b : {kGroupMember, kGroupHead, kOpenGroupMember, kOpenGroupHead}) n->setGroupBit(b, (v & b) != 0);
        },
        L"Group");
    groupFlags_ = flags;
    broadcastProperty(NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_GROUP);
    changed(NodeEvent::GroupChanged);
}

void Node::setSkinPose(const SkinPose& s) {
    if (s == skin_) return;
    NodeEventBatch batch;
    recordChange<SkinPose>(this, skin_, s, [](Node* n, const SkinPose& v) { n->setSkinPose(v); }, L"Skin Pose");
    skin_ = s;
    broadcastProperty(NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_SKIN_POSE);
    changed(NodeEvent::PropertiesOtherEvent);
}

// ------------------------------------------------------------------------------- extension interfaces

class NodeExtensions::SkinPose : public INodeSkinPose {
public:
    explicit SkinPose(Node* n) : n_(n) {}
    Point3 GetSkinPos() override { return n_->skin_.pos; }
    void SetSkinPos(const Point3& p) override { edit([&](Node::SkinPose& s) { s.pos = p; }); }
    Quat GetSkinRot() override { return n_->skin_.rot; }
    void SetSkinRot(const Quat& q) override { edit([&](Node::SkinPose& s) { s.rot = q; }); }
    Point3 GetSkinScale() override { return n_->skin_.scale; }
    void SetSkinScale(const Point3& sc) override { edit([&](Node::SkinPose& s) { s.scale = sc; }); }
    Quat GetSkinScaleOrient() override { return n_->skin_.scaleOrient; }
    void SetSkinScaleOrient(const Quat& q) override { edit([&](Node::SkinPose& s) { s.scaleOrient = q; }); }

private:
    void edit(const std::function<void(Node::SkinPose&)>& f) {
        Node::SkinPose s = n_->skin_;
        f(s);
        n_->setSkinPose(s);
    }
    Node* n_;
};

class NodeExtensions::RenderProps : public INodeRenderProperties {
public:
    explicit RenderProps(Node* n) : n_(n) {}
    BOOL GetRenderSwitch(int which) override {
        return validIndex(which, NODE_RENDERPROPS_NUM_SWITCHES) && (n_->render_.propSwitches & (1u << which));
    }
    void SetRenderSwitch(int which, BOOL onOff) override {
        if (!validIndex(which, NODE_RENDERPROPS_NUM_SWITCHES)) return;
        Node::RenderState s = n_->render_;
        s.propSwitches = withBit(s.propSwitches, 1u << which, onOff != FALSE);
        n_->setRender(s, REFMSG_NODE_RENDERING_PROP_CHANGED);
    }
    DWORD GetRenderPropValue(int which) override {
        return validIndex(which, NODE_RENDERPROPS_NUM_VALUES) ? n_->render_.propValues[which] : 0;
    }
    void SetRenderPropValue(int which, DWORD value) override {
        if (!validIndex(which, NODE_RENDERPROPS_NUM_VALUES)) return;
        Node::RenderState s = n_->render_;
        s.propValues[which] = value;
        n_->setRender(s, REFMSG_NODE_RENDERING_VALUE_CHANGED);
    }

private:
    Node* n_;
};

class NodeExtensions::Ext1 : public INodeExtension1 {
public:
    explicit Ext1(Node* n) : n_(n) {}
    BOOL GetDisplaySwitch() override { return (n_->display_.flags & Node::kDispExt1) ? TRUE : FALSE; }
    void SetDisplaySwitch(BOOL onOff) override {
        Node::DisplayState s = n_->display_;
        s.flags = withBit(s.flags, Node::kDispExt1, onOff != FALSE);
        n_->setDisplay(s, 0);
    }

private:
    Node* n_;
};

class NodeExtensions::Ext2 : public INodeExtension2 {
public:
    explicit Ext2(Node* n) : n_(n) {}
    BOOL GetDisplaySwitch() override { return (n_->display_.flags & Node::kDispExt2) ? TRUE : FALSE; }
    void SetDisplaySwitch(BOOL onOff) override {
        Node::DisplayState s = n_->display_;
        s.flags = withBit(s.flags, Node::kDispExt2, onOff != FALSE);
        n_->setDisplay(s, 0);
    }
    BOOL GetRenderSwitch(int which) override {
        return validIndex(which, NODE_EXTENSION2_NUM_RENDER_SWITCHES) && (n_->render_.extSwitches & (1u << which));
    }
    void SetRenderSwitch(int which, BOOL onOff) override {
        if (!validIndex(which, NODE_EXTENSION2_NUM_RENDER_SWITCHES)) return;
        Node::RenderState s = n_->render_;
        s.extSwitches = withBit(s.extSwitches, 1u << which, onOff != FALSE);
        n_->setRender(s, REFMSG_NODE_RENDERING_PROP_CHANGED);
    }

private:
    Node* n_;
};

NodeExtensions::NodeExtensions(Node* node)
    : skin_(new SkinPose(node)), render_(new RenderProps(node)), ext1_(new Ext1(node)), ext2_(new Ext2(node)) {}

NodeExtensions::~NodeExtensions() {
    delete skin_;
    delete render_;
    delete ext1_;
    delete ext2_;
}

BaseInterface* NodeExtensions::Find(Interface_ID id) {
    if (id == INODE_SKINPOSE_INTERFACE) return skin_;
    if (id == NODE_RENDERPROPS_INTERFACE) return render_;
    if (id == NODE_EXTENSION1_INTERFACE) return ext1_;
    if (id == NODE_EXTENSION2_INTERFACE) return ext2_;
    return nullptr;
}

// ---------------------------------------------------------------------------- external-scene entries

BOOL Node::AddNewXRefFile(const MaxSDK::AssetManagement::AssetUser& file, BOOL, BOOL) {
    if (!isRoot_ || file.IsEmpty() || file.GetType() != MaxSDK::AssetManagement::kXRefAsset) return FALSE;
    xrefs_.push_back({file, MakeRoot(file.GetFileName())});
    return TRUE;
}

BOOL Node::AddNewXRefFile(const MCHAR* file) {
    using namespace MaxSDK::AssetManagement;
    return AddNewXRefFile(IAssetManager::GetInstance()->GetAsset(MSTR(file ? file : L""), kXRefAsset));
}

MaxSDK::AssetManagement::AssetUser Node::GetXRefAsset(int i) {
    return validIndex(i, int(xrefs_.size())) ? xrefs_[std::size_t(i)].asset : MaxSDK::AssetManagement::AssetUser();
}

MSTR Node::GetXRefFile(int i) { return GetXRefAsset(i).GetFileName(); }

INode* Node::GetXRefTree(int i) { return validIndex(i, int(xrefs_.size())) ? xrefs_[std::size_t(i)].tree : nullptr; }

BOOL Node::DeleteXRefFile(int i) {
    if (!validIndex(i, int(xrefs_.size()))) return FALSE;
    Node* tree = xrefs_[std::size_t(i)].tree;
    xrefs_.erase(xrefs_.begin() + i);
    DestroyNodeTrees({tree});
    return TRUE;
}

}  // namespace hostrt
