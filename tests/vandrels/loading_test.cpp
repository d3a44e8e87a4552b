// Loading a reference through the host: the failure path of a missing or damaged file (report text, nothing
// merged left behind, the scene as it was), the circular-reference message, the timing lines, the load
// notifications, the duplicated names, the undo buffer and the animatable-record slots a bound record drops.
#include "vandrels_library.h"

#include "core/fnpub.h"
#include "hold.h"
#include "plugapi.h"
#include "imtl.h"
#include "inode.h"
#include "platform/listener_capture.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "object.h"
#include "winshim.h"
#include "platform/dialog_service.h"
#include "saved_objects.h"
#include "resource.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

int CountNodes() {
    int count = 0;
    std::vector<INode*> stack{GetCOREInterface()->GetRootNode()};
    while (!stack.empty()) {
        INode* n = stack.back();
        stack.pop_back();
        for (int i = 0; i < n->NumberOfChildren(); ++i) {
            stack.push_back(n->GetChildNode(i));
            ++count;
        }
    }
    return count;
}

class Loading : public vtest::SceneTest {
protected:
    Loading() : SceneTest("vandrels_loading") {}
    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_loading_ref");
        hostrt::DialogService::Instance().Reset();
        Script(L"Vandrels.PrintTimes false");
    }
    void TearDown() override {
        GetCOREInterface()->SetHasUserInterface(FALSE);
        GetCOREInterface()->SetQuietMode(FALSE);
        hostrt::DialogService::Instance().Reset();
        std::filesystem::remove(reference_.ToUTF8());
        SceneTest::TearDown();
    }
    // A reference file of two boxes of one name and a sphere; the scene is empty afterwards.
    void WriteReference() {
        Script(L"box name:\"Twin\"; box name:\"Twin\"; sphere name:\"Ball\"; saveMaxFile " + Quoted(reference_));
        GetCOREInterface()->FileReset(TRUE);
    }
    MSTR reference_;
};

TEST_F(Loading, MissingAndDamagedFilesFailWithTheReportAndLeaveTheSceneAsItWas) {
    Script(L"box name:\"Mine\" material:(standardMaterial name:\"Kept\")");
    const int before = CountNodes();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    EXPECT_EQ(CountNodes(), before + 1);  // the helper only
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 0);
    const std::wstring name = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
    const std::wstring path = std::filesystem::path(reference_.ToUTF8()).lexically_normal().wstring();
    EXPECT_EQ(LastReport(), L"Error Loading Reference\r\nMerged Nodes: 0\r\nName: " + name +
                                L"\r\nRefNodes: 0, RefMaterials: 0, RefLayers: 0\r\nNodesToDelete: 0, RenamedLayers: 0"
                                L"\r\nLastOperation: Cleaned\r\n\r\nError Merging File\r\nLastOperation: Scene Mtls"
                                L"\r\n\r\n" + std::wstring(GetCOREInterface()->GetLastFileError().data()));
    // The host's own reason names the file.
    EXPECT_NE(LastReport().find(path + L": cannot open"), std::wstring::npos) << LastReport();

    // A damaged file: nothing merged either, and the scene's materials are all still in its library.
    {
        std::ofstream out(reference_.ToUTF8(), std::ios::binary);
        out << "not a scene file at all";
    }
    Script(L"h.baseObject.Active = false; h.baseObject.Active = true");
    EXPECT_EQ(CountNodes(), before + 1);
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 0);
    EXPECT_NE(LastReport().find(L"\r\n\r\n" + path + L": "), std::wstring::npos) << LastReport();
    EXPECT_EQ(LastReport().find(L"cannot open"), std::wstring::npos) << LastReport();
    EXPECT_EQ(CountDialogs(IDD_REFERENCE_ERROR), 2);
    EXPECT_EQ(GetCOREInterface()->GetSceneMtls()->FindMtlByName(MSTR(L"Kept")), 0);

    // Quiet mode shows no report.
    GetCOREInterface()->SetQuietMode(TRUE);
    Script(L"h.baseObject.Active = false; h.baseObject.Active = true");
    EXPECT_EQ(CountDialogs(IDD_REFERENCE_ERROR), 2);
}

TEST_F(Loading, TheOpenSceneItselfIsRefusedWithTheCircularMessage) {
    Script(L"box name:\"Self\"");
    ASSERT_NE(GetCOREInterface()->SaveToFile(file_.data()), 0);
    GetCOREInterface()->SetHasUserInterface(TRUE);
    Script(L"h = Vandrels.AddVandrel " + Quoted(file_));
    EXPECT_EQ(CountNodes(), 2);
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].request.text, L"There is a circular scene dependency. The Vandrel file " +
                                         std::wstring(file_.data()) + L" was not loaded.");
    EXPECT_EQ(boxes[0].request.title, L"Error");
    EXPECT_EQ(boxes[0].request.Icon(), UINT(MB_ICONWARNING));
    EXPECT_EQ(CountDialogs(IDD_REFERENCE_ERROR), 0);  // a refused merge is no failure
}

struct LoadNotifications {
    std::vector<int> codes;
    void* helper = nullptr;
    static void proc(void* param, NotifyInfo* info) {
        auto* self = static_cast<LoadNotifications*>(param);
        if (info->callParam == self->helper || !self->helper) self->codes.push_back(info->intcode);
    }
};

TEST_F(Loading, ALoadIsAnnouncedTimedAndLeavesNoUndoSteps) {
    WriteReference();
    LoadNotifications heard;
    RegisterNotification(&LoadNotifications::proc, &heard, 0xDFA4);
    RegisterNotification(&LoadNotifications::proc, &heard, 0xDFA5);
    Script(L"undo on (box name:\"Before\")");
    ASSERT_GT(theHold.NumUndoEntries(), 0);
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    EXPECT_EQ(heard.codes, (std::vector<int>{0xDFA4, 0xDFA5}));
    EXPECT_EQ(theHold.NumUndoEntries(), 0);
    EXPECT_EQ(listener.Text().find(L"VD "), std::wstring::npos);  // PrintTimes is off
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 3);

    Script(L"Vandrels.PrintTimes true");
    listener.Clear();
    Script(L"h2 = Vandrels.AddVandrel " + Quoted(reference_));
    const std::wstring text = listener.Text();
    EXPECT_EQ(text.find(L"\nVD Merge Time: "), 0u) << WStr(text).ToUTF8();
    EXPECT_NE(text.find(L"\nVD Initialization Time: "), std::wstring::npos);
    UnRegisterNotification(&LoadNotifications::proc, &heard);
}

TEST_F(Loading, DuplicatedNamesBindInOrderAndWarnUnlessHidden) {
    WriteReference();
    GetCOREInterface()->SetHasUserInterface(TRUE);
    Script(L"Vandrels.ShowDuplicatedNamesWarning = true");
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    // Both twins have records; the warning lists the name once.
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 3);
    ASSERT_EQ(CountDialogs(IDD_DUPLICATED_NAMES), 1);
    const auto dialog = hostrt::DialogService::Instance().Dialogs().back();
    ASSERT_NE(dialog.Control(1023), nullptr);
    EXPECT_EQ(dialog.Control(1023)->text, L"Twin\r\n");

    // Hidden, the warning stays away.
    Script(L"Vandrels.ShowDuplicatedNamesWarning = false");
    Script(L"Vandrels.AddVandrel " + Quoted(reference_));
    EXPECT_EQ(CountDialogs(IDD_DUPLICATED_NAMES), 1);
}

TEST_F(Loading, LocallyDeletedNodesAreDeletedAgainWhenMerged) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L" load:false");
    const std::wstring name = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
    INode* helperNode = GetCOREInterface()->GetINodeByName(name.c_str());
    ASSERT_NE(helperNode, nullptr);
    // The names of locally deleted nodes, as the helper keeps them in its chunks.
    ASSERT_EQ(vtest::LoadInto(helperNode->GetObjectRef(),
                              vtest::ChunkBytes().Chunk(0x0000, 1.0f).Chunk(0x0003, std::int32_t(1)).Text(0x0004, L"Ball").Get()),
              IO_OK);
    Script(L"h.baseObject.Active = false; h.baseObject.Active = true");
    EXPECT_EQ(GetCOREInterface()->GetINodeByName(L"Ball"), nullptr);
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 2);
    EXPECT_NE(GetCOREInterface()->GetINodeByName(L"Twin"), nullptr);
}

// A record read from a scene file holds empty animatable-record slots until the host restores them; the slots
// still empty when a load binds the record are dropped. Of two merged nodes of the record's name the first binds
// to it and the second gets a new record, which counts as a duplicated name.
TEST_F(Loading, ASavedRecordBindsToTheFirstNodeOfItsNameAndDropsItsEmptySlots) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L" load:false");
    const std::wstring name = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
    INode* helperNode = GetCOREInterface()->GetINodeByName(name.c_str());
    ASSERT_NE(helperNode, nullptr);
    ReferenceTarget* helper = helperNode->GetObjectRef();

    auto* record = static_cast<ReferenceTarget*>(
        static_cast<Animatable*>(CreateInstance(0x8663DFA6, Class_ID(0x8663DFA6, 0x3F273884))));
    ASSERT_NE(record, nullptr);
    vtest::ChunkBytes bytes;
    bytes.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0007, std::int32_t(0)).Text(0x0008, L"Twin");
    bytes.Chunk(0x000A, std::uint32_t(0x1000));  // a local wire colour keeps the record through the load
    bytes.Chunk(0x0029, std::int32_t(0)).Chunk(0x0022, std::int32_t(2)).Chunk(0x002A, std::int32_t(0));
    bytes.Chunk(0x002C, std::int32_t(0));
    ASSERT_EQ(vtest::LoadInto(record, bytes.Get()), IO_OK);
    ASSERT_EQ(record->NumRefs() >= 3, true);
    EXPECT_EQ(record->GetReference(1), nullptr);
    EXPECT_EQ(record->GetReference(2), nullptr);

    // The helper's first record slot holds it.
    ASSERT_EQ(vtest::LoadInto(helper, vtest::ChunkBytes().Chunk(0x0000, 1.0f).Chunk(0x0001, std::int32_t(1)).Get()),
              IO_OK);
    ASSERT_EQ(helper->ReplaceReference(2, record), REF_SUCCEED);
    GetCOREInterface()->SetHasUserInterface(TRUE);
    Script(L"Vandrels.ShowDuplicatedNamesWarning = true");
    Script(L"h.baseObject.Active = false; h.baseObject.Active = true");

    INode* firstTwin = GetCOREInterface()->GetINodeByName(L"Twin");
    ASSERT_NE(firstTwin, nullptr);
    EXPECT_EQ(record->GetReference(0), firstTwin);
    EXPECT_EQ(RunInt(L"h.baseObject.NumRefNodes()"), 3);  // the twins' records and Ball's
    EXPECT_EQ(CountDialogs(IDD_DUPLICATED_NAMES), 1);
    FPInterface* fpi = hostrt::FindObjectInterface(record, L"RefNode");
    ASSERT_NE(fpi, nullptr);
    FPValue count;
    hostrt::CallFromScript(fpi, L"NumRefAnims", {}, {}, count);
    ASSERT_GT(count.i, 0);
    for (int i = 1; i <= count.i; ++i) EXPECT_NE(record->GetReference(i), nullptr) << "animatable record " << i;
}

// What the helper prints of a loaded reference: its counts, then per node record its name and node, in record
// order (mode 0 with the animatable-record count, mode 1 with every record's block).
TEST_F(Loading, PrintDataListsTheLoadedRecordsInOrder) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    Script(L"h.baseObject.PrintData()");
    const std::wstring brief = listener.Text();
    EXPECT_EQ(brief.find(L"\nNum RefNodes: 3\nNum RefMaterials:0\nNum RefLayers:0\nNum NodesToDelete:0\n\n"), 0u)
        << WStr(brief).ToUTF8();
    size_t at = 0;
    for (const wchar_t* name : {L"Twin", L"Twin", L"Ball"}) {
        const size_t found = brief.find(L"\nRefNode: " + std::wstring(name) + L" - ", at);
        ASSERT_NE(found, std::wstring::npos) << WStr(name).ToUTF8() << " in " << WStr(brief).ToUTF8();
        at = brief.find(L"\nRefAnims: ", found);
        ASSERT_NE(at, std::wstring::npos);
    }
    listener.Clear();
    Script(L"h.baseObject.PrintData mode:2");  // the mode is an index: scripts count from 1
    const std::wstring full = listener.Text();
    EXPECT_NE(full.find(L"\n\n***************************\nRefNode: Ball - "), std::wstring::npos);
    EXPECT_NE(full.find(L"\n\nRefAnim: 0"), std::wstring::npos);
}

}  // namespace
