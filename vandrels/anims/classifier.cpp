// The classification rules: the top-level branches by anim-copy answer and controller split, and the class
// tables of each superclass, kept as data in the order in which their rows are tried (first match wins).
#include "anims/classifier.h"

#include "anims/classifier_class_ids.h"
#include "anims/record_codes.h"
#include "classids.h"
#include "control.h"
#include "imtl.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "records/subanim_space.h"

#include <span>

namespace {

using namespace vandrels;

// ---- Host answers.

constexpr ULONG kControlInterface = 0x1010;

constexpr Interface_ID kListCtrlInterface(0x444E7687, 0x722E6E36);
constexpr Interface_ID kCATCtrlInterface(0x00D83DC1, 0x4C851B6C);
constexpr Interface_ID kLayerCtrlInterface(0x434D7627, 0xA25E6E26);
constexpr Interface_ID kWithRefsCtrlInterface(0x25CE0F5C, 0x6C303D2F);
constexpr Interface_ID kRealWorldMapSizeInterface(0x09FF44EF, 0x6C050704);
constexpr Interface_ID kPFTestInterface(0x74F93D02, 0x1EB34500);

// Entries in the module's sub-anim address space, without hint.
int SubAnimEntries(Animatable* anim, Animatable* parent) { return CountSubAnims(anim, parent, nullptr); }

bool Answers(Animatable* anim, Interface_ID id) { return anim && anim->GetInterface(id) != nullptr; }

bool IsNode(Animatable* anim) { return anim && anim->SuperClassID() == BASENODE_CLASS_ID; }

bool HasClass(Animatable* anim, Class_ID cid) { return anim && anim->ClassID() == cid; }

// At least one non-null reference.
bool HoldsReference(Animatable* anim) {
    if (!anim->IsRefMaker()) return false;
    auto* maker = static_cast<ReferenceMaker*>(anim);
    for (int i = 0, n = maker->NumRefs(); i < n; ++i)
        if (maker->GetReference(i)) return true;
    return false;
}

bool HasSubAnimsOrBlocks(Animatable* anim) { return anim->NumSubs() > 0 || anim->NumParamBlocks() > 0; }

std::uint32_t WithRefsWhenTarget(Animatable* anim) { return anim->IsRefTarget() ? kCodeWithRefs : kCodeNoRecord; }

// The owner of parent when parent is a parameter block 2.
Animatable* BlockOwner(Animatable* parent) {
    if (!parent || parent->SuperClassID() != PARAMETER_BLOCK2_CLASS_ID) return nullptr;
    return static_cast<IParamBlock2*>(static_cast<ReferenceTarget*>(parent))->GetOwner();
}

// ---- Class tables.

struct ClassCode {
    Class_ID cid;
    std::uint32_t code;
};

const ClassCode* Find(std::span<const ClassCode> table, Class_ID cid) {
    for (const ClassCode& row : table)
        if (row.cid == cid) return &row;
    return nullptr;
}

bool Listed(std::span<const Class_ID> list, Class_ID cid) {
    for (const Class_ID& c : list)
        if (c == cid) return true;
    return false;
}

// Default rule D and the generic tail.
std::uint32_t DefaultRule(Animatable* anim, Animatable* parent) {
    if (SubAnimEntries(anim, parent) > 1) return kCodeNoRecord;
    return HoldsReference(anim) ? kCodeWithRefs : kCodePlain;
}

constexpr ClassCode kGenericTail[] = {
    {Class_ID(0x00001200, 0), kCodeIgnore},
    {Class_ID(0x00000100, 0), kCodeWithRefs},
};

std::uint32_t GenericTail(Animatable* anim, Animatable* parent) {
    if (const ClassCode* row = Find(kGenericTail, anim->ClassID())) return row->code;
    return DefaultRule(anim, parent);
}

// Table G: geometric objects.
constexpr ClassCode kGeomTable[] = {
    {Class_ID(0x1BF8338D, 0x192F6098), kCodePointObj},
    {Class_ID(0xE44F10B3, 0), kCodePointObj},
    {Class_ID(0x00001030, 0), kCodePointObj},
    {Class_ID(0x76A11646, 0x12A822FB), kCodePointObj},
    {Class_ID(0x87D987F4, 0xBE7C7E52), kCodePointObj},
    {Class_ID(0x28BF6E8D, 0x2ECCA840), kCodeLocDep},
    {Class_ID(0x2A730CDB, 0x746B394F), kCodeLocDep},
    {Class_ID(0x2A723864, 0x7F603F64), kCodeLocDep},
    {Class_ID(0x7DEE4CF0, 0x50E728B9), kCodeLocDep},
    {Class_ID(0xA4E83C21, 0x5F7B092D), kCodeLocDep},
    {Class_ID(0x3F2A6C11, 0x1B7E40D5), kCodeLocDep},
    {Class_ID(0x00009125, 0), kCodeNoRecord},
    {Class_ID(0x2E6A0C09, 0x43D5C9C0), kCodeNoRecord},
    {Class_ID(0x73DC4833, 0x65C93CAA), kCodeNoRecord},
    {kBooleanObjectClassId, kCodeBoolean},
    {Class_ID(0x5C2417BD, 0x44050964), kCodeIndepRefs},
    {Class_ID(0x42567B96, 0x4E9C1AED), kCodeIndepRefs},
    {Class_ID(0x6A877C03, 0x67947186), kCodeIndepRefs},
    {Class_ID(0x31CEA620, 0x2257F993), kCodeIndepRefs},
    {Class_ID(0x1D121A84, 0x64994009), kCodeIndepRefs},
    {Class_ID(0x000010B0, 0), kCodeIndepRefs},
    {Class_ID(0x367E33EF, 0x07C0670C), kCodeIndepRefs},
    {Class_ID(0x51DB4F2F, 0x1C596B1A), kCodeIndepRefs},
    {Class_ID(0x1AB13757, 0x12365B98), kCodeIndepRefs},
    {kTextPlusObjectClassId, kCodeTextPlus},
    {Class_ID(0x74F93B02, 0x1EB34300), kCodeIgnore},
    {kForestObjectClassId, kCodeForest},
    {kRailCloneObjectClassId, kCodeRailClone},
};

std::uint32_t ClassifyGeometry(Animatable* anim) {
    if (const ClassCode* row = Find(kGeomTable, anim->ClassID())) return row->code;
    if (Answers(anim, kRealWorldMapSizeInterface)) return kCodeRWMS;
    return WithRefsWhenTarget(anim);
}

// Table M: object modifiers.
constexpr ClassCode kModifierTable[] = {
    {Class_ID(0x79AA6E1D, 0x71A075B7), kCodePointMod},
    {Class_ID(0x4DBE3132, 0x614357B9), kCodePointMod},
    {Class_ID(0x00000060, 0), kCodePointMod},
    {Class_ID(0x02DF2E3A, 0x72BA4E1F), kCodePointMod},
    {Class_ID(0x7CE5206B, 0x31181505), kCodePointMod},
    {Class_ID(0x19592732, 0x03407A7A), kCodePointMod},
    {Class_ID(0x73D8FF93, 0), kCodePointMod},
    {Class_ID(0x00053446, 0x00007145), kCodePointMod},
    {Class_ID(0x98F37A63, 0x3FFE9BCA), kCodePointMod},
    {Class_ID(0x8AB36CC5, 0x82D7FE74), kCodePointMod},
    {Class_ID(0x21325596, 0x2CD10BD8), kCodePointMod},
    {Class_ID(0x21325596, 0x2CD10BD9), kCodePointMod},
    {Class_ID(0x21325596, 0x2CD10BD0), kCodePointMod},
    {Class_ID(0x00000070, 0), kCodePointMod},
    {Class_ID(0x4AA52AE3, 0x35CA1CDE), kCodePointMod},
    {Class_ID(0x00000050, 0), kCodePointMod},
    {kSkinModifierClassId, kCodeSkin},
    {kMorpherModifierClassId, kCodeMorpher},
    {kLinkedXFormModifierClassId, kCodeLinkedXForm},
    {kClothModifierClassId, kCodeCloth},
    {kClothModifierSecondClassId, kCodeCloth},
    {kBevelProfileModifierClassId, kCodeBevelProfile},
    {Class_ID(0x270F1FE3, 0x03B14999), kCodeLocDep},
    {kDataChannelModifierClassId, kCodeDataChannel},
    {Class_ID(0x00000100, 0), kCodeWithRefsMod},
};

std::uint32_t ClassifyModifier(Animatable* anim) {
    if (const ClassCode* row = Find(kModifierTable, anim->ClassID())) return row->code;
    if (HasSubAnimsOrBlocks(anim)) return Answers(anim, kRealWorldMapSizeInterface) ? kCodeRWMS : kCodeWithRefsMod;
    return HoldsReference(anim) ? kCodeWithRefsMod : kCodeMod;
}

// Table P: parameter blocks 2, by the parent. A row without a class takes every class of its superclass.
struct ParentRow {
    SClass_ID sclass;
    bool anyClass;
    Class_ID cid;
    std::uint32_t code;
};

constexpr ParentRow kBlockTable[] = {
    {CUST_ATTRIB_CLASS_ID, true, Class_ID(0, 0), kCodePblock2ResizeOverride1},
    {GEOMOBJECT_CLASS_ID, false, kBooleanObjectClassId, kCodePblock2ResizeOverride2},
    {GEOMOBJECT_CLASS_ID, false, kTextPlusObjectClassId, kCodePblock2ResizeOverride2},
    {GEOMOBJECT_CLASS_ID, false, kParticleFlowSourceClassId, kCodePblock2ResizeOverride2},
    {GEOMOBJECT_CLASS_ID, false, kForestObjectClassId, kCodePblock2ResizeOverride1},
    {GEOMOBJECT_CLASS_ID, false, kRailCloneObjectClassId, kCodePblock2ResizeOverride1},
    {LIGHT_CLASS_ID, false, Class_ID(0x2EAF2F07, 0x7EC44F31), kCodePblock2UndoGroup},
    {LIGHT_CLASS_ID, false, Class_ID(0x3C5575A1, 0x5FD602DF), kCodePblock2UndoGroup},
    {HELPER_CLASS_ID, false, kParticleFlowSourceClassId, kCodePblock2ResizeOverride2},
    {REF_TARGET_CLASS_ID, false, Class_ID(0x6E4253A3, 0x7FFA3373), kCodeWalkSubs},
    {REF_TARGET_CLASS_ID, false, Class_ID(0x1D473A0E, 0x3B151C9D), kCodeWalkSubs},
    {REF_TARGET_CLASS_ID, false, Class_ID(0x0BC975DD, 0x6E1A1AE5), kCodeWalkSubs},
    {OSM_CLASS_ID, false, kDataChannelModifierClassId, kCodePblock2ResizeOverride2},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x17127E3E, 0), kCodePblock2},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x4CEB45BD, 0x0B9C062E), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x0EC62904, 0x185A28DC), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x74B50FD8, 0x07AD665E), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x7C125BF5, 0x3A880ECE), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x04A420B7, 0x7A142AEE), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x0B5E496B, 0x15363635), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x46606ABF, 0x002D3676), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x40534BDC, 0x3AE34B58), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x7FA7544B, 0x711A51EA), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x265E07A8, 0x0D281541), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x2A234435, 0x750465F5), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x63785366, 0x6D970288), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, Class_ID(0x18E02664, 0x21D309C3), kCodeWalkSubs},
    {CTRL_POINT3_CLASS_ID, false, Class_ID(0x275C1AC1, 0x08B45EE2), kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, Class_ID(0x1EDD686D, 0x45A56EB3), kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, Class_ID(0x2DE70807, 0x3973713A), kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, Class_ID(0x542E413E, 0x08241AA2), kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, Class_ID(0x485A734C, 0x795557CC), kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, Class_ID(0x1ADF2684, 0x2E3B60D2), kCodeWalkSubs},
    {CTRL_ROTATION_CLASS_ID, false, Class_ID(0x67A81CF9, 0x79C62151), kCodeWalkSubs},
    {CTRL_ROTATION_CLASS_ID, false, Class_ID(0x1D1A667C, 0x206521F1), kCodeWalkSubs},
};

// A parameter block 2 is placed by its parent; a block met without a parent takes the last default.
std::uint32_t ClassifyBlock2(Animatable* parent) {
    if (!parent) return kCodePblock2;
    const SClass_ID sclass = parent->SuperClassID();
    const Class_ID cid = parent->ClassID();
    for (const ParentRow& row : kBlockTable)
        if (row.sclass == sclass && (row.anyClass || row.cid == cid)) return row.code;
    if (Answers(parent, kListCtrlInterface)) return kCodePblock2ResizeOverride2;
    if (sclass == CUST_ATTRIB_CLASS_ID) return kCodePblock2ResizeOverride1;
    if (sclass == CTRL_POSITION_CLASS_ID && (cid == Class_ID(0x00002019, 0) || cid == Class_ID(0x00002011, 0)))
        return kCodePblock2ResizeOverride2;
    if (sclass == CTRL_ROTATION_CLASS_ID && (cid == Class_ID(0x00002020, 0) || cid == Class_ID(0x00002021, 0)))
        return kCodePblock2ResizeOverride2;
    return kCodePblock2;
}

// ---- Table A: anims that are not controllers, by superclass.

constexpr ClassCode kRefMakerTable[] = {
    {Class_ID(0x4096218C, 0x1BB8133C), kCodePlainWithOption},
    {Class_ID(0x4DDC1551, 0x118452EB), kCodePlainWithOption},
    {CUSTATTRIB_CONTAINER_CLASS_ID, kCodeWalkSubs},
    {Class_ID(0x5F2D3A0A, 0x4BE75269), kCodeWithRefs},
    {Class_ID(0x14585773, 0x483A7DCF), kCodeIgnore},
};

constexpr ClassCode kShapeTable[] = {
    {Class_ID(0x76A11646, 0x12A822FB), kCodePointObj},
    {Class_ID(0x00001040, 0), kCodePointObj},
    {kTextShapeClassId, kCodeText},
    {kBooleanShapeClassId, kCodeBoolean},
};

constexpr ClassCode kHelperTable[] = {
    {Class_ID(0x74F93B07, 0x1EB34300), kCodeIgnore},
    {Class_ID(0x74F93B01, 0x1EB34300), kCodeIgnore},
    {Class_ID(0x00002013, 0), kCodeLocDep},
    {Class_ID(DUMMY_CLASS_ID, 0), kCodeLocDep},
    {kContainerHelperClassId, kCodeContainer},
};

constexpr ClassCode kWorldObjectTable[] = {
    {Class_ID(0x67EA40B3, 0xFE7A30C4), kCodePointObj},
    {Class_ID(0xFA4700BE, 0xBBE85051), kCodePointObj},
};

constexpr ClassCode kMaterialTable[] = {
    {MULTI_MATERIAL_CLASS_ID, kCodeMultiSubMtl},
    {Class_ID(0x4B9937E0, 0x3A1C3DA4), kCodeWithRefs},
    {kXRefMaterialClassId, kCodeXRef},
};

constexpr ClassCode kTexmapTable[] = {
    {Class_ID(0x4C693CD7, 0x05FC76AC), kCodePlain},
    {Class_ID(0x6EC3730C, 0), kCodeWithRefs},
};

// Materials and texture maps: their table, then a record of their own kind when they have more than one entry.
std::uint32_t ClassifyMapping(Animatable* anim, Animatable* parent, std::span<const ClassCode> table,
                              std::uint32_t ownKind) {
    if (const ClassCode* row = Find(table, anim->ClassID())) return row->code;
    if (SubAnimEntries(anim, parent) > 1) return ownKind;
    return HoldsReference(anim) ? kCodeWithRefs : kCodePlain;
}

std::uint32_t ClassifyBySuperclass(Animatable* anim, Animatable* parent) {
    const Class_ID cid = anim->ClassID();
    const ClassCode* row = nullptr;
    switch (anim->SuperClassID()) {
    case REF_MAKER_CLASS_ID:
        if ((row = Find(kRefMakerTable, cid))) return row->code;
        return DefaultRule(anim, parent);
    case BASENODE_CLASS_ID: return kCodeNodeAsSubAnim;
    case GEN_DERIVOB_CLASS_ID: return IsNode(parent) ? (kCodeWalkSubs | kCodeNoRescanRecord) : kCodeDerivObj;
    case PARAMETER_BLOCK_CLASS_ID: return kCodePblock;
    case GEOMOBJECT_CLASS_ID: return ClassifyGeometry(anim);
    case CAMERA_CLASS_ID: return kCodeCam;
    case LIGHT_CLASS_ID: return cid == Class_ID(0x27D93542, 0x76F965B2) ? kCodePlain : kCodeStdLight;
    case SHAPE_CLASS_ID:
        if ((row = Find(kShapeTable, cid))) return row->code;
        return kCodeRWMS;
    case HELPER_CLASS_ID:
        if ((row = Find(kHelperTable, cid))) return row->code;
        return WithRefsWhenTarget(anim);
    case SYSTEM_CLASS_ID: return cid == kXRefSystemClassId ? kCodeXRef : DefaultRule(anim, parent);
    case PARAMETER_BLOCK2_CLASS_ID: return ClassifyBlock2(parent);
    case REF_TARGET_CLASS_ID: return cid == Class_ID(0x46D56AA8, 0x1A0703D4) ? kCodePlain : DefaultRule(anim, parent);
    case OSM_CLASS_ID: return ClassifyModifier(anim);
    case WSM_CLASS_ID:
        if (cid == Class_ID(0x370F1FE3, 0x03B14999)) return kCodeLocDep;
        if (HasSubAnimsOrBlocks(anim)) return kCodeWithRefsMod;
        return HoldsReference(anim) ? kCodeWithRefsMod : kCodeMod;
    case WSM_OBJECT_CLASS_ID:
        if ((row = Find(kWorldObjectTable, cid))) return row->code;
        return WithRefsWhenTarget(anim);
    case MATERIAL_CLASS_ID: return ClassifyMapping(anim, parent, kMaterialTable, kCodeMtl);
    case TEXMAP_CLASS_ID: return ClassifyMapping(anim, parent, kTexmapTable, kCodeTexmap);
    default: return GenericTail(anim, parent);
    }
}

// ---- Table C: controllers whose split query answers non-zero.

// A row of table C applies unconditionally, or only under one of these conditions; a row whose condition
// fails is passed over.
enum class When { Always, UnderNode, ParentIsLayerBase, SubAnim2Listed };

struct ControlRow {
    SClass_ID sclass;
    Class_ID cid;
    std::uint32_t code;
    When when = When::Always;
};

// Classes whose presence as sub-anim 2 of the point3 expression-like controller hands it to the walk.
constexpr Class_ID kPoint3SubAnim2Classes[] = {
    Class_ID(0x0EC62904, 0x185A28DC), Class_ID(0x74B50FD8, 0x07AD665E), Class_ID(0x04A420B7, 0x7A142AEE),
    Class_ID(0x40534BDC, 0x3AE34B58), Class_ID(0x2A234435, 0x750465F5), Class_ID(0x63785366, 0x6D970288),
    Class_ID(0x7FA7544B, 0x711A51EA),
};

constexpr ControlRow kControlTable[] = {
    // Float.
    {CTRL_FLOAT_CLASS_ID, Class_ID(0xFF5826DB, 0), kCodeWithRefs},
    {CTRL_FLOAT_CLASS_ID, kFloatReactionClassId, kCodeReaction},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x87A6DF24, 0), kCodeIndepRefs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x17127E3E, 0), kCodeLocDep},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x742D30AC, 0x37984F09), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x43BF76AC, 0x60AB5707), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x4CEB45BD, 0x0B9C062E), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x507514E5, 0x30B07FAD), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x0EC62904, 0x185A28DC), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x453F7278, 0x4B8E1DFD), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x74B50FD8, 0x07AD665E), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x04A420B7, 0x7A142AEE), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x0B5E496B, 0x15363635), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x46606ABF, 0x002D3676), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x40534BDC, 0x3AE34B58), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x265E07A8, 0x0D281541), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x2A234435, 0x750465F5), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x63785366, 0x6D970288), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x18E02664, 0x21D309C3), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x094E2D9C, 0x02C702B5), kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x7FA7544B, 0x711A51EA), kCodeIgnore},
    {CTRL_FLOAT_CLASS_ID, Class_ID(0x7C125BF5, 0x3A880ECE), kCodeIgnore},
    // Point3.
    {CTRL_POINT3_CLASS_ID, Class_ID(0x118F7E02, 0xFEEE238B), kCodeWalkSubs, When::SubAnim2Listed},
    {CTRL_POINT3_CLASS_ID, kPoint3ReactionClassId, kCodeReaction},
    {CTRL_POINT3_CLASS_ID, Class_ID(0x87A6DF26, 0), kCodeIndepRefs},
    {CTRL_POINT3_CLASS_ID, Class_ID(0x275C1AC1, 0x08B45EE2), kCodeWalkSubs},
    {CTRL_POINT3_CLASS_ID, Class_ID(0xFF4826DC, 0), kCodeWithRefs},
    // Matrix.
    {CTRL_MATRIX3_CLASS_ID, Class_ID(PRS_CONTROL_CLASS_ID, 0), kCodeWalkSubs, When::ParentIsLayerBase},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(PRS_CONTROL_CLASS_ID, 0), kCodePRS},
    {CTRL_MATRIX3_CLASS_ID, kLinkControlClassId, kCodeLinkCtrl},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(LOOKAT_CONTROL_CLASS_ID, 0), kCodeIndepRefs},
    {CTRL_MATRIX3_CLASS_ID, kXRefControllerClassId, kCodeXRef},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(0x1EDD686D, 0x45A56EB3), kCodeIgnore},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(0x2DE70807, 0x3973713A), kCodeIgnore},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(0x6E341CBA, 0x6F9C52CA), kCodeLocDep},
    {CTRL_MATRIX3_CLASS_ID, kLinkTMControlClassId, kCodeLinkTM, When::UnderNode},
    // Position.
    {CTRL_POSITION_CLASS_ID, Class_ID(0x118F7E02, 0xFFEE238A), kCodeLocDep},
    {CTRL_POSITION_CLASS_ID, Class_ID(0x00002019, 0), kCodeConstraint},
    {CTRL_POSITION_CLASS_ID, Class_ID(0x00002011, 0), kCodeConstraint},
    {CTRL_POSITION_CLASS_ID, kPositionReactionClassId, kCodeReaction},
    {CTRL_POSITION_CLASS_ID, Class_ID(0x87A6DF25, 0), kCodeIndepRefs},
    {CTRL_POSITION_CLASS_ID, Class_ID(0xE8334011, 0xAEB330C8), kCodeWithRefs},
    {CTRL_POSITION_CLASS_ID, Class_ID(0xFF8826DE, 0), kCodeWithRefs},
    {CTRL_POSITION_CLASS_ID, Class_ID(0x79697D2A, 0xF2B8A1C8), kCodeWithRefs},
    // Rotation.
    {CTRL_ROTATION_CLASS_ID, Class_ID(EULER_CONTROL_CLASS_ID, 0), kCodeEuler},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0x00002020, 0), kCodeConstraint},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0x00002021, 0), kCodeConstraint},
    {CTRL_ROTATION_CLASS_ID, kRotationReactionClassId, kCodeReaction},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0x87A6DF27, 0), kCodeIndepRefs},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0x67A81CF9, 0x79C62151), kCodeIgnore},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0x1D1A667C, 0x206521F1), kCodeIgnore},
    {CTRL_ROTATION_CLASS_ID, Class_ID(0xFF7826DF, 0), kCodeWithRefs},
    // Scale.
    {CTRL_SCALE_CLASS_ID, Class_ID(0x118F7C01, 0xFEEE238B), kCodeLocDep},
    {CTRL_SCALE_CLASS_ID, kScaleReactionClassId, kCodeReaction},
    {CTRL_SCALE_CLASS_ID, Class_ID(0x87A6DF28, 0), kCodeIndepRefs},
    {CTRL_SCALE_CLASS_ID, Class_ID(0xFF6826DA, 0), kCodeWithRefs},
};

bool RowApplies(const ControlRow& row, Animatable* anim, Animatable* parent) {
    switch (row.when) {
    case When::Always: return true;
    case When::UnderNode: return IsNode(parent);
    case When::ParentIsLayerBase: return HasClass(parent, kLayerBaseClassId);
    case When::SubAnim2Listed: {
        Animatable* sub = anim->NumSubs() > 2 ? anim->SubAnim(2) : nullptr;
        return sub && Listed(kPoint3SubAnim2Classes, sub->ClassID());
    }
    }
    return false;
}

// Step 2.3: controllers that split.
std::uint32_t ClassifySplitController(Animatable* anim, Animatable* parent) {
    const SClass_ID sclass = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    for (const ControlRow& row : kControlTable)
        if (row.sclass == sclass && row.cid == cid && RowApplies(row, anim, parent)) return row.code;
    if (Answers(anim, kListCtrlInterface)) return kCodeListCtrl;
    if (SubAnimEntries(anim, parent) < 2) return HoldsReference(anim) ? kCodeWithRefs : kCodePlain;
    return WithRefsWhenTarget(anim);
}

constexpr Class_ID kCATRigClass(0x022D5030, 0x4344191C);
constexpr Class_ID kIKSolverClass(0x0E6F5815, 0x717F99A4);
constexpr std::uint32_t kCodeIKSolver = 0x000E0034;

// Step 2.4: controllers that do not split (whole-transform solvers and rigs).
std::uint32_t ClassifyWholeController(Animatable* anim, Animatable* parent) {
    if (anim->SuperClassID() != CTRL_MATRIX3_CLASS_ID) return kCodeWalkSubs;
    const Class_ID cid = anim->ClassID();
    if (IsNode(parent)) {
        if (Answers(anim, kCATCtrlInterface)) return kCodeCATCtrl;
        if (cid == kCATRigClass) return kCodeCAT;
    }
    return cid == kIKSolverClass ? kCodeIKSolver : kCodeWalkSubs;
}

// Step 3.1: controllers that refuse the anim copy. Nothing decided answers 0 (the superclass rules of step 3
// give controllers no code of their own, so they fall to the walk).
constexpr Class_ID kLocDepControllerClasses[] = {
    Class_ID(0x19357028, 0x428C5294),  // rotation, CTRL_ROTATION_CLASS_ID
    Class_ID(0x69F672C0, 0x27927AFA),  // point3, CTRL_POINT3_CLASS_ID
    Class_ID(0x72930021, 0x06951211),  // float, CTRL_FLOAT_CLASS_ID
};
constexpr SClass_ID kLocDepControllerSuperclasses[] = {CTRL_ROTATION_CLASS_ID, CTRL_POINT3_CLASS_ID,
                                                      CTRL_FLOAT_CLASS_ID};

bool ClassifyFixedController(Animatable* anim, Animatable* parent, std::uint32_t& code) {
    const SClass_ID sclass = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    if (sclass == CTRL_MATRIX3_CLASS_ID) {
        if (cid == kBipedClassId) return code = kCodeBip, true;
        if (cid == kBipedControlClassId) return code = kCodeBipCtrl, true;
        if (Answers(anim, kCATCtrlInterface) && IsNode(parent)) return code = kCodeCATCtrl, true;
        if (cid == kXRefControllerClassId) return code = kCodeXRef, true;
        if (cid == kIKSolverClassId) return code = kCodeIKSolver, true;
    }
    for (std::size_t i = 0; i < std::size(kLocDepControllerClasses); ++i) {
        if (sclass != kLocDepControllerSuperclasses[i] || cid != kLocDepControllerClasses[i]) continue;
        const bool ownedBlock = HasClass(BlockOwner(parent), Class_ID(0x848361CB, 0x913CC083));
        return code = ownedBlock ? kCodeLocDep : kCodeNoRecord, true;
    }
    if (Answers(anim, kLayerCtrlInterface)) return code = kCodeLayerCtrl, true;
    if (Answers(anim, kWithRefsCtrlInterface)) return code = kCodeWithRefs, true;
    return false;
}

// Step 3: anims that refuse the anim copy.
std::uint32_t ClassifyFixed(Animatable* anim, Animatable* parent) {
    std::uint32_t code = 0;
    if (anim->GetInterface(kControlInterface) && ClassifyFixedController(anim, parent, code)) return code;
    const Class_ID cid = anim->ClassID();
    switch (anim->SuperClassID()) {
    case GEOMOBJECT_CLASS_ID: return cid == Class_ID(0x50320C9A, 0) ? kCodePFSourceMode1 : kCodeWalkSubs;
    case CUST_ATTRIB_CLASS_ID: return kCodeCA;
    case HELPER_CLASS_ID:
        if (cid == kParticleFlowSourceClassId) return kCodePFSource;
        // A Particle Flow test inside an event: the host has no separate Particle Flow object behind an
        // action, so the test query and the interface query are asked of the action itself.
        if (IsNode(parent) && Answers(anim, kPFTestInterface)) return kCodePFTest;
        return kCodeWalkSubs;
    default: return kCodeWalkSubs;
    }
}

}  // namespace

std::uint32_t ClassifyAnim(Animatable* anim, Animatable* parent) {
    if (!anim) return kCodeNoRecord;
    if (!anim->CanCopyAnim()) return ClassifyFixed(anim, parent);
    if (anim->ClassID() == Class_ID(0xFFFFFFFF, 0)) return kCodeIgnore;
    void* control = anim->GetInterface(kControlInterface);
    if (!control) return ClassifyBySuperclass(anim, parent);
    if (static_cast<Control*>(control)->IsReplaceable()) return ClassifySplitController(anim, parent);
    return ClassifyWholeController(anim, parent);
}
