// Loads Vandrels.dlo into the test process once, the way maxhost loads it at start-up.
#pragma once

#include "core/plugin_manager.h"
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

}  // namespace vtest
