// Merge of a scene file into the open scene (nodes, their materials and layers) and the save of some nodes.
#include "scene/merge.h"

#include "core/paired_scopes.h"
#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "io/file_bytes.h"
#include "io/scene_file_error.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "notify.h"
#include "scene/node.h"
#include "scene/node_operations.h"
#include "scene/scene.h"
#include "scene/scene_events.h"

#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>

namespace hostrt {

namespace {

// The names of a layer's ancestors, nearest first.
std::vector<std::wstring> ancestry(ILayer* layer) {
    std::vector<std::wstring> names;
    for (ILayer* p = layer->GetParentLayer(); p && names.size() < 1024; p = p->GetParentLayer())
        names.push_back(p->GetName().str());
    return names;
}

bool isSceneLayer(ILayerManager* lm, ILayer* layer) {
    for (int i = 0; i < lm->GetLayerCount(); ++i)
        if (lm->GetLayer(i) == layer) return true;
    return false;
}

// Finds the scene layer for each layer of the merged file: the scene's layer of the same name, unless the
// "duplicate layer without same hierarchy" option is on and the two have different ancestors; then (and when
// the scene has no such layer) the file's layer joins the scene, renamed when its name is taken, under the
// scene layer found for its own parent.
class LayerMerger {
public:
    explicit LayerMerger(ILayerManager* lm) : lm_(lm), duplicate_(lm->GetDuplicateLayerWithoutSameHierarchyOnMerge()) {}

    ILayer* Resolve(ILayer* layer) {
        if (!layer) return nullptr;
        if (auto it = done_.find(layer); it != done_.end()) return it->second;
        if (isSceneLayer(lm_, layer)) return done_[layer] = layer;
        done_[layer] = nullptr;  // a parent cycle in the file ends here
        ILayer* same = lm_->GetLayer(layer->GetName());
        if (same && (!duplicate_ || ancestry(same) == ancestry(layer))) return done_[layer] = same;
        ILayer* parent = Resolve(layer->GetParentLayer());
        if (same) layer->SetName(freeName(layer->GetName()));
        lm_->AddLayer(layer);
        if (layer->GetParentLayer() != parent) layer->SetParentLayer(parent);
        return done_[layer] = layer;
    }

private:
    MSTR freeName(const MSTR& base) {
        for (int i = 1;; ++i) {
            MSTR candidate = base;
            candidate.append_printf(L"%03d", i);
            if (!lm_->GetLayer(candidate)) return candidate;
        }
    }
    ILayerManager* lm_;
    bool duplicate_;
    std::map<ILayer*, ILayer*> done_;
};

}  // namespace

std::vector<INode*> MergeSceneFile(const MSTR& path, const MergeOptions& options) {
    // Everything is read and checked before the scene changes.
    SceneImage image = ParseSceneFile(ReadFileBytes(path), path);
    CheckSceneClasses(image, path);
    if (image.roots.empty() || image.roots[0] < 0) throw SceneFileError(path, L"the file holds no scene root");
    const SceneClassRecord& rootClass = image.ClassOf(std::size_t(image.roots[0]));
    if (rootClass.superClass != BASENODE_CLASS_ID || rootClass.classId != Node::kClassID)
        throw SceneFileError(path, L"the scene root is of " + DescribeSceneClass(rootClass) + L", not a node");
    LoadedScene loaded = InstantiateScene(image, path);
    auto* fileRoot = dynamic_cast<Node*>(loaded.roots[0]);
    if (!fileRoot || !fileRoot->IsRootNode()) {
        DestroySceneObjects(loaded);
        throw SceneFileError(path, L"the first root of the file is no root node");
    }

    NodeEventBatch batch;
    std::optional<HoldSuspendedScope> suspended(std::in_place);  // a merge is no undoable edit
    Scene& scene = Scene::Instance();
    Node* sceneRoot = scene.RootNode();
    // Nodes the file holds outside its tree (reached only through references) count as top-level nodes.
    for (ReferenceTarget* o : loaded.objects)
        if (auto* n = dynamic_cast<Node*>(o); n && !n->IsRootNode() && !n->Parent()) fileRoot->LinkChild(n);

    std::vector<Node*> top;
    std::unordered_map<std::wstring, std::vector<ULONG>> sceneNames;  // handles: deletions may run handlers
    if (options.dupAction == MERGE_DUPS_SKIP || options.dupAction == MERGE_DUPS_DELOLD)
        for (Node* s : NodesBelow(sceneRoot)) sceneNames[s->GetName()].push_back(s->GetHandle());
    for (Node* n : std::vector<Node*>(fileRoot->Children())) {
        auto same = sceneNames.find(n->GetName());
        if (same != sceneNames.end() && options.dupAction == MERGE_DUPS_SKIP) continue;
        if (same != sceneNames.end() && options.dupAction == MERGE_DUPS_DELOLD) {
            std::vector<INode*> old;
            for (ULONG h : same->second)
                if (Node* s = Node::ByHandle(h)) old.push_back(s);
            DeleteSceneNodes(old, true);  // with the hold suspended: a merge is not recorded
            sceneNames.erase(same);
        }
        top.push_back(n);
    }
    for (Node* n : top) sceneRoot->LinkChild(n);
    std::vector<Node*> merged;
    for (Node* n : top) {
        merged.push_back(n);
        for (Node* below : NodesBelow(n)) merged.push_back(below);
    }

    Interface* ip = GetCOREInterface();
    if (MtlBaseLib* lib = ip->GetSceneMtls()) {
        std::map<std::wstring, Mtl*> sceneByName;
        if (options.dupMtlAction == MERGE_DUP_MTL_USE_SCENE_MTL)
            for (int i = 0; i < lib->Count(); ++i)
                if (auto* m = dynamic_cast<Mtl*>((*lib)[i])) sceneByName.emplace(m->GetName().str(), m);
        std::unordered_set<Mtl*> added;
        for (Node* n : merged) {
            Mtl* m = n->GetMtl();
            if (!m) continue;
            if (auto it = sceneByName.find(m->GetName().str()); it != sceneByName.end()) {
                n->ReplaceReference(NODE_MTL_REF, it->second, FALSE);  // the file's own goes with the file
                continue;
            }
            if (added.insert(m).second && lib->FindMtl(m) < 0) lib->Add(m);
        }
    }
    if (ILayerManager* lm = ip->GetLayerManager()) {
        LayerMerger layers(lm);
        ILayer* current = lm->GetCurrentLayer();
        for (Node* n : merged) {
            ILayer* target = n->GetLayer() ? layers.Resolve(n->GetLayer()) : current;
            if (target && target != n->GetLayer()) n->ReplaceReference(NODE_LAYER_REF, target, FALSE);
        }
    }

    // What the scene did not take of the file goes (the file's root and scene parts, skipped nodes).
    std::vector<ReferenceTarget*> dispose{fileRoot};
    for (std::size_t k = 1; k < loaded.roots.size(); ++k)
        if (loaded.roots[k]) dispose.push_back(loaded.roots[k]);
    // Only the merged nodes and the scene parts (which took the merged layers and materials) can be reached from
    // what goes; the rest of the scene need not be walked.
    std::vector<ReferenceTarget*> keep(top.begin(), top.end());
    for (ReferenceTarget* r : scene.ContentRoots())
        if (r != sceneRoot) keep.push_back(r);
    DestroyObjectGraph(dispose, keep);
    suspended.reset();

    scene.SetSaveRequired(true);
    if (options.selectMerged) scene.SetSelection(merged);
    INodeTab table;
    for (Node* n : merged) {
        table.Append(n);
        BroadcastNotification(NOTIFY_SCENE_ADDED_NODE, static_cast<INode*>(n));
        RaiseNodeEvent(NodeEvent::Added, n->GetHandle());
    }
    BroadcastNotification(NOTIFY_FILE_POST_MERGE3, &table);
    return {table.begin(), table.end()};
}

void SaveNodesToFile(const std::vector<INode*>& nodes, const MSTR& path) {
    BroadcastNotification(NOTIFY_FILE_PRE_SAVE, const_cast<MCHAR*>(path.data()));
    // Computed after 13: its handlers may change the scene.
    std::vector<Node*> listed;
    for (INode* in : nodes)
        if (Node* n = Node::From(in); n && !n->IsRootNode() && !n->IsDeleted()) listed.push_back(n);
    std::vector<Node*> top;
    std::unordered_set<Node*> seen;
    for (Node* n : listed) {
        bool below = false;
        for (Node* other : listed)
            if (other != n && n->Parent() && n->Parent()->IsSelfOrAncestor(other)) below = true;
        if (!below && seen.insert(n).second) top.push_back(n);
    }
    std::exception_ptr failure;
    Node* root = Node::MakeRoot(L"Scene Root");
    try {
        root->SetSavedChildren(top);
        WriteFileReplacing(path, WriteSceneFile({root}, path));
    } catch (...) {
        failure = std::current_exception();
    }
    root->SetSavedChildren({});
    root->DeleteMe();
    BroadcastNotification(NOTIFY_FILE_POST_SAVE, const_cast<MCHAR*>(path.data()));
    if (failure) std::rethrow_exception(failure);
}

}  // namespace hostrt
