// Class ids of the classes the classifier treats by name (the host's own ids come from its headers): one name
// per class, used by every table row and rule that meets the class.
#pragma once

#include "maxtypes.h"

namespace vandrels {

constexpr Class_ID kBooleanObjectClassId(0x7BC209AF, 0x01BBAC5F);  // geometric object recorded as a Boolean
constexpr Class_ID kTextPlusObjectClassId(0x6C3600A5, 0x11634EB8);  // geometric object recorded as text-plus
constexpr Class_ID kForestObjectClassId(0x79FE41C2, 0x1D7B4FB1);  // scattering object recorded as forest
constexpr Class_ID kRailCloneObjectClassId(0x39712DEF, 0x10A72959);  // array object recorded as rail clone
constexpr Class_ID kParticleFlowSourceClassId(0x74F93B03, 0x1EB34300);  // the Particle Flow source
constexpr Class_ID kSkinModifierClassId(0x0095C723, 0x00015666);  // the skin modifier
constexpr Class_ID kMorpherModifierClassId(0x17BB6854, 0xA5CBA2A3);  // the morpher modifier
constexpr Class_ID kLinkedXFormModifierClassId(0x000C4D33, 0);  // the linked-transform modifier
constexpr Class_ID kClothModifierClassId(0x67C1CD47, 0x7782F878);  // the cloth modifier
constexpr Class_ID kClothModifierSecondClassId(0x0EE23DE9, 0xFA432946);  // the second cloth modifier class
constexpr Class_ID kBevelProfileModifierClassId(0x7A4202D0, 0x11961722);  // the bevel-profile modifier
constexpr Class_ID kDataChannelModifierClassId(0x00000E11, 0);  // the data-channel modifier
constexpr Class_ID kTextShapeClassId(0x00001993, 0);  // the text shape
constexpr Class_ID kBooleanShapeClassId(0x6B963D5F, 0x6E243528);  // the Boolean shape
constexpr Class_ID kContainerHelperClassId(0x6E34B493, 0xE3C48E41);  // the container helper
constexpr Class_ID kXRefMaterialClassId(0x272C0D4B, 0x432A414B);  // the external-reference material
constexpr Class_ID kXRefSystemClassId(0x92AAB38C, 0);  // the external-reference system
constexpr Class_ID kXRefControllerClassId(0x32FB4637, 0x65FD482B);  // the external-reference controller
constexpr Class_ID kFloatReactionClassId(0x717D7D1F, 0x124C173B);  // the float reaction controller
constexpr Class_ID kPoint3ReactionClassId(0x19080908, 0x3B617839);  // the point3 reaction controller
constexpr Class_ID kPositionReactionClassId(0x7AC5CAE4, 0x904A56B3);  // the position reaction controller
constexpr Class_ID kRotationReactionClassId(0x2A8734EB, 0x57F47DA6);  // the rotation reaction controller
constexpr Class_ID kScaleReactionClassId(0x13C4451C, 0x2CCB3388);  // the scale reaction controller
constexpr Class_ID kLinkControlClassId(0x873FE764, 0xAABE8601);  // the link controller
constexpr Class_ID kLinkTMControlClassId(0x615B56E4, 0x5F0E6032);  // the link transform controller (under a node)
constexpr Class_ID kLayerBaseClassId(0x18D026A1, 0x347D1CF3);  // the layer base (its transform controller is walked)
constexpr Class_ID kBipedClassId(0x00009156, 0);  // the biped
constexpr Class_ID kBipedControlClassId(0x00009154, 0);  // the biped controller
constexpr Class_ID kIKSolverClassId(0xBE380A31, 0x310DC9E4);  // the IK solver

// Geometric objects kept as point objects.
constexpr Class_ID kEditablePolyClassId(0x1BF8338D, 0x192F6098);  // editable poly (the host SDK's EPOLYOBJ_CLASS_ID)
constexpr Class_ID kEditableMeshClassId(0xE44F10B3, 0);  // editable mesh (EDITTRIOBJ_CLASS_ID)
constexpr Class_ID kEditablePatchClassId(0x00001030, 0);  // editable patch (PATCHOBJ_CLASS_ID)
constexpr Class_ID kNurbsSurfaceClassId(0x76A11646, 0x12A822FB);  // NURBS surface (EDITABLE_SURF_CLASS_ID); also a shape kept as a point object
constexpr Class_ID kPointGeometryClassId(0x87D987F4, 0xBE7C7E52);  // a further editable geometry kept as a point object

// Geometric objects recorded as used by local content.
constexpr Class_ID kBoneObjectClassId(0x28BF6E8D, 0x2ECCA840);  // procedural bone (BONE_OBJ_CLASSID)
constexpr Class_ID kLocDepGeometry1ClassId(0x2A730CDB, 0x746B394F);
constexpr Class_ID kLocDepGeometry2ClassId(0x2A723864, 0x7F603F64);
constexpr Class_ID kLocDepGeometry3ClassId(0x7DEE4CF0, 0x50E728B9);
constexpr Class_ID kLocDepGeometry4ClassId(0xA4E83C21, 0x5F7B092D);
constexpr Class_ID kLocDepGeometry5ClassId(0x3F2A6C11, 0x1B7E40D5);

// Geometric objects walked without a record of their own.
constexpr Class_ID kWalkedGeometry1ClassId(0x00009125, 0);
constexpr Class_ID kWalkedGeometry2ClassId(0x2E6A0C09, 0x43D5C9C0);
constexpr Class_ID kWalkedGeometry3ClassId(0x73DC4833, 0x65C93CAA);

// Geometric objects recorded with their independent references.
constexpr Class_ID kIndepRefsGeometry1ClassId(0x5C2417BD, 0x44050964);
constexpr Class_ID kIndepRefsGeometry2ClassId(0x42567B96, 0x4E9C1AED);
constexpr Class_ID kIndepRefsGeometry3ClassId(0x6A877C03, 0x67947186);
constexpr Class_ID kIndepRefsGeometry4ClassId(0x31CEA620, 0x2257F993);
constexpr Class_ID kIndepRefsGeometry5ClassId(0x1D121A84, 0x64994009);
constexpr Class_ID kLoftObjectClassId(0x000010B0, 0);  // loft compound (LOFT_GENERIC_CLASS_ID)
constexpr Class_ID kIndepRefsGeometry6ClassId(0x367E33EF, 0x07C0670C);
constexpr Class_ID kBooleanCompoundClassId(0x51DB4F2F, 0x1C596B1A);  // Boolean compound (NEWBOOL_CLASS_ID)
constexpr Class_ID kIndepRefsGeometry7ClassId(0x1AB13757, 0x12365B98);

// Particle Flow classes that are ignored.
constexpr Class_ID kIgnoredParticleFlowGeometryClassId(0x74F93B02, 0x1EB34300);  // a Particle Flow geometric object
constexpr Class_ID kIgnoredParticleFlowHelper1ClassId(0x74F93B07, 0x1EB34300);  // a Particle Flow helper
constexpr Class_ID kIgnoredParticleFlowHelper2ClassId(0x74F93B01, 0x1EB34300);  // a Particle Flow helper
constexpr Class_ID kParticleFlowEngineGeometryClassId(0x50320C9A, 0);  // the Particle Flow object recorded as a source (mode 1)

// Object modifiers kept as point modifiers.
constexpr Class_ID kEditPolyModifierClassId(0x79AA6E1D, 0x71A075B7);  // Edit Poly (EDIT_POLY_MODIFIER_CLASS_ID)
constexpr Class_ID kPointModifier1ClassId(0x4DBE3132, 0x614357B9);
constexpr Class_ID kEditSplineModifierClassId(0x00000060, 0);  // Edit Spline
constexpr Class_ID kPointModifier2ClassId(0x02DF2E3A, 0x72BA4E1F);
constexpr Class_ID kPointModifier3ClassId(0x7CE5206B, 0x31181505);
constexpr Class_ID kPointModifier4ClassId(0x19592732, 0x03407A7A);
constexpr Class_ID kMeshSelectModifierClassId(0x73D8FF93, 0);  // Mesh Select (MESHSELECT_CLASS_ID)
constexpr Class_ID kPointModifier5ClassId(0x00053446, 0x00007145);
constexpr Class_ID kFfdCylinderModifierClassId(0x98F37A63, 0x3FFE9BCA);  // FFD (cyl) (FFDNMOSCYL_CLASS_ID)
constexpr Class_ID kFfdBoxModifierClassId(0x8AB36CC5, 0x82D7FE74);  // FFD (box) (FFDNMOSSQUARE_CLASS_ID)
constexpr Class_ID kFfd4x4x4ModifierClassId(0x21325596, 0x2CD10BD8);  // FFD 4x4x4 (FFD44_CLASS_ID)
constexpr Class_ID kFfd3x3x3ModifierClassId(0x21325596, 0x2CD10BD9);  // FFD 3x3x3 (FFD33_CLASS_ID)
constexpr Class_ID kFfd2x2x2ModifierClassId(0x21325596, 0x2CD10BD0);  // FFD 2x2x2 (FFD22_CLASS_ID)
constexpr Class_ID kEditPatchModifierClassId(0x00000070, 0);  // Edit Patch
constexpr Class_ID kPointModifier6ClassId(0x4AA52AE3, 0x35CA1CDE);
constexpr Class_ID kEditMeshModifierClassId(0x00000050, 0);  // Edit Mesh

// Other modifiers and world-space objects.
constexpr Class_ID kLocDepObjectModifierClassId(0x270F1FE3, 0x03B14999);  // an object modifier recorded as used by local content
constexpr Class_ID kLocDepWorldModifierClassId(0x370F1FE3, 0x03B14999);  // a world-space modifier recorded as used by local content
constexpr Class_ID kStdGeneratorClassId(0x00000100, 0);  // class number 0x100: the standard UV and XYZ generators and texture output (STDUV_CLASS_ID); as a modifier it is recorded with references
constexpr Class_ID kFfdBoxSpaceWarpClassId(0x67EA40B3, 0xFE7A30C4);  // world-space FFD (box) (FFDNMWSSQUARE_CLASS_ID)
constexpr Class_ID kFfdCylinderSpaceWarpClassId(0xFA4700BE, 0xBBE85051);  // world-space FFD (cyl) (FFDNMWSCYL_CLASS_ID)

// Lights, reference makers and targets, helpers, shapes, materials and maps.
constexpr Class_ID kUndoGroupLight1ClassId(0x2EAF2F07, 0x7EC44F31);  // a light whose block overrides are one undo step
constexpr Class_ID kUndoGroupLight2ClassId(0x3C5575A1, 0x5FD602DF);  // a light whose block overrides are one undo step
constexpr Class_ID kPlainRecordLightClassId(0x27D93542, 0x76F965B2);  // a light kept by a plain record
constexpr Class_ID kOptionRefMaker1ClassId(0x4096218C, 0x1BB8133C);  // a reference maker kept by a plain record with the option set
constexpr Class_ID kOptionRefMaker2ClassId(0x4DDC1551, 0x118452EB);  // a reference maker kept by a plain record with the option set
constexpr Class_ID kWithRefsRefMakerClassId(0x5F2D3A0A, 0x4BE75269);  // a reference maker recorded with references
constexpr Class_ID kIgnoredRefMakerClassId(0x14585773, 0x483A7DCF);  // a reference maker that is ignored
constexpr Class_ID kPlainRecordRefTargetClassId(0x46D56AA8, 0x1A0703D4);  // a reference target kept by a plain record
constexpr Class_ID kWalkedBlockOwner1ClassId(0x6E4253A3, 0x7FFA3373);  // a reference target whose blocks are only walked
constexpr Class_ID kWalkedBlockOwner2ClassId(0x1D473A0E, 0x3B151C9D);  // a reference target whose blocks are only walked
constexpr Class_ID kWalkedBlockOwner3ClassId(0x0BC975DD, 0x6E1A1AE5);  // a reference target whose blocks are only walked
constexpr Class_ID kIgnoredAnyClassId(0x00001200, 0);  // class number 0x1200 of any superclass without rules: ignored
constexpr Class_ID kSpline3DShapeClassId(0x00001040, 0);  // 3D spline shape (SPLINE3D_CLASS_ID)
constexpr Class_ID kPointHelperClassId(0x00002013, 0);  // point helper (POINTHELP_CLASS_ID)
constexpr Class_ID kWithRefsMaterialClassId(0x4B9937E0, 0x3A1C3DA4);  // a material recorded with references
constexpr Class_ID kPlainRecordTexmapClassId(0x4C693CD7, 0x05FC76AC);  // a texture map kept by a plain record
constexpr Class_ID kWithRefsTexmapClassId(0x6EC3730C, 0);  // a texture map recorded with references
constexpr Class_ID kLocDepBlockOwnerClassId(0x848361CB, 0x913CC083);  // the owner of blocks whose fixed controllers are used by local content
constexpr Class_ID kStandInClassId(0xFFFFFFFF, 0);  // the stand-in of every superclass (STANDIN_CLASS_ID)

// Float controllers.
constexpr Class_ID kWithRefsFloatControlClassId(0xFF5826DB, 0);  // recorded with references
constexpr Class_ID kFloatNoiseControlClassId(0x87A6DF24, 0);  // FLOATNOISE_CONTROL_CLASS_ID
constexpr Class_ID kFloatLimitControlClassId(0x17127E3E, 0);  // FLOATLIMITCTRL_CLASS_ID
constexpr Class_ID kWalkedFloatControl1ClassId(0x742D30AC, 0x37984F09);
constexpr Class_ID kWalkedFloatControl2ClassId(0x43BF76AC, 0x60AB5707);
constexpr Class_ID kWalkedFloatControl3ClassId(0x4CEB45BD, 0x0B9C062E);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl4ClassId(0x507514E5, 0x30B07FAD);
constexpr Class_ID kWalkedFloatControl5ClassId(0x0EC62904, 0x185A28DC);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl6ClassId(0x453F7278, 0x4B8E1DFD);
constexpr Class_ID kWalkedFloatControl7ClassId(0x74B50FD8, 0x07AD665E);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl8ClassId(0x04A420B7, 0x7A142AEE);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl9ClassId(0x0B5E496B, 0x15363635);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl10ClassId(0x46606ABF, 0x002D3676);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl11ClassId(0x40534BDC, 0x3AE34B58);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl12ClassId(0x265E07A8, 0x0D281541);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl13ClassId(0x2A234435, 0x750465F5);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl14ClassId(0x63785366, 0x6D970288);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl15ClassId(0x18E02664, 0x21D309C3);  // its blocks are walked too
constexpr Class_ID kWalkedFloatControl16ClassId(0x094E2D9C, 0x02C702B5);
constexpr Class_ID kIgnoredFloatControl1ClassId(0x7FA7544B, 0x711A51EA);  // ignored; its blocks are walked
constexpr Class_ID kIgnoredFloatControl2ClassId(0x7C125BF5, 0x3A880ECE);  // ignored; its blocks are walked
constexpr Class_ID kLocDepFloatControlClassId(0x72930021, 0x06951211);  // a fixed float controller used by local content under its block owner

// Point3 controllers.
constexpr Class_ID kSubAnimCheckedPoint3ControlClassId(0x118F7E02, 0xFEEE238B);  // walked when its sub-anim 2 is one of the listed float controllers
constexpr Class_ID kPoint3NoiseControlClassId(0x87A6DF26, 0);  // POINT3NOISE_CONTROL_CLASS_ID
constexpr Class_ID kWalkedPoint3ControlClassId(0x275C1AC1, 0x08B45EE2);  // its blocks are walked too
constexpr Class_ID kWithRefsPoint3ControlClassId(0xFF4826DC, 0);  // recorded with references
constexpr Class_ID kLocDepPoint3ControlClassId(0x69F672C0, 0x27927AFA);  // a fixed point3 controller used by local content under its block owner

// Matrix controllers.
constexpr Class_ID kIgnoredMatrixControl1ClassId(0x1EDD686D, 0x45A56EB3);  // ignored; its blocks are walked
constexpr Class_ID kIgnoredMatrixControl2ClassId(0x2DE70807, 0x3973713A);  // ignored; its blocks are walked
constexpr Class_ID kWalkedBlockMatrixControl1ClassId(0x542E413E, 0x08241AA2);  // its blocks are walked
constexpr Class_ID kWalkedBlockMatrixControl2ClassId(0x485A734C, 0x795557CC);  // its blocks are walked
constexpr Class_ID kWalkedBlockMatrixControl3ClassId(0x1ADF2684, 0x2E3B60D2);  // its blocks are walked
constexpr Class_ID kLocDepMatrixControlClassId(0x6E341CBA, 0x6F9C52CA);  // used by local content

// Position controllers.
constexpr Class_ID kLocDepPositionControlClassId(0x118F7E02, 0xFFEE238A);  // used by local content
constexpr Class_ID kPositionConstraintClassId(0x00002019, 0);  // POSITION_CONSTRAINT_CLASS_ID
constexpr Class_ID kPathConstraintClassId(0x00002011, 0);  // PATH_CONTROL_CLASS_ID
constexpr Class_ID kPositionNoiseControlClassId(0x87A6DF25, 0);  // POSITIONNOISE_CONTROL_CLASS_ID
constexpr Class_ID kSurfaceControlClassId(0xE8334011, 0xAEB330C8);  // SURF_CONTROL_CLASSID
constexpr Class_ID kWithRefsPositionControlClassId(0xFF8826DE, 0);  // recorded with references
constexpr Class_ID kWithRefsPositionControl2ClassId(0x79697D2A, 0xF2B8A1C8);  // recorded with references

// Rotation controllers.
constexpr Class_ID kOrientationConstraintClassId(0x00002020, 0);  // ORIENTATION_CONSTRAINT_CLASS_ID
constexpr Class_ID kLookAtConstraintClassId(0x00002021, 0);  // LOOKAT_CONSTRAINT_CLASS_ID
constexpr Class_ID kRotationNoiseControlClassId(0x87A6DF27, 0);  // ROTATIONNOISE_CONTROL_CLASS_ID
constexpr Class_ID kIgnoredRotationControl1ClassId(0x67A81CF9, 0x79C62151);  // ignored; its blocks are walked
constexpr Class_ID kIgnoredRotationControl2ClassId(0x1D1A667C, 0x206521F1);  // ignored; its blocks are walked
constexpr Class_ID kWithRefsRotationControlClassId(0xFF7826DF, 0);  // recorded with references
constexpr Class_ID kLocDepRotationControlClassId(0x19357028, 0x428C5294);  // a fixed rotation controller used by local content under its block owner

// Scale controllers.
constexpr Class_ID kLocDepScaleControlClassId(0x118F7C01, 0xFEEE238B);  // used by local content
constexpr Class_ID kScaleNoiseControlClassId(0x87A6DF28, 0);  // SCALENOISE_CONTROL_CLASS_ID
constexpr Class_ID kWithRefsScaleControlClassId(0xFF6826DA, 0);  // recorded with references

}  // namespace vandrels
