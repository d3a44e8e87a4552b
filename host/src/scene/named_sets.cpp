// The named selection sets of a scene: membership as references, notifications, saving and the scene part.
#include "scene/named_sets.h"
#include "io/count_chunk.h"

#include "core/class_directory.h"
#include "hold.h"
#include "inode.h"
#include "ioapi.h"
#include "maxapi.h"
#include "notify.h"
#include "scene/materials/owned_scene_part.h"

#include <algorithm>
#include <stdexcept>

namespace hostrt {

namespace {

constexpr USHORT kSetChunk = 0x0100;
constexpr USHORT kSetNameChunk = 0x0101;
constexpr USHORT kSetCountChunk = 0x0102;
// More members than this in one set means the file is damaged.
constexpr ULONG kMaxMembers = 1u << 24;

class NamedSelSetsClassDesc : public ClassDesc {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new NamedSelSets()); }
    const MCHAR* ClassName() override { return L"NamedSelectionSets"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return NamedSelSets::kClassID; }
    const MCHAR* Category() override { return L""; }
};

// The nodes of a table without nulls and repeats, in order.
std::vector<INode*> distinctNodes(const INodeTab& nodes) {
    std::vector<INode*> out;
    for (INode* n : nodes)
        if (n && std::find(out.begin(), out.end(), n) == out.end()) out.push_back(n);
    return out;
}

void broadcastName(int code, const MSTR& name) {
    MSTR copy = name;
    BroadcastNotification(code, &copy);
}

}  // namespace

MSTR NamedSelSets::Name(int i) const { return i >= 0 && i < Count() ? sets_[std::size_t(i)].name : MSTR(); }

int NamedSelSets::Find(const MSTR& name) const {
    for (int i = 0; i < Count(); ++i)
        if (sets_[std::size_t(i)].name.EqualsNoCase(name)) return i;
    return -1;
}

int NamedSelSets::ItemCount(int i) const {
    if (i < 0 || i >= Count()) return 0;
    const auto& m = sets_[std::size_t(i)].members;
    return int(std::count_if(m.begin(), m.end(), [](ReferenceTarget* t) { return t != nullptr; }));
}

INode* NamedSelSets::Item(int i, int j) const {
    if (i < 0 || i >= Count() || j < 0) return nullptr;
    for (ReferenceTarget* t : sets_[std::size_t(i)].members)
        if (t && j-- == 0) return static_cast<INode*>(t);
    return nullptr;
}

std::vector<INode*> NamedSelSets::Items(int i) const {
    std::vector<INode*> out;
    if (i < 0 || i >= Count()) return out;
    for (ReferenceTarget* t : sets_[std::size_t(i)].members)
        if (t) out.push_back(static_cast<INode*>(t));
    return out;
}

bool NamedSelSets::Add(const INodeTab& nodes, const MSTR& name) {
    if (name.isNull() || Find(name) >= 0) return false;
    sets_.push_back(Set{name, {}});
    assign(Count() - 1, distinctNodes(nodes));
    broadcastName(NOTIFY_NAMED_SEL_SET_CREATED, name);
    return true;
}

bool NamedSelSets::Replace(const INodeTab& nodes, const MSTR& name) {
    const int i = Find(name);
    if (i < 0) return false;
    assign(i, distinctNodes(nodes));
    return true;
}

bool NamedSelSets::Remove(const MSTR& name) {
    const int i = Find(name);
    if (i < 0) return false;
    const MSTR removed = sets_[std::size_t(i)].name;
    assign(i, {});
    sets_.erase(sets_.begin() + i);
    broadcastName(NOTIFY_NAMED_SEL_SET_DELETED, removed);
    return true;
}

bool NamedSelSets::Rename(int i, const MSTR& name) {
    if (i < 0 || i >= Count() || name.isNull()) return false;
    const int other = Find(name);
    if (other >= 0 && other != i) return false;
    MSTR old = sets_[std::size_t(i)].name;
    if (old == name) return true;
    sets_[std::size_t(i)].name = name;
    NameChange change{old.data(), name.data(), nullptr};
    BroadcastNotification(NOTIFY_NAMED_SEL_SET_RENAMED, &change);
    return true;
}

void NamedSelSets::Clear() {
    while (Count() > 0) Remove(sets_.back().name);
}

int NamedSelSets::firstSlot(int set) const {
    int slot = 0;
    for (int k = 0; k < set; ++k) slot += int(sets_[std::size_t(k)].members.size());
    return slot;
}

void NamedSelSets::assign(int i, const std::vector<INode*>& nodes) {
    // Membership is not undoable: an undo record would point at a slot that later changes moved.
    theHold.Suspend();
    auto& members = sets_[std::size_t(i)].members;
    const int base = firstSlot(i);
    for (int k = 0; k < int(members.size()); ++k) ReplaceReference(base + k, nullptr, FALSE);
    members.assign(nodes.size(), nullptr);
    for (int k = 0; k < int(nodes.size()); ++k) ReplaceReference(base + k, nodes[std::size_t(k)], FALSE);
    theHold.Resume();
}

void NamedSelSets::compact() {
    for (Set& s : sets_) s.members.erase(std::remove(s.members.begin(), s.members.end(), nullptr), s.members.end());
}

int NamedSelSets::NumRefs() {
    int n = 0;
    for (const Set& s : sets_) n += int(s.members.size());
    return n;
}

RefTargetHandle NamedSelSets::GetReference(int i) {
    if (i < 0) return nullptr;
    for (Set& s : sets_) {
        if (i < int(s.members.size())) return s.members[std::size_t(i)];
        i -= int(s.members.size());
    }
    return nullptr;
}

void NamedSelSets::SetReference(int i, RefTargetHandle target) {
    if (i < 0) return;
    for (Set& s : sets_) {
        if (i < int(s.members.size())) {
            s.members[std::size_t(i)] = target;
            return;
        }
        i -= int(s.members.size());
    }
}

RefResult NamedSelSets::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                         BOOL) {
    if (message == REFMSG_TARGET_DELETED && hTarget) {
        theHold.Suspend();
        for (int i = 0; i < NumRefs(); ++i)
            if (GetReference(i) == hTarget) ReplaceReference(i, nullptr, FALSE);
        theHold.Resume();
        compact();
    }
    return REF_SUCCEED;
}

IOResult NamedSelSets::Save(ISave* isave) {
    for (const Set& s : sets_) {
        isave->BeginChunk(kSetChunk);
        isave->BeginChunk(kSetNameChunk);
        IOResult r = isave->WriteWString(s.name);
        isave->EndChunk();
        if (r != IO_OK) return r;
        r = SaveCountChunk(isave, kSetCountChunk, ULONG(s.members.size()));
        isave->EndChunk();
        if (r != IO_OK) return r;
    }
    return IO_OK;
}

IOResult NamedSelSets::Load(ILoad* iload) {
    sets_.clear();
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kSetChunk) {
            Set s;
            IOResult sub;
            while ((sub = iload->OpenChunk()) == IO_OK) {
                if (iload->CurChunkID() == kSetNameChunk) {
                    if (iload->ReadWStringChunk(s.name) != IO_OK) return IO_ERROR;
                } else if (iload->CurChunkID() == kSetCountChunk) {
                    ULONG n = 0;
                    if (ReadCount(iload, kMaxMembers, n) != IO_OK) return IO_ERROR;
                    s.members.assign(n, nullptr);
                }
                iload->CloseChunk();
            }
            if (sub == IO_ERROR) return IO_ERROR;
            sets_.push_back(std::move(s));
        }
        iload->CloseChunk();
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle NamedSelSets::Clone(RemapDir& remap) {
    // The copy names the same nodes, or their copies when they are cloned in the same operation.
    auto* c = new NamedSelSets();
    for (const Set& s : sets_) {
        c->sets_.push_back(Set{s.name, {}});
        std::vector<INode*> nodes;
        for (ReferenceTarget* t : s.members) {
            if (!t) continue;
            ReferenceTarget* mapped = remap.FindMapping(t);
            nodes.push_back(static_cast<INode*>(mapped ? mapped : t));
        }
        c->assign(c->Count() - 1, nodes);
    }
    BaseClone(this, c, remap);
    return c;
}

NamedSelSets& SceneNamedSelSets() {
    RegisterNamedSelSetClasses();
    auto* sets = dynamic_cast<NamedSelSets*>(ScenePartItem(ScenePartRole::NamedSelectionSets));
    if (!sets) throw std::logic_error("the scene has no named selection sets object");
    return *sets;
}

void RegisterNamedSelSetClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    static NamedSelSetsClassDesc desc;
    ClassDirectory::Instance().Register(&desc);
    RegisterScenePart(OwnedScenePart<NamedSelSets>(ScenePartRole::NamedSelectionSets));
}

}  // namespace hostrt
