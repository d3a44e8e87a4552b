// What the scene scripts cannot see themselves: the host's animate mode following the script's animate
// context (also when the body fails), render notifications, node values outliving their nodes, and node
// properties set by scripts reaching the host through the node's setters.
#include "core/class_directory.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/interpreter.h"
#include "maxscript/registry.h"
#include "notify.h"
#include "scene/controllers/animate_mode.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

namespace mxs = hostrt::mxs;

namespace {

struct SceneScript : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        in.Execute(L"resetMaxFile #noPrompt");
    }
    std::wstring ErrorText(const std::wstring& text) {
        try {
            in.Execute(text);
        } catch (const mxs::ScriptError& e) {
            return e.Text();
        }
        return L"no error";
    }
    mxs::Interpreter in;
};

}  // namespace

TEST_F(SceneScript, HostAnimateModeFollowsTheAnimateContext) {
    std::vector<bool> seen;
    mxs::RegisterGlobalFunction(L"probeAnimate", [&seen](mxs::CallContext&, mxs::CallArgs&) {
        seen.push_back(hostrt::AnimateMode());
        return mxs::Value::Ok();
    });
    in.Execute(L"probeAnimate(); animate on (probeAnimate(); animate off probeAnimate(); probeAnimate()); probeAnimate()");
    EXPECT_EQ(seen, (std::vector<bool>{false, true, false, true, false}));
    EXPECT_EQ(ErrorText(L"animate on (throw \"stop\")"), L"Runtime error: stop");
    EXPECT_FALSE(hostrt::AnimateMode());  // restored after the error too
    mxs::UnregisterGlobalFunction(L"probeAnimate");
}

TEST_F(SceneScript, RenderBroadcastsStartAndEnd) {
    static std::vector<int> heard;
    heard.clear();
    NOTIFYPROC proc = [](void*, NotifyInfo* info) { heard.push_back(int(info->intcode)); };
    RegisterNotification(proc, nullptr, NOTIFY_PRE_RENDER);
    RegisterNotification(proc, nullptr, NOTIFY_POST_RENDER);
    EXPECT_TRUE(in.Execute(L"render()").Is(mxs::Kind::Ok));
    UnRegisterNotification(proc, nullptr);
    EXPECT_EQ(heard, (std::vector<int>{NOTIFY_PRE_RENDER, NOTIFY_POST_RENDER}));
    EXPECT_EQ(ErrorText(L"render 1"), L"Argument count error: render wanted 0, got 1");
}

TEST_F(SceneScript, NodeValuesOutliveTheirNodesAndTheSceneReset) {
    in.Execute(L"b = box name:\"kept\"; m = bend(); addModifier b m; mods = b.modifiers");
    EXPECT_EQ(GetCOREInterface()->GetINodeByName(L"kept") != nullptr, true);
    in.Execute(L"resetMaxFile #noPrompt");
    EXPECT_TRUE(in.Execute(L"isDeleted b").AsBool());
    EXPECT_EQ(ErrorText(L"b.pos"), L"Runtime error: Attempt to access deleted scene object");
    EXPECT_EQ(ErrorText(L"mods.count"), L"Runtime error: Attempt to access deleted scene object");
}

// Each node property a script sets reaches the host through the node's own setter: the value lands where the
// host keeps it and the property's notification goes out, as for an edit made in C++.
TEST_F(SceneScript, NodePropertiesGoThroughTheNodesSetters) {
    static std::vector<std::pair<int, int>> heard;  // notification code, property id (213) or 0
    NOTIFYPROC proc = [](void*, NotifyInfo* info) {
        const int id = info->intcode == NOTIFY_NODE_PROPERTY_CHANGED
                           ? static_cast<NodePropertyChange*>(info->callParam)->propertyId
                           : 0;
        heard.emplace_back(int(info->intcode), id);
    };
    for (int code : {NOTIFY_POST_NODE_BONE_PROP_CHANGED, NOTIFY_POST_NODE_RENDER_PROP_CHANGED,
                     NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, NOTIFY_NODE_PROPERTY_CHANGED})
        RegisterNotification(proc, nullptr, code);
    in.Execute(L"b = box name:\"b\"");
    INode* b = GetCOREInterface()->GetINodeByName(L"b");
    auto* gi = static_cast<INodeRenderProperties*>(b->GetInterface(NODE_RENDERPROPS_INTERFACE));
    auto* byLayer = static_cast<INodeExtension2*>(b->GetInterface(NODE_EXTENSION2_INTERFACE));
    auto* skin = static_cast<INodeSkinPose*>(b->GetInterface(INODE_SKINPOSE_INTERFACE));
    float multiplier = 0;
    struct Case {
        const wchar_t* script;
        std::vector<std::pair<int, int>> notifications;
        std::function<bool()> landed;
    };
    const std::vector<Case> cases = {
        {L"b.boneAxis = #z", {{NOTIFY_POST_NODE_BONE_PROP_CHANGED, 0}}, [&] { return b->GetBoneValue(NODE_BONE_VALUE_AXIS) == 2; }},
        {L"b.boneAxisFlip = true", {{NOTIFY_POST_NODE_BONE_PROP_CHANGED, 0}}, [&] { return b->GetBoneFlag(NODE_BONE_AXIS_FLIP) != 0; }},
        {L"b.boneEnable = true", {{NOTIFY_POST_NODE_BONE_PROP_CHANGED, 0}}, [&] { return b->GetBoneNodeOnOff() != 0; }},
        {L"b.gbufferChannel = 7", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}},
         [&] { return b->GetRenderValue(NODE_REND_VALUE_GBUFFER_CHANNEL) == 7; }},
        {L"b.imageMotionBlurMultiplier = 1.5", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}},
         [&] {
             const DWORD bits = b->GetRenderValue(NODE_REND_VALUE_IMAGE_BLUR_MULT);
             std::memcpy(&multiplier, &bits, sizeof multiplier);
             return multiplier == 1.5f;
         }},
        {L"b.renderOccluded = true", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}},
         [&] { return b->GetRenderFlag(NODE_REND_RENDER_OCCLUDED) != 0; }},
        {L"b.isGIReceiver = true", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}}, [&] { return gi->GetRenderSwitch(2) != 0; }},
        {L"b.GISubdivisionLevel = 4", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}}, [&] { return gi->GetRenderPropValue(8) == 4; }},
        {L"b.motionByLayer = true", {{NOTIFY_POST_NODE_RENDER_PROP_CHANGED, 0}}, [&] { return byLayer->GetRenderSwitch(1) != 0; }},
        {L"b.displayByLayer = true", {{NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, 0}}, [&] { return byLayer->GetDisplaySwitch() != 0; }},
        {L"b.neverDegrade = true", {{NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, 0}},
         [&] { return static_cast<INodeExtension1*>(b->GetInterface(NODE_EXTENSION1_INTERFACE))->GetDisplaySwitch() != 0; }},
        {L"b.vertexColorType = #map_channel", {{NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, 0}},
         [&] { return b->GetDisplayValue(NODE_DISP_VALUE_VERTEX_COLOR_TYPE) == 5; }},
        {L"b.vertexColorsShaded = true", {{NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, 0}},
         [&] { return b->GetDisplayFlag(NODE_DISP_SHADED_VERT_COLORS) != 0; }},
        {L"b.skinPos = [1,2,3]", {{NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_SKIN_POSE}},
         [&] { return skin->GetSkinPos() == Point3(1, 2, 3); }},
        // One change per lock that changes, as the host's node offers the locks one by one.
        {L"setTransformLockFlags b #{2, 9}",
         {{NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_TRANSFORM_LOCKS}, {NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_TRANSFORM_LOCKS}},
         [&] { return b->GetTransformLock(INODE_LOCKPOS, INODE_LOCK_Y) && b->GetTransformLock(INODE_LOCKSCL, INODE_LOCK_Z) &&
                      !b->GetTransformLock(INODE_LOCKPOS, INODE_LOCK_X); }},
        {L"setGroupMember b true", {{NOTIFY_NODE_PROPERTY_CHANGED, NODE_PROP_GROUP}}, [&] { return b->IsGroupMember() != 0; }},
    };
    for (const Case& c : cases) {
        heard.clear();
        in.Execute(c.script);
        EXPECT_EQ(heard, c.notifications) << std::wstring(c.script);
        EXPECT_TRUE(c.landed()) << std::wstring(c.script);
    }
    UnRegisterNotification(proc, nullptr);
}
