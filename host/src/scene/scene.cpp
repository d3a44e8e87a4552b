// The open scene: its root node and parts, save, open, reset and new with the host's file notifications, the
// selection and the command-panel state.
#include "scene/scene.h"

#include "core/class_directory.h"
#include "hold.h"
#include "io/file_bytes.h"
#include "io/scene_file_error.h"
#include "io/scene_format.h"
#include "io/scene_links.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "ioapi.h"
#include "maxexception.h"
#include "notify.h"
#include "object.h"
#include "scene/node.h"
#include "scene/node_container.h"
#include "scene/scene_item_list.h"
#include "scene/scene_events.h"

#include <algorithm>
#include <unordered_set>

namespace hostrt {

namespace {

// Call parameter of the pre-new notification: nothing of the old scene is kept.
constexpr DWORD kNewAll = 1;
const MCHAR* const kRootName = L"Scene Root";

bool alive(ReferenceTarget* t, AnimHandle h) { return Animatable::GetAnimByHandle(h) == t; }

// Undo record of a selection change: the selection before and after, by node handle.
class SelectionRestore : public RestoreObj {
public:
    SelectionRestore(const std::vector<Node*>& before, const std::vector<Node*>& after)
        : before_(handles(before)), after_(handles(after)) {}
    void Restore(int) override { Scene::Instance().SetSelection(nodes(before_)); }
    void Redo() override { Scene::Instance().SetSelection(nodes(after_)); }
    MSTR Description() override { return MSTR(L"Select"); }

private:
    static std::vector<ULONG> handles(const std::vector<Node*>& v) {
        std::vector<ULONG> out;
        for (Node* n : v) out.push_back(n->GetHandle());
        return out;
    }
    static std::vector<Node*> nodes(const std::vector<ULONG>& v) {
        std::vector<Node*> out;
        for (ULONG h : v)
            if (Node* n = Node::ByHandle(h)) out.push_back(n);
        return out;
    }
    std::vector<ULONG> before_, after_;
};

}  // namespace

void RegisterSceneClasses() {
    RegisterNodeClasses();
    RegisterItemListClass();
}

// ------------------------------------------------------------------------------------- destroying objects

namespace {

// Every object a scene save would write for roots (real references, custom-attribute containers and host links),
// in no particular order: cheaper than collecting them in file order.
std::unordered_set<ReferenceTarget*> reachableFrom(const std::vector<ReferenceTarget*>& roots) {
    std::unordered_set<ReferenceTarget*> seen;
    std::vector<ReferenceTarget*> todo;
    for (ReferenceTarget* r : roots)
        if (r) todo.push_back(r);
    while (!todo.empty()) {
        ReferenceTarget* o = todo.back();
        todo.pop_back();
        if (!seen.insert(o).second) continue;
        const int n = o->NumRefs();
        for (int i = 0; i < n; ++i)
            if (ReferenceTarget* t = o->GetReference(i); t && !seen.count(t) && o->IsRealDependency(t)) todo.push_back(t);
        if (ICustAttribContainer* c = o->GetCustAttribContainer()) todo.push_back(c);
        if (auto* links = dynamic_cast<ISceneLinks*>(o))
            for (int i = 0; i < links->NumLinks(); ++i)
                if (ReferenceTarget* t = links->GetLink(i)) todo.push_back(t);
    }
    return seen;
}

}  // namespace

void DestroyObjectGraph(const std::vector<ReferenceTarget*>& roots, const std::vector<ReferenceTarget*>& protect) {
    std::vector<ReferenceTarget*> reached = CollectSceneObjects(roots);
    if (!protect.empty()) {
        const std::unordered_set<ReferenceTarget*> spared = reachableFrom(protect);
        reached.erase(std::remove_if(reached.begin(), reached.end(), [&](ReferenceTarget* o) { return spared.count(o) > 0; }),
                      reached.end());
    }
    std::vector<AnimHandle> handles;
    handles.reserve(reached.size());
    for (ReferenceTarget* o : reached) handles.push_back(Animatable::GetHandleByAnim(o));

    // Nodes leave the container first, the most recent ones first, and the selection with them.
    std::vector<Node*> nodes;
    for (ReferenceTarget* o : reached)
        if (auto* n = dynamic_cast<Node*>(o)) nodes.push_back(n);
    std::sort(nodes.begin(), nodes.end(), [](Node* a, Node* b) { return a->containerSlot > b->containerSlot; });
    for (Node* n : nodes) {
        SceneNodeContainer::Instance().Remove(n);
        if (n->Selected()) Scene::Instance().DropFromSelection(n);
    }

    // Everything reached is locked while the graph goes: an object losing a reference then does not look for
    // real dependents of its own (which costs as much as it has dependents); whatever is not kept is deleted
    // explicitly below. The kept ones get their lock flag back.
    std::vector<bool> wasLocked(reached.size());
    for (std::size_t i = 0; i < reached.size(); ++i) {
        wasLocked[i] = reached[i]->TestAFlag(A_LOCK_TARGET) != FALSE;
        reached[i]->SetAFlag(A_LOCK_TARGET);
    }

    theHold.Suspend();
    const std::unordered_set<ReferenceTarget*> reachedSet(reached.begin(), reached.end());
    for (ReferenceTarget* r : roots)
        if (r && reachedSet.count(r)) r->DeleteMe();

    std::unordered_set<ReferenceTarget*> left;
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (alive(reached[i], handles[i])) left.insert(reached[i]);
    // What something outside the graph really depends on stays, with what it really holds, contains or links.
    std::vector<ReferenceTarget*> keep;
    for (ReferenceTarget* o : left)
        for (ReferenceMaker* dep : o->Dependents())
            if (!(dep->IsRefTarget() && left.count(static_cast<ReferenceTarget*>(dep))) && dep->IsRealDependency(o)) {
                keep.push_back(o);
                break;
            }
    for (std::size_t k = 0; k < keep.size(); ++k) {
        ReferenceTarget* o = keep[k];
        if (!left.erase(o)) continue;
        for (int i = 0; i < o->NumRefs(); ++i)
            if (ReferenceTarget* t = o->GetReference(i); t && left.count(t) && o->IsRealDependency(t)) keep.push_back(t);
        if (auto* c = o->GetCustAttribContainer(); c && left.count(c)) keep.push_back(c);
        if (auto* links = dynamic_cast<ISceneLinks*>(o))
            for (int i = 0; i < links->NumLinks(); ++i)
                if (ReferenceTarget* t = links->GetLink(i); t && left.count(t)) keep.push_back(t);
    }
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (!wasLocked[i] && alive(reached[i], handles[i]) && !left.count(reached[i])) reached[i]->ClearAFlag(A_LOCK_TARGET);
    // Owners first: they take their custom-attribute containers with them. Then the rest, last reached first.
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (left.count(reached[i]) && reached[i]->GetCustAttribContainer()) order.push_back(i);
    for (std::size_t i = reached.size(); i-- > 0;)
        if (left.count(reached[i]) && !reached[i]->GetCustAttribContainer()) order.push_back(i);
    for (std::size_t i : order)
        if (alive(reached[i], handles[i])) reached[i]->DeleteMe();
    theHold.Resume();
}

void DestroyNodeTrees(const std::vector<Node*>& roots) {
    std::vector<ReferenceTarget*> targets;
    for (Node* r : roots) {
        if (!r) continue;
        targets.push_back(r);
        for (auto& x : r->XRefEntries()) targets.push_back(x.tree);
        r->XRefEntries().clear();
        r->Unlink();
    }
    DestroyObjectGraph(targets);
}

// ---------------------------------------------------------------------------------------------- the scene

Scene& Scene::Instance() {
    static Scene* scene = new Scene();  // objects may still be released while the process exits
    return *scene;
}

Scene::Scene() {
    RegisterSceneClasses();
    root_ = Node::MakeRoot(kRootName);
}

void Scene::RegisterPart(const ScenePart& part) {
    if (!part.make || !part.install)
        throw MAXException(L"scene part " + std::to_wstring(int(part.role)) + L": make and install are required");
    for (const Installed& p : parts_)
        if (p.part.role == part.role)
            throw MAXException(L"scene part " + std::to_wstring(int(part.role)) + L" is registered already");
    auto at = std::find_if(parts_.begin(), parts_.end(), [&](const Installed& p) { return p.part.role > part.role; });
    at = parts_.insert(at, Installed{part, nullptr});
    install(*at, nullptr);
}

ReferenceTarget* Scene::PartItem(ScenePartRole role) const {
    for (const Installed& p : parts_)
        if (p.part.role == role) return p.item;
    return nullptr;
}

ReferenceTarget* Scene::install(Installed& slot, ReferenceTarget* item) {
    if (!item) item = slot.part.make();
    if (item) item->SetAFlag(A_LOCK_TARGET);  // nothing references a part's item: it must not delete itself
    ReferenceTarget* previous = slot.item;
    slot.item = item;
    slot.part.install(item, previous);
    return previous;
}

std::vector<ReferenceTarget*> Scene::ContentRoots() {
    std::vector<ReferenceTarget*> roots{root_};
    for (Installed& p : parts_)
        if (p.item) roots.push_back(p.item);
    return roots;
}

void Scene::emptyScene() {
    Node* oldRoot = root_;
    std::vector<ReferenceTarget*> old;
    animRange_ = Interval(0, 100 * GetTicksPerFrame());
    root_ = Node::MakeRoot(kRootName);
    for (Installed& p : parts_)
        if (ReferenceTarget* prev = install(p, nullptr)) old.push_back(prev);
    selection_.clear();
    for (auto& x : oldRoot->XRefEntries()) old.push_back(x.tree);
    oldRoot->XRefEntries().clear();
    old.insert(old.begin(), oldRoot);
    DestroyObjectGraph(old);
    editObject_ = 0;
    theHold.FlushUndoBuffer();  // the undo steps refer to objects of the old scene
}

void Scene::SaveScene(const MSTR& path, bool makeCurrent) {
    NotifyFileProcess process{scenefile::kFileProcessSceneSave, path.data()};
    BroadcastNotification(NOTIFY_FILE_PRE_SAVE_PROCESS, &process);
    BroadcastNotification(NOTIFY_FILE_PRE_SAVE, const_cast<MCHAR*>(path.data()));

    // What to write is decided only now: the pre-save handlers may have changed the scene.
    std::exception_ptr failure;
    try {
        root_->PartRoles().clear();
        for (Installed& p : parts_)
            if (p.item) root_->PartRoles().push_back(int(p.part.role));
        // The range goes into the file only when it is not the default, so such files stay as they were.
        const bool defaultRange = animRange_.Start() == 0 && animRange_.End() == 100 * GetTicksPerFrame();
        root_->SceneAnimRange() = defaultRange ? std::nullopt : std::optional<Interval>(animRange_);
        struct Writing {
            bool& flag;
            explicit Writing(bool& f) : flag(f) { flag = true; }
            ~Writing() { flag = false; }
        } writing(writingFile_);
        WriteFileReplacing(path, WriteSceneFile(ContentRoots(), path));
        if (makeCurrent) path_ = path;
    } catch (...) {
        failure = std::current_exception();
    }
    BroadcastNotification(NOTIFY_FILE_POST_SAVE, const_cast<MCHAR*>(path.data()));
    if (failure) {
        saveRequired_ = true;
        std::rethrow_exception(failure);
    }
    if (makeCurrent) saveRequired_ = false;
}

void Scene::OpenScene(const MSTR& path) {
    SceneImage image = ParseSceneFile(ReadFileBytes(path), path);
    CheckSceneClasses(image, path);
    if (image.roots.empty() || image.roots[0] < 0)
        throw SceneFileError(path, L"the file holds no scene root");
    const SceneClassRecord& rootClass = image.ClassOf(std::size_t(image.roots[0]));
    if (rootClass.superClass != BASENODE_CLASS_ID || rootClass.classId != Node::kClassID)
        throw SceneFileError(path, L"the scene root is of " + DescribeSceneClass(rootClass) + L", not a node");

    FileIOType kind = IOTYPE_MAX;
    BroadcastNotification(NOTIFY_FILE_PRE_OPEN, &kind);
    emptyScene();
    path_ = MSTR();
    saveRequired_ = false;
    try {
        LoadedScene loaded = InstantiateScene(image, path);
        auto* root = dynamic_cast<Node*>(loaded.roots[0]);
        if (!root || !root->IsRootNode()) {
            DestroySceneObjects(loaded);
            throw SceneFileError(path, L"the first root of the file is no root node");
        }
        // Nodes the file holds outside the tree (reached only through references) join the scene root.
        for (ReferenceTarget* o : loaded.objects)
            if (auto* n = dynamic_cast<Node*>(o); n && n != root && !n->IsRootNode() && !n->Parent())
                root->LinkChild(n);

        std::vector<ReferenceTarget*> dispose{root_};
        root_ = root;
        if (root->SceneAnimRange()) animRange_ = *root->SceneAnimRange();
        const std::vector<int> roles = root->PartRoles();
        std::vector<bool> used(loaded.roots.size(), false);
        for (Installed& p : parts_)
            for (std::size_t k = 0; k < roles.size() && k + 1 < loaded.roots.size(); ++k)
                if (roles[k] == int(p.part.role) && loaded.roots[k + 1] && !used[k + 1]) {
                    used[k + 1] = true;
                    if (ReferenceTarget* prev = install(p, loaded.roots[k + 1])) dispose.push_back(prev);
                    break;
                }
        // Items of parts this host does not have are not kept (what the scene uses of them stays).
        bool unknownParts = false;
        for (std::size_t k = 1; k < loaded.roots.size(); ++k)
            if (!used[k] && loaded.roots[k]) {
                dispose.push_back(loaded.roots[k]);
                unknownParts = true;
            }
        DestroyObjectGraph(dispose, unknownParts ? ContentRoots() : std::vector<ReferenceTarget*>{});
        path_ = path;
    } catch (...) {
        saveRequired_ = false;
        BroadcastNotification(NOTIFY_FILE_POST_OPEN, &kind);
        throw;
    }
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_FILE_POST_OPEN, &kind);
}

void Scene::ResetScene() {
    BroadcastNotification(NOTIFY_SYSTEM_PRE_RESET);
    emptyScene();
    path_ = MSTR();
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_SYSTEM_POST_RESET);
}

void Scene::NewScene() {
    DWORD option = kNewAll;
    BroadcastNotification(NOTIFY_SYSTEM_PRE_NEW, &option);
    emptyScene();
    path_ = MSTR();
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_SYSTEM_POST_NEW);
}

// ---------------------------------------------------------------------------------------------- selection

void Scene::SetSelection(std::vector<Node*> nodes) {
    std::vector<Node*> next;
    std::unordered_set<Node*> seen;
    for (Node* n : nodes)
        if (n && !n->IsDeleted() && !n->IsRootNode() && seen.insert(n).second) next.push_back(n);
    if (next == selection_) return;
    NodeEventBatch batch;
    if (theHold.Holding()) theHold.Put(new SelectionRestore(selection_, next));
    for (Node* n : selection_)
        if (!seen.count(n)) {
            n->SetSelectedFlag(false);
            RaiseNodeEvent(NodeEvent::SelectionChanged, n->GetHandle());
        }
    for (Node* n : next)
        if (!n->Selected()) {
            n->SetSelectedFlag(true);
            RaiseNodeEvent(NodeEvent::SelectionChanged, n->GetHandle());
        }
    selection_ = std::move(next);
}

void Scene::DropFromSelection(Node* node) {
    if (!node->Selected()) return;  // the flag follows the list: nothing to look for
    auto it = std::find(selection_.begin(), selection_.end(), node);
    if (it != selection_.end()) selection_.erase(it);
    node->SetSelectedFlag(false);
}

void Scene::RestoreToSelection(Node* node, int index) {
    if (!node || node->IsDeleted() || node->IsRootNode() || node->Selected()) return;
    const auto at = index >= 0 && index < int(selection_.size()) ? selection_.begin() + index : selection_.end();
    selection_.insert(at, node);
    node->SetSelectedFlag(true);
    RaiseNodeEvent(NodeEvent::SelectionChanged, node->GetHandle());
}

BaseObject* Scene::CurEditObject() const {
    return dynamic_cast<BaseObject*>(Animatable::GetAnimByHandle(editObject_));
}

void Scene::SetCurEditObject(BaseObject* obj) { editObject_ = Animatable::GetHandleByAnim(obj); }

}  // namespace hostrt
