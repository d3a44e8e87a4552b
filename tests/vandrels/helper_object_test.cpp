// The reference helper as the host sees it: its references, parameter block and accessor, scripting interface,
// chunks in scene files (byte for byte), cloning, interactive creation and asset enumeration.
#include "assetmanagement.h"
#include "core/class_directory.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "max.h"
#include "mouseman.h"
#include "notify.h"
#include "object.h"
#include "platform/listener_capture.h"
#include "plugapi.h"
#include "saved_objects.h"
#include "scene/interactive_create.h"
#include "scene/scene.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using vtest::LoadInto;
using vtest::SavedBy;

constexpr Class_ID kHelperClass(0x8663DFA5, 0x3F273879);
constexpr Interface_ID kHelperInterface(0x9663DFA5, 0x4F273879);
enum { kActive = 0, kFileName, kProxyFileName, kUseProxyInViewport, kUseProxyInRender, kUseNamePrefix, kPersistRef,
       kReloadIfChanged, kSelectedInManager, kOther, kHideDupNames, kOverlay, kPersistReloadType };

using Bytes = vtest::ChunkBytes;

Bytes Renamed(const MCHAR* name, const MCHAR* newName, std::int32_t noPrefix) {
    Bytes b;
    b.Text(0x0000, name).Text(0x0001, newName).Chunk(0x0001, noPrefix);
    return b;
}

// A helper with two node slots, one material slot, two names to delete, two renamed layers and two layer
// entries of which one is written.
Bytes FullHelperBytes() {
    Bytes b;
    b.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0027, std::uint64_t(0x01D9A0B0C0D0E0F0ull));
    b.Chunk(0x0001, std::int32_t(2)).Chunk(0x0002, std::int32_t(1));
    b.Chunk(0x0003, std::int32_t(2)).Text(0x0004, L"Box01").Text(0x0004, L"Sphere02");
    b.Chunk(0x0005, std::int32_t(2))
        .Wrapped(0x0006, Renamed(L"Walls", L"Ref_Walls", 0))
        .Wrapped(0x0006, Renamed(L"Props", L"Stage", 1));
    b.Chunk(0x0025, std::int32_t(1)).Text(0x0026, L"Walls");
    return b;
}

ReferenceTarget* NewHelper(BOOL loading = FALSE) {
    ClassDesc* cd = FindClassDesc(HELPER_CLASS_ID, kHelperClass);
    EXPECT_NE(cd, nullptr);
    return cd ? static_cast<ReferenceTarget*>(static_cast<Animatable*>(cd->Create(loading))) : nullptr;
}

IParamBlock2* BlockOf(ReferenceTarget* helper) { return static_cast<IParamBlock2*>(helper->GetReference(0)); }

FPInterface* InterfaceOf(ReferenceTarget* helper) {
    return dynamic_cast<FPInterface*>(helper->GetInterface(kHelperInterface));
}

// The unloads and loads that start, in order (the notifications 0xDFA2 and 0xDFA4, which name their helper):
// what the helper's operations do to its content, seen from outside.
class OperationStarts {
public:
    static constexpr int kUnload = 0xDFA2;
    static constexpr int kLoad = 0xDFA4;
    OperationStarts() {
        RegisterNotification(&OperationStarts::proc, this, kUnload);
        RegisterNotification(&OperationStarts::proc, this, kLoad);
    }
    ~OperationStarts() { UnRegisterNotification(&OperationStarts::proc, this); }
    // The codes heard since the last call, and forgets them.
    std::vector<int> Take() { return std::exchange(codes_, {}); }
    int Unloads() const { return int(std::count(codes_.begin(), codes_.end(), kUnload)); }

private:
    static void proc(void* param, NotifyInfo* info) {
        if (info && info->callParam) static_cast<OperationStarts*>(param)->codes_.push_back(info->intcode);
    }
    std::vector<int> codes_;
};
using Codes = std::vector<int>;

class Helper : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        vtest::VandrelsLibrary();
        hostrt::Scene::Instance().ResetScene();
        file_ = vtest::TempSceneFile("vandrels_helper");
    }
    void TearDown() override {
        hostrt::Scene::Instance().ResetScene();
        std::filesystem::remove(file_.ToUTF8());
    }
    // The helper of the first node holding one.
    ReferenceTarget* HelperInScene() {
        INode* node = GetCOREInterface()->GetINodeByName(L"VandrelsHelper");
        return node ? node->GetObjectRef() : nullptr;
    }
    MSTR file_;
};

}  // namespace

TEST_F(Helper, FreshHelperHasItsBlockAndTwoReferences) {
    ReferenceTarget* helper = NewHelper();
    ASSERT_NE(helper, nullptr);
    EXPECT_EQ(helper->NumRefs(), 2);
    IParamBlock2* pb = BlockOf(helper);
    ASSERT_NE(pb, nullptr);
    EXPECT_EQ(pb->SuperClassID(), PARAMETER_BLOCK2_CLASS_ID);
    EXPECT_EQ(helper->GetReference(1), nullptr);
    EXPECT_EQ(helper->GetReference(2), nullptr);
    EXPECT_EQ(helper->GetReference(-1), nullptr);
    EXPECT_EQ(helper->NumSubs(), 1);
    EXPECT_EQ(helper->SubAnim(0), pb);
    EXPECT_EQ(helper->SubAnimName(0), MSTR(L"pblock"));

    EXPECT_EQ(pb->GetInt(kActive), TRUE);
    EXPECT_EQ(pb->GetInt(kSelectedInManager), TRUE);
    EXPECT_EQ(MSTR(pb->GetStr(kFileName)), MSTR(L""));
    // Attaching the block brings the reload type in step with ReloadIfChanged (false): reload always.
    EXPECT_EQ(pb->GetInt(kReloadIfChanged), FALSE);
    EXPECT_EQ(pb->GetInt(kPersistReloadType), 0);

    // The descriptor: flags, labels, controls, file types and asset types as scene files and the UI know them.
    ParamBlockDesc2* desc = pb->GetDesc();
    EXPECT_EQ(desc->int_name, MSTR(L"VandrelsHelper_Parameters"));
    EXPECT_EQ(desc->Count(), 13);
    EXPECT_EQ(desc->dlg_template, 101);
    EXPECT_EQ(desc->title, 4);
    const int labels[13] = {47, 5, 208, 16, 17, 54, 51, 52, 67, 130, 80, 131, 158};
    for (ParamID id = 0; id < 13; ++id) {
        SCOPED_TRACE(id);
        ParamDef& def = desc->GetParamDef(id);
        EXPECT_EQ(def.flags, DWORD(id == kActive ? 0x22 : 0x20));
        EXPECT_EQ(def.local_name, labels[id]);
        EXPECT_EQ(def.accessor != nullptr,
                  id == kActive || id == kFileName || id == kProxyFileName || id == kUseProxyInViewport ||
                      id == kUseNamePrefix || id == kReloadIfChanged || id == kPersistReloadType);
    }
    EXPECT_EQ(desc->GetParamDef(kOther).int_name.Length(), 0);
    EXPECT_EQ(desc->GetParamDef(kOther).type, TYPE_REFTARG);
    for (ParamID id : {ParamID(kFileName), ParamID(kProxyFileName)}) {
        EXPECT_EQ(desc->GetParamDef(id).type, TYPE_FILENAME);
        EXPECT_EQ(desc->GetParamDef(id).asset_type_id, 7);
        EXPECT_EQ(desc->GetParamDef(id).file_types, 8);
    }
    ParamDef& reloadType = desc->GetParamDef(kPersistReloadType);
    EXPECT_TRUE(reloadType.has_range);
    EXPECT_EQ(reloadType.range_low.AsInt(), 0);
    EXPECT_EQ(reloadType.range_high.AsInt(), 2);
    EXPECT_EQ(reloadType.ui.ctrl_ids, (std::vector<int>{1030, 1031, 1032}));
    helper->DeleteThis();
}

TEST_F(Helper, AccessorTurnsParameterChangesIntoOperations) {
    ReferenceTarget* helper = NewHelper();
    IParamBlock2* pb = BlockOf(helper);
    OperationStarts starts;
    // The files do not exist: each load fails and unloads what it took.
    const Codes reload{OperationStarts::kUnload, OperationStarts::kLoad, OperationStarts::kUnload};

    // The two reload settings follow each other without reloading.
    pb->SetValue(kPersistReloadType, 0, 1);
    EXPECT_EQ(pb->GetInt(kReloadIfChanged), TRUE);
    pb->SetValue(kPersistReloadType, 0, 2);
    EXPECT_EQ(pb->GetInt(kReloadIfChanged), FALSE);
    EXPECT_EQ(pb->GetInt(kPersistReloadType), 2);
    pb->SetValue(kReloadIfChanged, 0, TRUE);
    EXPECT_EQ(pb->GetInt(kPersistReloadType), 1);
    pb->SetValue(kReloadIfChanged, 0, FALSE);
    EXPECT_EQ(pb->GetInt(kPersistReloadType), 0);
    EXPECT_EQ(starts.Take(), Codes{});

    // A proxy file matters only while the proxy is shown in the viewports; a new file name reloads.
    pb->SetValue(kProxyFileName, 0, L"proxy.max");
    EXPECT_EQ(starts.Take(), Codes{});
    pb->SetValue(kUseProxyInViewport, 0, TRUE);
    EXPECT_EQ(starts.Take(), reload);
    pb->SetValue(kProxyFileName, 0, L"proxy2.max");
    EXPECT_EQ(starts.Take(), reload);
    pb->SetValue(kFileName, 0, L"main.max");
    EXPECT_EQ(starts.Take(), reload);
    // Parameters without the accessor do nothing.
    pb->SetValue(kPersistRef, 0, TRUE);
    pb->SetValue(kUseProxyInRender, 0, TRUE);
    EXPECT_EQ(starts.Take(), Codes{});

    // Switching Active off unloads, on loads.
    pb->SetValue(kActive, 0, FALSE);
    EXPECT_EQ(starts.Take(), Codes{OperationStarts::kUnload});
    pb->SetValue(kActive, 0, TRUE);
    EXPECT_EQ(starts.Take(), (Codes{OperationStarts::kLoad, OperationStarts::kUnload}));
    helper->DeleteThis();
}

TEST_F(Helper, ScriptingInterfaceDispatchesAndRefusesBadCalls) {
    ReferenceTarget* helper = NewHelper(TRUE);
    ASSERT_EQ(LoadInto(helper, FullHelperBytes().Get()), IO_OK);
    FPInterface* fpi = InterfaceOf(helper);
    ASSERT_NE(fpi, nullptr);
    EXPECT_EQ(fpi->GetDesc()->internal_name, MSTR(L"VandrelsHelper"));

    FPValue result;
    ASSERT_EQ(fpi->Invoke(7, result), FPS_OK);
    EXPECT_EQ(result.i, 2);
    ASSERT_EQ(fpi->Invoke(9, result), FPS_OK);
    EXPECT_EQ(result.i, 1);
    FPParams second{FPValue(TYPE_INDEX, 1)};
    ASSERT_EQ(fpi->Invoke(8, result, &second), FPS_OK);
    EXPECT_EQ(result.r, nullptr);  // a slot waiting for its record
    ASSERT_EQ(fpi->Invoke(11, result), FPS_OK);
    ASSERT_NE(result.n_tab, nullptr);
    EXPECT_EQ(result.n_tab->Count(), 0);

    for (FunctionID fid : {FunctionID(-1), FunctionID(6), FunctionID(15), FunctionID(100)})
        EXPECT_EQ(fpi->Invoke(fid, result), FPS_NO_SUCH_FUNCTION) << fid;

    FPParams past{FPValue(TYPE_INDEX, 2)};
    try {
        fpi->Invoke(8, result, &past);
        ADD_FAILURE() << "an index past the node records was accepted";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.message, MSTR(L"Invalid index passed into a Max SDK Tab::operator[]"));
    }
    try {
        fpi->Invoke(10, result);
        ADD_FAILURE() << "a missing index was accepted";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.message, MSTR(L"Argument index out of bounds, passed into a MaxSDK::Array::operator[]"));
    }

    // The operations reach the helper in their slots: an unload keeps the records' slots, a reload's load drops
    // the empty ones, saving an unloaded reference is refused with the report, dismissing and resetting empty
    // the helper's lists. The helper gets a block of its own (without one, every operation answers 0 at once).
    ReferenceTarget* blockSource = NewHelper();
    ASSERT_EQ(helper->ReplaceReference(0, CloneRefHierarchy(BlockOf(blockSource))), REF_SUCCEED);
    blockSource->DeleteThis();
    OperationStarts starts;
    ASSERT_EQ(fpi->Invoke(1, result), FPS_OK);
    EXPECT_EQ(result.i, 1);
    EXPECT_EQ(starts.Take(), Codes{OperationStarts::kUnload});
    ASSERT_EQ(fpi->Invoke(7, result), FPS_OK);
    EXPECT_EQ(result.i, 2);
    FPParams file{FPValue(L"out.max")};
    ASSERT_EQ(fpi->Invoke(14, result, &file), FPS_OK);
    EXPECT_EQ(result.i, 0);
    EXPECT_EQ(vtest::LastReport(), L"Error Saving Reference\r\n\r\nThe reference is not loaded; load it before saving it.");
    ASSERT_EQ(fpi->Invoke(13, result), FPS_OK);
    EXPECT_EQ(result.i, 0);
    EXPECT_EQ(starts.Take(), Codes{});
    ASSERT_EQ(fpi->Invoke(0, result), FPS_OK);
    EXPECT_EQ(starts.Take(), (Codes{OperationStarts::kUnload, OperationStarts::kLoad}));
    ASSERT_EQ(fpi->Invoke(7, result), FPS_OK);
    EXPECT_EQ(result.i, 0);
    ASSERT_EQ(fpi->Invoke(3, result), FPS_OK);
    EXPECT_EQ(result.i, 1);
    EXPECT_EQ(starts.Take(), Codes{OperationStarts::kUnload});
    EXPECT_EQ(helper->NumRefs(), 2);  // no records and no layer entries either
    ASSERT_EQ(fpi->Invoke(4, result), FPS_OK);
    EXPECT_EQ(starts.Take(), (Codes{OperationStarts::kUnload, OperationStarts::kLoad}));
    helper->DeleteThis();
}

TEST_F(Helper, PrintDataWritesTheHelpersLists) {
    auto& listener = hostrt::Listener::Instance();
    ReferenceTarget* empty = NewHelper();
    listener.Clear();
    FPParams mode{FPValue(TYPE_INDEX, 0)};
    ASSERT_EQ(InterfaceOf(empty)->Invoke(5, &mode), FPS_OK);
    EXPECT_EQ(listener.Text(),
              std::wstring(L"\nNum RefNodes: 0\nNum RefMaterials:0\nNum RefLayers:0\nNum NodesToDelete:0\n\n"
                           L"\nNodesToDelete:\nNone\n\nRenamedLayers:\nNone\n\n"));
    empty->DeleteThis();

    ReferenceTarget* full = NewHelper(TRUE);
    ASSERT_EQ(LoadInto(full, FullHelperBytes().Get()), IO_OK);
    listener.Clear();
    ASSERT_EQ(InterfaceOf(full)->Invoke(5, &mode), FPS_OK);
    EXPECT_EQ(listener.Text(),
              std::wstring(L"\nNum RefNodes: 2\nNum RefMaterials:1\nNum RefLayers:1\nNum NodesToDelete:2\n\n"
                           L"\nNodesToDelete:\nBox01,\nSphere02,\n"
                           L"\nRenamedLayers:\nWalls -> Ref_Walls\nProps -> Stage (Full)\n\n"
                           L"\nRefNode: NULL\n\n\nRefNode: NULL\n\n\nRefMaterial: NULL\n\n\nRefLayer: NULL\n\n"));

    // A bound record prints its own block in its slot.
    Mtl* wood = NewDefaultStdMat();
    wood->SetName(L"Wood");
    auto* record = static_cast<ReferenceTarget*>(
        static_cast<Animatable*>(CreateInstance(0x8663DFA6, Class_ID(0x8663DFA6, 0x3F273885))));
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(record->ReplaceReference(0, wood), REF_SUCCEED);
    ASSERT_EQ(full->ReplaceReference(2 + 2, record), REF_SUCCEED);
    listener.Clear();
    ASSERT_EQ(InterfaceOf(full)->Invoke(5, &mode), FPS_OK);
    const std::wstring text = listener.Text();
    EXPECT_NE(text.find(L"\nRefNode: NULL\n\n\nRefNode: NULL\n\n\nRefMaterial: Wood - "), std::wstring::npos) << text;
    EXPECT_EQ(text.find(L"RefMaterial: NULL"), std::wstring::npos) << text;
    full->DeleteThis();
}

TEST_F(Helper, ChunksRoundTripAndKeepDeletedLayersAsEmptyEntries) {
    ReferenceTarget* helper = NewHelper(TRUE);
    const Bytes full = FullHelperBytes();
    ASSERT_EQ(LoadInto(helper, full.Get()), IO_OK);
    EXPECT_EQ(helper->NumRefs(), 2 + 2 + 1 + 1);
    EXPECT_EQ(helper->GetReference(6), nullptr);
    // The layer entry gets its layer the way the host restores references after loading the chunks.
    ILayer* walls = GetCOREInterface()->GetLayerManager()->CreateLayer(L"Walls");
    ASSERT_NE(walls, nullptr);
    ASSERT_EQ(helper->ReplaceReference(5, walls), REF_SUCCEED);
    EXPECT_EQ(helper->GetReference(5), walls);
    EXPECT_EQ(SavedBy(helper), full.Get());

    // The layer leaves the scene; its entry stays, empty: counted, but without a name chunk.
    ASSERT_TRUE(GetCOREInterface()->GetLayerManager()->DeleteLayer(L"Walls"));
    EXPECT_EQ(helper->NumRefs(), 2 + 2 + 1 + 1);
    EXPECT_EQ(helper->GetReference(5), nullptr);
    Bytes dropped;
    dropped.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0027, std::uint64_t(0x01D9A0B0C0D0E0F0ull));
    dropped.Chunk(0x0001, std::int32_t(2)).Chunk(0x0002, std::int32_t(1));
    dropped.Chunk(0x0003, std::int32_t(2)).Text(0x0004, L"Box01").Text(0x0004, L"Sphere02");
    dropped.Chunk(0x0005, std::int32_t(2))
        .Wrapped(0x0006, Renamed(L"Walls", L"Ref_Walls", 0))
        .Wrapped(0x0006, Renamed(L"Props", L"Stage", 1));
    dropped.Chunk(0x0025, std::int32_t(1));
    EXPECT_EQ(SavedBy(helper), dropped.Get());
    helper->DeleteThis();

    // A first chunk other than the format version, and a damaged chunk, fail the load.
    ReferenceTarget* bad = NewHelper(TRUE);
    EXPECT_EQ(LoadInto(bad, Bytes().Chunk(0x0001, std::int32_t(0)).Get()), IO_ERROR);
    std::vector<std::uint8_t> cut = full.Get();
    cut.resize(cut.size() - 3);
    ReferenceTarget* truncated = NewHelper(TRUE);
    EXPECT_EQ(LoadInto(truncated, cut), IO_ERROR);
    bad->DeleteThis();
    truncated->DeleteThis();
}

TEST_F(Helper, SceneFileKeepsParametersAndExactChunks) {
    Interface* ip = GetCOREInterface();
    ReferenceTarget* helper = NewHelper();
    INode* node = ip->CreateObjectNode(dynamic_cast<Object*>(helper));
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(MSTR(node->GetName()), MSTR(L"VandrelsHelper"));
    IParamBlock2* pb = BlockOf(helper);
    pb->SetValue(kFileName, 0, L"walls.max");
    pb->SetValue(kUseNamePrefix, 0, TRUE);
    pb->SetValue(kOverlay, 0, TRUE);
    pb->SetValue(kPersistReloadType, 0, 2);
    pb->SetValue(kActive, 0, FALSE);
    ASSERT_NE(ip->SaveToFile(file_.data()), 0);

    Bytes expected;
    expected.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0027, std::uint64_t(0));
    expected.Chunk(0x0001, std::int32_t(0)).Chunk(0x0002, std::int32_t(0)).Chunk(0x0003, std::int32_t(0));
    expected.Chunk(0x0005, std::int32_t(0)).Chunk(0x0025, std::int32_t(0));
    const auto saved = vtest::SavedDataOf(vtest::ReadSavedObjects(file_), kHelperClass);
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved[0], expected.Get());

    hostrt::Scene::Instance().ResetScene();
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    ReferenceTarget* opened = HelperInScene();
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->ClassID(), kHelperClass);
    IParamBlock2* back = BlockOf(opened);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(MSTR(back->GetStr(kFileName)), MSTR(L"walls.max"));
    EXPECT_EQ(back->GetInt(kUseNamePrefix), TRUE);
    EXPECT_EQ(back->GetInt(kOverlay), TRUE);
    EXPECT_EQ(back->GetInt(kPersistReloadType), 2);
    EXPECT_EQ(back->GetInt(kReloadIfChanged), FALSE);
    EXPECT_EQ(back->GetInt(kActive), TRUE);  // transient: back at its default
}

// Scenes written before the reload type existed (or with the two out of step) open with the matching type.
TEST_F(Helper, OpeningReconcilesTheReloadSettings) {
    Interface* ip = GetCOREInterface();
    const struct {
        int reloadIfChanged, reloadType, opened;
    } cases[] = {{TRUE, 0, 1}, {FALSE, 1, 0}, {TRUE, 2, 2}, {FALSE, 2, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reloadType);
        hostrt::Scene::Instance().ResetScene();
        ReferenceTarget* helper = NewHelper();
        ip->CreateObjectNode(dynamic_cast<Object*>(helper));
        IParamBlock2* pb = BlockOf(helper);
        // Written without the accessor, as an older scene holds them.
        ParamDef& ric = pb->GetDesc()->GetParamDef(kReloadIfChanged);
        ParamDef& prt = pb->GetDesc()->GetParamDef(kPersistReloadType);
        PBAccessor* accessor = ric.accessor;
        ric.accessor = prt.accessor = nullptr;
        pb->SetValue(kReloadIfChanged, 0, c.reloadIfChanged);
        pb->SetValue(kPersistReloadType, 0, c.reloadType);
        ric.accessor = prt.accessor = accessor;
        ASSERT_EQ(pb->GetInt(kPersistReloadType), c.reloadType);
        ASSERT_NE(ip->SaveToFile(file_.data()), 0);
        hostrt::Scene::Instance().ResetScene();
        OperationStarts starts;
        ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
        ReferenceTarget* opened = HelperInScene();
        ASSERT_NE(opened, nullptr);
        EXPECT_EQ(BlockOf(opened)->GetInt(kPersistReloadType), c.opened);
        // A reference whose content was not saved with the scene is loaded, never reloaded.
        EXPECT_EQ(starts.Unloads(), 0);
    }
}

TEST_F(Helper, CloneCopiesParametersOnlyOutsideDuplication) {
    ReferenceTarget* helper = NewHelper(TRUE);
    ASSERT_EQ(LoadInto(helper, FullHelperBytes().Get()), IO_OK);
    ReferenceTarget* fresh = NewHelper();
    BlockOf(fresh)->SetValue(kFileName, 0, L"a.max");
    BlockOf(fresh)->SetValue(kPersistRef, 0, TRUE);
    // Give the loaded helper a block of its own, as the host does after reading the chunks.
    ASSERT_EQ(helper->ReplaceReference(0, CloneRefHierarchy(BlockOf(fresh))), REF_SUCCEED);
    ReferenceTarget* clone = CloneRefHierarchy(helper);
    ASSERT_NE(clone, nullptr);
    ASSERT_NE(BlockOf(clone), BlockOf(helper));
    EXPECT_EQ(MSTR(BlockOf(clone)->GetStr(kFileName)), MSTR(L"a.max"));
    EXPECT_EQ(BlockOf(clone)->GetInt(kPersistRef), TRUE);
    EXPECT_EQ(BlockOf(helper)->GetInt(kSelectedInManager), FALSE);
    EXPECT_EQ(BlockOf(clone)->GetInt(kSelectedInManager), TRUE);
    // No record slots, names to delete, layers or file time travel outside a duplication.
    EXPECT_EQ(clone->NumRefs(), 2);
    Bytes bare;
    bare.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0027, std::uint64_t(0));
    bare.Chunk(0x0001, std::int32_t(0)).Chunk(0x0002, std::int32_t(0)).Chunk(0x0003, std::int32_t(0));
    bare.Chunk(0x0005, std::int32_t(0)).Chunk(0x0025, std::int32_t(0));
    EXPECT_EQ(SavedBy(clone), bare.Get());
    clone->DeleteThis();
    helper->DeleteThis();
    fresh->DeleteThis();
}

TEST_F(Helper, InteractiveCreationColoursPlacesAndEnds) {
    ReferenceTarget* helper = NewHelper();
    hostrt::CreateResult made = hostrt::CreateInteractively(
        dynamic_cast<Object*>(helper), {{MOUSE_POINT, IPoint2(10, 20)}, {MOUSE_MOVE, IPoint2(30, 40)},
                                       {MOUSE_POINT, IPoint2(50, 60)}, {MOUSE_MOVE, IPoint2(70, 80)}});
    ASSERT_NE(made.node, nullptr);
    EXPECT_EQ(made.lastAnswer, CREATE_STOP);
    EXPECT_EQ(made.calls, 3);
    const Point3 c = GetUIColor(20);
    EXPECT_EQ(made.node->GetWireColor(), DWORD(c.x * 255) | DWORD(c.y * 255) << 8 | DWORD(c.z * 255) << 16);
    const Point3 at = made.node->GetNodeTM(0).GetTrans();
    EXPECT_EQ(at.x, 50.0f);
    EXPECT_EQ(at.y, 60.0f);

    ReferenceTarget* aborted = NewHelper();
    hostrt::CreateResult none =
        hostrt::CreateInteractively(dynamic_cast<Object*>(aborted), {{MOUSE_POINT, IPoint2(1, 1)}, {MOUSE_ABORT, IPoint2()}});
    EXPECT_EQ(none.node, nullptr);
    EXPECT_EQ(none.lastAnswer, CREATE_ABORT);
}

namespace {
class AssetRecorder : public IEnumAuxAssetsCallback {
public:
    void RecordAsset(const MaxSDK::AssetManagement::AssetUser& asset) override { recorded.push_back(asset); }
    void DeclareAsset(MaxSDK::AssetManagement::IAssetAccessor& accessor) override {
        declared.push_back(accessor.GetAsset());
        EXPECT_EQ(accessor.GetAssetType(), 7);
        if (retarget) {
            EXPECT_TRUE(accessor.SetAsset(*retarget));
        }
    }
    std::vector<MaxSDK::AssetManagement::AssetUser> recorded, declared;
    const MaxSDK::AssetManagement::AssetUser* retarget = nullptr;
};
}  // namespace

TEST_F(Helper, AssetEnumerationReportsTheFileNames) {
    ReferenceTarget* helper = NewHelper();
    IParamBlock2* pb = BlockOf(helper);
    pb->SetValue(kFileName, 0, L"walls.max");

    AssetRecorder plain;
    helper->EnumAuxFiles(plain, FILE_ENUM_ALL);
    ASSERT_EQ(plain.recorded.size(), 1u);  // the empty proxy is no asset
    EXPECT_EQ(plain.recorded[0].GetFileName(), MSTR(L"walls.max"));
    EXPECT_EQ(plain.recorded[0].GetType(), 7);
    EXPECT_TRUE(plain.declared.empty());

    pb->SetValue(kProxyFileName, 0, L"proxy.max");
    const MaxSDK::AssetManagement::AssetUser moved(L"moved.max", 7);
    AssetRecorder accessors;
    accessors.retarget = &moved;
    helper->ClearAFlag(A_WORK1);
    helper->EnumAuxFiles(accessors, FILE_ENUM_ALL | FILE_ENUM_ACCESSOR_INTERFACE | FILE_ENUM_CHECK_AWORK1);
    ASSERT_EQ(accessors.declared.size(), 2u);
    EXPECT_EQ(accessors.declared[0].GetFileName(), MSTR(L"walls.max"));
    EXPECT_EQ(accessors.declared[1].GetFileName(), MSTR(L"proxy.max"));
    EXPECT_TRUE(accessors.recorded.empty());
    EXPECT_EQ(MSTR(pb->GetStr(kFileName)), MSTR(L"moved.max"));
    EXPECT_EQ(MSTR(pb->GetStr(kProxyFileName)), MSTR(L"moved.max"));

    // Visited once per enumeration.
    AssetRecorder again;
    helper->EnumAuxFiles(again, FILE_ENUM_ALL | FILE_ENUM_CHECK_AWORK1);
    EXPECT_TRUE(again.recorded.empty());
    helper->ClearAFlag(A_WORK1);
    helper->DeleteThis();
}
