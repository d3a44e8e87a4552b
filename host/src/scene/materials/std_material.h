// The standard material (class (2, 0)): colours, glossiness, opacity and switches in a parameter block 2 whose
// colours and amounts take controllers, and four texture-map slots held as references.
#pragma once

#include "imtl.h"
#include "iparamb2.h"

namespace hostrt {

class StdMaterial : public Mtl {
public:
    // Parameters of block 0. Colours are animatable colours (point3 controllers), amounts animatable floats
    // (glossiness, specular level, self-illumination and opacity in percent, 0..100), the switches booleans.
    // A new material's diffuse colour and opacity come with controllers.
    enum : ParamID {
        kAmbient = 0,
        kDiffuse,
        kSpecular,
        kGlossiness,
        kSpecularLevel,
        kSelfIllum,
        kOpacity,
        kTwoSided,
        kWire,
        kFaceted,
    };
    // Texture-map slots.
    enum MapSlot { kDiffuseMap = 0, kSpecularMap, kOpacityMap, kBumpMap, kNumMaps };
    // References: the block, then one per map slot. Sub-anims follow the same order.
    static constexpr int kBlockRef = 0;
    static constexpr int kFirstMapRef = 1;

    // A material with the class defaults (when loading, its block comes back as a reference).
    explicit StdMaterial(bool loading = false);

    IParamBlock2* ParamBlock() const { return pblock_; }
    Color GetDiffuse(TimeValue t = 0);
    void SetDiffuse(const Color& c, TimeValue t = 0);
    Color GetAmbient(TimeValue t = 0);
    void SetAmbient(const Color& c, TimeValue t = 0);
    // Opacity in percent.
    float GetOpacity(TimeValue t = 0);
    void SetOpacity(float percent, TimeValue t = 0);

    Class_ID ClassID() override { return DMTL_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Standard"; }

    // Map slots. Setting a slot sends 258 (the material's sub-anims changed); a map that would contain this
    // material is refused.
    int NumSubTexmaps() override { return kNumMaps; }
    Texmap* GetSubTexmap(int i) override;
    void SetSubTexmap(int i, Texmap* m) override;
    MSTR GetSubTexmapSlotName(int i, bool localized = true) override;

    int NumRefs() override { return kFirstMapRef + kNumMaps; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return NumRefs(); }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override { return subNum >= 0 && subNum < NumRefs() ? subNum : -1; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? pblock_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return pblock_ && pblock_->ID() == id ? pblock_ : nullptr; }

    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    IParamBlock2* pblock_ = nullptr;
    Texmap* maps_[kNumMaps] = {};
};

// Registers the standard material class. Idempotent.
void RegisterStdMaterialClass();

}  // namespace hostrt
