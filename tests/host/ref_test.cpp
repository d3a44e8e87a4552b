// References kept both ways, message propagation, dependents, transfer, deletion and cloning.
#include "core/ref_internal.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using testobj::Item;

namespace {
int count(const RefList<ReferenceMaker>& v, ReferenceMaker* m) { return v.Count(m); }
}  // namespace

TEST(RefSystem, ReplaceReferenceKeepsBothSides) {
    auto* maker = new Item("maker");
    auto* a = new Item("a");
    auto* b = new Item("b");
    auto* keep = new Item("keep");
    keep->ReplaceReference(0, b);  // b stays alive through keep

    EXPECT_EQ(maker->ReplaceReference(0, a), REF_SUCCEED);
    EXPECT_EQ(maker->GetReference(0), a);
    EXPECT_EQ(count(a->Dependents(), maker), 1);

    maker->ReplaceReference(0, b);
    EXPECT_EQ(maker->GetReference(0), b);
    EXPECT_EQ(count(b->Dependents(), maker), 1);
    EXPECT_EQ(Animatable::GetAnimByHandle(Animatable::GetHandleByAnim(maker)), maker);

    // a lost its only reference and deleted itself; out-of-range slots fail.
    EXPECT_EQ(Item::live, 3);
    EXPECT_EQ(maker->ReplaceReference(5, b), REF_FAIL);

    maker->ReplaceReference(1, b);  // two references to the same target count twice
    EXPECT_EQ(count(b->Dependents(), maker), 2);
    maker->DeleteReference(0);
    EXPECT_EQ(count(b->Dependents(), maker), 1);
    maker->DeleteMe();
    keep->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, MessagesPropagateUntilStopAndCarryTheSenderPerLevel) {
    auto* top = new Item("top");
    auto* mid = new Item("mid");
    auto* leaf = new Item("leaf");
    auto* side = new Item("side");
    mid->ReplaceReference(0, leaf);
    top->ReplaceReference(0, mid);
    side->ReplaceReference(0, leaf);

    leaf->NotifyDependents(FOREVER, 7, REFMSG_CHANGE);
    ASSERT_EQ(mid->heard.size(), 1u);
    EXPECT_EQ(mid->heard[0].from, leaf);
    ASSERT_EQ(top->heard.size(), 1u);
    EXPECT_EQ(top->heard[0].from, mid);  // each level sees its own reference as the changed target
    EXPECT_EQ(top->heard[0].part, 7u);

    mid->answer = REF_STOP;
    leaf->NotifyDependents(FOREVER, 0, 0x8663DF11);
    EXPECT_EQ(mid->heard.size(), 2u);
    EXPECT_EQ(top->heard.size(), 1u);  // stopped at mid
    EXPECT_EQ(side->heard.size(), 2u);  // siblings still hear it

    // Superclass filter: only dependents of that superclass hear it (and pass it on).
    side->sclass = 0x8663DFA6;
    leaf->NotifyDependents(FOREVER, 0, 0x8663DF11, 0x8663DFA6);
    EXPECT_EQ(side->heard.size(), 3u);
    EXPECT_EQ(mid->heard.size(), 2u);

    // Switched off globally, nothing travels; switches nest.
    DisableRefMsgs();
    DisableRefMsgs();
    EnableRefMsgs();
    leaf->NotifyDependents(FOREVER, 0, REFMSG_CHANGE);
    EnableRefMsgs();
    EXPECT_EQ(side->heard.size(), 3u);

    top->DeleteMe();
    side->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, PartIdentifierIsSharedSoAReceiverCanAnswer) {
    auto* target = new Item("t");
    auto* first = new Item("first");
    auto* second = new Item("second");
    first->ReplaceReference(0, target);
    second->ReplaceReference(0, target);
    first->writeAnswer = 0x1234;
    target->NotifyDependents(FOREVER, 0, REFMSG_GET_NODE_HANDLE);
    ASSERT_EQ(second->heard.size(), 1u);
    EXPECT_EQ(second->heard[0].part, 0x1234u);
    first->DeleteMe();
    second->DeleteMe();
}

TEST(RefSystem, CyclesDoNotLoopAndReceiversMayDropReferences) {
    auto* a = new Item("a");
    auto* b = new Item("b");
    a->ReplaceReference(0, b);
    b->ReplaceReference(0, a);
    a->NotifyDependents(FOREVER, 0, REFMSG_CHANGE);
    EXPECT_EQ(b->heard.size(), 1u);
    EXPECT_EQ(a->heard.size(), 1u);  // heard it back once through b, not again

    // DependentIterator tolerates changes during the walk.
    auto* t = new Item("t");
    auto* d1 = new Item("d1");
    auto* d2 = new Item("d2");
    d1->ReplaceReference(0, t);
    d2->ReplaceReference(0, t);
    DependentIterator it(t);
    std::vector<ReferenceMaker*> seen;
    while (ReferenceMaker* m = it.Next()) {
        seen.push_back(m);
        d2->DeleteReference(0, FALSE);
    }
    EXPECT_EQ(seen, std::vector<ReferenceMaker*>{d1});
    a->DeleteReference(0);  // b loses its last dependent and goes, and a goes with it
    d1->DeleteMe();
    d2->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, WeakReferencesKeepNothingAlive) {
    auto* target = new Item("t");
    auto* strong = new Item("strong");
    auto* weak = new Item("weak");
    weak->weak = true;
    strong->ReplaceReference(0, target);
    weak->ReplaceReference(0, target);
    strong->DeleteReference(0);  // only the weak reference is left: the target goes, the slot is cleared
    EXPECT_EQ(weak->GetReference(0), nullptr);
    ASSERT_FALSE(weak->heard.empty());
    EXPECT_EQ(weak->heard.back().message, unsigned(REFMSG_TARGET_DELETED));
    EXPECT_EQ(Item::live, 2);

    // A locked target stays.
    auto* locked = new Item("locked");
    strong->ReplaceReference(0, locked);
    locked->SetAFlag(A_LOCK_TARGET);
    strong->DeleteReference(0);
    EXPECT_EQ(Item::live, 3);
    locked->ClearAFlag(A_LOCK_TARGET);
    EXPECT_EQ(locked->MaybeAutoDelete(), REF_SUCCEED);
    strong->DeleteMe();
    weak->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, TransferMovesOnlyTransferableReferences) {
    auto* oldT = new Item("old");
    auto* newT = new Item("new");
    auto* a = new Item("a");
    auto* b = new Item("b");
    a->ReplaceReference(0, oldT);
    a->ReplaceReference(1, oldT);
    b->ReplaceReference(0, oldT);
    b->pinnedSlot = 0;
    auto* keepNew = new Item("keepNew");
    keepNew->ReplaceReference(0, newT);
    newT->TransferReferences(oldT);
    EXPECT_EQ(a->GetReference(0), newT);
    EXPECT_EQ(a->GetReference(1), newT);
    EXPECT_EQ(b->GetReference(0), oldT);
    EXPECT_EQ(count(oldT->Dependents(), a), 0);
    for (Item* i : {a, b, keepNew}) i->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, EnumDependentsVisitsTargetThenDependentsOnce) {
    auto* t = new Item("t");
    auto* a = new Item("a");
    auto* b = new Item("b");
    auto* top = new Item("top");
    a->ReplaceReference(0, t);
    b->ReplaceReference(0, t);
    top->ReplaceReference(0, a);
    top->ReplaceReference(1, b);
    struct Collect : DependentEnumProc {
        std::vector<std::string> names;
        std::string skipAt;
        int proc(ReferenceMaker* m) override {
            auto* i = static_cast<Item*>(m);
            names.push_back(i->name);
            return i->name == skipAt ? DEP_ENUM_SKIP : DEP_ENUM_CONTINUE;
        }
    } all, skipping;
    t->DoEnumDependents(&all);
    EXPECT_EQ(all.names, (std::vector<std::string>{"t", "a", "top", "b"}));
    skipping.skipAt = "a";
    t->DoEnumDependents(&skipping);
    EXPECT_EQ(skipping.names, (std::vector<std::string>{"t", "a", "b", "top"}));
    top->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, CloneMakesOneCopyPerOriginalAndPatchesPointers) {
    auto* shared = new Item("shared");
    auto* root = new Item("root");
    auto* outside = new Item("outside");
    root->ReplaceReference(0, shared);
    root->ReplaceReference(1, shared);
    RemapDir& remap = NewRemapDir();
    auto* copy = static_cast<Item*>(remap.CloneRef(root));
    RefTargetHandle patched = nullptr, unpatched = nullptr;
    remap.PatchPointer(&patched, shared);
    remap.PatchPointer(&unpatched, outside);
    int ran = 0;
    struct Count : PostPatchProc {
        int* n;
        explicit Count(int* n) : n(n) {}
        int Proc(RemapDir&) override { return ++*n; }
    };
    remap.AddPostPatchProc(new Count(&ran), true);
    remap.DeleteThis();
    ASSERT_NE(copy, root);
    EXPECT_EQ(copy->GetReference(0), copy->GetReference(1));
    EXPECT_NE(copy->GetReference(0), shared);
    EXPECT_EQ(patched, copy->GetReference(0));
    EXPECT_EQ(unpatched, outside);
    EXPECT_EQ(ran, 1);
    root->DeleteMe();
    copy->DeleteMe();
    outside->DeleteMe();
    EXPECT_EQ(Item::live, 0);
}

TEST(RefSystem, PropertiesAndCustomAttributes) {
    struct Prop : AnimProperty {
        DWORD id;
        bool keep;
        int* deleted;
        Prop(DWORD i, bool k, int* d) : id(i), keep(k), deleted(d) {}
        ~Prop() override { ++*deleted; }
        DWORD ID() override { return id; }
        BOOL DontDelete() override { return keep; }
    };
    int deleted = 0;
    auto* item = new Item("i");
    Prop kept(0x8663DFA6, true, &deleted);
    item->AddAProp(new Prop(5, false, &deleted));
    item->AddAProp(&kept);
    EXPECT_EQ(item->GetAProp(0x8663DFA6), &kept);
    EXPECT_EQ(item->GetAProp(99), nullptr);
    EXPECT_TRUE(item->DeleteAProp(5));
    EXPECT_EQ(deleted, 1);

    struct Attr : CustAttrib {
        const MCHAR* GetName(bool) override { return L"Extra"; }
    };
    auto* watcher = new Item("watcher");
    watcher->ReplaceReference(0, item);
    item->AllocCustAttribContainer();
    ICustAttribContainer* cc = item->GetCustAttribContainer();
    ASSERT_NE(cc, nullptr);
    EXPECT_EQ(cc->GetOwner(), item);
    cc->AppendCustAttrib(new Attr());
    EXPECT_EQ(cc->GetNumCustAttribs(), 1);
    EXPECT_EQ(cc->SubAnimName(0), MSTR(L"Extra"));
    ASSERT_FALSE(watcher->heard.empty());
    EXPECT_EQ(watcher->heard.back().message, unsigned(REFMSG_SUBANIM_STRUCTURE_CHANGED));
    cc->RemoveCustAttrib(0);
    EXPECT_EQ(cc->GetNumCustAttribs(), 0);
    watcher->DeleteMe();  // item goes with it; the kept property is unlinked, not deleted
    EXPECT_EQ(deleted, 1);
    EXPECT_EQ(Item::live, 0);
}

// The bookkeeping list against a plain model, through small lists (searched) and large ones (indexed, with holes
// closed up later), growing and shrinking across the switch: order, counts, first entries and latest removals.
TEST(RefSystem, TheBookkeepingListKeepsOrderCountsAndLatestRemovalAtEverySize) {
    int items[40] = {};
    RefList<int> list;
    std::vector<int*> model;
    auto check = [&](int step) {
        SCOPED_TRACE("step " + std::to_string(step));
        ASSERT_EQ(std::vector<int*>(list.begin(), list.end()), model);
        ASSERT_EQ(list.size(), model.size());
        ASSERT_EQ(list.empty(), model.empty());
        std::vector<int*> unique;
        for (int* p : model)
            if (std::find(unique.begin(), unique.end(), p) == unique.end()) unique.push_back(p);
        ASSERT_EQ(list.Unique(), unique);
        for (int* p : {&items[0], &items[7], &items[39]}) {
            ASSERT_EQ(list.Count(p), int(std::count(model.begin(), model.end(), p)));
            ASSERT_EQ(list.Contains(p), std::count(model.begin(), model.end(), p) > 0);
        }
    };
    unsigned seed = 12345;
    auto next = [&seed](unsigned n) {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 16) % n;
    };
    int step = 0;
    for (int round = 0; round < 3; ++round) {
        // Grow well past the switch (few distinct items, so repeats are common), then shrink back to empty.
        const int span = round == 0 ? 5 : 40;
        for (int i = 0; i < 60; ++i) {
            int* p = &items[next(unsigned(span))];
            list.Add(p);
            model.push_back(p);
            check(++step);
        }
        while (!model.empty()) {
            int* p = next(4) == 0 ? &items[39] : model[next(unsigned(model.size()))];
            auto last = std::find(model.rbegin(), model.rend(), p);
            const bool had = last != model.rend();
            if (had) model.erase(std::next(last).base());
            ASSERT_EQ(list.RemoveOne(p), had);
            check(++step);
        }
    }
    list.Add(&items[1]);
    list.Clear();
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.begin(), list.end());
}
