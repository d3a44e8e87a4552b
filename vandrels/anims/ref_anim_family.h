// The kinds of animatable records: one class per kind of animatable, each with its own class identifier.
// A kind without state of its own saves and loads exactly as the base record does.
#pragma once

#include "anims/record_codes.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_pblock.h"
#include "anims/ref_anim_pblock2.h"
#include "anims/ref_anim_cam.h"
#include "anims/ref_anim_deriv_obj.h"
#include "anims/ref_anim_mod.h"
#include "anims/ref_anim_std_light.h"
#include "anims/ref_anim_with_refs.h"

class RefAnimIndepRefs : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_INDEPREFS_CLASS_ID; }
};

class RefAnimCA : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CA_CLASS_ID; }
};

class RefAnimListCtrl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_LISTCTRL_CLASS_ID; }
};

class RefAnimLocDep : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_LOCDEP_CLASS_ID; }
    bool IsGeneric() override { return GetType() == kCodeLocDep; }
    // Its type code carries the walk bits although its class identifier does not.
    std::uint32_t GetType() override { return kCodeLocDep; }
};

class RefAnimLinkCtrl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_LINKCTRL_CLASS_ID; }
};

class RefAnimBip : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_BIP_CLASS_ID; }
};

class RefAnimPointObj : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_POINTOBJ_CLASS_ID; }
    // Kept with a cleared state by a reset.
    bool IsGeneric() override { return true; }
};

class RefAnimPointMod : public RefAnimPointObj {
public:
    Class_ID ClassID() override { return REFANIM_POINTMOD_CLASS_ID; }
};

class RefAnimPFSource : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_PFSOURCE_CLASS_ID; }
    // 1 for a Particle Flow source, 0 for an event; it picks the record's type code.
    void SetMode(int mode) { mode_ = mode; }
    int GetMode() const { return mode_; }
    std::uint32_t GetType() override { return mode_ > 0 ? kCodePFSourceMode1 : kCodePFSource; }

private:
    int mode_ = 0;
};

class RefAnimSkin : public RefAnimMod {
public:
    Class_ID ClassID() override { return REFANIM_SKIN_CLASS_ID; }
};

class RefAnimMtl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_MTL_CLASS_ID; }
};

class RefAnimTexmap : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_TEXMAP_CLASS_ID; }
};

class RefAnimText : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_TEXT_CLASS_ID; }
};

class RefAnimLinkedXForm : public RefAnimMod {
public:
    Class_ID ClassID() override { return REFANIM_LINKEDXFORM_CLASS_ID; }
};

class RefAnimCloth : public RefAnimMod {
public:
    Class_ID ClassID() override { return REFANIM_CLOTH_CLASS_ID; }
};

class RefAnimConstraint : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CONSTRAINT_CLASS_ID; }
};

class RefAnimMultiSubMtl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_MULTISUBMTL_CLASS_ID; }
};

class RefAnimReaction : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_REACTION_CLASS_ID; }
};

class RefAnimMorpher : public RefAnimMod {
public:
    Class_ID ClassID() override { return REFANIM_MORPHER_CLASS_ID; }
};

class RefAnimBevelProfile : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_BEVELPROFILE_CLASS_ID; }
};

class RefAnimEuler : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_EULER_CLASS_ID; }
    // Kept with a cleared state by a reset.
    bool IsGeneric() override { return true; }
};

class RefAnimPRS : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_PRS_CLASS_ID; }
    // Kept with a cleared state by a reset.
    bool IsGeneric() override { return true; }
};

class RefAnimRWMS : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_RWMS_CLASS_ID; }
};

class RefAnimCAT : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CAT_CLASS_ID; }
};

class RefAnimBoolean : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_BOOLEAN_CLASS_ID; }
};

class RefAnimTextPlus : public RefAnimWithRefs {
public:
    Class_ID ClassID() override { return REFANIM_TEXTPLUS_CLASS_ID; }
};

class RefAnimLayerCtrl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_LAYERCTRL_CLASS_ID; }
};

class RefAnimXRef : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_XREF_CLASS_ID; }
};

class RefAnimContainer : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CONTAINER_CLASS_ID; }
};

class RefAnimCATCtrl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_CATCTRL_CLASS_ID; }
    // Kept with a cleared state by a reset.
    bool IsGeneric() override { return true; }
};

class RefAnimDataChannel : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_DATACHANNEL_CLASS_ID; }
};

class RefAnimPFTest : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_PFTEST_CLASS_ID; }
};

class RefAnimRailClone : public RefAnimWithRefs {
public:
    Class_ID ClassID() override { return REFANIM_RAILCLONE_CLASS_ID; }
};

class RefAnimBipCtrl : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_BIPCTRL_CLASS_ID; }
};

class RefAnimForest : public RefAnimWithRefs {
public:
    Class_ID ClassID() override { return REFANIM_FOREST_CLASS_ID; }
};

class RefAnimLinkTM : public RefAnim {
public:
    Class_ID ClassID() override { return REFANIM_LINKTM_CLASS_ID; }
};
