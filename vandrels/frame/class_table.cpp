// The class table: every class of the library, in the order the host reads it through LibClassDesc.
#include "frame/class_table.h"

#include "plugapi.h"

// Each descriptor lives next to its class.
ClassDesc2* GetVandrelsHelperDesc();
ClassDesc2* GetRefBaseDesc();
ClassDesc2* GetRefNodeDesc();
ClassDesc2* GetRefMaterialDesc();
ClassDesc2* GetEmptyBaseObjectDesc();
ClassDesc2* GetEmptyControllerDesc();
ClassDesc2* GetRefHolderDesc();
ClassDesc2* GetRefAnimDesc();
ClassDesc2* GetRefAnimPblockDesc();
ClassDesc2* GetRefAnimPblock2Desc();
ClassDesc2* GetRefAnimIndepRefsDesc();
ClassDesc2* GetRefAnimCADesc();
ClassDesc2* GetRefAnimListCtrlDesc();
ClassDesc2* GetRefAnimWithRefsDesc();
ClassDesc2* GetRefAnimLocDepDesc();
ClassDesc2* GetRefAnimLinkCtrlDesc();
ClassDesc2* GetRefAnimBipDesc();
ClassDesc2* GetRefAnimPointObjDesc();
ClassDesc2* GetRefAnimStdLightDesc();
ClassDesc2* GetRefAnimPointModDesc();
ClassDesc2* GetRefAnimModDesc();
ClassDesc2* GetRefAnimWithRefsModDesc();
ClassDesc2* GetRefAnimPFSourceDesc();
ClassDesc2* GetRefAnimSkinDesc();
ClassDesc2* GetRefAnimMtlDesc();
ClassDesc2* GetRefAnimTexmapDesc();
ClassDesc2* GetRefAnimTextDesc();
ClassDesc2* GetRefAnimLinkedXFormDesc();
ClassDesc2* GetRefAnimClothDesc();
ClassDesc2* GetRefAnimConstraintDesc();
ClassDesc2* GetRefAnimMultiSubMtlDesc();
ClassDesc2* GetRefAnimReactionDesc();
ClassDesc2* GetRefAnimMorpherDesc();
ClassDesc2* GetRefAnimBevelProfileDesc();
ClassDesc2* GetRefAnimEulerDesc();
ClassDesc2* GetRefAnimPRSDesc();
ClassDesc2* GetRefAnimRWMSDesc();
ClassDesc2* GetRefAnimCATDesc();
ClassDesc2* GetRefAnimCamDesc();
ClassDesc2* GetRefAnimBooleanDesc();
ClassDesc2* GetRefAnimTextPlusDesc();
ClassDesc2* GetRefAnimDerivObjDesc();
ClassDesc2* GetRefAnimLayerCtrlDesc();
ClassDesc2* GetRefAnimXRefDesc();
ClassDesc2* GetRefAnimContainerDesc();
ClassDesc2* GetRefAnimCATCtrlDesc();
ClassDesc2* GetRefAnimDataChannelDesc();
ClassDesc2* GetRefAnimPFTestDesc();
ClassDesc2* GetEmptyShapeDesc();
ClassDesc2* GetRefAnimRailCloneDesc();
ClassDesc2* GetRefAnimBipCtrlDesc();
ClassDesc2* GetRefAnimForestDesc();
ClassDesc2* GetRefAnimLinkTMDesc();

namespace {
using DescGetter = ClassDesc2* (*)();
constexpr DescGetter kClasses[] = {
    GetVandrelsHelperDesc,  // 0
    GetRefBaseDesc,  // 1
    GetRefNodeDesc,  // 2
    GetRefMaterialDesc,  // 3
    GetEmptyBaseObjectDesc,  // 4
    GetEmptyControllerDesc,  // 5
    GetRefHolderDesc,  // 6
    GetRefAnimDesc,  // 7
    GetRefAnimPblockDesc,  // 8
    GetRefAnimPblock2Desc,  // 9
    GetRefAnimIndepRefsDesc,  // 10
    GetRefAnimCADesc,  // 11
    GetRefAnimListCtrlDesc,  // 12
    GetRefAnimWithRefsDesc,  // 13
    GetRefAnimLocDepDesc,  // 14
    GetRefAnimLinkCtrlDesc,  // 15
    GetRefAnimBipDesc,  // 16
    GetRefAnimPointObjDesc,  // 17
    GetRefAnimStdLightDesc,  // 18
    GetRefAnimPointModDesc,  // 19
    GetRefAnimModDesc,  // 20
    GetRefAnimWithRefsModDesc,  // 21
    GetRefAnimPFSourceDesc,  // 22
    GetRefAnimSkinDesc,  // 23
    GetRefAnimMtlDesc,  // 24
    GetRefAnimTexmapDesc,  // 25
    GetRefAnimTextDesc,  // 26
    GetRefAnimLinkedXFormDesc,  // 27
    GetRefAnimClothDesc,  // 28
    GetRefAnimConstraintDesc,  // 29
    GetRefAnimMultiSubMtlDesc,  // 30
    GetRefAnimReactionDesc,  // 31
    GetRefAnimMorpherDesc,  // 32
    GetRefAnimBevelProfileDesc,  // 33
    GetRefAnimEulerDesc,  // 34
    GetRefAnimPRSDesc,  // 35
    GetRefAnimRWMSDesc,  // 36
    GetRefAnimCATDesc,  // 37
    GetRefAnimCamDesc,  // 38
    GetRefAnimBooleanDesc,  // 39
    GetRefAnimTextPlusDesc,  // 40
    GetRefAnimDerivObjDesc,  // 41
    GetRefAnimLayerCtrlDesc,  // 42
    GetRefAnimXRefDesc,  // 43
    GetRefAnimContainerDesc,  // 44
    GetRefAnimCATCtrlDesc,  // 45
    GetRefAnimDataChannelDesc,  // 46
    GetRefAnimPFTestDesc,  // 47
    GetEmptyShapeDesc,  // 48
    GetRefAnimRailCloneDesc,  // 49
    GetRefAnimBipCtrlDesc,  // 50
    GetRefAnimForestDesc,  // 51
    GetRefAnimLinkTMDesc,  // 52
};
constexpr int kNumClasses = int(sizeof kClasses / sizeof kClasses[0]);
static_assert(kNumClasses == 53);
}  // namespace

int NumLibraryClasses() { return kNumClasses; }

ClassDesc* LibraryClassDesc(int i) { return i >= 0 && i < kNumClasses ? kClasses[i]() : nullptr; }
