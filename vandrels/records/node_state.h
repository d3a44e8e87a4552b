// The node properties a node record keeps as local values, in the layouts the scene file holds, and the one
// fixed mapping between each layout and the host's node properties: what a Read gives, the matching Write puts
// back without changing the node. Detection compares these values, re-application writes them.
#pragma once

#include "geom.h"

#include <cstdint>

class INode;

// Object-offset transform.
struct NodeObjectOffset {
    Point3 pos;
    Quat rot;
    ScaleValue scale;
};

// A rotation as stored: a quaternion (form kSkinRotationQuat) or Euler angles in radians, X then Y then Z
// (form kSkinRotationEulerXYZ, values 0 to 2).
constexpr std::int32_t kSkinRotationEulerXYZ = 0;
constexpr std::int32_t kSkinRotationQuat = 18;
struct NodeSkinRotation {
    float value[4] = {0, 0, 0, 1};
    std::int32_t form = 0;
};
struct NodeSkinPose {
    Point3 pos;
    NodeSkinRotation rot;
    ScaleValue scale;  // scale and scale orientation
};

// Render properties: flags (bits 0x1-0x100 the node's nine render switches, 0x200-0x40000 the ten switches of
// the render-properties interface, 0x20000000-0x80000000 the three render switches of the second node
// extension), the node's five render values, then the nine values of the render-properties interface.
struct NodeRenderProps {
    std::uint32_t flags = 0;
    std::uint8_t values[20] = {};
    std::uint8_t extra[36] = {};
};
// Bone properties: flags (0x1 bone on, 0x2 auto-align, 0x4 freeze length, 0x10 axis flip) and the two bone
// values.
struct NodeBoneProps {
    std::uint8_t flags = 0;
    std::uint8_t settings[2] = {};
};
// Display properties: switch bits 0x4 to 0x2000 (bits 0x1 hidden and 0x2 frozen are kept beside them by the
// record) and the two display values.
struct NodeDisplayProps {
    std::uint16_t bits = 0;
    std::uint8_t values[2] = {};
};
constexpr std::uint16_t kDisplayHiddenBit = 0x1;
constexpr std::uint16_t kDisplayFrozenBit = 0x2;
constexpr std::uint16_t kDisplaySwitchBits = 0x3FFC;

// Group state: 0x1 group member, 0x2 group head, 0x4 open group member, 0x8 open group head.
constexpr std::uint8_t kGroupMemberBit = 0x1;
constexpr std::uint8_t kGroupHeadBit = 0x2;
constexpr std::uint8_t kOpenGroupMemberBit = 0x4;
constexpr std::uint8_t kOpenGroupHeadBit = 0x8;

namespace nodestate {

NodeObjectOffset ReadObjectOffset(INode* node);
void WriteObjectOffset(INode* node, const NodeObjectOffset& offset);

// Read gives the quaternion form; Write takes both forms. Without the skin-pose interface Read answers the
// default pose and Write does nothing.
NodeSkinPose ReadSkinPose(INode* node);
void WriteSkinPose(INode* node, const NodeSkinPose& pose);

NodeDisplayProps ReadDisplay(INode* node);
// Switches the second extension's display switch off while the others are written, then writes it.
void WriteDisplay(INode* node, const NodeDisplayProps& display);

NodeRenderProps ReadRender(INode* node);
// Writes every switch, the first three node render values and the first seven values of the interface.
void WriteRender(INode* node, const NodeRenderProps& render);

NodeBoneProps ReadBone(INode* node);
void WriteBone(INode* node, const NodeBoneProps& bone);

// Bit (1 << (3 × type + axis)), types move, rotate, scale and axes x, y, z.
std::uint16_t ReadTmLocks(INode* node);
void WriteTmLocks(INode* node, std::uint16_t locks);

std::uint8_t ReadGroupFlags(INode* node);
void WriteGroupFlags(INode* node, std::uint8_t flags);
// The group-state query behind one group bit.
bool QueryGroupState(INode* node, std::uint8_t bit);

// Comparisons of stored values: rotations and quaternions within 1e-6; a stored Euler rotation is compared as
// Euler angles.
bool OffsetsDiffer(const NodeObjectOffset& a, const NodeObjectOffset& b);
bool SkinPosesDiffer(const NodeSkinPose& stored, const NodeSkinPose& live);
bool RenderDiffers(const NodeRenderProps& a, const NodeRenderProps& b);
bool DisplayDiffers(const NodeDisplayProps& a, const NodeDisplayProps& b);

// Euler angles (X, Y, Z order, radians) of a rotation and back.
Point3 QuatToEulerXYZ(const Quat& q);
Quat EulerXYZToQuat(const Point3& angles);

}  // namespace nodestate
