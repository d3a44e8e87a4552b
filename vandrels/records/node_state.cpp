#include "records/node_state.h"

#include "inode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace nodestate {

namespace {

constexpr float kRotationTolerance = 1e-6f;

bool QuatsDiffer(const Quat& a, const Quat& b) {
    return std::fabs(a.x - b.x) > kRotationTolerance || std::fabs(a.y - b.y) > kRotationTolerance ||
           std::fabs(a.z - b.z) > kRotationTolerance || std::fabs(a.w - b.w) > kRotationTolerance;
}

bool AnglesDiffer(const Point3& a, const Point3& b) {
    return std::fabs(a.x - b.x) > kRotationTolerance || std::fabs(a.y - b.y) > kRotationTolerance ||
           std::fabs(a.z - b.z) > kRotationTolerance;
}

// The display switches behind bits 0x4 to 0x2000, in bit order: the node's own flags by index, and the two
// extension switches.
enum class DisplaySource { Own, Extension1, Extension2 };
struct DisplaySwitch {
    std::uint16_t bit;
    DisplaySource source;
    int flag;
};
constexpr DisplaySwitch kDisplaySwitches[] = {
    {0x4, DisplaySource::Own, NODE_DISP_BOX_MODE},
    {0x8, DisplaySource::Own, NODE_DISP_ALL_EDGES},
    {0x10, DisplaySource::Own, NODE_DISP_VERT_TICKS},
    {0x20, DisplaySource::Own, NODE_DISP_BACKFACE_CULL},
    {0x40, DisplaySource::Own, NODE_DISP_TRAJECTORY},
    {0x80, DisplaySource::Own, NODE_DISP_SEE_THROUGH},
    {0x100, DisplaySource::Own, NODE_DISP_IGNORE_EXTENTS},
    {0x200, DisplaySource::Own, NODE_DISP_FROZEN_IN_GRAY},
    {0x400, DisplaySource::Extension1, 0},
    {0x800, DisplaySource::Own, NODE_DISP_VERTEX_COLORS},
    {0x1000, DisplaySource::Own, NODE_DISP_SHADED_VERT_COLORS},
    {0x2000, DisplaySource::Extension2, 0},
};

// Render flag word: the node's switches from bit 0, the interface's from bit 9, the extension's from bit 29.
constexpr int kRenderPropsShift = 9;
constexpr int kExtensionRenderShift = 29;
// Values written back: the first three of the node's, the first seven of the interface's.
constexpr int kAppliedRenderValues = 3;
constexpr int kAppliedRenderPropValues = 7;

// Bone flag bits: bone on, then the three bone switches.
constexpr std::uint8_t kBoneOnBit = 0x1;
constexpr std::uint8_t kBoneSwitchBits[NODE_BONE_NUM_FLAGS] = {0x2, 0x4, 0x10};

constexpr std::uint8_t kGroupBits[] = {kGroupMemberBit, kGroupHeadBit, kOpenGroupMemberBit, kOpenGroupHeadBit};

template <class T> T* Extension(INode* node, Interface_ID id) { return static_cast<T*>(node->GetInterface(id)); }

DWORD ReadWord(const std::uint8_t* bytes, int i) {
    DWORD v;
    std::memcpy(&v, bytes + 4 * i, 4);
    return v;
}

void WriteWord(std::uint8_t* bytes, int i, DWORD v) { std::memcpy(bytes + 4 * i, &v, 4); }

Point3 StoredEuler(const NodeSkinRotation& rot) { return {rot.value[0], rot.value[1], rot.value[2]}; }

Quat StoredQuat(const NodeSkinRotation& rot) {
    if (rot.form == kSkinRotationEulerXYZ) return EulerXYZToQuat(StoredEuler(rot));
    return {rot.value[0], rot.value[1], rot.value[2], rot.value[3]};
}

}  // namespace

// ------------------------------------------------------------------------------------------ transforms

NodeObjectOffset ReadObjectOffset(INode* node) {
    return {node->GetObjOffsetPos(), node->GetObjOffsetRot(), node->GetObjOffsetScale()};
}

void WriteObjectOffset(INode* node, const NodeObjectOffset& offset) {
    node->SetObjOffsetPos(offset.pos);
    node->SetObjOffsetRot(offset.rot);
    node->SetObjOffsetScale(offset.scale);
}

NodeSkinPose ReadSkinPose(INode* node) {
    NodeSkinPose pose;
    auto* skin = Extension<INodeSkinPose>(node, INODE_SKINPOSE_INTERFACE);
    if (!skin) return pose;
    pose.pos = skin->GetSkinPos();
    const Quat q = skin->GetSkinRot();
    pose.rot.value[0] = q.x;
    pose.rot.value[1] = q.y;
    pose.rot.value[2] = q.z;
    pose.rot.value[3] = q.w;
    pose.rot.form = kSkinRotationQuat;
    pose.scale = ScaleValue(skin->GetSkinScale(), skin->GetSkinScaleOrient());
    return pose;
}

void WriteSkinPose(INode* node, const NodeSkinPose& pose) {
    auto* skin = Extension<INodeSkinPose>(node, INODE_SKINPOSE_INTERFACE);
    if (!skin) return;
    skin->SetSkinPos(pose.pos);
    skin->SetSkinRot(StoredQuat(pose.rot));
    skin->SetSkinScale(pose.scale.s);
    skin->SetSkinScaleOrient(pose.scale.q);
}

std::uint16_t ReadTmLocks(INode* node) {
    std::uint16_t locks = 0;
    for (int type = INODE_LOCKPOS; type <= INODE_LOCKSCL; ++type)
        for (int axis = INODE_LOCK_X; axis <= INODE_LOCK_Z; ++axis)
            if (node->GetTransformLock(type, axis)) locks = std::uint16_t(locks | (1u << (type * 3 + axis)));
    return locks;
}

void WriteTmLocks(INode* node, std::uint16_t locks) {
    for (int type = INODE_LOCKPOS; type <= INODE_LOCKSCL; ++type)
        for (int axis = INODE_LOCK_X; axis <= INODE_LOCK_Z; ++axis)
            node->SetTransformLock(type, axis, (locks & (1u << (type * 3 + axis))) ? TRUE : FALSE);
}

// ------------------------------------------------------------------------------------------ display

NodeDisplayProps ReadDisplay(INode* node) {
    NodeDisplayProps display;
    auto* ext1 = Extension<INodeExtension1>(node, NODE_EXTENSION1_INTERFACE);
    auto* ext2 = Extension<INodeExtension2>(node, NODE_EXTENSION2_INTERFACE);
    for (const DisplaySwitch& s : kDisplaySwitches) {
        BOOL on = FALSE;
        if (s.source == DisplaySource::Own) on = node->GetDisplayFlag(s.flag);
        else if (s.source == DisplaySource::Extension1) on = ext1 && ext1->GetDisplaySwitch();
        else on = ext2 && ext2->GetDisplaySwitch();
        if (on) display.bits = std::uint16_t(display.bits | s.bit);
    }
    for (int i = 0; i < NODE_DISP_NUM_VALUES; ++i) display.values[i] = node->GetDisplayValue(i);
    return display;
}

void WriteDisplay(INode* node, const NodeDisplayProps& display) {
    auto* ext1 = Extension<INodeExtension1>(node, NODE_EXTENSION1_INTERFACE);
    auto* ext2 = Extension<INodeExtension2>(node, NODE_EXTENSION2_INTERFACE);
    const BOOL ext2Was = ext2 ? ext2->GetDisplaySwitch() : FALSE;
    if (ext2Was) ext2->SetDisplaySwitch(FALSE);
    for (const DisplaySwitch& s : kDisplaySwitches) {
        const BOOL on = (display.bits & s.bit) ? TRUE : FALSE;
        if (s.source == DisplaySource::Own) node->SetDisplayFlag(s.flag, on);
        else if (s.source == DisplaySource::Extension1 && ext1) ext1->SetDisplaySwitch(on);
    }
    if (ext2) {
        ext2->SetDisplaySwitch(ext2Was);
        ext2->SetDisplaySwitch((display.bits & 0x2000) ? TRUE : FALSE);
    }
    for (int i = 0; i < NODE_DISP_NUM_VALUES; ++i) node->SetDisplayValue(i, display.values[i]);
}

bool DisplayDiffers(const NodeDisplayProps& a, const NodeDisplayProps& b) {
    return (a.bits & kDisplaySwitchBits) != (b.bits & kDisplaySwitchBits) || a.values[0] != b.values[0] ||
           a.values[1] != b.values[1];
}

// ------------------------------------------------------------------------------------------ render

NodeRenderProps ReadRender(INode* node) {
    NodeRenderProps render;
    for (int i = 0; i < NODE_REND_NUM_FLAGS; ++i)
        if (node->GetRenderFlag(i)) render.flags |= 1u << i;
    for (int i = 0; i < NODE_REND_NUM_VALUES; ++i) WriteWord(render.values, i, node->GetRenderValue(i));
    if (auto* props = Extension<INodeRenderProperties>(node, NODE_RENDERPROPS_INTERFACE)) {
        for (int i = 0; i < NODE_RENDERPROPS_NUM_SWITCHES; ++i)
            if (props->GetRenderSwitch(i)) render.flags |= 1u << (kRenderPropsShift + i);
        for (int i = 0; i < NODE_RENDERPROPS_NUM_VALUES; ++i) WriteWord(render.extra, i, props->GetRenderPropValue(i));
    }
    if (auto* ext2 = Extension<INodeExtension2>(node, NODE_EXTENSION2_INTERFACE))
        for (int i = 0; i < NODE_EXTENSION2_NUM_RENDER_SWITCHES; ++i)
            if (ext2->GetRenderSwitch(i)) render.flags |= 1u << (kExtensionRenderShift + i);
    return render;
}

void WriteRender(INode* node, const NodeRenderProps& render) {
    for (int i = 0; i < NODE_REND_NUM_FLAGS; ++i) node->SetRenderFlag(i, (render.flags >> i) & 1u);
    for (int i = 0; i < kAppliedRenderValues; ++i) node->SetRenderValue(i, ReadWord(render.values, i));
    if (auto* props = Extension<INodeRenderProperties>(node, NODE_RENDERPROPS_INTERFACE)) {
        for (int i = 0; i < NODE_RENDERPROPS_NUM_SWITCHES; ++i)
            props->SetRenderSwitch(i, (render.flags >> (kRenderPropsShift + i)) & 1u);
        for (int i = 0; i < kAppliedRenderPropValues; ++i) props->SetRenderPropValue(i, ReadWord(render.extra, i));
    }
    if (auto* ext2 = Extension<INodeExtension2>(node, NODE_EXTENSION2_INTERFACE))
        for (int i = 0; i < NODE_EXTENSION2_NUM_RENDER_SWITCHES; ++i)
            ext2->SetRenderSwitch(i, (render.flags >> (kExtensionRenderShift + i)) & 1u);
}

bool RenderDiffers(const NodeRenderProps& a, const NodeRenderProps& b) {
    return a.flags != b.flags || std::memcmp(a.values, b.values, sizeof a.values) != 0 ||
           std::memcmp(a.extra, b.extra, sizeof a.extra) != 0;
}

// ------------------------------------------------------------------------------------------ bone

NodeBoneProps ReadBone(INode* node) {
    NodeBoneProps bone;
    if (node->GetBoneNodeOnOff()) bone.flags |= kBoneOnBit;
    for (int i = 0; i < NODE_BONE_NUM_FLAGS; ++i)
        if (node->GetBoneFlag(i)) bone.flags |= kBoneSwitchBits[i];
    for (int i = 0; i < NODE_BONE_NUM_VALUES; ++i) bone.settings[i] = node->GetBoneValue(i);
    return bone;
}

void WriteBone(INode* node, const NodeBoneProps& bone) {
    node->SetBoneNodeOnOff((bone.flags & kBoneOnBit) ? TRUE : FALSE, 0);
    for (int i = 0; i < NODE_BONE_NUM_FLAGS; ++i) node->SetBoneFlag(i, (bone.flags & kBoneSwitchBits[i]) ? TRUE : FALSE);
    for (int i = 0; i < NODE_BONE_NUM_VALUES; ++i) node->SetBoneValue(i, bone.settings[i]);
}

// ------------------------------------------------------------------------------------------ group state

bool QueryGroupState(INode* node, std::uint8_t bit) {
    switch (bit) {
        case kGroupMemberBit: return node->IsGroupMember() != FALSE;
        case kGroupHeadBit: return node->IsGroupHead() != FALSE;
        case kOpenGroupMemberBit: return node->IsOpenGroupMember() != FALSE;
        case kOpenGroupHeadBit: return node->IsOpenGroupHead() != FALSE;
        default: return false;
    }
}

std::uint8_t ReadGroupFlags(INode* node) {
    std::uint8_t flags = 0;
    for (std::uint8_t bit : kGroupBits)
        if (QueryGroupState(node, bit)) flags = std::uint8_t(flags | bit);
    return flags;
}

void WriteGroupFlags(INode* node, std::uint8_t flags) {
    node->SetGroupMember((flags & kGroupMemberBit) ? TRUE : FALSE);
    node->SetGroupHead((flags & kGroupHeadBit) ? TRUE : FALSE);
    node->SetGroupMemberOpen((flags & kOpenGroupMemberBit) ? TRUE : FALSE);
    node->SetGroupHeadOpen((flags & kOpenGroupHeadBit) ? TRUE : FALSE);
}

// ------------------------------------------------------------------------------------------ comparisons

bool OffsetsDiffer(const NodeObjectOffset& a, const NodeObjectOffset& b) {
    return !(a.pos == b.pos) || QuatsDiffer(a.rot, b.rot) || !(a.scale.s == b.scale.s) ||
           QuatsDiffer(a.scale.q, b.scale.q);
}

bool SkinPosesDiffer(const NodeSkinPose& stored, const NodeSkinPose& live) {
    if (!(stored.pos == live.pos) || !(stored.scale.s == live.scale.s) || QuatsDiffer(stored.scale.q, live.scale.q))
        return true;
    if (stored.rot.form == kSkinRotationEulerXYZ)
        return AnglesDiffer(StoredEuler(stored.rot), QuatToEulerXYZ(StoredQuat(live.rot)));
    return QuatsDiffer(StoredQuat(stored.rot), StoredQuat(live.rot));
}

// ------------------------------------------------------------------------------------------ Euler angles

Quat EulerXYZToQuat(const Point3& angles) { return MatrixToQuat(RotateXYZMatrix(angles)); }

Point3 QuatToEulerXYZ(const Quat& q) {
    // RotateXYZMatrix is Rx·Ry·Rz: row 0 is (cy·cz, cy·sz, -sy), column 2 is (-sy, sx·cy, cx·cy).
    Matrix3 m;
    QuatToMatrix(q, m);
    const float sy = std::clamp(-m.m[0][2], -1.f, 1.f);
    const float y = std::asin(sy);
    if (std::fabs(std::cos(y)) > 1e-6f) return {std::atan2(m.m[1][2], m.m[2][2]), y, std::atan2(m.m[0][1], m.m[0][0])};
    // Gimbal lock: z is taken as 0, row 1 is then (sx·sy, cx, 0).
    return {std::atan2(sy * m.m[1][0], m.m[1][1]), y, 0.f};
}

}  // namespace nodestate
