// Scene effects: node-list effect items (classes, lists, saving) and the scene's list of effects.
#include "scene/scene_effects.h"

#include "core/class_directory.h"
#include "hold.h"
#include "inode.h"
#include "ioapi.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/owned_scene_part.h"

#include <algorithm>
#include <stdexcept>

namespace hostrt {

namespace {

constexpr USHORT kListChunk = 0x0100;     // one per list: its entry count (u32)
constexpr USHORT kCountChunk = 0x0001;
constexpr ULONG kMaxEntries = 1u << 24;

struct EffectKind {
    Class_ID id;
    int lists;
    const MCHAR* name;
};
const EffectKind kKinds[] = {
    {SCENE_EFFECT_THREE_LISTS_CLASS_ID, 3, L"NodeListEffect3"},
    {SCENE_EFFECT_ONE_LIST_CLASS_ID, 1, L"NodeListEffect1"},
    {SCENE_EFFECT_ONE_LIST_B_CLASS_ID, 1, L"NodeListEffect1B"},
};

const EffectKind* kindOf(Class_ID id) {
    for (const EffectKind& k : kKinds)
        if (k.id == id) return &k;
    return nullptr;
}

class NodeListEffectClassDesc : public ClassDesc {
public:
    explicit NodeListEffectClassDesc(const EffectKind& kind) : kind_(kind) {}
    int IsPublic() override { return TRUE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new NodeListEffect(kind_.id, kind_.lists)); }
    const MCHAR* ClassName() override { return kind_.name; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kind_.id; }
    const MCHAR* Category() override { return L"Effects"; }

private:
    const EffectKind& kind_;
};

IOResult writeCount(ISave* isave, USHORT id, std::size_t count) {
    const ULONG n = ULONG(count);
    ULONG written = 0;
    isave->BeginChunk(id);
    const IOResult r = isave->Write(&n, sizeof n, &written);
    isave->EndChunk();
    return r;
}

IOResult readCount(ILoad* iload, std::size_t& count) {
    ULONG n = 0, got = 0;
    if (iload->Read(&n, sizeof n, &got) != IO_OK || n > kMaxEntries) return IO_ERROR;
    count = n;
    return IO_OK;
}

}  // namespace

// ------------------------------------------------------------------------------------------- NodeListEffect

void NodeListEffect::GetClassName(MSTR& s, bool) const {
    const EffectKind* k = kindOf(classId_);
    s = k ? k->name : L"NodeListEffect";
}

BaseInterface* NodeListEffect::GetInterface(Interface_ID id) {
    if (id == SCENE_EFFECT_NODE_LISTS_INTERFACE) return static_cast<INodeListEffect*>(this);
    return ReferenceTarget::GetInterface(id);
}

int NodeListEffect::listOf(int listCode) {
    if (listCode < 1 || (listCode - 1) % 4 != 0) return -1;
    const int list = (listCode - 1) / 4;
    return list < NumNodeLists() ? list : -1;
}

int NodeListEffect::firstSlot(int list) const {
    int slot = 0;
    for (int k = 0; k < list; ++k) slot += int(lists_[std::size_t(k)].size());
    return slot;
}

BOOL NodeListEffect::AddNode(INode* node, int listCode) {
    const int list = listOf(listCode);
    if (!node || list < 0) return FALSE;
    auto& entries = lists_[std::size_t(list)];
    if (std::find(entries.begin(), entries.end(), node) != entries.end()) return TRUE;
    const int slot = firstSlot(list) + int(entries.size());
    entries.push_back(nullptr);
    theHold.Suspend();  // an undo record would point at a slot that later changes move
    ReplaceReference(slot, node, FALSE);
    theHold.Resume();
    return TRUE;
}

int NodeListEffect::NumNodes(int listCode) {
    const int list = listOf(listCode);
    return list < 0 ? 0 : int(lists_[std::size_t(list)].size());
}

INode* NodeListEffect::GetNode(int listCode, int i) {
    const int list = listOf(listCode);
    if (list < 0 || i < 0 || i >= int(lists_[std::size_t(list)].size())) return nullptr;
    return static_cast<INode*>(lists_[std::size_t(list)][std::size_t(i)]);
}

BOOL NodeListEffect::RemoveNode(int listCode, int i) {
    const int list = listOf(listCode);
    if (list < 0 || i < 0 || i >= int(lists_[std::size_t(list)].size())) return FALSE;
    theHold.Suspend();
    ReplaceReference(firstSlot(list) + i, nullptr, FALSE);
    theHold.Resume();
    auto& entries = lists_[std::size_t(list)];
    entries.erase(entries.begin() + i);
    return TRUE;
}

int NodeListEffect::NumRefs() {
    int n = 0;
    for (const auto& l : lists_) n += int(l.size());
    return n;
}

RefTargetHandle NodeListEffect::GetReference(int i) {
    if (i < 0) return nullptr;
    for (auto& l : lists_) {
        if (i < int(l.size())) return l[std::size_t(i)];
        i -= int(l.size());
    }
    return nullptr;
}

void NodeListEffect::SetReference(int i, RefTargetHandle target) {
    if (i < 0) return;
    for (auto& l : lists_) {
        if (i < int(l.size())) {
            l[std::size_t(i)] = target;
            return;
        }
        i -= int(l.size());
    }
}

IOResult NodeListEffect::Save(ISave* isave) {
    for (const auto& l : lists_)
        if (const IOResult r = writeCount(isave, kListChunk, l.size()); r != IO_OK) return r;
    return IO_OK;
}

IOResult NodeListEffect::Load(ILoad* iload) {
    std::size_t list = 0;
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        IOResult r = IO_OK;
        if (iload->CurChunkID() == kListChunk) {
            std::size_t n = 0;
            r = readCount(iload, n);
            if (r == IO_OK && list >= lists_.size()) r = IO_ERROR;  // more lists than the class has
            if (r == IO_OK) lists_[list++].assign(n, nullptr);
        }
        iload->CloseChunk();
        if (r != IO_OK) return r;
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle NodeListEffect::Clone(RemapDir& remap) {
    auto* c = new NodeListEffect(classId_, NumNodeLists());
    for (int list = 0; list < NumNodeLists(); ++list)
        for (ReferenceTarget* t : lists_[std::size_t(list)]) {
            RefTargetHandle mapped = t ? remap.FindMapping(t) : nullptr;
            auto& entries = c->lists_[std::size_t(list)];
            entries.push_back(nullptr);
            c->ReplaceReference(c->firstSlot(list) + int(entries.size()) - 1, mapped ? mapped : t, FALSE);
        }
    BaseClone(this, c, remap);
    return c;
}

NodeListEffect* NewNodeListEffect(Class_ID classId) {
    const EffectKind* k = kindOf(classId);
    return k ? new NodeListEffect(k->id, k->lists) : nullptr;
}

// ---------------------------------------------------------------------------------------- SceneEffectsList

ReferenceTarget* SceneEffectsList::Get(int i) const {
    return i >= 0 && i < Count() ? effects_[std::size_t(i)] : nullptr;
}

int SceneEffectsList::Add(ReferenceTarget* effect) {
    if (!effect) return -1;
    auto it = std::find(effects_.begin(), effects_.end(), effect);
    if (it != effects_.end()) return int(it - effects_.begin());
    effects_.push_back(nullptr);
    theHold.Suspend();
    ReplaceReference(Count() - 1, effect);
    theHold.Resume();
    return Count() - 1;
}

bool SceneEffectsList::Remove(int i) {
    if (i < 0 || i >= Count()) return false;
    theHold.Suspend();
    ReplaceReference(i, nullptr);
    theHold.Resume();
    effects_.erase(effects_.begin() + i);
    return true;
}

void SceneEffectsList::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < Count()) effects_[std::size_t(i)] = target;
}

RefResult SceneEffectsList::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                             BOOL) {
    if (message == REFMSG_TARGET_DELETED && hTarget && !TestAFlag(A_IS_DELETED)) {
        for (int i = Count() - 1; i >= 0; --i)
            if (effects_[std::size_t(i)] == hTarget) Remove(i);
    }
    return REF_STOP;
}

IOResult SceneEffectsList::Save(ISave* isave) { return writeCount(isave, kCountChunk, effects_.size()); }

IOResult SceneEffectsList::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        IOResult r = IO_OK;
        if (iload->CurChunkID() == kCountChunk) {
            std::size_t n = 0;
            r = readCount(iload, n);
            if (r == IO_OK) effects_.assign(n, nullptr);
        }
        iload->CloseChunk();
        if (r != IO_OK) return r;
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle SceneEffectsList::Clone(RemapDir& remap) {
    auto* c = new SceneEffectsList();
    for (ReferenceTarget* e : effects_) c->Add(remap.CloneRef(e));
    BaseClone(this, c, remap);
    return c;
}

SceneEffectsList& SceneEffects() {
    RegisterSceneEffectClasses();
    auto* list = dynamic_cast<SceneEffectsList*>(ScenePartItem(ScenePartRole::SceneEffects));
    if (!list) throw std::logic_error("the scene has no scene effects list");
    return *list;
}

void RegisterSceneEffectClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    static NodeListEffectClassDesc descs[] = {NodeListEffectClassDesc(kKinds[0]), NodeListEffectClassDesc(kKinds[1]),
                                              NodeListEffectClassDesc(kKinds[2])};
    for (auto& d : descs) ClassDirectory::Instance().Register(&d);
    static HostClassDesc<SceneEffectsList> listDesc{L"SceneEffects", REF_TARGET_CLASS_ID, SceneEffectsList::kClassID,
                                                    L""};
    ClassDirectory::Instance().Register(&listDesc);
    RegisterScenePart(OwnedScenePart<SceneEffectsList>(ScenePartRole::SceneEffects));
}

}  // namespace hostrt
