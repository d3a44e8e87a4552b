// The standard material: its class and parameter block, map slots, saving and cloning.
#include "scene/materials/std_material.h"

#include "core/class_directory.h"
#include "ioapi.h"
#include "scene/controllers/controller_classes.h"
#include "scene/controllers/keyed_control.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/mtl_tree.h"

namespace hostrt {

namespace {

const Color kDefaultGrey(0.588f, 0.588f, 0.588f);

struct StdMaterialClass {
    HostClassDesc<StdMaterial> cd{L"Standard", MATERIAL_CLASS_ID, DMTL_CLASS_ID, L"Materials"};
    ParamBlockDesc2 block{0, L"Parameters", 0, &cd, P_AUTO_CONSTRUCT};

    StdMaterialClass() {
        block.AutoConstruct(StdMaterial::kBlockRef);
        block.AddParam(StdMaterial::kAmbient, L"ambient", TYPE_RGBA, P_ANIMATABLE, 0).Default(kDefaultGrey);
        block.AddParam(StdMaterial::kDiffuse, L"diffuse", TYPE_RGBA, P_ANIMATABLE, 0).Default(kDefaultGrey);
        block.AddParam(StdMaterial::kSpecular, L"specular", TYPE_RGBA, P_ANIMATABLE, 0)
            .Default(Color(0.9f, 0.9f, 0.9f));
        block.AddParam(StdMaterial::kGlossiness, L"glossiness", TYPE_FLOAT, P_ANIMATABLE, 0)
            .Default(10.0f)
            .Range(0.0f, 100.0f);
        block.AddParam(StdMaterial::kSpecularLevel, L"specularLevel", TYPE_FLOAT, P_ANIMATABLE, 0)
            .Default(0.0f)
            .Range(0.0f, 999.0f);
        block.AddParam(StdMaterial::kSelfIllum, L"selfIllumAmount", TYPE_FLOAT, P_ANIMATABLE, 0)
            .Default(0.0f)
            .Range(0.0f, 100.0f);
        block.AddParam(StdMaterial::kOpacity, L"opacity", TYPE_FLOAT, P_ANIMATABLE, 0)
            .Default(100.0f)
            .Range(0.0f, 100.0f);
        block.AddParam(StdMaterial::kTwoSided, L"twoSided", TYPE_BOOL, 0, 0).Default(FALSE);
        block.AddParam(StdMaterial::kWire, L"wire", TYPE_BOOL, 0, 0).Default(FALSE);
        block.AddParam(StdMaterial::kFaceted, L"faceted", TYPE_BOOL, 0, 0).Default(FALSE);
    }
};

StdMaterialClass& stdClass() {
    static StdMaterialClass c;
    return c;
}

const MCHAR* const kSlotNames[StdMaterial::kNumMaps] = {L"Diffuse Color", L"Specular Color", L"Opacity", L"Bump"};

}  // namespace

StdMaterial::StdMaterial(bool loading) {
    if (loading) return;
    stdClass().cd.MakeAutoParamBlocks(this);
    // The diffuse colour and the opacity are animated through controllers from the start.
    pblock_->SetController(kDiffuse, 0, new Point3KeyControl(), TRUE);
    pblock_->SetController(kOpacity, 0, new FloatKeyControl(), TRUE);
}

Color StdMaterial::GetDiffuse(TimeValue t) { return pblock_ ? pblock_->GetColor(kDiffuse, t) : Color(); }
void StdMaterial::SetDiffuse(const Color& c, TimeValue t) { if (pblock_) pblock_->SetValue(kDiffuse, t, c); }
Color StdMaterial::GetAmbient(TimeValue t) { return pblock_ ? pblock_->GetColor(kAmbient, t) : Color(); }
void StdMaterial::SetAmbient(const Color& c, TimeValue t) { if (pblock_) pblock_->SetValue(kAmbient, t, c); }
float StdMaterial::GetOpacity(TimeValue t) { return pblock_ ? pblock_->GetFloat(kOpacity, t) : 0.0f; }
void StdMaterial::SetOpacity(float percent, TimeValue t) { if (pblock_) pblock_->SetValue(kOpacity, t, percent); }

Texmap* StdMaterial::GetSubTexmap(int i) { return i >= 0 && i < kNumMaps ? maps_[i] : nullptr; }

void StdMaterial::SetSubTexmap(int i, Texmap* m) {
    if (i < 0 || i >= kNumMaps || maps_[i] == m || MtlTreeContains(m, this)) return;
    ReplaceReference(kFirstMapRef + i, m);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
}

MSTR StdMaterial::GetSubTexmapSlotName(int i, bool) { return i >= 0 && i < kNumMaps ? MSTR(kSlotNames[i]) : MSTR(); }

RefTargetHandle StdMaterial::GetReference(int i) {
    if (i == kBlockRef) return pblock_;
    if (i >= kFirstMapRef && i < kFirstMapRef + kNumMaps) return maps_[i - kFirstMapRef];
    return nullptr;
}

void StdMaterial::SetReference(int i, RefTargetHandle target) {
    if (i == kBlockRef)
        pblock_ = static_cast<IParamBlock2*>(target);
    else if (i >= kFirstMapRef && i < kFirstMapRef + kNumMaps)
        maps_[i - kFirstMapRef] = static_cast<Texmap*>(target);
}

MSTR StdMaterial::SubAnimName(int i, bool localized) {
    if (i == kBlockRef) return MSTR(L"Parameters");
    return GetSubTexmapSlotName(i - kFirstMapRef, localized);
}

IOResult StdMaterial::Save(ISave* isave) { return SaveMtlBase(isave); }

IOResult StdMaterial::Load(ILoad* iload) { return LoadMtlBase(iload); }

RefTargetHandle StdMaterial::Clone(RemapDir& remap) {
    auto* c = new StdMaterial(true);
    for (int i = 0; i < NumRefs(); ++i) c->ReplaceReference(i, remap.CloneRef(GetReference(i)));
    CopyMtlBaseState(c);
    BaseClone(this, c, remap);
    return c;
}

void RegisterStdMaterialClass() {
    static const bool done = [] {
        RegisterControllerClasses();  // for the controllers of the block
        return ClassDirectory::Instance().Register(&stdClass().cd);
    }();
    (void)done;
}

}  // namespace hostrt

Mtl* NewDefaultStdMat() {
    hostrt::RegisterStdMaterialClass();
    return new hostrt::StdMaterial();
}
