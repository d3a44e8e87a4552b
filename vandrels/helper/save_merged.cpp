#include "helper/save_merged.h"

#include "frame/settings.h"

#include "maxapi.h"
#include "winshim.h"

#include <string>

namespace vandrels {

namespace {

bool IsSeparator(MCHAR c) { return c == L'\\' || c == L'/'; }

// The system temporary folder as the host reports it, with its trailing separator.
std::wstring SystemTempPrefix() {
    const DWORD needed = GetTempPathW(0, nullptr);
    if (needed == 0) return {};
    std::wstring buffer(needed, L'\0');
    const DWORD length = GetTempPathW(needed, buffer.data());
    if (length == 0 || length >= needed) return {};
    buffer.resize(length);
    return buffer;
}

// The host's temporary folder followed by one separator (the host may answer it with one already).
std::wstring HostTempPrefix() {
    const MCHAR* dir = GetCOREInterface()->GetDir(APP_TEMP_DIR);
    std::wstring prefix = dir ? dir : L"";
    if (prefix.empty()) return prefix;
    if (!IsSeparator(prefix.back())) prefix += L'\\';
    return prefix;
}

}  // namespace

bool PathStartsWith(const MCHAR* path, const MCHAR* prefix) {
    if (!path || !prefix) return false;
    for (; *prefix; ++path, ++prefix) {
        if (!*path) return false;
        if (*path != *prefix && !(IsSeparator(*path) && IsSeparator(*prefix))) return false;
    }
    return true;
}

bool ShouldSaveMerged(const MCHAR* path) {
    if (GetMergeForNetworkRender()) {
        const std::wstring systemTemp = SystemTempPrefix();
        if (!systemTemp.empty() && PathStartsWith(path, systemTemp.c_str())) return true;
        const std::wstring hostTemp = HostTempPrefix();
        if (!hostTemp.empty() && PathStartsWith(path, hostTemp.c_str())) return true;
    }
    return GetSaveRefsAsMerged();
}

}  // namespace vandrels
