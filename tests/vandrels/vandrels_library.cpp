#include "vandrels_library.h"

#include "core/class_directory.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "platform/dialog_service.h"
#include "platform/host_dirs.h"
#include "resource.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace vtest {

const hostrt::LoadedLibrary& VandrelsLibrary() {
    static const hostrt::LoadedLibrary* lib = [] {
        // Each test runs in a process of its own, often beside another: a settings file per process keeps their
        // settings apart.
        static const std::filesystem::path ini =
            std::filesystem::temp_directory_path() / ("vandrels_tests_" + std::to_string(::getpid()) + ".ini");
        hostrt::SetIniPath(ini);
        std::atexit([] { std::filesystem::remove(ini); });
        auto& pm = hostrt::PluginManager::Instance();
        std::string problem;
        const auto file = std::filesystem::path(MAXHOST_PLUGIN_DIR) / "Vandrels.dlo";
        if (!pm.LoadLibrary(file, problem)) {
            ADD_FAILURE() << file << ": " << problem;
            std::abort();
        }
        pm.Startup();
        for (const auto& l : pm.Libraries())
            if (l.file == "Vandrels.dlo") return &l;
        std::abort();
    }();
    return *lib;
}

void SceneTest::SetUp() {
    VandrelsLibrary();
    hostrt::RegisterBuiltinClasses();
    GetCOREInterface()->FileReset(TRUE);
    theHold.FlushUndoBuffer();
    file_ = TempSceneFile(stem_);
}

MSTR TempSceneFile(const std::string& stem) {
    return MSTR::FromUTF8(
        (std::filesystem::temp_directory_path() / (stem + "_" + std::to_string(::getpid()) + ".max")).string());
}

void SceneTest::TearDown() {
    theHold.FlushUndoBuffer();
    GetCOREInterface()->FileReset(TRUE);
    std::filesystem::remove(file_.ToUTF8());
}

FPValue Script(const std::wstring& text) {
    FPValue value;
    EXPECT_TRUE(ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &value, TRUE))
        << WStr(text).ToUTF8();
    return value;
}

int RunInt(const std::wstring& text) {
    FPValue v = Script(text);
    EXPECT_EQ(v.type, TYPE_INT) << WStr(text).ToUTF8();
    return v.type == TYPE_INT ? v.i : -1;
}

std::wstring Quoted(const MSTR& path) { return L"@\"" + std::wstring(path.data()) + L"\""; }

INode* Node(const MCHAR* name) { return GetCOREInterface()->GetINodeByName(name); }

std::wstring LastReport() {
    constexpr UINT kReferenceErrorDialog = IDD_REFERENCE_ERROR;
    constexpr int kReportText = IDC_TEXT_LIST;
    std::wstring text;
    for (const auto& dialog : hostrt::DialogService::Instance().Dialogs())
        if (dialog.resourceId == kReferenceErrorDialog)
            if (const auto* edit = dialog.Control(kReportText)) text = edit->text;
    return text;
}

int CountDialogs(UINT resourceId) {
    int n = 0;
    for (const auto& dialog : hostrt::DialogService::Instance().Dialogs()) n += dialog.resourceId == resourceId;
    return n;
}

}  // namespace vtest
