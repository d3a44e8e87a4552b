// Function publishing: core-interface registration, script calls (arguments, keywords, indices, errors),
// properties, mixins found through class descriptors, and FPValue ownership.
#include "core/class_directory.h"
#include "core/fnpub.h"
#include "ifnpub.h"
#include "max.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

constexpr Interface_ID kCoreId(0x7E57F001, 0x00000001);
enum : FunctionID { fnAdd, fnFlags, fnIndices, fnAt, fnFind, fnMissing, fnGetWarn = 20, fnSetWarn, fnGetCount };

// A static core interface shaped like the plug-in's: keywords with defaults and "none" defaults, index
// parameters and results, a function described but not dispatched, a read-write and a read-only property.
class TestCore : public FPStaticInterface {
public:
    TestCore() : FPStaticInterface(kCoreId, L"TestCore", 0, nullptr, FP_CORE) {
        AppendFunction(fnAdd, L"Add", TYPE_INT,
                       {FPParamDef(L"a", TYPE_INT), FPParamDef(L"b", TYPE_INT).Keyword(FPValue(10))})
            .AppendFunction(fnFlags, L"Flags", TYPE_VOID,
                            {FPParamDef(L"selection", TYPE_INT).Keyword(FPValue(1)),
                             FPParamDef(L"category", TYPE_BITARRAY).KeywordNone(),
                             FPParamDef(L"nodes", TYPE_INODE_TAB).KeywordNone(),
                             FPParamDef(L"references", TYPE_INDEX_TAB).KeywordNone(),
                             FPParamDef(L"mode", TYPE_INDEX).Keyword(FPValue(TYPE_INDEX, 0))})
            .AppendFunction(fnIndices, L"Indices", TYPE_INDEX_TAB_BV, {FPParamDef(L"array of indices", TYPE_INDEX_TAB)})
            .AppendFunction(fnAt, L"At", TYPE_INT, {FPParamDef(L"index", TYPE_INDEX)})
            .AppendFunction(fnFind, L"Find", TYPE_INDEX, {FPParamDef(L"value", TYPE_INT)})
            .AppendFunction(fnMissing, L"Missing", TYPE_VOID)
            .AppendProperty(fnGetWarn, fnSetWarn, L"Warn", TYPE_BOOL)
            .AppendProperty(fnGetCount, FP_NO_FUNCTION, L"Count", TYPE_INT);
    }

    Tab<int> items{5, 6, 7};
    BOOL warn = TRUE;
    FPParams last;  // the parameters of the last call, as the function saw them

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        last = *p;
        switch (fid) {
        case fnAdd: result = FPValue(p->params[0].i + p->params[1].i); break;
        case fnFlags: break;
        case fnIndices: result = FPValue(*p->params[0].i_tab, TYPE_INDEX_TAB_BV); break;
        case fnAt: result = FPValue(items[p->params[0].i]); break;
        case fnFind: result = FPValue(TYPE_INDEX, items.IndexOf(p->params[0].i)); break;
        case fnGetWarn: result = FPValue(TYPE_BOOL, warn); break;
        case fnSetWarn: warn = p->params[0].i; break;
        case fnGetCount: result = FPValue(items.Count()); break;
        default: return FPS_NO_SUCH_FUNCTION;
        }
        return FPS_OK;
    }
};

TestCore theTestCore;  // registers during static initialisation, as a plug-in library's interface does

FPValue Call(const MCHAR* name, std::vector<FPValue> positional, hostrt::FPKeywordArgs keywords = {}) {
    FPValue result;
    hostrt::CallFromScript(&theTestCore, name, std::move(positional), std::move(keywords), result);
    return result;
}

// The message of the MAXException that f throws; fails the test when it throws none.
template <class F> std::wstring ErrorOf(F&& f) {
    try {
        f();
    } catch (const MAXException& e) {
        return e.message.str();
    }
    ADD_FAILURE() << "no MAXException thrown";
    return {};
}

std::vector<int> Ints(const Tab<int>* tab) { return tab ? tab->vec() : std::vector<int>{}; }

}  // namespace

TEST(FnPubCore, StaticInterfaceIsFoundByIdAndNameUntilDestroyed) {
    EXPECT_EQ(GetCOREInterface(kCoreId), &theTestCore);
    EXPECT_EQ(hostrt::FindCoreInterface(L"tESTcORE"), &theTestCore);
    const auto all = hostrt::CoreInterfaces();
    EXPECT_NE(std::find(all.begin(), all.end(), &theTestCore), all.end());
    EXPECT_EQ(GetCOREInterface(Interface_ID(0x7E57F001, 0xDEAD)), nullptr);
    EXPECT_EQ(hostrt::FindCoreInterface(L"NoSuchInterface"), nullptr);

    {
        FPStaticInterface duplicate(kCoreId, L"Duplicate");  // same id: the first registration wins
        FPStaticInterface other(Interface_ID(0x7E57F001, 2), L"Other");
        EXPECT_EQ(GetCOREInterface(kCoreId), &theTestCore);
        EXPECT_EQ(hostrt::FindCoreInterface(L"Duplicate"), nullptr);
        EXPECT_EQ(hostrt::FindCoreInterface(L"other"), &other);
    }
    EXPECT_EQ(hostrt::FindCoreInterface(L"other"), nullptr);  // unregistered by its destructor
}

TEST(FnPubDesc, MalformedDescriptionsAreRefusedWithTheirContext) {
    FPInterfaceDesc desc(Interface_ID(0x7E57F002, 1), L"Checked");
    desc.AppendFunction(1, L"One", TYPE_VOID).AppendProperty(2, 3, L"Prop", TYPE_INT);

    EXPECT_NE(ErrorOf([&] { desc.AppendFunction(3, L"Two", TYPE_VOID); }).find(L"already used by property \"Prop\""),
              std::wstring::npos);
    EXPECT_NE(ErrorOf([&] { desc.AppendFunction(4, L"one", TYPE_VOID); }).find(L"\"one\" is published twice"),
              std::wstring::npos);
    EXPECT_NE(ErrorOf([&] {
                  desc.AppendFunction(5, L"Five", TYPE_VOID,
                                      {FPParamDef(L"k", TYPE_INT).Keyword(FPValue(1)), FPParamDef(L"p", TYPE_INT)});
              }).find(L"positional parameter \"p\" follows a keyword parameter"),
              std::wstring::npos);
    EXPECT_EQ(ErrorOf([&] {
                  desc.AppendFunction(6, L"Six", TYPE_VOID, {FPParamDef(L"s", TYPE_STRING).Keyword(FPValue(3))});
              }),
              L"Interface \"Checked\", function \"Six\": "
              L"the default of keyword parameter \"s\" is integer, not string");
    EXPECT_EQ(ErrorOf([] { FPParamDef(L"count", TYPE_INT).KeywordNone(); }),
              L"Keyword parameter \"count\" of type integer cannot default to none");
    EXPECT_EQ(desc.functions.size(), 1u);  // nothing refused was added
}

TEST(FnPubCall, PositionalArgumentsKeywordsAndDefaults) {
    EXPECT_EQ(Call(L"add", {FPValue(2)}).i, 12);
    EXPECT_EQ(Call(L"ADD", {FPValue(2)}, {{L"B", FPValue(5)}}).i, 7);
    EXPECT_EQ(Call(L"Add", {FPValue(2.0f)}).i, 12);  // an integral float is taken for an integer

    EXPECT_EQ(ErrorOf([] { Call(L"Add", {}); }), L"Argument count error: TestCore.Add wanted 1, got 0");
    EXPECT_EQ(ErrorOf([] { Call(L"Add", {FPValue(1), FPValue(2)}); }),
              L"Argument count error: TestCore.Add wanted 1, got 2");
    EXPECT_EQ(ErrorOf([] { Call(L"Add", {FPValue(1)}, {{L"c", FPValue(1)}}); }),
              L"Unknown keyword argument \"c\" in call to TestCore.Add");
    EXPECT_EQ(ErrorOf([] { Call(L"Add", {FPValue(L"x")}); }),
              L"Type error: TestCore.Add argument 1 (a) wanted integer, got string");
    EXPECT_EQ(ErrorOf([] { Call(L"Subtract", {}); }), L"Unknown function \"Subtract\" in interface TestCore");
}

TEST(FnPubCall, NoneDefaultsArriveAsNullAndGivenEmptyArraysDoNot) {
    Call(L"Flags", {});
    const auto& absent = theTestCore.last.params;
    ASSERT_EQ(theTestCore.last.Count(), 5);
    EXPECT_EQ(absent[0].i, 1);
    EXPECT_EQ(absent[1].type, TYPE_BITARRAY);
    EXPECT_EQ(absent[1].bits, nullptr);
    EXPECT_EQ(absent[2].n_tab, nullptr);
    EXPECT_EQ(absent[3].i_tab, nullptr);
    EXPECT_EQ(absent[4].i, 0);  // a default is given in C++ terms: an index default is not shifted

    Call(L"Flags", {}, {{L"category", FPValue(BitArray())}, {L"nodes", FPValue()}, {L"references", FPValue(Tab<int>{})},
                        {L"mode", FPValue(2)}});
    const auto& given = theTestCore.last.params;
    ASSERT_NE(given[1].bits, nullptr);
    EXPECT_EQ(given[1].bits->GetSize(), 0);
    EXPECT_EQ(given[2].n_tab, nullptr);  // "undefined" stands for none
    ASSERT_NE(given[3].i_tab, nullptr);
    EXPECT_EQ(given[3].i_tab->Count(), 0);
    EXPECT_EQ(given[4].i, 1);

    EXPECT_EQ(ErrorOf([] { Call(L"Flags", {}, {{L"selection", FPValue(1)}, {L"Selection", FPValue(2)}}); }),
              L"Keyword argument \"Selection\" given twice in call to TestCore.Flags");
}

TEST(FnPubCall, IndicesAreOneBasedInScriptsAndZeroBasedInCpp) {
    const FPValue echoed = Call(L"Indices", {FPValue(Tab<int>{0, 1, 99})});
    EXPECT_EQ(Ints(theTestCore.last.params[0].i_tab), (std::vector<int>{-1, 0, 98}));
    EXPECT_EQ(theTestCore.last.params[0].type, TYPE_INDEX_TAB);
    EXPECT_EQ(echoed.type, TYPE_INDEX_TAB_BV);
    EXPECT_EQ(Ints(echoed.i_tab), (std::vector<int>{0, 1, 99}));

    EXPECT_EQ(Call(L"At", {FPValue(1)}).i, 5);
    EXPECT_EQ(theTestCore.last.params[0].i, 0);
    const FPValue found = Call(L"Find", {FPValue(7)});
    EXPECT_EQ(found.type, TYPE_INDEX);
    EXPECT_EQ(found.i, 3);
}

TEST(FnPubCall, StatusesAndExceptionsBecomeErrorsWithTheirMessages) {
    FPValue result;
    EXPECT_EQ(theTestCore.Invoke(99, result), FPS_NO_SUCH_FUNCTION);
    EXPECT_EQ(theTestCore.Invoke(fnMissing, result), FPS_NO_SUCH_FUNCTION);
    EXPECT_EQ(ErrorOf([] { Call(L"Missing", {}); }), L"TestCore.Missing: no such function (id 5)");
    EXPECT_EQ(ErrorOf([&] { hostrt::CallFromScript(&theTestCore, FunctionID(99), {}, {}, result); }),
              L"TestCore function 99: no such function (id 99)");

    try {
        Call(L"At", {FPValue(4)});
        ADD_FAILURE() << "an out-of-range index must throw";
    } catch (const MaxSDK::Util::OutOfRangeException& e) {
        EXPECT_EQ(e.message, L"Invalid index passed into a Max SDK Tab::operator[]");
    }
    // A parameter the caller did not pass is the array's out-of-range error, not a crash.
    EXPECT_EQ(ErrorOf([&] { theTestCore.Invoke(fnAt, result); }),
              L"Argument index out of bounds, passed into a MaxSDK::Array::operator[]");
}

TEST(FnPubCall, PropertiesReadAndWriteThroughTheirFunctions) {
    theTestCore.warn = TRUE;
    const FPValue warn = hostrt::GetPropertyFromScript(&theTestCore, L"warn");
    EXPECT_EQ(warn.type, TYPE_BOOL);
    EXPECT_EQ(warn.i, TRUE);
    hostrt::SetPropertyFromScript(&theTestCore, L"Warn", FPValue(false));
    EXPECT_EQ(theTestCore.warn, FALSE);
    EXPECT_EQ(hostrt::GetPropertyFromScript(&theTestCore, L"Count").i, 3);

    EXPECT_EQ(ErrorOf([] { hostrt::SetPropertyFromScript(&theTestCore, L"count", FPValue(1)); }),
              L"Cannot set read-only property TestCore.Count");
    EXPECT_EQ(ErrorOf([] { hostrt::SetPropertyFromScript(&theTestCore, L"Warn", FPValue(L"yes")); }),
              L"Type error: TestCore.Warn value wanted boolean, got string");
    EXPECT_EQ(ErrorOf([] { hostrt::GetPropertyFromScript(&theTestCore, L"Size"); }),
              L"Unknown property \"Size\" in interface TestCore");
}

namespace {

constexpr Interface_ID kThingOpsId(0x7E57F003, 1);
constexpr Class_ID kThingClass(0x7E57F003, 2);
enum : FunctionID { fnGetName, fnSetName };

class ThingClassDesc : public ClassDesc {
public:
    int IsPublic() override { return 0; }
    void* Create(BOOL) override;
    const MCHAR* ClassName() override { return L"Thing"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kThingClass; }
    const MCHAR* Category() override { return L""; }
};
ThingClassDesc thingClassDesc;

// Listed on the descriptor above by its constructor.
FPInterfaceDesc thingOpsDesc(kThingOpsId, L"ThingOps", 0, &thingClassDesc, FP_MIXIN,
                             {FPFunctionDef(fnGetName, L"GetName", TYPE_STRING),
                              FPFunctionDef(fnSetName, L"SetName", TYPE_VOID, {FPParamDef(L"Name", TYPE_STRING)})});

// An object publishing its mixin, as the plug-in's records do; it can be told to withhold it.
class Thing : public ReferenceTarget, public FPMixinInterface {
public:
    Class_ID ClassID() override { return kThingClass; }
    BaseInterface* GetInterface(Interface_ID id) override {
        if (id == kThingOpsId && offers) return static_cast<FPMixinInterface*>(this);
        return ReferenceTarget::GetInterface(id);
    }
    using ReferenceTarget::GetInterface;
    FPInterfaceDesc* GetDesc() override { return &thingOpsDesc; }

    bool offers = true;
    MSTR name = L"first";

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) override {
        switch (fid) {
        case fnGetName: result = FPValue(name); return FPS_OK;
        case fnSetName: name = p->params[0].s; return FPS_OK;
        default: return FPS_NO_SUCH_FUNCTION;
        }
    }
};

void* ThingClassDesc::Create(BOOL) { return new Thing; }

}  // namespace

TEST(FnPubMixin, ObjectInterfacesAreFoundThroughTheClassDescriptor) {
    static const bool registered = hostrt::ClassDirectory::Instance().Register(&thingClassDesc);
    ASSERT_TRUE(registered);
    EXPECT_EQ(thingClassDesc.GetInterface(kThingOpsId), &thingOpsDesc);
    EXPECT_EQ(thingClassDesc.GetInterface(L"THINGOPS"), &thingOpsDesc);
    EXPECT_EQ(thingClassDesc.GetInterface(kCoreId), nullptr);

    Thing thing;
    FPInterface* const mixin = static_cast<FPMixinInterface*>(&thing);
    EXPECT_EQ(hostrt::FindMixinInterfaces(&thing), std::vector<FPInterface*>{mixin});
    EXPECT_EQ(hostrt::FindObjectInterface(&thing, L"thingops"), mixin);
    const auto [owner, fn] = hostrt::FindObjectFunction(&thing, L"setname");
    ASSERT_NE(fn, nullptr);
    EXPECT_EQ(owner, mixin);
    EXPECT_EQ(fn->ID, fnSetName);

    FPValue result;
    hostrt::CallFromScript(owner, fn->ID, {FPValue(L"second")}, {}, result);
    hostrt::CallFromScript(mixin, L"GetName", {}, {}, result);
    ASSERT_EQ(result.type, TYPE_STRING);
    EXPECT_STREQ(result.s, L"second");

    thing.offers = false;  // listed on the descriptor, but not answered by this object
    EXPECT_TRUE(hostrt::FindMixinInterfaces(&thing).empty());
    EXPECT_EQ(hostrt::FindObjectInterface(&thing, L"ThingOps"), nullptr);
}

TEST(FnPubValue, CopiesOwnTheirContentAndNoneDiffersFromEmpty) {
    BitArray bits(4);
    bits.Set(2);
    FPValue original(bits);
    FPValue copy(original);
    original.bits->Set(0);
    EXPECT_EQ(copy.bits->NumberSet(), 1);
    EXPECT_NE(copy.bits, original.bits);

    FPValue text(L"abc");
    FPValue assigned;
    assigned = text;
    text = FPValue(L"changed");
    EXPECT_STREQ(assigned.s, L"abc");

    FPValue strings(Tab<const MCHAR*>{L"x", L"y"});
    FPValue stringsCopy = strings;
    EXPECT_NE((*stringsCopy.s_tab)[1], (*strings.s_tab)[1]);
    EXPECT_STREQ((*stringsCopy.s_tab)[1], L"y");

    FPValue moved(std::move(copy));
    EXPECT_EQ(copy.type, TYPE_VOID);
    EXPECT_EQ(moved.bits->NumberSet(), 1);

    EXPECT_TRUE(FPValue::Null(TYPE_BITARRAY).IsNull());
    EXPECT_FALSE(FPValue(BitArray()).IsNull());
    EXPECT_THROW(FPValue::Null(TYPE_INT), MAXException);
    EXPECT_THROW(FPValue(TYPE_STRING, 3), MAXException);
}
