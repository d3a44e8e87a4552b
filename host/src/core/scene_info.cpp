// The two forms of a scene-info description: indented text and JSON.
#include "sceneinfo.h"

#include "maxscript/string_literal.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

class TextWriter : public InfoWriter {
public:
    void BeginObject(const MCHAR* key) override {
        if (key) line(key, L"");
        frames_.push_back({false, key == nullptr && inList(), std::wstring::npos});
    }
    void EndObject() override { pop(); }
    void BeginList(const MCHAR* key) override {
        if (key) line(key, L"");
        frames_.push_back({true, false, key ? out.size() : std::wstring::npos});
    }
    // An empty list reads "key: none".
    void EndList() override {
        if (!frames_.empty() && frames_.back().mark == out.size() && !out.empty()) {
            out.pop_back();
            out += L" none\n";
        }
        pop();
    }
    void Text(const MCHAR* key, const MCHAR* value) override { line(key, shown(value ? value : L"")); }
    void Number(const MCHAR* key, int value) override { line(key, std::to_wstring(value)); }
    void Flag(const MCHAR* key, bool value) override { line(key, value ? L"yes" : L"no"); }
    std::wstring out;

private:
    struct Frame {
        bool list;
        bool dash;         // an object entry of a list: its first line carries the entry's dash
        std::size_t mark;  // a named list: where its entries begin in the text
    };
    bool inList() const { return !frames_.empty() && frames_.back().list; }
    void pop() {
        if (!frames_.empty()) frames_.pop_back();
    }
    void line(const MCHAR* key, const std::wstring& value) {
        std::wstring prefix(frames_.size() * 2, L' ');
        if (!frames_.empty() && frames_.back().dash) {
            prefix.replace(prefix.size() - 2, 2, L"- ");
            frames_.back().dash = false;
        }
        out += prefix;
        if (key) {
            out += key;
            out += value.empty() ? L":" : L": ";
        } else {
            out += L"- ";
        }
        out += value;
        out += L'\n';
    }
    static std::wstring shown(const std::wstring& value) {
        const bool plain = value.find_first_of(L"\"\\\r\n\t") == std::wstring::npos && !value.empty() &&
                           value.front() != L' ' && value.back() != L' ';
        return plain ? value : MaxScriptStringLiteral(value);
    }
    std::vector<Frame> frames_;
};

class JsonWriter : public InfoWriter {
public:
    void BeginObject(const MCHAR* key) override { open(key, L'{'); }
    void EndObject() override { close(L'}'); }
    void BeginList(const MCHAR* key) override { open(key, L'['); }
    void EndList() override { close(L']'); }
    void Text(const MCHAR* key, const MCHAR* value) override { put(key, quoted(value ? value : L"")); }
    void Number(const MCHAR* key, int value) override { put(key, std::to_wstring(value)); }
    void Flag(const MCHAR* key, bool value) override { put(key, value ? L"true" : L"false"); }
    std::wstring Finish() {
        while (!first_.empty()) close(first_.size() == 1 ? L'}' : L']');
        return out_ + L"\n";
    }
    JsonWriter() {
        out_ = L"{";
        first_.push_back(true);
    }

private:
    void separate(const MCHAR* key) {
        if (!first_.empty()) {
            if (!first_.back()) out_ += L',';
            first_.back() = false;
        }
        out_ += L'\n';
        out_.append(first_.size() * 2, L' ');
        if (key) out_ += quoted(key) + L": ";
    }
    void open(const MCHAR* key, wchar_t bracket) {
        separate(key);
        out_ += bracket;
        first_.push_back(true);
    }
    void close(wchar_t bracket) {
        if (first_.empty()) return;
        const bool empty = first_.back();
        first_.pop_back();
        if (!empty) {
            out_ += L'\n';
            out_.append(first_.size() * 2, L' ');
        }
        out_ += bracket;
    }
    void put(const MCHAR* key, const std::wstring& value) {
        separate(key);
        out_ += value;
    }
    static std::wstring quoted(const std::wstring& text) {
        std::wstring q = L"\"";
        for (wchar_t c : text) {
            switch (c) {
            case L'"': q += L"\\\""; break;
            case L'\\': q += L"\\\\"; break;
            case L'\n': q += L"\\n"; break;
            case L'\r': q += L"\\r"; break;
            case L'\t': q += L"\\t"; break;
            case L'\b': q += L"\\b"; break;
            case L'\f': q += L"\\f"; break;
            default:
                if (unsigned(c) < 0x20) {
                    wchar_t buf[8];
                    std::swprintf(buf, 8, L"\\u%04x", unsigned(c));
                    q += buf;
                } else {
                    q += c;
                }
            }
        }
        return q + L"\"";
    }
    std::wstring out_;
    std::vector<bool> first_;
};

}  // namespace

MSTR SceneInfoText(const std::function<void(InfoWriter&)>& describe) {
    TextWriter writer;
    describe(writer);
    return MSTR(writer.out.c_str());
}

MSTR SceneInfoJson(const std::function<void(InfoWriter&)>& describe) {
    JsonWriter writer;
    describe(writer);
    return MSTR(writer.Finish().c_str());
}
