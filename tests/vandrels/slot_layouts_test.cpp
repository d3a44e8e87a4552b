// The reference-slot layouts of the helper and the node record: the fixed numbers saved scenes rely on, the two
// directions agreeing, and a helper whose records fill every kind of slot written the same way after a reopen.
#include "helper/helper_slots.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "io/file_bytes.h"
#include "maxapi.h"
#include "records/node_record_slots.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

using vandrels::HelperSlot;
using vandrels::HelperSlots;
using vandrels::NodeRecordSlot;
using vandrels::NodeRecordSlots;

// Every slot answers as the kind and place that name it back.
template <class Layout, class Number> void ExpectBothWays(const Layout& layout, Number slotOf) {
    for (int i = 0; i < layout.Count(); ++i) {
        const auto slot = layout.At(i);
        ASSERT_TRUE(slot.inRange) << i;
        EXPECT_EQ(slotOf(slot.kind, slot.index), i) << i;
    }
    EXPECT_FALSE(layout.At(layout.Count()).inRange);
    EXPECT_FALSE(layout.At(-1).inRange);
}

TEST(SlotLayouts, TheHelperKeepsItsSavedNumbersAndAnswersBothWays) {
    const HelperSlots slots(3, 2, 4);
    EXPECT_EQ(slots.Count(), 2 + 3 + 2 + 4);
    EXPECT_EQ(HelperSlots::kParamBlock, 0);
    EXPECT_EQ(HelperSlots::kSceneMaterials, 1);
    EXPECT_EQ(slots.NodeRecord(0), 2);
    EXPECT_EQ(slots.MaterialRecord(0), 5);
    EXPECT_EQ(slots.Layer(3), 10);
    EXPECT_EQ(slots.At(6).kind, HelperSlot::MaterialRecord);
    EXPECT_EQ(slots.At(6).index, 1);
    ExpectBothWays(slots, [&](HelperSlot kind, int k) { return slots.SlotOf(kind, k); });
    // Empty groups take no number: with no records the layers follow the scene materials.
    EXPECT_EQ(HelperSlots(0, 0, 1).At(2).kind, HelperSlot::Layer);
}

TEST(SlotLayouts, TheNodeRecordKeepsItsSavedNumbersAndAnswersBothWays) {
    // The node and two animatable records, two children, one world-space and two object-space mirrors, one light
    // and three other exclusion-list items.
    const NodeRecordSlots slots({3, 2, 1, 2, 1, 3});
    EXPECT_EQ(slots.Count(), 3 + 4 + 2 + 1 + 2 + 1 + 3);
    EXPECT_EQ(slots.Material(), 3);
    EXPECT_EQ(slots.Parent(), 4);
    EXPECT_EQ(slots.Child(1), 6);
    EXPECT_EQ(slots.Layer(), 7);
    EXPECT_EQ(slots.WorldSpaceModifier(0), 8);
    EXPECT_EQ(slots.ObjectSpaceModifier(1), 10);
    EXPECT_EQ(slots.ExclusionLight(0), 11);
    EXPECT_EQ(slots.LocalDependent(), 12);
    EXPECT_EQ(slots.ExclusionOther(2), 15);
    auto slotOf = [&](NodeRecordSlot kind, int k) {
        switch (kind) {
        case NodeRecordSlot::Base: return k;
        case NodeRecordSlot::Material: return slots.Material();
        case NodeRecordSlot::Parent: return slots.Parent();
        case NodeRecordSlot::Child: return slots.Child(k);
        case NodeRecordSlot::Layer: return slots.Layer();
        case NodeRecordSlot::WorldSpaceModifier: return slots.WorldSpaceModifier(k);
        case NodeRecordSlot::ObjectSpaceModifier: return slots.ObjectSpaceModifier(k);
        case NodeRecordSlot::ExclusionLight: return slots.ExclusionLight(k);
        case NodeRecordSlot::LocalDependent: return slots.LocalDependent();
        case NodeRecordSlot::ExclusionOther: return slots.ExclusionOther(k);
        }
        return -1;
    };
    ExpectBothWays(slots, slotOf);
}

class SlotLayoutFiles : public vtest::SceneTest {
protected:
    SlotLayoutFiles() : SceneTest("vandrels_slot_layouts") {}
    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_slot_layouts_ref");
        vtest::Script(L"Vandrels.PrintTimes false; Vandrels.SetSaveRefsAsMerged false");
    }
    void TearDown() override {
        std::filesystem::remove(reference_.ToUTF8());
        SceneTest::TearDown();
    }
    MSTR reference_;
};

// A persisted reference whose node records hold a material override, a parent override, a local child, a layer
// and modifier mirrors, with a material record: the helper's and the records' references read back through the
// layouts, and the scene written again after opening it is the same file byte for byte.
TEST_F(SlotLayoutFiles, AHelperWithEveryKindOfSlotIsWrittenTheSameAfterAReopen) {
    using vtest::Quoted;
    using vtest::Script;
    Script(L"b = box name:\"Base\"; b.material = standardMaterial name:\"Paint\"; addModifier b (bend()); "
           L"t = box name:\"Top\"; t.parent = b; sphere name:\"Ball\"; saveMaxFile " + Quoted(reference_));
    GetCOREInterface()->FileReset(TRUE);
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_) +
           L"; h.baseObject.PersistRef = true; h.baseObject.PersistReloadType = 2; "
           L"k = box name:\"Kid\"; k.parent = $Base; $Top.parent = undefined; "
           L"$Ball.material = standardMaterial name:\"Local\"; addModifier $Ball (taper()); "
           L"l = LayerManager.newLayerFromName \"Extra\"; l.addNode $Base");
    INode* helperNode = vtest::Node(std::filesystem::path(reference_.ToUTF8()).stem().wstring().c_str());
    ASSERT_NE(helperNode, nullptr);
    auto* helper = static_cast<VandrelsHelper*>(helperNode->GetObjectRef());
    ASSERT_GT(helper->NodeRecords().Count(), 0);
    for (int k = 0; k < helper->NodeRecords().Count(); ++k) {
        EXPECT_EQ(helper->GetReference(helper->Slots().NodeRecord(k)), helper->NodeRecords()[k]);
        if (RefNode* record = helper->NodeRecords()[k]) {
            const NodeRecordSlots slots = record->Slots();
            EXPECT_EQ(record->NumRefs(), slots.Count());
            EXPECT_EQ(record->GetReference(0), record->GetNode());
        }
    }
    // The records filled the slots the scene edits name.
    RefNode* base = nullptr;
    for (RefNode* record : helper->NodeRecords())
        if (record && record->GetNode() == vtest::Node(L"Base")) base = record;
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(base->GetReference(base->Slots().Child(0)), vtest::Node(L"Kid"));
    EXPECT_NE(base->GetReference(base->Slots().Layer()), nullptr);
    EXPECT_GT(base->Slots().Count(), base->Slots().ObjectSpaceModifier(0));
    EXPECT_GT(helper->MaterialRecords().Count(), 0);
    for (int k = 0; k < helper->MaterialRecords().Count(); ++k)
        EXPECT_EQ(helper->GetReference(helper->Slots().MaterialRecord(k)), helper->MaterialRecords()[k]);
    EXPECT_EQ(helper->NumRefs(), helper->Slots().Count());

    ASSERT_TRUE(GetCOREInterface()->SaveToFile(file_.data()));
    const auto first = hostrt::ReadFileBytes(file_);
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(file_.data()));
    ASSERT_TRUE(GetCOREInterface()->SaveToFile(file_.data()));
    EXPECT_TRUE(first == hostrt::ReadFileBytes(file_)) << "the reopened scene is written differently";
}

}  // namespace
