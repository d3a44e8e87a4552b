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
    {kIgnoredAnyClassId, kCodeIgnore},
    {kStdGeneratorClassId, kCodeWithRefs},
};

std::uint32_t GenericTail(Animatable* anim, Animatable* parent) {
    if (const ClassCode* row = Find(kGenericTail, anim->ClassID())) return row->code;
    return DefaultRule(anim, parent);
}

// Table G: geometric objects.
constexpr ClassCode kGeomTable[] = {
    {kEditablePolyClassId, kCodePointObj},
    {kEditableMeshClassId, kCodePointObj},
    {kEditablePatchClassId, kCodePointObj},
    {kNurbsSurfaceClassId, kCodePointObj},
    {kPointGeometryClassId, kCodePointObj},
    {kBoneObjectClassId, kCodeLocDep},
    {kLocDepGeometry1ClassId, kCodeLocDep},
    {kLocDepGeometry2ClassId, kCodeLocDep},
    {kLocDepGeometry3ClassId, kCodeLocDep},
    {kLocDepGeometry4ClassId, kCodeLocDep},
    {kLocDepGeometry5ClassId, kCodeLocDep},
    {kWalkedGeometry1ClassId, kCodeNoRecord},
    {kWalkedGeometry2ClassId, kCodeNoRecord},
    {kWalkedGeometry3ClassId, kCodeNoRecord},
    {kBooleanObjectClassId, kCodeBoolean},
    {kIndepRefsGeometry1ClassId, kCodeIndepRefs},
    {kIndepRefsGeometry2ClassId, kCodeIndepRefs},
    {kIndepRefsGeometry3ClassId, kCodeIndepRefs},
    {kIndepRefsGeometry4ClassId, kCodeIndepRefs},
    {kIndepRefsGeometry5ClassId, kCodeIndepRefs},
    {kLoftObjectClassId, kCodeIndepRefs},
    {kIndepRefsGeometry6ClassId, kCodeIndepRefs},
    {kBooleanCompoundClassId, kCodeIndepRefs},
    {kIndepRefsGeometry7ClassId, kCodeIndepRefs},
    {kTextPlusObjectClassId, kCodeTextPlus},
    {kIgnoredParticleFlowGeometryClassId, kCodeIgnore},
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
    {kEditPolyModifierClassId, kCodePointMod},
    {kPointModifier1ClassId, kCodePointMod},
    {kEditSplineModifierClassId, kCodePointMod},
    {kPointModifier2ClassId, kCodePointMod},
    {kPointModifier3ClassId, kCodePointMod},
    {kPointModifier4ClassId, kCodePointMod},
    {kMeshSelectModifierClassId, kCodePointMod},
    {kPointModifier5ClassId, kCodePointMod},
    {kFfdCylinderModifierClassId, kCodePointMod},
    {kFfdBoxModifierClassId, kCodePointMod},
    {kFfd4x4x4ModifierClassId, kCodePointMod},
    {kFfd3x3x3ModifierClassId, kCodePointMod},
    {kFfd2x2x2ModifierClassId, kCodePointMod},
    {kEditPatchModifierClassId, kCodePointMod},
    {kPointModifier6ClassId, kCodePointMod},
    {kEditMeshModifierClassId, kCodePointMod},
    {kSkinModifierClassId, kCodeSkin},
    {kMorpherModifierClassId, kCodeMorpher},
    {kLinkedXFormModifierClassId, kCodeLinkedXForm},
    {kClothModifierClassId, kCodeCloth},
    {kClothModifierSecondClassId, kCodeCloth},
    {kBevelProfileModifierClassId, kCodeBevelProfile},
    {kLocDepObjectModifierClassId, kCodeLocDep},
    {kDataChannelModifierClassId, kCodeDataChannel},
    {kStdGeneratorClassId, kCodeWithRefsMod},
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
    {LIGHT_CLASS_ID, false, kUndoGroupLight1ClassId, kCodePblock2UndoGroup},
    {LIGHT_CLASS_ID, false, kUndoGroupLight2ClassId, kCodePblock2UndoGroup},
    {HELPER_CLASS_ID, false, kParticleFlowSourceClassId, kCodePblock2ResizeOverride2},
    {REF_TARGET_CLASS_ID, false, kWalkedBlockOwner1ClassId, kCodeWalkSubs},
    {REF_TARGET_CLASS_ID, false, kWalkedBlockOwner2ClassId, kCodeWalkSubs},
    {REF_TARGET_CLASS_ID, false, kWalkedBlockOwner3ClassId, kCodeWalkSubs},
    {OSM_CLASS_ID, false, kDataChannelModifierClassId, kCodePblock2ResizeOverride2},
    {CTRL_FLOAT_CLASS_ID, false, kFloatLimitControlClassId, kCodePblock2},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl3ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl5ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl7ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kIgnoredFloatControl2ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl8ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl9ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl10ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl11ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kIgnoredFloatControl1ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl12ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl13ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl14ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, false, kWalkedFloatControl15ClassId, kCodeWalkSubs},
    {CTRL_POINT3_CLASS_ID, false, kWalkedPoint3ControlClassId, kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, kIgnoredMatrixControl1ClassId, kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, kIgnoredMatrixControl2ClassId, kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, kWalkedBlockMatrixControl1ClassId, kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, kWalkedBlockMatrixControl2ClassId, kCodeWalkSubs},
    {CTRL_MATRIX3_CLASS_ID, false, kWalkedBlockMatrixControl3ClassId, kCodeWalkSubs},
    {CTRL_ROTATION_CLASS_ID, false, kIgnoredRotationControl1ClassId, kCodeWalkSubs},
    {CTRL_ROTATION_CLASS_ID, false, kIgnoredRotationControl2ClassId, kCodeWalkSubs},
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
    if (sclass == CTRL_POSITION_CLASS_ID && (cid == kPositionConstraintClassId || cid == kPathConstraintClassId))
        return kCodePblock2ResizeOverride2;
    if (sclass == CTRL_ROTATION_CLASS_ID && (cid == kOrientationConstraintClassId || cid == kLookAtConstraintClassId))
        return kCodePblock2ResizeOverride2;
    return kCodePblock2;
}

// ---- Table A: anims that are not controllers, by superclass.

constexpr ClassCode kRefMakerTable[] = {
    {kOptionRefMaker1ClassId, kCodePlainWithOption},
    {kOptionRefMaker2ClassId, kCodePlainWithOption},
    {CUSTATTRIB_CONTAINER_CLASS_ID, kCodeWalkSubs},
    {kWithRefsRefMakerClassId, kCodeWithRefs},
    {kIgnoredRefMakerClassId, kCodeIgnore},
};

constexpr ClassCode kShapeTable[] = {
    {kNurbsSurfaceClassId, kCodePointObj},
    {kSpline3DShapeClassId, kCodePointObj},
    {kTextShapeClassId, kCodeText},
    {kBooleanShapeClassId, kCodeBoolean},
};

constexpr ClassCode kHelperTable[] = {
    {kIgnoredParticleFlowHelper1ClassId, kCodeIgnore},
    {kIgnoredParticleFlowHelper2ClassId, kCodeIgnore},
    {kPointHelperClassId, kCodeLocDep},
    {Class_ID(DUMMY_CLASS_ID, 0), kCodeLocDep},
    {kContainerHelperClassId, kCodeContainer},
};

constexpr ClassCode kWorldObjectTable[] = {
    {kFfdBoxSpaceWarpClassId, kCodePointObj},
    {kFfdCylinderSpaceWarpClassId, kCodePointObj},
};

constexpr ClassCode kMaterialTable[] = {
    {MULTI_MATERIAL_CLASS_ID, kCodeMultiSubMtl},
    {kWithRefsMaterialClassId, kCodeWithRefs},
    {kXRefMaterialClassId, kCodeXRef},
};

constexpr ClassCode kTexmapTable[] = {
    {kPlainRecordTexmapClassId, kCodePlain},
    {kWithRefsTexmapClassId, kCodeWithRefs},
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
    case LIGHT_CLASS_ID: return cid == kPlainRecordLightClassId ? kCodePlain : kCodeStdLight;
    case SHAPE_CLASS_ID:
        if ((row = Find(kShapeTable, cid))) return row->code;
        return kCodeRWMS;
    case HELPER_CLASS_ID:
        if ((row = Find(kHelperTable, cid))) return row->code;
        return WithRefsWhenTarget(anim);
    case SYSTEM_CLASS_ID: return cid == kXRefSystemClassId ? kCodeXRef : DefaultRule(anim, parent);
    case PARAMETER_BLOCK2_CLASS_ID: return ClassifyBlock2(parent);
    case REF_TARGET_CLASS_ID: return cid == kPlainRecordRefTargetClassId ? kCodePlain : DefaultRule(anim, parent);
    case OSM_CLASS_ID: return ClassifyModifier(anim);
    case WSM_CLASS_ID:
        if (cid == kLocDepWorldModifierClassId) return kCodeLocDep;
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
    kWalkedFloatControl5ClassId, kWalkedFloatControl7ClassId, kWalkedFloatControl8ClassId,
    kWalkedFloatControl11ClassId, kWalkedFloatControl13ClassId, kWalkedFloatControl14ClassId,
    kIgnoredFloatControl1ClassId,
};

constexpr ControlRow kControlTable[] = {
    // Float.
    {CTRL_FLOAT_CLASS_ID, kWithRefsFloatControlClassId, kCodeWithRefs},
    {CTRL_FLOAT_CLASS_ID, kFloatReactionClassId, kCodeReaction},
    {CTRL_FLOAT_CLASS_ID, kFloatNoiseControlClassId, kCodeIndepRefs},
    {CTRL_FLOAT_CLASS_ID, kFloatLimitControlClassId, kCodeLocDep},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl1ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl2ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl3ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl4ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl5ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl6ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl7ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl8ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl9ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl10ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl11ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl12ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl13ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl14ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl15ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kWalkedFloatControl16ClassId, kCodeWalkSubs},
    {CTRL_FLOAT_CLASS_ID, kIgnoredFloatControl1ClassId, kCodeIgnore},
    {CTRL_FLOAT_CLASS_ID, kIgnoredFloatControl2ClassId, kCodeIgnore},
    // Point3.
    {CTRL_POINT3_CLASS_ID, kSubAnimCheckedPoint3ControlClassId, kCodeWalkSubs, When::SubAnim2Listed},
    {CTRL_POINT3_CLASS_ID, kPoint3ReactionClassId, kCodeReaction},
    {CTRL_POINT3_CLASS_ID, kPoint3NoiseControlClassId, kCodeIndepRefs},
    {CTRL_POINT3_CLASS_ID, kWalkedPoint3ControlClassId, kCodeWalkSubs},
    {CTRL_POINT3_CLASS_ID, kWithRefsPoint3ControlClassId, kCodeWithRefs},
    // Matrix.
    {CTRL_MATRIX3_CLASS_ID, Class_ID(PRS_CONTROL_CLASS_ID, 0), kCodeWalkSubs, When::ParentIsLayerBase},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(PRS_CONTROL_CLASS_ID, 0), kCodePRS},
    {CTRL_MATRIX3_CLASS_ID, kLinkControlClassId, kCodeLinkCtrl},
    {CTRL_MATRIX3_CLASS_ID, Class_ID(LOOKAT_CONTROL_CLASS_ID, 0), kCodeIndepRefs},
    {CTRL_MATRIX3_CLASS_ID, kXRefControllerClassId, kCodeXRef},
    {CTRL_MATRIX3_CLASS_ID, kIgnoredMatrixControl1ClassId, kCodeIgnore},
    {CTRL_MATRIX3_CLASS_ID, kIgnoredMatrixControl2ClassId, kCodeIgnore},
    {CTRL_MATRIX3_CLASS_ID, kLocDepMatrixControlClassId, kCodeLocDep},
    {CTRL_MATRIX3_CLASS_ID, kLinkTMControlClassId, kCodeLinkTM, When::UnderNode},
    // Position.
    {CTRL_POSITION_CLASS_ID, kLocDepPositionControlClassId, kCodeLocDep},
    {CTRL_POSITION_CLASS_ID, kPositionConstraintClassId, kCodeConstraint},
    {CTRL_POSITION_CLASS_ID, kPathConstraintClassId, kCodeConstraint},
    {CTRL_POSITION_CLASS_ID, kPositionReactionClassId, kCodeReaction},
    {CTRL_POSITION_CLASS_ID, kPositionNoiseControlClassId, kCodeIndepRefs},
    {CTRL_POSITION_CLASS_ID, kSurfaceControlClassId, kCodeWithRefs},
    {CTRL_POSITION_CLASS_ID, kWithRefsPositionControlClassId, kCodeWithRefs},
    {CTRL_POSITION_CLASS_ID, kWithRefsPositionControl2ClassId, kCodeWithRefs},
    // Rotation.
    {CTRL_ROTATION_CLASS_ID, Class_ID(EULER_CONTROL_CLASS_ID, 0), kCodeEuler},
    {CTRL_ROTATION_CLASS_ID, kOrientationConstraintClassId, kCodeConstraint},
    {CTRL_ROTATION_CLASS_ID, kLookAtConstraintClassId, kCodeConstraint},
    {CTRL_ROTATION_CLASS_ID, kRotationReactionClassId, kCodeReaction},
    {CTRL_ROTATION_CLASS_ID, kRotationNoiseControlClassId, kCodeIndepRefs},
    {CTRL_ROTATION_CLASS_ID, kIgnoredRotationControl1ClassId, kCodeIgnore},
    {CTRL_ROTATION_CLASS_ID, kIgnoredRotationControl2ClassId, kCodeIgnore},
    {CTRL_ROTATION_CLASS_ID, kWithRefsRotationControlClassId, kCodeWithRefs},
    // Scale.
    {CTRL_SCALE_CLASS_ID, kLocDepScaleControlClassId, kCodeLocDep},
    {CTRL_SCALE_CLASS_ID, kScaleReactionClassId, kCodeReaction},
    {CTRL_SCALE_CLASS_ID, kScaleNoiseControlClassId, kCodeIndepRefs},
    {CTRL_SCALE_CLASS_ID, kWithRefsScaleControlClassId, kCodeWithRefs},
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
    kLocDepRotationControlClassId,  // rotation, CTRL_ROTATION_CLASS_ID
    kLocDepPoint3ControlClassId,  // point3, CTRL_POINT3_CLASS_ID
    kLocDepFloatControlClassId,  // float, CTRL_FLOAT_CLASS_ID
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
        const bool ownedBlock = HasClass(BlockOwner(parent), kLocDepBlockOwnerClassId);
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
    case GEOMOBJECT_CLASS_ID: return cid == kParticleFlowEngineGeometryClassId ? kCodePFSourceMode1 : kCodeWalkSubs;
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
    if (anim->ClassID() == kStandInClassId) return kCodeIgnore;
    void* control = anim->GetInterface(kControlInterface);
    if (!control) return ClassifyBySuperclass(anim, parent);
    if (static_cast<Control*>(control)->IsReplaceable()) return ClassifySplitController(anim, parent);
    return ClassifyWholeController(anim, parent);
}
