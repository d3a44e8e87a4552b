// The library as the host sees it: entry points, description, version and the class table.
#include "vandrels_library.h"

#include "plugapi.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdio>
#include <string>

TEST(ClassTable, EntryPointsAnswerAsTheHostExpects) {
    const auto& lib = vtest::VandrelsLibrary();
    EXPECT_EQ(lib.description, MSTR(L"Vandrels Node"));
    EXPECT_EQ(lib.version, 0x6CFC4400u);
    ASSERT_EQ(lib.classes.size(), 53u);
    auto classDesc = reinterpret_cast<LibClassDescFn>(dlsym(lib.handle, "LibClassDesc"));
    ASSERT_NE(classDesc, nullptr);
    EXPECT_EQ(classDesc(53), nullptr);
    EXPECT_EQ(classDesc(-1), nullptr);
    auto canDefer = reinterpret_cast<CanAutoDeferFn>(dlsym(lib.handle, "CanAutoDefer"));
    ASSERT_NE(canDefer, nullptr);
    EXPECT_EQ(canDefer(), 0u);
}

// Every class is created through the host by its identifiers and reports the same identity back.
TEST(ClassTable, EveryClassIsCreatedByItsIdentifiers) {
    const auto& lib = vtest::VandrelsLibrary();
    for (ClassDesc* cd : lib.classes) {
        SCOPED_TRACE(WStr(cd->ClassName()).ToUTF8());
        EXPECT_FALSE(cd->IsPublic());
        EXPECT_EQ(MSTR(cd->Category()), MSTR(L"Vandrels"));
        EXPECT_EQ(MSTR(cd->ClassName()), MSTR(cd->NonLocalizedClassName()));
        auto* obj = static_cast<Animatable*>(CreateInstance(cd->SuperClassID(), cd->ClassID()));
        ASSERT_NE(obj, nullptr);
        EXPECT_EQ(obj->ClassID(), cd->ClassID());
        EXPECT_EQ(obj->SuperClassID(), cd->SuperClassID());
        obj->DeleteThis();
    }
}

// `maxhost plugins` lists the library with the exact names and identifiers of its class table.
TEST(ClassTable, MaxhostListsTheLibrary) {
    const std::string cmd = std::string(MAXHOST_BIN_DIR) + "/maxhost --plugins " + MAXHOST_PLUGIN_DIR + " plugins";
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::string out;
    char buf[512];
    while (fgets(buf, sizeof buf, p)) out += buf;
    EXPECT_EQ(pclose(p), 0);
    const char* expected[] = {
        "Vandrels.dlo  \"Vandrels Node\"  version 0x6CFC4400  53 classes",
        "   0  VandrelsHelper           superclass 0x00000050  class (0x8663DFA5, 0x3F273879)",
        "   1  RefBase                  superclass 0x8663DFA6  class (0x8663DFA6, 0x3F273883)",
        "   2  RefNode                  superclass 0x8663DFA6  class (0x8663DFA6, 0x3F273884)",
        "   3  RefMaterial              superclass 0x8663DFA6  class (0x8663DFA6, 0x3F273885)",
        "   4  EmptyBaseObject          superclass 0x00000010  class (0x8663DFA5, 0x3F273888)",
        "   5  EmptyController          superclass 0x00009008  class (0x8663DFA5, 0x3F273889)",
        "   6  RefHolder                superclass 0x00000010  class (0x8663DFA5, 0x3F273890)",
        "   7  RefAnim                  superclass 0x8663DFA8  class (0x00010001, 0x00000000)",
        "   8  RefAnimPblock            superclass 0x8663DFA8  class (0x00030003, 0x00000000)",
        "   9  RefAnimPblock2           superclass 0x8663DFA8  class (0x00030004, 0x00000000)",
        "  10  RefAnimIndepRefs         superclass 0x8663DFA8  class (0x00030006, 0x00000000)",
        "  11  RefAnimCA                superclass 0x8663DFA8  class (0x00030007, 0x00000000)",
        "  12  RefAnimListCtrl          superclass 0x8663DFA8  class (0x00030008, 0x00000000)",
        "  13  RefAnimWithRefs          superclass 0x8663DFA8  class (0x00030009, 0x00000000)",
        "  14  RefAnimLocDep            superclass 0x8663DFA8  class (0x0000000C, 0x00000000)",
        "  15  RefAnimLinkCtrl          superclass 0x8663DFA8  class (0x0003000D, 0x00000000)",
        "  16  RefAnimBip               superclass 0x8663DFA8  class (0x0001000E, 0x00000000)",
        "  17  RefAnimPointObj          superclass 0x8663DFA8  class (0x00090010, 0x00000000)",
        "  18  RefAnimStdLight          superclass 0x8663DFA8  class (0x000B0011, 0x00000000)",
        "  19  RefAnimPointMod          superclass 0x8663DFA8  class (0x00010012, 0x00000000)",
        "  20  RefAnimMod               superclass 0x8663DFA8  class (0x00030014, 0x00000000)",
        "  21  RefAnimWithRefsMod       superclass 0x8663DFA8  class (0x00030015, 0x00000000)",
        "  22  RefAnimPFSource          superclass 0x8663DFA8  class (0x00030016, 0x00000000)",
        "  23  RefAnimSkin              superclass 0x8663DFA8  class (0x00030018, 0x00000000)",
        "  24  RefAnimMtl               superclass 0x8663DFA8  class (0x0003001A, 0x00000000)",
        "  25  RefAnimTexmap            superclass 0x8663DFA8  class (0x0003001B, 0x00000000)",
        "  26  RefAnimText              superclass 0x8663DFA8  class (0x0003001C, 0x00000000)",
        "  27  RefAnimLinkedXForm       superclass 0x8663DFA8  class (0x0003001D, 0x00000000)",
        "  28  RefAnimCloth             superclass 0x8663DFA8  class (0x0003001E, 0x00000000)",
        "  29  RefAnimConstraint        superclass 0x8663DFA8  class (0x0003001F, 0x00000000)",
        "  30  RefAnimMultiSubMtl       superclass 0x8663DFA8  class (0x00030020, 0x00000000)",
        "  31  RefAnimReaction          superclass 0x8663DFA8  class (0x00030024, 0x00000000)",
        "  32  RefAnimMorpher           superclass 0x8663DFA8  class (0x00030019, 0x00000000)",
        "  33  RefAnimBevelProfile      superclass 0x8663DFA8  class (0x00030025, 0x00000000)",
        "  34  RefAnimEuler             superclass 0x8663DFA8  class (0x00030026, 0x00000000)",
        "  35  RefAnimPRS               superclass 0x8663DFA8  class (0x00030027, 0x00000000)",
        "  36  RefAnimRWMS              superclass 0x8663DFA8  class (0x00030028, 0x00000000)",
        "  37  RefAnimCAT               superclass 0x8663DFA8  class (0x0003002B, 0x00000000)",
        "  38  RefAnimCam               superclass 0x8663DFA8  class (0x000B002C, 0x00000000)",
        "  39  RefAnimBoolean           superclass 0x8663DFA8  class (0x0003002D, 0x00000000)",
        "  40  RefAnimTextPlus          superclass 0x8663DFA8  class (0x0003002E, 0x00000000)",
        "  41  RefAnimDerivObj          superclass 0x8663DFA8  class (0x000B002F, 0x00000000)",
        "  42  RefAnimLayerCtrl         superclass 0x8663DFA8  class (0x000B0030, 0x00000000)",
        "  43  RefAnimXRef              superclass 0x8663DFA8  class (0x00030031, 0x00000000)",
        "  44  RefAnimContainer         superclass 0x8663DFA8  class (0x00090032, 0x00000000)",
        "  45  RefAnimCATCtrl           superclass 0x8663DFA8  class (0x000B0033, 0x00000000)",
        "  46  RefAnimDataChannel       superclass 0x8663DFA8  class (0x000B0035, 0x00000000)",
        "  47  RefAnimPFTest            superclass 0x8663DFA8  class (0x00230037, 0x00000000)",
        "  48  EmptyShape               superclass 0x00000040  class (0x8663DFA5, 0x3F273891)",
        "  49  RefAnimRailClone         superclass 0x8663DFA8  class (0x00030038, 0x00000000)",
        "  50  RefAnimBipCtrl           superclass 0x8663DFA8  class (0x00030039, 0x00000000)",
        "  51  RefAnimForest            superclass 0x8663DFA8  class (0x0003003A, 0x00000000)",
        "  52  RefAnimLinkTM            superclass 0x8663DFA8  class (0x0003003B, 0x00000000)",
    };
    for (const char* line : expected) EXPECT_NE(out.find(line), std::string::npos) << line;
}
