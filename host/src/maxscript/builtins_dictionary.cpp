// Dictionaries: key/value collections whose keys are all names (the default, compared without regard to
// case), all strings or all integers, and the DataPair values their loops visit. Keys stay in the order they
// were put in. `d[key]` reads and writes like GetDictValue and PutDictValue.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"

#include <vector>

namespace hostrt::mxs {

namespace {

// Two values with names: `DataPair 1 2` (v1, v2), or `DataPair key:#a value:1` with names of its own.
class DataPairObject : public ExtObject {
public:
    DataPairObject(Value v1, Value v2, std::wstring name1 = L"v1", std::wstring name2 = L"v2")
        : v1_(std::move(v1)), v2_(std::move(v2)), name1_(std::move(name1)), name2_(std::move(name2)) {}
    std::wstring ClassName() const override { return L"DataPair"; }
    std::wstring Describe() const override {
        return L"(DataPair " + name1_ + L":" + PrintForm(v1_) + L" " + name2_ + L":" + PrintForm(v2_) + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, name1_) || EqualsNoCase(name, L"v1")) return v1_;
        if (EqualsNoCase(name, name2_) || EqualsNoCase(name, L"v2")) return v2_;
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        if (EqualsNoCase(name, name1_) || EqualsNoCase(name, L"v1")) v1_ = value;
        else if (EqualsNoCase(name, name2_) || EqualsNoCase(name, L"v2")) v2_ = value;
        else return false;
        return true;
    }
    std::optional<Value> Copy(CallContext&) override {
        return Value::Ext(std::make_shared<DataPairObject>(v1_, v2_, name1_, name2_));
    }
    const Value& First() const { return v1_; }
    const Value& Second() const { return v2_; }

private:
    Value v1_, v2_;
    std::wstring name1_, name2_;
};

class DictionaryObject : public ExtObject {
public:
    enum class KeyType { Name, String, Integer };
    explicit DictionaryObject(KeyType type) : type_(type) {}

    std::wstring ClassName() const override { return L"Dictionary"; }
    std::wstring Describe() const override {
        std::wstring out = L"Dictionary #" + TypeName();
        for (const auto& [k, v] : entries_) {
            const std::wstring key = type_ == KeyType::Name ? k.Text() : PrintForm(k);
            out += L" " + key + L":" + PrintForm(v);
        }
        return out;
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(int(entries_.size()));
        if (EqualsNoCase(name, L"type")) return Value::Name(TypeName());
        if (EqualsNoCase(name, L"keys")) return Keys();
        return std::nullopt;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& key) override {
        const auto* entry = Find(key);
        return entry ? entry->second : Value::Undefined();
    }
    bool SetIndex(CallContext&, const Value& key, const Value& value) override {
        Put(key, value, false);
        return true;
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (const auto& [k, v] : entries_) items.push_back(Value::Ext(std::make_shared<DataPairObject>(k, v, L"key", L"value")));
        return items;
    }
    std::optional<Value> Copy(CallContext&) override {
        auto copy = std::make_shared<DictionaryObject>(type_);
        copy->entries_ = entries_;
        return Value::Ext(copy);
    }
    std::vector<std::wstring> PropertyNames() const override { return {L"count", L"type", L"keys"}; }

    std::wstring TypeName() const {
        return type_ == KeyType::Name ? L"name" : type_ == KeyType::String ? L"string" : L"integer";
    }
    Value Keys() const {
        ArrayData keys;
        for (const auto& [k, v] : entries_) keys.push_back(k);
        return Value::Array(std::move(keys));
    }
    // Stores value under key; with onlyIfNew an existing key keeps its value. Answers whether it stored.
    bool Put(const Value& key, const Value& value, bool onlyIfNew) {
        const Value k = Checked(key);
        if (auto* entry = Find(k)) {
            if (onlyIfNew) return false;
            entry->second = value;
            return true;
        }
        entries_.emplace_back(k, value);
        return true;
    }
    std::pair<Value, Value>* Find(const Value& key) {
        const Value k = Checked(key);
        for (auto& entry : entries_)
            if (ValuesEqual(entry.first, k)) return &entry;
        return nullptr;
    }
    bool Remove(const Value& key) {
        const Value k = Checked(key);
        for (auto it = entries_.begin(); it != entries_.end(); ++it) {
            if (ValuesEqual(it->first, k)) {
                entries_.erase(it);
                return true;
            }
        }
        return false;
    }

private:
    // A key of the dictionary's type; a key of another type is a conversion error.
    Value Checked(const Value& key) const {
        switch (type_) {
        case KeyType::Name:
            if (key.Is(Kind::Name)) return key;
            throw ConversionError(key, L"Name");
        case KeyType::String:
            if (key.Is(Kind::String)) return Value::String(key.Text());
            throw ConversionError(key, L"String");
        case KeyType::Integer:
            if (key.Is(Kind::Integer)) return key;
            throw ConversionError(key, L"Integer");
        }
        return key;
    }

    KeyType type_;
    std::vector<std::pair<Value, Value>> entries_;
};

DictionaryObject::KeyType TypeOfKey(const Value& key) {
    if (key.Is(Kind::String)) return DictionaryObject::KeyType::String;
    if (key.Is(Kind::Integer)) return DictionaryObject::KeyType::Integer;
    return DictionaryObject::KeyType::Name;
}

// A dictionary argument, else "Unable to convert: x to type: Dictionary".
DictionaryObject& DictArg(const Value& v) {
    auto* d = v.Is(Kind::Ext) ? dynamic_cast<DictionaryObject*>(v.ExtObj().get()) : nullptr;
    if (!d) throw ConversionError(v, L"Dictionary");
    return *d;
}

// The key and value of a constructor argument: a two-item array or a DataPair.
std::pair<Value, Value> Entry(const Value& v) {
    if (v.Is(Kind::Array) && v.Items().size() == 2) return {v.Items()[0], v.Items()[1]};
    if (auto* pair = v.Is(Kind::Ext) ? dynamic_cast<DataPairObject*>(v.ExtObj().get()) : nullptr)
        return {pair->First(), pair->Second()};
    throw RuntimeError(L"Dictionary wants #(key, value) arrays, DataPairs or key:value arguments, got: " + PrintForm(v));
}

Value MakeDictionary(CallContext&, CallArgs& args) {
    const auto& p = args.positional;
    // Dictionary #string: an empty dictionary of that key type.
    if (p.size() == 1 && p[0].Is(Kind::Name) && args.keywords.empty()) {
        const std::wstring type = FoldCase(p[0].Text());
        if (type == L"name") return Value::Ext(std::make_shared<DictionaryObject>(DictionaryObject::KeyType::Name));
        if (type == L"string") return Value::Ext(std::make_shared<DictionaryObject>(DictionaryObject::KeyType::String));
        if (type == L"integer") return Value::Ext(std::make_shared<DictionaryObject>(DictionaryObject::KeyType::Integer));
        throw RuntimeError(L"Dictionary key type must be #name, #string or #integer, got: " + PrintForm(p[0]));
    }
    DictionaryObject::KeyType type = DictionaryObject::KeyType::Name;
    if (!p.empty()) type = TypeOfKey(Entry(p[0]).first);
    auto dict = std::make_shared<DictionaryObject>(type);
    for (const Value& v : p) {
        auto [key, value] = Entry(v);
        dict->Put(key, value, false);
    }
    for (const auto& [name, value] : args.keywords) dict->Put(Value::Name(name), value, false);
    return Value::Ext(dict);
}

}  // namespace

void RegisterDictionaryBuiltins() {
    RegisterClass(L"Dictionary", L"Value", MakeDictionary);
    RegisterClass(L"DataPair", L"Value", [](CallContext&, CallArgs& args) {
        if (args.positional.size() == 2 && args.keywords.empty())
            return Value::Ext(std::make_shared<DataPairObject>(args.positional[0], args.positional[1]));
        if (args.positional.empty() && args.keywords.size() == 2)
            return Value::Ext(std::make_shared<DataPairObject>(args.keywords[0].second, args.keywords[1].second,
                                                               args.keywords[0].first, args.keywords[1].first));
        throw ArgCountError(L"DataPair", 2, int(args.positional.size() + args.keywords.size()));
    });
    RegisterGlobalFunction(L"GetDictValue", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"GetDictValue", args, 2);
        const auto* entry = DictArg(args.positional[0]).Find(args.positional[1]);
        return entry ? entry->second : Value::Undefined();
    });
    RegisterGlobalFunction(L"PutDictValue", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"PutDictValue", args, 3);
        const Value* onlyIfNew = args.Keyword(L"putOnlyIfNew");
        return Value::Bool(DictArg(args.positional[0]).Put(args.positional[1], args.positional[2],
                                                          onlyIfNew && ToBool(*onlyIfNew)));
    });
    RegisterGlobalFunction(L"SetDictValue", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"SetDictValue", args, 3);
        return Value::Bool(DictArg(args.positional[0]).Put(args.positional[1], args.positional[2], false));
    });
    RegisterGlobalFunction(L"RemoveDictValue", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"RemoveDictValue", args, 2);
        return Value::Bool(DictArg(args.positional[0]).Remove(args.positional[1]));
    });
    RegisterGlobalFunction(L"HasDictValue", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"HasDictValue", args, 2);
        return Value::Bool(DictArg(args.positional[0]).Find(args.positional[1]) != nullptr);
    });
    RegisterGlobalFunction(L"GetDictKeys", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"GetDictKeys", args, 1);
        return DictArg(args.positional[0]).Keys();
    });
    RegisterGlobalFunction(L"GetDictKeyType", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"GetDictKeyType", args, 1);
        return Value::Name(DictArg(args.positional[0]).TypeName());
    });
}

}  // namespace hostrt::mxs
