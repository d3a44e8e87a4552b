// The one mapping between the node record's stored layouts and the host's node properties: what is read from one
// node and written to another makes the second one show every property of the first, and reads back the same
// bytes; and the Euler form of a stored rotation.
#include "records/node_state.h"

#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "object.h"
#include "plugapi.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace {

class NodeState : public vtest::SceneTest {
protected:
    NodeState() : SceneTest("vandrels_node_state") {}
    INode* Box() {
        auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
        return GetCOREInterface()->CreateObjectNode(box);
    }
};

template <class T> T* Extension(INode* node, Interface_ID id) { return static_cast<T*>(node->GetInterface(id)); }

template <class T> bool SameBytes(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

TEST_F(NodeState, WhatIsReadFromOneNodeAndWrittenToAnotherReadsBackTheSame) {
    INode* from = Box();
    INode* to = Box();
    // Every second switch on, so that a switch mapped to the wrong property shows.
    for (int i = 0; i < NODE_DISP_NUM_FLAGS; i += 2) from->SetDisplayFlag(i, TRUE);
    Extension<INodeExtension1>(from, NODE_EXTENSION1_INTERFACE)->SetDisplaySwitch(TRUE);
    Extension<INodeExtension2>(from, NODE_EXTENSION2_INTERFACE)->SetDisplaySwitch(TRUE);
    from->SetDisplayValue(0, 5);
    from->SetDisplayValue(1, 9);
    for (int i = 1; i < NODE_REND_NUM_FLAGS; i += 2) from->SetRenderFlag(i, !from->GetRenderFlag(i));
    for (int i = 0; i < 3; ++i) from->SetRenderValue(i, DWORD(100 + i));
    auto* props = Extension<INodeRenderProperties>(from, NODE_RENDERPROPS_INTERFACE);
    for (int i = 0; i < NODE_RENDERPROPS_NUM_SWITCHES; i += 3) props->SetRenderSwitch(i, TRUE);
    for (int i = 0; i < 7; ++i) props->SetRenderPropValue(i, DWORD(200 + i));
    Extension<INodeExtension2>(from, NODE_EXTENSION2_INTERFACE)->SetRenderSwitch(1, TRUE);
    from->SetBoneNodeOnOff(TRUE, 0);
    from->SetBoneFlag(NODE_BONE_AXIS_FLIP, TRUE);
    from->SetBoneValue(1, 2);
    from->SetTransformLock(INODE_LOCKPOS, INODE_LOCK_Y, TRUE);
    from->SetTransformLock(INODE_LOCKSCL, INODE_LOCK_X, TRUE);
    from->SetGroupHead(TRUE);
    from->SetGroupHeadOpen(TRUE);
    from->SetObjOffsetRot(Quat(0, 0, 0.6f, 0.8f));
    auto* skin = Extension<INodeSkinPose>(from, INODE_SKINPOSE_INTERFACE);
    skin->SetSkinRot(Quat(0.6f, 0, 0, 0.8f));
    skin->SetSkinScale(Point3(2, 2, 2));

    const NodeDisplayProps display = nodestate::ReadDisplay(from);
    const NodeRenderProps render = nodestate::ReadRender(from);
    const NodeBoneProps bone = nodestate::ReadBone(from);
    const NodeSkinPose pose = nodestate::ReadSkinPose(from);
    EXPECT_EQ(display.bits, 0x4 | 0x10 | 0x40 | 0x100 | 0x400 | 0x800 | 0x2000);
    EXPECT_EQ(bone.flags, 0x1 | 0x10);
    EXPECT_EQ(nodestate::ReadTmLocks(from), 0x2 | 0x40);
    EXPECT_EQ(nodestate::ReadGroupFlags(from), 0x2 | 0x8);
    EXPECT_EQ(render.flags >> 29, 0x2u);

    nodestate::WriteDisplay(to, display);
    nodestate::WriteRender(to, render);
    nodestate::WriteBone(to, bone);
    nodestate::WriteTmLocks(to, nodestate::ReadTmLocks(from));
    nodestate::WriteGroupFlags(to, nodestate::ReadGroupFlags(from));
    nodestate::WriteObjectOffset(to, nodestate::ReadObjectOffset(from));
    nodestate::WriteSkinPose(to, pose);

    EXPECT_TRUE(SameBytes(nodestate::ReadDisplay(to), display));
    EXPECT_TRUE(SameBytes(nodestate::ReadRender(to), render));
    EXPECT_TRUE(SameBytes(nodestate::ReadBone(to), bone));
    EXPECT_TRUE(SameBytes(nodestate::ReadSkinPose(to), pose));
    EXPECT_FALSE(nodestate::OffsetsDiffer(nodestate::ReadObjectOffset(to), nodestate::ReadObjectOffset(from)));
    EXPECT_EQ(nodestate::ReadTmLocks(to), nodestate::ReadTmLocks(from));
    EXPECT_EQ(nodestate::ReadGroupFlags(to), nodestate::ReadGroupFlags(from));
    for (int i = 0; i < NODE_DISP_NUM_FLAGS; ++i) EXPECT_EQ(to->GetDisplayFlag(i), from->GetDisplayFlag(i)) << i;
    for (int i = 0; i < NODE_REND_NUM_FLAGS; ++i) EXPECT_EQ(to->GetRenderFlag(i), from->GetRenderFlag(i)) << i;

    // Writing what was read leaves a node as it is.
    const NodeRenderProps again = nodestate::ReadRender(to);
    nodestate::WriteRender(to, again);
    nodestate::WriteDisplay(to, nodestate::ReadDisplay(to));
    EXPECT_TRUE(SameBytes(nodestate::ReadRender(to), render));
    EXPECT_TRUE(SameBytes(nodestate::ReadDisplay(to), display));
}

TEST_F(NodeState, AStoredEulerRotationIsWrittenAsItsQuaternionAndComparedAsAngles) {
    const Point3 angles(0.3f, -0.7f, 1.2f);
    NodeSkinPose stored;
    stored.rot.form = kSkinRotationEulerXYZ;
    stored.rot.value[0] = angles.x;
    stored.rot.value[1] = angles.y;
    stored.rot.value[2] = angles.z;
    INode* node = Box();
    nodestate::WriteSkinPose(node, stored);
    const NodeSkinPose live = nodestate::ReadSkinPose(node);
    EXPECT_EQ(live.rot.form, kSkinRotationQuat);
    const Point3 back = nodestate::QuatToEulerXYZ(Quat(live.rot.value[0], live.rot.value[1], live.rot.value[2],
                                                       live.rot.value[3]));
    EXPECT_NEAR(back.x, angles.x, 1e-5);
    EXPECT_NEAR(back.y, angles.y, 1e-5);
    EXPECT_NEAR(back.z, angles.z, 1e-5);
    // Compared as angles: the angles the node shows are the same pose; a turn about Z is another one.
    stored.rot.value[0] = back.x;
    stored.rot.value[1] = back.y;
    stored.rot.value[2] = back.z;
    EXPECT_FALSE(nodestate::SkinPosesDiffer(stored, live));
    stored.rot.value[2] += 0.01f;
    EXPECT_TRUE(nodestate::SkinPosesDiffer(stored, live));
}

}  // namespace
