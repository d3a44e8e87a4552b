// Layers: renaming, parent and child layers, moving nodes onto a layer (150) and finding a layer's nodes.
#include "scene/layers/layer.h"

#include "hold.h"
#include "inode.h"
#include "ioapi.h"
#include "notify.h"
#include "scene/layers/layer_manager.h"

#include <algorithm>
#include <unordered_set>

namespace hostrt {

namespace {

constexpr USHORT kNameChunk = 0x0100;
// The display switches (bit 0 hidden, bit 1 frozen), written only when one is on.
constexpr USHORT kSwitchesChunk = 0x0110;
constexpr DWORD kHiddenBit = 0x1;
constexpr DWORD kFrozenBit = 0x2;

class LayerNameRestore : public RestoreObj {
public:
    LayerNameRestore(Layer* layer, MSTR before, MSTR after)
        : layer_(layer), handle_(Animatable::GetHandleByAnim(layer)), before_(std::move(before)),
          after_(std::move(after)) {}
    void Restore(int) override { apply(before_); }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Layer name"); }

private:
    void apply(const MSTR& name) {
        if (Animatable::GetAnimByHandle(handle_) == layer_) layer_->SetNameRaw(name);
    }
    Layer* layer_;
    AnimHandle handle_;
    MSTR before_, after_;
};

bool alive(Animatable* a, AnimHandle h) { return a && Animatable::GetAnimByHandle(h) == a; }

}  // namespace

LayerManager* Layer::Manager() {
    // Nodes make up most dependents: the superclass test skips them cheaply.
    for (ReferenceMaker* m : Dependents())
        if (m->SuperClassID() == REF_TARGET_CLASS_ID)
            if (auto* mgr = dynamic_cast<LayerManager*>(m)) return mgr;
    return nullptr;
}

bool Layer::SetName(const MSTR& name) {
    if (name.isNull()) return false;
    if (name == name_) return true;
    LayerManager* mgr = Manager();
    if (!mgr) mgr = &SceneLayerManager();
    if (ILayer* other = mgr->GetLayer(name); other && other != this) return false;
    if (theHold.Holding()) theHold.Put(new LayerNameRestore(this, name_, name));
    name_ = name;
    return true;
}

bool Layer::SetParentLayer(ILayer* parent) {
    for (ILayer* p = parent; p; p = p->GetParentLayer())
        if (p == this) return false;
    ReplaceReference(kParentRef, parent, FALSE);
    return true;
}

void Layer::SetReference(int i, RefTargetHandle target) {
    if (i == kParentRef) parent_ = dynamic_cast<ILayer*>(target);
}

std::vector<ILayer*> Layer::children() {
    std::vector<ILayer*> out;
    for (ReferenceMaker* m : Dependents()) {
        if (m->SuperClassID() != REF_TARGET_CLASS_ID) continue;
        auto* child = dynamic_cast<ILayer*>(m);
        if (child && child->GetParentLayer() == this && std::find(out.begin(), out.end(), child) == out.end())
            out.push_back(child);
    }
    // In the manager's order; layers it does not list keep their order, after the others.
    if (LayerManager* mgr = Manager()) {
        std::stable_sort(out.begin(), out.end(), [mgr](ILayer* a, ILayer* b) {
            const unsigned ia = unsigned(mgr->IndexOf(a)), ib = unsigned(mgr->IndexOf(b));
            return ia < ib;  // -1 (not listed) becomes the largest
        });
    }
    return out;
}

int Layer::GetNumOfChildLayers() { return int(children().size()); }

ILayer* Layer::GetChildLayer(int i) {
    std::vector<ILayer*> c = children();
    return i >= 0 && i < int(c.size()) ? c[std::size_t(i)] : nullptr;
}

bool Layer::AddToLayer(INode* node) {
    if (!node) return false;
    ReferenceTarget* before = node->GetReference(NODE_LAYER_REF);
    if (before == this) return true;
    auto* oldLayer = dynamic_cast<ILayer*>(before);
    const AnimHandle oldHandle = Animatable::GetHandleByAnim(before);
    if (node->ReplaceReference(NODE_LAYER_REF, this, FALSE) != REF_SUCCEED) return false;
    nodesDirty_ = true;
    if (auto* old = dynamic_cast<Layer*>(oldLayer)) old->nodesDirty_ = true;
    NodeLayerChange change{node, oldLayer, this};
    BroadcastNotification(NOTIFY_NODE_LAYER_CHANGED, &change);
    // A layer that left the manager and just lost its last user goes now.
    if (alive(before, oldHandle)) before->MaybeAutoDelete();
    return true;
}

const std::vector<INode*>& Layer::nodes(int check) {
    bool stale = nodesDirty_ || depsSeen_ != Dependents().size();
    if (!stale && check >= 0 && check < int(nodes_.size())) {
        const std::size_t k = std::size_t(check);
        stale = !alive(nodes_[k], nodeHandles_[k]) || nodes_[k]->GetReference(NODE_LAYER_REF) != this;
    }
    if (!stale) return nodes_;
    nodes_.clear();
    nodeHandles_.clear();
    std::unordered_set<INode*> seen;
    for (ReferenceMaker* m : Dependents()) {
        if (m->SuperClassID() != BASENODE_CLASS_ID || m->GetReference(NODE_LAYER_REF) != this) continue;
        auto* n = dynamic_cast<INode*>(m);
        if (!n || !seen.insert(n).second) continue;
        nodes_.push_back(n);
        nodeHandles_.push_back(Animatable::GetHandleByAnim(n));
    }
    depsSeen_ = Dependents().size();
    nodesDirty_ = false;
    return nodes_;
}

int Layer::NumNodes() { return int(nodes(-1).size()); }

INode* Layer::GetNode(int i) {
    const std::vector<INode*>& n = nodes(i);
    return i >= 0 && i < int(n.size()) ? n[std::size_t(i)] : nullptr;
}

bool Layer::HasNodesBelow() {
    if (NumNodes() > 0) return true;
    for (ILayer* c : children())
        if (c->HasNodesBelow()) return true;
    return false;
}

bool Layer::Hide(bool hide) {
    if (hide == hidden_) return true;
    hidden_ = hide;
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    return true;
}

bool Layer::Freeze(bool freeze) {
    if (freeze == frozen_) return true;
    frozen_ = freeze;
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    return true;
}

IOResult Layer::Save(ISave* isave) {
    isave->BeginChunk(kNameChunk);
    IOResult r = isave->WriteWString(name_);
    isave->EndChunk();
    if (r != IO_OK || !(hidden_ || frozen_)) return r;
    const DWORD switches = (hidden_ ? kHiddenBit : 0) | (frozen_ ? kFrozenBit : 0);
    ULONG written = 0;
    isave->BeginChunk(kSwitchesChunk);
    r = isave->Write(&switches, sizeof(switches), &written);
    isave->EndChunk();
    return r;
}

IOResult Layer::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        IOResult r = IO_OK;
        if (iload->CurChunkID() == kNameChunk) r = iload->ReadWStringChunk(name_);
        if (iload->CurChunkID() == kSwitchesChunk) {
            DWORD switches = 0;
            ULONG read = 0;
            r = iload->Read(&switches, sizeof(switches), &read);
            hidden_ = (switches & kHiddenBit) != 0;
            frozen_ = (switches & kFrozenBit) != 0;
        }
        iload->CloseChunk();
        if (r != IO_OK) return r;
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle Layer::Clone(RemapDir& remap) {
    auto* c = new Layer(name_);
    c->hidden_ = hidden_;
    c->frozen_ = frozen_;
    RefTargetHandle mapped = parent_ ? remap.FindMapping(parent_) : nullptr;
    c->ReplaceReference(kParentRef, mapped ? mapped : parent_);
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt
