// Parameter blocks: descriptors, values and accessors, undo, references and controllers, save/load/clone,
// automatic blocks and rollouts, and the old-style block.
#include "core/class_directory.h"
#include "core/paramblock_classes.h"
#include "core/paramblock_rollouts.h"
#include "core/ref_internal.h"
#include "iparamb.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

using testobj::Item;

namespace {

constexpr Class_ID kOwnerClass(0x7E57B10C, 0x1);

// The owner of the test blocks; it logs the changes its blocks announce, with the block's last-notified id.
class Owner : public Item {
public:
    Owner() : Item("owner", 2) {}
    Class_ID ClassID() override { return kOwnerClass; }
    RefResult NotifyRefChanged(const Interval& iv, RefTargetHandle from, PartID& part, RefMessage msg, BOOL p) override {
        if (msg == REFMSG_CHANGE && from && from->SuperClassID() == PARAMETER_BLOCK2_CLASS_ID) {
            int tab = 0;
            ParamID id = static_cast<IParamBlock2*>(from)->LastNotifyParamID(tab);
            log.push_back("change " + std::to_string(id) + "/" + std::to_string(tab));
        }
        return Item::NotifyRefChanged(iv, from, part, msg, p);
    }
    std::vector<std::string> log;
};

// A float controller: one value, which it announces when set.
class FloatCtrl : public Control {
public:
    explicit FloatCtrl(float v = 0) : value(v) {}
    SClass_ID SuperClassID() override { return CTRL_FLOAT_CLASS_ID; }
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod) override {
        *static_cast<float*>(val) = value + float(t) * slope;
        if (slope != 0) valid &= Interval(t, t);
    }
    void SetValue(TimeValue, void* val, int = 1, GetSetMethod = CTRL_ABSOLUTE) override {
        value = *static_cast<float*>(val);
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }
    BOOL IsAnimated() override { return slope != 0; }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new FloatCtrl(value);
        c->slope = slope;
        BaseClone(this, c, remap);
        return c;
    }
    float value;
    float slope = 0;
};

class TestAccessor : public PBAccessor {
public:
    void Get(PB2Value& v, ReferenceMaker* owner, ParamID id, int tab, TimeValue t, Interval& valid) override {
        if (onGet) onGet(v, id);
    }
    void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int tab, TimeValue t) override {
        if (onSet) onSet(v, owner, id, tab);
    }
    void TabChanged(tab_changes code, ReferenceMaker*, ParamID id, int tab, int count) override {
        tabChanges.push_back({code, id, tab, count});
    }
    std::function<void(PB2Value&, ParamID)> onGet;
    std::function<void(PB2Value&, ReferenceMaker*, ParamID, int)> onSet;
    struct TabChange {
        tab_changes code;
        ParamID id;
        int tab, count;
    };
    std::vector<TabChange> tabChanges;
};

class OwnerClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return new Owner(); }
    const MCHAR* ClassName() override { return L"PBOwner"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return kOwnerClass; }
    const MCHAR* Category() override { return L""; }
};

enum : ParamID { kActive, kFileName, kMode, kAmount, kNodes, kTarget, kXform, kTint, kWeights, kLabel };

struct Fixture {
    OwnerClassDesc cd;
    TestAccessor acc;
    ParamBlockDesc2 desc{0, L"Parameters", 4, &cd, 0};
    Fixture() {
        desc.AutoConstruct(0).AutoUI(101, 4, 0);
        desc.AddParam(kActive, L"Active", TYPE_BOOL, P_TRANSIENT, 47).Default(TRUE).Accessor(&acc).CheckBox(1007);
        desc.AddParam(kFileName, L"FileName", TYPE_FILENAME, P_RESET_DEFAULT, 5)
            .Default(L"")
            .AssetType(7)
            .FileTypes(8)
            .Caption(5)
            .Accessor(&acc)
            .UI_CustEdit(1301);
        desc.AddParam(kMode, L"Mode", TYPE_INT, 0, 158).Default(1).Range(0, 2).RadioButtons({1030, 1031, 1032});
        desc.AddParam(kAmount, L"Amount", TYPE_FLOAT, P_ANIMATABLE, 10).Default(2.5f).Accessor(&acc);
        desc.AddParam(kNodes, L"Nodes", TYPE_INODE_TAB, 0, 11).Accessor(&acc);
        desc.AddParam(kTarget, nullptr, TYPE_REFTARG, 0, 130);
        desc.AddParam(kXform, L"Xform", TYPE_MATRIX3, 0, 12);
        desc.AddParam(kTint, L"Tint", TYPE_RGBA, 0, 13).Default(Color(1, 0, 0));
        desc.AddParam(kWeights, L"Weights", TYPE_FLOAT_TAB, P_ANIMATABLE, 14).TableSize(2).Default(1.0f);
        desc.AddParam(kLabel, L"Label", TYPE_STRING, 0, 15).Default(L"x");
        hostrt::ClassDirectory::Instance().Register(&cd);
        hostrt::RegisterParamBlockClasses();
    }
};

Fixture& fx() {
    static Fixture f;
    return f;
}

struct ParamBlockTest : ::testing::Test {
    void SetUp() override {
        theHold.FlushUndoBuffer();
        fx().acc.onGet = nullptr;
        fx().acc.onSet = nullptr;
        fx().acc.tabChanges.clear();
        owner = new Owner();
        fx().cd.MakeAutoParamBlocks(owner);
        pb = static_cast<IParamBlock2*>(owner->GetReference(0));
    }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        theHold.FlushUndoBuffer();
        owner->DeleteMe();
    }
    Owner* owner = nullptr;
    IParamBlock2* pb = nullptr;
};

std::vector<std::uint8_t> saveBlock(ReferenceMaker* block) {
    hostrt::ChunkWriter w;
    w.BeginChunk(0x0100);
    EXPECT_EQ(block->Save(&w), IO_OK);
    w.EndChunk();
    EXPECT_EQ(w.Error(), "");
    return w.Bytes();
}

// Loads a block of the given class from bytes written by saveBlock.
template <class Block> Block* loadBlock(const std::vector<std::uint8_t>& bytes, SClass_ID sc, Class_ID cid,
                                        IOResult expect = IO_OK) {
    auto* block = static_cast<Block*>(CreateInstance(sc, cid));
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    EXPECT_EQ(r.OpenChunk(), IO_OK);
    EXPECT_EQ(block->Load(&r), expect);
    r.CloseChunk();
    return block;
}

}  // namespace

TEST(ParamBlockDesc, BuilderKeepsDefinitionsAndRefusesWhatDoesNotFit) {
    ParamBlockDesc2& d = fx().desc;
    EXPECT_EQ(fx().cd.GetParamBlockDescByID(0), &d);
    EXPECT_EQ(fx().cd.GetParamBlockDescByID(3), nullptr);
    EXPECT_EQ(d.Count(), 10);
    EXPECT_EQ(d.IndextoID(4), kNodes);
    EXPECT_EQ(d.IDtoIndex(kLabel), 9);
    EXPECT_EQ(d.IDtoIndex(99), -1);
    EXPECT_EQ(d.NameToIndex(L"filename"), 1);
    EXPECT_EQ(d.NameToIndex(L""), -1);
    EXPECT_EQ(d.flags & (P_AUTO_CONSTRUCT | P_AUTO_UI), DWORD(P_AUTO_CONSTRUCT | P_AUTO_UI));
    EXPECT_EQ(d.ref_no, 0);
    EXPECT_EQ(d.dlg_template, 101);

    const ParamDef& file = d.GetParamDef(kFileName);
    EXPECT_EQ(file.asset_type_id, 7);
    EXPECT_EQ(file.file_types, 8);
    EXPECT_EQ(file.caption, 5);
    EXPECT_EQ(file.ui.kind, PBControl::CustEdit);
    EXPECT_EQ(file.ui.ctrl_ids, std::vector<int>{1301});
    const ParamDef& mode = d.GetParamDef(kMode);
    EXPECT_EQ(mode.ui.ctrl_ids, (std::vector<int>{1030, 1031, 1032}));
    EXPECT_TRUE(mode.has_range);
    EXPECT_EQ(mode.range_high.AsInt(), 2);
    EXPECT_EQ(d.GetParamDef(kNodes).type & TYPE_TAB, TYPE_TAB);
    EXPECT_TRUE(d.GetParamDef(kTarget).int_name.isNull());
    EXPECT_EQ(d.GetParamDef(kAmount).def.AsFloat(), 2.5f);

    ParamBlockDesc2 other(7, L"Other", 0, nullptr, 0);
    other.AddParam(1, L"Count", TYPE_INT, 0, 0);
    EXPECT_THROW(other.AddParam(1, L"Again", TYPE_FLOAT, 0, 0), MAXException);
    EXPECT_THROW(other.AddParam(2, L"Mesh", TYPE_MESH, 0, 0), MAXException);
    EXPECT_THROW(other.AddParam(3, L"Plain", TYPE_INT, 0, 0).TableSize(4), MAXException);
    try {
        other.AddParam(4, L"Level", TYPE_INT, 0, 0).Default(L"high");
        FAIL() << "a string default fits no integer";
    } catch (const MAXException& e) {
        EXPECT_NE(e.message.str().find(L"'Level' (id 4)"), std::wstring::npos) << e.what();
    }
    EXPECT_THROW(d.GetParamDef(42), MAXException);
}

TEST_F(ParamBlockTest, ClassDefaultsApplyToNewBlocksUnlessResetDefault) {
    fx().desc.SetClassDefault(kMode, 2);
    fx().desc.SetClassDefault(kFileName, L"sticky.max");
    IParamBlock2* fresh = CreateParameterBlock2(&fx().desc, nullptr);
    EXPECT_EQ(fresh->GetInt(kMode), 2);
    EXPECT_STREQ(fresh->GetStr(kFileName), L"");  // P_RESET_DEFAULT: always the original default
    fx().cd.ResetClassParams(FALSE);
    IParamBlock2* reset = CreateParameterBlock2(&fx().desc, nullptr);
    EXPECT_EQ(reset->GetInt(kMode), 1);
    fresh->DeleteThis();
    reset->DeleteThis();
}

TEST_F(ParamBlockTest, ValuesOfEveryKindRoundTripAndMismatchesAreRefused) {
    ASSERT_NE(pb, nullptr);
    EXPECT_EQ(pb->GetOwner(), owner);
    EXPECT_EQ(pb->NumParams(), 10);
    EXPECT_EQ(pb->GetInt(kActive), TRUE);
    EXPECT_EQ(pb->GetInt(kMode), 1);
    EXPECT_EQ(pb->Count(kWeights), 2);
    EXPECT_EQ(pb->GetFloat(kWeights, 0, 1), 1.0f);
    EXPECT_EQ(pb->GetColor(kTint), Color(1, 0, 0));
    EXPECT_STREQ(pb->GetStr(kLabel), L"x");

    Matrix3 m = TransMatrix(Point3(1, 2, 3));
    EXPECT_TRUE(pb->SetValue(kXform, 0, m));
    EXPECT_TRUE(pb->SetValue(kTint, 0, Point3(0.5f, 0.25f, 1.0f)));
    EXPECT_TRUE(pb->SetValue(kLabel, 0, MSTR(L"named")));
    EXPECT_TRUE(pb->SetValue(kMode, 0, 1.6f));  // floats round into integer parameters
    EXPECT_TRUE(pb->SetValue(kAmount, 0, 4));
    EXPECT_EQ(pb->GetMatrix3(kXform), m);
    EXPECT_EQ(pb->GetPoint3(kTint), Point3(0.5f, 0.25f, 1.0f));
    EXPECT_EQ(pb->GetInt(kMode), 2);
    EXPECT_EQ(pb->GetFloat(kAmount), 4.0f);
    MSTR s;
    Interval valid = FOREVER;
    EXPECT_TRUE(pb->GetValue(kLabel, 0, s, valid));
    EXPECT_EQ(s, L"named");

    EXPECT_FALSE(pb->SetValue(kLabel, 0, 3));
    EXPECT_FALSE(pb->SetValue(kMode, 0, L"two"));
    EXPECT_FALSE(pb->SetValue(99, 0, 1));
    EXPECT_FALSE(pb->SetValue(kWeights, 0, 1.0f, 2));
    float f = -1;
    EXPECT_FALSE(pb->GetValue(kLabel, 0, f, valid));
    EXPECT_EQ(f, -1);
    EXPECT_EQ(pb->GetParameterType(kNodes), TYPE_INODE_TAB);
    EXPECT_EQ(pb->GetParameterType(99), TYPE_VOID);
    EXPECT_EQ(pb->GetStr(kMode), nullptr);
}

TEST_F(ParamBlockTest, AccessorSeesTheStoredValueMayReenterAndPrecedesTheChangeMessage) {
    bool inside = false;
    fx().acc.onSet = [&](PB2Value& v, ReferenceMaker* o, ParamID id, int) {
        EXPECT_EQ(o, owner);
        if (id == kFileName) {
            owner->log.push_back(std::string("set reads ") + MSTR(pb->GetStr(kFileName)).ToUTF8() + " v " +
                                 MSTR(v.s).ToUTF8());
            if (!inside) {  // the accessor guards its own recursion
                inside = true;
                pb->SetValue(kActive, 0, FALSE);
                inside = false;
            }
        } else if (id == kActive) {
            owner->log.push_back("active " + std::to_string(pb->GetInt(kActive)));
        } else if (id == kAmount) {
            if (v.f > 10) v.f = 10;  // a clamping accessor
        }
    };
    ASSERT_TRUE(pb->SetValue(kFileName, 0, L"scene.max"));
    EXPECT_EQ(owner->log, (std::vector<std::string>{"set reads scene.max v scene.max", "active 0", "change 0/0",
                                                     "change 1/0"}));
    int tab = -1;
    EXPECT_EQ(pb->LastNotifyParamID(tab), kFileName);
    EXPECT_EQ(tab, 0);

    pb->SetValue(kAmount, 0, 25.0f);
    EXPECT_EQ(pb->GetFloat(kAmount), 10.0f);

    fx().acc.onGet = [](PB2Value& v, ParamID id) {
        if (id == kAmount) v.f *= 2;
    };
    EXPECT_EQ(pb->GetFloat(kAmount), 20.0f);
}

TEST_F(ParamBlockTest, UndoAndRedoOfValuesTablesAndReferences) {
    auto* node = new Item("node");
    theHold.Begin();
    pb->SetValue(kMode, 0, 0);
    pb->SetValue(kLabel, 0, L"new");
    pb->SetCount(kNodes, 1);
    pb->SetValue(kNodes, 0, node);
    theHold.Accept(L"Edit");

    owner->log.clear();
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(pb->GetInt(kMode), 1);
    EXPECT_STREQ(pb->GetStr(kLabel), L"x");
    EXPECT_EQ(pb->Count(kNodes), 0);
    EXPECT_FALSE(owner->log.empty());
    EXPECT_EQ(owner->log.back(), "change 2/0");  // the first change is undone last
    EXPECT_EQ(Item::live, 2) << "the undo record keeps the node alive";

    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(pb->GetInt(kMode), 0);
    EXPECT_STREQ(pb->GetStr(kLabel), L"new");
    ASSERT_EQ(pb->Count(kNodes), 1);
    EXPECT_EQ(pb->GetReferenceTarget(kNodes), node);
    EXPECT_EQ(std::count(node->Dependents().begin(), node->Dependents().end(), pb), 1);

    theHold.Begin();
    theHold.Suspend();
    pb->SetValue(kMode, 0, 2);
    theHold.Resume();
    theHold.Accept(L"Quiet");
    EXPECT_EQ(theHold.NumUndoEntries(), 1) << "a suspended hold records nothing";
}

TEST_F(ParamBlockTest, ReferenceParametersAndControllersAreTheBlocksReferences) {
    auto* a = new Item("a");
    auto* b = new Item("b");
    auto* target = new Item("target");
    // Layout: Amount's controller, Nodes entries, Target, Weights' two controllers.
    EXPECT_EQ(pb->NumRefs(), 1 + 0 + 1 + 2);
    Item* nodes[] = {a, b};
    EXPECT_EQ(pb->Append(kNodes, 2, nodes), 0);
    EXPECT_EQ(pb->NumRefs(), 6);
    EXPECT_EQ(pb->GetReference(1), a);
    EXPECT_EQ(pb->GetReference(2), b);
    ASSERT_EQ(fx().acc.tabChanges.size(), 1u);
    EXPECT_EQ(fx().acc.tabChanges[0].code, tab_append);

    pb->SetValue(kTarget, 0, target);
    EXPECT_EQ(pb->GetReference(3), target);
    EXPECT_EQ(pb->GetINode<Item>(kNodes, 0, 1), b);

    // Inserting in front moves later slots; the bookkeeping stays one dependency per slot.
    Item* front[] = {b};
    pb->Insert(kNodes, 0, 1, front);
    EXPECT_EQ(pb->GetReference(1), b);
    EXPECT_EQ(pb->GetReference(3), b);
    EXPECT_EQ(pb->GetReference(4), target);
    EXPECT_EQ(std::count(b->Dependents().begin(), b->Dependents().end(), pb), 2);

    // The scene reader restores references by index.
    hostrt::RestoreReference(pb, 2, nullptr);
    EXPECT_EQ(pb->GetINode<Item>(kNodes, 0, 1), nullptr);
    EXPECT_EQ(pb->Delete(kNodes, 0, 2), 1);
    EXPECT_EQ(pb->GetReference(1), b);
    EXPECT_TRUE(a->Dependents().empty());
    EXPECT_EQ(pb->Delete(kNodes, 1, 5), -1);

    // A node's own changes stop at the block; a deleted node leaves an empty entry.
    owner->log.clear();
    b->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    EXPECT_TRUE(owner->log.empty());
    b->DeleteMe();
    EXPECT_EQ(pb->GetReference(1), nullptr);
    EXPECT_EQ(pb->Count(kNodes), 1);
    EXPECT_EQ(owner->GetReference(0), pb) << "the owner keeps its block";
    a->DeleteMe();
}

TEST_F(ParamBlockTest, ControllersDriveValuesAndTheirChangesReachTheOwner) {
    auto* c = new FloatCtrl();
    EXPECT_FALSE(pb->SetController(kMode, 0, c)) << "Mode is not animatable";
    ASSERT_TRUE(pb->SetController(kAmount, 0, c));
    EXPECT_EQ(c->value, 2.5f) << "the controller starts from the current value";
    EXPECT_EQ(pb->SubAnim(3), c);
    EXPECT_EQ(pb->SubAnimName(3), MSTR(L"Amount"));
    EXPECT_EQ(pb->SubNumToRefNum(3), 0);
    EXPECT_EQ(pb->SubAnim(kWeights), nullptr) << "tables are no sub-anims";

    c->slope = 0.5f;
    Interval valid = FOREVER;
    float v = 0;
    ASSERT_TRUE(pb->GetValue(kAmount, 10, v, valid));
    EXPECT_EQ(v, 7.5f);
    EXPECT_EQ(valid, Interval(10, 10));
    EXPECT_TRUE(pb->IsAnimated());

    c->slope = 0;
    owner->log.clear();
    pb->SetValue(kAmount, 0, 6.0f);
    EXPECT_EQ(c->value, 6.0f);
    EXPECT_EQ(owner->log, std::vector<std::string>{"change 3/0"}) << "one message, from the block";

    pb->SetValue(kMode, 0, 2);  // makes another parameter the last notified one
    owner->log.clear();
    float nine = 9;
    c->SetValue(0, &nine);
    EXPECT_EQ(owner->log, std::vector<std::string>{"change 3/0"});

    ASSERT_TRUE(pb->RemoveController(kAmount));
    EXPECT_EQ(pb->GetController(kAmount), nullptr);
    EXPECT_EQ(pb->GetFloat(kAmount), 9.0f);

    auto* w = new FloatCtrl(3);
    EXPECT_TRUE(pb->SetController(kWeights, 1, w, FALSE));
    EXPECT_EQ(pb->GetFloat(kWeights, 0, 1), 3.0f);
    EXPECT_EQ(pb->GetReference(pb->NumRefs() - 1), w);
}

TEST_F(ParamBlockTest, SaveAndLoadKeepValuesSizeTablesAndRevertTransients) {
    auto* node = new Item("node");
    auto* ctrl = new FloatCtrl(5);
    pb->SetValue(kActive, 0, FALSE);
    pb->SetValue(kFileName, 0, L"C:\\scenes\\a.max");
    pb->SetValue(kXform, 0, RotateZMatrix(0.5f));
    pb->SetCount(kNodes, 3);
    pb->SetValue(kNodes, 0, node, 2);
    pb->SetCount(kWeights, 3);
    pb->SetValue(kWeights, 0, 0.25f, 2);
    pb->SetController(kWeights, 0, ctrl);
    pb->SetValue(kTint, 0, Color(0, 1, 0));

    auto* loaded = loadBlock<IParamBlock2>(saveBlock(pb), PARAMETER_BLOCK2_CLASS_ID, PARAMBLOCK2_HOST_CLASS_ID);
    ASSERT_EQ(loaded->GetDesc(), &fx().desc);
    EXPECT_EQ(loaded->GetInt(kActive), TRUE) << "transient: back to its default";
    EXPECT_STREQ(loaded->GetStr(kFileName), L"C:\\scenes\\a.max");
    EXPECT_TRUE(loaded->GetMatrix3(kXform).Equals(RotateZMatrix(0.5f)));
    EXPECT_EQ(loaded->GetColor(kTint), Color(0, 1, 0));
    EXPECT_EQ(loaded->Count(kNodes), 3);
    EXPECT_EQ(loaded->Count(kWeights), 3);
    EXPECT_EQ(loaded->GetFloat(kWeights, 0, 2), 0.25f);
    ASSERT_EQ(loaded->NumRefs(), pb->NumRefs());

    for (int i = 0; i < pb->NumRefs(); ++i) hostrt::RestoreReference(loaded, i, pb->GetReference(i));
    EXPECT_EQ(loaded->GetReferenceTarget(kNodes, 0, 2), node);
    EXPECT_EQ(loaded->GetController(kWeights, 0), ctrl);
    owner->ReplaceReference(1, loaded);
    EXPECT_EQ(loaded->GetOwner(), owner) << "found among the dependents after a load";
}

TEST_F(ParamBlockTest, LoadSkipsUnknownParametersAndRefusesUnknownBlocks) {
    // A file written by another version of the class: an unknown id, a parameter whose type changed kind, a
    // chunk this host does not know.
    auto file = [](SClass_ID sc, int valueBytes) {
        hostrt::ChunkWriter w;
        auto put = [&](auto v) { ULONG n; w.Write(&v, sizeof v, &n); };
        auto param = [&](ParamID id, USHORT type, auto value, int bytes) {
            w.BeginChunk(0x2010);
            w.BeginChunk(0x2011);
            put(std::int16_t(id)), put(std::uint16_t(type)), put(std::int32_t(1));
            w.EndChunk();
            w.BeginChunk(0x2012);
            ULONG n;
            w.Write(&value, ULONG(bytes), &n);
            w.EndChunk();
            w.EndChunk();
        };
        w.BeginChunk(0x0100);
        w.BeginChunk(0x2001);
        put(std::uint32_t(sc)), put(kOwnerClass.PartA()), put(kOwnerClass.PartB()), put(std::int16_t(0));
        w.EndChunk();
        param(99, TYPE_INT, std::int32_t(7), 4);
        param(kMode, TYPE_INT, std::int32_t(0), valueBytes);
        param(kLabel, TYPE_FLOAT, 1.5f, 4);
        w.BeginChunk(0x7777);
        put(std::int32_t(1));
        w.EndChunk();
        w.EndChunk();
        return w.Bytes();
    };
    auto* ok = loadBlock<IParamBlock2>(file(REF_TARGET_CLASS_ID, 4), PARAMETER_BLOCK2_CLASS_ID,
                                       PARAMBLOCK2_HOST_CLASS_ID);
    EXPECT_EQ(ok->GetInt(kMode), 0);
    EXPECT_STREQ(ok->GetStr(kLabel), L"x");
    auto* damaged = loadBlock<IParamBlock2>(file(REF_TARGET_CLASS_ID, 2), PARAMETER_BLOCK2_CLASS_ID,
                                            PARAMBLOCK2_HOST_CLASS_ID, IO_ERROR);
    auto* unknown = loadBlock<IParamBlock2>(file(GEOMOBJECT_CLASS_ID, 4), PARAMETER_BLOCK2_CLASS_ID,
                                            PARAMBLOCK2_HOST_CLASS_ID, IO_ERROR);
    EXPECT_EQ(unknown->GetDesc(), nullptr);
    for (IParamBlock2* b : {ok, damaged, unknown}) b->DeleteThis();
}

TEST_F(ParamBlockTest, CloneCopiesValuesClonesControllersAndFollowsClonedTargets) {
    auto* kept = new Item("kept");
    auto* cloned = new Item("cloned");
    auto* ctrl = new FloatCtrl(4);
    pb->SetValue(kLabel, 0, L"copy me");
    pb->SetCount(kNodes, 2);
    pb->SetValue(kNodes, 0, kept, 0);
    pb->SetValue(kNodes, 0, cloned, 1);
    pb->SetController(kAmount, 0, ctrl, FALSE);

    RemapDir& remap = NewRemapDir();
    auto* copy = static_cast<IParamBlock2*>(remap.CloneRef(pb));
    auto* clonedCopy = static_cast<Item*>(remap.CloneRef(cloned));  // cloned after the block, same operation
    remap.DeleteThis();

    EXPECT_STREQ(copy->GetStr(kLabel), L"copy me");
    EXPECT_EQ(copy->GetDesc(), &fx().desc);
    ASSERT_NE(copy->GetController(kAmount), nullptr);
    EXPECT_NE(copy->GetController(kAmount), ctrl);
    EXPECT_EQ(copy->GetFloat(kAmount), 4.0f);
    EXPECT_EQ(copy->GetReferenceTarget(kNodes, 0, 0), kept);
    EXPECT_EQ(copy->GetReferenceTarget(kNodes, 0, 1), clonedCopy);
    EXPECT_EQ(std::count(cloned->Dependents().begin(), cloned->Dependents().end(), copy), 0);
    copy->DeleteMe();  // takes the node clone, which only the copy referenced, with it
}

TEST_F(ParamBlockTest, AutomaticBlocksAndRollouts) {
    EXPECT_EQ(pb->GetDesc(), &fx().desc);
    EXPECT_EQ(pb->ID(), 0);

    fx().cd.BeginEditParams(nullptr, owner, 0, nullptr);
    fx().cd.BeginEditParams(nullptr, owner, 0, nullptr);
    EXPECT_EQ(hostrt::OpenParamRollouts(), std::vector<IParamBlock2*>{pb});
    fx().cd.EndEditParams(nullptr, owner, 0, nullptr);
    EXPECT_TRUE(hostrt::OpenParamRollouts().empty());

    fx().cd.BeginEditParams(nullptr, owner, 0, nullptr);
    owner->DeleteReference(0);  // the block goes, and its rollout with it
    EXPECT_TRUE(hostrt::OpenParamRollouts().empty());

    auto* tiny = new Item("tiny", 0);
    try {
        fx().cd.MakeAutoParamBlocks(tiny);
        FAIL() << "reference 0 does not exist";
    } catch (const MAXException& e) {
        EXPECT_NE(e.message.str().find(L"block 'Parameters' (id 0) of class PBOwner"), std::wstring::npos) << e.what();
    }
    tiny->DeleteMe();
}

TEST(ParamBlock1, ValuesControllersUndoSaveLoadAndClone) {
    hostrt::RegisterParamBlockClasses();
    theHold.FlushUndoBuffer();
    const ParamBlockDescID descs[] = {
        {TYPE_FLOAT, TRUE, 10, L"Radius"}, {TYPE_INT, FALSE, 11}, {TYPE_RGBA, TRUE, 12}, {TYPE_BOOL, FALSE, 13}};
    const ParamBlockDescID bad[] = {{TYPE_STRING, FALSE, 1}};
    EXPECT_THROW(CreateParameterBlock(bad, 1), MAXException);

    auto* owner = new Item("owner", 1);
    IParamBlock* pb = CreateParameterBlock(descs, 4, 3);
    owner->ReplaceReference(0, pb);
    EXPECT_EQ(pb->NumParams(), 4);
    EXPECT_EQ(pb->GetParameterType(2), TYPE_RGBA);
    EXPECT_EQ(pb->LastNotifyParamNum(), -1);

    EXPECT_TRUE(pb->SetValue(1, 0, 2.6f));
    EXPECT_TRUE(pb->SetValue(2, 0, Color(0.1f, 0.2f, 0.3f)));
    EXPECT_FALSE(pb->SetValue(0, 0, Point3(1, 1, 1)));
    EXPECT_FALSE(pb->SetValue(4, 0, 1));
    Interval valid = FOREVER;
    int i = 0;
    EXPECT_TRUE(pb->GetValue(1, 0, i, valid));
    EXPECT_EQ(i, 3);
    EXPECT_EQ(pb->LastNotifyParamNum(), 2);
    EXPECT_EQ(owner->heard.back().message, RefMessage(REFMSG_CHANGE));

    theHold.Begin();
    pb->SetValue(0, 0, 8.0f);
    theHold.Accept(L"Radius");
    theHold.Undo();
    float f = -1;
    pb->GetValue(0, 0, f, valid);
    EXPECT_EQ(f, 0.0f);

    auto* c = new FloatCtrl();
    EXPECT_FALSE(pb->SetController(1, c)) << "not animatable";
    ASSERT_TRUE(pb->SetController(0, c));
    EXPECT_EQ(pb->GetReference(0), c);
    EXPECT_EQ(pb->SubAnim(0), c);
    EXPECT_EQ(pb->SubAnim(2), nullptr);
    EXPECT_EQ(pb->SubAnimName(0), MSTR(L"Radius"));
    pb->SetValue(1, 0, 4);
    float seven = 7;
    c->SetValue(0, &seven);
    EXPECT_EQ(pb->LastNotifyParamNum(), 0);
    pb->GetValue(0, 0, f, valid);
    EXPECT_EQ(f, 7.0f);

    auto* loaded = loadBlock<IParamBlock>(saveBlock(pb), PARAMETER_BLOCK_CLASS_ID, PARAMBLOCK1_HOST_CLASS_ID);
    ASSERT_EQ(loaded->NumParams(), 4);
    EXPECT_EQ(loaded->GetVersion(), 3u);
    EXPECT_EQ(loaded->GetParamID(3), 13u);
    EXPECT_TRUE(loaded->IsParamAnimatable(2));
    EXPECT_EQ(loaded->SubAnimName(0), MSTR(L"Radius"));
    Color col;
    loaded->GetValue(2, 0, col, valid);
    EXPECT_EQ(col, Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(loaded->GetReference(0), nullptr) << "controllers come back as references";
    loaded->DeleteThis();

    auto* copy = static_cast<IParamBlock*>(CloneRefHierarchy(pb));
    ASSERT_NE(copy->GetController(0), nullptr);
    EXPECT_NE(copy->GetController(0), c);
    copy->GetValue(1, 0, i, valid);
    EXPECT_EQ(i, 4);
    copy->DeleteMe();

    EXPECT_TRUE(pb->RemoveController(0));
    pb->GetValue(0, 0, f, valid);
    EXPECT_EQ(f, 7.0f);
    theHold.FlushUndoBuffer();
    owner->DeleteMe();
}
