// The reference messages that reach node records: the library's own node messages (sent to a node's dependents
// by the helper's scene events and by the records themselves) and the host's node messages the records react to.
#pragma once

#include "maxtypes.h"

namespace nodemsg {

// The library's messages.
constexpr RefMessage kParentChanged = 0x8663DF12;    // a node got another parent
constexpr RefMessage kChildAttached = 0x8663DF13;    // a child was attached; the child travels in the part slot
constexpr RefMessage kGroupChanged = 0x8663DF14;
constexpr RefMessage kLayerChanged = 0x8663DF15;
constexpr RefMessage kDisplayChanged = 0x8663DF16;
constexpr RefMessage kRenderChanged = 0x8663DF17;
constexpr RefMessage kUserPropsChanged = 0x8663DF18;
constexpr RefMessage kBoneChanged = 0x8663DF19;
constexpr RefMessage kParentReapply = 0x8663DF21;    // a parent record re-attached its children
constexpr RefMessage kNodeTransferred = 0x8663DF22;  // a freshly bound node took over the scene's references
constexpr RefMessage kNodeAdopted = 0x8663DF23;      // a node was adopted (detached from its local parent)
constexpr RefMessage kNodeChanged = 0x8663DF24;      // a general node property changed
constexpr RefMessage kTargetQuery = 0x8663DFA8;      // answer: the record writes its target into the part slot
constexpr RefMessage kDependentChanged = 0x8663DFA9;  // a record tells its own dependents its node changed

// The host's node messages.
constexpr RefMessage kObjectChanged = 80;            // REFMSG_CHANGE
constexpr RefMessage kModifierStackChanged = 249;    // REFMSG_MODIFIER_STACK_CHANGED
constexpr RefMessage kControllerReplaced = 250;      // REFMSG_CONTROLREF_CHANGE
constexpr RefMessage kSubAnimStructure = 258;        // REFMSG_SUBANIM_STRUCTURE_CHANGED
constexpr RefMessage kWireColor = 528;               // REFMSG_NODE_WIRECOLOR_CHANGED
constexpr RefMessage kMaterial = 565;                // REFMSG_NODE_MATERIAL_CHANGED
constexpr RefMessage kRenderSwitch = 568;            // REFMSG_NODE_RENDERING_PROP_CHANGED
constexpr RefMessage kRenderValue = 576;             // REFMSG_NODE_RENDERING_VALUE_CHANGED
constexpr RefMessage kDisplay = 577;                 // REFMSG_NODE_DISPLAY_PROP_CHANGED
constexpr RefMessage kNodeHandleChanged = 597;

// Part identifiers.
constexpr PartID kPartIgnored = 0x20000000;
constexpr PartID kPartStructureLater = 214;
constexpr PartID kPartObjectChain = 0x800037FF;
constexpr PartID kPartHidden = 0x1;
constexpr PartID kPartFrozen = 0x2;

}  // namespace nodemsg
