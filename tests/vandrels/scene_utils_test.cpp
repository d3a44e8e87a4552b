// The records' scene utilities on real host objects: the name-prefix rule, the sub-anim address space (custom
// attribute container, node slots, derived-object chains, parameter blocks, custom attributes), the transfer
// filter and reference transfer with its failure text, and the one-line item descriptions.
#include "core/class_directory.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxexception.h"
#include "object.h"
#include "plugapi.h"
#include "records/node_transfer.h"
#include "records/scene_utils.h"
#include "records/subanim_space.h"
#include "scene/identity_class.h"
#include "scene/scene.h"
#include "vandrels_library.h"
#include "winshim.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The plug-in's layers linked into the tests: the instance handle their string-table reads go through.
MAX_PLUGIN_EXPORT BOOL DllMain(HINSTANCE instance, ULONG reason, void*);

namespace {

constexpr Interface_ID kNoCustAttribEntries(0x444E7687, 0x722E6E36);

template <class T> T* Make(SClass_ID sc, Class_ID id) {
    return dynamic_cast<T*>(static_cast<Animatable*>(hostrt::IdentityClass::Make(sc, id)));
}

Object* Box() {
    return dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
}

Modifier* Bend(const MCHAR* name) {
    auto* m = dynamic_cast<Modifier*>(static_cast<Animatable*>(CreateInstance(OSM_CLASS_ID, HOST_BEND_CLASS_ID)));
    m->SetName(name);
    return m;
}

// A dependent with a list of references that logs the messages it hears and may refuse to give up one slot.
class Item : public ReferenceTarget {
public:
    explicit Item(int refs) : refs_(std::size_t(refs), nullptr) {}
    Class_ID ClassID() override { return Class_ID(0x7E570001, 0); }
    void GetClassName(MSTR& s, bool) const override { s = L"Item"; }
    int NumRefs() override { return int(refs_.size()); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < NumRefs() ? refs_[std::size_t(i)] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override {
        if (i >= 0 && i < NumRefs()) refs_[std::size_t(i)] = t;
    }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID& part, RefMessage message, BOOL) override {
        heard.push_back({message, part});
        return REF_SUCCEED;
    }
    BOOL CanTransferReference(int i) override { return i != pinnedSlot; }

    struct Heard {
        RefMessage message;
        PartID part;
    };
    std::vector<Heard> heard;
    int pinnedSlot = -1;

private:
    std::vector<RefTargetHandle> refs_;
};

struct NamedAttrib : CustAttrib {
    explicit NamedAttrib(const MCHAR* n, IParamBlock2* pb = nullptr) : name(n), block(pb) {}
    const MCHAR* GetName(bool) override { return name.data(); }
    int NumParamBlocks() override { return block ? 1 : 0; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block : nullptr; }
    MSTR name;
    IParamBlock2* block;
};

// An item whose reference slots throw when set: a dependent the transfer fails on.
struct Brittle : Item {
    Brittle() : Item(1) {}
    void SetReference(int i, RefTargetHandle t) override {
        if (locked) throw MAXException(L"slot is locked");
        Item::SetReference(i, t);
    }
    bool locked = false;
    void GetClassName(MSTR& s, bool) const override { s = L"Brittle"; }
};

struct NullClassItem : Item {
    using Item::Item;
    Class_ID ClassID() override { return Class_ID(0, 0); }
};

enum : ParamID { kTargets, kAmount, kUnnamed };

ParamBlockDesc2& TableDesc() {
    static ParamBlockDesc2* desc = [] {
        auto* d = new ParamBlockDesc2(0, L"Parameters", 0, nullptr, 0);
        d->AddParam(kTargets, L"Targets", TYPE_INODE_TAB, 0, 0);
        d->AddParam(kAmount, L"Amount", TYPE_FLOAT, P_ANIMATABLE, 0).Default(1.0f);
        d->AddParam(kUnnamed, nullptr, TYPE_INT, 0, 0);
        return d;
    }();
    return *desc;
}

MSTR Name(Animatable* anim, Animatable* parent, int index, const MCHAR* hint = nullptr) {
    MSTR name(L"?");
    GetSubAnimByIndex(anim, parent, index, hint, name);
    return name;
}

class SceneUtils : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        // The address space names its fixed entries from the library's own string table.
        DllMain(vtest::VandrelsLibrary().handle, DLL_PROCESS_ATTACH, nullptr);
        hostrt::Scene::Instance().ResetScene();
    }
    void TearDown() override { hostrt::Scene::Instance().ResetScene(); }
    Interface* ip() { return GetCOREInterface(); }
};

}  // namespace

TEST(StripNamePrefix, StripsOnlyAWholePrefixFollowedByUnderscore) {
    MSTR name(L"AB_x");
    EXPECT_EQ(StripNamePrefix(L"A", name), 1);
    EXPECT_EQ(name, MSTR(L"AB_x"));
    name = L"A_x";
    EXPECT_EQ(StripNamePrefix(L"A", name), 0);
    EXPECT_EQ(name, MSTR(L"x"));
    name = L"A_x";
    EXPECT_EQ(StripNamePrefix(L"", name), 0);
    EXPECT_EQ(StripNamePrefix(nullptr, name), 0);
    EXPECT_EQ(name, MSTR(L"A_x"));
    // Prefixes as long as the name, one longer, and longer still never match.
    for (const MCHAR* prefix : {L"A_x", L"A_x_", L"A_x_yz"}) {
        name = L"A_x";
        EXPECT_EQ(StripNamePrefix(prefix, name), 1) << MSTR(prefix).ToUTF8();
        EXPECT_EQ(name, MSTR(L"A_x"));
    }
}

TEST_F(SceneUtils, NodeEntriesFollowTheFixedSlots) {
    IDerivedObject* stack = CreateDerivedObject(Box());
    stack->AddModifier(Bend(L"Bend"));
    INode* node = ip()->CreateObjectNode(stack);
    auto* vis = Make<Control>(CTRL_FLOAT_CLASS_ID, Class_ID(0x7E57C001, 1));
    node->SetVisController(vis);
    node->AllocCustAttribContainer();
    node->GetCustAttribContainer()->AppendCustAttrib(new NamedAttrib(L"Extra"));

    MSTR name;
    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, 0, nullptr, name), node->GetCustAttribContainer());
    EXPECT_EQ(name, MSTR(L"CAC"));
    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, -1, nullptr, name), nullptr);

    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, 1, nullptr, name), vis);
    EXPECT_EQ(name, MSTR(L"Vis"));
    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, 2, nullptr, name), stack);
    EXPECT_EQ(name, MSTR(L"Mods"));
    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, 3, nullptr, name), node->GetTMController());
    EXPECT_EQ(name, MSTR(L"TM"));
    EXPECT_EQ(GetSubAnimByIndex(node, nullptr, 4, nullptr, name), stack->FindBaseObject());
    EXPECT_EQ(name, MSTR(L"BO"));
    EXPECT_EQ(Name(node, nullptr, 6), MSTR(L"IMBM"));
    EXPECT_EQ(Name(node, nullptr, 7), MSTR(L"MBO"));
    for (int empty : {5, 8, 9}) {
        EXPECT_EQ(GetSubAnimByIndex(node, nullptr, empty, nullptr, name), nullptr) << empty;
        EXPECT_TRUE(name.isNull()) << empty;
    }
    // Seven host sub-anims, the container entry and one custom attribute; nothing below a node under a parent.
    EXPECT_EQ(CountSubAnims(node, nullptr), 9);
    EXPECT_EQ(CountSubAnims(node, node->GetParentNode()), 0);
}

TEST_F(SceneUtils, DerivedChainsNumberModifiersBottomUp) {
    Object* box = Box();
    IDerivedObject* lower = CreateDerivedObject(box);
    lower->AddModifier(Bend(L"m1"));
    lower->AddModifier(Bend(L"m2"));  // on top of m1
    IDerivedObject* upper = CreateDerivedObject(lower);
    upper->AddModifier(Bend(L"m3"));
    upper->AddModifier(Bend(L"m4"));
    INode* node = ip()->CreateObjectNode(upper);

    // Under anything but a node: entry 1 is the base object, modifiers follow from 2.
    EXPECT_EQ(CountSubAnims(upper, nullptr), 6);
    MSTR name;
    EXPECT_EQ(GetSubAnimByIndex(upper, nullptr, 1, nullptr, name), box);
    EXPECT_EQ(name, MSTR(L"BO"));
    const MCHAR* order[] = {L"m1", L"m2", L"m3", L"m4"};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Name(upper, nullptr, 2 + i), MSTR(order[i])) << i;
    EXPECT_EQ(GetSubAnimByIndex(upper, nullptr, 2, nullptr, name), lower->GetModifier(1));
    EXPECT_EQ(GetSubAnimByIndex(upper, nullptr, 6, nullptr, name), nullptr);

    // Under its node: one more entry counted, modifiers from 1.
    EXPECT_EQ(CountSubAnims(upper, node), 7);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Name(upper, node, 1 + i), MSTR(order[i])) << i;
    EXPECT_EQ(GetSubAnimByIndex(upper, node, 4, nullptr, name), upper->GetModifier(0));
    EXPECT_EQ(GetSubAnimByIndex(upper, node, 5, nullptr, name), nullptr);

}

TEST_F(SceneUtils, ParameterBlockEntriesWithAndWithoutHint) {
    IParamBlock2* pb = CreateParameterBlock2(&TableDesc(), nullptr);
    INode* a = ip()->CreateObjectNode(Box());
    INode* b = ip()->CreateObjectNode(Box());
    INode* nodes[] = {a, b};
    pb->Append(kTargets, 2, nodes);

    // With a hint the table's items are addressed from index 0; the hint is matched without case.
    EXPECT_EQ(CountSubAnims(pb, nullptr, L"targets"), 2);
    MSTR name;
    EXPECT_EQ(GetSubAnimByIndex(pb, nullptr, 0, L"Targets", name), a);
    EXPECT_EQ(name, MSTR(L"TabItem"));
    EXPECT_EQ(GetSubAnimByIndex(pb, nullptr, 1, L"Targets", name), b);
    EXPECT_EQ(GetSubAnimByIndex(pb, nullptr, 2, L"Targets", name), nullptr);
    EXPECT_TRUE(name.isNull());
    // A hint that names no table addresses nothing.
    EXPECT_EQ(CountSubAnims(pb, nullptr, L"Amount"), 0);

    // Without a hint: index 0 the container, then one entry per parameter.
    EXPECT_EQ(CountSubAnims(pb, nullptr), 4);
    EXPECT_EQ(Name(pb, nullptr, 0), MSTR(L"CAC"));
    EXPECT_EQ(Name(pb, nullptr, 1), MSTR(L"Targets"));
    auto* ctrl = Make<Control>(CTRL_FLOAT_CLASS_ID, Class_ID(0x7E57C001, 1));
    ASSERT_TRUE(pb->SetController(kAmount, 0, ctrl));
    EXPECT_EQ(GetSubAnimByIndex(pb, nullptr, 2, nullptr, name), ctrl);
    EXPECT_EQ(name, MSTR(L"Amount"));
    EXPECT_EQ(Name(pb, nullptr, 3), MSTR(L"unnamed"));
    EXPECT_TRUE(Name(pb, nullptr, 4).isNull());
}

TEST_F(SceneUtils, CustomAttributesFollowTheSubAnims) {
    auto* item = Make<ReferenceTarget>(REF_TARGET_CLASS_ID, Class_ID(0x7E57C002, 1));
    auto* identity = hostrt::IdentityClass::Of(item);
    identity->SetNumRefs(2);
    identity->AddSubAnim(0, L"First");
    identity->AddSubAnim(1, L"Second");
    auto* first = Make<Control>(CTRL_FLOAT_CLASS_ID, Class_ID(0x7E57C001, 1));
    item->ReplaceReference(0, first);
    // The second sub-anim is the block of a custom attribute: it has no entry of its own there.
    IParamBlock2* attribBlock = CreateParameterBlock2(&TableDesc(), nullptr);
    item->ReplaceReference(1, attribBlock);
    item->AllocCustAttribContainer();
    ICustAttribContainer* cc = item->GetCustAttribContainer();
    auto* shape = new NamedAttrib(L"Shape", attribBlock);
    auto* rig = new NamedAttrib(L"Rig");
    cc->AppendCustAttrib(shape);
    cc->AppendCustAttrib(rig);

    EXPECT_EQ(CountSubAnims(item, nullptr), 5);
    MSTR name;
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 1, nullptr, name), first);
    EXPECT_EQ(name, MSTR(L"First"));
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 2, nullptr, name), nullptr);
    EXPECT_TRUE(name.isNull());
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 3, nullptr, name), shape);
    EXPECT_EQ(name, MSTR(L"Shape"));
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 4, nullptr, name), rig);
    EXPECT_EQ(name, MSTR(L"Rig"));
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 5, nullptr, name), nullptr);

    // An item answering the interface keeps its attributes out of the numbering.
    identity->AddInterface(kNoCustAttribEntries);
    EXPECT_EQ(CountSubAnims(item, nullptr), 3);
    EXPECT_EQ(GetSubAnimByIndex(item, nullptr, 3, nullptr, name), nullptr);
}

TEST_F(SceneUtils, TransferFilterRows) {
    INode* old = ip()->CreateObjectNode(Box());
    TransferTrace trace;

    auto* record = static_cast<ReferenceMaker*>(
        static_cast<Animatable*>(CreateInstance(0x8663DFA6, Class_ID(0x8663DFA6, 0x3F273884))));
    ASSERT_NE(record, nullptr);
    EXPECT_TRUE(MayTransferReference(record, 0, old, trace));

    NullClassItem nullClass{1};
    EXPECT_FALSE(MayTransferReference(&nullClass, 0, old, trace));
    auto* pinnedCtrl = Make<ReferenceMaker>(CTRL_MATRIX3_CLASS_ID, Class_ID(0x78724378, 0x008A4FD9));
    EXPECT_FALSE(MayTransferReference(pinnedCtrl, 0, old, trace));

    // Everyone else answers for itself.
    Item plain(2);
    plain.pinnedSlot = 1;
    EXPECT_TRUE(MayTransferReference(&plain, 0, old, trace));
    EXPECT_FALSE(MayTransferReference(&plain, 1, old, trace));

    // Blocks follow their owner; the owner examined is noted.
    auto* pathOwner = Make<ReferenceMaker>(CTRL_POSITION_CLASS_ID, Class_ID(8209, 0));
    IParamBlock2* pathBlock = CreateParameterBlock2(&TableDesc(), pathOwner);
    EXPECT_TRUE(MayTransferReference(pathBlock, 0, old, trace));
    EXPECT_EQ(trace.ownerSuperClass, SClass_ID(CTRL_POSITION_CLASS_ID));
    EXPECT_EQ(trace.ownerClass, Class_ID(8209, 0));

    auto* pfOwner = Make<ReferenceMaker>(HELPER_CLASS_ID, Class_ID(0x74F93B04, 0x1EB34300));
    EXPECT_FALSE(MayTransferReference(CreateParameterBlock2(&TableDesc(), pfOwner), 0, old, trace));

    // Any other owner: only when one of the block's node parameters holds the old item.
    auto* otherOwner = Make<ReferenceMaker>(OSM_CLASS_ID, Class_ID(0x7E57C003, 1));
    IParamBlock2* otherBlock = CreateParameterBlock2(&TableDesc(), otherOwner);
    INode* unrelated = ip()->CreateObjectNode(Box());
    otherBlock->Append(kTargets, 1, &unrelated);
    EXPECT_FALSE(MayTransferReference(otherBlock, 0, old, trace));
    EXPECT_EQ(trace.ownerClass, Class_ID(0x7E57C003, 1));
    otherBlock->Append(kTargets, 1, &old);
    EXPECT_TRUE(MayTransferReference(otherBlock, 1, old, trace));
}

TEST_F(SceneUtils, TransferMovesAllowedReferencesAndTellsDependents) {
    INode* oldNode = ip()->CreateObjectNode(Box());
    INode* newNode = ip()->CreateObjectNode(Box());
    auto* user = new Item(2);
    user->pinnedSlot = 1;
    user->ReplaceReference(0, oldNode);
    user->ReplaceReference(1, oldNode);
    auto* listener = new Item(1);
    listener->ReplaceReference(0, newNode);

    TransferNodeReferences(oldNode, newNode, true);
    EXPECT_EQ(user->GetReference(0), newNode);
    EXPECT_EQ(user->GetReference(1), oldNode);
    std::vector<RefMessage> heard;
    for (const auto& h : listener->heard)
        if (h.part == PartID(0x800037FF)) heard.push_back(h.message);
    EXPECT_EQ(heard, (std::vector<RefMessage>{258, 80}));

    listener->heard.clear();
    TransferNodeReferences(oldNode, newNode, false);
    EXPECT_TRUE(listener->heard.empty());
}

TEST_F(SceneUtils, FailedTransferListsDependentsAndLatestBlockOwner) {
    INode* oldNode = ip()->CreateObjectNode(Box());
    INode* newNode = ip()->CreateObjectNode(Box());
    auto* owner = Make<ReferenceMaker>(CTRL_ROTATION_CLASS_ID, Class_ID(8224, 0));
    IParamBlock2* pb = CreateParameterBlock2(&TableDesc(), owner);
    pb->Append(kTargets, 1, &oldNode);
    auto* brittle = new Brittle();
    brittle->ReplaceReference(0, oldNode);
    brittle->locked = true;

    try {
        TransferNodeReferences(oldNode, newNode, false);
        FAIL() << "the brittle dependent cannot move";
    } catch (const MAXException& e) {
        EXPECT_EQ(e.error, 0);
        const std::wstring text = e.message.str();
        const std::wstring head = L"Error Transferring Node References\nDependents:";
        EXPECT_EQ(text.substr(0, head.size()), head);
        const std::wstring line = L"\nBrittle(" + std::to_wstring(Animatable::GetHandleByAnim(brittle)) +
                                  L") SuperClassID:512 ClassID:(2119630849,0)\n";
        EXPECT_NE(text.find(line), std::wstring::npos) << e.what();
        EXPECT_NE(text.find(L"\nParamBlock2("), std::wstring::npos) << e.what();
        EXPECT_NE(text.find(L"\nLatest Pblock2 Owner: SuperClassID:36876 ClassID: (8224,0)"), std::wstring::npos)
            << e.what();
        EXPECT_NE(text.find(L"slot is locked"), std::wstring::npos) << e.what();
    }
    // The block moved before the failure.
    EXPECT_EQ(pb->GetINode(kTargets, 0, 0), newNode);
}
