// Binary files in MAXScript: `fopen name mode` gives a BinStream (undefined when the file cannot be opened),
// read and written a value at a time in little-endian order (readByte/writeByte, readShort, readLong, readFloat,
// readString with its closing zero), positioned with fseek/ftell and closed with fclose.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "platform/paths.h"
#include "strclass.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace hostrt::mxs {

namespace {

namespace fs = std::filesystem;

class BinStream : public ExtObject {
public:
    BinStream(std::wstring path, std::FILE* file) : path_(std::move(path)), file_(file) {}
    ~BinStream() override { Close(); }
    std::wstring ClassName() const override { return L"BinStream"; }
    std::wstring Describe() const override { return L"<BinStream:" + path_ + L">"; }
    std::FILE* File(const wchar_t* fn) const {
        if (!file_) throw RuntimeError(std::wstring(fn) + L": the binary file " + path_ + L" is closed");
        return file_;
    }
    bool Close() {
        if (!file_) return false;
        const bool ok = std::fclose(file_) == 0;
        file_ = nullptr;
        return ok;
    }

private:
    std::wstring path_;
    std::FILE* file_;
};

BinStream& StreamArg(const Value& v, const wchar_t* fn) {
    auto* s = v.Is(Kind::Ext) ? dynamic_cast<BinStream*>(v.ExtObj().get()) : nullptr;
    if (!s) throw TypeError(std::wstring(fn) + L" needs a BinStream (from fopen), got: " + PrintForm(v));
    return *s;
}

// Whether the optional second argument asks for an unsigned read (#unsigned; #signed is the default).
bool Unsigned(const CallArgs& args, const wchar_t* fn) {
    if (args.positional.size() < 2) return false;
    const Value& how = args.positional[1];
    if (how.Is(Kind::Name) && EqualsNoCase(how.Text(), L"unsigned")) return true;
    if (how.Is(Kind::Name) && EqualsNoCase(how.Text(), L"signed")) return false;
    throw RuntimeError(std::wstring(fn) + L" wants #signed or #unsigned, got: " + PrintForm(how));
}

// Reads n bytes; undefined at the end of the file.
template <class T> std::optional<T> ReadRaw(std::FILE* f) {
    T v{};
    if (std::fread(&v, sizeof(T), 1, f) != 1) return std::nullopt;
    return v;
}

template <class T> Value WriteRaw(std::FILE* f, T v) { return Value::Bool(std::fwrite(&v, sizeof(T), 1, f) == 1); }

template <class S, class U> void RegisterIntegerIO(const wchar_t* readName, const wchar_t* writeName) {
    RegisterGlobalFunction(readName, [readName](CallContext&, CallArgs& args) {
        if (args.positional.empty() || args.positional.size() > 2) throw ArgCountError(readName, 1, int(args.positional.size()));
        std::FILE* f = StreamArg(args.positional[0], readName).File(readName);
        if (Unsigned(args, readName)) {
            auto v = ReadRaw<U>(f);
            return v ? Value::Int(int(*v)) : Value::Undefined();
        }
        auto v = ReadRaw<S>(f);
        return v ? Value::Int(int(*v)) : Value::Undefined();
    });
    RegisterGlobalFunction(writeName, [writeName](CallContext&, CallArgs& args) {
        if (args.positional.size() < 2 || args.positional.size() > 3)
            throw ArgCountError(writeName, 2, int(args.positional.size()));
        std::FILE* f = StreamArg(args.positional[0], writeName).File(writeName);
        return WriteRaw<U>(f, U(ToInt(args.positional[1])));
    });
}

Value FOpen(CallContext&, CallArgs& args) {
    CheckArgCount(L"fopen", args, 2);
    const std::wstring path = ToText(args.positional[0]);
    std::wstring mode = ToText(args.positional[1]);
    static const std::wstring kModes[] = {L"rb", L"wb", L"ab", L"rb+", L"wb+", L"ab+", L"r+b", L"w+b", L"a+b",
                                          L"r",  L"w",  L"a",  L"r+",  L"w+",  L"a+"};
    if (std::find(std::begin(kModes), std::end(kModes), mode) == std::end(kModes))
        throw RuntimeError(L"fopen: unknown mode \"" + mode + L"\" (rb, wb, ab, each with + to read and write)");
    if (mode.find(L'b') == std::wstring::npos) mode += L'b';
    const fs::path native = hostrt::ToNativePath(path);
    std::error_code ec;
    if (path.empty() || fs::is_directory(native, ec)) return Value::Undefined();
    std::FILE* file = std::fopen(native.c_str(), MaxSDK::ToUTF8(mode).c_str());
    if (!file) return Value::Undefined();
    return Value::Ext(std::make_shared<BinStream>(path, file));
}

}  // namespace

void RegisterBinaryStreamBuiltins() {
    RegisterGlobalFunction(L"fopen", FOpen);
    RegisterGlobalFunction(L"fclose", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"fclose", args, 1);
        return Value::Bool(StreamArg(args.positional[0], L"fclose").Close());
    });
    RegisterIntegerIO<std::int8_t, std::uint8_t>(L"readByte", L"writeByte");
    RegisterIntegerIO<std::int16_t, std::uint16_t>(L"readShort", L"writeShort");
    RegisterIntegerIO<std::int32_t, std::uint32_t>(L"readLong", L"writeLong");
    RegisterGlobalFunction(L"readFloat", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"readFloat", args, 1);
        auto v = ReadRaw<float>(StreamArg(args.positional[0], L"readFloat").File(L"readFloat"));
        return v ? Value::Float(*v) : Value::Undefined();
    });
    RegisterGlobalFunction(L"writeFloat", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"writeFloat", args, 2);
        return WriteRaw<float>(StreamArg(args.positional[0], L"writeFloat").File(L"writeFloat"),
                               ToFloat(args.positional[1]));
    });
    // Strings are UTF-8 with a closing zero.
    RegisterGlobalFunction(L"readString", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"readString", args, 1);
        std::FILE* f = StreamArg(args.positional[0], L"readString").File(L"readString");
        std::string bytes;
        int c = 0;
        while ((c = std::fgetc(f)) != EOF && c != 0) bytes.push_back(char(c));
        if (c == EOF && bytes.empty()) return Value::Undefined();
        return Value::String(MaxSDK::FromUTF8(bytes));
    });
    RegisterGlobalFunction(L"writeString", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"writeString", args, 2);
        std::FILE* f = StreamArg(args.positional[0], L"writeString").File(L"writeString");
        const std::string bytes = MaxSDK::ToUTF8(ToText(args.positional[1]));
        return Value::Bool(std::fwrite(bytes.c_str(), 1, bytes.size() + 1, f) == bytes.size() + 1);
    });
    RegisterGlobalFunction(L"fseek", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"fseek", args, 3);
        std::FILE* f = StreamArg(args.positional[0], L"fseek").File(L"fseek");
        const Value& from = args.positional[2];
        int whence = -1;
        if (from.Is(Kind::Name)) {
            if (EqualsNoCase(from.Text(), L"seek_set")) whence = SEEK_SET;
            if (EqualsNoCase(from.Text(), L"seek_cur")) whence = SEEK_CUR;
            if (EqualsNoCase(from.Text(), L"seek_end")) whence = SEEK_END;
        }
        if (whence < 0) throw RuntimeError(L"fseek wants #seek_set, #seek_cur or #seek_end, got: " + PrintForm(from));
        return Value::Bool(std::fseek(f, long(ToInt(args.positional[1])), whence) == 0);
    });
    RegisterGlobalFunction(L"ftell", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"ftell", args, 1);
        return Value::Int(int(std::ftell(StreamArg(args.positional[0], L"ftell").File(L"ftell"))));
    });
}

}  // namespace hostrt::mxs
