#include "records/record_info.h"

#include "anims/pblock2_param.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_pblock2.h"
#include "frame/module.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "resource.h"

#include <string>

namespace vandrels {

namespace {

struct FlagName {
    std::uint32_t bit;
    int stringId;          // the category's step word, 0 for a bit without one
    const MCHAR* fallback; // the name of a bit without a step word
};

constexpr FlagName kNodeFlagNames[] = {
    {kNodeLocalDependents, 0, L"Local Dependents"},
    {kNodeOverriddenName, IDS_OVR_NAME, nullptr},
    {kNodeNameWithoutPrefix, 0, L"Name Without Prefix"},
    {kNodeMaterial, IDS_OVR_MATERIAL, nullptr},
    {kNodeModifiers, 0, L"Modifiers Changed"},
    {kNodeObjectSpaceReplaced, 0, L"Object Space Stack Replaced"},
    {kNodeParent, IDS_OVR_PARENT, nullptr},
    {kNodeChildren, IDS_OVR_CHILDREN, nullptr},
    {kNodeGrouping, IDS_OVR_GROUPING, nullptr},
    {kNodeLayer, IDS_OVR_LAYER, nullptr},
    {kNodeObjectOffset, IDS_OVR_OBJECT_OFFSET_TM, nullptr},
    {kNodeSkinPose, IDS_OVR_SKIN_POSE, nullptr},
    {kNodeWireColor, IDS_OVR_WIRE_COLOR, nullptr},
    {kNodeHidden, IDS_OVR_HIDDEN, nullptr},
    {kNodeFrozen, IDS_OVR_FROZEN, nullptr},
    {kNodeDisplayProps, IDS_OVR_PROPS_DISPLAY, nullptr},
    {kNodeRenderProps, IDS_OVR_PROPS_RENDER, nullptr},
    {kNodeUserProps, IDS_OVR_PROPS_USER, nullptr},
    {kNodeBoneProps, IDS_OVR_PROPS_BONE, nullptr},
    {kNodeClothChanged, 0, L"Cloth Changed"},
    {kNodeTmLocks, IDS_OVR_TM_LOCKS_FLAGS, nullptr},
    {kNodeExclusionList, IDS_OVR_EXCL_LIST, nullptr},
    {kNodeObjectLocalDep, IDS_OVR_OBJ_LOC_DEP, nullptr},
    {kNodeSelectionSets, IDS_OVR_SELECTION_SETS, nullptr},
    {kNodeExclusionMisc, IDS_OVR_EXCL_LIST_MISC, nullptr},
};

constexpr const MCHAR* kAnimStateNames[] = {L"Replaced", L"Modified", L"LocDep", L"Added",
                                            L"Removed",  L"Renamed",  L"Toggled"};

// The modifier diagnostics read as changes: the mirror entries the user added (state local) and every entry of
// the deleted, renamed and toggled lists, each line led by what happened.
const std::wstring kLocalState = L", State: " + std::to_wstring(int(kModLocal)) + L",";

void DescribeModifierChanges(RefNode* record, InfoWriter& out) {
    const std::wstring lines = record->ModifierLines().data();
    const wchar_t* section = nullptr;
    out.BeginList(L"modifierChanges");
    std::size_t start = 0;
    while (start <= lines.size()) {
        std::size_t end = lines.find(L'\n', start);
        if (end == std::wstring::npos) end = lines.size();
        const std::wstring line = lines.substr(start, end - start);
        start = end + 1;
        if (line.empty()) continue;
        if (line == L"WSRefMods: ") section = L"Added (world space)";
        else if (line == L"OSRefMods: ") section = L"Added";
        else if (line == L"DeletedMods: ") section = L"Deleted";
        else if (line == L"RenamedMods: ") section = L"Renamed";
        else if (line == L"ToggledMods: ") section = L"Toggled";
        else if (!section) continue;
        // A mirror entry is a change only when the user put it there (state local).
        else if (section[0] == L'A' && line.find(kLocalState) == std::wstring::npos) continue;
        else out.Text(nullptr, (std::wstring(section) + L" " + line).c_str());
    }
    out.EndList();
}

std::wstring PathText(RefAnim* record) {
    std::wstring path;
    for (WStr* name : record->GetPath()) {
        if (!path.empty()) path += L"/";
        path += name ? name->data() : L"?";
    }
    return path;
}

void DescribeAnimRecords(RefBase* record, InfoWriter& out) {
    out.BeginList(L"parameterSnapshots");
    for (int i = 0; i < record->NumRefAnims(); ++i) {
        auto* block = dynamic_cast<RefAnimPblock2*>(record->GetRefAnim(i));
        if (!block) continue;
        for (const Tab<Pblock2Param*>* list : {&block->GetOverriddenTabs(), &block->GetOverriddenParams()})
            for (Pblock2Param* param : *list) {
                if (!param) continue;
                out.BeginObject(nullptr);
                out.Text(L"path", PathText(block).c_str());
                out.Text(L"parameter", param->name.data());
                out.Number(L"tabIndex", param->tabIndex);
                out.Flag(L"tableSize", list == &block->GetOverriddenTabs());
                out.EndObject();
            }
    }
    out.EndList();
    out.BeginList(L"animatableRecords");
    for (int i = 0; i < record->NumRefAnims(); ++i) {
        RefAnim* anim = record->GetRefAnim(i);
        if (!anim || !anim->HasOverride()) continue;
        out.BeginObject(nullptr);
        out.Text(L"path", PathText(anim).c_str());
        out.Text(L"type", anim->GetTypeName().data());
        out.BeginList(L"states");
        for (int bit = 0; bit < 7; ++bit)
            if (anim->TestOverrideBits(std::uint8_t(1u << bit))) out.Text(nullptr, kAnimStateNames[bit]);
        out.EndList();
        out.EndObject();
    }
    out.EndList();
}

}  // namespace

std::vector<MSTR> NodeOverrideNames(std::uint32_t flags) {
    std::vector<MSTR> names;
    for (const FlagName& f : kNodeFlagNames)
        if (flags & f.bit) names.push_back(f.stringId ? GetStringCopy(f.stringId) : MSTR(f.fallback));
    return names;
}

void DescribeNodeRecord(RefNode* record, InfoWriter& out, bool withNodeState) {
    out.Text(L"name", record->GetName().data());
    if (withNodeState) out.Flag(L"nodeFound", record->IsNodeLoaded() != 0);
    out.BeginList(L"overrides");
    for (const MSTR& name : NodeOverrideNames(record->GetOverrideFlags())) out.Text(nullptr, name.data());
    out.EndList();
    DescribeModifierChanges(record, out);
    DescribeAnimRecords(record, out);
}

void DescribeMaterialRecord(RefMaterial* record, InfoWriter& out) {
    out.Text(L"name", record->GetReferenceName().data());
    if (record->GetMaterialFlags() & kMtlOverriddenName) out.Text(L"localName", record->GetOverriddenName().data());
    out.BeginList(L"overrides");
    if (record->GetMaterialFlags() & kMtlOverriddenLocDep) out.Text(nullptr, L"Local Dependents");
    if (record->GetMaterialFlags() & kMtlOverriddenName) out.Text(nullptr, GetStringCopy(IDS_OVR_NAME).data());
    out.EndList();
    DescribeAnimRecords(record, out);
}

}  // namespace vandrels
