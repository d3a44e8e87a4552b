// The host's two texture maps (superclass 0xC10): a bitmap map naming an image file, and a checker map with
// two colours and a sub-map. Both keep their parameters in block 0.
#pragma once

#include "imtl.h"
#include "iparamb2.h"

namespace hostrt {

// What both maps share: block 0 as reference 0 and sub-anim 0, saving of the map's own chunks, cloning.
class BlockTexmap : public Texmap {
public:
    static constexpr int kBlockRef = 0;
    IParamBlock2* ParamBlock() const { return pblock_; }

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == kBlockRef ? pblock_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override {
        if (i == kBlockRef) pblock_ = static_cast<IParamBlock2*>(target);
    }
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? pblock_ : nullptr; }
    MSTR SubAnimName(int i, bool localized = true) override { return i == 0 ? MSTR(L"Parameters") : MSTR(); }
    int SubNumToRefNum(int subNum) override { return subNum == 0 ? kBlockRef : -1; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? pblock_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return pblock_ && pblock_->ID() == id ? pblock_ : nullptr; }
    IOResult Save(ISave* isave) override { return SaveMtlBase(isave); }
    IOResult Load(ILoad* iload) override { return LoadMtlBase(iload); }

protected:
    // Copies the block and the map's own state into a clone made with the loading flag.
    RefTargetHandle FinishClone(BlockTexmap* clone, RemapDir& remap);

private:
    IParamBlock2* pblock_ = nullptr;
};

class BitmapTexmap : public BlockTexmap {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530C11, 0x00000001);
    // The image file, and tiling in u and v (animatable).
    enum : ParamID { kFileName = 0, kUTiling = 1, kVTiling = 2 };

    explicit BitmapTexmap(bool loading = false);
    MSTR GetMapName();
    void SetMapName(const MSTR& fileName);

    Class_ID ClassID() override { return kClassID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Bitmap"; }
    RefTargetHandle Clone(RemapDir& remap) override { return FinishClone(new BitmapTexmap(true), remap); }
};

class CheckerTexmap : public BlockTexmap {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530C12, 0x00000001);
    // Two colours (animatable) and a map used in place of the first colour.
    enum : ParamID { kColor1 = 0, kColor2 = 1, kMap1 = 2 };

    explicit CheckerTexmap(bool loading = false);

    Class_ID ClassID() override { return kClassID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Checker"; }
    int NumSubTexmaps() override { return 1; }
    Texmap* GetSubTexmap(int i) override;
    // A map that would contain this one is refused.
    void SetSubTexmap(int i, Texmap* m) override;
    MSTR GetSubTexmapSlotName(int i, bool localized = true) override { return i == 0 ? MSTR(L"Color 1") : MSTR(); }
    RefTargetHandle Clone(RemapDir& remap) override { return FinishClone(new CheckerTexmap(true), remap); }
};

// Registers both map classes. Idempotent.
void RegisterTexmapClasses();

}  // namespace hostrt
