// Animatable records through the host: the change monitor that turns a record Modified (undoably, and not for
// the parts it ignores), the "RefAnim" path interface on the base and on a kind, clones, and the override
// state through a scene save and open.
#include "core/class_directory.h"
#include "core/fnpub.h"
#include "hold.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "object.h"
#include "plugapi.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

namespace {

constexpr SClass_ID kRecordSuper = 0x8663DFA6;
constexpr SClass_ID kAnimRecordSuper = 0x8663DFA8;
const Class_ID kRefNode(0x8663DFA6, 0x3F273884);
const Class_ID kRefHolder(0x8663DFA5, 0x3F273890);
const Class_ID kPlainRecord(0x00010001, 0);
constexpr PartID kGeometryPart = 0x01;

template <class T> T* Make(SClass_ID sc, const Class_ID& id) {
    return dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
}

FPValue Call(ReferenceTarget* record, const MCHAR* fn, std::vector<FPValue> args = {}) {
    FPInterface* fpi = hostrt::FindObjectInterface(record, L"RefAnim");
    if (!fpi) throw std::runtime_error("the record has no \"RefAnim\" interface");
    FPValue result;
    hostrt::CallFromScript(fpi, fn, std::move(args), {}, result);
    return result;
}

std::wstring PathItem(ReferenceTarget* record, int scriptIndex) {
    const FPValue v = Call(record, L"GetPathItem", {FPValue(scriptIndex)});
    return v.s ? std::wstring(v.s) : std::wstring();
}

// The name path joined with "/".
std::wstring PathOf(ReferenceTarget* record) {
    std::wstring path;
    const int size = Call(record, L"GetPathSize").i;
    for (int i = 1; i <= size; ++i) path += (i > 1 ? L"/" : L"") + PathItem(record, i);
    return path;
}

int NumberItem(ReferenceTarget* record, int scriptIndex) {
    return Call(record, L"GetPathByNumberItem", {FPValue(scriptIndex)}).i;
}

// The override state as the record writes it (chunk 0x0027); -1 when the chunk is missing.
int StateOf(ReferenceTarget* record) {
    hostrt::ChunkWriter w;
    EXPECT_EQ(record->Save(&w), IO_OK);
    const std::vector<std::uint8_t> bytes = w.Bytes();
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    int state = -1;
    // Kinds with state of their own wrap the base chunks in 0x0029.
    auto read = [&](auto& self) -> void {
        while (r.OpenChunk() == IO_OK) {
            if (r.CurChunkID() == 0x0027) {
                std::uint8_t b = 0;
                ULONG got = 0;
                if (r.Read(&b, 1, &got) == IO_OK) state = b;
            } else if (r.CurChunkID() == 0x0029) {
                self(self);
            }
            r.CloseChunk();
        }
    };
    read(read);
    return state;
}

// The animatable record of nodeRecord that holds anim.
ReferenceTarget* RecordHolding(ReferenceTarget* nodeRecord, Animatable* anim) {
    for (int i = 1; i < nodeRecord->NumRefs(); ++i) {
        ReferenceTarget* ref = nodeRecord->GetReference(i);
        if (ref && ref->GetReference(0) == anim) return ref;
    }
    return nullptr;
}

class RefAnimTest : public vtest::SceneTest {
protected:
    RefAnimTest() : SceneTest("vandrels_refanim") {}

    // A box node with a bend, bound to a fresh node record; bendRecord is the bend's animatable record.
    void BindBentBox() {
        auto* box = Make<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID);
        node = GetCOREInterface()->CreateObjectNode(box);
        node->SetName(L"BentBox");
        bend = Make<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID);
        ASSERT_TRUE(GetCOREInterface()->AddModifier(*node, *bend));
        nodeRecord = Make<ReferenceTarget>(kRecordSuper, kRefNode);
        ASSERT_NE(nodeRecord, nullptr);
        nodeRecord->ReplaceReference(0, node);
        bendRecord = RecordHolding(nodeRecord, bend);
        ASSERT_NE(bendRecord, nullptr);
        ASSERT_EQ(bendRecord->SuperClassID(), kAnimRecordSuper);
    }

    void SetAngle(float degrees) {
        IParamBlock2* pb = bend->GetParamBlock(0);
        ASSERT_NE(pb, nullptr);
        const ParamID angle = pb->IndextoID(pb->GetDesc()->NameToIndex(L"angle"));
        ASSERT_GE(angle, 0);
        pb->SetValue(angle, 0, degrees);
    }

    INode* node = nullptr;
    Modifier* bend = nullptr;
    ReferenceTarget* nodeRecord = nullptr;
    ReferenceTarget* bendRecord = nullptr;
};

TEST_F(RefAnimTest, ChangingTheAnimatableMarksTheRecordModifiedUndoably) {
    BindBentBox();
    ASSERT_EQ(StateOf(bendRecord), 0);
    EXPECT_FALSE(bendRecord->IsRealDependency(bend)) << "a clean record holds its animatable weakly";

    theHold.Begin();
    SetAngle(45.f);
    theHold.Accept(L"Bend angle");
    EXPECT_EQ(StateOf(bendRecord), 0x02);
    EXPECT_TRUE(bendRecord->IsRealDependency(bend));
    // The angle's controller changed with it; the parameters record leaves a parameter that a controller
    // drives to the controller's record. No other record saw a change.
    const std::wstring bendPath = PathOf(bendRecord);
    const std::set<std::wstring> changed{bendPath + L"/Parameters/angle"};
    int seen = 0;
    for (int i = 1; i < nodeRecord->NumRefs(); ++i) {
        ReferenceTarget* other = nodeRecord->GetReference(i);
        if (!other || other == bendRecord) continue;
        const std::wstring path = PathOf(other);
        const bool expected = changed.count(path) != 0;
        EXPECT_EQ(StateOf(other), expected ? 0x02 : 0) << MSTR(path.c_str()).ToUTF8();
        seen += expected;
    }
    EXPECT_EQ(seen, 1);

    // Undo takes the mark back (the angle's own change while undoing does not set it again); redo restores it.
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(StateOf(bendRecord), 0);
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(StateOf(bendRecord), 0x02);
    nodeRecord->DeleteMe();
}

TEST_F(RefAnimTest, IgnoredPartsAndOtherMessagesLeaveTheRecordClean) {
    BindBentBox();
    for (PartID part : {PartID(0x80003FFF), PartID(0x10), PartID(0x70)}) {
        bend->NotifyDependents(FOREVER, part, REFMSG_CHANGE);
        EXPECT_EQ(StateOf(bendRecord), 0) << std::hex << "part 0x" << part;
    }
    bend->NotifyDependents(FOREVER, kGeometryPart, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    EXPECT_EQ(StateOf(bendRecord), 0) << "only change messages count";
    // Not holding: the mark is set all the same, without an undo step.
    const int steps = theHold.NumUndoEntries();
    bend->NotifyDependents(FOREVER, kGeometryPart | 0x10, REFMSG_CHANGE);
    EXPECT_EQ(StateOf(bendRecord), 0x02);
    EXPECT_EQ(theHold.NumUndoEntries(), steps);
    nodeRecord->DeleteMe();
}

TEST_F(RefAnimTest, TheInterfaceShowsTheRecordsPath) {
    BindBentBox();
    // The bend sits below the node's object reference ("Mods", entry 2) under its own name.
    const int size = Call(bendRecord, L"GetPathSize").i;
    ASSERT_GE(size, 2);
    EXPECT_EQ(PathItem(bendRecord, 1), L"Mods");
    EXPECT_EQ(NumberItem(bendRecord, 1), 2);
    EXPECT_EQ(PathItem(bendRecord, size), std::wstring(bend->GetName(false).data()));
    EXPECT_GE(NumberItem(bendRecord, size), 1);
    // Outside the path: "" and -1, not errors.
    EXPECT_EQ(PathItem(bendRecord, size + 1), L"");
    EXPECT_EQ(NumberItem(bendRecord, size + 1), -1);
    EXPECT_EQ(NumberItem(bendRecord, 0), -1);
    nodeRecord->DeleteMe();
}

TEST_F(RefAnimTest, ThePathCanBeSizedAndEditedFromScripts) {
    auto* record = Make<ReferenceTarget>(kAnimRecordSuper, kPlainRecord);
    ASSERT_NE(record, nullptr);
    Call(record, L"SetPathSize", {FPValue(1)});
    Call(record, L"SetPathItem", {FPValue(1), FPValue(L"TM")});
    Call(record, L"SetPathByNumberItem", {FPValue(1), FPValue(3)});
    Call(record, L"SetPathSize", {FPValue(3)});
    ASSERT_EQ(Call(record, L"GetPathSize").i, 3);
    EXPECT_EQ(PathItem(record, 1), L"TM");
    EXPECT_EQ(NumberItem(record, 1), 3);
    for (int i : {2, 3}) {
        EXPECT_EQ(PathItem(record, i), L"") << i;
        EXPECT_EQ(NumberItem(record, i), 0) << i;
    }
    // Edits outside the path and a negative size change nothing.
    Call(record, L"SetPathItem", {FPValue(4), FPValue(L"X")});
    Call(record, L"SetPathByNumberItem", {FPValue(4), FPValue(9)});
    Call(record, L"SetPathSize", {FPValue(-1)});
    EXPECT_EQ(Call(record, L"GetPathSize").i, 3);
    Call(record, L"SetPathSize", {FPValue(1)});
    EXPECT_EQ(Call(record, L"GetPathSize").i, 1);
    EXPECT_EQ(NumberItem(record, 2), -1);
    EXPECT_EQ(PathItem(record, 1), L"TM");
    record->DeleteMe();
}

TEST_F(RefAnimTest, ClonesCopyTheAnimatableOnlyWhenItIsOverridden) {
    BindBentBox();
    ReferenceTarget* clean = CloneRefHierarchy(bendRecord);
    ASSERT_NE(clean, nullptr);
    EXPECT_EQ(clean->GetReference(0), nullptr);
    EXPECT_EQ(Call(clean, L"GetPathSize").i, Call(bendRecord, L"GetPathSize").i);
    EXPECT_EQ(PathItem(clean, 1), L"Mods");
    clean->DeleteMe();

    SetAngle(30.f);
    ReferenceTarget* modified = CloneRefHierarchy(bendRecord);
    ASSERT_NE(modified, nullptr);
    EXPECT_EQ(StateOf(modified), 0x02);
    ReferenceTarget* copy = modified->GetReference(0);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, bend);
    EXPECT_EQ(copy->ClassID(), bend->ClassID());
    modified->DeleteMe();
    nodeRecord->DeleteMe();
}

TEST_F(RefAnimTest, TheOverrideStateSurvivesSaveAndOpen) {
    BindBentBox();
    SetAngle(60.f);
    ASSERT_EQ(StateOf(bendRecord), 0x02);
    const int size = Call(bendRecord, L"GetPathSize").i;
    const int lastNumber = NumberItem(bendRecord, size);
    const std::wstring bendPath = PathOf(bendRecord);

    Interface* ip = GetCOREInterface();
    auto* holder = Make<Object>(GEOMOBJECT_CLASS_ID, kRefHolder);
    ASSERT_NE(holder, nullptr);
    FPValue ignored;
    hostrt::CallFromScript(hostrt::FindObjectInterface(holder, L"RefHolder"), L"SetNumRefs", {FPValue(1)}, {},
                           ignored);
    holder->ReplaceReference(0, nodeRecord);
    ip->CreateObjectNode(holder)->SetName(L"VDHN");
    ASSERT_NE(ip->SaveToFile(file_.data()), 0);

    ip->FileReset();
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    INode* holderNode = ip->GetINodeByName(L"VDHN");
    ASSERT_NE(holderNode, nullptr);
    ReferenceTarget* record = holderNode->GetObjectRef()->GetReference(0);
    ASSERT_NE(record, nullptr);
    // The bend's record, found by its path, comes back Modified and with the bend it holds.
    int found = 0;
    for (int i = 1; i < record->NumRefs(); ++i) {
        ReferenceTarget* anim = record->GetReference(i);
        if (!anim || PathOf(anim) != bendPath) continue;
        ++found;
        EXPECT_EQ(NumberItem(anim, size), lastNumber);
        EXPECT_EQ(StateOf(anim), 0x02);
        ReferenceTarget* held = anim->GetReference(0);
        ASSERT_NE(held, nullptr) << "a Modified record keeps its animatable";
        EXPECT_EQ(held->ClassID(), HOST_BEND_CLASS_ID);
    }
    EXPECT_EQ(found, 1);
}

}  // namespace
