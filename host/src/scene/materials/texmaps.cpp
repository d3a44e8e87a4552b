// The bitmap and checker texture maps: classes, parameter blocks and the checker's sub-map.
#include "scene/materials/texmaps.h"

#include "core/class_directory.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/mtl_tree.h"

namespace hostrt {

namespace {

struct BitmapClass {
    HostClassDesc<BitmapTexmap> cd{L"Bitmap", TEXMAP_CLASS_ID, BitmapTexmap::kClassID, L"Maps"};
    ParamBlockDesc2 block{0, L"Parameters", 0, &cd, P_AUTO_CONSTRUCT};
    BitmapClass() {
        block.AutoConstruct(BlockTexmap::kBlockRef);
        block.AddParam(BitmapTexmap::kFileName, L"fileName", TYPE_FILENAME, 0, 0).Default(L"");
        block.AddParam(BitmapTexmap::kUTiling, L"uTiling", TYPE_FLOAT, P_ANIMATABLE, 0).Default(1.0f);
        block.AddParam(BitmapTexmap::kVTiling, L"vTiling", TYPE_FLOAT, P_ANIMATABLE, 0).Default(1.0f);
    }
};

struct CheckerClass {
    HostClassDesc<CheckerTexmap> cd{L"Checker", TEXMAP_CLASS_ID, CheckerTexmap::kClassID, L"Maps"};
    ParamBlockDesc2 block{0, L"Parameters", 0, &cd, P_AUTO_CONSTRUCT};
    CheckerClass() {
        block.AutoConstruct(BlockTexmap::kBlockRef);
        block.AddParam(CheckerTexmap::kColor1, L"color1", TYPE_RGBA, P_ANIMATABLE, 0).Default(Color(0, 0, 0));
        block.AddParam(CheckerTexmap::kColor2, L"color2", TYPE_RGBA, P_ANIMATABLE, 0).Default(Color(1, 1, 1));
        block.AddParam(CheckerTexmap::kMap1, L"map1", TYPE_TEXMAP, 0, 0);
    }
};

BitmapClass& bitmapClass() {
    static BitmapClass c;
    return c;
}

CheckerClass& checkerClass() {
    static CheckerClass c;
    return c;
}

}  // namespace

RefTargetHandle BlockTexmap::FinishClone(BlockTexmap* clone, RemapDir& remap) {
    clone->ReplaceReference(kBlockRef, remap.CloneRef(pblock_));
    CopyMtlBaseState(clone);
    BaseClone(this, clone, remap);
    return clone;
}

BitmapTexmap::BitmapTexmap(bool loading) {
    if (!loading) bitmapClass().cd.MakeAutoParamBlocks(this);
}

MSTR BitmapTexmap::GetMapName() { return ParamBlock() ? MSTR(ParamBlock()->GetStr(kFileName)) : MSTR(); }

void BitmapTexmap::SetMapName(const MSTR& fileName) {
    if (ParamBlock()) ParamBlock()->SetValue(kFileName, 0, fileName);
}

CheckerTexmap::CheckerTexmap(bool loading) {
    if (!loading) checkerClass().cd.MakeAutoParamBlocks(this);
}

Texmap* CheckerTexmap::GetSubTexmap(int i) {
    return i == 0 && ParamBlock() ? ParamBlock()->GetTexmap(kMap1) : nullptr;
}

void CheckerTexmap::SetSubTexmap(int i, Texmap* m) {
    if (i != 0 || !ParamBlock() || MtlTreeContains(m, this)) return;
    ParamBlock()->SetValue(kMap1, 0, m);
}

void RegisterTexmapClasses() {
    ClassDirectory::Instance().Register(&bitmapClass().cd);
    ClassDirectory::Instance().Register(&checkerClass().cd);
}

}  // namespace hostrt
