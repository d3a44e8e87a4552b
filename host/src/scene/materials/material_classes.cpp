// Registers the material classes and the material library and editor scene parts.
#include "scene/materials/material_classes.h"

#include "core/class_directory.h"
#include "core/paramblock_classes.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/material_editor.h"
#include "scene/materials/material_library.h"
#include "scene/materials/multi_material.h"
#include "scene/materials/owned_scene_part.h"
#include "scene/materials/std_material.h"
#include "scene/materials/texmaps.h"

namespace hostrt {

void RegisterMaterialClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    RegisterParamBlockClasses();  // the materials' blocks
    RegisterStdMaterialClass();
    RegisterMultiMaterialClass();
    RegisterTexmapClasses();

    static HostClassDesc<SceneMaterialLibrary> libraryDesc{L"SceneMaterialLibrary", REF_TARGET_CLASS_ID,
                                                           SceneMaterialLibrary::kClassID, L""};
    static HostClassDesc<MaterialEditorSlots> editorDesc{L"MaterialEditorSlots", REF_TARGET_CLASS_ID,
                                                         MaterialEditorSlots::kClassID, L""};
    ClassDirectory::Instance().Register(&libraryDesc);
    ClassDirectory::Instance().Register(&editorDesc);
    RegisterScenePart(OwnedScenePart<SceneMaterialLibrary>(ScenePartRole::MaterialLibrary));
    RegisterScenePart(OwnedScenePart<MaterialEditorSlots>(ScenePartRole::MaterialEditor));
}

}  // namespace hostrt
