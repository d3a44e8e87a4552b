// The scene-info listing of a reference: what the helper's PrintData mode:3 shows a user in a loaded shot
// (records by name with their override categories and the edits whose node the last load did not find), and the same description as JSON with names escaped.
#include "vandrels_library.h"

#include "inode.h"
#include "maxapi.h"
#include "maxscript/string_literal.h"
#include "object.h"
#include "platform/listener_capture.h"
#include "sceneinfo.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

using vtest::Node;
using vtest::Script;
namespace fs = std::filesystem;

class SceneInfo : public vtest::SceneTest {
protected:
    SceneInfo() : SceneTest("vandrels_scene_info") {}
    void SetUp() override {
        SceneTest::SetUp();
        set_ = vtest::TempSceneFile("vandrels_info_set");
        Script(L"Vandrels.PrintTimes false");
    }
    void TearDown() override {
        fs::remove(set_.ToUTF8());
        SceneTest::TearDown();
    }
    // The set: Chair, a node named with a quote and a line break, and (unless left out) Lamp.
    void WriteSet(bool withLamp) {
        Script(L"resetMaxFile #noPrompt; box name:\"Chair\"; box name:" + MaxScriptStringLiteral(kOdd) +
               (withLamp ? L"; sphere name:\"Lamp\"" : L"") + L"; saveMaxFile " + MaxScriptStringLiteral(set_.data()));
        GetCOREInterface()->FileReset(TRUE);
    }
    static constexpr const wchar_t* kOdd = L"Odd \"one\"\nout";
    MSTR set_;
};

TEST_F(SceneInfo, TheListingShowsOverridesByNameAndTheEditsWhoseNodeIsGone) {
    WriteSet(true);
    Script(L"h = Vandrels.AddVandrel " + MaxScriptStringLiteral(set_.data()) +
           L"; $Chair.wirecolor = color 200 0 0; $Lamp.isHidden = true; "
           L"(getNodeByName " + MaxScriptStringLiteral(kOdd) + L").wirecolor = color 1 2 3");
    Script(L"saveMaxFile " + MaxScriptStringLiteral(file_.data()));
    // The set is rewritten without Lamp: in the shot opened again its hidden state is an edit that found no node.
    WriteSet(false);
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(file_.data()));
    ASSERT_EQ(Node(L"Lamp"), nullptr);

    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    Script(L"(Vandrels.GetVandrel 1).baseObject.PrintData mode:3");
    const std::wstring text = listener.Text();
    for (const std::wstring& expected : std::initializer_list<std::wstring>{
             L"kind: Vandrels reference\n", L"file: " + std::wstring(set_.data()) + L"\n", L"loaded: yes\n",
          std::wstring(L"  - name: Chair\n    nodeFound: yes\n    overrides:\n      - Override Wire Color\n"),
          std::wstring(L"  - name: Lamp\n    nodeFound: no\n    overrides:\n      - Override Hidden\n"),
          std::wstring(L"nodesNotFound:\n  - Lamp\n"), std::wstring(L"  - name: \"Odd \\\"one\\\"\\nout\"\n")})
        EXPECT_NE(text.find(expected), std::wstring::npos) << MSTR(expected.c_str()).ToUTF8() << " in\n"
                                                           << MSTR(text.c_str()).ToUTF8();

    // The same description as JSON: names escaped, lists where lists are.
    Object* helper = nullptr;
    for (int i = 0; i < GetCOREInterface()->GetRootNode()->NumberOfChildren(); ++i) {
        INode* child = GetCOREInterface()->GetRootNode()->GetChildNode(i);
        if (child->GetObjectRef() && child->GetObjectRef()->GetInterface(SCENE_INFO_INTERFACE))
            helper = child->GetObjectRef();
    }
    ASSERT_NE(helper, nullptr);
    auto* info = dynamic_cast<ISceneInfo*>(helper->GetInterface(SCENE_INFO_INTERFACE));
    ASSERT_NE(info, nullptr);
    const std::wstring json = SceneInfoJson([&](InfoWriter& out) { info->DescribeSceneInfo(out); }).data();
    EXPECT_NE(json.find(L"\"name\": \"Odd \\\"one\\\"\\nout\""), std::wstring::npos) << MSTR(json.c_str()).ToUTF8();
    EXPECT_NE(json.find(L"\"nodesNotFound\": [\n    \"Lamp\"\n  ]"), std::wstring::npos) << MSTR(json.c_str()).ToUTF8();
    EXPECT_EQ(json.find(L'\n', json.size() - 1), json.size() - 1);
    EXPECT_EQ(json.front(), L'{');
}

}  // namespace
