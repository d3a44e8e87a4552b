// The code column of the record family: each code names the class made for it (and, for parameter blocks 2
// and Particle Flow sources, the mode the record takes).
#include "anims/ref_anim_factory.h"

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
    {0x00010001, &Make<RefAnim>},
    {0x00110013, &Make<RefAnim>},
    {0x0044000B, &Make<RefAnim>},
    {0x00030003, &Make<RefAnimPblock>},
    {0x00230004, [] { return MakePblock2(0, false); }},
    {0x00230029, [] { return MakePblock2(1, false); }},
    {0x0023002A, [] { return MakePblock2(2, false); }},
    {0x00030036, [] { return MakePblock2(0, true); }},
    {0x00030006, &Make<RefAnimIndepRefs>},
    {0x00030007, &Make<RefAnimCA>},
    {0x00030008, &Make<RefAnimListCtrl>},
    {0x00030009, &Make<RefAnimWithRefs>},
    {0x0003000C, &Make<RefAnimLocDep>},
    {0x0003000D, &Make<RefAnimLinkCtrl>},
    {0x0001000E, &Make<RefAnimBip>},
    {0x00090010, &Make<RefAnimPointObj>},
    {0x000B0011, &Make<RefAnimStdLight>},
    {0x00010012, &Make<RefAnimPointMod>},
    {0x00030014, &Make<RefAnimMod>},
    {0x00030015, &Make<RefAnimWithRefsMod>},
    {0x00030016, [] { return MakePFSource(1); }},
    {0x00030017, [] { return MakePFSource(0); }},
    {0x00030018, &Make<RefAnimSkin>},
    {0x00030019, &Make<RefAnimMorpher>},
    {0x0003001A, &Make<RefAnimMtl>},
    {0x0003001B, &Make<RefAnimTexmap>},
    {0x0003001C, &Make<RefAnimText>},
    {0x0003001D, &Make<RefAnimLinkedXForm>},
    {0x0003001E, &Make<RefAnimCloth>},
    {0x0003001F, &Make<RefAnimConstraint>},
    {0x00030020, &Make<RefAnimMultiSubMtl>},
    {0x00030024, &Make<RefAnimReaction>},
    {0x00030025, &Make<RefAnimBevelProfile>},
    {0x00030026, &Make<RefAnimEuler>},
    {0x00030027, &Make<RefAnimPRS>},
    {0x00030028, &Make<RefAnimRWMS>},
    {0x0003002B, &Make<RefAnimCAT>},
    {0x000B002C, &Make<RefAnimCam>},
    {0x0003002D, &Make<RefAnimBoolean>},
    {0x0003002E, &Make<RefAnimTextPlus>},
    {0x000B002F, &Make<RefAnimDerivObj>},
    {0x000B0030, &Make<RefAnimLayerCtrl>},
    {0x00030031, &Make<RefAnimXRef>},
    {0x00090032, &Make<RefAnimContainer>},
    {0x000B0033, &Make<RefAnimCATCtrl>},
    {0x000B0035, &Make<RefAnimDataChannel>},
    {0x00230037, &Make<RefAnimPFTest>},
    {0x00030038, &Make<RefAnimRailClone>},
    {0x00030039, &Make<RefAnimBipCtrl>},
    {0x0003003A, &Make<RefAnimForest>},
    {0x0003003B, &Make<RefAnimLinkTM>},
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
