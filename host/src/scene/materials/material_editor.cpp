// The material editor's sample slots: default materials, putting a material in a slot, the scene part.
#include "scene/materials/material_editor.h"

#include "scene/materials/material_classes.h"
#include "scene/scene_parts.h"

#include <stdexcept>

namespace hostrt {

MaterialEditorSlots::MaterialEditorSlots(bool loading) {
    if (loading) return;
    for (int i = 0; i < kNumSlots; ++i) {
        Mtl* m = NewDefaultStdMat();
        MSTR name;
        name.printf(L"%02d - Default", i + 1);
        m->SetName(name);
        ReplaceReference(i, m);
    }
}

MtlBase* MaterialEditorSlots::Get(int slot) { return slot >= 0 && slot < kNumSlots ? slots_[slot] : nullptr; }

bool MaterialEditorSlots::Put(MtlBase* m, int slot) {
    if (!m || slot < 0 || slot >= kNumSlots) return false;
    ReplaceReference(slot, m);
    return true;
}

void MaterialEditorSlots::SetReference(int i, RefTargetHandle target) {
    // A damaged scene file can name any object for a slot: what is no material leaves the slot empty.
    if (i >= 0 && i < kNumSlots) slots_[i] = dynamic_cast<MtlBase*>(target);
}

RefTargetHandle MaterialEditorSlots::Clone(RemapDir& remap) {
    auto* c = new MaterialEditorSlots(true);
    for (int i = 0; i < kNumSlots; ++i) c->ReplaceReference(i, remap.CloneRef(slots_[i]));
    BaseClone(this, c, remap);
    return c;
}

MaterialEditorSlots& SceneMtlEditor() {
    RegisterMaterialClasses();
    auto* slots = dynamic_cast<MaterialEditorSlots*>(ScenePartItem(ScenePartRole::MaterialEditor));
    if (!slots) throw std::logic_error("the scene has no material editor slots (material classes not registered)");
    return *slots;
}

}  // namespace hostrt
