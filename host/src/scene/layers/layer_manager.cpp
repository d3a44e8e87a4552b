// The layer manager: the list of layers and its rules, the current layer, the merge option, the scene part.
#include "scene/layers/layer_manager.h"

#include "core/class_directory.h"
#include "hold.h"
#include "ioapi.h"
#include "maxexception.h"
#include "notify.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "scene/layers/layer.h"
#include "scene/objects/host_class_desc.h"
#include "scene/materials/owned_scene_part.h"

#include <stdexcept>

namespace hostrt {

namespace {

constexpr USHORT kCountChunk = 0x0001;
constexpr USHORT kCurrentChunk = 0x0002;
constexpr ULONG kMaxLayers = 1u << 24;
const MCHAR* const kDefaultLayerName = L"0";
const MCHAR* const kIniSection = L"LayerManager";
const MCHAR* const kIniDuplicateKey = L"DuplicateLayerWithoutSameHierarchyOnMerge";

struct LayerPreferences {
    bool loaded = false;
    bool duplicateWithoutSameHierarchy = false;
};

LayerPreferences& prefs() {
    static LayerPreferences p;
    return p;
}

}  // namespace

void LoadLayerPreferences() {
    prefs().loaded = true;
    try {
        const MSTR v(HostIni().Get(kIniSection, kIniDuplicateKey));
        prefs().duplicateWithoutSameHierarchy = v == L"1" || v.EqualsNoCase(MSTR(L"true"));
    } catch (const std::exception&) {
        prefs().duplicateWithoutSameHierarchy = false;  // an unreadable settings file gives the default
    }
}

LayerManager::LayerManager(bool loading) {
    if (loading) return;
    append(new Layer(MSTR(kDefaultLayerName)));
    current_ = layers_.front();
}

ILayer* LayerManager::GetLayer(int i) { return i >= 0 && i < GetLayerCount() ? layers_[std::size_t(i)] : nullptr; }

ILayer* LayerManager::GetLayer(const MSTR& name) {
    for (ILayer* l : layers_)
        if (l && l->GetName().EqualsNoCase(name)) return l;
    return nullptr;
}

int LayerManager::IndexOf(ILayer* layer) const {
    for (std::size_t i = 0; i < layers_.size(); ++i)
        if (layers_[i] == layer && layer) return int(i);
    return -1;
}

void LayerManager::append(ILayer* layer) {
    layers_.push_back(nullptr);
    theHold.Suspend();  // the list is not undoable: an undo record would point at a slot that later changes move
    ReplaceReference(GetLayerCount() - 1, layer);
    theHold.Resume();
}

void LayerManager::drop(int i) {
    ILayer* layer = layers_[std::size_t(i)];
    theHold.Suspend();
    ReplaceReference(i, nullptr, FALSE);
    theHold.Resume();
    layers_.erase(layers_.begin() + i);
    if (current_ == layer) current_ = GetLayer(0);
    // Nothing else knows the layer: nobody could ever put it back.
    if (layer && !layer->HasDependents() && !layer->TestAFlag(A_IS_DELETED)) layer->MaybeAutoDelete();
}

ILayer* LayerManager::CreateLayer(const MSTR& name) {
    if (name.isNull() || GetLayer(name)) return nullptr;
    auto* layer = new Layer(name);
    append(layer);
    return layer;
}

bool LayerManager::AddLayer(ILayer* layer) {
    if (!layer || layer->TestAFlag(A_IS_DELETED) || IndexOf(layer) >= 0 || GetLayer(layer->GetName())) return false;
    append(layer);
    return true;
}

bool LayerManager::DeleteLayer(const MSTR& name) {
    ILayer* layer = GetLayer(name);
    if (!layer || IndexOf(layer) == 0 || layer == GetCurrentLayer() || layer->NumNodes() > 0 ||
        layer->GetNumOfChildLayers() > 0)
        return false;
    BroadcastNotification(NOTIFY_LAYER_DELETED, layer);
    // A handler may have changed the list meanwhile.
    const int i = IndexOf(layer);
    if (i <= 0) return i < 0;
    drop(i);
    return true;
}

ILayer* LayerManager::GetCurrentLayer() {
    if (!current_ || IndexOf(current_) < 0) current_ = GetLayer(0);
    return current_;
}

bool LayerManager::SetCurrentLayer(const MSTR& name) {
    ILayer* layer = GetLayer(name);
    if (!layer) return false;
    current_ = layer;
    return true;
}

bool LayerManager::GetDuplicateLayerWithoutSameHierarchyOnMerge() {
    if (!prefs().loaded) LoadLayerPreferences();
    return prefs().duplicateWithoutSameHierarchy;
}

void LayerManager::SetDuplicateLayerWithoutSameHierarchyOnMerge(bool on, bool persist) {
    prefs().loaded = true;
    prefs().duplicateWithoutSameHierarchy = on;
    if (!persist) return;
    try {
        HostIni().Set(kIniSection, kIniDuplicateKey, on ? L"1" : L"0");
    } catch (const std::exception& e) {
        throw MAXException(MSTR(L"Cannot store the layer merge option in the settings file: ") + MSTR(e.what()));
    }
}

void LayerManager::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= GetLayerCount()) return;
    layers_[std::size_t(i)] = dynamic_cast<ILayer*>(target);
    if (i == loadedCurrent_ && !current_) current_ = layers_[std::size_t(i)];
}

RefResult LayerManager::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message, BOOL) {
    if (message != REFMSG_TARGET_DELETED || !hTarget || TestAFlag(A_IS_DELETED)) return REF_STOP;
    const int i = IndexOf(dynamic_cast<ILayer*>(hTarget));
    if (i < 0) return REF_STOP;
    drop(i);
    if (i == 0) {
        auto* fresh = new Layer(MSTR(kDefaultLayerName));
        layers_.insert(layers_.begin(), nullptr);
        theHold.Suspend();
        ReplaceReference(0, fresh);
        theHold.Resume();
        if (!current_) current_ = fresh;
    }
    return REF_STOP;
}

IOResult LayerManager::Save(ISave* isave) {
    ULONG written = 0;
    const ULONG n = ULONG(layers_.size());
    isave->BeginChunk(kCountChunk);
    IOResult r = isave->Write(&n, sizeof n, &written);
    isave->EndChunk();
    if (r != IO_OK) return r;
    const LONG cur = IndexOf(GetCurrentLayer());
    isave->BeginChunk(kCurrentChunk);
    r = isave->Write(&cur, sizeof cur, &written);
    isave->EndChunk();
    return r;
}

IOResult LayerManager::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        ULONG got = 0;
        IOResult r = IO_OK;
        if (iload->CurChunkID() == kCountChunk) {
            ULONG n = 0;
            r = iload->Read(&n, sizeof n, &got);
            if (r == IO_OK && n > kMaxLayers) r = IO_ERROR;
            if (r == IO_OK) layers_.assign(n, nullptr);
        } else if (iload->CurChunkID() == kCurrentChunk) {
            LONG cur = 0;
            r = iload->Read(&cur, sizeof cur, &got);
            loadedCurrent_ = cur;
        }
        iload->CloseChunk();
        if (r != IO_OK) return r;
    }
    current_ = nullptr;
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle LayerManager::Clone(RemapDir& remap) {
    auto* c = new LayerManager(true);
    for (ILayer* l : layers_) {
        RefTargetHandle mapped = l ? remap.FindMapping(l) : nullptr;
        c->append(dynamic_cast<ILayer*>(mapped ? mapped : l));
    }
    const int cur = IndexOf(GetCurrentLayer());
    c->current_ = c->GetLayer(cur < 0 ? 0 : cur);
    BaseClone(this, c, remap);
    return c;
}

LayerManager& SceneLayerManager() {
    RegisterLayerClasses();
    auto* mgr = dynamic_cast<LayerManager*>(ScenePartItem(ScenePartRole::LayerManager));
    if (!mgr) throw std::logic_error("the scene has no layer manager");
    return *mgr;
}

void RegisterLayerClasses() {
    static bool done = false;
    if (done) return;
    done = true;
    static HostClassDesc<Layer> layerDesc{L"Layer", REF_TARGET_CLASS_ID, Layer::kClassID, L""};
    static HostClassDesc<LayerManager> managerDesc{L"LayerManager", REF_TARGET_CLASS_ID, LayerManager::kClassID, L""};
    ClassDirectory::Instance().Register(&layerDesc);
    ClassDirectory::Instance().Register(&managerDesc);
    if (!prefs().loaded) LoadLayerPreferences();
    RegisterScenePart(OwnedScenePart<LayerManager>(ScenePartRole::LayerManager));
}

}  // namespace hostrt
