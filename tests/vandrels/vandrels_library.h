// Loads Vandrels.dlo into the test process once, the way maxhost loads it at start-up.
#pragma once

#include "core/plugin_manager.h"
#include "ifnpub.h"
#include "strclass.h"

#include <gtest/gtest.h>

#include <string>

namespace vtest {

// The loaded library (loaded and started on first use; the test fails hard when it cannot be loaded).
const hostrt::LoadedLibrary& VandrelsLibrary();

// A test that starts and ends with an empty scene and an empty undo buffer, with the library loaded, and owns a
// scene file path of its own (removed at the end).
class SceneTest : public ::testing::Test {
protected:
    explicit SceneTest(const std::string& fileStem) : stem_(fileStem) {}
    void SetUp() override;
    void TearDown() override;
    MSTR file_;

private:
    std::string stem_;
};

// A scene file name in the temporary folder, unique to this process: stem + "_" + pid + ".max".
MSTR TempSceneFile(const std::string& stem);
// Runs MAXScript text (the test fails when it fails) and answers its value.
FPValue Script(const std::wstring& text);
// The integer a MAXScript expression answers (-1, and a failure, when it answers something else).
int RunInt(const std::wstring& text);
// A file name as a MAXScript verbatim string literal.
std::wstring Quoted(const MSTR& path);
// The first scene node of that name, or null.
INode* Node(const MCHAR* name);
// The text of the last "Reference Error" report shown or recorded; empty when none ran.
std::wstring LastReport();
// How many dialogs of that resource the host's dialog service ran.
int CountDialogs(UINT resourceId);

}  // namespace vtest
