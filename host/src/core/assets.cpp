// File assets and asset enumeration: asset ids and the asset manager, the path configuration's input-asset record, and the base
// enumeration that walks a maker's references.
#include "assetmanagement.h"
#include "maxapi.h"
#include "ref.h"
#include "platform/paths.h"
#include "winshim.h"

#include <filesystem>
#include <map>
#include <utility>
#include <vector>

namespace MaxSDK::AssetManagement {

namespace {
// One id per (file name, type) for the life of the process, and the way back from an id.
struct AssetTable {
    std::map<std::pair<std::wstring, AssetType>, AssetId> ids;
    std::vector<std::pair<std::wstring, AssetType>> byId;
};
AssetTable& Assets() {
    static AssetTable table;
    return table;
}
}  // namespace

AssetUser::AssetUser(const MSTR& fileName, AssetType type) : fileName_(fileName), type_(type) {
    if (fileName.Length() == 0) return;
    AssetTable& table = Assets();
    auto key = std::make_pair(std::wstring(fileName.data()), type);
    auto [it, added] = table.ids.try_emplace(key, AssetId(table.byId.size()));
    if (added) table.byId.push_back(std::move(key));
    id_ = it->second;
}

IAssetManager* IAssetManager::GetInstance() {
    static IAssetManager manager;
    return &manager;
}

AssetUser IAssetManager::GetAsset(const MSTR& fileName, AssetType type, bool) const { return AssetUser(fileName, type); }

AssetUser IAssetManager::GetAsset(AssetId id) const {
    const AssetTable& table = Assets();
    if (id < 0 || std::size_t(id) >= table.byId.size()) return AssetUser();
    const auto& [name, type] = table.byId[std::size_t(id)];
    return AssetUser(MSTR(name), type);
}

bool AssetUser::GetFullFilePath(MSTR& path) const {
    if (IsEmpty()) return false;
    namespace fs = std::filesystem;
    // File names go through the host's own UTF-8 conversion: the standard library's wide conversion depends
    // on the C locale and refuses any letter outside ASCII.
    fs::path file = hostrt::ToNativePath(fileName_.data());
    if (file.is_relative()) {
        const std::wstring scene = GetCOREInterface()->GetCurFilePath().data();
        std::error_code ec;
        fs::path inSceneFolder = scene.empty() ? fs::path() : hostrt::ToNativePath(scene).parent_path() / file;
        if (!inSceneFolder.empty() && fs::exists(inSceneFolder, ec))
            file = inSceneFolder;
        else
            file = fs::absolute(file, ec);
    }
    path = MSTR(hostrt::FromNativePath(file.lexically_normal()));
    return true;
}

}  // namespace MaxSDK::AssetManagement

IPathConfigMgr* IPathConfigMgr::GetPathConfigMgr() {
    static IPathConfigMgr mgr;
    return &mgr;
}

void IPathConfigMgr::RecordInputAsset(const MaxSDK::AssetManagement::AssetUser& asset, AssetEnumCallback& callback,
                                      DWORD flags) {
    if (asset.IsEmpty()) return;
    if ((flags & FILE_ENUM_MISSING_ONLY) && PathFileExistsW(asset.GetFileName().data())) return;
    callback.RecordAsset(asset);
}

void ReferenceMaker::EnumAuxFiles(AssetEnumCallback& assetEnum, DWORD flags) {
    for (int i = 0; i < NumRefs(); ++i)
        if (ReferenceTarget* target = GetReference(i)) target->EnumAuxFiles(assetEnum, flags);
}
