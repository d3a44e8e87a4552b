// Asset enumeration of the helper: its two file names are input assets of type 7, declared through accessors
// when the enumeration wants them.
#include "assetmanagement.h"
#include "helper/vandrels_helper.h"

using MaxSDK::AssetManagement::AssetType;
using MaxSDK::AssetManagement::AssetUser;

namespace {

AssetUser AssetOf(IParamBlock2* pblock, ParamID id) {
    const MCHAR* name = pblock ? pblock->GetStr(id) : nullptr;
    return AssetUser(MSTR(name ? name : L""), VH_FILE_ASSET_TYPE);
}

// One of the helper's file-name parameters as an asset that the enumeration may re-target.
class VandrelsHelperAssetAccessor : public MaxSDK::AssetManagement::IAssetAccessor {
public:
    VandrelsHelperAssetAccessor(VandrelsHelper* helper, ParamID id) : helper_(helper), id_(id) {}
    AssetUser GetAsset() const override { return AssetOf(helper_->ParamBlock(), id_); }
    bool SetAsset(const AssetUser& asset) override {
        if (!helper_->ParamBlock()) return false;
        helper_->ParamBlock()->SetValue(id_, 0, asset.GetFileName());
        return true;
    }
    AssetType GetAssetType() const override { return VH_FILE_ASSET_TYPE; }

private:
    VandrelsHelper* helper_;
    ParamID id_;
};

}  // namespace

void VandrelsHelper::EnumAuxFiles(AssetEnumCallback& assetEnum, DWORD flags) {
    if (flags & FILE_ENUM_CHECK_AWORK1) {
        if (TestAFlag(A_WORK1)) return;
        SetAFlag(A_WORK1);
    }
    for (ParamID id : {ParamID(vh_file_name), ParamID(vh_proxy_file_name)}) {
        const AssetUser asset = AssetOf(data_.pblock, id);
        if (asset.IsEmpty()) continue;
        if (flags & FILE_ENUM_ACCESSOR_INTERFACE) {
            VandrelsHelperAssetAccessor accessor(this, id);
            static_cast<IEnumAuxAssetsCallback&>(assetEnum).DeclareAsset(accessor);
        } else {
            IPathConfigMgr::GetPathConfigMgr()->RecordInputAsset(asset, assetEnum, flags);
        }
    }
    HelperObject::EnumAuxFiles(assetEnum, flags);
}
