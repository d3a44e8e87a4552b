// Undo records of the scene's structure: a node's life in the scene (made or deleted) and its link to a parent.
#include "scene/node_undo.h"

#include "core/ref_internal.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "scene/named_sets.h"
#include "scene/node.h"
#include "scene/node_container.h"
#include "scene/scene.h"
#include "scene/scene_events.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hostrt {

namespace {

template <class T> bool alive(T* p, AnimHandle h) { return p && Animatable::GetAnimByHandle(h) == p; }

// The hold is suspended for the lifetime of one of these.
struct SuspendedHold {
    SuspendedHold() { theHold.Suspend(); }
    ~SuspendedHold() { theHold.Resume(); }
    SuspendedHold(const SuspendedHold&) = delete;
    SuspendedHold& operator=(const SuspendedHold&) = delete;
};

// Selection, parent, container, then the deletion proper (the hold is suspended by the caller).
void takeOut(Node* n) {
    Scene::Instance().DropFromSelection(n);
    n->Unlink();
    SceneNodeContainer::Instance().Remove(n);
    n->DeleteMe();
}

// A node's life in the scene. For a deletion, undo brings the node back and redo deletes it again; for a
// creation the other way round. While the node is out of the scene it stays, marked deleted, pinned by this
// record, and so do the targets it referred to; when the record goes, so does a node that is still out.
class NodeLifeRestore : public RestoreObj {
public:
    NodeLifeRestore(Node* node, bool created)
        : node_(node), anim_(Animatable::GetHandleByAnim(node)), created_(created) {
        node_->PinForUndo();
    }
    ~NodeLifeRestore() override {
        releaseTargets();
        if (alive(node_, anim_)) node_->UnpinForUndo();
    }
    void Restore(int) override { created_ ? remove() : bringBack(); }
    void Redo() override { created_ ? bringBack() : remove(); }
    MSTR Description() override { return MSTR(created_ ? L"Create" : L"Delete"); }

    // Notes where the node sits and what refers to it, then takes it out of the scene.
    void Retire() {
        capture();
        SuspendedHold quiet;
        takeOut(node_);
        out_ = true;
    }

private:
    struct Held {
        ReferenceTarget* target = nullptr;
        AnimHandle handle = 0;
    };
    struct User {
        ReferenceMaker* maker;
        AnimHandle handle;
        int slot;
    };
    struct SetPlace {
        NamedSelSets* sets;
        AnimHandle handle;
        MSTR name;
        int position;
    };

    void capture() {
        releaseTargets();
        Node* parent = node_->Parent();
        parent_ = parent ? parent->GetHandle() : 0;
        childIndex_ = parent ? parent->ChildIndex(node_) : -1;
        containerSlot_ = node_->containerSlot;
        selIndex_ = -1;
        if (node_->Selected()) {
            const auto& sel = Scene::Instance().Selection();
            selIndex_ = int(std::find(sel.begin(), sel.end(), node_) - sel.begin());
        }
        for (int i = 0; i < NODE_NUM_REFS; ++i) {
            ReferenceTarget* t = node_->GetReference(i);
            held_[i] = Held{t, Animatable::GetHandleByAnim(t)};
            if (t) t->PinForUndo();
        }
        users_.clear();
        sets_.clear();
        ReferenceMaker* container = &SceneNodeContainer::Instance();
        for (ReferenceMaker* m : node_->Dependents().Unique()) {
            if (m == container) continue;  // its slot is noted above
            if (auto* sets = dynamic_cast<NamedSelSets*>(m)) {
                // Sets close up behind a deleted member: the member is put back by set name and position.
                for (int i = 0; i < sets->Count(); ++i) {
                    const std::vector<INode*> items = sets->Items(i);
                    auto at = std::find(items.begin(), items.end(), static_cast<INode*>(node_));
                    if (at != items.end())
                        sets_.push_back(SetPlace{sets, Animatable::GetHandleByAnim(sets), sets->Name(i),
                                                 int(at - items.begin())});
                }
                continue;
            }
            for (int i = 0; i < m->NumRefs(); ++i)
                if (m->GetReference(i) == node_) users_.push_back(User{m, Animatable::GetHandleByAnim(m), i});
        }
    }

    void releaseTargets() {
        for (Held& h : held_) {
            if (alive(h.target, h.handle)) h.target->UnpinForUndo();
            h = Held{};
        }
    }

    // The deletion once more: 68, the children to the tree root (keeping their place in the world), out, 69.
    void remove() {
        if (!alive(node_, anim_) || node_->IsDeleted()) return;
        NodeEventBatch batch;
        const ULONG handle = node_->GetHandle();
        BroadcastNotification(NOTIFY_SCENE_PRE_DELETED_NODE, static_cast<INode*>(node_));
        if (Node::ByHandle(handle) != node_) return;  // a handler deleted it
        const TimeValue t = GetCOREInterface()->GetTime();
        const std::vector<Node*> children = node_->Children();
        for (Node* c : children) c->Detach(t, TRUE);
        RaiseNodeEvent(NodeEvent::Deleted, handle);
        Retire();
        Scene::Instance().SetSaveRequired(true);
        BroadcastNotification(NOTIFY_SCENE_POST_DELETED_NODE, nullptr);
    }

    void bringBack() {
        // Only a node this record took out: one deleted by other means stays deleted.
        if (!out_ || !alive(node_, anim_) || !node_->IsDeleted()) return;
        out_ = false;
        NodeEventBatch batch;
        node_->ClearAFlag(A_IS_DELETED);
        for (int i = 0; i < NODE_NUM_REFS; ++i) {
            const Held& h = held_[i];
            if (alive(h.target, h.handle) && !h.target->TestAFlag(A_IS_DELETED) && !node_->GetReference(i))
                RestoreReference(node_, i, h.target);
        }
        for (const User& u : users_)
            if (alive(u.maker, u.handle) && u.slot < u.maker->NumRefs() && !u.maker->GetReference(u.slot))
                RestoreReference(u.maker, u.slot, node_);
        SceneNodeContainer::Instance().AddAt(node_, containerSlot_);
        Node* parent = Node::ByHandle(parent_);
        if (!parent || parent->IsSelfOrAncestor(node_) || !parent->TreeRoot()) parent = Scene::Instance().RootNode();
        parent->LinkChildAt(node_, childIndex_);
        if (selIndex_ >= 0) Scene::Instance().RestoreToSelection(node_, selIndex_);
        for (const SetPlace& p : sets_) {
            if (!alive(p.sets, p.handle)) continue;
            const int i = p.sets->Find(p.name);
            if (i < 0) continue;
            std::vector<INode*> items = p.sets->Items(i);
            items.insert(items.begin() + std::min<std::ptrdiff_t>(p.position, std::ptrdiff_t(items.size())), node_);
            INodeTab tab;
            for (INode* n : items) tab.Append(n);
            p.sets->Replace(tab, p.name);
        }
        Scene::Instance().SetSaveRequired(true);
        BroadcastNotification(NOTIFY_SCENE_ADDED_NODE, static_cast<INode*>(node_));
        RaiseNodeEvent(NodeEvent::Added, node_->GetHandle());
    }

    Node* node_;
    AnimHandle anim_;
    bool created_;
    bool out_ = false;  // the node is out of the scene through this record
    ULONG parent_ = 0;
    int childIndex_ = -1;
    int containerSlot_ = -1;
    int selIndex_ = -1;
    Held held_[NODE_NUM_REFS];
    std::vector<User> users_;
    std::vector<SetPlace> sets_;
};

// A node's parent and position before and after it was linked elsewhere.
class LinkRestore : public RestoreObj {
public:
    explicit LinkRestore(Node* node) : handle_(node->GetHandle()), before_(placeOf(node)) {}
    void Restore(int isUndo) override {
        if (isUndo)
            if (Node* n = Node::ByHandle(handle_)) after_ = placeOf(n);
        apply(before_);
    }
    void Redo() override { apply(after_); }
    MSTR Description() override { return MSTR(L"Link"); }

private:
    struct Place {
        ULONG parent = 0;
        int index = -1;
    };
    static Place placeOf(Node* n) {
        Node* p = n->Parent();
        return p ? Place{p->GetHandle(), p->ChildIndex(n)} : Place{};
    }
    void apply(const Place& place) {
        Node* n = Node::ByHandle(handle_);
        Node* parent = Node::ByHandle(place.parent);
        if (!n || !parent || parent->IsSelfOrAncestor(n)) return;
        if (n->Parent() == parent && parent->ChildIndex(n) == place.index) return;
        NodeEventBatch batch;
        parent->LinkChildAt(n, place.index);
        BroadcastNotification(NOTIFY_NODE_LINKED, static_cast<INode*>(n));
        RaiseNodeEvent(NodeEvent::LinkChanged, handle_);
        Scene::Instance().SetSaveRequired(true);
    }
    ULONG handle_;
    Place before_, after_;
};

}  // namespace

bool RecordingSceneUndo() { return theHold.Holding() && !theHold.RestoreOrRedoing(); }

void RecordNodeCreated(Node* node) {
    if (node && RecordingSceneUndo()) theHold.Put(new NodeLifeRestore(node, true));
}

void RecordNodeLink(Node* node) {
    if (node && RecordingSceneUndo()) theHold.Put(new LinkRestore(node));
}

void TakeNodeOutOfScene(Node* node) {
    if (!node) return;
    if (RecordingSceneUndo()) {
        auto* record = new NodeLifeRestore(node, false);
        record->Retire();
        theHold.Put(record);
        return;
    }
    SuspendedHold quiet;
    takeOut(node);
}

}  // namespace hostrt
