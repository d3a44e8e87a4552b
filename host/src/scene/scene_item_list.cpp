// ItemList: a list of items kept as references, saved as its item count.
#include "scene/scene_item_list.h"
#include "io/count_chunk.h"

#include "core/class_directory.h"
#include "hold.h"
#include "ioapi.h"

namespace hostrt {

namespace {

constexpr USHORT kItemCountChunk = 0x0001;
// Most items a list accepts from a file; a larger count means the file is damaged.
constexpr ULONG kMaxItems = 1u << 24;

class ItemListClassDesc : public ClassDesc {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return static_cast<Animatable*>(new ItemList()); }
    const MCHAR* ClassName() override { return L"ItemList"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return ItemList::kClassID; }
    const MCHAR* Category() override { return L""; }
};

}  // namespace

int ItemList::Add(ReferenceTarget* item) {
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

bool ItemList::Remove(int i) {
    if (i < 0 || i >= items_.Count()) return false;
    ReferenceTarget* item = items_[i];
    const AnimHandle h = Animatable::GetHandleByAnim(item);
    theHold.Suspend();
    ReplaceReference(i, nullptr, FALSE);
    theHold.Resume();
    items_.Delete(i, 1);
    if (item && Animatable::GetAnimByHandle(h) == item) item->MaybeAutoDelete();
    return true;
}

void ItemList::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < items_.Count()) items_[i] = target;
}

RefTargetHandle ItemList::Clone(RemapDir& remap) {
    auto* c = new ItemList();
    for (ReferenceTarget* item : items_) c->Add(remap.CloneRef(item));
    BaseClone(this, c, remap);
    return c;
}

IOResult ItemList::Save(ISave* isave) { return SaveCountChunk(isave, kItemCountChunk, ULONG(items_.Count())); }

IOResult ItemList::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kItemCountChunk) {
            ULONG n = 0;
            if (ReadCount(iload, kMaxItems, n) != IO_OK) return IO_ERROR;
            items_.SetCount(int(n));
        }
        iload->CloseChunk();
    }
    return res == IO_END ? IO_OK : res;
}

void RegisterItemListClass() {
    static ItemListClassDesc desc;
    ClassDirectory::Instance().Register(&desc);
}

}  // namespace hostrt
