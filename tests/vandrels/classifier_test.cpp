// The animatable classifier on host objects: identity objects of any superclass and class stand for the host's
// plug-in classes, real boxes, lights, controllers and parameter blocks for the host's own. Each group is a
// table of cases: what the animatable is, what it is met below, and the record type code it must get.
#include "control.h"
#include "core/class_directory.h"
#include "imtl.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "max.h"
#include "object.h"
#include "plugapi.h"
#include "scene/identity_class.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The classifier is host-only code, built into the tests too (tests/CMakeLists.txt).
#include "anims/classifier.h"

namespace {

using hostrt::IdentityClass;

constexpr SClass_ID kNode = 0x0001, kGeom = 0x0010, kHelper = 0x0050, kCustAttrib = 0x1160;
constexpr SClass_ID kFloat = 0x9003, kPoint3 = 0x9005, kMatrix = 0x9008, kPosition = 0x900B;

// Objects made for one case; deleted when the case is done.
class Scratch {
public:
    ~Scratch() {
        for (auto it = made_.rbegin(); it != made_.rend(); ++it) (*it)->DeleteMe();
    }
    ReferenceTarget* Keep(ReferenceTarget* t) {
        made_.push_back(t);
        return t;
    }
    // An identity object, configured by the given steps.
    ReferenceTarget* Id(SClass_ID sclass, Class_ID cid, const std::function<void(IdentityClass&)>& setup = {}) {
        ReferenceTarget* t = Keep(IdentityClass::Make(sclass, cid));
        if (setup) setup(*IdentityClass::Of(t));
        return t;
    }
    // An identity object that holds one reference (to a fresh float controller identity), as sub-anim 0 when
    // asSub is set.
    ReferenceTarget* WithRef(SClass_ID sclass, Class_ID cid, bool asSub) {
        ReferenceTarget* t = Id(sclass, cid, [&](IdentityClass& id) {
            id.SetNumRefs(1);
            if (asSub) id.AddSubAnim(0, L"Sub");
        });
        t->ReplaceReference(0, Id(kFloat, Class_ID(0x7E57C001, 1)));
        return t;
    }
    ReferenceTarget* Node() { return Id(kNode, Class_ID(0x7E57C002, 1)); }

private:
    std::vector<ReferenceTarget*> made_;
};

struct Case {
    std::string name;
    std::function<Animatable*(Scratch&)> anim;
    std::function<Animatable*(Scratch&)> parent;
    std::uint32_t code;
};

void Check(const std::vector<Case>& cases) {
    for (const Case& c : cases) {
        Scratch s;
        Animatable* anim = c.anim ? c.anim(s) : nullptr;
        Animatable* parent = c.parent ? c.parent(s) : nullptr;
        EXPECT_EQ(ClassifyAnim(anim, parent), c.code) << c.name << ": got 0x" << std::hex << ClassifyAnim(anim, parent);
    }
}

auto Ident(SClass_ID sclass, Class_ID cid, std::function<void(IdentityClass&)> setup = {}) {
    return [=](Scratch& s) -> Animatable* { return s.Id(sclass, cid, setup); };
}
auto Fixed(SClass_ID sclass, Class_ID cid, std::function<void(IdentityClass&)> setup = {}) {
    return Ident(sclass, cid, [=](IdentityClass& id) {
        id.SetCanCopyAnim(false);
        if (setup) setup(id);
    });
}
auto Whole(SClass_ID sclass, Class_ID cid, std::function<void(IdentityClass&)> setup = {}) {
    return Ident(sclass, cid, [=](IdentityClass& id) {
        id.SetIsReplaceable(false);
        if (setup) setup(id);
    });
}
auto Answering(Interface_ID iid) {
    return [=](IdentityClass& id) { id.AddInterface(iid); };
}
auto AnyNode() {
    return [](Scratch& s) -> Animatable* { return s.Node(); };
}
auto Host(SClass_ID sclass, Class_ID cid) {
    return [=](Scratch& s) -> Animatable* {
        return s.Keep(static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(sclass, cid))));
    };
}

// A parameter block 2 owned by an identity object of the given class, which the case keeps alive too.
class BlockOwnerDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return nullptr; }
    const MCHAR* ClassName() override { return L"ClassifierBlockOwner"; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    Class_ID ClassID() override { return Class_ID(0x7E57C003, 1); }
    const MCHAR* Category() override { return L""; }
};

ParamBlockDesc2& BlockDesc() {
    static BlockOwnerDesc cd;
    static ParamBlockDesc2 desc(0, L"Parameters", 0, &cd, 0);
    return desc;
}

auto BlockOwnedBy(Class_ID ownerClass) {
    return [=](Scratch& s) -> Animatable* {
        auto* owner = static_cast<ReferenceMaker*>(s.Id(0x0200, ownerClass, [](IdentityClass& id) { id.SetNumRefs(1); }));
        IParamBlock2* block = CreateParameterBlock2(&BlockDesc(), owner);
        owner->ReplaceReference(0, block);
        return block;
    };
}

class ClassifierTest : public ::testing::Test {
protected:
    void SetUp() override { hostrt::RegisterBuiltinClasses(); }
};

// ---- Top-level branches and the anims that refuse the anim copy.

TEST_F(ClassifierTest, TopLevelBranchesAndAnimsThatRefuseTheCopy) {
    const Class_ID locDepFloat(0x72930021, 0x06951211);
    const Class_ID boneOwner(0x848361CB, 0x913CC083);
    Check({
        {"null", nullptr, nullptr, 0},
        {"class (-1, 0) is ignored", Ident(kGeom, Class_ID(0xFFFFFFFF, 0)), nullptr, 2},
        {"class (-1, 0) refusing the copy walks", Fixed(kGeom, Class_ID(0xFFFFFFFF, 0)), nullptr, 0x00020000},
        {"Particle Flow source object", Fixed(kGeom, Class_ID(0x50320C9A, 0)), nullptr, 0x00030016},
        {"other geometry refusing the copy", Fixed(kGeom, Class_ID(0x7E57C010, 1)), nullptr, 0x00020000},
        {"custom attribute", Fixed(kCustAttrib, Class_ID(0x7E57C011, 1)), nullptr, 0x00030007},
        {"Particle Flow event", Fixed(kHelper, Class_ID(0x74F93B03, 0x1EB34300)), nullptr, 0x00030017},
        {"test under a node", Fixed(kHelper, Class_ID(0x7E57C012, 1), Answering(Interface_ID(0x74F93D02, 0x1EB34500))),
         AnyNode(), 0x00230037},
        {"test not under a node", Fixed(kHelper, Class_ID(0x7E57C012, 1), Answering(Interface_ID(0x74F93D02, 0x1EB34500))),
         nullptr, 0x00020000},
        {"material refusing the copy", Fixed(0x0C00, Class_ID(0x4B9937E0, 0x3A1C3DA4)), nullptr, 0x00020000},
        {"Biped root", Fixed(kMatrix, Class_ID(0x00009156, 0)), nullptr, 0x0001000E},
        {"Biped part", Fixed(kMatrix, Class_ID(0x00009154, 0)), nullptr, 0x00030039},
        {"CAT controller under a node", Fixed(kMatrix, Class_ID(0x7E57C013, 1), Answering(Interface_ID(0x00D83DC1, 0x4C851B6C))),
         AnyNode(), 0x000B0033},
        {"CAT controller elsewhere", Fixed(kMatrix, Class_ID(0x7E57C013, 1), Answering(Interface_ID(0x00D83DC1, 0x4C851B6C))),
         nullptr, 0x00020000},
        {"external reference controller", Fixed(kMatrix, Class_ID(0x32FB4637, 0x65FD482B)), nullptr, 0x00030031},
        {"fixed IK solver", Fixed(kMatrix, Class_ID(0xBE380A31, 0x310DC9E4)), nullptr, 0x000E0034},
        {"local-dependency float in the block of its owner", Fixed(kFloat, locDepFloat), BlockOwnedBy(boneOwner), 0x0003000C},
        {"local-dependency float in another block", Fixed(kFloat, locDepFloat), BlockOwnedBy(Class_ID(0x7E57C014, 1)), 0},
        {"local-dependency class of the wrong superclass", Fixed(kPoint3, locDepFloat), BlockOwnedBy(boneOwner), 0x00020000},
        {"layer controller", Fixed(kFloat, Class_ID(0x7E57C015, 1), Answering(Interface_ID(0x434D7627, 0xA25E6E26))), nullptr,
         0x000B0030},
        {"controller with references", Fixed(kFloat, Class_ID(0x7E57C015, 1), Answering(Interface_ID(0x25CE0F5C, 0x6C303D2F))),
         nullptr, 0x00030009},
        {"undecided controller", Fixed(kPosition, Class_ID(0x7E57C016, 1)), nullptr, 0x00020000},
    });
}

// ---- Controllers: split non-zero (table C and its tail), split zero (whole-transform controllers).

TEST_F(ClassifierTest, ControllersThatSplitFollowTableCThenItsTail) {
    const Interface_ID list(0x444E7687, 0x722E6E36);
    Check({
        {"float in the table", Ident(kFloat, Class_ID(0x17127E3E, 0)), nullptr, 0x0003000C},
        {"ignored float", Ident(kFloat, Class_ID(0x7FA7544B, 0x711A51EA)), nullptr, 2},
        {"walked float", Ident(kFloat, Class_ID(0x094E2D9C, 0x02C702B5)), nullptr, 0x00020000},
        {"point3 whose sub-anim 2 is listed",
         [](Scratch& s) -> Animatable* {
             ReferenceTarget* p = s.Id(kPoint3, Class_ID(0x118F7E02, 0xFEEE238B), [](IdentityClass& id) {
                 id.SetNumRefs(3);
                 for (int i = 0; i < 3; ++i) id.AddSubAnim(i, L"S");
             });
             p->ReplaceReference(2, s.Id(kFloat, Class_ID(0x0EC62904, 0x185A28DC)));
             return p;
         },
         nullptr, 0x00020000},
        {"the same point3 without sub-anim 2 goes on to the tail", Ident(kPoint3, Class_ID(0x118F7E02, 0xFEEE238B)), nullptr,
         0x00010001},
        {"host transform under a node", [](Scratch& s) -> Animatable* { return s.Keep(NewDefaultMatrix3Controller()); },
         AnyNode(), 0x00030027},
        {"host transform under a layer base", [](Scratch& s) -> Animatable* { return s.Keep(NewDefaultMatrix3Controller()); },
         Ident(kMatrix, Class_ID(0x18D026A1, 0x347D1CF3)), 0x00020000},
        {"host look-at transform", [](Scratch& s) -> Animatable* { return s.Keep(CreateLookatControl()); }, AnyNode(), 0x00030006},
        {"host Euler rotation", [](Scratch& s) -> Animatable* { return s.Keep(NewDefaultRotationController()); }, nullptr,
         0x00030026},
        {"link transform under a node", Ident(kMatrix, Class_ID(0x615B56E4, 0x5F0E6032)), AnyNode(), 0x0003003B},
        {"link transform elsewhere goes on to the tail", Ident(kMatrix, Class_ID(0x615B56E4, 0x5F0E6032)), nullptr, 0x00010001},
        {"position constraint", Ident(kPosition, Class_ID(0x00002019, 0)), nullptr, 0x0003001F},
        {"scale reactor", Ident(0x900D, Class_ID(0x13C4451C, 0x2CCB3388)), nullptr, 0x00030024},
        {"a table class under another superclass", Ident(kPosition, Class_ID(0x17127E3E, 0)), nullptr, 0x00010001},
        {"list controller", Ident(kFloat, Class_ID(0x7E57C020, 1), Answering(list)), nullptr, 0x00030008},
        {"host float list", Host(kFloat, HOST_FLOAT_LIST_CONTROL_CLASS_ID), nullptr, 0x00030008},
        {"one entry holding a reference", [](Scratch& s) -> Animatable* { return s.WithRef(kFloat, Class_ID(0x7E57C021, 1), false); },
         nullptr, 0x00030009},
        {"one entry, no reference", Ident(kFloat, Class_ID(0x7E57C021, 1)), nullptr, 0x00010001},
        {"several entries: a reference target", [](Scratch& s) -> Animatable* { return s.WithRef(kFloat, Class_ID(0x7E57C021, 1), true); },
         nullptr, 0x00030009},
    });
}

TEST_F(ClassifierTest, ControllersThatDoNotSplitOnlyKeepRigsAndSolvers) {
    const Interface_ID cat(0x00D83DC1, 0x4C851B6C);
    const Class_ID ik(0x0E6F5815, 0x717F99A4), rig(0x022D5030, 0x4344191C);
    Check({
        {"non-matrix controller", Whole(kFloat, Class_ID(0x17127E3E, 0)), nullptr, 0x00020000},
        {"CAT controller under a node", Whole(kMatrix, Class_ID(0x7E57C030, 1), Answering(cat)), AnyNode(), 0x000B0033},
        {"CAT controller elsewhere", Whole(kMatrix, Class_ID(0x7E57C030, 1), Answering(cat)), nullptr, 0x00020000},
        {"CAT rig under a node", Whole(kMatrix, rig), AnyNode(), 0x0003002B},
        {"CAT rig elsewhere", Whole(kMatrix, rig), nullptr, 0x00020000},
        {"IK solver under a node", Whole(kMatrix, ik), AnyNode(), 0x000E0034},
        {"IK solver elsewhere", Whole(kMatrix, ik), Ident(kMatrix, Class_ID(0x7E57C031, 1)), 0x000E0034},
        {"a table C class that does not split", Whole(kMatrix, Class_ID(0x873FE764, 0xAABE8601)), AnyNode(), 0x00020000},
    });
}

// ---- Anims that are not controllers: table A and the tables it refers to.

TEST_F(ClassifierTest, SuperclassRulesOfTableA) {
    auto withRef = [](SClass_ID sc, Class_ID cid, bool asSub) {
        return [=](Scratch& s) -> Animatable* { return s.WithRef(sc, cid, asSub); };
    };
    Check({
        {"layer-like reference maker", Ident(0x0100, Class_ID(0x4DDC1551, 0x118452EB)), nullptr, 0x00110013},
        {"custom-attribute container",
         [](Scratch& s) -> Animatable* {
             ReferenceTarget* owner = s.Id(0x0200, Class_ID(0x7E57C0A0, 1));
             owner->AllocCustAttribContainer();
             return owner->GetCustAttribContainer();
         },
         nullptr, 0x00020000},
        {"ignored reference maker", Ident(0x0100, Class_ID(0x14585773, 0x483A7DCF)), nullptr, 2},
        {"node met as a sub-anim", AnyNode(), AnyNode(), 0x0044000B},
        {"derived object under a node", Ident(0x0002, Class_ID(0x7E57C040, 1)), AnyNode(), 0x00220000},
        {"nested derived object", Ident(0x0002, Class_ID(0x7E57C040, 1)), Ident(0x0002, Class_ID(0x7E57C041, 1)), 0x000B002F},
        {"old parameter block", Ident(0x0008, Class_ID(0x7E57C042, 1)), nullptr, 0x00030003},
        {"camera", Host(0x0020, HOST_FREE_CAMERA_CLASS_ID), nullptr, 0x000B002C},
        {"light kept plain", Ident(0x0030, Class_ID(0x27D93542, 0x76F965B2)), nullptr, 0x00010001},
        {"host omni light", Host(0x0030, HOST_OMNI_LIGHT_CLASS_ID), nullptr, 0x000B0011},
        {"text shape", Ident(0x0040, Class_ID(0x00001993, 0)), nullptr, 0x0003001C},
        {"host circle", Host(0x0040, HOST_CIRCLE_CLASS_ID), nullptr, 0x00030028},
        {"ignored Particle Flow helper", Ident(kHelper, Class_ID(0x74F93B01, 0x1EB34300)), nullptr, 2},
        {"grid helper", Ident(kHelper, Class_ID(0x00002013, 0)), nullptr, 0x0003000C},
        {"container", Ident(kHelper, Class_ID(0x6E34B493, 0xE3C48E41)), nullptr, 0x00090032},
        {"host point helper", Host(kHelper, HOST_POINT_HELPER_CLASS_ID), nullptr, 0x00030009},
        {"external reference system", Ident(0x0060, Class_ID(0x92AAB38C, 0)), nullptr, 0x00030031},
        {"kept reference target", Ident(0x0200, Class_ID(0x46D56AA8, 0x1A0703D4)), nullptr, 0x00010001},
        {"world-space modifier with local dependency", Ident(0x0820, Class_ID(0x370F1FE3, 0x03B14999)), nullptr, 0x0003000C},
        {"world-space modifier with sub-anims", withRef(0x0820, Class_ID(0x7E57C043, 1), true), nullptr, 0x00030015},
        {"world-space modifier with a reference only", withRef(0x0820, Class_ID(0x7E57C043, 1), false), nullptr, 0x00030015},
        {"world-space modifier without references", Ident(0x0820, Class_ID(0x7E57C043, 1)), nullptr, 0x00030014},
        {"world-space object of a point kind", Ident(0x0830, Class_ID(0xFA4700BE, 0xBBE85051)), nullptr, 0x00090010},
        {"host space warp", Host(0x0830, HOST_SPACE_WARP_CLASS_ID), nullptr, 0x00030009},
        {"host multi/sub-object material", Host(0x0C00, MULTI_MATERIAL_CLASS_ID), nullptr, 0x00030020},
        {"material with more than one entry", withRef(0x0C00, Class_ID(0x7E57C044, 1), true), nullptr, 0x0003001A},
        {"material with one entry and a reference", withRef(0x0C00, Class_ID(0x7E57C044, 1), false), nullptr, 0x00030009},
        {"material with one entry, no reference", Ident(0x0C00, Class_ID(0x7E57C044, 1)), nullptr, 0x00010001},
        {"texture map of the table", Ident(0x0C10, Class_ID(0x6EC3730C, 0)), nullptr, 0x00030009},
        {"texture map with more than one entry", withRef(0x0C10, Class_ID(0x7E57C045, 1), true), nullptr, 0x0003001B},
    });
}

TEST_F(ClassifierTest, GenericTailAndDefaultRule) {
    const SClass_ID other = 0x0C20;
    Check({
        {"ignored class", Ident(other, Class_ID(0x00001200, 0)), nullptr, 2},
        {"class (0x100, 0)", Ident(other, Class_ID(0x00000100, 0)), nullptr, 0x00030009},
        {"several entries: walk only", [=](Scratch& s) -> Animatable* { return s.WithRef(other, Class_ID(0x7E57C050, 1), true); },
         nullptr, 0},
        {"one entry with a reference", [=](Scratch& s) -> Animatable* { return s.WithRef(other, Class_ID(0x7E57C050, 1), false); },
         nullptr, 0x00030009},
        {"one entry, no reference", Ident(other, Class_ID(0x7E57C050, 1)), nullptr, 0x00010001},
        {"reference maker without a row takes rule D", Ident(0x0100, Class_ID(0x7E57C051, 1)), nullptr, 0x00010001},
    });
}

// Table G and table M are tried row by row; a class row wins over the interface rule that follows it.
TEST_F(ClassifierTest, GeometryAndModifierTablesFirstMatchWins) {
    const Interface_ID rwms(0x09FF44EF, 0x6C050704);
    Check({
        {"point-like geometry", Ident(kGeom, Class_ID(0x76A11646, 0x12A822FB)), nullptr, 0x00090010},
        {"bone", Ident(kGeom, Class_ID(0x28BF6E8D, 0x2ECCA840)), nullptr, 0x0003000C},
        {"walked geometry", Ident(kGeom, Class_ID(0x00009125, 0)), nullptr, 0},
        {"boolean", Ident(kGeom, Class_ID(0x7BC209AF, 0x01BBAC5F)), nullptr, 0x0003002D},
        {"a listed class answering the map-size interface",
         Ident(kGeom, Class_ID(0x000010B0, 0), Answering(rwms)), nullptr, 0x00030006},
        {"rail clone", Ident(kGeom, Class_ID(0x39712DEF, 0x10A72959)), nullptr, 0x00030038},
        {"unlisted geometry answering the map-size interface", Ident(kGeom, Class_ID(0x7E57C060, 1), Answering(rwms)), nullptr,
         0x00030028},
        {"host box", Host(kGeom, HOST_BOX_CLASS_ID), nullptr, 0x00030009},
        {"point modifier", Ident(0x0810, Class_ID(0x00000050, 0)), nullptr, 0x00010012},
        {"skin", Ident(0x0810, Class_ID(0x0095C723, 0x00015666)), nullptr, 0x00030018},
        {"data channel", Ident(0x0810, Class_ID(0x00000E11, 0)), nullptr, 0x000B0035},
        {"modifier with sub-anims answering the map-size interface",
         [=](Scratch& s) -> Animatable* {
             ReferenceTarget* m = s.WithRef(0x0810, Class_ID(0x7E57C061, 1), true);
             IdentityClass::Of(m)->AddInterface(rwms);
             return m;
         },
         nullptr, 0x00030028},
        {"host bend (a parameter block)", Host(0x0810, HOST_BEND_CLASS_ID), nullptr, 0x00030015},
        {"modifier without references", Ident(0x0810, Class_ID(0x7E57C061, 1)), nullptr, 0x00030014},
        {"modifier with a reference only", [](Scratch& s) -> Animatable* { return s.WithRef(0x0810, Class_ID(0x7E57C061, 1), false); },
         nullptr, 0x00030015},
    });
}

// Table P: a parameter block 2 is placed by the item it is met below.
TEST_F(ClassifierTest, ParameterBlocks2ByTheirParent) {
    auto block = [](Scratch& s) -> Animatable* {
        auto* box = static_cast<Animatable*>(s.Keep(static_cast<ReferenceTarget*>(
            static_cast<Animatable*>(CreateInstance(kGeom, HOST_BOX_CLASS_ID)))));
        return box->GetParamBlock(0);
    };
    Check({
        {"custom attribute", block, Ident(kCustAttrib, Class_ID(0x7E57C070, 1)), 0x00230029},
        {"boolean geometry", block, Ident(kGeom, Class_ID(0x7BC209AF, 0x01BBAC5F)), 0x0023002A},
        {"forest geometry", block, Ident(kGeom, Class_ID(0x79FE41C2, 0x1D7B4FB1)), 0x00230029},
        {"photometric light", block, Ident(0x0030, Class_ID(0x3C5575A1, 0x5FD602DF)), 0x00030036},
        {"walked reference target", block, Ident(0x0200, Class_ID(0x1D473A0E, 0x3B151C9D)), 0x00020000},
        {"data channel modifier", block, Ident(0x0810, Class_ID(0x00000E11, 0)), 0x0023002A},
        {"float controller of its own", block, Ident(kFloat, Class_ID(0x17127E3E, 0)), 0x00230004},
        {"walked rotation controller", block, Ident(0x900C, Class_ID(0x1D1A667C, 0x206521F1)), 0x00020000},
        {"list controller", block, Ident(kFloat, Class_ID(0x7E57C071, 1), Answering(Interface_ID(0x444E7687, 0x722E6E36))),
         0x0023002A},
        {"position constraint", block, Ident(kPosition, Class_ID(0x00002011, 0)), 0x0023002A},
        {"a listed class under another superclass", block, Ident(0x0820, Class_ID(0x00000E11, 0)), 0x00230004},
        {"host box", block, Host(kGeom, HOST_BOX_CLASS_ID), 0x00230004},
        {"no parent", block, nullptr, 0x00230004},
    });
}

}  // namespace
