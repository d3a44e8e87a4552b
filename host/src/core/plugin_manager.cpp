// Plug-in loading with dlopen: entry points by name, version check, descriptor registration, start-up.
#include "plugin_manager.h"

#include "class_directory.h"
#include "hold.h"
#include "notify.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace hostrt {

PluginManager& PluginManager::Instance() {
    static auto* pm = new PluginManager();  // libraries stay loaded until the process ends
    return *pm;
}

namespace {
template <class Fn> Fn entry(void* handle, const char* name) { return reinterpret_cast<Fn>(dlsym(handle, name)); }

std::string hex(ULONG v) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%08X", v);
    return buf;
}
}  // namespace

bool PluginManager::LoadLibrary(const std::filesystem::path& file, std::string& problem) {
    const std::string name = file.filename().string();
    for (const auto& l : libs_)
        if (l.file == name) { problem = "a library of this name is already loaded"; return false; }

    void* h = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!h) {
        const char* err = dlerror();
        problem = std::string("cannot be opened: ") + (err ? err : "unknown error");
        return false;
    }
    auto fail = [&](std::string why) {
        problem = std::move(why);
        dlclose(h);
        return false;
    };
    if (auto dllMain = entry<DllMainFn>(h, "DllMain")) dllMain(h, DLL_PROCESS_ATTACH, nullptr);

    auto libDescription = entry<LibDescriptionFn>(h, "LibDescription");
    auto libNumberClasses = entry<LibNumberClassesFn>(h, "LibNumberClasses");
    auto libClassDesc = entry<LibClassDescFn>(h, "LibClassDesc");
    auto libVersion = entry<LibVersionFn>(h, "LibVersion");
    for (auto [fn, what] : {std::pair<void*, const char*>{reinterpret_cast<void*>(libDescription), "LibDescription"},
                            {reinterpret_cast<void*>(libNumberClasses), "LibNumberClasses"},
                            {reinterpret_cast<void*>(libClassDesc), "LibClassDesc"},
                            {reinterpret_cast<void*>(libVersion), "LibVersion"}})
        if (!fn) return fail(std::string("lacks the entry point ") + what);

    const ULONG version = libVersion();
    if (version != VERSION_3DSMAX)
        return fail("was built for host version " + hex(version) + ", this host is " + hex(VERSION_3DSMAX));
    if (auto canDefer = entry<CanAutoDeferFn>(h, "CanAutoDefer")) (void)canDefer();  // this host never defers

    LoadedLibrary lib;
    lib.file = name;
    lib.path = file.string();
    lib.handle = h;
    lib.version = version;
    const MCHAR* desc = libDescription();
    lib.description = desc ? desc : L"";
    lib.shutdown = entry<LibShutdownFn>(h, "LibShutdown");

    const int n = libNumberClasses();
    for (int i = 0; i < n; ++i) {
        ClassDesc* cd = libClassDesc(i);
        if (!cd) return fail("LibClassDesc(" + std::to_string(i) + ") answered no class descriptor");
        lib.classes.push_back(cd);
    }
    for (ClassDesc* cd : lib.classes) {
        if (!ClassDirectory::Instance().Register(cd, name)) {
            ClassDirectory::Instance().UnregisterLibrary(name);
            return fail("declares the class " + WStr(cd->ClassName()).ToUTF8() + " (" + hex(cd->SuperClassID()) +
                        ", " + hex(cd->ClassID().PartA()) + ", " + hex(cd->ClassID().PartB()) +
                        ") that another library or the host already has");
        }
    }
    if (auto libInitialize = entry<LibInitializeFn>(h, "LibInitialize"); libInitialize && !libInitialize()) {
        ClassDirectory::Instance().UnregisterLibrary(name);
        return fail("LibInitialize failed");
    }
    libs_.push_back(std::move(lib));
    return true;
}

int PluginManager::LoadFolder(const std::filesystem::path& dir) {
    std::error_code ec;
    std::vector<std::filesystem::path> files;
    for (const auto& e : std::filesystem::directory_iterator(dir, ec))
        if (e.is_regular_file() && e.path().extension() == ".dlo") files.push_back(e.path());
    if (ec) {
        problems_.push_back(dir.string() + ": cannot read the plug-in folder: " + ec.message());
        std::fprintf(stderr, "maxhost: %s\n", problems_.back().c_str());
        return 0;
    }
    std::sort(files.begin(), files.end());
    int loaded = 0;
    for (const auto& f : files) {
        std::string problem;
        if (LoadLibrary(f, problem)) {
            ++loaded;
        } else {
            problems_.push_back(f.filename().string() + ": skipped: " + problem);
            std::fprintf(stderr, "maxhost: %s\n", problems_.back().c_str());
        }
    }
    return loaded;
}

void PluginManager::Startup() {
    if (started_) return;
    started_ = true;
    BroadcastNotification(NOTIFY_SYSTEM_STARTUP);
}

void PluginManager::Shutdown() {
    if (shutDown_) return;
    shutDown_ = true;
    // Whatever kind of session ends (a script run, the listener, the window), what was started hears the end
    // before the libraries shut down.
    if (started_) BroadcastNotification(NOTIFY_SYSTEM_SHUTDOWN);
    // The undo history goes while the libraries and the scene are still there: its records own restore data
    // and may pin objects of both. Left to the end of the process, nobody would free them.
    theHold.FlushUndoBuffer();
    for (auto it = libs_.rbegin(); it != libs_.rend(); ++it)
        if (it->shutdown) it->shutdown();
}

const LoadedLibrary* PluginManager::FindByHandle(HINSTANCE h) const {
    for (const auto& l : libs_)
        if (l.handle == h) return &l;
    return nullptr;
}

std::filesystem::path DefaultPluginFolder() {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    if (ec) return "plugins";
    return exe.parent_path().parent_path() / "plugins";
}

}  // namespace hostrt
