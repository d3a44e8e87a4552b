// The reference record through the host: binding a node record to a scene node builds its animatable records
// from the node's sub-anims as the classifier decides, deep hierarchies are cut, and the "RefBase" and
// "RefNode" interfaces expose the records.
#include "vandrels_library.h"

#include "core/class_directory.h"
#include "core/fnpub.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxexception.h"
#include "object.h"
#include "plugapi.h"
#include "scene/identity_class.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

const Class_ID kRefBaseClass(0x8663DFA6, 0x3F273883);
const Class_ID kRefNodeClass(0x8663DFA6, 0x3F273884);
constexpr SClass_ID kRecordSuperClass = 0x8663DFA6;
constexpr SClass_ID kRefAnimSuperClass = 0x8663DFA8;

ReferenceTarget* MakeRecord(const Class_ID& cid) {
    return static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuperClass, cid)));
}

FPValue Call(ReferenceTarget* record, const MCHAR* iface, const MCHAR* fn, std::vector<FPValue> args = {}) {
    FPInterface* fpi = hostrt::FindObjectInterface(record, iface);
    EXPECT_NE(fpi, nullptr) << "no interface";
    FPValue result;
    if (fpi) hostrt::CallFromScript(fpi, fn, std::move(args), {}, result);
    return result;
}

// The first parts of the class ids of a record's animatable records.
std::multiset<ULONG> RecordKinds(ReferenceTarget* record) {
    std::multiset<ULONG> kinds;
    for (int i = 1; i < record->NumRefs(); ++i) {
        ReferenceTarget* ref = record->GetReference(i);
        if (!ref) continue;
        EXPECT_EQ(ref->SuperClassID(), kRefAnimSuperClass) << "reference " << i;
        kinds.insert(ref->ClassID().PartA());
    }
    return kinds;
}

class RefBaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        vtest::VandrelsLibrary();
        hostrt::RegisterBuiltinClasses();
        GetCOREInterface()->FileReset(TRUE);
    }
    void TearDown() override { GetCOREInterface()->FileReset(TRUE); }

    INode* AddBox(bool withBend) {
        auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
        INode* node = GetCOREInterface()->CreateObjectNode(box);
        if (withBend) {
            auto* bend = static_cast<Modifier*>(static_cast<Animatable*>(CreateInstance(OSM_CLASS_ID, HOST_BEND_CLASS_ID)));
            EXPECT_TRUE(GetCOREInterface()->AddModifier(*node, *bend));
        }
        return node;
    }
};

TEST_F(RefBaseTest, BindingANodeMakesTheRecordsTheClassifierAsksFor) {
    INode* node = AddBox(true);
    ReferenceTarget* record = MakeRecord(kRefNodeClass);
    ASSERT_NE(record, nullptr);
    // Unbound: the target slot and the node record's material, parent, layer and local-dependent slots.
    EXPECT_EQ(record->NumRefs(), 5);
    EXPECT_EQ(record->GetReference(0), nullptr);
    EXPECT_EQ(Call(record, L"RefNode", L"NumRefAnims").i, 0);

    record->ReplaceReference(0, node);
    EXPECT_EQ(record->GetReference(0), node);
    // The node's transform (PRS under a node: 0x00030027), its rotation (Euler: 0x00030026), the bend below
    // the node's derived object (0x00030015) and the box as base object (0x00030009).
    const std::multiset<ULONG> kinds = RecordKinds(record);
    for (ULONG kind : {0x00030027u, 0x00030026u, 0x00030015u, 0x00030009u})
        EXPECT_EQ(kinds.count(kind), 1u) << std::hex << "kind 0x" << kind;
    const int count = Call(record, L"RefNode", L"NumRefAnims").i;
    EXPECT_EQ(record->NumRefs(), 5 + count);
    EXPECT_EQ(record->GetReference(record->NumRefs()), nullptr);
    EXPECT_EQ(Call(record, L"RefBase", L"NumRefAnims").i, count);

    // Rebinding to a plain box without modifier: the bend's record is not made again.
    INode* other = AddBox(false);
    record->ReplaceReference(0, other);
    const std::multiset<ULONG> rebound = RecordKinds(record);
    EXPECT_EQ(rebound.count(0x00030027u), 2u) << "the second node's transform has its own record";
    EXPECT_EQ(rebound.count(0x00030015u), 1u);
    record->DeleteMe();
}

TEST_F(RefBaseTest, TheScriptingInterfacesAddressTheRecordList) {
    INode* node = AddBox(false);
    ReferenceTarget* record = MakeRecord(kRefNodeClass);
    record->ReplaceReference(0, node);
    const int count = Call(record, L"RefBase", L"NumRefAnims").i;
    ASSERT_GT(count, 0);

    EXPECT_EQ(Call(record, L"RefBase", L"GetRefAnim", {FPValue(0)}).r, record->GetReference(1));
    for (int outside : {-1, count}) {  // an empty reference target: undefined in MAXScript
        const FPValue answer = Call(record, L"RefBase", L"GetRefAnim", {FPValue(outside)});
        EXPECT_EQ(answer.type, TYPE_REFTARG);
        EXPECT_EQ(answer.r, nullptr);
    }

    // "RefNode" counts from 1 and refuses an index past the list.
    EXPECT_EQ(Call(record, L"RefNode", L"GetRefAnim", {FPValue(count)}).r, record->GetReference(count));
    try {
        Call(record, L"RefNode", L"GetRefAnim", {FPValue(count + 1)});
        ADD_FAILURE() << "an index past the list must fail";
    } catch (const MAXException& e) {
        EXPECT_NE(e.message.find(L"Invalid index passed into a Max SDK Tab::operator[]"), std::wstring::npos)
            << e.message.ToUTF8();
    }

    Call(record, L"RefNode", L"SetName", {FPValue(L"Box001")});
    FPValue name = Call(record, L"RefNode", L"GetName");
    ASSERT_EQ(name.type, TYPE_STRING);
    EXPECT_EQ(std::wstring(name.s), L"Box001");
    record->DeleteMe();
}

// A chain of walked float controllers, each holding the next as its only sub-anim, ending in a controller
// that gets a plain record (0x00010001) at the given depth below the top.
ReferenceTarget* MakeChain(int leafDepth) {
    const Class_ID walked(0x094E2D9C, 0x02C702B5);
    ReferenceTarget* leaf = hostrt::IdentityClass::Make(0x9003, Class_ID(0x118F7E02, 0xFEEE238B));
    ReferenceTarget* below = leaf;
    for (int level = leafDepth - 1; level >= 0; --level) {
        ReferenceTarget* t = hostrt::IdentityClass::Make(0x9003, walked);
        hostrt::IdentityClass::Of(t)->SetNumRefs(1);
        hostrt::IdentityClass::Of(t)->AddSubAnim(0, L"Sub");
        t->ReplaceReference(0, below);
        below = t;
    }
    return below;
}

TEST_F(RefBaseTest, HierarchiesDeeperThanAHundredLevelsAreCut) {
    for (int depth : {100, 101}) {
        ReferenceTarget* top = MakeChain(depth);
        ReferenceTarget* record = MakeRecord(kRefBaseClass);
        record->ReplaceReference(0, top);
        const std::multiset<ULONG> kinds = RecordKinds(record);
        EXPECT_EQ(kinds.count(0x00010001u), depth <= 100 ? 1u : 0u) << "leaf at depth " << depth;
        record->DeleteMe();
    }
}

}  // namespace
