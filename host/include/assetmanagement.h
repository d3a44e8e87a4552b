// File assets: the asset of a file name (AssetUser), asset enumeration over the scene (EnumAuxFiles with an
// AssetEnumCallback) and the accessors through which an enumeration may re-target an asset.
#pragma once

#include "strclass.h"

namespace MaxSDK::AssetManagement {

// Asset type numbers. The host's own types have names; plug-ins may also name theirs by number.
using AssetType = int;
constexpr AssetType kOtherAsset = 0;
constexpr AssetType kBitmapAsset = 1;
constexpr AssetType kXRefAsset = 2;  // an external scene: the file of an external-scene entry of the scene root
constexpr AssetType kPhotometricAsset = 3;
constexpr AssetType kAnimationAsset = 4;
constexpr AssetType kVideoPost = 5;
constexpr AssetType kBatchRender = 6;
constexpr AssetType kExternalLink = 7;
constexpr AssetType kRenderOutput = 8;
using AssetId = int;
constexpr AssetId kInvalidId = -1;

// One file asset: a file name and its type. The empty asset has no file name and the invalid id.
class AssetUser {
public:
    AssetUser() = default;
    AssetUser(const MSTR& fileName, AssetType type);
    // kInvalidId for the empty asset, else an id that is the same for the same file name and type.
    AssetId GetId() const { return id_; }
    bool IsEmpty() const { return id_ == kInvalidId; }
    const MSTR& GetFileName() const { return fileName_; }
    AssetType GetType() const { return type_; }
    bool operator==(const AssetUser& o) const { return id_ == o.id_; }
    // The asset's file as a full path: an absolute name as it stands; a relative one found in the open scene's
    // folder, else taken from the current folder (a missing file still gets its full path). False for the empty
    // asset.
    bool GetFullFilePath(MSTR& path) const;

private:
    AssetId id_ = kInvalidId;
    MSTR fileName_;
    AssetType type_ = 0;
};

// The asset manager: the one place that hands out assets. An asset of a file name and type is the same asset
// (same id) every time it is asked for; an empty file name gives the empty asset.
class IAssetManager {
public:
    static IAssetManager* GetInstance();
    // autoAcquire is accepted for the SDK's sake; assets here are never released.
    AssetUser GetAsset(const MSTR& fileName, AssetType type, bool autoAcquire = true) const;
    // The asset of an id; the empty asset for an id never handed out.
    AssetUser GetAsset(AssetId id) const;
};

// One asset declared to an enumeration, which may read it and give it a new file.
class IAssetAccessor {
public:
    virtual ~IAssetAccessor() = default;
    virtual AssetUser GetAsset() const = 0;
    // Makes the owner use asset instead; answers whether it did.
    virtual bool SetAsset(const AssetUser& asset) = 0;
    virtual AssetType GetAssetType() const = 0;
    virtual bool IsInputAsset() const { return true; }
};

}  // namespace MaxSDK::AssetManagement

// Flags of EnumAuxFiles.
#define FILE_ENUM_INACTIVE 0x00000001
#define FILE_ENUM_VP 0x00000002
#define FILE_ENUM_RENDER 0x00000004
#define FILE_ENUM_ALL (FILE_ENUM_INACTIVE | FILE_ENUM_VP | FILE_ENUM_RENDER)
#define FILE_ENUM_MISSING_ONLY 0x00000100
#define FILE_ENUM_CHECK_AWORK1 0x00010000    // skip animatables whose A_WORK1 is set, and set it on the others
#define FILE_ENUM_ACCESSOR_INTERFACE 0x00040000  // the callback is an IEnumAuxAssetsCallback: declare accessors

// Hears every asset of an enumeration.
class AssetEnumCallback {
public:
    virtual ~AssetEnumCallback() = default;
    virtual void RecordAsset(const MaxSDK::AssetManagement::AssetUser& asset) = 0;
};

// The callback of an enumeration that wants accessors (FILE_ENUM_ACCESSOR_INTERFACE).
class IEnumAuxAssetsCallback : public AssetEnumCallback {
public:
    virtual void DeclareAsset(MaxSDK::AssetManagement::IAssetAccessor& accessor) = 0;
};

// The path configuration: records an input asset with an enumeration (missing files are still recorded, unless
// FILE_ENUM_MISSING_ONLY asks for missing ones only and the file exists).
class IPathConfigMgr {
public:
    static IPathConfigMgr* GetPathConfigMgr();
    void RecordInputAsset(const MaxSDK::AssetManagement::AssetUser& asset, AssetEnumCallback& callback,
                          DWORD flags);
};
