// The undo system: nested holds, cancel, undo and redo of restore objects and of reference changes.
#include "test_objects.h"

#include <gtest/gtest.h>

using testobj::Item;

namespace {

struct Log {
    std::vector<std::string> lines;
};

// Records what the hold does with it.
class Probe : public RestoreObj {
public:
    Probe(Log& log, std::string name) : log_(log), name_(std::move(name)) {}
    ~Probe() override { log_.lines.push_back("delete " + name_); }
    void Restore(int isUndo) override {
        log_.lines.push_back("restore " + name_ + (isUndo ? " undo" : " cancel") +
                             (theHold.Restoring() ? " restoring" : ""));
    }
    void Redo() override { log_.lines.push_back("redo " + name_ + (theHold.Redoing() ? " redoing" : "")); }
    void EndHold() override { log_.lines.push_back("end " + name_); }

private:
    Log& log_;
    std::string name_;
};

struct HoldTest : ::testing::Test {
    void SetUp() override { theHold.FlushUndoBuffer(); }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        theHold.FlushUndoBuffer();
    }
};

}  // namespace

TEST_F(HoldTest, NestedHoldsMakeOneNamedStepAndEndHoldReachesEveryObject) {
    Log log;
    theHold.Begin();
    theHold.Put(new Probe(log, "a"));
    theHold.Begin();
    theHold.Put(new Probe(log, "b"));
    theHold.Accept(L"inner");
    EXPECT_EQ(theHold.NumUndoEntries(), 0);
    EXPECT_TRUE(log.lines.empty());
    theHold.Accept(L"Outer Step");
    EXPECT_EQ(theHold.NumUndoEntries(), 1);
    EXPECT_EQ(theHold.UndoEntryName(0), MSTR(L"Outer Step"));
    EXPECT_EQ(log.lines, (std::vector<std::string>{"end a", "end b"}));

    log.lines.clear();
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(log.lines, (std::vector<std::string>{"restore b undo restoring", "restore a undo restoring"}));
    EXPECT_FALSE(theHold.Restoring());
    log.lines.clear();
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(log.lines, (std::vector<std::string>{"redo a redoing", "redo b redoing"}));
    EXPECT_FALSE(theHold.Redo());

    log.lines.clear();
    theHold.FlushUndoBuffer();
    EXPECT_EQ(log.lines.size(), 2u);
    EXPECT_EQ(theHold.NumUndoEntries(), 0);
}

TEST_F(HoldTest, CancelRollsBackTheInnerHoldAndPutOutsideAHoldDeletes) {
    Log log;
    theHold.Put(new Probe(log, "loose"));
    EXPECT_EQ(log.lines, (std::vector<std::string>{"delete loose"}));
    log.lines.clear();

    theHold.Begin();
    theHold.Put(new Probe(log, "kept"));
    theHold.Begin();
    theHold.Put(new Probe(log, "dropped"));
    theHold.Cancel();
    EXPECT_EQ(log.lines, (std::vector<std::string>{"restore dropped cancel restoring", "end dropped", "delete dropped"}));
    theHold.Suspend();
    EXPECT_FALSE(theHold.Holding());
    theHold.Put(new Probe(log, "suspended"));
    theHold.Resume();
    EXPECT_TRUE(theHold.Holding());
    theHold.Accept(L"step");
    EXPECT_EQ(theHold.NumUndoEntries(), 1);

    // A new step drops what could be redone.
    theHold.Undo();
    EXPECT_EQ(theHold.NumRedoEntries(), 1);
    theHold.Begin();
    theHold.Put(new Probe(log, "next"));
    theHold.Accept(L"next");
    EXPECT_EQ(theHold.NumRedoEntries(), 0);
    theHold.FlushUndoBuffer();  // the records log into this test's log
}

TEST_F(HoldTest, ReferenceChangesAreUndoneAndTheirTargetsOutliveTheirLastReference) {
    auto* maker = new Item("maker");
    auto* a = new Item("a");
    maker->ReplaceReference(0, a);
    auto* b = new Item("b");

    theHold.Begin();
    maker->ReplaceReference(0, b);
    theHold.Accept(L"Replace");
    EXPECT_EQ(Item::live, 3);  // a lost its last reference but the undo step pins it
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(maker->GetReference(0), a);
    EXPECT_EQ(a->Dependents().size(), 1u);
    EXPECT_TRUE(b->Dependents().empty());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(maker->GetReference(0), b);

    theHold.FlushUndoBuffer();  // nothing pins a any more
    EXPECT_EQ(Item::live, 2);
    maker->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}
