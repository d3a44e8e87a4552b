// Files as scripts read and write them: file streams (openFile, createFile, readLine, readChars, eof, close,
// flush), running another script file (fileIn, getSourceFileName).
// A file that cannot be opened answers undefined; reading past the end or using a closed stream is an error.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/streams.h"
#include "platform/paths.h"
#include "platform/text_files.h"
#include "strclass.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace hostrt::mxs {

namespace {

namespace fs = std::filesystem;

// A file opened by a script. Text is written as UTF-8; reading skips a UTF-8 byte-order mark at the start.
class FileStream : public TextStream {
public:
    FileStream(std::wstring path, std::FILE* file, bool readable, bool writable)
        : path_(std::move(path)), file_(file), readable_(readable), writable_(writable) {
        if (readable_) skipByteOrderMark();
    }
    ~FileStream() override { Close(); }

    std::wstring ClassName() const override { return L"FileStream"; }
    std::wstring Describe() const override { return L"<File:" + path_ + L">"; }

    void Write(const std::wstring& text) override {
        open(L"write to");
        if (!writable_) throw RuntimeError(L"FileStream not open for writing: " + path_);
        const std::string bytes = MaxSDK::ToUTF8(text);
        if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size())
            throw RuntimeError(L"Cannot write to " + path_);
    }

    // The next line without its line break ("\n" or "\r\n").
    std::wstring ReadLine() {
        readable(L"readLine");
        std::string bytes;
        int c = std::fgetc(file_);
        if (c == EOF) throw RuntimeError(L"readLine: read past the end of " + Describe());
        for (; c != EOF && c != '\n'; c = std::fgetc(file_)) bytes += char(c);
        if (!bytes.empty() && bytes.back() == '\r') bytes.pop_back();
        return MaxSDK::FromUTF8(bytes);
    }

    // The next count characters (fewer at the end of the file).
    std::wstring ReadChars(int count) {
        readable(L"readChars");
        std::wstring out;
        while (int(out.size()) < count) {
            const int lead = std::fgetc(file_);
            if (lead == EOF) break;
            std::string bytes(1, char(lead));
            const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
            for (int i = 0; i < more; ++i) {
                const int c = std::fgetc(file_);
                if (c == EOF) break;
                bytes += char(c);
            }
            out += MaxSDK::FromUTF8(bytes);
        }
        if (out.empty() && count > 0) throw RuntimeError(L"readChars: read past the end of " + Describe());
        return out;
    }

    bool AtEnd() {
        open(L"test the end of");
        const int c = std::fgetc(file_);
        if (c == EOF) return true;
        std::ungetc(c, file_);
        return false;
    }

    void Flush() {
        open(L"flush");
        std::fflush(file_);
    }

    void Close() {
        if (file_) std::fclose(file_);
        file_ = nullptr;
    }

private:
    void open(const wchar_t* what) const {
        if (!file_) throw RuntimeError(std::wstring(L"Cannot ") + what + L" a closed FileStream: " + path_);
    }
    void readable(const wchar_t* function) const {
        open(L"read from");
        if (!readable_) throw RuntimeError(std::wstring(function) + L": FileStream not open for reading: " + path_);
    }
    void skipByteOrderMark() {
        unsigned char head[3] = {};
        const std::size_t got = std::fread(head, 1, 3, file_);
        if (got == 3 && head[0] == 0xEF && head[1] == 0xBB && head[2] == 0xBF) return;
        std::rewind(file_);
    }

    std::wstring path_;
    std::FILE* file_;
    bool readable_;
    bool writable_;
};

FileStream& StreamArg(const CallArgs& args, const wchar_t* function) {
    const Value& v = args.positional[0];
    auto* stream = v.Is(Kind::Ext) ? dynamic_cast<FileStream*>(v.ExtObj().get()) : nullptr;
    if (!stream) throw TypeError(std::wstring(function) + L" needs a FileStream, got: " + PrintForm(v));
    return *stream;
}

// A stream on the file, undefined when it cannot be opened. Modes as the C library has them ("r", "w", "a",
// each with "+"; "t" and "b" are allowed and change nothing).
Value OpenStream(const std::wstring& path, std::wstring mode) {
    std::erase_if(mode, [](wchar_t c) { return c == L't' || c == L'b'; });
    static const std::wstring kModes[] = {L"r", L"r+", L"w", L"w+", L"a", L"a+"};
    if (std::find(std::begin(kModes), std::end(kModes), mode) == std::end(kModes))
        throw RuntimeError(L"openFile: unknown mode \"" + mode + L"\" (r, r+, w, w+, a or a+)");
    const fs::path native = hostrt::ToNativePath(path);
    std::error_code ec;
    if (path.empty() || fs::is_directory(native, ec)) return Value::Undefined();
    std::FILE* file = std::fopen(native.c_str(), MaxSDK::ToUTF8(mode).c_str());
    if (!file) return Value::Undefined();
    const bool plus = mode.size() == 2;
    return Value::Ext(std::make_shared<FileStream>(path, file, mode[0] == L'r' || plus, mode[0] != L'r' || plus));
}

Value OpenFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"openFile", args, 1);
    const Value* mode = args.Keyword(L"mode");
    const bool given = mode && !mode->Is(Kind::Unsupplied);
    return OpenStream(ToText(args.positional[0]), given ? ToText(*mode) : L"r");
}

Value CreateFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"createFile", args, 1);
    return OpenStream(ToText(args.positional[0]), L"w");
}

// The folder of the running script, for names relative to it.
fs::path ScriptFolder(const Interpreter& interp) {
    const std::wstring& source = interp.SourceName();
    if (source.empty()) return {};
    std::error_code ec;
    return fs::absolute(hostrt::ToNativePath(source), ec).parent_path();
}

// fileIn <file>: runs a script file in the interpreter that runs now, so what it defines stays defined. A
// relative name is looked for in the current folder, then beside the running script.
Value FileIn(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"fileIn", args, 1);
    const std::wstring name = ToText(args.positional[0]);
    fs::path file = hostrt::ToNativePath(name);
    std::error_code ec;
    if (file.is_relative() && !fs::exists(file, ec)) {
        const fs::path beside = ScriptFolder(ctx.interp) / file;
        if (fs::exists(beside, ec)) file = beside;
    }
    const std::optional<std::wstring> text = hostrt::ReadTextFile(file);
    if (!text) throw RuntimeError(L"fileIn: cannot open the file \"" + name + L"\"");
    const fs::path full = fs::absolute(file, ec).lexically_normal();
    return ctx.interp.Execute(*text, hostrt::FromNativePath(full));
}

Value GetSourceFileName(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"getSourceFileName", args, 0);
    const std::wstring& source = ctx.interp.SourceName();
    if (source.empty()) return Value::Undefined();
    std::error_code ec;
    return Value::String(hostrt::FromNativePath(fs::absolute(hostrt::ToNativePath(source), ec).lexically_normal()));
}

}  // namespace

void RegisterFileStreamBuiltins() {
    RegisterGlobalFunction(L"openFile", OpenFile);
    RegisterGlobalFunction(L"createFile", CreateFile);
    RegisterGlobalFunction(L"readLine", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"readLine", args, 1);
        return Value::String(StreamArg(args, L"readLine").ReadLine());
    });
    RegisterGlobalFunction(L"readChars", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"readChars", args, 2);
        return Value::String(StreamArg(args, L"readChars").ReadChars(ToInt(args.positional[1])));
    });
    RegisterGlobalFunction(L"eof", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"eof", args, 1);
        return Value::Bool(StreamArg(args, L"eof").AtEnd());
    });
    RegisterGlobalFunction(L"flush", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"flush", args, 1);
        StreamArg(args, L"flush").Flush();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"close", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"close", args, 1);
        StreamArg(args, L"close").Close();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"fileIn", FileIn);
    RegisterGlobalFunction(L"getSourceFileName", GetSourceFileName);
}

}  // namespace hostrt::mxs
