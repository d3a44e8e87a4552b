// Rollout controls and menu items without a window: their properties, defaults and checks.
#include "maxscript/rollout_controls.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"

#include <algorithm>
#include <cmath>

namespace hostrt::mxs {

namespace {

struct ControlClass {
    const wchar_t* type;
    const wchar_t* className;
};
constexpr ControlClass kClasses[] = {
    {L"button", L"ButtonControl"},          {L"checkbox", L"CheckBoxControl"},
    {L"checkbutton", L"CheckButtonControl"}, {L"spinner", L"SpinnerControl"},
    {L"slider", L"SliderControl"},          {L"edittext", L"EditTextControl"},
    {L"label", L"LabelControl"},            {L"dropdownlist", L"ComboBoxControl"},
    {L"combobox", L"ComboBoxControl"},      {L"listbox", L"ListBoxControl"},
    {L"multilistbox", L"MultiListBoxControl"}, {L"radiobuttons", L"RadioControl"},
    {L"colorpicker", L"ColorPickerControl"}, {L"pickbutton", L"PickerControl"},
    {L"mapbutton", L"MapButtonControl"},    {L"materialbutton", L"MtlButtonControl"},
    {L"progressbar", L"ProgressBar"},       {L"timer", L"Timer"},
    {L"groupbox", L"GroupBoxControl"},      {L"bitmap", L"BitmapControl"},
    {L"imgtag", L"ImgTag"},                 {L"hyperlink", L"HyperLinkControl"},
    {L"angle", L"AngleControl"},            {L"curvecontrol", L"CurveControl"},
    {L"dotnetcontrol", L"dotNetControl"},   {L"activexcontrol", L"ActiveXControl"},
    {L"subrollout", L"SubRollout"},         {L"menuitem", L"MenuItem"},
    {L"separator", L"MenuSeparator"},       {L"submenu", L"SubMenu"},
};

bool Is(const std::wstring& type, std::initializer_list<const wchar_t*> types) {
    for (const wchar_t* t : types)
        if (type == t) return true;
    return false;
}

// Controls whose caption is a label beside their own text (an edit field, a list).
bool HasSeparateText(const std::wstring& type) { return Is(type, {L"edittext", L"combobox"}); }
bool IsList(const std::wstring& type) { return Is(type, {L"dropdownlist", L"combobox", L"listbox"}); }
bool IsRanged(const std::wstring& type) { return Is(type, {L"spinner", L"slider"}); }

Value Strings(const Value& v) {
    if (!v.Is(Kind::Array)) throw ConversionError(v, L"Array");
    ArrayData items;
    for (const Value& item : v.Items()) items.push_back(Value::String(ToText(item)));
    return Value::Array(std::move(items));
}

Value AsColor(const Value& v) {
    if (v.Is(Kind::Color)) return v;
    const Point3 p = ToPoint3(v);
    return Value::Col(AColor(p.x, p.y, p.z, 255.f));
}

}  // namespace

ControlObject::ControlObject(std::wstring type, std::wstring name, std::shared_ptr<const HandlerTable> handlers)
    : type_(std::move(type)), name_(std::move(name)), handlers_(std::move(handlers)) {}

std::wstring ControlObject::ClassName() const {
    for (const ControlClass& c : kClasses)
        if (type_ == c.type) return c.className;
    return L"RolloutControl";
}

Value* ControlObject::Slot(const std::wstring& key) {
    for (auto& [k, v] : props_)
        if (k == key) return &v;
    return nullptr;
}

void ControlObject::Put(const std::wstring& key, Value v) {
    if (Value* slot = Slot(key)) *slot = std::move(v);
    else props_.emplace_back(key, std::move(v));
}

void ControlObject::ClampSelection() {
    Value* items = Slot(L"items");
    Value* selection = Slot(L"selection");
    if (!items || !selection || !selection->Is(Kind::Integer)) return;
    const int count = int(items->Items().size());
    int s = selection->AsInt();
    if (s > count) s = count;
    if (s == 0 && count > 0 && type_ != L"listbox") s = 1;
    *selection = Value::Int(std::max(s, 0));
}

Value ControlObject::Checked(const std::wstring& key, const Value& v) {
    if (Is(key, {L"enabled", L"visible", L"active", L"readonly", L"indeterminate", L"checked"})) return Value::Bool(ToBool(v));
    if (key == L"state") {
        if (type_ == L"radiobuttons") {
            const Value* labels = Slot(L"labels");
            const int count = labels ? int(labels->Items().size()) : 0;
            return Value::Int(std::clamp(ToInt(v), 0, count));
        }
        return Value::Bool(ToBool(v));
    }
    if (key == L"value" && IsRanged(type_)) {
        const Point3 range = ToPoint3(*Slot(L"range"));
        const float f = std::clamp(ToFloat(v), std::min(range.x, range.y), std::max(range.x, range.y));
        const Value* kind = Slot(L"type");
        if (kind && kind->Is(Kind::Name) && EqualsNoCase(kind->Text(), L"integer")) return Value::Int(int(std::lround(f)));
        return Value::Float(f);
    }
    if (key == L"value" && type_ == L"progressbar") return Value::Float(std::clamp(ToFloat(v), 0.f, 100.f));
    if (key == L"range") return Value::P3(ToPoint3(v));
    if (key == L"items" || key == L"labels") return Strings(v);
    if (key == L"selection") {
        if (type_ == L"multilistbox") return v.Is(Kind::Integer) ? ToBitArray(Value::Array({v})) : ToBitArray(v);
        const Value* items = Slot(L"items");
        const int count = items ? int(items->Items().size()) : 0;
        return Value::Int(std::clamp(ToInt(v), 0, count));
    }
    if (key == L"text" || key == L"caption" || key == L"tooltip" || key == L"address") return Value::String(ToText(v));
    if (key == L"color") return AsColor(v);
    if (key == L"interval" || key == L"ticks") return Value::Int(ToInt(v));
    if (key == L"type") {
        if (!v.Is(Kind::Name)) throw ConversionError(v, L"Name");
        return v;
    }
    return v;
}

void ControlObject::Init(const Value& caption, const std::vector<std::pair<std::wstring, Value>>& keywords) {
    props_.clear();
    const Value label = caption.IsUndefined() ? Value::String(name_) : Value::String(DisplayForm(caption));
    if (HasSeparateText(type_)) {
        Put(L"caption", label);
        Put(L"text", Value::String(L""));
    } else {
        Put(L"text", label);
    }
    Put(L"enabled", Value::Bool(true));
    Put(L"visible", Value::Bool(true));
    Put(L"tooltip", Value::String(L""));
    Put(L"pos", Value::P2(Point2(0, 0)));
    if (Is(type_, {L"checkbox", L"checkbutton", L"menuitem"})) Put(L"checked", Value::Bool(false));
    if (IsRanged(type_)) {
        Put(L"type", Value::Name(L"float"));
        Put(L"range", Value::P3(Point3(0, 100, 0)));
        Put(L"value", Value::Float(0));
    }
    if (type_ == L"spinner") Put(L"scale", Value::Float(0.1f));
    if (IsList(type_) || type_ == L"multilistbox") Put(L"items", Value::Array());
    if (IsList(type_)) Put(L"selection", Value::Int(0));
    if (type_ == L"multilistbox") Put(L"selection", Value::Bits(::BitArray()));
    if (type_ == L"radiobuttons") {
        Put(L"labels", Value::Array());
        Put(L"state", Value::Int(1));
    }
    if (type_ == L"colorpicker") Put(L"color", Value::Col(AColor(0, 0, 0, 255.f)));
    if (type_ == L"progressbar") {
        Put(L"value", Value::Float(0));
        Put(L"color", Value::Col(AColor(30, 10, 190, 255.f)));
    }
    if (type_ == L"timer") {
        Put(L"interval", Value::Int(1000));
        Put(L"active", Value::Bool(true));
        Put(L"ticks", Value::Int(0));
    }
    if (type_ == L"pickbutton") Put(L"object", Value::Undefined());
    if (type_ == L"mapbutton") Put(L"map", Value::Undefined());
    if (type_ == L"materialbutton") Put(L"material", Value::Undefined());
    if (type_ == L"hyperlink") Put(L"address", Value::String(L""));

    // The type first, so that a range's value is taken as an integer where it must be.
    if (auto t = FindKeyword(keywords, L"type")) Put(L"type", Checked(L"type", *t));
    for (const auto& [name, value] : keywords) {
        const std::wstring key = FoldCase(name);
        if (key == L"type") continue;
        if (key == L"range" && IsRanged(type_)) {
            Put(L"range", Checked(L"range", value));
            Put(L"value", Checked(L"value", Value::Float(ToPoint3(value).z)));
        } else if (key == L"default" && type_ == L"radiobuttons") {
            Put(L"state", Checked(L"state", value));
        } else if (key == L"state" && Is(type_, {L"checkbox", L"checkbutton"})) {
            Put(L"checked", Checked(L"checked", value));
        } else {
            Put(key, Checked(key, value));
        }
    }
    ClampSelection();
}

std::optional<Value> ControlObject::GetProperty(CallContext&, const std::wstring& name) {
    std::wstring key = FoldCase(name);
    if (key == L"name") return Value::String(name_);
    if (key == L"caption" && !HasSeparateText(type_)) key = L"text";
    if (key == L"state" && Is(type_, {L"checkbox", L"checkbutton"})) key = L"checked";
    if (key == L"selected" && IsList(type_)) {
        const ArrayData& items = Slot(L"items")->Items();
        const int s = Slot(L"selection")->AsInt();
        return s >= 1 && s <= int(items.size()) ? items[std::size_t(s - 1)] : Value::Undefined();
    }
    if (key == L"count" && (IsList(type_) || type_ == L"multilistbox")) return Value::Int(int(Slot(L"items")->Items().size()));
    if (Value* slot = Slot(key)) return slot->Is(Kind::Array) ? Value::Array(slot->Items()) : *slot;
    // An event name answers its handler, which a script may call: ro.btn.pressed().
    if (handlers_) {
        if (auto fn = handlers_->Find(name_, key)) return *fn;
    }
    return std::nullopt;
}

bool ControlObject::SetProperty(CallContext&, const std::wstring& name, const Value& value) {
    std::wstring key = FoldCase(name);
    if (key == L"caption" && !HasSeparateText(type_)) key = L"text";
    if (key == L"state" && Is(type_, {L"checkbox", L"checkbutton"})) key = L"checked";
    if (key == L"selected" && IsList(type_)) {
        // The selected item's text.
        const int s = Slot(L"selection")->AsInt();
        ArrayData items = Slot(L"items")->Items();
        if (s >= 1 && s <= int(items.size())) items[std::size_t(s - 1)] = Value::String(ToText(value));
        Put(L"items", Value::Array(std::move(items)));
        return true;
    }
    if (Slot(key)) {
        Put(key, Checked(key, value));
        if (key == L"items") ClampSelection();
        if (key == L"range" && IsRanged(type_)) Put(L"value", Checked(L"value", Value::Float(ToPoint3(value).z)));
        if (key == L"type" && IsRanged(type_)) Put(L"value", Checked(L"value", *Slot(L"value")));
        return true;
    }
    // Layout properties a script may set on any control.
    if (key == L"width" || key == L"height" || key == L"images" || key == L"align" || key == L"offset") {
        Put(key, value);
        return true;
    }
    return false;
}

std::vector<std::wstring> ControlObject::PropertyNames() const {
    std::vector<std::wstring> names{L"name"};
    for (const auto& [k, v] : props_) names.push_back(k);
    return names;
}

void BuildControls(Interpreter& in, const DefinitionSite& site, const ast::ControlDef& c, const wchar_t* container,
                   const std::shared_ptr<Scope>& scope, const std::shared_ptr<const HandlerTable>& handlers,
                   std::vector<std::shared_ptr<ControlObject>>& into) {
    if (c.type == container) {
        for (const ast::ControlDef& child : c.children) BuildControls(in, site, child, container, scope, handlers, into);
        return;
    }
    Value caption;
    {
        SiteFrame frame(in, site);
        if (c.caption) caption = in.Eval(*c.caption, scope);
    }
    auto control = std::make_shared<ControlObject>(c.type, c.name, handlers);
    control->Init(caption, EvalKeywords(in, site, c.keywords, scope));
    scope->vars[FoldCase(c.name)] = Value::Ext(control);
    into.push_back(std::move(control));
}

}  // namespace hostrt::mxs
