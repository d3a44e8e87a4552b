// IParamBlock, the old-style parameter block: values, controllers, undo, save, load and clone.
//
// Layout of an old-style block in a scene file (the payload of its object chunk); numbers are little-endian.
//
//   0x1001  header (data, 8 bytes)
//             u32  number of parameters
//             u32  version given at creation
//   0x1010  parameter (holds sub-chunks only); one per parameter, in parameter order
//     0x1011  value (data)
//               u32  type: 0 float, 1 int, 2 colour, 3 point3, 4 bool
//               u32  1 when the parameter is animatable, else 0
//               u32  parameter id
//               then the value: f32 (float), i32 (int, bool), 3 x f32 (colour r g b, point3 x y z)
//     0x1012  name (data, only for a named parameter): UTF-16LE with a terminating zero
//
// Controllers are the block's references: the scene saves and restores them, not the block.
#include "iparamb.h"
#include "paramblock2_internal.h"
#include "paramblock_io.h"

#include <memory>

using hostrt::ParamValue;
using hostrt::PB2Entry;
using hostrt::ValueKind;

namespace {

constexpr USHORT kHeaderChunk = 0x1001;
constexpr USHORT kParamChunk = 0x1010;
constexpr USHORT kValueChunk = 0x1011;
constexpr USHORT kNameChunk = 0x1012;
constexpr std::uint32_t kMaxParams = 1u << 16;

bool typeAllowed(int type) {
    return type == TYPE_FLOAT || type == TYPE_INT || type == TYPE_RGBA || type == TYPE_POINT3 || type == TYPE_BOOL;
}

}  // namespace

IParamBlock::IParamBlock(const ParamBlockDescID* descs, int count, DWORD version) : version_(version) {
    for (int i = 0; i < count; ++i) {
        const ParamBlockDescID& d = descs[i];
        if (!typeAllowed(d.type)) {
            MSTR msg;
            msg.printf(L"old-style parameter block: parameter %d (id %u) has type %d; it takes float, int, colour, "
                       L"point3 and bool parameters",
                       i, unsigned(d.id), int(d.type));
            throw MAXException(msg);
        }
        params_.push_back(Param{d, MSTR(d.name), PB2Entry{ParamValue::ZeroOf(hostrt::KindOfType(d.type)), nullptr}});
        params_.back().desc.name = nullptr;  // the name is kept as params_[i].name
    }
}

IParamBlock* CreateParameterBlock(const ParamBlockDescID* pdesc, int count, DWORD version) {
    return new IParamBlock(pdesc, count, version);
}

ParamType IParamBlock::GetParameterType(int i) const {
    return i >= 0 && i < NumParams() ? params_[std::size_t(i)].desc.type : TYPE_VOID;
}

DWORD IParamBlock::GetParamID(int i) const { return i >= 0 && i < NumParams() ? params_[std::size_t(i)].desc.id : 0; }

int IParamBlock::IDtoIndex(DWORD id) const {
    for (int i = 0; i < NumParams(); ++i)
        if (params_[std::size_t(i)].desc.id == id) return i;
    return -1;
}

BOOL IParamBlock::IsParamAnimatable(int i) const {
    return i >= 0 && i < NumParams() && params_[std::size_t(i)].desc.animatable ? TRUE : FALSE;
}

// ------------------------------------------------------------------------------------------------ values

BOOL IParamBlock::read(int i, TimeValue t, ValueKind want, ParamValue& out, Interval& valid) {
    if (i < 0 || i >= NumParams()) return FALSE;
    const Param& p = params_[std::size_t(i)];
    const ValueKind kind = hostrt::KindOfType(p.desc.type);
    ParamValue v = p.entry.control ? hostrt::ControllerGet(p.entry.control, t, kind, valid) : p.entry.value;
    auto converted = v.ConvertedTo(want);
    if (!converted) return FALSE;
    out = std::move(*converted);
    return TRUE;
}

BOOL IParamBlock::GetValue(int i, TimeValue t, float& v, Interval& valid) {
    ParamValue out;
    if (!read(i, t, ValueKind::Float, out, valid)) return FALSE;
    v = out.AsFloat();
    return TRUE;
}

BOOL IParamBlock::GetValue(int i, TimeValue t, int& v, Interval& valid) {
    ParamValue out;
    if (!read(i, t, ValueKind::Int, out, valid)) return FALSE;
    v = out.AsInt();
    return TRUE;
}

BOOL IParamBlock::GetValue(int i, TimeValue t, Point3& v, Interval& valid) {
    ParamValue out;
    if (!read(i, t, ValueKind::Point3, out, valid)) return FALSE;
    v = out.AsPoint3();
    return TRUE;
}

BOOL IParamBlock::GetValue(int i, TimeValue t, Color& v, Interval& valid) {
    Point3 p;
    if (!GetValue(i, t, p, valid)) return FALSE;
    v = Color(p);
    return TRUE;
}

BOOL IParamBlock::SetValue(int i, TimeValue t, float v) { return set(i, t, v); }
BOOL IParamBlock::SetValue(int i, TimeValue t, int v) { return set(i, t, v); }
BOOL IParamBlock::SetValue(int i, TimeValue t, const Point3& v) { return set(i, t, v); }
BOOL IParamBlock::SetValue(int i, TimeValue t, const Color& v) { return set(i, t, v); }

BOOL IParamBlock::set(int i, TimeValue t, const ParamValue& v) {
    if (i < 0 || i >= NumParams()) return FALSE;
    const Param& p = params_[std::size_t(i)];
    auto fitted = v.ConvertedTo(hostrt::KindOfType(p.desc.type));
    if (!fitted) return FALSE;
    if (p.entry.control) {
        hostrt::ControllerSet(p.entry.control, t, *fitted);  // the controller keeps its own undo
    } else {
        recordAndAssign(i, PB2Entry{*fitted, nullptr});
    }
    notifyParam(i);
    return TRUE;
}

void IParamBlock::notifyParam(int i) {
    last_ = i;
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

void IParamBlock::assign(int i, const PB2Entry& entry) {
    Param& p = params_[std::size_t(i)];
    Control* old = p.entry.control;
    p.entry.value = entry.value;
    if (old == entry.control) return;
    {
        hostrt::HoldSuspension quiet;  // the block's own records take controller changes back
        ReplaceReference(i, entry.control, FALSE);
    }
    if (old) hostrt::OfferDeletion({old});
}

void IParamBlock::recordAndAssign(int i, const PB2Entry& entry) {
    std::unique_ptr<hostrt::ParamRestore<IParamBlock>> rec;
    if (hostrt::Recording())
        rec = std::make_unique<hostrt::ParamRestore<IParamBlock>>(this, i, 0,
                                                                   std::vector<PB2Entry>{params_[std::size_t(i)].entry});
    assign(i, entry);
    if (rec) {
        rec->SetAfter({params_[std::size_t(i)].entry});
        theHold.Put(rec.release());
    }
}

void IParamBlock::RestoreParam(int index, int, const std::vector<PB2Entry>& entries) {
    if (index < 0 || index >= NumParams() || entries.size() != 1) return;
    assign(index, entries.front());
    notifyParam(index);
}

// -------------------------------------------------------------------------------------------- controllers

Control* IParamBlock::GetController(int i) const {
    return i >= 0 && i < NumParams() ? params_[std::size_t(i)].entry.control : nullptr;
}

BOOL IParamBlock::SetController(int i, Control* c, BOOL preserveValue) {
    if (!IsParamAnimatable(i)) return FALSE;
    const Param& p = params_[std::size_t(i)];
    if (p.entry.control == c) return TRUE;
    const ValueKind kind = hostrt::KindOfType(p.desc.type);
    Interval valid = FOREVER;
    const ParamValue current = p.entry.control ? hostrt::ControllerGet(p.entry.control, 0, kind, valid) : p.entry.value;
    if (c && preserveValue) {
        hostrt::HoldSuspension quiet;
        hostrt::ControllerSet(c, 0, current);
    }
    recordAndAssign(i, PB2Entry{current, c});
    notifyParam(i);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    return TRUE;
}

BOOL IParamBlock::RemoveController(int i) {
    if (!GetController(i)) return FALSE;
    return SetController(i, nullptr);
}

BOOL IParamBlock::AssignController(Animatable* control, int subAnim) {
    auto* c = dynamic_cast<Control*>(control);
    if (control && !c) return FALSE;
    return SetController(subAnim, c);
}

BOOL IParamBlock::IsAnimated() {
    for (const Param& p : params_)
        if (p.entry.control && p.entry.control->IsAnimated()) return TRUE;
    return FALSE;
}

// ------------------------------------------------------------------------------------ references, sub-anims

RefTargetHandle IParamBlock::GetReference(int i) { return GetController(i); }

void IParamBlock::SetReference(int i, RefTargetHandle rtarg) {
    if (i >= 0 && i < NumParams()) params_[std::size_t(i)].entry.control = dynamic_cast<Control*>(rtarg);
}

RefResult IParamBlock::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message, BOOL) {
    if (message == REFMSG_TARGET_DELETED) return REF_STOP;
    if (message == REFMSG_CHANGE) {
        const int i = FindRef(hTarget);
        if (i >= 0) last_ = i;
    }
    return REF_SUCCEED;
}

MSTR IParamBlock::SubAnimName(int i, bool) { return i >= 0 && i < NumParams() ? params_[std::size_t(i)].name : MSTR(); }

// ------------------------------------------------------------------------------------- save, load, clone

IOResult IParamBlock::Save(ISave* isave) {
    hostrt::pbio::ByteWriter head;
    head.U32(std::uint32_t(params_.size()));
    head.U32(version_);
    head.WriteChunk(isave, kHeaderChunk);
    for (const Param& p : params_) {
        isave->BeginChunk(kParamChunk);
        hostrt::pbio::ByteWriter w;
        w.U32(std::uint32_t(p.desc.type));
        w.U32(p.desc.animatable ? 1 : 0);
        w.U32(p.desc.id);
        switch (hostrt::KindOfType(p.desc.type)) {
        case ValueKind::Float: w.F32(p.entry.value.AsFloat()); break;
        case ValueKind::Int: w.I32(p.entry.value.AsInt()); break;
        default: { Point3 v = p.entry.value.AsPoint3(); w.Point(&v.x, 3); break; }
        }
        w.WriteChunk(isave, kValueChunk);
        if (!p.name.isNull()) {
            isave->BeginChunk(kNameChunk);
            isave->WriteWString(p.name);
            isave->EndChunk();
        }
        isave->EndChunk();
    }
    return IO_OK;
}

IOResult IParamBlock::Load(ILoad* iload) {
    // Loading makes the parameters anew; a block loads into its fresh, empty state.
    for (int i = 0; i < NumParams(); ++i) assign(i, PB2Entry{});
    params_.clear();
    std::uint32_t expected = 0;
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        const USHORT id = iload->CurChunkID();
        if (id == kHeaderChunk) {
            hostrt::pbio::ByteReader r;
            if (!r.ReadChunk(iload)) return IO_ERROR;
            expected = r.U32();
            version_ = r.U32();
            if (!r.Ok() || expected > kMaxParams) return IO_ERROR;
        } else if (id == kParamChunk) {
            Param p{};
            bool haveValue = false;
            IOResult sub;
            while ((sub = iload->OpenChunk()) == IO_OK) {
                if (iload->CurChunkID() == kValueChunk) {
                    hostrt::pbio::ByteReader r;
                    if (!r.ReadChunk(iload)) return IO_ERROR;
                    p.desc.type = ParamType(r.U32());
                    p.desc.animatable = r.U32() ? TRUE : FALSE;
                    p.desc.id = r.U32();
                    if (!typeAllowed(p.desc.type)) return IO_ERROR;
                    switch (hostrt::KindOfType(p.desc.type)) {
                    case ValueKind::Float: p.entry.value = ParamValue(r.F32()); break;
                    case ValueKind::Int: p.entry.value = ParamValue(r.I32()); break;
                    default: { Point3 v; r.Point(&v.x, 3); p.entry.value = ParamValue(v); break; }
                    }
                    if (!r.Ok()) return IO_ERROR;
                    haveValue = true;
                } else if (iload->CurChunkID() == kNameChunk) {
                    if (iload->ReadWStringChunk(p.name) != IO_OK) return IO_ERROR;
                }
                iload->CloseChunk();
            }
            if (sub != IO_END || !haveValue) return IO_ERROR;
            params_.push_back(std::move(p));
        }
        iload->CloseChunk();
    }
    return res == IO_END && params_.size() == expected ? IO_OK : IO_ERROR;
}

RefTargetHandle IParamBlock::Clone(RemapDir& remap) {
    std::vector<ParamBlockDescID> descs;
    for (const Param& p : params_) descs.push_back(p.desc);
    auto* clone = new IParamBlock(descs.data(), int(descs.size()), version_);
    for (int i = 0; i < NumParams(); ++i) {
        const Param& p = params_[std::size_t(i)];
        clone->params_[std::size_t(i)].name = p.name;
        Control* c = p.entry.control;
        // A controller that cannot be cloned is shared (instanced) rather than lost.
        if (c)
            if (auto* cc = dynamic_cast<Control*>(remap.CloneRef(c))) c = cc;
        clone->assign(i, PB2Entry{p.entry.value, c});
    }
    BaseClone(this, clone, remap);
    return clone;
}
