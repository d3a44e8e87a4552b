// The multi/sub-object material: its block of four tables kept in step, the sub-material slots and 258.
#include "scene/materials/multi_material.h"

#include "core/class_directory.h"
#include "ioapi.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/mtl_tree.h"

#include <algorithm>
#include <string>

namespace hostrt {

namespace {

// Keeps the on/off, name and id tables as long as the material table.
class KeepTablesInStep : public PBAccessor {
public:
    void TabChanged(tab_changes change, ReferenceMaker* owner, ParamID id, int tabIndex, int count) override {
        auto* multi = dynamic_cast<MultiMaterial*>(owner);
        if (id != MultiMaterial::kMaterials || !multi || !multi->ParamBlock()) return;
        IParamBlock2* pb = multi->ParamBlock();
        const ParamID others[] = {MultiMaterial::kEnabled, MultiMaterial::kNames, MultiMaterial::kIds};
        const int n = pb->Count(MultiMaterial::kMaterials);
        switch (change) {
        case tab_insert:
        case tab_append:
            for (ParamID p : others) {
                if (pb->Count(p) >= n) continue;
                if (change == tab_append || tabIndex >= pb->Count(p))
                    pb->Append(p, count);
                else
                    pb->Insert<int>(p, tabIndex, count, nullptr);
            }
            for (int k = tabIndex; k < tabIndex + count && k < n; ++k) pb->SetValue(MultiMaterial::kIds, 0, k + 1, k);
            break;
        case tab_delete:
            for (ParamID p : others)
                if (pb->Count(p) > n) pb->Delete(p, tabIndex, std::min(count, pb->Count(p) - tabIndex));
            break;
        default: {
            const int before = pb->Count(MultiMaterial::kIds);
            for (ParamID p : others)
                if (pb->Count(p) != n) pb->SetCount(p, n);
            for (int k = before; k < n; ++k) pb->SetValue(MultiMaterial::kIds, 0, k + 1, k);
            break;
        }
        }
    }
};

struct MultiMaterialClass {
    HostClassDesc<MultiMaterial> cd{L"Multi/Sub-Object", MATERIAL_CLASS_ID, MULTI_MATERIAL_CLASS_ID, L"Materials"};
    ParamBlockDesc2 block{0, L"Parameters", 0, &cd, P_AUTO_CONSTRUCT};
    KeepTablesInStep inStep;

    MultiMaterialClass() {
        block.AutoConstruct(MultiMaterial::kBlockRef);
        block.AddParam(MultiMaterial::kMaterials, L"materialList", TYPE_MTL_TAB, P_VARIABLE_SIZE, 0).Accessor(&inStep);
        block.AddParam(MultiMaterial::kEnabled, L"mapEnabled", TYPE_BOOL_TAB, P_VARIABLE_SIZE, 0).Default(TRUE);
        block.AddParam(MultiMaterial::kNames, L"names", TYPE_STRING_TAB, P_VARIABLE_SIZE, 0).Default(L"");
        block.AddParam(MultiMaterial::kIds, L"materialIDList", TYPE_INT_TAB, P_VARIABLE_SIZE, 0).Default(0);
    }
};

MultiMaterialClass& multiClass() {
    static MultiMaterialClass c;
    return c;
}

}  // namespace

MultiMaterial::MultiMaterial(bool loading) {
    if (loading) return;
    multiClass().cd.MakeAutoParamBlocks(this);
    SetNumSubMtls(kDefaultCount);
}

void MultiMaterial::SetReference(int i, RefTargetHandle target) {
    if (i != kBlockRef) return;
    pblock_ = static_cast<IParamBlock2*>(target);
    knownCount_ = NumSubMtls();
}

void MultiMaterial::SetNumSubMtls(int n) {
    if (!pblock_ || n < 0) return;
    const int before = NumSubMtls();
    if (n == before) return;
    pblock_->SetCount(kMaterials, n);
    for (int i = before; i < n; ++i) {
        Mtl* m = NewDefaultStdMat();
        m->SetName(MSTR(L"Material #") + MSTR(std::to_wstring(GetSubMtlID(i))));
        SetSubMtl(i, m);
    }
}

int MultiMaterial::NumSubMtls() { return pblock_ ? pblock_->Count(kMaterials) : 0; }

Mtl* MultiMaterial::GetSubMtl(int i) {
    return i >= 0 && i < NumSubMtls() ? pblock_->GetMtl(kMaterials, 0, i) : nullptr;
}

void MultiMaterial::SetSubMtl(int i, Mtl* m) {
    if (i < 0 || i >= NumSubMtls() || MtlTreeContains(m, this)) return;
    pblock_->SetValue(kMaterials, 0, m, i);
}

int MultiMaterial::GetSubMtlID(int i) { return i >= 0 && i < NumSubMtls() ? pblock_->GetInt(kIds, 0, i) : -1; }
void MultiMaterial::SetSubMtlID(int i, int id) { if (i >= 0 && i < NumSubMtls()) pblock_->SetValue(kIds, 0, id, i); }
BOOL MultiMaterial::GetSubMtlEnabled(int i) {
    return i >= 0 && i < NumSubMtls() ? pblock_->GetInt(kEnabled, 0, i) : FALSE;
}
void MultiMaterial::SetSubMtlEnabled(int i, BOOL on) {
    if (i >= 0 && i < NumSubMtls()) pblock_->SetValue(kEnabled, 0, on ? TRUE : FALSE, i);
}
MSTR MultiMaterial::GetSubMtlName(int i) {
    return i >= 0 && i < NumSubMtls() ? MSTR(pblock_->GetStr(kNames, 0, i)) : MSTR();
}
void MultiMaterial::SetSubMtlName(int i, const MSTR& name) {
    if (i >= 0 && i < NumSubMtls()) pblock_->SetValue(kNames, 0, name, i);
}

MSTR MultiMaterial::GetSubMtlSlotName(int i, bool) {
    if (i < 0 || i >= NumSubMtls()) return MSTR();
    MSTR name = GetSubMtlName(i);
    return name.isNull() ? MSTR(L"Material #") + MSTR(std::to_wstring(GetSubMtlID(i))) : name;
}

RefResult MultiMaterial::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message, BOOL) {
    if (message == REFMSG_CHANGE && hTarget == pblock_ && pblock_ && NumSubMtls() != knownCount_) {
        knownCount_ = NumSubMtls();
        NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    }
    return REF_SUCCEED;
}

IOResult MultiMaterial::Save(ISave* isave) { return SaveMtlBase(isave); }

IOResult MultiMaterial::Load(ILoad* iload) { return LoadMtlBase(iload); }

RefTargetHandle MultiMaterial::Clone(RemapDir& remap) {
    auto* c = new MultiMaterial(true);
    c->ReplaceReference(kBlockRef, remap.CloneRef(pblock_));
    CopyMtlBaseState(c);
    BaseClone(this, c, remap);
    return c;
}

void RegisterMultiMaterialClass() { ClassDirectory::Instance().Register(&multiClass().cd); }

}  // namespace hostrt
