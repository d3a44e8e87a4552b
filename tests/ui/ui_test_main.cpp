// The window tests run in one graphical host session on Qt's offscreen platform: the Vandrels library is loaded
// as maxhost loads it (with the rollout sample plug-in beside it), then the host's Qt application and main window are made. Message boxes and the open-file
// dialog are answered from the dialog services' queues only (no presenter), so a box a test did not expect takes
// its default button instead of waiting for a user.
#include "core/plugin_manager.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "qt/gui_session.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // CTest sets the offscreen platform; listing the tests, or a run by hand, gets it too.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // The rollout sample (a helper with spinners and a drop-down list) starts with Vandrels.
    std::string problem;
    if (!hostrt::PluginManager::Instance().LoadLibrary(std::filesystem::path(UI_TEST_PLUGIN_DIR) / "RolloutSample.dlo",
                                                       problem)) {
        std::fprintf(stderr, "RolloutSample.dlo: %s\n", problem.c_str());
        return 1;
    }
    vtest::VandrelsLibrary();
    hostrt::GuiSession gui(argc, argv);
    hostrt::DialogService::Instance().SetPresenter(nullptr);
    hostrt::FileDialogService::Instance().SetPresenter(nullptr);
    return RUN_ALL_TESTS();
}
