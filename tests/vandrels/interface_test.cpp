// The global scripting interface `Vandrels`: its published table, the helper list and adding references,
// driven as scripts drive it; and the naming and index rules it relies on. The bulk operations, the advanced
// reset, the file dialog, the manager requests and the about box are in interface_operations_test.cpp.
#include "vandrels_library.h"

#include "ifnpub.h"
#include "ilayer.h"
#include "inode.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "maxexception.h"
#include "maxscript/maxscript.h"
#include "istdplug.h"
#include "object.h"
#include "plugapi.h"

#include "core/class_directory.h"

#include <gtest/gtest.h>

#include <string>

// The pure rules are built into the tests too (tests/CMakeLists.txt) and called directly.
#include "helper/name_increment.h"
#include "script/index_list.h"
#include "script/reset_mask.h"

namespace {

const Interface_ID kVandrelsId(0x9663dfa5, 0x4f273881);

// Runs a script text and answers its value; a script error fails the test.
FPValue RunScript(const std::wstring& text) {
    FPValue value;
    EXPECT_TRUE(ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &value, TRUE)) << WStr(text).ToUTF8();
    return value;
}
std::wstring RunString(const std::wstring& text) {
    FPValue v = RunScript(text);
    return v.type == TYPE_STRING && v.s ? v.s : L"<not a string>";
}
// A plain box node: a scene node that is not a helper.
INode* AddBox(const wchar_t* name) {
    auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    EXPECT_NE(box, nullptr);
    INode* node = box ? GetCOREInterface()->CreateObjectNode(box) : nullptr;
    if (node) node->SetName(name);
    return node;
}
bool RunBool(const std::wstring& text) {
    FPValue v = RunScript(text);
    EXPECT_EQ(v.type, TYPE_BOOL) << WStr(text).ToUTF8();
    return v.type == TYPE_BOOL && v.i;
}

class VandrelsInterfaceTest : public ::testing::Test {
protected:
    void SetUp() override {
        vtest::VandrelsLibrary();
        hostrt::RegisterBuiltinClasses();  // the host's own objects, as maxhost has them
        GetCOREInterface()->FileReset(TRUE);
        fpi_ = GetCOREInterface(kVandrelsId);
        ASSERT_NE(fpi_, nullptr);
    }
    void TearDown() override { GetCOREInterface()->FileReset(TRUE); }
    // The names of the helper list, in order, joined with ",".
    static std::wstring HelperNames() { return RunString(L"s = \"\"; for n in Vandrels.GetAllVandrels() do s += n.name + \",\"; s"); }

    FPInterface* fpi_ = nullptr;
};

TEST_F(VandrelsInterfaceTest, PublishesItsTableAsACoreInterface) {
    FPInterfaceDesc* desc = fpi_->GetDesc();
    EXPECT_EQ(desc->internal_name, MSTR(L"Vandrels"));
    EXPECT_EQ(desc->flags, ULONG(FP_CORE));
    EXPECT_EQ(desc->description, 0);
    EXPECT_EQ(desc->functions.size(), 21u);

    const FPFunctionDef* add = desc->GetFnDef(FunctionID(0));
    ASSERT_NE(add, nullptr);
    EXPECT_EQ(add->internal_name, MSTR(L"AddVandrel"));
    EXPECT_EQ(add->result_type, TYPE_INODE);
    const wchar_t* addParams[] = {L"fileName", L"proxyFileName", L"load", L"active", L"proxyViewport", L"proxyRender"};
    const int addDefaults[] = {0, 0, 1, 1, 0, 0};
    ASSERT_EQ(add->params.size(), 6u);
    EXPECT_EQ(add->NumPositional(), 1);
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(add->params[i].internal_name, MSTR(addParams[i]));
        if (i >= 2) {
            EXPECT_EQ(add->params[i].defaultValue.i, addDefaults[i]) << i;
        }
    }
    for (FunctionID fid = 6; fid <= 10; ++fid) {
        const FPFunctionDef* fn = desc->GetFnDef(fid);
        ASSERT_NE(fn, nullptr);
        ASSERT_EQ(fn->params.size(), 1u);
        EXPECT_EQ(fn->params[0].internal_name, MSTR(L"array of indices"));
        EXPECT_EQ(fn->params[0].type, TYPE_INDEX_TAB);
    }
    const FPFunctionDef* reset = desc->GetFnDef(FunctionID(27));
    ASSERT_NE(reset, nullptr);
    EXPECT_EQ(reset->NumKeyword(), 5);
    EXPECT_TRUE(reset->params[1].defaultValue.IsNull());  // category: none, unlike an empty bit array
    ASSERT_EQ(desc->props.size(), 2u);
    EXPECT_EQ(desc->props[0].getter_ID, 23);
    EXPECT_EQ(desc->props[0].internal_name, MSTR(L"ShowDuplicatedNamesWarning"));
    EXPECT_EQ(desc->props[1].setter_ID, 26);
    EXPECT_EQ(desc->props[1].internal_name, MSTR(L"SaveVandrelsAsMerged"));
}

TEST_F(VandrelsInterfaceTest, DispatcherRefusesUnknownIdsAndMissingParameters) {
    for (FunctionID fid : {FunctionID(-1), FunctionID(15), FunctionID(16), FunctionID(18), FunctionID(28)}) {
        FPValue result;
        EXPECT_EQ(fpi_->Invoke(fid, result), FPS_NO_SUCH_FUNCTION) << fid;
    }
    FPValue result;
    FPParams none;
    try {
        fpi_->Invoke(FunctionID(3), result, &none);
        ADD_FAILURE() << "GetVandrel without its index ran";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.message, MSTR(L"Argument index out of bounds, passed into a MaxSDK::Array::operator[]"));
    }
    EXPECT_EQ(fpi_->Invoke(FunctionID(2), result, &none), FPS_OK);
    EXPECT_EQ(result.type, TYPE_INT);
}

TEST_F(VandrelsInterfaceTest, AnEmptySceneHasNoHelpers) {
    EXPECT_TRUE(RunBool(L"Vandrels.NumVandrels() == 0"));
    EXPECT_TRUE(RunBool(L"(Vandrels.GetVandrel 1) == undefined"));
    EXPECT_TRUE(RunBool(L"(Vandrels.GetAllVandrels()).count == 0"));
    AddBox(L"chair");  // other nodes are not helpers
    EXPECT_TRUE(RunBool(L"Vandrels.NumVandrels() == 0"));
}

TEST_F(VandrelsInterfaceTest, AddVandrelNamesFreezesLayersAndWritesParameters) {
    ILayerManager* layers = GetCOREInterface()->GetLayerManager();
    ASSERT_NE(layers->CreateLayer(L"props"), nullptr);
    ASSERT_TRUE(layers->SetCurrentLayer(L"props"));
    RunScript(L"Vandrels.AddVandrel @\"C:\\scenes\\chair.max\" load:false");
    RunScript(L"Vandrels.AddVandrel \"/scenes/chair.max\" load:false proxyFileName:\"chair_proxy.max\" "
        L"active:false proxyViewport:true proxyRender:true");
    RunScript(L"Vandrels.AddVandrel \"chair.max\" load:false");
    RunScript(L"Vandrels.AddVandrel \"Chair.max\" load:false");  // names compare case-sensitively
    EXPECT_EQ(HelperNames(), L"chair,chair001,chair002,Chair,");
    EXPECT_TRUE(RunBool(L"Vandrels.NumVandrels() == 4"));
    EXPECT_TRUE(RunBool(L"(Vandrels.GetVandrel 2).name == \"chair001\""));
    EXPECT_TRUE(RunBool(L"(Vandrels.GetVandrel 5) == undefined and (Vandrels.GetVandrel 0) == undefined"));

    INode* first = GetCOREInterface()->GetINodeByName(L"chair");
    INode* second = GetCOREInterface()->GetINodeByName(L"chair001");
    ASSERT_TRUE(first && second);
    EXPECT_TRUE(first->IsFrozen());
    EXPECT_EQ(second->GetLayer(), layers->GetLayer(MSTR(L"props")));
    IParamBlock2* pb = first->GetObjectRef()->GetParamBlock(0);
    ASSERT_NE(pb, nullptr);
    EXPECT_EQ(pb->GetInt(0), 1);
    EXPECT_EQ(MSTR(pb->GetStr(1)), MSTR(L"C:\\scenes\\chair.max"));
    EXPECT_EQ(MSTR(pb->GetStr(2)), MSTR(L""));
    EXPECT_EQ(pb->GetInt(3) + pb->GetInt(4), 0);
    pb = second->GetObjectRef()->GetParamBlock(0);
    EXPECT_EQ(pb->GetInt(0), 0);
    EXPECT_EQ(MSTR(pb->GetStr(1)), MSTR(L"/scenes/chair.max"));
    EXPECT_EQ(MSTR(pb->GetStr(2)), MSTR(L"chair_proxy.max"));
    EXPECT_EQ(pb->GetInt(3), 1);
    EXPECT_EQ(pb->GetInt(4), 1);
    layers->SetCurrentLayer(L"0");
}

TEST_F(VandrelsInterfaceTest, NamesComeFromTheFileAndIncrementAmongHelpersOnly) {
    AddBox(L"lamp");
    for (const wchar_t* file : {L"lamp.max", L"D:\\a\\tree.old.max", L"Box9.max", L"Box9.max", L"Box9.max",
                                L"Box999.max", L"Box999.max", L"/x/noext", L"C:\\folder\\", L"/folder/"})
        RunScript(std::wstring(L"Vandrels.AddVandrel @\"") + file + L"\" load:false");
    EXPECT_EQ(HelperNames(), L"lamp,tree,Box9,Box010,Box011,Box999,Box1000,noext,VandrelsHelper,VandrelsHelper001,");
}

TEST_F(VandrelsInterfaceTest, HelperListFollowsTheSceneDepthFirstNotCreationOrder) {
    RunScript(L"Vandrels.AddVandrel \"a.max\" load:false; Vandrels.AddVandrel \"b.max\" load:false;"
        L"Vandrels.AddVandrel \"c.max\" load:false");
    Interface* ip = GetCOREInterface();
    INode* a = ip->GetINodeByName(L"a");
    INode* c = ip->GetINodeByName(L"c");
    INode* box = AddBox(L"parent");
    ASSERT_TRUE(a && c && box);
    c->AttachChild(a);  // root: b, c (a), parent
    EXPECT_EQ(HelperNames(), L"b,c,a,");
    box->AttachChild(c);  // root: b, parent (c (a))
    RunScript(L"Vandrels.AddVandrel \"d.max\" load:false");
    EXPECT_EQ(HelperNames(), L"b,c,a,d,");
    EXPECT_TRUE(RunBool(L"(Vandrels.GetVandrel 2).name == \"c\" and (Vandrels.GetVandrel 3).name == \"a\""));
}

TEST(VandrelsRules, NameIncrement) {
    using vandrels::IncrementName;
    EXPECT_EQ(IncrementName(L"Box"), MSTR(L"Box001"));
    EXPECT_EQ(IncrementName(L"Box001"), MSTR(L"Box002"));
    EXPECT_EQ(IncrementName(L"Box9"), MSTR(L"Box010"));
    EXPECT_EQ(IncrementName(L"Box999"), MSTR(L"Box1000"));
    EXPECT_EQ(IncrementName(L"Box0099"), MSTR(L"Box0100"));
    EXPECT_EQ(IncrementName(L"A12B"), MSTR(L"A12B001"));
    EXPECT_EQ(IncrementName(L"99999999999999999999"), MSTR(L"100000000000000000000"));
    EXPECT_EQ(IncrementName(L""), MSTR(L"001"));
    EXPECT_EQ(vandrels::kMaxNameIncrements, 10000000);
    long asked = 0;
    const MSTR last = vandrels::MakeUniqueName(L"x", [&asked](const MSTR&) { return ++asked > 0; }, 1000);
    EXPECT_EQ(asked, 1000);  // gives up, taking the last candidate
    EXPECT_EQ(last, MSTR(L"x1000"));
    EXPECT_EQ(vandrels::MakeUniqueName(L"x", [](const MSTR& n) { return n != MSTR(L"x003"); }), MSTR(L"x003"));
}

TEST(VandrelsRules, IndexListsSkipOutOfRangeAndKeepRepeats) {
    const Tab<int> indices{-1, 0, 98, 1, 1, 2};
    EXPECT_EQ(vandrels::ValidIndices(&indices, 2), (std::vector<int>{0, 1, 1}));
    EXPECT_TRUE(vandrels::ValidIndices(&indices, 0).empty());
    EXPECT_TRUE(vandrels::ValidIndices(nullptr, 5).empty());
    const std::vector<char> items{'a', 'b', 'c'};
    EXPECT_EQ(vandrels::ItemsAt(&indices, items), (std::vector<char>{'a', 'b', 'b', 'c'}));
}

TEST(VandrelsRules, ResetMaskFromBitArrays) {
    using vandrels::BuildResetMask;
    EXPECT_EQ(BuildResetMask(nullptr, nullptr), 0xFFFF8u);
    BitArray empty;
    EXPECT_EQ(BuildResetMask(&empty, nullptr), 0xFF800u);  // an empty array is not an absent one
    BitArray categories(10);
    categories.Set(0);
    categories.Set(7);
    categories.Set(9);  // past Bone Objects: ignored
    BitArray parameters(12);
    parameters.Set(3);
    parameters.Set(8);
    parameters.Set(11);
    EXPECT_EQ(BuildResetMask(&categories, &parameters), 0x8u | 0x400u | 0x4000u | 0x80000u);
}

}  // namespace
