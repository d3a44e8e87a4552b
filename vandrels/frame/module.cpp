// The library's entry points, its instance handle and string table, and the start-up callback that watches
// scene files being opened.
#include "frame/module.h"

#include "frame/class_table.h"
#include "notify.h"
#include "plugapi.h"
#include "resource.h"
#include "winshim.h"

namespace {

HINSTANCE moduleInstance = nullptr;
bool fileOpening = false;

void OnFilePreOpen(void*, NotifyInfo*) { fileOpening = true; }
void OnFilePostOpen(void*, NotifyInfo*) { fileOpening = false; }

// At system start-up the library starts watching scene files being opened.
void OnSystemStartup(void*, NotifyInfo*) {
    RegisterNotification(OnFilePreOpen, nullptr, NOTIFY_FILE_PRE_OPEN);
    RegisterNotification(OnFilePostOpen, nullptr, NOTIFY_FILE_POST_OPEN);
}

}  // namespace

HINSTANCE GetModuleInstance() { return moduleInstance; }

const MCHAR* GetString(int id) {
    static wchar_t buffer[512];
    if (!moduleInstance) return nullptr;
    return LoadStringW(moduleInstance, UINT(id), buffer, 512) > 0 ? buffer : nullptr;
}

MSTR GetStringCopy(int id) {
    const MCHAR* text = GetString(id);
    return text ? MSTR(text) : MSTR();
}

bool IsFileOpening() { return fileOpening; }

MAX_PLUGIN_EXPORT BOOL DllMain(HINSTANCE instance, ULONG reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        moduleInstance = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

MAX_PLUGIN_EXPORT const MCHAR* LibDescription() { return GetString(IDS_LIBDESCRIPTION); }
MAX_PLUGIN_EXPORT int LibNumberClasses() { return NumLibraryClasses(); }
MAX_PLUGIN_EXPORT ClassDesc* LibClassDesc(int i) { return LibraryClassDesc(i); }
MAX_PLUGIN_EXPORT ULONG LibVersion() { return VERSION_3DSMAX; }
MAX_PLUGIN_EXPORT int LibInitialize() {
    RegisterNotification(OnSystemStartup, nullptr, NOTIFY_SYSTEM_STARTUP);
    return TRUE;
}
MAX_PLUGIN_EXPORT int LibShutdown() { return TRUE; }
MAX_PLUGIN_EXPORT ULONG CanAutoDefer() { return FALSE; }
