// The reference operations through the host: an unload keeps the records, their overrides and everything local,
// and the reload points the local content at the fresh nodes, also across a reload that finds no file; writing a
// reference to a file that cannot take it, overwriting the proxy; the reference batch with what it keeps, the
// render switch and the reload types of a persisted reference on opening. The stories in tests/scripts tell the
// rest (resetting, making local, writing a fix back).
#include "vandrels_library.h"

#include "frame/class_ids.h"
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"
#include "platform/dialog_service.h"
#include "platform/listener_capture.h"
#include "platform/prompt_line.h"
#include "platform/windows.h"
#include "records/ref_node.h"
#include "scene_compare.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;
namespace fs = std::filesystem;
using hostrt::test::CompareSnapshots;
using hostrt::test::JoinDifferences;
using hostrt::test::TakeSnapshot;

constexpr int kUnloadStarts = 0xDFA2;
constexpr int kUnloadEnds = 0xDFA3;
constexpr int kBatchOpened = 0xDFA6;

// Every notification of the codes given, in order, with its call parameter.
class Heard {
public:
    explicit Heard(std::initializer_list<int> codes) {
        for (int code : codes) RegisterNotification(&Heard::proc, this, code);
    }
    ~Heard() { UnRegisterNotification(&Heard::proc, this); }
    int Count(int code) const {
        int n = 0;
        for (const auto& [c, p] : events) n += c == code;
        return n;
    }
    std::vector<std::pair<int, void*>> events;

private:
    static void proc(void* param, NotifyInfo* info) {
        static_cast<Heard*>(param)->events.emplace_back(info->intcode, info->callParam);
    }
};

std::string Bytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// The node record hanging on the node's property list, or null.
RefNode* RecordOf(INode* node) {
    AnimProperty* prop = node ? node->GetAProp(REFBASE_PROPERTY_ID) : nullptr;
    auto* record = prop ? static_cast<RefBase*>(prop) : nullptr;
    return record && record->ClassID() == REFNODE_CLASS_ID ? static_cast<RefNode*>(record) : nullptr;
}

bool IsPlaceholder(INode* node) {
    return node && node->GetBaseObject() && node->GetBaseObject()->ClassID() == EMPTY_BASE_OBJECT_CLASS_ID;
}

class ReferenceOps : public vtest::SceneTest {
protected:
    ReferenceOps() : SceneTest("vandrels_reference_ops") {}
    void SetUp() override {
        SceneTest::SetUp();
        const std::string tag = std::to_string(::getpid());
        folder_ = fs::temp_directory_path() / ("vandrels_ops_" + tag);
        fs::create_directories(folder_);
        reference_ = Path("set.max");
        hostrt::DialogService::Instance().Reset();
        Script(L"Vandrels.PrintTimes false");
    }
    void TearDown() override {
        GetCOREInterface()->SetNetServer(FALSE);
        hostrt::DialogService::Instance().Reset();
        std::error_code ec;
        fs::permissions(folder_, fs::perms::owner_all, fs::perm_options::add, ec);
        for (const auto& entry : fs::directory_iterator(folder_, ec))
            fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add, ec);
        fs::remove_all(folder_, ec);
        SceneTest::TearDown();
    }
    MSTR Path(const char* name) const { return MSTR::FromUTF8((folder_ / name).string()); }
    // Writes a reference file made by the script; the scene is empty afterwards.
    void WriteFile(const MSTR& file, const std::wstring& script) {
        Script(L"resetMaxFile #noPrompt; " + script + L"; saveMaxFile " + Quoted(file));
        GetCOREInterface()->FileReset(TRUE);
    }
    // The set: Base (a bent box with a wooden material, on layer Props) with Top below it, and Ball.
    void WriteSet() {
        WriteFile(reference_,
                  L"b = box name:\"Base\" material:(standardMaterial name:\"Wood\"); addModifier b (bend()); "
                  L"(LayerManager.newLayerFromName \"Props\").addNode b; t = box name:\"Top\" pos:[0,0,30]; "
                  L"t.parent = b; sphere name:\"Ball\" pos:[0,80,0]");
    }
    // The shot: the set as reference h, with local content depending on it (a box under Base, a camera aiming
    // at Ball, a light excluding Ball) and an edit of Base.
    void BuildShot() {
        WriteSet();
        Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L"; k = box name:\"Kid\" pos:[5,5,60]; "
               L"k.parent = $Base; targetCamera name:\"Cam\" pos:[0,0,100] target:$Ball; "
               L"(omniLight name:\"Key\").excludeList = #($Ball); $Base.wirecolor = color 10 20 30");
    }
    fs::path folder_;
    MSTR reference_;
};

TEST_F(ReferenceOps, UnloadKeepsRecordsAndLocalContentAndReloadPointsThemAtTheFreshNodes) {
    BuildShot();
    Script(L"undo on (box name:\"Undoable\")");
    const auto before = TakeSnapshot();
    const int records = RunInt(L"h.baseObject.NumRefNodes()");
    INode* oldBall = Node(L"Ball");
    ASSERT_GT(theHold.NumUndoEntries(), 0);
    theHold.Suspend();
    Heard heard{kUnloadStarts, kUnloadEnds};

    EXPECT_EQ(RunInt(L"h.baseObject.Unload()"), 1);
    EXPECT_TRUE(theHold.IsSuspended());
    theHold.Resume();
    EXPECT_EQ(theHold.NumUndoEntries(), 0);
    void* helper = Node(L"set")->GetObjectRef();
    ASSERT_EQ(heard.events.size(), 2u);
    EXPECT_EQ(heard.events[0], std::make_pair(kUnloadStarts, helper));
    EXPECT_EQ(heard.events[1], std::make_pair(kUnloadEnds, helper));
    // The records stay; the content is gone but for Ball, which the camera and the light depend on: it stays in
    // light form in its place, and the local box hangs from the scene root.
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), records);
    EXPECT_EQ(Node(L"Base"), nullptr);
    EXPECT_EQ(Node(L"Top"), nullptr);
    EXPECT_EQ(Node(L"Ball"), oldBall);
    EXPECT_TRUE(IsPlaceholder(oldBall));
    EXPECT_EQ(oldBall->GetNodeTM(0).GetTrans(), Point3(0, 80, 0));
    EXPECT_EQ(oldBall->GetMtl(), nullptr);
    ASSERT_NE(Node(L"Kid"), nullptr);
    EXPECT_TRUE(Node(L"Kid")->GetParentNode()->IsRootNode());
    EXPECT_EQ(RunInt(L"if $Cam.target == $Ball and $Key.excludeList[1] == $Ball then 1 else 0"), 1);

    // The reload brings the content back with its overrides; every local link points at the fresh nodes.
    auto& prompt = hostrt::PromptLine::Instance();
    prompt.Reset();
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 1);
    EXPECT_EQ(prompt.LastTempText(), L"Reload Successful");
    EXPECT_EQ(prompt.LastTempDuration(), 2000);
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
    INode* ball = Node(L"Ball");
    ASSERT_NE(ball, nullptr);
    EXPECT_FALSE(IsPlaceholder(ball));
    EXPECT_EQ(RunInt(L"if $Kid.parent == $Base and $Cam.target == $Ball and $Key.excludeList[1] == $Ball and "
                     L"(for o in objects where classOf o.baseObject == EmptyBaseObject collect o).count == 0 "
                     L"then 1 else 0"),
              1);
}

TEST_F(ReferenceOps, UnloadPrintsItsTimesWhenAsked) {
    BuildShot();
    Script(L"Vandrels.PrintTimes true");
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    Script(L"h.baseObject.Unload()");
    const std::wstring text = listener.Text();
    const auto collect = text.find(L"\nVD Collect Time: ");
    const auto remove = text.find(L"\nVD Delete Time: ");
    const auto total = text.find(L"\nVD Total Unloading Time: ");
    EXPECT_TRUE(collect != std::wstring::npos && collect < remove && remove < total && total != std::wstring::npos)
        << WStr(text.c_str()).ToUTF8();
    Script(L"Vandrels.PrintTimes false");
}

TEST_F(ReferenceOps, AMissingFileOnReloadKeepsRecordsAndOverridesUntilItComesBack) {
    BuildShot();
    const auto before = TakeSnapshot();
    const fs::path file = reference_.ToUTF8();
    fs::rename(file, folder_ / "away.max");
    hostrt::PromptLine::Instance().Reset();
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 0);
    EXPECT_EQ(hostrt::PromptLine::Instance().TempCount(), 0);
    EXPECT_EQ(LastReport().rfind(L"Error Loading Reference\r\nMerged Nodes: 0\r\n", 0), 0u) << WStr(LastReport().c_str()).ToUTF8();
    // The camera still aims at Ball's stand-in; Base's colour waits in its record.
    EXPECT_TRUE(IsPlaceholder(Node(L"Ball")));
    EXPECT_GE(RunInt(L"h.baseObject.NumRefNodes()"), 2);
    fs::rename(folder_ / "away.max", file);
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 1);
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
}

TEST_F(ReferenceOps, SaveAsRefusesReadOnlyAndUnwritableTargetsAndChangesNothing) {
    BuildShot();
    Script(L"h.baseObject.UseNamePrefix = true");
    const auto before = TakeSnapshot();
    const MSTR locked = Path("locked.max");
    { std::ofstream(locked.ToUTF8()) << "the old content"; }
    fs::permissions(locked.ToUTF8(), fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    EXPECT_EQ(RunInt(L"h.baseObject.SaveAs " + Quoted(locked)), 0);
    EXPECT_EQ(LastReport(), L"Error Saving Reference\r\n\r\n" + std::wstring(locked.data()) +
                                L": cannot write: the file is read-only");
    EXPECT_EQ(Bytes(locked.ToUTF8()), "the old content");
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot())), "");

    const MSTR nowhere = Path("no such folder/out.max");
    EXPECT_EQ(RunInt(L"h.baseObject.SaveAs " + Quoted(nowhere)), 0);
    EXPECT_EQ(LastReport().rfind(L"Error Saving Reference\r\n\r\n" + std::wstring(nowhere.data()) + L": cannot write", 0),
              0u);
    EXPECT_FALSE(fs::exists(nowhere.ToUTF8()));
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot())), "");
}

TEST_F(ReferenceOps, OverwriteWritesTheFileTheViewportShows) {
    WriteSet();
    const MSTR proxy = Path("proxy.max");
    WriteFile(proxy, L"box name:\"Stand\"");
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L"; h.baseObject.ProxyFileName = " + Quoted(proxy) +
           L"; h.baseObject.UseProxyInViewport = true; $Stand.wirecolor = color 1 2 3");
    const std::string main = Bytes(reference_.ToUTF8());
    EXPECT_EQ(RunInt(L"h.baseObject.Overwrite()"), 1);
    EXPECT_EQ(Bytes(reference_.ToUTF8()), main);
    Script(L"resetMaxFile #noPrompt; loadMaxFile " + Quoted(proxy));
    EXPECT_EQ(RunInt(L"if objects.count == 1 and $Stand.wirecolor == color 1 2 3 then 1 else 0"), 1);
}

TEST_F(ReferenceOps, ReloadOpensOneBatchThatKeepsSetsEditorSlotsAndHostState) {
    const MSTR other = Path("other.max");
    WriteFile(other, L"box name:\"Chair\"");
    BuildShot();
    Interface* ip = GetCOREInterface();
    Script(L"Vandrels.AddVandrel " + Quoted(other) + L"; selectionSets[\"Hero\"] = #($Kid, $Ball, $Top); "
           L"selectionSets[\"Props\"] = #($Chair)");
    ip->PutMtlToMtlEditor(Node(L"Base")->GetMtl(), 3);
    MtlBase* oldWood = ip->GetMtlSlot(3);
    ip->SetCommandPanelTaskMode(TASK_MODE_MODIFY);
    auto& windows = hostrt::WindowRegistry::Instance();
    windows.Reset();
    windows.AddWindow(L"Particle View");
    windows.AddWindow(L"Particle View");
    ip->SetSaveRequiredFlag(FALSE);
    Heard heard{kBatchOpened};

    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 1);
    EXPECT_EQ(heard.Count(kBatchOpened), 1);
    // The set holds the fresh nodes in the places of the old ones.
    EXPECT_EQ(RunInt(L"s = selectionSets[\"Hero\"]; if s.count == 3 and s[1] == $Kid and s[2] == $Ball and "
                     L"s[3] == $Top then 1 else 0"),
              1);
    // The editor slot shows the fresh material; the holder node is gone.
    EXPECT_NE(ip->GetMtlSlot(3), oldWood);
    EXPECT_EQ(ip->GetMtlSlot(3), Node(L"Base")->GetMtl());
    EXPECT_EQ(Node(L"VDCMEHolder"), nullptr);
    EXPECT_TRUE(windows.OpenTitles().empty());
    EXPECT_EQ(ip->GetCommandPanelTaskMode(), TASK_MODE_MODIFY);
    EXPECT_TRUE(ip->GetSceneExplorerLiveUpdate());
    EXPECT_TRUE(ip->IsSaveRequired());
    // A reference the batch did not reload kept its node in the set, and its record has nothing to restore.
    INode* chair = Node(L"Chair");
    ASSERT_NE(RecordOf(chair), nullptr);
    EXPECT_EQ(RecordOf(chair)->GetOverrideFlags() & kNodeSelectionSets, 0u);
    EXPECT_EQ(RecordOf(Node(L"Ball"))->GetOverrideFlags() & kNodeSelectionSets, 0u);
    EXPECT_EQ(RunInt(L"if selectionSets[\"Props\"][1] == $Chair then 1 else 0"), 1);
    windows.Reset();
}

TEST_F(ReferenceOps, ARenderSwitchesProxyAndMainFileInOneBatchAndBack) {
    const MSTR high = Path("high.max");
    const MSTR low = Path("low.max");
    WriteFile(high, L"sphere name:\"HighRes\"");
    WriteFile(low, L"box name:\"LowRes\"");
    for (int i = 0; i < 2; ++i)
        Script(L"h = Vandrels.AddVandrel " + Quoted(high) + L"; h.baseObject.ProxyFileName = " + Quoted(low) +
               L"; h.baseObject.UseProxyInViewport = true");
    auto names = [] { return RunInt(L"(for o in objects where o.name == \"HighRes\" collect o).count * 10 + "
                                    L"(for o in objects where o.name == \"LowRes\" collect o).count"); };
    ASSERT_EQ(names(), 2);
    struct During {
        std::function<int()> count;
        int seen = -1;
        static void proc(void* param, NotifyInfo*) {
            auto* self = static_cast<During*>(param);
            self->seen = self->count();
        }
    } during{names};
    RegisterNotification(&During::proc, &during, NOTIFY_PRE_RENDER);
    Heard heard{kBatchOpened};
    GetCOREInterface()->RenderScene();
    UnRegisterNotification(&During::proc, &during);
    EXPECT_EQ(during.seen, 20);
    EXPECT_EQ(names(), 2);
    EXPECT_EQ(heard.Count(kBatchOpened), 2);  // one at the start, one at the end

    // A network render server renders what the file holds, without switching.
    GetCOREInterface()->SetNetServer(TRUE);
    GetCOREInterface()->RenderScene();
    EXPECT_EQ(heard.Count(kBatchOpened), 2);
}

TEST_F(ReferenceOps, APersistedReferenceFollowsItsReloadTypeAndTheFileTime) {
    const fs::path file = reference_.ToUTF8();
    WriteFile(reference_, L"box name:\"Door\" pos:[0,0,0]");
    const auto doorX = [] { return RunInt(L"$Door.pos.x as integer"); };
    for (int type : {0, 1, 2}) {
        SCOPED_TRACE(type);
        WriteFile(reference_, L"box name:\"Door\" pos:[0,0,0]");
        Script(L"resetMaxFile #noPrompt; h = Vandrels.AddVandrel " + Quoted(reference_) +
               L"; h.baseObject.PersistRef = true; h.baseObject.PersistReloadType = " + std::to_wstring(type));
        ASSERT_TRUE(GetCOREInterface()->SaveToFile(file_.data()));
        // The file changes but keeps its time: only "always" reloads.
        const auto time = fs::last_write_time(file);
        WriteFile(reference_, L"box name:\"Door\" pos:[50,0,0]");
        fs::last_write_time(file, time);
        ASSERT_TRUE(GetCOREInterface()->LoadFromFile(file_.data()));
        EXPECT_EQ(doorX(), type == 0 ? 50 : 0);
        EXPECT_EQ(RunInt(L"(for o in objects where o.name == \"Door\" collect o).count"), 1);
        // Touched: "only if changed" reloads too; "manually" never does.
        fs::last_write_time(file, time + std::chrono::seconds(5));
        ASSERT_TRUE(GetCOREInterface()->LoadFromFile(file_.data()));
        EXPECT_EQ(doorX(), type == 2 ? 0 : 50);
        // A content kept as saved is the reference's content: an unload takes it out.
        Script(L"h = getNodeByName \"set\"; h.baseObject.Unload()");
        EXPECT_EQ(Node(L"Door"), nullptr);
    }
}

}  // namespace
