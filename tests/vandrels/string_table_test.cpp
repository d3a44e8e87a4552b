// The library's string table as the host reads it: class names, library texts and step words sit at the
// identifiers that the library and saved error reports rely on, and every text fits the 512-character buffer.
#include "vandrels_library.h"

#include "plugapi.h"
#include "resource_module.h"
#include "winshim.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cwchar>
#include <string>
#include <utility>

namespace {

std::wstring Load(UINT id) {
    wchar_t buf[1024];
    const int n = LoadStringW(vtest::VandrelsLibrary().handle, id, buf, 1024);
    return std::wstring(buf, std::size_t(n > 0 ? n : 0));
}

}  // namespace

// Each class's descriptor takes its name from the table; a shifted or swapped identifier shows up here.
TEST(StringTable, ClassNamesSitAtTheirIdentifiers) {
    // Name string of each class, in the library's class order.
    const UINT ids[] = {3,  24, 15, 26, 218, 225, 27,  210, 211, 212, 14,  19,  20, 28, 29, 31, 34, 44,
                        45, 46, 48, 49, 253, 55,  257, 258, 59,  60,  61,  62,  6,  10, 56, 25, 33, 57,
                        58, 63, 68, 69, 70,  71,  72,  73,  74,  76,  79,  132, 138, 139, 159, 160, 163};
    const auto& lib = vtest::VandrelsLibrary();
    ASSERT_EQ(lib.classes.size(), std::size(ids));
    for (std::size_t i = 0; i < std::size(ids); ++i) {
        ClassDesc* cd = lib.classes[i];
        SCOPED_TRACE("class " + std::to_string(i) + ", string " + std::to_string(ids[i]));
        EXPECT_EQ(Load(ids[i]), std::wstring(cd->NonLocalizedClassName()));
        EXPECT_EQ(std::wstring(cd->ClassName()), std::wstring(cd->NonLocalizedClassName()));
    }
}

// Library texts, the file names fetched by number, and the first and last step word of each operation
// (including the steps whose numbers do not follow the order in which they run).
TEST(StringTable, LibraryTextsAndStepWords) {
    const std::pair<UINT, const wchar_t*> expected[] = {
        {1, L"Vandrels Node"},
        {2, L"Vandrels"},
        {7, L"VDTXR"},
        {8, L"3ds Max (*.max)|*.max|"},
        {35, L"VandrelsBipData.bip"},
        {162, L"VandrelsBipMixerData.mix"},
        {81, L"Cleaned"},
        {91, L"Undo Cleared"},
        {92, L"Undo Cleared"},
        {97, L"Lighting2"},
        {96, L"Nodes Deleted"},
        {98, L"Lighting Normal"},
        {99, L"Cleaned"},
        {103, L"Lighting 2"},
        {104, L"Lighting Restore"},
        {117, L"Lighting Restore 2"},
        {106, L"Restore"},
        {107, L"Cleaned"},
        {116, L"Stored"},
        {110, L"Initialized"},
        {113, L"XRef Check"},
        {118, L"Override LocDep"},
        {124, L"SetAnim"},
        {125, L"PreTransfer"},
        {129, L"Override Ref"},
        {140, L"Override Name"},
        {165, L"Override Excl List Misc"},
    };
    for (const auto& [id, text] : expected) EXPECT_EQ(Load(id), std::wstring(text)) << "string " << id;
}

// GetString copies into 512 wide characters: every entry must fit with its terminator, and none is empty.
TEST(StringTable, EveryEntryFitsTheFetchBuffer) {
    auto table = reinterpret_cast<MaxResourceModuleFn>(dlsym(vtest::VandrelsLibrary().handle,
                                                              MAX_RESOURCE_MODULE_SYMBOL));
    ASSERT_NE(table, nullptr);
    const MaxResourceModule* module = table();
    ASSERT_NE(module, nullptr);
    EXPECT_GE(module->numStrings, 150);
    for (int i = 0; i < module->numStrings; ++i) {
        const MaxResourceString& s = module->strings[i];
        const std::size_t length = std::wcslen(s.text);
        EXPECT_GT(length, 0u) << "string " << s.id;
        EXPECT_LT(length, 512u) << "string " << s.id;
        wchar_t buf[512];
        EXPECT_EQ(LoadStringW(vtest::VandrelsLibrary().handle, s.id, buf, 512), int(length)) << "string " << s.id;
    }
}
