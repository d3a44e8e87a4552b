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
    // A list entry written as it is (no quoting).
    void RawEntry(const std::wstring& text) { line(nullptr, text); }
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
public:
    static std::wstring shown(const std::wstring& value) {
        const bool plain = value.find_first_of(L"\"\\\r\n\t") == std::wstring::npos && !value.empty() &&
                           value.front() != L' ' && value.back() != L' ';
        return plain ? value : MaxScriptStringLiteral(value);
    }
    std::vector<Frame> frames_;
};

// Lets a small list entry (texts, numbers, flags and at most one list of texts) read as one line,
// "- path: TM/Position, type: RefAnim, states: LocDep"; any other entry is written out in full.
class CompactTextWriter : public InfoWriter {
public:
    explicit CompactTextWriter(TextWriter& to) : to_(to) {}
    void BeginObject(const MCHAR* key) override {
        if (buffering_) {
            record(Event::BeginObject, key);
            ++depth_;
            return;
        }
        if (!key && inList()) {
            buffering_ = true;
            depth_ = 1;
            events_.clear();
            return;
        }
        lists_.push_back(false);
        to_.BeginObject(key);
    }
    void EndObject() override {
        if (buffering_) {
            if (--depth_ == 0) finishEntry();
            else record(Event::EndObject, nullptr);
            return;
        }
        lists_.pop_back();
        to_.EndObject();
    }
    void BeginList(const MCHAR* key) override {
        if (buffering_) {
            record(Event::BeginList, key);
            ++depth_;
            return;
        }
        lists_.push_back(true);
        to_.BeginList(key);
    }
    void EndList() override {
        if (buffering_) {
            record(Event::EndList, nullptr);
            --depth_;
            return;
        }
        lists_.pop_back();
        to_.EndList();
    }
    void Text(const MCHAR* key, const MCHAR* value) override {
        if (buffering_) return record(Event::Text, key, value ? value : L"");
        to_.Text(key, value);
    }
    void Number(const MCHAR* key, int value) override {
        if (buffering_) return record(Event::Number, key, std::to_wstring(value));
        to_.Number(key, value);
    }
    void Flag(const MCHAR* key, bool value) override {
        if (buffering_) return record(Event::Flag, key, value ? L"yes" : L"no");
        to_.Flag(key, value);
    }

private:
    struct Event {
        enum Kind { BeginObject, EndObject, BeginList, EndList, Text, Number, Flag } kind;
        bool hasKey;
        std::wstring key;
        std::wstring value;
    };
    bool inList() const { return !lists_.empty() && lists_.back(); }
    void record(Event::Kind kind, const MCHAR* key, std::wstring value = {}) {
        events_.push_back({kind, key != nullptr, key ? key : L"", std::move(value)});
    }
    void finishEntry() {
        buffering_ = false;
        std::vector<Event> events = std::move(events_);
        events_.clear();
        bool plain = true;
        int lists = 0;
        for (const Event& e : events) {
            plain = plain && e.kind != Event::BeginObject;
            lists += e.kind == Event::BeginList;
        }
        plain = plain && lists <= 1;
        if (plain) {
            to_.RawEntry(inlineText(events));
            return;
        }
        lists_.push_back(false);
        to_.BeginObject(nullptr);
        for (const Event& e : events) replay(e);
        lists_.pop_back();
        to_.EndObject();
    }
    void replay(const Event& e) {
        const MCHAR* key = e.hasKey ? e.key.c_str() : nullptr;
        switch (e.kind) {
        case Event::BeginObject: BeginObject(key); break;
        case Event::EndObject: EndObject(); break;
        case Event::BeginList: BeginList(key); break;
        case Event::EndList: EndList(); break;
        case Event::Text: Text(key, e.value.c_str()); break;
        case Event::Number: Number(key, std::stoi(e.value)); break;
        case Event::Flag: Flag(key, e.value == L"yes"); break;
        }
    }
    static std::wstring inlineText(const std::vector<Event>& events) {
        std::wstring text;
        bool inItems = false;
        bool anyItem = false;
        for (const Event& e : events) {
            switch (e.kind) {
            case Event::BeginList:
                if (!text.empty()) text += L", ";
                text += e.key + L": ";
                inItems = true;
                anyItem = false;
                break;
            case Event::EndList:
                text += anyItem ? L"" : L"none";
                inItems = false;
                break;
            case Event::Text:
            case Event::Number:
            case Event::Flag: {
                const std::wstring value = e.kind == Event::Text ? TextWriter::shown(e.value) : e.value;
                if (inItems) {
                    text += (anyItem ? L", " : L"") + value;
                    anyItem = true;
                } else {
                    if (!text.empty()) text += L", ";
                    text += e.key + L": " + value;
                }
                break;
            }
            default: break;
            }
        }
        return text;
    }
    TextWriter& to_;
    std::vector<bool> lists_;
    std::vector<Event> events_;
    bool buffering_ = false;
    int depth_ = 0;
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
    CompactTextWriter compact(writer);
    describe(compact);
    return MSTR(writer.out.c_str());
}

MSTR SceneInfoJson(const std::function<void(InfoWriter&)>& describe) {
    JsonWriter writer;
    describe(writer);
    return MSTR(writer.Finish().c_str());
}
