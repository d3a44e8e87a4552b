#include "anims/ref_anim_family.h"

#include "frame/class_desc.h"
#include "resource.h"

#define REFANIM_DESC(Class, Macro)                                                                           \
    ClassDesc2* Get##Class##Desc() {                                                                         \
        static SimpleClassDesc<Class> desc(IDS_CLASS_REFANIM##Macro, L## #Class, REFANIM_SUPER_CLASS_ID,     \
                                           REFANIM_##Macro##_CLASS_ID);                                      \
        static const bool listed = (AddRefAnimInterface(&desc), true);                                       \
        (void)listed;                                                                                        \
        return &desc;                                                                                        \
    }

REFANIM_DESC(RefAnimPblock, PBLOCK)
REFANIM_DESC(RefAnimPblock2, PBLOCK2)
REFANIM_DESC(RefAnimIndepRefs, INDEPREFS)
REFANIM_DESC(RefAnimCA, CA)
REFANIM_DESC(RefAnimListCtrl, LISTCTRL)
REFANIM_DESC(RefAnimWithRefs, WITHREFS)
REFANIM_DESC(RefAnimLocDep, LOCDEP)
REFANIM_DESC(RefAnimLinkCtrl, LINKCTRL)
REFANIM_DESC(RefAnimBip, BIP)
REFANIM_DESC(RefAnimPointObj, POINTOBJ)
REFANIM_DESC(RefAnimStdLight, STDLIGHT)
REFANIM_DESC(RefAnimPointMod, POINTMOD)
REFANIM_DESC(RefAnimMod, MOD)
REFANIM_DESC(RefAnimWithRefsMod, WITHREFSMOD)
REFANIM_DESC(RefAnimPFSource, PFSOURCE)
REFANIM_DESC(RefAnimSkin, SKIN)
REFANIM_DESC(RefAnimMtl, MTL)
REFANIM_DESC(RefAnimTexmap, TEXMAP)
REFANIM_DESC(RefAnimText, TEXT)
REFANIM_DESC(RefAnimLinkedXForm, LINKEDXFORM)
REFANIM_DESC(RefAnimCloth, CLOTH)
REFANIM_DESC(RefAnimConstraint, CONSTRAINT)
REFANIM_DESC(RefAnimMultiSubMtl, MULTISUBMTL)
REFANIM_DESC(RefAnimReaction, REACTION)
REFANIM_DESC(RefAnimMorpher, MORPHER)
REFANIM_DESC(RefAnimBevelProfile, BEVELPROFILE)
REFANIM_DESC(RefAnimEuler, EULER)
REFANIM_DESC(RefAnimPRS, PRS)
REFANIM_DESC(RefAnimRWMS, RWMS)
REFANIM_DESC(RefAnimCAT, CAT)
REFANIM_DESC(RefAnimCam, CAM)
REFANIM_DESC(RefAnimBoolean, BOOLEAN)
REFANIM_DESC(RefAnimTextPlus, TEXTPLUS)
REFANIM_DESC(RefAnimDerivObj, DERIVOBJ)
REFANIM_DESC(RefAnimLayerCtrl, LAYERCTRL)
REFANIM_DESC(RefAnimXRef, XREF)
REFANIM_DESC(RefAnimContainer, CONTAINER)
REFANIM_DESC(RefAnimCATCtrl, CATCTRL)
REFANIM_DESC(RefAnimDataChannel, DATACHANNEL)
REFANIM_DESC(RefAnimPFTest, PFTEST)
REFANIM_DESC(RefAnimRailClone, RAILCLONE)
REFANIM_DESC(RefAnimBipCtrl, BIPCTRL)
REFANIM_DESC(RefAnimForest, FOREST)
REFANIM_DESC(RefAnimLinkTM, LINKTM)
