// The parameter-block-2 value snapshots: finding their parameter again, capturing and applying values, their
// chunks and the lists that hold them.
#include "anims/pblock2_param.h"

#include "control.h"
#include "records/chunk_io.h"

#include <cstdint>
#include <vector>

namespace {

constexpr USHORT kNameChunk = 0x0000;
constexpr USHORT kIdsChunk = 0x0001;
constexpr USHORT kValueChunk = 0x0002;
constexpr USHORT kListCountChunk = 0x0000;
constexpr USHORT kListKindChunk = 0x0001;
constexpr USHORT kListParamChunk = 0x0002;
// A definition flag that takes a parameter out of the snapshots' reach.
constexpr DWORD kUnreachableParamFlag = 0x8000;

int BaseType(int type) { return type & ~TYPE_TAB; }

IOResult WriteRaw(ISave* isave, const void* data, ULONG size) {
    ULONG written = 0;
    return isave->Write(data, size, &written);
}

IOResult ReadRaw(ILoad* iload, void* data, ULONG size) {
    ULONG read = 0;
    const IOResult res = iload->Read(data, size, &read);
    return res == IO_OK && read != size ? IO_ERROR : res;
}

// The block's value at (id, time 0, tabIndex) and setting it, one pair per stored type.
void ReadValue(IParamBlock2* b, ParamID id, int tab, float& v) { v = b->GetFloat(id, 0, tab); }
void ReadValue(IParamBlock2* b, ParamID id, int tab, std::int32_t& v) { v = b->GetInt(id, 0, tab); }
void ReadValue(IParamBlock2* b, ParamID id, int tab, Point2& v) { v = b->GetPoint2(id, 0, tab); }
void ReadValue(IParamBlock2* b, ParamID id, int tab, Point3& v) { v = b->GetPoint3(id, 0, tab); }
void ReadValue(IParamBlock2* b, ParamID id, int tab, Point4& v) { v = b->GetPoint4(id, 0, tab); }
void ReadValue(IParamBlock2* b, ParamID id, int tab, MatrixValue& v) {
    const Matrix3 m = b->GetMatrix3(id, 0, tab);
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 3; ++c) v.rows[r][c] = m.m[r][c];
    v.flags = std::uint32_t(m.GetIdentFlags());
}
void WriteValue(IParamBlock2* b, ParamID id, int tab, float v) { b->SetValue(id, 0, v, tab); }
void WriteValue(IParamBlock2* b, ParamID id, int tab, std::int32_t v) { b->SetValue(id, 0, int(v), tab); }
void WriteValue(IParamBlock2* b, ParamID id, int tab, const Point2& v) { b->SetValue(id, 0, v, tab); }
void WriteValue(IParamBlock2* b, ParamID id, int tab, const Point3& v) { b->SetValue(id, 0, v, tab); }
void WriteValue(IParamBlock2* b, ParamID id, int tab, const Point4& v) { b->SetValue(id, 0, v, tab); }
void WriteValue(IParamBlock2* b, ParamID id, int tab, const MatrixValue& v) {
    Matrix3 m;
    for (int r = 0; r < 4; ++r) m.SetRow(r, Point3(v.rows[r][0], v.rows[r][1], v.rows[r][2]));
    m.SetIdentFlags(DWORD(v.flags));
    b->SetValue(id, 0, m, tab);
}

// The block value types each stored type serves.
template <class T> std::vector<int> ServedTypes();
template <> std::vector<int> ServedTypes<float>() {
    return {TYPE_FLOAT, TYPE_ANGLE, TYPE_PCNT_FRAC, TYPE_WORLD, TYPE_COLOR_CHANNEL};
}
template <> std::vector<int> ServedTypes<std::int32_t>() {
    return {TYPE_INT, TYPE_BOOL, TYPE_TIMEVALUE, TYPE_RADIOBTN_INDEX, TYPE_INDEX};
}
template <> std::vector<int> ServedTypes<Point2>() { return {TYPE_POINT2}; }
template <> std::vector<int> ServedTypes<Point3>() { return {TYPE_RGBA, TYPE_POINT3}; }
template <> std::vector<int> ServedTypes<Point4>() { return {TYPE_POINT4, TYPE_FRGBA}; }
template <> std::vector<int> ServedTypes<MatrixValue>() { return {TYPE_MATRIX3}; }

// Only plain numbers skip a parameter that a controller animates; the others are compared and set.
template <class T> constexpr bool kSkipsAnimated = std::is_same_v<T, float> || std::is_same_v<T, std::int32_t>;

}  // namespace

bool Pblock2Param::Find(IParamBlock2* block) {
    ParamBlockDesc2* desc = block ? block->GetDesc() : nullptr;
    if (!desc) {
        paramID = -1;
        return false;
    }
    const int byId = paramID >= 0 ? block->IDtoIndex(ParamID(paramID)) : -1;
    if (byId < 0 || desc->GetParamDefByIndex(byId).int_name != name) {
        paramID = -1;
        for (int i = 0; i < desc->Count(); ++i)
            if (desc->GetParamDefByIndex(i).int_name == name) {
                paramID = desc->IndextoID(i);
                break;
            }
        if (paramID < 0) return false;
    }
    const ParamDef& def = block->GetParamDef(ParamID(paramID));
    if (def.flags & kUnreachableParamFlag) {
        paramID = -1;
        return false;
    }
    const int count = def.IsTable() ? block->Count(ParamID(paramID)) : 1;
    return tabIndex < count;
}

bool Pblock2Param::FindServed(IParamBlock2* block, std::vector<int> types) {
    if (!Find(block)) return false;
    const int type = BaseType(block->GetParameterType(ParamID(paramID)));
    for (int served : types)
        if (served == type) return true;
    paramID = -1;
    return false;
}

bool Pblock2Param::IsAnimatedParam(IParamBlock2* block) {
    Control* control = block->GetController(ParamID(paramID), tabIndex);
    return control && control->IsAnimated();
}

Pblock2Param* Pblock2Param::CopyBase(Pblock2Param* to) const {
    to->name = name;
    to->paramID = paramID;
    to->tabIndex = tabIndex;
    return to;
}

IOResult Pblock2Param::Save(ISave* isave) {
    isave->BeginChunk(kNameChunk);
    IOResult res = isave->WriteWString(name);
    isave->EndChunk();
    if (res != IO_OK) return res;
    isave->BeginChunk(kIdsChunk);
    const std::int32_t ids[2] = {paramID, tabIndex};
    res = WriteRaw(isave, ids, sizeof(ids));
    isave->EndChunk();
    if (res != IO_OK) return res;
    isave->BeginChunk(kValueChunk);
    res = SaveValue(isave);
    isave->EndChunk();
    return res;
}

IOResult Pblock2Param::Load(ILoad* iload) {
    // Three chunks in a fixed order: the name, the identifiers, the value.
    IOResult res = iload->OpenChunk();
    if (res != IO_OK) return res;
    res = iload->ReadWStringChunk(name);
    iload->CloseChunk();
    if (res != IO_OK) return res;
    if ((res = iload->OpenChunk()) != IO_OK) return res;
    std::int32_t ids[2] = {-1, 0};
    res = ReadRaw(iload, ids, sizeof(ids));
    iload->CloseChunk();
    if (res != IO_OK) return res;
    paramID = ids[0];
    tabIndex = ids[1];
    if ((res = iload->OpenChunk()) != IO_OK) return res;
    res = LoadValue(iload);
    iload->CloseChunk();
    return res;
}

template <class T, int Kind> IOResult Pblock2ValueParam<T, Kind>::LoadValue(ILoad* iload) {
    return ReadRaw(iload, &value, sizeof(T));
}

template <class T, int Kind> IOResult Pblock2ValueParam<T, Kind>::SaveValue(ISave* isave) {
    return WriteRaw(isave, &value, sizeof(T));
}

template <class T, int Kind> void Pblock2ValueParam<T, Kind>::Capture(IParamBlock2* block) {
    if (block && paramID >= 0) ReadValue(block, ParamID(paramID), tabIndex, value);
}

template <class T, int Kind> bool Pblock2ValueParam<T, Kind>::Apply(IParamBlock2* block) {
    if (!FindServed(block, ServedTypes<T>())) return false;
    T current{};
    ReadValue(block, ParamID(paramID), tabIndex, current);
    if (current == value) return true;
    if constexpr (kSkipsAnimated<T>) {
        if (IsAnimatedParam(block)) {
            paramID = -1;
            return false;
        }
    }
    WriteValue(block, ParamID(paramID), tabIndex, value);
    return true;
}

template class Pblock2ValueParam<float, kParamKindFloat>;
template class Pblock2ValueParam<std::int32_t, kParamKindInt>;
template class Pblock2ValueParam<Point2, kParamKindPoint2>;
template class Pblock2ValueParam<Point3, kParamKindPoint3>;
template class Pblock2ValueParam<Point4, kParamKindPoint4>;
template class Pblock2ValueParam<MatrixValue, kParamKindMatrix3>;

void StringParam::Capture(IParamBlock2* block) {
    if (!block || paramID < 0) return;
    const MCHAR* text = block->GetStr(ParamID(paramID), 0, tabIndex);
    value = text ? text : L"";
}

bool StringParam::Apply(IParamBlock2* block) {
    if (!FindServed(block, {TYPE_STRING, TYPE_FILENAME})) return false;
    block->SetValue(ParamID(paramID), 0, value, tabIndex);
    return true;
}

bool BitmapParam::Apply(IParamBlock2* block) {
    FindServed(block, {TYPE_BITMAP});
    paramID = -1;
    return false;
}

IOResult TabParam::LoadValue(ILoad* iload) {
    std::int32_t both[2] = {0, 0};
    const IOResult res = ReadRaw(iload, both, sizeof(both));
    if (res == IO_OK) {
        count = both[0];
        type = both[1];
    }
    return res;
}

IOResult TabParam::SaveValue(ISave* isave) {
    const std::int32_t both[2] = {count, type};
    return WriteRaw(isave, both, sizeof(both));
}

void TabParam::Capture(IParamBlock2* block) {
    if (!block || paramID < 0) return;
    count = block->Count(ParamID(paramID));
    type = BaseType(block->GetParameterType(ParamID(paramID)));
}

bool TabParam::Apply(IParamBlock2* block) {
    // The size applies to the whole table, whatever entry index the lookup checks.
    const int keep = tabIndex;
    tabIndex = -1;
    const bool found = Find(block);
    tabIndex = keep;
    if (!found) return false;
    const int blockType = block->GetParameterType(ParamID(paramID));
    if (!is_tab(ParamType2(blockType)) || BaseType(blockType) != type) {
        paramID = -1;
        return false;
    }
    if (block->Count(ParamID(paramID)) != count) block->SetCount(ParamID(paramID), count);
    return true;
}

Pblock2Param* MakePblock2Param(int kind) {
    switch (kind) {
    case kParamKindPoint3: return new Point3Param();
    case kParamKindPoint4: return new Point4Param();
    case kParamKindInt: return new IntParam();
    case kParamKindFloat: return new FloatParam();
    case kParamKindMatrix3: return new Matrix3Param();
    case kParamKindString: return new StringParam();
    case kParamKindBitmap: return new BitmapParam();
    case kParamKindTab: return new TabParam();
    case kParamKindPoint2: return new Point2Param();
    default: return new Pblock2Param();
    }
}

Pblock2Param* SnapshotParam(IParamBlock2* block, int paramID, int tabIndex) {
    if (!block || !block->GetDesc() || block->IDtoIndex(ParamID(paramID)) < 0) return nullptr;
    int kind = kParamKindBase;
    switch (BaseType(block->GetParameterType(ParamID(paramID)))) {
    case TYPE_FLOAT: case TYPE_ANGLE: case TYPE_PCNT_FRAC: case TYPE_WORLD: case TYPE_COLOR_CHANNEL:
        kind = kParamKindFloat;
        break;
    case TYPE_INT: case TYPE_BOOL: case TYPE_TIMEVALUE: case TYPE_RADIOBTN_INDEX: case TYPE_INDEX:
        kind = kParamKindInt;
        break;
    case TYPE_RGBA: case TYPE_POINT3: kind = kParamKindPoint3; break;
    case TYPE_STRING: case TYPE_FILENAME: kind = kParamKindString; break;
    case TYPE_BITMAP: kind = kParamKindBitmap; break;
    case TYPE_MATRIX3: kind = kParamKindMatrix3; break;
    case TYPE_POINT4: case TYPE_FRGBA: kind = kParamKindPoint4; break;
    case TYPE_POINT2: kind = kParamKindPoint2; break;
    default: break;
    }
    Pblock2Param* param = MakePblock2Param(kind);
    param->name = block->GetParamDef(ParamID(paramID)).int_name;
    param->paramID = paramID;
    param->tabIndex = tabIndex;
    param->Capture(block);
    return param;
}

IOResult SaveParamList(ISave* isave, const Tab<Pblock2Param*>& list) {
    IOResult res = chunkio::SaveValueChunk(isave, kListCountChunk, std::int32_t(list.Count()));
    for (int i = 0; res == IO_OK && i < list.Count(); ++i) {
        res = chunkio::SaveValueChunk(isave, kListKindChunk, std::int32_t(list[i]->GetKind()));
        if (res != IO_OK) break;
        isave->BeginChunk(kListParamChunk);
        res = list[i]->Save(isave);
        isave->EndChunk();
    }
    return res;
}

IOResult LoadParamList(ILoad* iload, Tab<Pblock2Param*>& list) {
    IOResult res;
    std::int32_t kind = kParamKindBase;
    while ((res = iload->OpenChunk()) == IO_OK) {
        switch (iload->CurChunkID()) {
        case kListCountChunk: {
            std::int32_t count = 0;
            res = chunkio::ReadCount(iload, count);
            break;
        }
        case kListKindChunk: res = chunkio::ReadValue(iload, kind); break;
        case kListParamChunk: {
            Pblock2Param* param = MakePblock2Param(kind);
            res = param->Load(iload);
            if (res == IO_OK)
                list.Append(param);
            else
                delete param;
            break;
        }
        default: break;
        }
        iload->CloseChunk();
        if (res != IO_OK) return res;
    }
    return res == IO_END ? IO_OK : res;
}

void DeleteParamList(Tab<Pblock2Param*>& list) {
    for (Pblock2Param* param : list) delete param;
    list.ZeroCount();
}

Param2ArrayRestore::~Param2ArrayRestore() {
    if (!undone_ && !added_) delete param_;
    if (undone_ && added_) delete param_;
}

void Param2ArrayRestore::Restore(int isUndo) {
    if (isUndo) redo_ = *list_;
    undone_ = 1;
    *list_ = undo_;
}

void Param2ArrayRestore::Redo() {
    undone_ = 0;
    *list_ = redo_;
}
