// The scene material library: entries as references, 258 on every change, saving and the list's upkeep.
#include "scene/materials/material_library.h"
#include "io/count_chunk.h"

#include "hold.h"
#include "ioapi.h"
#include "scene/materials/material_classes.h"
#include "scene/scene.h"
#include "scene/scene_parts.h"

#include <algorithm>
#include <stdexcept>

namespace hostrt {

namespace {
constexpr USHORT kCountChunk = 0x0001;
constexpr ULONG kMaxEntries = 1u << 24;
}  // namespace

MtlBase* SceneMaterialLibrary::operator[](int i) {
    return i >= 0 && i < Count() ? entries_[std::size_t(i)] : nullptr;
}

int SceneMaterialLibrary::Add(MtlBase* m) {
    if (!m) return -1;
    if (const int at = FindMtl(m); at >= 0) return at;
    entries_.push_back(nullptr);
    theHold.Suspend();  // an undo record would point at a slot that later changes move
    ReplaceReference(Count() - 1, m);
    theHold.Resume();
    announce();
    return Count() - 1;
}

int SceneMaterialLibrary::Remove(MtlBase* m) {
    const int i = FindMtl(m);
    if (i < 0) return 0;
    drop(i);
    announce();
    return 1;
}

int SceneMaterialLibrary::FindMtl(MtlBase* m) {
    if (!m || !listed_.count(m)) return -1;
    auto it = std::find(entries_.begin(), entries_.end(), m);
    return it == entries_.end() ? -1 : int(it - entries_.begin());
}

int SceneMaterialLibrary::FindMtlByName(const MSTR& name) {
    for (int i = 0; i < Count(); ++i)
        if (entries_[std::size_t(i)] && entries_[std::size_t(i)]->GetName() == name) return i;
    return -1;
}

int SceneMaterialLibrary::Replace(MtlBase* oldMtl, MtlBase* newMtl) {
    const int i = FindMtl(oldMtl);
    if (i < 0 || oldMtl == newMtl) return 0;
    theHold.Suspend();
    if (!newMtl || FindMtl(newMtl) >= 0) {
        theHold.Resume();
        drop(i);
    } else {
        ReplaceReference(i, newMtl);
        theHold.Resume();
    }
    announce();
    return 1;
}

void SceneMaterialLibrary::DeleteAll() {
    if (entries_.empty()) return;
    while (!entries_.empty()) drop(Count() - 1);
    announce();
}

void SceneMaterialLibrary::drop(int i) {
    theHold.Suspend();
    ReplaceReference(i, nullptr);
    theHold.Resume();
    entries_.erase(entries_.begin() + i);
}

RefTargetHandle SceneMaterialLibrary::GetReference(int i) { return (*this)[i]; }

void SceneMaterialLibrary::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= Count()) return;
    MtlBase*& entry = entries_[std::size_t(i)];
    if (entry) {
        auto it = listed_.find(entry);
        if (it != listed_.end() && --it->second <= 0) listed_.erase(it);
    }
    entry = static_cast<MtlBase*>(target);
    if (entry) ++listed_[entry];
}

RefResult SceneMaterialLibrary::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                                 BOOL) {
    if (message == REFMSG_TARGET_DELETED && hTarget) {
        bool dropped = false;
        for (int i = Count() - 1; i >= 0; --i)
            if (entries_[std::size_t(i)] == hTarget) {
                drop(i);
                dropped = true;
            }
        if (dropped) announce();
    }
    // The library's dependents follow the list, not what happens inside the materials.
    return REF_STOP;
}

BOOL SceneMaterialLibrary::IsRealDependency(ReferenceTarget*) { return Scene::Instance().IsWritingFile() ? FALSE : TRUE; }

void SceneMaterialLibrary::DropEmptyEntries::proc(ILoad*) {
    std::vector<MtlBase*>& entries = lib_->entries_;
    entries.erase(std::remove(entries.begin(), entries.end(), nullptr), entries.end());
}

IOResult SceneMaterialLibrary::Save(ISave* isave) { return SaveCountChunk(isave, kCountChunk, ULONG(entries_.size())); }

IOResult SceneMaterialLibrary::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kCountChunk) {
            ULONG n = 0;
            if (ReadCount(iload, kMaxEntries, n) != IO_OK) return IO_ERROR;
            entries_.assign(n, nullptr);
            listed_.clear();
            iload->RegisterPostLoadCallback(&dropEmpty_);
        }
        iload->CloseChunk();
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle SceneMaterialLibrary::Clone(RemapDir& remap) {
    auto* c = new SceneMaterialLibrary();
    for (MtlBase* m : entries_) {
        if (!m) continue;
        RefTargetHandle mapped = remap.FindMapping(m);
        c->entries_.push_back(nullptr);
        c->ReplaceReference(c->Count() - 1, mapped ? mapped : m);
    }
    BaseClone(this, c, remap);
    return c;
}

SceneMaterialLibrary& SceneMtlLibrary() {
    RegisterMaterialClasses();
    auto* lib = dynamic_cast<SceneMaterialLibrary*>(ScenePartItem(ScenePartRole::MaterialLibrary));
    if (!lib) throw std::logic_error("the scene has no material library (material classes not registered)");
    return *lib;
}

}  // namespace hostrt
