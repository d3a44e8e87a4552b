#include "records/ref_holder.h"

#include "frame/class_desc.h"
#include "ioapi.h"
#include "records/chunk_io.h"
#include "resource.h"

namespace {

constexpr USHORT kCountChunk = 0x0000;

// The descriptor and the interface description, made together: the description lists itself on the descriptor.
struct RefHolderClass {
    SimpleClassDesc<RefHolder> desc{IDS_CLASS_REFHOLDER, L"RefHolder", GEOMOBJECT_CLASS_ID, REFHOLDER_CLASS_ID};
    FPInterfaceDesc fp{REFHOLDER_INTERFACE_ID,
                       L"RefHolder",
                       0,
                       &desc,
                       FP_MIXIN,
                       {FPFunctionDef(RefHolderInterface::kSetNumRefs, L"SetNumRefs", TYPE_VOID,
                                      {FPParamDef(L"NumRefs", TYPE_INT)})}};
};

RefHolderClass& refHolderClass() {
    static RefHolderClass c;
    return c;
}

}  // namespace

ClassDesc2* GetRefHolderDesc() { return &refHolderClass().desc; }

// ------------------------------------------------------------------------------------------ interface

FPInterfaceDesc* RefHolderInterface::GetDesc() { return &refHolderClass().fp; }

FPStatus RefHolderInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue&, FPParams* params) {
    switch (fid) {
    case kSetNumRefs: {
        FPParams none;
        SetNumRefs((params ? *params : none).params[0].i);
        return FPS_OK;
    }
    default: return FPS_NO_SUCH_FUNCTION;
    }
}

// ------------------------------------------------------------------------------------------ holder

void RefHolder::SetNumRefs(int count) {
    if (count < 0) count = 0;
    for (int i = refs_.Count() - 1; i >= count; --i) DeleteReference(i);
    refs_.SetCount(count);
}

BaseInterface* RefHolder::GetInterface(Interface_ID id) {
    if (id == REFHOLDER_INTERFACE_ID) return static_cast<RefHolderInterface*>(this);
    return GeomObject::GetInterface(id);
}

RefTargetHandle RefHolder::Clone(RemapDir& remap) {
    auto* clone = new RefHolder();
    clone->SetNumRefs(refs_.Count());
    for (int i = 0; i < refs_.Count(); ++i)
        if (refs_[i]) clone->ReplaceReference(i, remap.CloneRef(refs_[i]));
    BaseClone(this, clone, remap);
    return clone;
}

IOResult RefHolder::Save(ISave* isave) {
    return chunkio::SaveValueChunk(isave, kCountChunk, std::int32_t(refs_.Count()));
}

IOResult RefHolder::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        if (iload->CurChunkID() == kCountChunk) {
            std::int32_t count = 0;
            res = chunkio::ReadCount(iload, count);
            if (res == IO_OK) SetNumRefs(count);
        }
        iload->CloseChunk();
        if (res != IO_OK) return res;
    }
    return res == IO_END ? IO_OK : res;
}
