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

}  // namespace vandrels
