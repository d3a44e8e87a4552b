// The window tests run in one graphical host session on Qt's offscreen platform: the Vandrels library is loaded
// as maxhost loads it, then the host's Qt application and main window are made. Message boxes and the open-file
// dialog are answered from the dialog services' queues only (no presenter), so a box a test did not expect takes
// its default button instead of waiting for a user.
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "qt/gui_session.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // CTest sets the offscreen platform; listing the tests, or a run by hand, gets it too.
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    vtest::VandrelsLibrary();
    hostrt::GuiSession gui(argc, argv);
    hostrt::DialogService::Instance().SetPresenter(nullptr);
    hostrt::FileDialogService::Instance().SetPresenter(nullptr);
    return RUN_ALL_TESTS();
}
