// hostrt::Node: identity, the handle registry, the node graph, references, transforms, cloning, saving and
// loading. The property setters are in node_properties.cpp.
#include "scene/node.h"

#include "core/class_directory.h"
#include "ilayer.h"
#include "imtl.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"
#include "scene/node_container.h"
#include "scene/node_extensions.h"
#include "scene/node_names.h"
#include "scene/node_undo.h"
#include "scene/scene.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace hostrt {

namespace {

// Chunks of a node's data.
constexpr USHORT kNameChunk = 0x0100;
constexpr USHORT kStateChunk = 0x0101;
constexpr USHORT kDisplayChunk = 0x0102;
constexpr USHORT kRenderChunk = 0x0103;
constexpr USHORT kUserPropsChunk = 0x0104;
constexpr USHORT kBoneChunk = 0x0105;
constexpr USHORT kOffsetChunk = 0x0106;
constexpr USHORT kLocksChunk = 0x0107;
constexpr USHORT kSkinPoseChunk = 0x0108;
constexpr USHORT kChildrenChunk = 0x0109;
constexpr USHORT kPartRolesChunk = 0x010A;
constexpr USHORT kAnimRangeChunk = 0x010B;
constexpr DWORD kStateRoot = 0x1, kStateHidden = 0x2, kStateFrozen = 0x4;
// Most children or part roles a node accepts from a file; more means the file is damaged.
constexpr ULONG kMaxCount = 1u << 24;

// Default render switches: renderable, casting and receiving shadows, atmospherics, inheriting visibility,
// visible to the camera and to reflections.
constexpr DWORD kDefaultRenderFlags = 0x7F;
constexpr DWORD kDefaultWireColor = RGB(0x8A, 0x8A, 0x8A);

std::unordered_map<ULONG, Node*>& registry() {
    static auto* nodes = new std::unordered_map<ULONG, Node*>();  // never destroyed, as the nodes it lists
    return *nodes;
}
ULONG nextNodeHandle = 1;

class NodeClassDesc : public ClassDesc {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL loading) override { return static_cast<Animatable*>(new Node(loading != FALSE)); }
    const MCHAR* ClassName() override { return L"Node"; }
    SClass_ID SuperClassID() override { return BASENODE_CLASS_ID; }
    Class_ID ClassID() override { return Node::kClassID; }
    const MCHAR* Category() override { return L""; }
};

class ContainerClassDesc : public ClassDesc {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(&SceneNodeContainer::Instance()); }
    const MCHAR* ClassName() override { return L"SceneNodeContainer"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return SceneNodeContainer::kClassID; }
    const MCHAR* Category() override { return L""; }
};

// Little chunk helpers: a chunk of plain bytes, read back whole.
template <class... T> IOResult writeChunk(ISave* s, USHORT id, const T&... parts) {
    s->BeginChunk(id);
    IOResult res = IO_OK;
    ULONG n = 0;
    ((res = res == IO_OK ? s->Write(&parts, ULONG(sizeof(T)), &n) : res), ...);
    s->EndChunk();
    return res;
}
template <class... T> bool readChunk(ILoad* l, T&... parts) {
    if (l->CurChunkLength() != (sizeof(T) + ... + 0)) return false;
    bool ok = true;
    ULONG n = 0;
    ((ok = ok && l->Read(&parts, ULONG(sizeof(T)), &n) == IO_OK), ...);
    return ok;
}

}  // namespace

// ---------------------------------------------------------------------------------------------- lifetime

Node::Node(bool loading)
    : handle_(nextNodeHandle++), loading_(loading), wireColor_(kDefaultWireColor),
      ext_(std::make_unique<NodeExtensions>(this)) {
    render_.flags = kDefaultRenderFlags;
    registry()[handle_] = this;
    postLoad_.node = this;
    SceneNodeContainer::Instance().Add(this);
}

Node* Node::MakeRoot(const MSTR& name) {
    auto* root = new Node(false);
    SceneNodeContainer::Instance().Remove(root);
    root->isRoot_ = true;
    root->name_ = name;
    return root;
}

Node::~Node() {
    registry().erase(handle_);
    NodeNameIndex::Instance().Removed(this, name_.str());
    NodeNameIndex::Instance().LeftTree();
    SceneNodeContainer::Instance().Remove(this);  // its slot is known: the container need not be searched
    if (selected_) Scene::Instance().DropFromSelection(this);
    Unlink();
    for (Node* c : children_)
        if (c && c->parent_ == this) c->parent_ = nullptr;
    children_.clear();
}

void Node::assignName(const MSTR& name) {
    NodeNameIndex::Instance().Renamed(this, name_.str(), name.str());
    name_ = name;
}

Node* Node::ByHandle(ULONG handle) {
    auto it = registry().find(handle);
    return it == registry().end() || it->second->IsDeleted() ? nullptr : it->second;
}

void RegisterNodeClasses() {
    static NodeClassDesc nodeDesc;
    static ContainerClassDesc containerDesc;
    ClassDirectory::Instance().Register(&nodeDesc);
    ClassDirectory::Instance().Register(&containerDesc);
}

// -------------------------------------------------------------------------------------------------- graph

Node* Node::TreeRoot() {
    Node* n = this;
    while (n->parent_) n = n->parent_;
    return n->isRoot_ ? n : nullptr;
}

bool Node::IsSelfOrAncestor(const Node* node) const {
    for (const Node* n = this; n; n = n->parent_)
        if (n == node) return true;
    return false;
}

void Node::LinkChild(Node* child) { LinkChildAt(child, -1); }

void Node::LinkChildAt(Node* child, int index) {
    if (!child || child == this || child->isRoot_) return;
    child->Unlink();
    if (index < 0 || index >= int(children_.size()))
        children_.push_back(child);
    else
        children_.insert(children_.begin() + index, child);
    child->parent_ = this;
}

int Node::ChildIndex(const Node* child) const {
    auto it = std::find(children_.rbegin(), children_.rend(), child);
    return it == children_.rend() ? -1 : int(children_.rend() - it) - 1;
}

void Node::Unlink() {
    if (!parent_) return;
    NodeNameIndex::Instance().LeftTree();
    auto& siblings = parent_->children_;
    // Usually the last child goes (deletion of whole trees runs backwards).
    auto it = std::find(siblings.rbegin(), siblings.rend(), this);
    if (it != siblings.rend()) siblings.erase(std::next(it).base());
    parent_ = nullptr;
}

INode* Node::GetChildNode(int i) {
    return i >= 0 && i < int(children_.size()) ? children_[std::size_t(i)] : nullptr;
}

void Node::attachTo(Node* parent, bool keepTM, TimeValue t) {
    const Matrix3 world = keepTM ? GetNodeTM(t) : Matrix3();
    RecordNodeLink(this);
    parent->LinkChild(this);
    if (keepTM) {
        Matrix3 tm = world;
        SetNodeTM(t, tm);
    }
    BroadcastNotification(NOTIFY_NODE_LINKED, static_cast<INode*>(this));
    changed(NodeEvent::LinkChanged);
}

void Node::AttachChild(INode* node, int keepTM) {
    Node* child = From(node);
    // A root, a node being deleted, or this node or one of its ancestors cannot become a child here.
    if (!child || child->isRoot_ || child->IsDeleted() || IsDeleted() || IsSelfOrAncestor(child)) return;
    if (child->parent_ == this) return;
    NodeEventBatch batch;
    child->attachTo(this, keepTM != 0, GetCOREInterface()->GetTime());
}

void Node::Detach(TimeValue t, int keepTM) {
    if (isRoot_ || IsDeleted()) return;
    Node* root = parent_ ? TreeRoot() : nullptr;
    if (!root) root = Scene::Instance().RootNode();
    if (parent_ == root) return;
    NodeEventBatch batch;
    attachTo(root, keepTM != 0, t);
}

ReferenceTarget* Node::GetLink(int i) { return i >= 0 && i < int(children_.size()) ? children_[std::size_t(i)] : nullptr; }

void Node::SetLink(int i, ReferenceTarget* target) {
    auto* child = dynamic_cast<Node*>(target);
    if (i < 0 || i >= int(children_.size()) || !child || child->isRoot_ || child->parent_) return;
    children_[std::size_t(i)] = child;
    child->parent_ = this;
}

void Node::PostLoad::proc(ILoad*) {
    // Children the file did not hold (or that were refused) leave no gap.
    auto& c = node->children_;
    c.erase(std::remove(c.begin(), c.end(), nullptr), c.end());
    node->loading_ = false;
}

// ---------------------------------------------------------------------------------------------- references

RefTargetHandle Node::GetReference(int i) { return i >= 0 && i < NODE_NUM_REFS ? refs_[i] : nullptr; }

void Node::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= NODE_NUM_REFS) return;
    refs_[i] = target;
    if (i == NODE_LAYER_REF && !loading_) changed(NodeEvent::LayerChanged);
}

RefResult Node::NotifyRefChanged(const Interval&, RefTargetHandle, PartID& partID, RefMessage message, BOOL) {
    if (message == REFMSG_GET_NODE_HANDLE) {
        if (partID) *reinterpret_cast<ULONG*>(partID) = handle_;
        return REF_STOP;
    }
    // A change below the node changes the scene; the message goes on to the node's dependents.
    if (message < REFMSG_USER && message != REFMSG_TARGET_DELETED && !loading_ && !isRoot_)
        Scene::Instance().SetSaveRequired(true);
    return REF_SUCCEED;
}

Object* Node::GetObjOrWSMRef() { return dynamic_cast<Object*>(refs_[NODE_OBJECT_REF]); }

IDerivedObject* Node::GetWSMDerivedObject() {
    auto* d = dynamic_cast<IDerivedObject*>(refs_[NODE_OBJECT_REF]);
    return d && d->IsWorldSpace() ? d : nullptr;
}

Object* Node::GetObjectRef() {
    if (IDerivedObject* ws = GetWSMDerivedObject()) return ws->GetObjRef();
    return GetObjOrWSMRef();
}

void Node::SetObjectRef(Object* obj) {
    if (GetObjectRef() == obj) return;
    NodeEventBatch batch;
    if (IDerivedObject* ws = GetWSMDerivedObject())
        ws->ReferenceObject(obj);
    else
        ReplaceReference(NODE_OBJECT_REF, obj);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_MODIFIER_STACK_CHANGED);
    NotifyDependents(FOREVER, PART_OBJECT_CHAIN, REFMSG_CHANGE);
    broadcastProperty(NOTIFY_NODE_STRUCTURE_CHANGED, NODE_PROP_STRUCTURE);
    changed(NodeEvent::ModelStructured);
}

IDerivedObject* Node::CreateWSMDerivedObject() {
    if (IDerivedObject* ws = GetWSMDerivedObject()) return ws;
    NodeEventBatch batch;
    IDerivedObject* ws = CreateWSDerivedObject(GetObjectRef());
    if (!ws) return nullptr;
    ReplaceReference(NODE_OBJECT_REF, ws);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_MODIFIER_STACK_CHANGED);
    changed(NodeEvent::ModelStructured);
    return ws;
}

Object* Node::GetBaseObject() {
    Object* top = GetObjOrWSMRef();
    return top ? top->FindBaseObject() : nullptr;
}

Mtl* Node::GetMtl() { return dynamic_cast<Mtl*>(refs_[NODE_MTL_REF]); }
ILayer* Node::GetLayer() { return dynamic_cast<ILayer*>(refs_[NODE_LAYER_REF]); }

Control* Node::controllerAt(int ref) { return dynamic_cast<Control*>(refs_[ref]); }

void Node::setController(int ref, Control* c) {
    if (refs_[ref] == c) return;
    NodeEventBatch batch;
    ReplaceReference(ref, c);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CONTROLREF_CHANGE);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    broadcastProperty(NOTIFY_NODE_STRUCTURE_CHANGED, NODE_PROP_STRUCTURE);
    changed(NodeEvent::ControllerStructured);
}

Control* Node::GetTMController() { return controllerAt(NODE_TM_REF); }
BOOL Node::SetTMController(Control* c) {
    if (c && c->SuperClassID() != CTRL_MATRIX3_CLASS_ID) return FALSE;
    setController(NODE_TM_REF, c);
    return TRUE;
}
Control* Node::GetVisController() { return controllerAt(NODE_VIS_REF); }
void Node::SetVisController(Control* c) { setController(NODE_VIS_REF, c); }
Control* Node::GetImageBlurMultController() { return controllerAt(NODE_IMBLUR_REF); }
void Node::SetImageBlurMultController(Control* c) { setController(NODE_IMBLUR_REF, c); }
Control* Node::GetMotBlurOnOffController() { return controllerAt(NODE_OBJBLUR_REF); }
void Node::SetMotBlurOnOffController(Control* c) { setController(NODE_OBJBLUR_REF, c); }

INode* Node::GetTarget() {
    Control* tm = GetTMController();
    if (!tm) return nullptr;
    if (INode* target = tm->GetTarget()) return target;
    for (int i = 0; i < tm->NumRefs(); ++i)
        if (auto* n = dynamic_cast<INode*>(tm->GetReference(i))) return n;
    return nullptr;
}

INode* Node::GetLookatNode() {
    for (ReferenceMaker* dep : Dependents()) {
        auto* ctrl = dynamic_cast<Control*>(dep);
        if (!ctrl || ctrl->SuperClassID() != CTRL_MATRIX3_CLASS_ID) continue;
        for (ReferenceMaker* user : ctrl->Dependents())
            if (auto* n = dynamic_cast<Node*>(user); n && n->GetTMController() == ctrl) return n;
    }
    return nullptr;
}

// ------------------------------------------------------------------------------------------------ sub-anims

// Sub-anims: 0 visibility, 1 object (the chain top), 2 transform, 3 base object, 4 material, 5 image motion-blur
// multiplier, 6 object motion blur.
Animatable* Node::SubAnim(int i) {
    switch (i) {
    case 0: return refs_[NODE_VIS_REF];
    case 1: return refs_[NODE_OBJECT_REF];
    case 2: return refs_[NODE_TM_REF];
    case 3: return GetBaseObject();
    case 4: return refs_[NODE_MTL_REF];
    case 5: return refs_[NODE_IMBLUR_REF];
    case 6: return refs_[NODE_OBJBLUR_REF];
    default: return nullptr;
    }
}

MSTR Node::SubAnimName(int i, bool) {
    static const MCHAR* const names[kNumSubs] = {L"Visibility", L"Object", L"Transform", L"Base Object",
                                                 L"Material", L"Image Motion Blur Multiplier",
                                                 L"Object Motion Blur On/Off"};
    return i >= 0 && i < kNumSubs ? MSTR(names[i]) : MSTR();
}

int Node::SubNumToRefNum(int subNum) {
    static const int refs[kNumSubs] = {NODE_VIS_REF, NODE_OBJECT_REF, NODE_TM_REF, -1, NODE_MTL_REF, NODE_IMBLUR_REF,
                                       NODE_OBJBLUR_REF};
    return subNum >= 0 && subNum < kNumSubs ? refs[subNum] : -1;
}

BOOL Node::CanAssignController(int subAnim) { return subAnim == 0 || subAnim == 2 || subAnim == 5 || subAnim == 6; }

BOOL Node::AssignController(Animatable* control, int subAnim) {
    auto* c = dynamic_cast<Control*>(control);
    if (control && !c) return FALSE;
    switch (subAnim) {
    case 0: SetVisController(c); return TRUE;
    case 2: return SetTMController(c);
    case 5: SetImageBlurMultController(c); return TRUE;
    case 6: SetMotBlurOnOffController(c); return TRUE;
    default: return FALSE;
    }
}

BaseInterface* Node::GetInterface(Interface_ID id) {
    if (BaseInterface* bi = ext_->Find(id)) return bi;
    return INode::GetInterface(id);
}

// ---------------------------------------------------------------------------------------------- transforms

Matrix3 Node::GetParentTM(TimeValue t) { return parent_ ? parent_->GetNodeTM(t) : Matrix3(); }

Matrix3 Node::GetNodeTM(TimeValue t, Interval* valid) {
    if (isRoot_) return Matrix3();
    Matrix3 tm = GetParentTM(t);
    if (Control* c = GetTMController()) {
        Interval iv = FOREVER;
        c->GetValue(t, &tm, iv, CTRL_RELATIVE);
        if (valid) *valid &= iv;
    }
    return tm;
}

void Node::SetNodeTM(TimeValue t, Matrix3& tm) {
    Control* c = GetTMController();
    if (isRoot_ || !c) return;
    Matrix3 local = tm * Inverse(GetParentTM(t));
    c->SetValue(t, &local, 1, CTRL_ABSOLUTE);
}

Matrix3 Node::GetObjectTM(TimeValue t, Interval* valid) {
    // Offset: scale along its orientation, then rotation, then translation, all before the node transform.
    Matrix3 orient, rot;
    QuatToMatrix(offsetScale_.q, orient);
    QuatToMatrix(offsetRot_, rot);
    Matrix3 offset = Inverse(orient) * ScaleMatrix(offsetScale_.s) * orient * rot * TransMatrix(offsetPos_);
    return offset * GetNodeTM(t, valid);
}

// ----------------------------------------------------------------------------------------------- cloning

void Node::copyPropertiesTo(Node* to) const {
    to->assignName(name_);
    to->wireColor_ = wireColor_;
    to->hidden_ = hidden_;
    to->frozen_ = frozen_;
    to->display_ = display_;
    to->render_ = render_;
    to->userProps_ = userProps_;
    to->bone_ = bone_;
    to->offsetPos_ = offsetPos_;
    to->offsetRot_ = offsetRot_;
    to->offsetScale_ = offsetScale_;
    to->locks_ = locks_;
    to->groupFlags_ = groupFlags_;
    to->skin_ = skin_;
}

RefTargetHandle Node::Clone(RemapDir& remap) {
    auto* c = isRoot_ ? MakeRoot(name_) : new Node(false);
    copyPropertiesTo(c);
    BaseClone(this, c, remap);
    // Controllers and the object chain are copied; the material and the layer are shared.
    for (int i : {NODE_TM_REF, NODE_OBJECT_REF, NODE_VIS_REF, NODE_IMBLUR_REF, NODE_OBJBLUR_REF})
        if (refs_[i]) c->ReplaceReference(i, remap.CloneRef(refs_[i]));
    for (int i : {NODE_MTL_REF, NODE_LAYER_REF})
        if (refs_[i]) c->ReplaceReference(i, refs_[i]);
    return c;
}

// ------------------------------------------------------------------------------------------ save and load

IOResult Node::Save(ISave* isave) {
    isave->BeginChunk(kNameChunk);
    isave->WriteWString(name_);
    isave->EndChunk();
    const DWORD state = (isRoot_ ? kStateRoot : 0) | (hidden_ ? kStateHidden : 0) | (frozen_ ? kStateFrozen : 0);
    IOResult res = writeChunk(isave, kStateChunk, state, wireColor_);
    if (res == IO_OK) res = writeChunk(isave, kDisplayChunk, display_.flags, display_.values);
    if (res == IO_OK)
        res = writeChunk(isave, kRenderChunk, render_.flags, render_.propSwitches, render_.extSwitches, render_.values,
                         render_.propValues);
    if (res == IO_OK && !userProps_.isNull()) {
        isave->BeginChunk(kUserPropsChunk);
        res = isave->WriteWString(userProps_);
        isave->EndChunk();
    }
    if (res == IO_OK) res = writeChunk(isave, kBoneChunk, bone_.on, bone_.flags, bone_.values);
    if (res == IO_OK) res = writeChunk(isave, kOffsetChunk, offsetPos_, offsetRot_, offsetScale_.s, offsetScale_.q);
    if (res == IO_OK) res = writeChunk(isave, kLocksChunk, locks_, groupFlags_);
    if (res == IO_OK) res = writeChunk(isave, kSkinPoseChunk, skin_.pos, skin_.rot, skin_.scale, skin_.scaleOrient);
    const ULONG children = ULONG(children_.size());
    if (res == IO_OK) res = writeChunk(isave, kChildrenChunk, children);
    if (res == IO_OK && isRoot_ && !partRoles_.empty()) {
        isave->BeginChunk(kPartRolesChunk);
        const ULONG n = ULONG(partRoles_.size());
        ULONG written = 0;
        res = isave->Write(&n, sizeof n, &written);
        for (int role : partRoles_)
            if (res == IO_OK) res = isave->Write(&role, sizeof role, &written);
        isave->EndChunk();
    }
    if (res == IO_OK && isRoot_ && sceneAnimRange_) {
        const TimeValue start = sceneAnimRange_->Start(), end = sceneAnimRange_->End();
        res = writeChunk(isave, kAnimRangeChunk, start, end);
    }
    return res;
}

IOResult Node::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        bool ok = true;
        switch (iload->CurChunkID()) {
        case kNameChunk: {
            MSTR name;
            ok = iload->ReadWStringChunk(name) == IO_OK;
            if (ok) assignName(name);
            break;
        }
        case kStateChunk: {
            DWORD state = 0;
            ok = readChunk(iload, state, wireColor_);
            isRoot_ = (state & kStateRoot) != 0;
            hidden_ = (state & kStateHidden) ? TRUE : FALSE;
            frozen_ = (state & kStateFrozen) ? TRUE : FALSE;
            if (isRoot_) SceneNodeContainer::Instance().Remove(this);
            break;
        }
        case kDisplayChunk: ok = readChunk(iload, display_.flags, display_.values); break;
        case kRenderChunk:
            ok = readChunk(iload, render_.flags, render_.propSwitches, render_.extSwitches, render_.values,
                           render_.propValues);
            break;
        case kUserPropsChunk: ok = iload->ReadWStringChunk(userProps_) == IO_OK; break;
        case kBoneChunk: ok = readChunk(iload, bone_.on, bone_.flags, bone_.values); break;
        case kOffsetChunk: ok = readChunk(iload, offsetPos_, offsetRot_, offsetScale_.s, offsetScale_.q); break;
        case kLocksChunk: ok = readChunk(iload, locks_, groupFlags_); break;
        case kSkinPoseChunk: ok = readChunk(iload, skin_.pos, skin_.rot, skin_.scale, skin_.scaleOrient); break;
        case kChildrenChunk: {
            ULONG n = 0;
            ok = readChunk(iload, n) && n <= kMaxCount;
            if (ok) children_.assign(n, nullptr);
            break;
        }
        case kPartRolesChunk: {
            ULONG n = 0, got = 0;
            ok = iload->Read(&n, sizeof n, &got) == IO_OK && n <= kMaxCount &&
                 iload->CurChunkLength() == sizeof n + n * sizeof(int);
            partRoles_.assign(ok ? n : 0, 0);
            for (int& role : partRoles_)
                if (ok) ok = iload->Read(&role, sizeof role, &got) == IO_OK;
            break;
        }
        case kAnimRangeChunk: {
            TimeValue start = 0, end = 0;
            ok = readChunk(iload, start, end) && start <= end;
            if (ok) sceneAnimRange_ = Interval(start, end);
            break;
        }
        default: break;  // chunks of later versions are skipped
        }
        iload->CloseChunk();
        if (!ok) return IO_ERROR;
    }
    iload->RegisterPostLoadCallback(&postLoad_);
    return res == IO_END ? IO_OK : res;
}

}  // namespace hostrt
