// The open scene: its root object (holding the top-level items as references), the current file path, the
// save-required flag, and saving, opening, resetting and emptying it with the host's notifications.
#pragma once

#include "ref.h"

namespace hostrt {

// The root of the open scene: a growable list of top-level items, each one a reference of the root.
// Adding and removing items is not recorded for undo.
class SceneRoot : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x4C9E27B1, 0x6A0D53F2);

    int Count() const { return items_.Count(); }
    ReferenceTarget* Get(int i) const { return i >= 0 && i < items_.Count() ? items_[i] : nullptr; }
    // Appends item as a new last reference; answers its index (-1 for a null item).
    int Add(ReferenceTarget* item);
    // Drops item i (later items move down); the item deletes itself when nothing else needs it.
    bool Remove(int i);
    // Drops the first entry holding item.
    bool Remove(ReferenceTarget* item) { return Remove(items_.IndexOf(item)); }

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"SceneRoot"; }
    int NumRefs() override { return items_.Count(); }
    RefTargetHandle GetReference(int i) override { return Get(i); }
    void SetReference(int i, RefTargetHandle target) override;
    // Saves the number of items (chunk 0x0001, u32); the items come back as references.
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

private:
    Tab<ReferenceTarget*> items_;
};

// Registers the scene's own classes in the class directory. Idempotent.
void RegisterSceneClasses();

// The open scene (one per process, never destroyed). Failures throw SceneFileError.
class Scene {
public:
    static Scene& Instance();

    SceneRoot* Root() { return root_; }
    // Full path of the open scene file, empty for an untitled scene.
    const MSTR& CurFilePath() const { return path_; }
    bool IsSaveRequired() const { return saveRequired_; }
    void SetSaveRequired(bool required) { saveRequired_ = required; }

    // Broadcasts 174 and 13, writes what the scene holds then (through a temporary file beside path, so a
    // failed save keeps the old file), broadcasts 14 (also after a failure, so handlers can undo what they
    // did for the save), then takes path as the current file and clears the save-required flag.
    void SaveScene(const MSTR& path);
    // Reads and checks the whole file first: a bad file changes nothing and sends nothing. Then broadcasts 9,
    // destroys the open scene, loads the file's objects, makes the path current and broadcasts 10. Should an
    // object fail to load after that point, the scene is left empty and untitled, 10 is still broadcast (it
    // closes what 9 opened) and the error is thrown.
    void OpenScene(const MSTR& path);
    // 5, an empty untitled scene, 6.
    void ResetScene();
    // 7, an empty untitled scene, 8.
    void NewScene();

private:
    Scene();
    void destroyContent();
    void installRoot(SceneRoot* root);

    SceneRoot* root_ = nullptr;
    MSTR path_;
    bool saveRequired_ = false;
};

}  // namespace hostrt
