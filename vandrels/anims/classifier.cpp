// The classification rules: the top-level branches by anim-copy answer and controller split, and the class
// tables of each superclass, kept as data in the order in which their rows are tried (first match wins).
#include "anims/classifier.h"

#include "control.h"
#include "iparamb2.h"
#include "records/subanim_space.h"

#include <span>

namespace {

// ---- Host answers.

constexpr ULONG kControlInterface = 0x1010;

constexpr Interface_ID kListCtrlInterface(0x444E7687, 0x722E6E36);
constexpr Interface_ID kCATCtrlInterface(0x00D83DC1, 0x4C851B6C);
constexpr Interface_ID kLayerCtrlInterface(0x434D7627, 0xA25E6E26);
constexpr Interface_ID kWithRefsCtrlInterface(0x25CE0F5C, 0x6C303D2F);
constexpr Interface_ID kRealWorldMapSizeInterface(0x09FF44EF, 0x6C050704);
constexpr Interface_ID kPFTestInterface(0x74F93D02, 0x1EB34500);

// Entries in the module's sub-anim address space, without hint.
int SubAnimEntries(Animatable* anim, Animatable* parent) { return CountSubAnims(anim, parent, nullptr); }

bool Answers(Animatable* anim, Interface_ID id) { return anim && anim->GetInterface(id) != nullptr; }

bool IsNode(Animatable* anim) { return anim && anim->SuperClassID() == 0x0001; }

bool HasClass(Animatable* anim, Class_ID cid) { return anim && anim->ClassID() == cid; }

// At least one non-null reference.
bool HoldsReference(Animatable* anim) {
    if (!anim->IsRefMaker()) return false;
    auto* maker = static_cast<ReferenceMaker*>(anim);
    for (int i = 0, n = maker->NumRefs(); i < n; ++i)
        if (maker->GetReference(i)) return true;
    return false;
}

bool HasSubAnimsOrBlocks(Animatable* anim) { return anim->NumSubs() > 0 || anim->NumParamBlocks() > 0; }

std::uint32_t WithRefsWhenTarget(Animatable* anim) { return anim->IsRefTarget() ? 0x00030009 : kCodeNoRecord; }

// The owner of parent when parent is a parameter block 2.
Animatable* BlockOwner(Animatable* parent) {
    if (!parent || parent->SuperClassID() != 0x0082) return nullptr;
    return static_cast<IParamBlock2*>(static_cast<ReferenceTarget*>(parent))->GetOwner();
}

// ---- Class tables.

struct ClassCode {
    Class_ID cid;
    std::uint32_t code;
};

const ClassCode* Find(std::span<const ClassCode> table, Class_ID cid) {
    for (const ClassCode& row : table)
        if (row.cid == cid) return &row;
    return nullptr;
}

bool Listed(std::span<const Class_ID> list, Class_ID cid) {
    for (const Class_ID& c : list)
        if (c == cid) return true;
    return false;
}

// Default rule D and the generic tail.
std::uint32_t DefaultRule(Animatable* anim, Animatable* parent) {
    if (SubAnimEntries(anim, parent) > 1) return kCodeNoRecord;
    return HoldsReference(anim) ? 0x00030009 : 0x00010001;
}

constexpr ClassCode kGenericTail[] = {
    {Class_ID(0x00001200, 0), kCodeIgnore},
    {Class_ID(0x00000100, 0), 0x00030009},
};

std::uint32_t GenericTail(Animatable* anim, Animatable* parent) {
    if (const ClassCode* row = Find(kGenericTail, anim->ClassID())) return row->code;
    return DefaultRule(anim, parent);
}

// Table G: geometric objects.
constexpr ClassCode kGeomTable[] = {
    {Class_ID(0x1BF8338D, 0x192F6098), 0x00090010},
    {Class_ID(0xE44F10B3, 0), 0x00090010},
    {Class_ID(0x00001030, 0), 0x00090010},
    {Class_ID(0x76A11646, 0x12A822FB), 0x00090010},
    {Class_ID(0x87D987F4, 0xBE7C7E52), 0x00090010},
    {Class_ID(0x28BF6E8D, 0x2ECCA840), 0x0003000C},
    {Class_ID(0x2A730CDB, 0x746B394F), 0x0003000C},
    {Class_ID(0x2A723864, 0x7F603F64), 0x0003000C},
    {Class_ID(0x7DEE4CF0, 0x50E728B9), 0x0003000C},
    {Class_ID(0xA4E83C21, 0x5F7B092D), 0x0003000C},
    {Class_ID(0x3F2A6C11, 0x1B7E40D5), 0x0003000C},
    {Class_ID(0x00009125, 0), kCodeNoRecord},
    {Class_ID(0x2E6A0C09, 0x43D5C9C0), kCodeNoRecord},
    {Class_ID(0x73DC4833, 0x65C93CAA), kCodeNoRecord},
    {Class_ID(0x7BC209AF, 0x01BBAC5F), 0x0003002D},
    {Class_ID(0x5C2417BD, 0x44050964), 0x00030006},
    {Class_ID(0x42567B96, 0x4E9C1AED), 0x00030006},
    {Class_ID(0x6A877C03, 0x67947186), 0x00030006},
    {Class_ID(0x31CEA620, 0x2257F993), 0x00030006},
    {Class_ID(0x1D121A84, 0x64994009), 0x00030006},
    {Class_ID(0x000010B0, 0), 0x00030006},
    {Class_ID(0x367E33EF, 0x07C0670C), 0x00030006},
    {Class_ID(0x51DB4F2F, 0x1C596B1A), 0x00030006},
    {Class_ID(0x1AB13757, 0x12365B98), 0x00030006},
    {Class_ID(0x6C3600A5, 0x11634EB8), 0x0003002E},
    {Class_ID(0x74F93B02, 0x1EB34300), kCodeIgnore},
    {Class_ID(0x79FE41C2, 0x1D7B4FB1), 0x0003003A},
    {Class_ID(0x39712DEF, 0x10A72959), 0x00030038},
};

std::uint32_t ClassifyGeometry(Animatable* anim) {
    if (const ClassCode* row = Find(kGeomTable, anim->ClassID())) return row->code;
    if (Answers(anim, kRealWorldMapSizeInterface)) return 0x00030028;
    return WithRefsWhenTarget(anim);
}

// Table M: object modifiers.
constexpr ClassCode kModifierTable[] = {
    {Class_ID(0x79AA6E1D, 0x71A075B7), 0x00010012},
    {Class_ID(0x4DBE3132, 0x614357B9), 0x00010012},
    {Class_ID(0x00000060, 0), 0x00010012},
    {Class_ID(0x02DF2E3A, 0x72BA4E1F), 0x00010012},
    {Class_ID(0x7CE5206B, 0x31181505), 0x00010012},
    {Class_ID(0x19592732, 0x03407A7A), 0x00010012},
    {Class_ID(0x73D8FF93, 0), 0x00010012},
    {Class_ID(0x00053446, 0x00007145), 0x00010012},
    {Class_ID(0x98F37A63, 0x3FFE9BCA), 0x00010012},
    {Class_ID(0x8AB36CC5, 0x82D7FE74), 0x00010012},
    {Class_ID(0x21325596, 0x2CD10BD8), 0x00010012},
    {Class_ID(0x21325596, 0x2CD10BD9), 0x00010012},
    {Class_ID(0x21325596, 0x2CD10BD0), 0x00010012},
    {Class_ID(0x00000070, 0), 0x00010012},
    {Class_ID(0x4AA52AE3, 0x35CA1CDE), 0x00010012},
    {Class_ID(0x00000050, 0), 0x00010012},
    {Class_ID(0x0095C723, 0x00015666), 0x00030018},
    {Class_ID(0x17BB6854, 0xA5CBA2A3), 0x00030019},
    {Class_ID(0x000C4D33, 0), 0x0003001D},
    {Class_ID(0x67C1CD47, 0x7782F878), 0x0003001E},
    {Class_ID(0x0EE23DE9, 0xFA432946), 0x0003001E},
    {Class_ID(0x7A4202D0, 0x11961722), 0x00030025},
    {Class_ID(0x270F1FE3, 0x03B14999), 0x0003000C},
    {Class_ID(0x00000E11, 0), 0x000B0035},
    {Class_ID(0x00000100, 0), 0x00030015},
};

std::uint32_t ClassifyModifier(Animatable* anim) {
    if (const ClassCode* row = Find(kModifierTable, anim->ClassID())) return row->code;
    if (HasSubAnimsOrBlocks(anim)) return Answers(anim, kRealWorldMapSizeInterface) ? 0x00030028 : 0x00030015;
    return HoldsReference(anim) ? 0x00030015 : 0x00030014;
}

// Table P: parameter blocks 2, by the parent. A row without a class takes every class of its superclass.
struct ParentRow {
    SClass_ID sclass;
    bool anyClass;
    Class_ID cid;
    std::uint32_t code;
};

constexpr ParentRow kBlockTable[] = {
    {0x1160, true, Class_ID(0, 0), 0x00230029},
    {0x0010, false, Class_ID(0x7BC209AF, 0x01BBAC5F), 0x0023002A},
    {0x0010, false, Class_ID(0x6C3600A5, 0x11634EB8), 0x0023002A},
    {0x0010, false, Class_ID(0x74F93B03, 0x1EB34300), 0x0023002A},
    {0x0010, false, Class_ID(0x79FE41C2, 0x1D7B4FB1), 0x00230029},
    {0x0010, false, Class_ID(0x39712DEF, 0x10A72959), 0x00230029},
    {0x0030, false, Class_ID(0x2EAF2F07, 0x7EC44F31), 0x00030036},
    {0x0030, false, Class_ID(0x3C5575A1, 0x5FD602DF), 0x00030036},
    {0x0050, false, Class_ID(0x74F93B03, 0x1EB34300), 0x0023002A},
    {0x0200, false, Class_ID(0x6E4253A3, 0x7FFA3373), kCodeWalkSubs},
    {0x0200, false, Class_ID(0x1D473A0E, 0x3B151C9D), kCodeWalkSubs},
    {0x0200, false, Class_ID(0x0BC975DD, 0x6E1A1AE5), kCodeWalkSubs},
    {0x0810, false, Class_ID(0x00000E11, 0), 0x0023002A},
    {0x9003, false, Class_ID(0x17127E3E, 0), 0x00230004},
    {0x9003, false, Class_ID(0x4CEB45BD, 0x0B9C062E), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x0EC62904, 0x185A28DC), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x74B50FD8, 0x07AD665E), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x7C125BF5, 0x3A880ECE), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x04A420B7, 0x7A142AEE), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x0B5E496B, 0x15363635), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x46606ABF, 0x002D3676), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x40534BDC, 0x3AE34B58), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x7FA7544B, 0x711A51EA), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x265E07A8, 0x0D281541), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x2A234435, 0x750465F5), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x63785366, 0x6D970288), kCodeWalkSubs},
    {0x9003, false, Class_ID(0x18E02664, 0x21D309C3), kCodeWalkSubs},
    {0x9005, false, Class_ID(0x275C1AC1, 0x08B45EE2), kCodeWalkSubs},
    {0x9008, false, Class_ID(0x1EDD686D, 0x45A56EB3), kCodeWalkSubs},
    {0x9008, false, Class_ID(0x2DE70807, 0x3973713A), kCodeWalkSubs},
    {0x9008, false, Class_ID(0x542E413E, 0x08241AA2), kCodeWalkSubs},
    {0x9008, false, Class_ID(0x485A734C, 0x795557CC), kCodeWalkSubs},
    {0x9008, false, Class_ID(0x1ADF2684, 0x2E3B60D2), kCodeWalkSubs},
    {0x900C, false, Class_ID(0x67A81CF9, 0x79C62151), kCodeWalkSubs},
    {0x900C, false, Class_ID(0x1D1A667C, 0x206521F1), kCodeWalkSubs},
};

// A parameter block 2 is placed by its parent; a block met without a parent takes the last default.
std::uint32_t ClassifyBlock2(Animatable* parent) {
    if (!parent) return 0x00230004;
    const SClass_ID sclass = parent->SuperClassID();
    const Class_ID cid = parent->ClassID();
    for (const ParentRow& row : kBlockTable)
        if (row.sclass == sclass && (row.anyClass || row.cid == cid)) return row.code;
    if (Answers(parent, kListCtrlInterface)) return 0x0023002A;
    if (sclass == 0x1160) return 0x00230029;
    if (sclass == 0x900B && (cid == Class_ID(0x00002019, 0) || cid == Class_ID(0x00002011, 0))) return 0x0023002A;
    if (sclass == 0x900C && (cid == Class_ID(0x00002020, 0) || cid == Class_ID(0x00002021, 0))) return 0x0023002A;
    return 0x00230004;
}

// ---- Table A: anims that are not controllers, by superclass.

constexpr ClassCode kRefMakerTable[] = {
    {Class_ID(0x4096218C, 0x1BB8133C), 0x00110013},
    {Class_ID(0x4DDC1551, 0x118452EB), 0x00110013},
    {Class_ID(0x5DDB3626, 0x23B708DB), kCodeWalkSubs},
    {Class_ID(0x5F2D3A0A, 0x4BE75269), 0x00030009},
    {Class_ID(0x14585773, 0x483A7DCF), kCodeIgnore},
};

constexpr ClassCode kShapeTable[] = {
    {Class_ID(0x76A11646, 0x12A822FB), 0x00090010},
    {Class_ID(0x00001040, 0), 0x00090010},
    {Class_ID(0x00001993, 0), 0x0003001C},
    {Class_ID(0x6B963D5F, 0x6E243528), 0x0003002D},
};

constexpr ClassCode kHelperTable[] = {
    {Class_ID(0x74F93B07, 0x1EB34300), kCodeIgnore},
    {Class_ID(0x74F93B01, 0x1EB34300), kCodeIgnore},
    {Class_ID(0x00002013, 0), 0x0003000C},
    {Class_ID(0x00876234, 0), 0x0003000C},
    {Class_ID(0x6E34B493, 0xE3C48E41), 0x00090032},
};

constexpr ClassCode kWorldObjectTable[] = {
    {Class_ID(0x67EA40B3, 0xFE7A30C4), 0x00090010},
    {Class_ID(0xFA4700BE, 0xBBE85051), 0x00090010},
};

constexpr ClassCode kMaterialTable[] = {
    {Class_ID(0x00000200, 0), 0x00030020},
    {Class_ID(0x4B9937E0, 0x3A1C3DA4), 0x00030009},
    {Class_ID(0x272C0D4B, 0x432A414B), 0x00030031},
};

constexpr ClassCode kTexmapTable[] = {
    {Class_ID(0x4C693CD7, 0x05FC76AC), 0x00010001},
    {Class_ID(0x6EC3730C, 0), 0x00030009},
};

// Materials and texture maps: their table, then a record of their own kind when they have more than one entry.
std::uint32_t ClassifyMapping(Animatable* anim, Animatable* parent, std::span<const ClassCode> table,
                              std::uint32_t ownKind) {
    if (const ClassCode* row = Find(table, anim->ClassID())) return row->code;
    if (SubAnimEntries(anim, parent) > 1) return ownKind;
    return HoldsReference(anim) ? 0x00030009 : 0x00010001;
}

std::uint32_t ClassifyBySuperclass(Animatable* anim, Animatable* parent) {
    const Class_ID cid = anim->ClassID();
    const ClassCode* row = nullptr;
    switch (anim->SuperClassID()) {
    case 0x0100:
        if ((row = Find(kRefMakerTable, cid))) return row->code;
        return DefaultRule(anim, parent);
    case 0x0001: return 0x0044000B;
    case 0x0002: return IsNode(parent) ? 0x00220000 : 0x000B002F;
    case 0x0008: return 0x00030003;
    case 0x0010: return ClassifyGeometry(anim);
    case 0x0020: return 0x000B002C;
    case 0x0030: return cid == Class_ID(0x27D93542, 0x76F965B2) ? 0x00010001 : 0x000B0011;
    case 0x0040:
        if ((row = Find(kShapeTable, cid))) return row->code;
        return 0x00030028;
    case 0x0050:
        if ((row = Find(kHelperTable, cid))) return row->code;
        return WithRefsWhenTarget(anim);
    case 0x0060: return cid == Class_ID(0x92AAB38C, 0) ? 0x00030031 : DefaultRule(anim, parent);
    case 0x0082: return ClassifyBlock2(parent);
    case 0x0200: return cid == Class_ID(0x46D56AA8, 0x1A0703D4) ? 0x00010001 : DefaultRule(anim, parent);
    case 0x0810: return ClassifyModifier(anim);
    case 0x0820:
        if (cid == Class_ID(0x370F1FE3, 0x03B14999)) return 0x0003000C;
        if (HasSubAnimsOrBlocks(anim)) return 0x00030015;
        return HoldsReference(anim) ? 0x00030015 : 0x00030014;
    case 0x0830:
        if ((row = Find(kWorldObjectTable, cid))) return row->code;
        return WithRefsWhenTarget(anim);
    case 0x0C00: return ClassifyMapping(anim, parent, kMaterialTable, 0x0003001A);
    case 0x0C10: return ClassifyMapping(anim, parent, kTexmapTable, 0x0003001B);
    default: return GenericTail(anim, parent);
    }
}

// ---- Table C: controllers whose split query answers non-zero.

// A row of table C applies unconditionally, or only under one of these conditions; a row whose condition
// fails is passed over.
enum class When { Always, UnderNode, ParentIsLayerBase, SubAnim2Listed };

struct ControlRow {
    SClass_ID sclass;
    Class_ID cid;
    std::uint32_t code;
    When when = When::Always;
};

// Classes whose presence as sub-anim 2 of the point3 expression-like controller hands it to the walk.
constexpr Class_ID kPoint3SubAnim2Classes[] = {
    Class_ID(0x0EC62904, 0x185A28DC), Class_ID(0x74B50FD8, 0x07AD665E), Class_ID(0x04A420B7, 0x7A142AEE),
    Class_ID(0x40534BDC, 0x3AE34B58), Class_ID(0x2A234435, 0x750465F5), Class_ID(0x63785366, 0x6D970288),
    Class_ID(0x7FA7544B, 0x711A51EA),
};

constexpr ControlRow kControlTable[] = {
    // Float.
    {0x9003, Class_ID(0xFF5826DB, 0), 0x00030009},
    {0x9003, Class_ID(0x717D7D1F, 0x124C173B), 0x00030024},
    {0x9003, Class_ID(0x87A6DF24, 0), 0x00030006},
    {0x9003, Class_ID(0x17127E3E, 0), 0x0003000C},
    {0x9003, Class_ID(0x742D30AC, 0x37984F09), kCodeWalkSubs},
    {0x9003, Class_ID(0x43BF76AC, 0x60AB5707), kCodeWalkSubs},
    {0x9003, Class_ID(0x4CEB45BD, 0x0B9C062E), kCodeWalkSubs},
    {0x9003, Class_ID(0x507514E5, 0x30B07FAD), kCodeWalkSubs},
    {0x9003, Class_ID(0x0EC62904, 0x185A28DC), kCodeWalkSubs},
    {0x9003, Class_ID(0x453F7278, 0x4B8E1DFD), kCodeWalkSubs},
    {0x9003, Class_ID(0x74B50FD8, 0x07AD665E), kCodeWalkSubs},
    {0x9003, Class_ID(0x04A420B7, 0x7A142AEE), kCodeWalkSubs},
    {0x9003, Class_ID(0x0B5E496B, 0x15363635), kCodeWalkSubs},
    {0x9003, Class_ID(0x46606ABF, 0x002D3676), kCodeWalkSubs},
    {0x9003, Class_ID(0x40534BDC, 0x3AE34B58), kCodeWalkSubs},
    {0x9003, Class_ID(0x265E07A8, 0x0D281541), kCodeWalkSubs},
    {0x9003, Class_ID(0x2A234435, 0x750465F5), kCodeWalkSubs},
    {0x9003, Class_ID(0x63785366, 0x6D970288), kCodeWalkSubs},
    {0x9003, Class_ID(0x18E02664, 0x21D309C3), kCodeWalkSubs},
    {0x9003, Class_ID(0x094E2D9C, 0x02C702B5), kCodeWalkSubs},
    {0x9003, Class_ID(0x7FA7544B, 0x711A51EA), kCodeIgnore},
    {0x9003, Class_ID(0x7C125BF5, 0x3A880ECE), kCodeIgnore},
    // Point3.
    {0x9005, Class_ID(0x118F7E02, 0xFEEE238B), kCodeWalkSubs, When::SubAnim2Listed},
    {0x9005, Class_ID(0x19080908, 0x3B617839), 0x00030024},
    {0x9005, Class_ID(0x87A6DF26, 0), 0x00030006},
    {0x9005, Class_ID(0x275C1AC1, 0x08B45EE2), kCodeWalkSubs},
    {0x9005, Class_ID(0xFF4826DC, 0), 0x00030009},
    // Matrix.
    {0x9008, Class_ID(0x00002005, 0), kCodeWalkSubs, When::ParentIsLayerBase},
    {0x9008, Class_ID(0x00002005, 0), 0x00030027},
    {0x9008, Class_ID(0x873FE764, 0xAABE8601), 0x0003000D},
    {0x9008, Class_ID(0x00002006, 0), 0x00030006},
    {0x9008, Class_ID(0x32FB4637, 0x65FD482B), 0x00030031},
    {0x9008, Class_ID(0x1EDD686D, 0x45A56EB3), kCodeIgnore},
    {0x9008, Class_ID(0x2DE70807, 0x3973713A), kCodeIgnore},
    {0x9008, Class_ID(0x6E341CBA, 0x6F9C52CA), 0x0003000C},
    {0x9008, Class_ID(0x615B56E4, 0x5F0E6032), 0x0003003B, When::UnderNode},
    // Position.
    {0x900B, Class_ID(0x118F7E02, 0xFFEE238A), 0x0003000C},
    {0x900B, Class_ID(0x00002019, 0), 0x0003001F},
    {0x900B, Class_ID(0x00002011, 0), 0x0003001F},
    {0x900B, Class_ID(0x7AC5CAE4, 0x904A56B3), 0x00030024},
    {0x900B, Class_ID(0x87A6DF25, 0), 0x00030006},
    {0x900B, Class_ID(0xE8334011, 0xAEB330C8), 0x00030009},
    {0x900B, Class_ID(0xFF8826DE, 0), 0x00030009},
    {0x900B, Class_ID(0x79697D2A, 0xF2B8A1C8), 0x00030009},
    // Rotation.
    {0x900C, Class_ID(0x00002012, 0), 0x00030026},
    {0x900C, Class_ID(0x00002020, 0), 0x0003001F},
    {0x900C, Class_ID(0x00002021, 0), 0x0003001F},
    {0x900C, Class_ID(0x2A8734EB, 0x57F47DA6), 0x00030024},
    {0x900C, Class_ID(0x87A6DF27, 0), 0x00030006},
    {0x900C, Class_ID(0x67A81CF9, 0x79C62151), kCodeIgnore},
    {0x900C, Class_ID(0x1D1A667C, 0x206521F1), kCodeIgnore},
    {0x900C, Class_ID(0xFF7826DF, 0), 0x00030009},
    // Scale.
    {0x900D, Class_ID(0x118F7C01, 0xFEEE238B), 0x0003000C},
    {0x900D, Class_ID(0x13C4451C, 0x2CCB3388), 0x00030024},
    {0x900D, Class_ID(0x87A6DF28, 0), 0x00030006},
    {0x900D, Class_ID(0xFF6826DA, 0), 0x00030009},
};

bool RowApplies(const ControlRow& row, Animatable* anim, Animatable* parent) {
    switch (row.when) {
    case When::Always: return true;
    case When::UnderNode: return IsNode(parent);
    case When::ParentIsLayerBase: return HasClass(parent, Class_ID(0x18D026A1, 0x347D1CF3));
    case When::SubAnim2Listed: {
        Animatable* sub = anim->NumSubs() > 2 ? anim->SubAnim(2) : nullptr;
        return sub && Listed(kPoint3SubAnim2Classes, sub->ClassID());
    }
    }
    return false;
}

// Step 2.3: controllers that split.
std::uint32_t ClassifySplitController(Animatable* anim, Animatable* parent) {
    const SClass_ID sclass = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    for (const ControlRow& row : kControlTable)
        if (row.sclass == sclass && row.cid == cid && RowApplies(row, anim, parent)) return row.code;
    if (Answers(anim, kListCtrlInterface)) return 0x00030008;
    if (SubAnimEntries(anim, parent) < 2) return HoldsReference(anim) ? 0x00030009 : 0x00010001;
    return WithRefsWhenTarget(anim);
}

constexpr Class_ID kCATRigClass(0x022D5030, 0x4344191C);
constexpr Class_ID kIKSolverClass(0x0E6F5815, 0x717F99A4);
constexpr std::uint32_t kCodeIKSolver = 0x000E0034;

// Step 2.4: controllers that do not split (whole-transform solvers and rigs).
std::uint32_t ClassifyWholeController(Animatable* anim, Animatable* parent) {
    if (anim->SuperClassID() != 0x9008) return kCodeWalkSubs;
    const Class_ID cid = anim->ClassID();
    if (IsNode(parent)) {
        if (Answers(anim, kCATCtrlInterface)) return 0x000B0033;
        if (cid == kCATRigClass) return 0x0003002B;
    }
    return cid == kIKSolverClass ? kCodeIKSolver : kCodeWalkSubs;
}

// Step 3.1: controllers that refuse the anim copy. Nothing decided answers 0 (the superclass rules of step 3
// give controllers no code of their own, so they fall to the walk).
constexpr Class_ID kLocDepControllerClasses[] = {
    Class_ID(0x19357028, 0x428C5294),  // rotation, 0x900C
    Class_ID(0x69F672C0, 0x27927AFA),  // point3, 0x9005
    Class_ID(0x72930021, 0x06951211),  // float, 0x9003
};
constexpr SClass_ID kLocDepControllerSuperclasses[] = {0x900C, 0x9005, 0x9003};

bool ClassifyFixedController(Animatable* anim, Animatable* parent, std::uint32_t& code) {
    const SClass_ID sclass = anim->SuperClassID();
    const Class_ID cid = anim->ClassID();
    if (sclass == 0x9008) {
        if (cid == Class_ID(0x00009156, 0)) return code = 0x0001000E, true;
        if (cid == Class_ID(0x00009154, 0)) return code = 0x00030039, true;
        if (Answers(anim, kCATCtrlInterface) && IsNode(parent)) return code = 0x000B0033, true;
        if (cid == Class_ID(0x32FB4637, 0x65FD482B)) return code = 0x00030031, true;
        if (cid == Class_ID(0xBE380A31, 0x310DC9E4)) return code = kCodeIKSolver, true;
    }
    for (std::size_t i = 0; i < std::size(kLocDepControllerClasses); ++i) {
        if (sclass != kLocDepControllerSuperclasses[i] || cid != kLocDepControllerClasses[i]) continue;
        const bool ownedBlock = HasClass(BlockOwner(parent), Class_ID(0x848361CB, 0x913CC083));
        return code = ownedBlock ? 0x0003000C : kCodeNoRecord, true;
    }
    if (Answers(anim, kLayerCtrlInterface)) return code = 0x000B0030, true;
    if (Answers(anim, kWithRefsCtrlInterface)) return code = 0x00030009, true;
    return false;
}

// Step 3: anims that refuse the anim copy.
std::uint32_t ClassifyFixed(Animatable* anim, Animatable* parent) {
    std::uint32_t code = 0;
    if (anim->GetInterface(kControlInterface) && ClassifyFixedController(anim, parent, code)) return code;
    const Class_ID cid = anim->ClassID();
    switch (anim->SuperClassID()) {
    case 0x0010: return cid == Class_ID(0x50320C9A, 0) ? 0x00030016 : kCodeWalkSubs;
    case 0x1160: return 0x00030007;
    case 0x0050:
        if (cid == Class_ID(0x74F93B03, 0x1EB34300)) return 0x00030017;
        // A Particle Flow test inside an event: the host has no separate Particle Flow object behind an
        // action, so the test query and the interface query are asked of the action itself.
        if (IsNode(parent) && Answers(anim, kPFTestInterface)) return 0x00230037;
        return kCodeWalkSubs;
    default: return kCodeWalkSubs;
    }
}

}  // namespace

std::uint32_t ClassifyAnim(Animatable* anim, Animatable* parent) {
    if (!anim) return kCodeNoRecord;
    if (!anim->CanCopyAnim()) return ClassifyFixed(anim, parent);
    if (anim->ClassID() == Class_ID(0xFFFFFFFF, 0)) return kCodeIgnore;
    void* control = anim->GetInterface(kControlInterface);
    if (!control) return ClassifyBySuperclass(anim, parent);
    if (static_cast<Control*>(control)->IsReplaceable()) return ClassifySplitController(anim, parent);
    return ClassifyWholeController(anim, parent);
}
