// Plug-in loading: entry points, class registration, start-up broadcast, and libraries that are skipped.
#include "core/class_directory.h"
#include "core/plugin_manager.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {
fs::path scratchDir(const char* name) {
    fs::path d = fs::temp_directory_path() / ("maxhost-test-" + std::to_string(::getpid())) / name;
    fs::remove_all(d);
    fs::create_directories(d);
    return d;
}
}  // namespace

TEST(PluginLoading, LoadsTheSampleLibraryAndBroadcastsStartup) {
    auto& pm = hostrt::PluginManager::Instance();
    fs::path dir = scratchDir("plugins");
    fs::copy_file(fs::path(MAXHOST_TEST_PLUGIN_DIR) / "HostSample.dlo", dir / "HostSample.dlo");
    std::ofstream(dir / "Broken.dlo") << "not a library";
    std::ofstream(dir / "notes.txt") << "ignored";

    EXPECT_EQ(pm.LoadFolder(dir), 1);
    ASSERT_EQ(pm.Problems().size(), 1u);
    EXPECT_NE(pm.Problems()[0].find("Broken.dlo: skipped: cannot be opened"), std::string::npos);

    const hostrt::LoadedLibrary* lib = nullptr;
    for (const auto& l : pm.Libraries())
        if (l.file == "HostSample.dlo") lib = &l;
    ASSERT_NE(lib, nullptr);
    EXPECT_EQ(lib->description, MSTR(L"Host sample plug-in"));
    EXPECT_EQ(lib->version, 0x6CFC4400u);
    ASSERT_EQ(lib->classes.size(), 2u);

    // Attached once with its own handle, before anything else.
    auto instance = reinterpret_cast<HINSTANCE (*)()>(dlsym(lib->handle, "HostSampleInstance"));
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance(), lib->handle);

    auto* obj = static_cast<ReferenceTarget*>(CreateInstance(REF_TARGET_CLASS_ID, Class_ID(0x5A3D0001, 1)));
    ASSERT_NE(obj, nullptr);
    EXPECT_EQ(obj->ClassName(), MSTR(L"SampleTarget"));
    obj->DeleteMe();
    EXPECT_EQ(CreateInstance(REF_TARGET_CLASS_ID, Class_ID(0x5A3D0001, 2)), nullptr);

    auto startups = reinterpret_cast<int (*)()>(dlsym(lib->handle, "HostSampleStartups"));
    EXPECT_EQ(startups(), 0);
    pm.Startup();
    pm.Startup();
    EXPECT_EQ(startups(), 1);

    // The same library again, and a library whose classes clash, are refused.
    std::string problem;
    EXPECT_FALSE(pm.LoadLibrary(dir / "HostSample.dlo", problem));
    fs::copy_file(dir / "HostSample.dlo", dir / "HostSampleCopy.dlo");
    EXPECT_FALSE(pm.LoadLibrary(dir / "HostSampleCopy.dlo", problem));
    EXPECT_NE(problem.find("SampleTarget"), std::string::npos);
    fs::remove_all(dir.parent_path());
}

TEST(PluginLoading, PluginManagerCommandListsTheSampleLibrary) {
    const std::string cmd = std::string(MAXHOST_BIN_DIR) + "/maxhost plugins --plugins=" + MAXHOST_TEST_PLUGIN_DIR;
    FILE* p = popen(cmd.c_str(), "r");
    ASSERT_NE(p, nullptr);
    std::string out;
    char buf[512];
    while (fgets(buf, sizeof buf, p)) out += buf;
    EXPECT_EQ(pclose(p), 0);
    EXPECT_NE(out.find("HostSample.dlo  \"Host sample plug-in\"  version 0x6CFC4400  2 classes"), std::string::npos) << out;
    EXPECT_NE(out.find("   0  SampleTarget             superclass 0x00000200  class (0x5A3D0001, 0x00000001)  "
                       "category \"Host Samples\"  public"),
              std::string::npos)
        << out;
    EXPECT_NE(out.find("SampleMaker"), std::string::npos);
    EXPECT_NE(out.find("not public"), std::string::npos);
}
