// Finding the slots of a maker with many references: the host remembers where such a maker holds each target,
// and must still find the right slot after the maker moved its references without telling (as a plug-in does
// when it drops an entry from a table of references).
#include "test_objects.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using testobj::Item;

namespace {

// A maker with a table of references that it closes up itself when an entry is dropped.
class Table : public ReferenceTarget {
public:
    explicit Table(int slots) : slots_(std::size_t(slots), nullptr) {}
    Class_ID ClassID() override { return Class_ID(0x7E570002, 0); }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    int NumRefs() override { return int(slots_.size()); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < NumRefs() ? slots_[std::size_t(i)] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override {
        if (i >= 0 && i < NumRefs()) slots_[std::size_t(i)] = t;
    }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_SUCCEED;
    }
    // Lets go of entry i and closes the gap: the later entries move down one slot.
    void Drop(int i) {
        DeleteReference(i);
        slots_.erase(slots_.begin() + i);
    }

private:
    std::vector<RefTargetHandle> slots_;
};

}  // namespace

TEST(RefSlots, ATableThatClosesUpItsEntriesIsStillFoundAtTheRightSlots) {
    constexpr int kCount = 200;
    const int liveBefore = Item::live;
    auto* table = new Table(kCount + 10);  // free slots at the end
    std::vector<Item*> items;
    for (int i = 0; i < kCount; ++i) {
        items.push_back(new Item("item" + std::to_string(i)));
        table->ReplaceReference(i, items.back());
    }
    EXPECT_EQ(table->FindRef(items[150]), 150);

    table->Drop(100);  // items[100] goes; items 101.. now sit one slot lower
    EXPECT_EQ(table->FindRef(items[150]), 149);
    EXPECT_EQ(table->FindRef(items[199]), 198);
    EXPECT_EQ(table->FindRef(items[20]), 20);

    // Deleting a target clears the slot that holds it now, and no other.
    items[181]->DeleteMe();
    EXPECT_EQ(table->GetReference(180), nullptr);
    EXPECT_EQ(table->GetReference(179), items[180]);
    EXPECT_EQ(table->GetReference(181), items[182]);

    // A transfer moves the slot that holds the old target now.
    table->Drop(10);  // items 11.. move down again
    auto* replacement = new Item("replacement");
    replacement->TransferReferences(items[120], TRUE);  // the old target goes once nothing holds it
    EXPECT_EQ(table->GetReference(118), replacement);
    EXPECT_EQ(table->GetReference(117), items[119]);
    EXPECT_EQ(table->GetReference(119), items[121]);

    // A target held in two slots loses both.
    table->ReplaceReference(kCount + 5, items[60]);
    EXPECT_EQ(table->FindRef(items[60]), 59);
    items[60]->DeleteMe();
    EXPECT_EQ(table->GetReference(59), nullptr);
    EXPECT_EQ(table->GetReference(kCount + 5), nullptr);
    EXPECT_EQ(table->GetReference(58), items[59]);

    // Items 100, 181, 10, 120 and 60 went on the way and the replacement came; the table takes the rest with it.
    EXPECT_EQ(Item::live - liveBefore, kCount - 5 + 1);
    table->DeleteMe();
    EXPECT_EQ(Item::live, liveBefore);
}
