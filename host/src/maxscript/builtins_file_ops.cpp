// File operations of MAXScript that scripts use around scene files: getFiles, deleteFile, renameFile, copyFile,
// getFileSize, getFileModDate and makeDir. A file that cannot be handled (missing, a folder, no rights) answers
// false; only an argument of the wrong kind is a script error.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "platform/paths.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <cwchar>
#include <filesystem>
#include <system_error>

namespace hostrt::mxs {

namespace {

namespace fs = std::filesystem;

fs::path PathArg(const CallArgs& args, std::size_t i) { return hostrt::ToNativePath(ToText(args.positional[i])); }

bool IsFile(const fs::path& p) {
    std::error_code ec;
    return fs::is_regular_file(p, ec);
}

bool Exists(const fs::path& p) {
    std::error_code ec;
    return fs::exists(p, ec);
}

// The entries of a pattern's folder whose names match the pattern's file part ('*' and '?', case ignored), and
// with recurse:true those of the folders below (not through folder links): files as full paths, or folders as
// full paths ending with a separator; sorted by path with case ignored.
enum class EntryKind { Files, Folders };
Value FindByPattern(const wchar_t* function, CallArgs& args, EntryKind kind) {
    CheckArgCount(function, args, 1);
    const std::wstring pattern = ToText(args.positional[0]);
    const std::wstring namePattern = hostrt::PathFileName(pattern);
    const std::wstring folderText = hostrt::PathDirectory(pattern);
    std::error_code ec;
    fs::path folder = folderText.empty() ? fs::current_path(ec) : hostrt::ToNativePath(folderText);
    folder = fs::absolute(folder, ec).lexically_normal();
    const Value* recurse = args.Keyword(L"recurse");
    const bool deep = recurse && !recurse->Is(Kind::Unsupplied) && ToBool(*recurse);

    std::vector<std::wstring> found;
    std::vector<fs::path> todo{folder};
    while (!todo.empty()) {
        const fs::path here = todo.back();
        todo.pop_back();
        for (fs::directory_iterator it(here, fs::directory_options::skip_permission_denied, ec), end;
             !ec && it != end; it.increment(ec)) {
            std::error_code entryEc;
            const bool isFolder = it->is_directory(entryEc) && !it->is_symlink(entryEc);
            const bool wanted = kind == EntryKind::Folders ? isFolder : it->is_regular_file(entryEc);
            if (wanted && WildcardMatch(hostrt::FromNativePath(it->path().filename()), namePattern, true)) {
                const std::wstring path = hostrt::FromNativePath(it->path());
                found.push_back(kind == EntryKind::Folders ? hostrt::WithTrailingSeparator(path) : path);
            }
            if (deep && isFolder) todo.push_back(it->path());
        }
        ec.clear();
    }
    std::sort(found.begin(), found.end(),
              [](const std::wstring& a, const std::wstring& b) { return FoldCase(a) < FoldCase(b); });
    ArrayData items;
    for (std::wstring& f : found) items.push_back(Value::String(std::move(f)));
    return Value::Array(std::move(items));
}

Value DeleteFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"deleteFile", args, 1);
    const fs::path file = PathArg(args, 0);
    std::error_code ec;
    return Value::Bool(IsFile(file) && fs::remove(file, ec));
}

// renameFile <old> <new>: false when the old file is missing or the new name is taken.
Value RenameFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"renameFile", args, 2);
    const fs::path from = PathArg(args, 0), to = PathArg(args, 1);
    if (!IsFile(from) || Exists(to)) return Value::Bool(false);
    std::error_code ec;
    fs::rename(from, to, ec);
    return Value::Bool(!ec);
}

// copyFile <existing> <new>: false when the existing file is missing or the new one exists already.
Value CopyFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"copyFile", args, 2);
    const fs::path from = PathArg(args, 0), to = PathArg(args, 1);
    if (!IsFile(from) || Exists(to)) return Value::Bool(false);
    std::error_code ec;
    return Value::Bool(fs::copy_file(from, to, fs::copy_options::none, ec) && !ec);
}

Value GetFileSize(CallContext&, CallArgs& args) {
    CheckArgCount(L"getFileSize", args, 1);
    const fs::path file = PathArg(args, 0);
    std::error_code ec;
    const std::uintmax_t size = IsFile(file) ? fs::file_size(file, ec) : 0;
    if (!IsFile(file) || ec) return Value::Bool(false);
    if (size > std::uintmax_t(INT_MAX)) return Value::Float(float(size));
    return Value::Int(int(size));
}

// getFileModDate <file>: the last modification in local time as the host shows dates, "7/14/2003 3:25:42 PM".
Value GetFileModDate(CallContext&, CallArgs& args) {
    CheckArgCount(L"getFileModDate", args, 1);
    struct stat st {};
    if (::stat(PathArg(args, 0).c_str(), &st) != 0) return Value::Bool(false);
    std::tm local{};
    localtime_r(&st.st_mtime, &local);
    const int hour12 = local.tm_hour % 12 == 0 ? 12 : local.tm_hour % 12;
    wchar_t text[64];
    std::swprintf(text, 64, L"%d/%d/%d %d:%02d:%02d %ls", local.tm_mon + 1, local.tm_mday, local.tm_year + 1900,
                  hour12, local.tm_min, local.tm_sec, local.tm_hour < 12 ? L"AM" : L"PM");
    return Value::String(text);
}

// makeDir <path> all:<boolean>: true when the folder was made or existed already; all (on by default) makes
// the missing folders above it too.
Value MakeDir(CallContext&, CallArgs& args) {
    CheckArgCount(L"makeDir", args, 1);
    const fs::path folder = PathArg(args, 0);
    const Value* all = args.Keyword(L"all");
    std::error_code ec;
    if (fs::is_directory(folder, ec)) return Value::Bool(true);
    if (!all || ToBool(*all)) fs::create_directories(folder, ec);
    else fs::create_directory(folder, ec);
    return Value::Bool(!ec && fs::is_directory(folder, ec));
}

}  // namespace

void RegisterFileOperationBuiltins() {
    RegisterGlobalFunction(L"getFiles", [](CallContext&, CallArgs& args) {
        return FindByPattern(L"getFiles", args, EntryKind::Files);
    });
    RegisterGlobalFunction(L"getDirectories", [](CallContext&, CallArgs& args) {
        return FindByPattern(L"getDirectories", args, EntryKind::Folders);
    });
    RegisterGlobalFunction(L"deleteFile", DeleteFile);
    RegisterGlobalFunction(L"renameFile", RenameFile);
    RegisterGlobalFunction(L"copyFile", CopyFile);
    RegisterGlobalFunction(L"getFileSize", GetFileSize);
    RegisterGlobalFunction(L"getFileModDate", GetFileModDate);
    RegisterGlobalFunction(L"makeDir", MakeDir);
}

}  // namespace hostrt::mxs
