// The open scene and its root: save, open, reset and new, with the host's file notifications.
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
#include "notify.h"

#include <unordered_set>

namespace hostrt {

namespace {

constexpr USHORT kItemCountChunk = 0x0001;
// Most items a scene root accepts from a file; a larger count means the file is damaged.
constexpr ULONG kMaxItems = 1u << 24;
// Call parameter of the pre-new notification: nothing of the old scene is kept.
constexpr DWORD kNewAll = 1;

// Deletes root and everything the scene held. Dropping the root's references lets the reference system
// delete what nothing else needs; objects kept alive only by each other (reference cycles) or reached
// only through host links are deleted here. Objects that something outside the scene really depends on
// stay, with everything they really depend on or link to.
void deleteSceneGraph(SceneRoot* root) {
    const std::vector<ReferenceTarget*> reached = CollectSceneObjects({root});
    std::vector<AnimHandle> handles;
    for (ReferenceTarget* o : reached) handles.push_back(Animatable::GetHandleByAnim(o));
    root->DeleteMe();

    std::unordered_set<ReferenceTarget*> left;
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (Animatable::GetAnimByHandle(handles[i]) == reached[i]) left.insert(reached[i]);
    std::vector<ReferenceTarget*> keep;
    for (ReferenceTarget* o : left)
        for (ReferenceMaker* dep : o->Dependents())
            if (!(dep->IsRefTarget() && left.count(static_cast<ReferenceTarget*>(dep))) && dep->IsRealDependency(o)) {
                keep.push_back(o);
                break;
            }
    // What the kept objects really hold stays too.
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
    // Owners first: they take their custom-attribute containers with them.
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (left.count(reached[i]) && reached[i]->GetCustAttribContainer()) order.push_back(i);
    for (std::size_t i = 0; i < reached.size(); ++i)
        if (left.count(reached[i]) && !reached[i]->GetCustAttribContainer()) order.push_back(i);
    for (std::size_t i : order)
        if (Animatable::GetAnimByHandle(handles[i]) == reached[i]) reached[i]->DeleteMe();
}

class SceneRootClassDesc : public ClassDesc {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new SceneRoot()); }
    const MCHAR* ClassName() override { return L"SceneRoot"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return SceneRoot::kClassID; }
    const MCHAR* Category() override { return L""; }
};

}  // namespace

// ------------------------------------------------------------------------------------------------ SceneRoot

int SceneRoot::Add(ReferenceTarget* item) {
    if (!item) return -1;
    const int at = items_.Append(nullptr);
    theHold.Suspend();  // the list itself is not undoable: an undo record would refer to a moved slot
    const RefResult r = ReplaceReference(at, item);
    theHold.Resume();
    if (r != REF_SUCCEED) {
        items_.Delete(at, 1);
        return -1;
    }
    return at;
}

bool SceneRoot::Remove(int i) {
    if (i < 0 || i >= items_.Count()) return false;
    // The bookkeeping is per target, so the slot can go once the reference is dropped.
    ReferenceTarget* item = items_[i];
    theHold.Suspend();
    ReplaceReference(i, nullptr, FALSE);
    theHold.Resume();
    items_.Delete(i, 1);
    if (item && Animatable::GetAnimByHandle(Animatable::GetHandleByAnim(item)) == item) item->MaybeAutoDelete();
    return true;
}

void SceneRoot::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < items_.Count()) items_[i] = target;
}

IOResult SceneRoot::Save(ISave* isave) {
    const ULONG n = ULONG(items_.Count());
    ULONG written = 0;
    isave->BeginChunk(kItemCountChunk);
    const IOResult r = isave->Write(&n, sizeof n, &written);
    isave->EndChunk();
    return r;
}

IOResult SceneRoot::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kItemCountChunk) {
            ULONG n = 0, got = 0;
            if (iload->Read(&n, sizeof n, &got) != IO_OK || n > kMaxItems) return IO_ERROR;
            items_.SetCount(int(n));
        }
        iload->CloseChunk();
    }
    return res == IO_END ? IO_OK : res;
}

void RegisterSceneClasses() {
    static SceneRootClassDesc rootDesc;
    ClassDirectory::Instance().Register(&rootDesc);
}

// ---------------------------------------------------------------------------------------------------- Scene

Scene& Scene::Instance() {
    static Scene* scene = new Scene();  // objects may still be released while the process exits
    return *scene;
}

Scene::Scene() {
    RegisterSceneClasses();
    installRoot(new SceneRoot());
}

void Scene::installRoot(SceneRoot* root) {
    root->SetAFlag(A_LOCK_TARGET);  // nothing references the root: it must not delete itself
    root_ = root;
}

void Scene::destroyContent() {
    SceneRoot* old = root_;
    root_ = nullptr;
    if (old) deleteSceneGraph(old);
    theHold.FlushUndoBuffer();  // the undo steps refer to objects of the old scene
}

void Scene::SaveScene(const MSTR& path) {
    NotifyFileProcess process{scenefile::kFileProcessSceneSave, path.data()};
    BroadcastNotification(NOTIFY_FILE_PRE_SAVE_PROCESS, &process);
    BroadcastNotification(NOTIFY_FILE_PRE_SAVE, const_cast<MCHAR*>(path.data()));

    // What to write is decided only now: the pre-save handlers may have changed the scene.
    std::exception_ptr failure;
    try {
        std::vector<ReferenceTarget*> roots{root_};
        WriteFileReplacing(path, WriteSceneFile(roots, path));
        path_ = path;
    } catch (...) {
        failure = std::current_exception();
    }
    BroadcastNotification(NOTIFY_FILE_POST_SAVE, const_cast<MCHAR*>(path.data()));
    if (failure) {
        saveRequired_ = true;
        std::rethrow_exception(failure);
    }
    saveRequired_ = false;
}

void Scene::OpenScene(const MSTR& path) {
    SceneImage image = ParseSceneFile(ReadFileBytes(path), path);
    CheckSceneClasses(image, path);
    if (image.roots.size() != 1 || image.roots[0] < 0)
        throw SceneFileError(path, L"the file holds " + std::to_wstring(image.roots.size()) +
                                       L" scene roots instead of one");
    const SceneClassRecord& rootClass = image.ClassOf(std::size_t(image.roots[0]));
    if (rootClass.superClass != REF_TARGET_CLASS_ID || rootClass.classId != SceneRoot::kClassID)
        throw SceneFileError(path, L"the scene root is of " + DescribeSceneClass(rootClass) +
                                       L", not a scene root");

    FileIOType kind = IOTYPE_MAX;
    BroadcastNotification(NOTIFY_FILE_PRE_OPEN, &kind);
    destroyContent();
    try {
        LoadedScene loaded = InstantiateScene(image, path);
        auto* root = dynamic_cast<SceneRoot*>(loaded.roots[0]);
        if (!root) {
            DestroySceneObjects(loaded);
            throw SceneFileError(path, L"the scene root class did not create a scene root");
        }
        installRoot(root);
        path_ = path;
    } catch (...) {
        installRoot(new SceneRoot());
        path_ = MSTR();
        saveRequired_ = false;
        BroadcastNotification(NOTIFY_FILE_POST_OPEN, &kind);
        throw;
    }
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_FILE_POST_OPEN, &kind);
}

void Scene::ResetScene() {
    BroadcastNotification(NOTIFY_SYSTEM_PRE_RESET);
    destroyContent();
    installRoot(new SceneRoot());
    path_ = MSTR();
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_SYSTEM_POST_RESET);
}

void Scene::NewScene() {
    DWORD option = kNewAll;
    BroadcastNotification(NOTIFY_SYSTEM_PRE_NEW, &option);
    destroyContent();
    installRoot(new SceneRoot());
    path_ = MSTR();
    saveRequired_ = false;
    BroadcastNotification(NOTIFY_SYSTEM_POST_NEW);
}

}  // namespace hostrt
