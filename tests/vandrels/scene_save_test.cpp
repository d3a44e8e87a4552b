// Saving a scene that holds references: the scene after the save is the scene before it (same node objects,
// hierarchy, controllers, objects; not marked changed; nothing of the parking place left), the file holds only
// local content and light stand-ins, a persistent reference and a merged save keep the content, and a failure
// inside the pre-save still leaves a saved file and a restored scene.
#include "vandrels_library.h"

#include "control.h"
#include "frame/class_ids.h"
#include "hold.h"
#include "inode.h"
#include "core/class_directory.h"
#include "io/scene_reader.h"
#include "io/file_bytes.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "object.h"
#include "plugapi.h"
#include "scene_compare.h"
#include "platform/dialog_service.h"
#include "platform/listener_capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

using hostrt::test::CompareSnapshots;
using hostrt::test::JoinDifferences;
using hostrt::test::TakeSnapshot;

// Every node of the scene tree with what it is made of, by object identity.
struct NodeParts {
    INode* parent;
    Animatable* controller;
    Animatable* object;
    Animatable* visibility;
    bool operator==(const NodeParts&) const = default;
};
std::map<INode*, NodeParts> PartsOfScene() {
    std::map<INode*, NodeParts> parts;
    std::vector<INode*> stack{GetCOREInterface()->GetRootNode()};
    while (!stack.empty()) {
        INode* n = stack.back();
        stack.pop_back();
        for (int i = 0; i < n->NumberOfChildren(); ++i) {
            INode* c = n->GetChildNode(i);
            parts[c] = {n, c->GetReference(NODE_TM_REF), c->GetReference(NODE_OBJECT_REF), c->GetReference(NODE_VIS_REF)};
            stack.push_back(c);
        }
    }
    return parts;
}

// How many objects of a class the saved file holds.
int CountInFile(const MSTR& file, const Class_ID& id) {
    const hostrt::SceneImage image = hostrt::ParseSceneFile(hostrt::ReadFileBytes(file), file);
    int count = 0;
    for (std::size_t i = 0; i < image.objects.size(); ++i) count += image.ClassOf(i).classId == id;
    return count;
}

int CountNamed(const MCHAR* name) {
    FPValue count;
    const std::wstring text = std::wstring(L"(for o in objects where o.name == \"") + name + L"\" collect o).count";
    ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &count, TRUE);
    return count.type == TYPE_INT ? count.i : -1;
}

// A transform controller that throws when armed: a failure in the middle of the pre-save.
class FailingController : public Control {
public:
    Class_ID ClassID() override { return Class_ID(0x5A5E0001, 0x5A5E0001); }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    void GetValue(TimeValue, void* val, Interval&, GetSetMethod method) override {
        if (armed) throw MAXException(L"The controller failed");
        if (method == CTRL_ABSOLUTE) *static_cast<Matrix3*>(val) = Matrix3();
    }
    void SetValue(TimeValue, void*, int, GetSetMethod) override {}
    bool armed = false;
};

// Registered so that the scene holding it can be written.
class FailingControllerDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL) override { return new FailingController; }
    const MCHAR* ClassName() override { return L"FailingController"; }
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    Class_ID ClassID() override { return FailingController().ClassID(); }
    const MCHAR* Category() override { return L""; }
};

class SceneSave : public vtest::SceneTest {
protected:
    SceneSave() : SceneTest("vandrels_scene_save") {}
    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_save_ref");
        hostrt::DialogService::Instance().Reset();
        Script(L"Vandrels.PrintTimes false; Vandrels.SetSaveRefsAsMerged false; Vandrels.SetMergeForNetworkRender false");
    }
    void TearDown() override {
        Script(L"Vandrels.SetSaveRefsAsMerged false");
        hostrt::DialogService::Instance().Reset();
        std::filesystem::remove(reference_.ToUTF8());
        SceneTest::TearDown();
    }
    // The reference file: Base (a bent box) with Top (a box) below it, and Ball (a sphere).
    void WriteReference() {
        Script(L"b = box name:\"Base\"; addModifier b (bend()); t = box name:\"Top\"; t.parent = b; "
               L"sphere name:\"Ball\"; saveMaxFile " + Quoted(reference_));
        GetCOREInterface()->FileReset(TRUE);
    }
    // The shot: the reference, a local box, a local child of Base and a camera aiming at Ball.
    void BuildShot() {
        WriteReference();
        Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L"; box name:\"Mine\"; "
               L"k = box name:\"Kid\"; k.parent = $Base; targetCamera name:\"Cam\" target:$Ball");
    }
    void Save() { ASSERT_TRUE(GetCOREInterface()->SaveToFile(file_.data())); }
    void Open() { ASSERT_TRUE(GetCOREInterface()->LoadFromFile(file_.data())); }
    MSTR reference_;
};

TEST_F(SceneSave, TheSceneAfterSavingIsTheSceneBeforeAndTheFileHoldsNoReferencedContent) {
    BuildShot();
    Script(L"select $Mine; Vandrels.PrintTimes true");
    const auto snapshot = TakeSnapshot();
    const auto parts = PartsOfScene();
    hostrt::Listener::Instance().Clear();
    Save();
    Script(L"Vandrels.PrintTimes false");
    const std::wstring times = hostrt::Listener::Instance().Text();
    std::size_t at = 0;
    for (const wchar_t* line : {L"\nVD Collect Time: ", L"\nVD PreSave Time: ", L"\nVD Save Time: ", L"\nVD PostSave Time: "}) {
        at = times.find(line, at);
        EXPECT_NE(at, std::wstring::npos) << WStr(line).ToUTF8();
    }
    EXPECT_EQ(JoinDifferences(CompareSnapshots(snapshot, TakeSnapshot())), "");
    EXPECT_EQ(PartsOfScene(), parts);  // the very same objects, controllers and links
    EXPECT_FALSE(GetCOREInterface()->IsSaveRequired());
    EXPECT_EQ(Node(L"VDHN"), nullptr);
    EXPECT_EQ(GetCOREInterface()->GetRootNode()->GetXRefFileCount(), 0);
    EXPECT_EQ(GetCOREInterface()->GetSelNodeCount(), 1);

    // Local boxes (Mine, Kid), no referenced box or sphere; Ball, which the camera aims at, in light form.
    EXPECT_EQ(CountInFile(file_, HOST_BOX_CLASS_ID), 2);
    EXPECT_EQ(CountInFile(file_, HOST_SPHERE_CLASS_ID), 0);
    EXPECT_EQ(CountInFile(file_, EMPTY_BASE_OBJECT_CLASS_ID), 1);
    EXPECT_EQ(CountInFile(file_, REFHOLDER_CLASS_ID), 0);
    EXPECT_EQ(CountInFile(file_, HOST_BEND_CLASS_ID), 0);  // the node record's mirror of Base's stack neither
}

// Ball, which the camera aims at, is written in light form; with a motion-blur controller (which lightening
// would leave in the file) an auxiliary node stands in for it instead. Either way the shot opens the same.
TEST_F(SceneSave, OpenedWithoutItsReferenceFileTheShotHoldsTheLocalContentAndBringsAllBackOnceTheFileIsBack) {
    for (const bool standIn : {false, true}) {
        SCOPED_TRACE(standIn ? "auxiliary node" : "lightened in place");
        GetCOREInterface()->FileReset(TRUE);
        BuildShot();
        Control* blur = nullptr;
        if (standIn) {
            blur = static_cast<Control*>(CreateInstance(CTRL_FLOAT_CLASS_ID, HOST_FLOAT_CONTROL_CLASS_ID));
            Node(L"Ball")->SetImageBlurMultController(blur);
        }
        const auto parts = PartsOfScene();
        Save();
        EXPECT_EQ(PartsOfScene(), parts);
        EXPECT_EQ(Node(L"Ball")->GetImageBlurMultController(), blur);
        EXPECT_EQ(Node(L"Cam")->GetTarget(), Node(L"Ball"));
        EXPECT_EQ(CountInFile(file_, EMPTY_BASE_OBJECT_CLASS_ID), 1);
        EXPECT_EQ(CountInFile(file_, HOST_SPHERE_CLASS_ID), 0);

        std::filesystem::rename(reference_.ToUTF8(), reference_.ToUTF8() + ".away");
        Open();
        EXPECT_EQ(LastReport().rfind(L"Error Loading Reference", 0), 0u);  // and the host's reason names the file
        EXPECT_NE(LastReport().find(std::filesystem::path(reference_.ToUTF8()).filename().wstring()), std::wstring::npos);
        for (const MCHAR* name : {L"Base", L"Top"}) EXPECT_EQ(Node(name), nullptr) << WStr(name).ToUTF8();
        ASSERT_NE(Node(L"Kid"), nullptr);
        ASSERT_NE(Node(L"Ball"), nullptr);
        EXPECT_EQ(Node(L"Ball")->GetBaseObject()->ClassID(), EMPTY_BASE_OBJECT_CLASS_ID);
        EXPECT_EQ(Node(L"Ball")->GetTMController()->ClassID(), EMPTY_CONTROLLER_CLASS_ID);
        EXPECT_EQ(Node(L"Ball")->GetImageBlurMultController(), nullptr);
        EXPECT_EQ(Node(L"Cam")->GetTarget(), Node(L"Ball"));

        std::filesystem::rename(reference_.ToUTF8() + ".away", reference_.ToUTF8());
        Open();
        for (const MCHAR* name : {L"Base", L"Top", L"Ball", L"Kid", L"Mine", L"Cam"})
            EXPECT_EQ(CountNamed(name), 1) << WStr(name).ToUTF8();
        EXPECT_EQ(Node(L"Ball")->GetBaseObject()->ClassID(), HOST_SPHERE_CLASS_ID);
        EXPECT_EQ(Node(L"Cam")->GetTarget(), Node(L"Ball"));
    }
}

TEST_F(SceneSave, ASceneWithoutHelpersIsWrittenAsIfTheLibraryWereNotThere) {
    Script(L"b = box name:\"Plain\"; addModifier b (bend()); sphere name:\"Round\" parent:b");
    BroadcastNotification(NOTIFY_SYSTEM_PRE_RESET);  // takes the library's save steps off the host
    Save();
    const auto without = hostrt::ReadFileBytes(file_);
    // A helper brings the steps back; once it is gone the save writes the very same bytes.
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L" load:false; delete h");
    theHold.FlushUndoBuffer();
    Save();
    EXPECT_EQ(hostrt::ReadFileBytes(file_), without);
}

TEST_F(SceneSave, APersistentReferenceKeepsItsContentInTheShot) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) +
           L"; h.baseObject.PersistRef = true; h.baseObject.PersistReloadType = 2");
    const auto snapshot = TakeSnapshot();
    Save();
    EXPECT_EQ(JoinDifferences(CompareSnapshots(snapshot, TakeSnapshot())), "");
    EXPECT_EQ(CountInFile(file_, HOST_BOX_CLASS_ID), 2);
    EXPECT_EQ(CountInFile(file_, HOST_SPHERE_CLASS_ID), 1);
    // Reopened, with reload manually, the saved content stands, each node once, the reference file or not.
    std::filesystem::remove(reference_.ToUTF8());
    Open();
    for (const MCHAR* name : {L"Base", L"Top", L"Ball"}) EXPECT_EQ(CountNamed(name), 1) << WStr(name).ToUTF8();
    EXPECT_EQ(Node(L"Ball")->GetBaseObject()->ClassID(), HOST_SPHERE_CLASS_ID);
}

TEST_F(SceneSave, ASceneSavedMergedOpensWithAllContentAsPlainNodesAndNoHelper) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) + L"; Vandrels.SetMergeForNetworkRender true");
    // Merge for network render: a save into the temporary folder (a render job's copy) is merged.
    const MSTR temporary = MSTR(GetCOREInterface()->GetDir(APP_TEMP_DIR)) + L"vandrels_save_render.max";
    ASSERT_TRUE(GetCOREInterface()->SaveToFile(temporary.data(), FALSE, FALSE));
    EXPECT_EQ(CountInFile(temporary, HOST_SPHERE_CLASS_ID), 1);
    std::filesystem::remove(temporary.ToUTF8());
    Script(L"Vandrels.SetMergeForNetworkRender false; Vandrels.SetSaveRefsAsMerged true");
    // Content unloaded at this moment: a node with the placeholders.
    INode* unloaded = GetCOREInterface()->CreateObjectNode(
        static_cast<Object*>(CreateInstance(GEOMOBJECT_CLASS_ID, EMPTY_BASE_OBJECT_CLASS_ID)));
    unloaded->SetName(L"Unloaded");
    Matrix3 tm;
    tm.SetTrans(Point3(5, 6, 7));
    auto* empty = static_cast<Control*>(CreateInstance(CTRL_MATRIX3_CLASS_ID, EMPTY_CONTROLLER_CLASS_ID));
    unloaded->SetTMController(empty);
    empty->SetValue(0, &tm);  // ignored: the placeholder keeps its matrix
    const auto snapshot = TakeSnapshot();
    const auto parts = PartsOfScene();
    Save();
    EXPECT_EQ(JoinDifferences(CompareSnapshots(snapshot, TakeSnapshot())), "");
    EXPECT_EQ(PartsOfScene(), parts);

    EXPECT_EQ(CountInFile(file_, VANDRELS_HELPER_CLASS_ID), 0);  // no helper, no record, no placeholder
    EXPECT_EQ(CountInFile(file_, REFNODE_CLASS_ID), 0);
    Open();
    for (const MCHAR* name : {L"Base", L"Top", L"Ball"}) EXPECT_NE(Node(name), nullptr) << WStr(name).ToUTF8();
    ASSERT_NE(Node(L"Unloaded"), nullptr);
    EXPECT_EQ(Node(L"Unloaded")->GetBaseObject()->ClassID(), Class_ID(DUMMY_CLASS_ID, 0));
    EXPECT_EQ(Node(L"Unloaded")->GetTMController()->ClassID(), Class_ID(PRS_CONTROL_CLASS_ID, 0));
    EXPECT_EQ(GetCOREInterface()->GetRootNode()->NumberOfChildren(), 3);
}

TEST_F(SceneSave, AFailureInsidePreSaveIsReportedAndStillLeavesASavedFileAndARestoredScene) {
    static FailingControllerDesc desc;
    static const bool registered = hostrt::ClassDirectory::Instance().Register(&desc, "scene-save-test");
    ASSERT_TRUE(registered);
    BuildShot();
    auto* failing = new FailingController();
    Node(L"Ball")->SetTMController(failing);
    const auto snapshot = TakeSnapshot();
    const auto parts = PartsOfScene();
    failing->armed = true;
    Save();
    failing->armed = false;
    EXPECT_EQ(LastReport(), L"Error Saving Scene in PreSave\r\n\r\nThe controller failed\r\nLast Operation: Linking");
    EXPECT_TRUE(std::filesystem::exists(file_.ToUTF8()));
    EXPECT_EQ(JoinDifferences(CompareSnapshots(snapshot, TakeSnapshot())), "");
    EXPECT_EQ(PartsOfScene(), parts);
    EXPECT_EQ(Node(L"VDHN"), nullptr);
    EXPECT_EQ(GetCOREInterface()->GetRootNode()->GetXRefFileCount(), 0);
}

}  // namespace

// A damaged shot file is refused and the open scene stays as it was; a reference file damaged on disk lets the
// shot open with its own content, loses none of the edits (also when saved meanwhile), and brings everything
// back once the file is good again.
TEST_F(SceneSave, DamagedFilesLoseNothing) {
    BuildShot();
    Script(L"$Top.wirecolor = color 1 2 3");
    Save();
    const std::vector<std::uint8_t> shot = hostrt::ReadFileBytes(file_);
    const MSTR damagedShot = MSTR::FromUTF8(file_.ToUTF8() + ".damaged.max");
    {
        std::ofstream out(damagedShot.ToUTF8(), std::ios::binary);
        out.write(reinterpret_cast<const char*>(shot.data()), std::streamsize(shot.size() / 2));
    }
    const auto before = TakeSnapshot();
    EXPECT_FALSE(GetCOREInterface()->LoadFromFile(damagedShot.data()));
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot())), "");
    std::filesystem::remove(damagedShot.ToUTF8());

    const std::vector<std::uint8_t> good = hostrt::ReadFileBytes(reference_);
    {
        std::ofstream out(reference_.ToUTF8(), std::ios::binary | std::ios::trunc);
        out << "not a scene file";
    }
    Open();
    EXPECT_EQ(LastReport().rfind(L"Error Loading Reference", 0), 0u) << WStr(LastReport()).ToUTF8();
    EXPECT_EQ(Node(L"Top"), nullptr);
    EXPECT_NE(Node(L"Mine"), nullptr);
    EXPECT_NE(Node(L"Kid"), nullptr);
    Save();  // saved while the reference is broken

    {
        std::ofstream out(reference_.ToUTF8(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(good.data()), std::streamsize(good.size()));
    }
    Open();
    ASSERT_NE(Node(L"Top"), nullptr);
    EXPECT_EQ(Node(L"Top")->GetWireColor(), DWORD(0x030201));
    ASSERT_NE(Node(L"Kid"), nullptr);
    EXPECT_EQ(Node(L"Kid")->GetParentNode(), Node(L"Base"));
    for (const MCHAR* name : {L"Base", L"Top", L"Ball", L"Kid", L"Mine", L"Cam"})
        EXPECT_EQ(CountNamed(name), 1) << WStr(name).ToUTF8();
}
