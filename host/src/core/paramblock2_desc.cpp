// ParamBlockDesc2 and its fluent parameter builder: parameter definitions, lookups and class defaults.
#include "iparamb2.h"
#include "paramblock2_internal.h"

namespace hostrt {

const MCHAR* KindName(ValueKind kind) {
    switch (kind) {
    case ValueKind::Int: return L"an integer";
    case ValueKind::Float: return L"a float";
    case ValueKind::Point2: return L"a Point2";
    case ValueKind::Point3: return L"a Point3 or colour";
    case ValueKind::Point4: return L"a Point4 or AColor";
    case ValueKind::Matrix3: return L"a Matrix3";
    case ValueKind::String: return L"a string";
    case ValueKind::Ref: return L"a reference target";
    case ValueKind::None: break;
    }
    return L"no value";
}

MSTR DescribeParam(const ParamBlockDesc2& desc, const ParamDef& def) {
    MSTR s;
    s.printf(L"parameter '%s' (id %d) of ", def.int_name.isNull() ? L"(unnamed)" : def.int_name.data(), int(def.ID));
    return s + desc.Describe();
}

ParamValue FitToParam(const ParamBlockDesc2& desc, const ParamDef& def, const ParamValue& v, const MCHAR* what) {
    if (auto fitted = v.ConvertedTo(def.Kind())) return *fitted;
    MSTR msg;
    msg.printf(L"%s of %s: %s does not fit its type %d", what, DescribeParam(desc, def).data(), KindName(v.Kind()),
               int(def.type));
    throw MAXException(msg);
}

}  // namespace hostrt

using hostrt::ParamValue;
using hostrt::ValueKind;

bool ParamDef::IsAnimatable() const {
    if (!(flags & P_ANIMATABLE)) return false;
    const ValueKind k = Kind();
    return k == ValueKind::Int || k == ValueKind::Float || k == ValueKind::Point3 || k == ValueKind::Point4;
}

// ------------------------------------------------------------------------------------------ ParamDefBuilder

ParamDef& ParamDefBuilder::Def() { return desc_->GetParamDefByIndex(index_); }

ParamValue ParamDefBuilder::fit(const ParamValue& v, const char* what) {
    return hostrt::FitToParam(*desc_, Def(), v, MSTR(what).data());
}

ParamDefBuilder& ParamDefBuilder::Default(const ParamValue& v) {
    ParamValue fitted = fit(v, "the default");
    if (fitted.AsRef())
        throw MAXException(L"the default of " + hostrt::DescribeParam(*desc_, Def()) +
                           L": a reference parameter's default is null");
    Def().def = fitted;
    Def().cur_def = fitted;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::Range(const ParamValue& low, const ParamValue& high) {
    const ValueKind k = Def().Kind();
    if (k != ValueKind::Int && k != ValueKind::Float)
        throw MAXException(L"a range of " + hostrt::DescribeParam(*desc_, Def()) + L": only numbers take a range");
    ParamDef& d = Def();
    d.range_low = fit(low, "the range");
    d.range_high = fit(high, "the range");
    d.has_range = true;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::Accessor(PBAccessor* accessor) {
    Def().accessor = accessor;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::TableSize(int count) {
    if (!Def().IsTable() || count < 0) {
        MSTR msg;
        msg.printf(L"table size %d of %s: only tables take a count of zero or more", count,
                   hostrt::DescribeParam(*desc_, Def()).data());
        throw MAXException(msg);
    }
    Def().tab_size = count;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::AssetType(int assetTypeId) {
    Def().asset_type_id = assetTypeId;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::FileTypes(StringResID id) {
    Def().file_types = id;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::Caption(StringResID id) {
    Def().caption = id;
    return *this;
}

ParamDefBuilder& ParamDefBuilder::CheckBox(int ctrlId) {
    Def().ui = ParamUIDesc2{PBControl::CheckBox, {ctrlId}};
    return *this;
}

ParamDefBuilder& ParamDefBuilder::UI_CustEdit(int ctrlId) {
    Def().ui = ParamUIDesc2{PBControl::CustEdit, {ctrlId}};
    return *this;
}

ParamDefBuilder& ParamDefBuilder::Spinner(int editId, int spinnerId, EditSpinnerType type, float scale) {
    Def().ui = ParamUIDesc2{PBControl::Spinner, {editId, spinnerId}, type, scale};
    return *this;
}

ParamDefBuilder& ParamDefBuilder::RadioButtons(std::initializer_list<int> ctrlIds) {
    Def().ui = ParamUIDesc2{PBControl::RadioButtons, std::vector<int>(ctrlIds)};
    return *this;
}

ParamDefBuilder& ParamDefBuilder::ComboBox(int ctrlId, std::initializer_list<StringResID> items) {
    Def().ui = ParamUIDesc2{PBControl::ComboBox, {ctrlId}};
    Def().ui.item_ids.assign(items);
    return *this;
}

// ------------------------------------------------------------------------------------------ ParamBlockDesc2

ParamBlockDesc2::ParamBlockDesc2(BlockID id, const MCHAR* intName, StringResID localName, ClassDesc2* cdesc,
                                 DWORD blockFlags)
    : ID(id), int_name(intName), local_name(localName), cd(cdesc), flags(blockFlags) {
    if (cd) cd->AddParamBlockDesc(this);
}

ParamBlockDesc2& ParamBlockDesc2::AutoConstruct(int refNo) {
    flags |= P_AUTO_CONSTRUCT;
    ref_no = refNo;
    return *this;
}

ParamBlockDesc2& ParamBlockDesc2::AutoUI(int dialogId, StringResID titleId, int rolloutFlags) {
    flags |= P_AUTO_UI;
    dlg_template = dialogId;
    title = titleId;
    rollup_flags = rolloutFlags;
    return *this;
}

ParamDefBuilder ParamBlockDesc2::AddParam(ParamID id, const MCHAR* intName, ParamType2 type, DWORD paramFlags,
                                          StringResID localName) {
    ParamDef def;
    def.ID = id;
    def.int_name = MSTR(intName);
    def.type = type;
    def.flags = paramFlags;
    def.local_name = localName;
    if (IDtoIndex(id) >= 0) throw MAXException(L"adding " + hostrt::DescribeParam(*this, def) + L": the id is taken");
    if (def.Kind() == ValueKind::None) {
        MSTR msg;
        msg.printf(L"adding %s: a parameter block cannot hold type %d", hostrt::DescribeParam(*this, def).data(),
                   int(type));
        throw MAXException(msg);
    }
    def.def = def.cur_def = ParamValue::ZeroOf(def.Kind());
    params_.push_back(std::move(def));
    return ParamDefBuilder(this, Count() - 1);
}

ParamID ParamBlockDesc2::IndextoID(int index) const {
    return index >= 0 && index < Count() ? params_[std::size_t(index)].ID : ParamID(-1);
}

int ParamBlockDesc2::IDtoIndex(ParamID id) const {
    for (int i = 0; i < Count(); ++i)
        if (params_[std::size_t(i)].ID == id) return i;
    return -1;
}

int ParamBlockDesc2::NameToIndex(const MCHAR* name) const {
    if (!name || !*name) return -1;
    const MSTR wanted(name);
    for (int i = 0; i < Count(); ++i)
        if (params_[std::size_t(i)].int_name.EqualsNoCase(wanted)) return i;
    return -1;
}

ParamDef& ParamBlockDesc2::GetParamDef(ParamID id) {
    const int index = IDtoIndex(id);
    if (index < 0) {
        MSTR msg;
        msg.printf(L"%s has no parameter with id %d", Describe().data(), int(id));
        throw MAXException(msg);
    }
    return params_[std::size_t(index)];
}

ParamDef& ParamBlockDesc2::GetParamDefByIndex(int index) {
    if (index < 0 || index >= Count()) {
        MSTR msg;
        msg.printf(L"%s has no parameter with index %d (it has %d)", Describe().data(), index, Count());
        throw MAXException(msg);
    }
    return params_[std::size_t(index)];
}

void ParamBlockDesc2::SetClassDefault(ParamID id, const ParamValue& v) {
    ParamDef& def = GetParamDef(id);
    def.cur_def = hostrt::FitToParam(*this, def, v, L"the class default");
}

void ParamBlockDesc2::ResetClassDefaults() {
    for (ParamDef& def : params_) def.cur_def = def.def;
}

MSTR ParamBlockDesc2::Describe() const {
    MSTR s;
    s.printf(L"block '%s' (id %d) of class %s", int_name.isNull() ? L"(unnamed)" : int_name.data(), int(ID),
             cd ? cd->ClassName() : L"(none)");
    return s;
}
