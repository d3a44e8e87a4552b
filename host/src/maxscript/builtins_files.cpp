// File built-ins: INI settings (getINISetting, setINISetting, delIniSetting, hasINISetting, getMAXIniFile),
// file names (getFilenameFile, getFilenamePath, getFilenameType, filenameFromPath, and the `pathConfig` path
// functions), doesFileExist and getDir.
#include "maxscript/builtins.h"

#include "maxapi.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "platform/paths.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace hostrt::mxs {

namespace {

std::wstring Arg(const CallArgs& args, std::size_t i) { return ToText(args.positional[i]); }

hostrt::IniFile IniArg(const CallArgs& args) { return hostrt::IniFile(hostrt::ToNativePath(Arg(args, 0))); }

Value Texts(const std::vector<std::wstring>& texts) {
    ArrayData items;
    for (const std::wstring& t : texts) items.push_back(Value::String(t));
    return Value::Array(std::move(items));
}

// Reading a settings file that cannot be read is a script error naming the file.
template <class F> auto ReadIni(const CallArgs& args, F read) {
    try {
        return read(IniArg(args));
    } catch (const hostrt::IniError& e) {
        throw RuntimeError(L"Cannot read settings file " + Arg(args, 0) + L": " + MaxSDK::FromUTF8(e.what()));
    }
}

Value GetIniSetting(CallContext&, CallArgs& args) {
    CheckArgCount(L"getINISetting", args, 1, 3);
    return ReadIni(args, [&](const hostrt::IniFile& ini) {
        if (args.positional.size() == 1) return Texts(ini.Sections());
        if (args.positional.size() == 2) return Texts(ini.Keys(Arg(args, 1)));
        return Value::String(ini.Get(Arg(args, 1), Arg(args, 2)));
    });
}

Value SetIniSetting(CallContext&, CallArgs& args) {
    CheckArgCount(L"setINISetting", args, 4);
    try {
        IniArg(args).Set(Arg(args, 1), Arg(args, 2), DisplayForm(args.positional[3]));
        return Value::Bool(true);
    } catch (const hostrt::IniError&) {
        // As the host's profile functions do: a write that fails answers false.
        return Value::Bool(false);
    }
}

Value DelIniSetting(CallContext&, CallArgs& args) {
    CheckArgCount(L"delIniSetting", args, 2, 3);
    try {
        hostrt::IniFile ini = IniArg(args);
        const bool removed =
            args.positional.size() == 2 ? ini.RemoveSection(Arg(args, 1)) : ini.Remove(Arg(args, 1), Arg(args, 2));
        return Value::Bool(removed);
    } catch (const hostrt::IniError&) {
        return Value::Bool(false);
    }
}

Value HasIniSetting(CallContext&, CallArgs& args) {
    CheckArgCount(L"hasINISetting", args, 2, 3);
    return ReadIni(args, [&](const hostrt::IniFile& ini) {
        if (args.positional.size() == 3) return Value::Bool(ini.Contains(Arg(args, 1), Arg(args, 2)));
        for (const std::wstring& s : ini.Sections())
            if (EqualsNoCase(s, Arg(args, 1))) return Value::Bool(true);
        return Value::Bool(false);
    });
}

Value GetDir(CallContext&, CallArgs& args) {
    CheckArgCount(L"getDir", args, 1);
    const Value& which = args.positional[0];
    if (!which.Is(Kind::Name)) throw ConversionError(which, L"Name");
    const std::wstring key = FoldCase(which.Text());
    int id = 0;
    if (key == L"temp") id = APP_TEMP_DIR;
    else if (key == L"maxroot") id = APP_MAXROOT_DIR;
    else if (key == L"scene") id = APP_SCENE_DIR;
    else throw RuntimeError(L"getDir: unknown folder " + PrintForm(which));
    std::wstring dir = GetCOREInterface()->GetDir(id);
    // Script paths name the folder itself, without the separator at the end.
    while (dir.size() > 1 && hostrt::IsPathSeparator(dir.back())) dir.pop_back();
    return Value::String(dir);
}

void PathFunction(const wchar_t* name, std::wstring (*part)(std::wstring_view)) {
    const std::wstring n = name;
    RegisterGlobalFunction(n, [n, part](CallContext&, CallArgs& args) {
        CheckArgCount(n, args, 1);
        return Value::String(part(Arg(args, 0)));
    });
}

std::wstring WithoutTrailingSeparators(std::wstring path) {
    while (path.size() > 1 && hostrt::IsPathSeparator(path.back())) path.pop_back();
    return path;
}

// pathConfig: paths joined and taken apart as texts, '/' and '\\' both separators; nothing touches the disk.
void RegisterPathConfig() {
    auto paths = std::make_shared<NamespaceObject>(L"pathConfig");
    // appendPath "a/b" "c.max" -> "a/b/c.max": one separator between the parts.
    paths->Function(L"appendPath", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pathConfig.appendPath", args, 2);
        const std::wstring head = Arg(args, 0);
        std::wstring tail = Arg(args, 1);
        tail.erase(0, std::min(tail.size(), tail.find_first_not_of(L"/\\")));
        if (head.empty()) return Value::String(tail);
        return Value::String(hostrt::WithTrailingSeparator(head) + tail);
    });
    // removePathLeaf "a/b/c.max" -> "a/b"; "c.max" -> "".
    paths->Function(L"removePathLeaf", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pathConfig.removePathLeaf", args, 1);
        const std::wstring folder = hostrt::PathDirectory(WithoutTrailingSeparators(Arg(args, 0)));
        return Value::String(folder.empty() ? folder : WithoutTrailingSeparators(folder));
    });
    // stripPathToLeaf "a/b/c.max" -> "c.max".
    paths->Function(L"stripPathToLeaf", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pathConfig.stripPathToLeaf", args, 1);
        return Value::String(hostrt::PathFileName(WithoutTrailingSeparators(Arg(args, 0))));
    });
    paths->Function(L"isAbsolutePath", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pathConfig.isAbsolutePath", args, 1);
        const std::wstring path = Arg(args, 0);
        const bool drive = path.size() >= 3 && path[1] == L':' && hostrt::IsPathSeparator(path[2]);
        return Value::Bool((!path.empty() && hostrt::IsPathSeparator(path[0])) || drive);
    });
    // normalizePath "a\\b/../c" -> "a/c".
    paths->Function(L"normalizePath", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pathConfig.normalizePath", args, 1);
        return Value::String(hostrt::FromNativePath(hostrt::ToNativePath(Arg(args, 0)).lexically_normal()));
    });
    RegisterNamespace(paths);
}

}  // namespace

void RegisterFileBuiltins() {
    RegisterPathConfig();
    RegisterGlobalFunction(L"getINISetting", GetIniSetting);
    RegisterGlobalFunction(L"setINISetting", SetIniSetting);
    RegisterGlobalFunction(L"delIniSetting", DelIniSetting);
    RegisterGlobalFunction(L"hasINISetting", HasIniSetting);
    RegisterGlobalFunction(L"getMAXIniFile", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getMAXIniFile", args, 0);
        return Value::String(hostrt::FromNativePath(hostrt::HostIniPath()));
    });
    RegisterGlobalFunction(L"doesFileExist", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"doesFileExist", args, 1);
        std::error_code ec;
        return Value::Bool(std::filesystem::exists(hostrt::ToNativePath(Arg(args, 0)), ec));
    });
    PathFunction(L"getFilenameFile", hostrt::PathStem);
    PathFunction(L"getFilenamePath", hostrt::PathDirectory);
    PathFunction(L"getFilenameType", hostrt::PathExtension);
    PathFunction(L"filenameFromPath", hostrt::PathFileName);
    RegisterGlobalFunction(L"getDir", GetDir);
}

}  // namespace hostrt::mxs
