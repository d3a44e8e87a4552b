// The code column of the record family: each code names the class made for it (and, for parameter blocks 2
// and Particle Flow sources, the mode the record takes).
#include "anims/ref_anim_factory.h"

#include "anims/record_codes.h"
#include "anims/ik_guard.h"
#include "anims/ref_anim_family.h"

namespace {

template <class T> RefAnim* Make() { return new T(); }

RefAnim* MakePblock2(int mode, bool undoGroup) {
    auto* record = new RefAnimPblock2();
    record->SetMode(mode, undoGroup);
    return record;
}

RefAnim* MakePFSource(int mode) {
    auto* record = new RefAnimPFSource();
    record->SetMode(mode);
    return record;
}

struct CodeMaker {
    std::uint32_t code;
    RefAnim* (*make)();
};

constexpr CodeMaker kCodeMakers[] = {
    {kCodePlain, &Make<RefAnim>},
    {kCodePlainWithOption, &Make<RefAnim>},
    {kCodeNodeAsSubAnim, &Make<RefAnim>},
    {kCodePblock, &Make<RefAnimPblock>},
    {kCodePblock2, [] { return MakePblock2(0, false); }},
    {kCodePblock2ResizeOverride1, [] { return MakePblock2(1, false); }},
    {kCodePblock2ResizeOverride2, [] { return MakePblock2(2, false); }},
    {kCodePblock2UndoGroup, [] { return MakePblock2(0, true); }},
    {kCodeIndepRefs, &Make<RefAnimIndepRefs>},
    {kCodeCA, &Make<RefAnimCA>},
    {kCodeListCtrl, &Make<RefAnimListCtrl>},
    {kCodeWithRefs, &Make<RefAnimWithRefs>},
    {kCodeLocDep, &Make<RefAnimLocDep>},
    {kCodeLinkCtrl, &Make<RefAnimLinkCtrl>},
    {kCodeBip, &Make<RefAnimBip>},
    {kCodePointObj, &Make<RefAnimPointObj>},
    {kCodeStdLight, &Make<RefAnimStdLight>},
    {kCodePointMod, &Make<RefAnimPointMod>},
    {kCodeMod, &Make<RefAnimMod>},
    {kCodeWithRefsMod, &Make<RefAnimWithRefsMod>},
    {kCodePFSourceMode1, [] { return MakePFSource(1); }},
    {kCodePFSource, [] { return MakePFSource(0); }},
    {kCodeSkin, &Make<RefAnimSkin>},
    {kCodeMorpher, &Make<RefAnimMorpher>},
    {kCodeMtl, &Make<RefAnimMtl>},
    {kCodeTexmap, &Make<RefAnimTexmap>},
    {kCodeText, &Make<RefAnimText>},
    {kCodeLinkedXForm, &Make<RefAnimLinkedXForm>},
    {kCodeCloth, &Make<RefAnimCloth>},
    {kCodeConstraint, &Make<RefAnimConstraint>},
    {kCodeMultiSubMtl, &Make<RefAnimMultiSubMtl>},
    {kCodeReaction, &Make<RefAnimReaction>},
    {kCodeBevelProfile, &Make<RefAnimBevelProfile>},
    {kCodeEuler, &Make<RefAnimEuler>},
    {kCodePRS, &Make<RefAnimPRS>},
    {kCodeRWMS, &Make<RefAnimRWMS>},
    {kCodeCAT, &Make<RefAnimCAT>},
    {kCodeCam, &Make<RefAnimCam>},
    {kCodeBoolean, &Make<RefAnimBoolean>},
    {kCodeTextPlus, &Make<RefAnimTextPlus>},
    {kCodeDerivObj, &Make<RefAnimDerivObj>},
    {kCodeLayerCtrl, &Make<RefAnimLayerCtrl>},
    {kCodeXRef, &Make<RefAnimXRef>},
    {kCodeContainer, &Make<RefAnimContainer>},
    {kCodeCATCtrl, &Make<RefAnimCATCtrl>},
    {kCodeDataChannel, &Make<RefAnimDataChannel>},
    {kCodePFTest, &Make<RefAnimPFTest>},
    {kCodeRailClone, &Make<RefAnimRailClone>},
    {kCodeBipCtrl, &Make<RefAnimBipCtrl>},
    {kCodeForest, &Make<RefAnimForest>},
    {kCodeLinkTM, &Make<RefAnimLinkTM>},
};

constexpr std::uint32_t kCodeIKSolver = 0x000E0034;

}  // namespace

RefAnim* MakeRefAnim(std::uint32_t code) {
    if (code == kCodeIKSolver) {
        vandrels::GuardIKCreation();
        return nullptr;
    }
    for (const CodeMaker& row : kCodeMakers)
        if (row.code == code) return row.make();
    return nullptr;
}
