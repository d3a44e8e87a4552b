// The open scene: the root node (with its external-scene entries), the scene parts (material library, layer
// manager, ...), the selection, the current file path and the save-required flag; saving, opening, resetting
// and emptying it with the host's notifications.
#pragma once

#include "ref.h"
#include "scene/scene_parts.h"

#include <vector>

class BaseObject;

namespace hostrt {

class Node;

// Registers the scene's own classes (nodes, the scene node container, item lists) in the class directory.
// Idempotent.
void RegisterSceneClasses();

// Deletes trees of nodes (each root and every node below it) with what only they need, without
// notifications: objects something outside the trees really depends on stay.
void DestroyNodeTrees(const std::vector<Node*>& roots);

// Deletes roots and every object they reach (through references, custom-attribute containers and host links)
// that nothing outside really depends on, without notifications. Objects reached from protect are spared.
// Nodes among the deleted leave the scene node container and the selection first.
void DestroyObjectGraph(const std::vector<ReferenceTarget*>& roots, const std::vector<ReferenceTarget*>& protect = {});

// The open scene (one per process, never destroyed). File failures throw SceneFileError.
class Scene {
public:
    static Scene& Instance();

    Node* RootNode() { return root_; }
    // Full path of the open scene file, empty for an untitled scene.
    const MSTR& CurFilePath() const { return path_; }
    // Names the scene's file without reading or writing it (fetching a held scene puts its name back).
    void SetCurFilePath(const MSTR& path) { path_ = path; }
    bool IsSaveRequired() const { return saveRequired_; }
    // True while SaveScene writes the file (between the pre-save and post-save notifications).
    bool IsWritingFile() const { return writingFile_; }
    void SetSaveRequired(bool required) { saveRequired_ = required; }

    // Scene parts: registered once per process; every scene gets a fresh item of each.
    void RegisterPart(const ScenePart& part);
    ReferenceTarget* PartItem(ScenePartRole role) const;

    // Broadcasts 174 and 13, writes what the scene holds then (the root node's tree and every part's item,
    // through a temporary file beside path, so a failed save keeps the old file), broadcasts 14 (also after a
    // failure), then takes path as the current file and clears the save-required flag.
    // With makeCurrent unset the file is a copy: the current path and the save-required flag stay.
    void SaveScene(const MSTR& path, bool makeCurrent = true);
    // Reads and checks the whole file first: a bad file changes nothing and sends nothing. Then broadcasts 9,
    // empties the scene, loads the file's nodes and parts (a part the file lacks starts fresh), makes the path
    // current and broadcasts 10. Should an object fail to load after 9, the scene is left empty and untitled,
    // 10 is still broadcast and the error is thrown.
    void OpenScene(const MSTR& path);
    // 5, an empty untitled scene, 6.
    void ResetScene();
    // 7, an empty untitled scene, 8.
    void NewScene();

    // The selection, in the order nodes were selected.
    const std::vector<Node*>& Selection() const { return selection_; }
    // Makes nodes the selection (nodes that are gone or roots are left out); undoable while holding.
    void SetSelection(std::vector<Node*> nodes);
    // Takes a node that is going away out of the selection (not undoable).
    void DropFromSelection(Node* node);
    // Puts a node that comes back (an undone deletion) into the selection at position index (not recorded).
    void RestoreToSelection(Node* node, int index);

    // Command panel: task mode and the object being edited (held by handle: a deleted object reads as null).
    int TaskMode() const { return taskMode_; }
    void SetTaskMode(int mode) { taskMode_ = mode; }
    BaseObject* CurEditObject() const;
    void SetCurEditObject(BaseObject* obj);

    // The animation range (frames 0 to 100 in a fresh scene). Not yet written to scene files.
    Interval AnimRange() const { return animRange_; }
    void SetAnimRange(Interval range) { animRange_ = range; }

    // The root node and every part's item: what a scene save writes.
    std::vector<ReferenceTarget*> ContentRoots();

private:
    struct Installed {
        ScenePart part;
        ReferenceTarget* item = nullptr;
    };

    Scene();
    // A fresh root and fresh part items; the old ones are destroyed.
    void emptyScene();
    // Installs item for part (made fresh when null) and answers the item it replaced.
    ReferenceTarget* install(Installed& slot, ReferenceTarget* item);

    Node* root_ = nullptr;
    std::vector<Installed> parts_;  // in role order
    std::vector<Node*> selection_;
    MSTR path_;
    bool saveRequired_ = false;
    bool writingFile_ = false;
    int taskMode_ = 1;
    Interval animRange_{0, 100 * GetTicksPerFrame()};
    AnimHandle editObject_ = 0;
};

}  // namespace hostrt
