// The core interface's scene members for materials, the material editor slots, layers, named selection sets and
// scene effects.
#include "imtl.h"
#include "maxapi.h"
#include "scene/layers/layer_manager.h"
#include "scene/materials/material_editor.h"
#include "scene/materials/material_library.h"
#include "scene/named_sets.h"
#include "scene/scene_effects.h"

using namespace hostrt;

MtlBaseLib* Interface::GetSceneMtls() { return &SceneMtlLibrary(); }

MtlBase* Interface::GetMtlSlot(int slot) { return SceneMtlEditor().Get(slot); }

void Interface::PutMtlToMtlEditor(MtlBase* mtl, int slot) { SceneMtlEditor().Put(mtl, slot); }

ILayerManager* Interface::GetLayerManager() { return &SceneLayerManager(); }

int Interface::GetNumNamedSelSets() { return SceneNamedSelSets().Count(); }

MSTR Interface::GetNamedSelSetName(int i) { return SceneNamedSelSets().Name(i); }

int Interface::GetNamedSelSetItemCount(int i) { return SceneNamedSelSets().ItemCount(i); }

INode* Interface::GetNamedSelSetItem(int i, int j) { return SceneNamedSelSets().Item(i, j); }

BOOL Interface::AddNewNamedSelSet(INodeTab& nodes, const MSTR& name) { return SceneNamedSelSets().Add(nodes, name); }

BOOL Interface::ReplaceNamedSelSet(INodeTab& nodes, const MSTR& name) {
    return SceneNamedSelSets().Replace(nodes, name);
}

BOOL Interface::RemoveNamedSelSet(const MSTR& name) { return SceneNamedSelSets().Remove(name); }

BOOL Interface::SetNamedSelSetName(int i, const MSTR& name) { return SceneNamedSelSets().Rename(i, name); }

int Interface::NumSceneEffects() { return SceneEffects().Count(); }

ReferenceTarget* Interface::GetSceneEffect(int i) { return SceneEffects().Get(i); }

int Interface::AddSceneEffect(ReferenceTarget* effect) { return SceneEffects().Add(effect); }

BOOL Interface::DeleteSceneEffect(int i) { return SceneEffects().Remove(i); }
