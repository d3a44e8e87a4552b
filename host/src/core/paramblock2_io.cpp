// Saving, loading and cloning parameter blocks 2.
//
// Layout of a block in a scene file (the payload of the block's object chunk); numbers are little-endian.
//
//   0x2001  header (data, 14 bytes)
//             u32  superclass id of the class that owns the descriptor
//             u32  class id, part A, of that class
//             u32  class id, part B, of that class
//             i16  block id (the descriptor's ID)
//   0x2010  parameter (holds sub-chunks only); one per written parameter, in descriptor order
//     0x2011  head (data, 8 bytes)
//               i16  parameter id
//               u16  parameter type as the descriptor declares it, table flag 0x0800 included
//               i32  number of entries (1 for a plain parameter)
//     0x2012  values (data; fixed-size kinds), the entries one after the other:
//               int, BOOL, time, radio index, index           i32
//               float, angle, percent, world, colour channel  f32
//               Point2                                        2 x f32 (x, y)
//               Point3, colour (RGBA), HSV                    3 x f32 (x, y, z / r, g, b)
//               Point4, AColor (FRGBA)                        4 x f32 (x, y, z, w / r, g, b, a)
//               Matrix3                                       12 x f32 (rows 0-3, x y z each), u32 flag word
//     0x2013  string (data; string and file-name kinds): one chunk per entry, in order, UTF-16LE with a
//             terminating zero
//
// A parameter is written with head and values unless it is transient (P_TRANSIENT) or reference-valued. A
// table with reference slots (a reference table, or an animatable table whose entries take controllers) is
// written with its head alone when its values are not written, so that Load gives it its count, and the block
// its number of references, before the scene restores the references. Reference values and controllers are
// references of the block: the scene saves and restores them, not the block. Values of P_NO_REF reference
// parameters are plain pointers and are not saved.
//
// Load skips chunks it does not know, parameters whose id the descriptor lacks and parameters saved with a type
// of another kind or table-ness; those keep their defaults, as transient parameters do. A header naming a class
// or block this host does not know, or damaged data, answers IO_ERROR.
#include "classids.h"
#include "iparamb2.h"
#include "paramblock2_internal.h"
#include "paramblock_io.h"

#include <memory>

using hostrt::ParamValue;
using hostrt::PB2Entry;
using hostrt::ValueKind;
using hostrt::pbio::ByteReader;
using hostrt::pbio::ByteWriter;

namespace {

constexpr USHORT kHeaderChunk = 0x2001;
constexpr USHORT kParamChunk = 0x2010;
constexpr USHORT kParamHeadChunk = 0x2011;
constexpr USHORT kParamValuesChunk = 0x2012;
constexpr USHORT kParamStringChunk = 0x2013;
constexpr int kMaxEntries = 1 << 24;

void writeValue(ByteWriter& w, const ParamValue& v, ValueKind kind) {
    switch (kind) {
    case ValueKind::Int: w.I32(v.AsInt()); break;
    case ValueKind::Float: w.F32(v.AsFloat()); break;
    case ValueKind::Point2: { Point2 p = v.AsPoint2(); w.F32(p.x); w.F32(p.y); break; }
    case ValueKind::Point3: { Point3 p = v.AsPoint3(); w.Point(&p.x, 3); break; }
    case ValueKind::Point4: { Point4 p = v.AsPoint4(); w.F32(p.x); w.F32(p.y); w.F32(p.z); w.F32(p.w); break; }
    case ValueKind::Matrix3: w.Matrix(v.AsMatrix3()); break;
    default: break;
    }
}

ParamValue readValue(ByteReader& r, ValueKind kind) {
    switch (kind) {
    case ValueKind::Int: return ParamValue(r.I32());
    case ValueKind::Float: return ParamValue(r.F32());
    case ValueKind::Point2: { Point2 p; p.x = r.F32(); p.y = r.F32(); return ParamValue(p); }
    case ValueKind::Point3: { Point3 p; r.Point(&p.x, 3); return ParamValue(p); }
    case ValueKind::Point4: { Point4 p; p.x = r.F32(); p.y = r.F32(); p.z = r.F32(); p.w = r.F32(); return ParamValue(p); }
    case ValueKind::Matrix3: return ParamValue(r.Matrix());
    default: return ParamValue();
    }
}

bool valuesWritten(const ParamDef& def) {
    const ValueKind k = def.Kind();
    return !(def.flags & P_TRANSIENT) && k != ValueKind::Ref && k != ValueKind::None;
}

bool takesSlots(const ParamDef& def) { return def.IsReference() || def.IsAnimatable(); }

// Reads one parameter chunk into entries of the parameter it names; answers IO_ERROR for damaged data.
IOResult loadParam(ILoad* iload, ParamBlockDesc2& desc, IParamBlock2& block) {
    int index = -1;
    std::vector<PB2Entry> entries;
    int stringsRead = 0;
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        const USHORT id = iload->CurChunkID();
        ByteReader r;
        if (id == kParamHeadChunk) {
            if (!r.ReadChunk(iload)) return IO_ERROR;
            const ParamID pid = ParamID(std::int16_t(r.U16()));
            const int type = r.U16();
            const int count = r.I32();
            if (!r.Ok() || count < 0 || count > kMaxEntries) return IO_ERROR;
            index = desc.IDtoIndex(pid);
            if (index >= 0) {
                const ParamDef& def = desc.GetParamDefByIndex(index);
                const bool fits = hostrt::KindOfType(type) == def.Kind() && is_tab(type) == def.IsTable() &&
                                  (def.IsTable() || count == 1);
                if (!fits) index = -1;
            }
            if (index >= 0) {
                entries = block.ParamAt(index).entries;
                entries.resize(std::size_t(count), PB2Entry{hostrt::CreationDefault(desc.GetParamDefByIndex(index)), nullptr});
            }
        } else if (index >= 0 && valuesWritten(desc.GetParamDefByIndex(index))) {
            const ValueKind kind = desc.GetParamDefByIndex(index).Kind();
            if (id == kParamValuesChunk && kind != ValueKind::String) {
                if (!r.ReadChunk(iload)) return IO_ERROR;
                for (PB2Entry& e : entries) e.value = readValue(r, kind);
                if (!r.Ok() || r.Remaining() != 0) return IO_ERROR;
            } else if (id == kParamStringChunk && kind == ValueKind::String) {
                MSTR text;
                if (iload->ReadWStringChunk(text) != IO_OK) return IO_ERROR;
                if (stringsRead < int(entries.size())) entries[std::size_t(stringsRead)].value = ParamValue(text);
                ++stringsRead;
            }
        }
        iload->CloseChunk();
    }
    if (res != IO_END) return IO_ERROR;
    if (index >= 0) block.AssignEntries(index, std::move(entries));
    return IO_OK;
}

// After the whole clone operation: node and reference-target values whose targets were cloned in the same
// operation point at the clones.
class RetargetClonedValues : public PostPatchProc {
public:
    RetargetClonedValues(IParamBlock2* clone, std::vector<std::pair<int, int>> slots)
        : clone_(clone), handle_(Animatable::GetHandleByAnim(clone)), slots_(std::move(slots)) {}
    int Proc(RemapDir& remap) override {
        if (Animatable::GetAnimByHandle(handle_) != clone_) return TRUE;
        for (auto [index, k] : slots_) {
            const auto& entries = clone_->ParamAt(index).entries;
            if (k >= int(entries.size())) continue;
            ReferenceTarget* original = entries[std::size_t(k)].value.AsRef();
            ReferenceTarget* mapped = original ? remap.FindMapping(original) : nullptr;
            if (!mapped || mapped == original) continue;
            auto changed = entries;
            changed[std::size_t(k)].value = ParamValue(mapped);
            clone_->AssignEntries(index, std::move(changed));
        }
        return TRUE;
    }

private:
    IParamBlock2* clone_;
    AnimHandle handle_;
    std::vector<std::pair<int, int>> slots_;
};

}  // namespace

IOResult IParamBlock2::Save(ISave* isave) {
    if (!desc_ || !desc_->cd) return IO_ERROR;
    ByteWriter head;
    head.U32(desc_->cd->SuperClassID());
    head.U32(desc_->cd->ClassID().PartA());
    head.U32(desc_->cd->ClassID().PartB());
    head.U16(std::uint16_t(desc_->ID));
    head.WriteChunk(isave, kHeaderChunk);

    for (int index = 0; index < NumParams(); ++index) {
        const ParamDef& def = desc_->GetParamDefByIndex(index);
        const bool values = valuesWritten(def);
        if (!values && !(def.IsTable() && takesSlots(def))) continue;
        const auto& entries = params_[std::size_t(index)].entries;
        isave->BeginChunk(kParamChunk);
        ByteWriter ph;
        ph.U16(std::uint16_t(def.ID));
        ph.U16(std::uint16_t(def.type));
        ph.I32(std::int32_t(entries.size()));
        ph.WriteChunk(isave, kParamHeadChunk);
        if (values && def.Kind() == ValueKind::String) {
            for (const PB2Entry& e : entries) {
                isave->BeginChunk(kParamStringChunk);
                isave->WriteWString(e.value.AsString());
                isave->EndChunk();
            }
        } else if (values && !entries.empty()) {
            ByteWriter vw;
            for (const PB2Entry& e : entries) writeValue(vw, e.value, def.Kind());
            vw.WriteChunk(isave, kParamValuesChunk);
        }
        isave->EndChunk();
    }
    return IO_OK;
}

IOResult IParamBlock2::Load(ILoad* iload) {
    bool haveHeader = false;
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        const USHORT id = iload->CurChunkID();
        if (id == kHeaderChunk) {
            ByteReader r;
            if (!r.ReadChunk(iload)) return IO_ERROR;
            const SClass_ID sc = r.U32();
            const ULONG a = r.U32();
            const ULONG b = r.U32();
            const BlockID blockId = BlockID(std::int16_t(r.U16()));
            if (!r.Ok()) return IO_ERROR;
            ClassDesc* cd = FindClassDesc(sc, Class_ID(a, b));
            ParamBlockDesc2* desc = cd ? cd->GetParamBlockDescByID(blockId) : nullptr;
            if (!desc || (desc_ && desc_ != desc)) return IO_ERROR;
            if (!desc_) init(desc);
            haveHeader = true;
        } else if (id == kParamChunk) {
            if (!haveHeader || loadParam(iload, *desc_, *this) != IO_OK) return IO_ERROR;
        }
        iload->CloseChunk();
    }
    return res == IO_END && haveHeader ? IO_OK : IO_ERROR;
}

RefTargetHandle IParamBlock2::Clone(RemapDir& remap) {
    ReferenceMaker* owner = GetOwner();
    ReferenceTarget* clonedOwner =
        owner && owner->IsRefTarget() ? remap.FindMapping(static_cast<ReferenceTarget*>(owner)) : nullptr;
    auto* clone = new IParamBlock2(desc_, clonedOwner);
    std::vector<std::pair<int, int>> retarget;
    for (int index = 0; index < NumParams(); ++index) {
        const ParamDef& def = desc_->GetParamDefByIndex(index);
        auto entries = params_[std::size_t(index)].entries;
        const int type = base_type(def.type);
        for (std::size_t k = 0; k < entries.size(); ++k) {
            PB2Entry& e = entries[k];
            if (e.control) {
                // A controller that cannot be cloned is shared (instanced) rather than lost.
                if (auto* c = dynamic_cast<Control*>(remap.CloneRef(e.control))) e.control = c;
            }
            ReferenceTarget* target = def.IsReference() ? e.value.AsRef() : nullptr;
            if (!target) continue;
            if (type == TYPE_MTL || type == TYPE_TEXMAP || type == TYPE_PBLOCK2) {
                // Materials, maps and nested blocks belong to the block: the clone gets copies.
                if (ReferenceTarget* c = remap.CloneRef(target)) e.value = ParamValue(c);
            } else if (ReferenceTarget* mapped = remap.FindMapping(target)) {
                e.value = ParamValue(mapped);
            } else {
                retarget.emplace_back(index, int(k));
            }
        }
        clone->AssignEntries(index, std::move(entries));
    }
    BaseClone(this, clone, remap);
    if (!retarget.empty()) remap.AddPostPatchProc(new RetargetClonedValues(clone, std::move(retarget)), true);
    return clone;
}
