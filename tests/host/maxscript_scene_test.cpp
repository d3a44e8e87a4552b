// What the scene scripts cannot see themselves: the host's animate mode following the script's animate
// context (also when the body fails), render notifications, and node values outliving their nodes.
#include "core/class_directory.h"
#include "maxapi.h"
#include "maxscript/interpreter.h"
#include "maxscript/registry.h"
#include "notify.h"
#include "scene/controllers/animate_mode.h"

#include <gtest/gtest.h>

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
