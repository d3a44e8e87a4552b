// Creating, deleting and cloning the scene's nodes, with the notifications and node events of each.
#include "scene/node_operations.h"

#include "hold.h"
#include "ilayer.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"
#include "plugapi.h"
#include "scene/node.h"
#include "scene/node_names.h"
#include "scene/node_undo.h"
#include "scene/scene.h"

#include <unordered_map>
#include <unordered_set>

namespace hostrt {

namespace {

constexpr Class_ID kPRSControlID(0x00002005, 0);

void announceAdded(Node* n, bool created) {
    if (created) BroadcastNotification(NOTIFY_NODE_CREATED, static_cast<INode*>(n));
    BroadcastNotification(NOTIFY_SCENE_ADDED_NODE, static_cast<INode*>(n));
    RaiseNodeEvent(NodeEvent::Added, n->GetHandle());
}

}  // namespace

std::vector<Node*> NodesBelow(Node* root) {
    std::vector<Node*> out;
    if (!root) return out;
    std::vector<Node*> todo(root->Children().rbegin(), root->Children().rend());
    while (!todo.empty()) {
        Node* n = todo.back();
        todo.pop_back();
        out.push_back(n);
        todo.insert(todo.end(), n->Children().rbegin(), n->Children().rend());
    }
    return out;
}

Node* FindNodeByName(Node* root, const MCHAR* name) {
    return NodeNameIndex::Instance().Find(root, name ? name : L"");
}

MSTR UniqueNodeName(const MSTR& base) { return NodeNameIndex::Instance().Unique(Scene::Instance().RootNode(), base); }

Node* CreateSceneNode(Object* obj) {
    NodeEventBatch batch;
    theHold.Suspend();  // the parts of a new node are not recorded one by one: its creation is
    auto* n = new Node();
    n->InitName(obj ? obj->GetObjectName() : MSTR());
    if (auto* made = static_cast<Animatable*>(CreateInstance(CTRL_MATRIX3_CLASS_ID, kPRSControlID))) {
        if (auto* c = dynamic_cast<Control*>(made))
            n->ReplaceReference(NODE_TM_REF, c);
        else
            made->DeleteThis();
    }
    if (obj) n->ReplaceReference(NODE_OBJECT_REF, obj);
    if (ILayerManager* layers = GetCOREInterface()->GetLayerManager())
        if (ILayer* current = layers->GetCurrentLayer()) n->ReplaceReference(NODE_LAYER_REF, current);
    theHold.Resume();
    Scene::Instance().RootNode()->LinkChild(n);
    Scene::Instance().SetSaveRequired(true);
    RecordNodeCreated(n);  // undo takes the whole node out again
    announceAdded(n, true);
    return n;
}

void DeleteSceneNodes(const std::vector<INode*>& nodes, bool keepChildTM) {
    NodeEventBatch batch;
    std::vector<std::pair<Node*, ULONG>> todo;
    for (INode* in : nodes)
        if (Node* n = Node::From(in)) todo.emplace_back(n, n->GetHandle());
    const TimeValue t = GetCOREInterface()->GetTime();
    for (auto [original, handle] : todo) {
        Node* n = Node::ByHandle(handle);
        if (n != original || n->IsRootNode()) continue;  // gone already (perhaps through a handler of 68)
        BroadcastNotification(NOTIFY_SCENE_PRE_DELETED_NODE, static_cast<INode*>(n));
        if (Node::ByHandle(handle) != n) continue;  // a handler deleted it, with its own 68 and 69
        // While recording, the children's new links and transforms are recorded before the deletion itself.
        const bool quiet = !RecordingSceneUndo();
        if (quiet) theHold.Suspend();
        const std::vector<Node*> children = n->Children();
        for (Node* c : children) c->Detach(t, keepChildTM);
        RaiseNodeEvent(NodeEvent::Deleted, handle);
        TakeNodeOutOfScene(n);
        if (quiet) theHold.Resume();
        Scene::Instance().SetSaveRequired(true);
        BroadcastNotification(NOTIFY_SCENE_POST_DELETED_NODE, nullptr);
    }
}

ClonedNodes CloneSceneNodes(const std::vector<INode*>& nodes, const Point3& offset, bool expandHierarchies,
                            int cloneType) {
    NodeEventBatch batch;
    // What to clone, parents before children; a node listed twice (or below a listed node) is cloned once.
    std::vector<Node*> list;
    std::unordered_set<Node*> chosen;
    for (INode* in : nodes) {
        Node* n = Node::From(in);
        if (!n || n->IsRootNode() || n->IsDeleted() || !chosen.insert(n).second) continue;
        list.push_back(n);
        if (expandHierarchies)
            for (Node* below : NodesBelow(n))
                if (chosen.insert(below).second) list.push_back(below);
    }
    ClonedNodes result;
    if (list.empty()) return result;

    theHold.Suspend();  // cloning is no undoable edit
    RemapDir& remap = NewRemapDir();
    if (cloneType != NODE_COPY)
        for (Node* n : list)
            if (Object* obj = n->GetObjOrWSMRef()) remap.AddEntry(obj, obj);  // instances share the object
    std::unordered_map<Node*, Node*> cloneOf;
    for (Node* n : list) {
        auto* c = dynamic_cast<Node*>(remap.CloneRef(static_cast<ReferenceTarget*>(n)));
        if (c) cloneOf[n] = c;
    }
    remap.DeleteThis();

    const TimeValue t = GetCOREInterface()->GetTime();
    for (Node* n : list) {
        Node* c = cloneOf[n];
        if (!c) continue;
        Node* parent = n->Parent();
        auto p = parent ? cloneOf.find(parent) : cloneOf.end();
        const bool topLevel = p == cloneOf.end();
        Node* newParent = topLevel ? (parent ? parent : Scene::Instance().RootNode()) : p->second;
        // Parents come before their children and each clone joins the scene at once, so every name is made
        // with the earlier clones' names taken.
        c->InitName(UniqueNodeName(n->GetName()));
        newParent->LinkChild(c);
        if (topLevel && offset != Point3()) {
            Matrix3 tm = c->GetNodeTM(t);
            tm.Translate(offset);
            c->SetNodeTM(t, tm);
        }
        result.sources.push_back(n);
        result.clones.push_back(c);
    }
    theHold.Resume();
    Scene::Instance().SetSaveRequired(true);
    for (Node* c : result.clones) announceAdded(c, false);
    return result;
}

}  // namespace hostrt
