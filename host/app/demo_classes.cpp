// The demonstration classes and their descriptors.
#include "demo_classes.h"

#include "core/class_directory.h"

namespace maxhost::demo {
namespace {

class CrateClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return TRUE; }
    void* Create(BOOL loading) override { return new Crate(loading); }
    const MCHAR* ClassName() override { return L"Crate"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return Crate::kClassID; }
    const MCHAR* Category() override { return L"Demo"; }
};

class ShelfClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return TRUE; }
    void* Create(BOOL) override { return new Shelf(); }
    const MCHAR* ClassName() override { return L"Shelf"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return Shelf::kClassID; }
    const MCHAR* Category() override { return L"Demo"; }
};

CrateClassDesc crateDesc;
ShelfClassDesc shelfDesc;

ParamBlockDesc2& crateParams() {
    static ParamBlockDesc2* desc = [] {
        auto* d = new ParamBlockDesc2(0, L"CrateParameters", 0, &crateDesc, P_AUTO_CONSTRUCT);
        d->AutoConstruct(0);
        d->AddParam(Crate::kWidth, L"width", TYPE_FLOAT, P_ANIMATABLE, 0).Default(10.f).Range(0.f, 1000.f);
        d->AddParam(Crate::kHeight, L"height", TYPE_FLOAT, P_ANIMATABLE, 0).Default(5.f).Range(0.f, 1000.f);
        d->AddParam(Crate::kLabel, L"label", TYPE_STRING, 0, 0).Default(L"crate");
        return d;
    }();
    return *desc;
}

constexpr USHORT kShelfCount = 0x0001;

}  // namespace

void RegisterDemoClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    crateParams();
    hostrt::ClassDirectory::Instance().Register(&crateDesc, "(demo)");
    hostrt::ClassDirectory::Instance().Register(&shelfDesc, "(demo)");
}

Crate::Crate(BOOL loading) {
    if (!loading) crateDesc.MakeAutoParamBlocks(this);
}

RefTargetHandle Crate::Clone(RemapDir& remap) {
    auto* c = new Crate(TRUE);
    c->ReplaceReference(0, remap.CloneRef(pblock));
    BaseClone(this, c, remap);
    return c;
}

RefResult Shelf::NotifyRefChanged(const Interval&, RefTargetHandle from, PartID&, RefMessage msg, BOOL) {
    if (verbose && msg == REFMSG_CHANGE) {
        auto* block = static_cast<IParamBlock2*>(static_cast<Crate*>(from)->pblock);
        int tab = 0;
        ParamID id = block ? block->LastNotifyParamID(tab) : -1;
        mprintf(L"  shelf heard: crate %d changed parameter %d\n", crates.IndexOf(from) + 1, int(id));
    }
    return REF_STOP;
}

IOResult Shelf::Save(ISave* isave) {
    ULONG n = ULONG(crates.Count()), w = 0;
    isave->BeginChunk(kShelfCount);
    isave->Write(&n, sizeof n, &w);
    isave->EndChunk();
    return IO_OK;
}

IOResult Shelf::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kShelfCount) {
            ULONG n = 0, r = 0;
            if (iload->Read(&n, sizeof n, &r) != IO_OK || n > 100000) return IO_ERROR;
            crates.SetCount(int(n));
        }
        iload->CloseChunk();
    }
    return res == IO_END ? IO_OK : res;
}

void Shelf::Add(ReferenceTarget* crate) {
    crates.Append(static_cast<ReferenceTarget*>(nullptr));
    ReplaceReference(crates.Count() - 1, crate);
}

}  // namespace maxhost::demo
