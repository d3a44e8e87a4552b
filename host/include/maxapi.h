// The host's core interface, Interface, reached with GetCOREInterface(): host folders and settings, session
// flags, the prompt line, time and viewport redraws; UI colours, UI scale and performance timers beside it.
#pragma once

#include "geom.h"
#include "strclass.h"
#include "tab.h"

#include <chrono>

class Interface;
class ReferenceTarget;
class INode;
class Object;
class BaseObject;
class Modifier;
class MtlBase;
class MtlBaseLib;
class ILayerManager;
namespace MaxSDK {
class QmaxMainWindow;  // Qt/QmaxMainWindow.h
}

// Clone kinds of Interface::CloneNodes.
#define NODE_COPY 0
#define NODE_INSTANCE 1
#define NODE_REFERENCE 2
// Merge options of Interface::MergeFromFile: duplicate names, duplicate materials, reparenting.
#define MERGE_DUPS_PROMPT 0
#define MERGE_DUPS_MERGE 1
#define MERGE_DUPS_SKIP 2
#define MERGE_DUPS_DELOLD 3
#define MERGE_DUP_MTL_PROMPT 0
#define MERGE_DUP_MTL_USE_MERGED 1
#define MERGE_DUP_MTL_USE_SCENE_MTL 2
#define MERGE_DUP_MTL_RENAME 3
#define MERGE_REPARENT_PROMPT 0
#define MERGE_REPARENT_ALWAYS 1
#define MERGE_REPARENT_NEVER 2
// Named selection set notifications: 184 after a set is made and 185 after one is removed (call parameter: an
// MSTR* holding the set's name), 188 after one is renamed (call parameter: a NameChange* of inode.h, its node
// null).
#define NOTIFY_NAMED_SEL_SET_CREATED 0x000000B8
#define NOTIFY_NAMED_SEL_SET_DELETED 0x000000B9
#define NOTIFY_NAMED_SEL_SET_RENAMED 0x000000BC
// Command panel task modes.
#define TASK_MODE_CREATE 1
#define TASK_MODE_MODIFY 2

// Host folders answered by Interface::GetDir. Every folder ends with a separator.
#define APP_SCENE_DIR 1     // the project's scene folder, made on first request
#define APP_MAXROOT_DIR 20  // the installation root: the folder holding the host's bin folder
#define APP_TEMP_DIR 29     // the host's temporary folder, made on first request

// Flags of Interface::RedrawViews.
#define REDRAW_BEGIN (1 << 0)
#define REDRAW_INTERACTIVE (1 << 1)
#define REDRAW_END (1 << 2)
#define REDRAW_NORMAL (1 << 3)

// Hears the next viewport redraws; may unregister itself from proc.
class RedrawViewsCallback {
public:
    virtual ~RedrawViewsCallback() = default;
    virtual void proc(Interface* ip) = 0;
};

class Interface {
public:
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    // ---- Platform: host folders and settings.
    // The folder of number which (APP_xxx_DIR) with a trailing separator; "" for a number the host does not
    // know. The text stays valid until that folder is changed.
    const MCHAR* GetDir(int which);
    // Full path of the host's INI settings file.
    MSTR GetMAXIniFile();

    // ---- Platform: session state.
    // In quiet mode the host shows nothing: message boxes are answered with their default button.
    BOOL GetQuietMode();
    void SetQuietMode(BOOL quiet);
    // Whether the host renders as a network render server (without a viewport UI).
    BOOL IsNetServer();
    void SetNetServer(BOOL netServer);
    // Whether the host has a user interface; a headless run starts without one.
    BOOL HasUserInterface();
    void SetHasUserInterface(BOOL hasUI);
    // The scene explorer's live update (on at start): a view that follows every added or removed node, which
    // bulk scene work switches off while it runs.
    BOOL GetSceneExplorerLiveUpdate();
    void SetSceneExplorerLiveUpdate(BOOL on);
    // The main window: owner of message boxes and dialogs. Never null.
    HWND GetMAXHWnd();
    // The main window as a Qt widget, parent of a plug-in's Qt windows (Qt/QmaxMainWindow.h); null in a session
    // without a graphical interface.
    MaxSDK::QmaxMainWindow* GetQmaxMainWindow();

    // ---- Platform: the prompt line.
    void PushPrompt(const MCHAR* text);
    void PopPrompt();
    // Replaces the prompt on top of the stack (pushes one when the stack is empty).
    void ReplacePrompt(const MCHAR* text);
    // Shows text over the prompt stack for msec milliseconds, or until RemoveTempPrompt.
    void DisplayTempPrompt(const MCHAR* text, int msec = 1000);
    void RemoveTempPrompt();

    // ---- Platform: time and viewports.
    // The current time in ticks (0 at start).
    TimeValue GetTime();
    void SetTime(TimeValue t, BOOL redraw = TRUE);
    // The scene's animation range (frames 0 to 100 after a reset).
    Interval GetAnimRange();
    void SetAnimRange(Interval range);
    // Redraws the viewports at time t: counted, and every registered redraw callback hears it.
    void RedrawViews(TimeValue t, DWORD vpFlags = REDRAW_NORMAL, ReferenceTarget* change = nullptr);
    void RegisterRedrawViewsCallback(RedrawViewsCallback* cb);
    void UnRegisterRedrawViewsCallback(RedrawViewsCallback* cb);
    // Scene redraws off and on again (nesting: as many enables as disables); while off, RedrawViews does nothing.
    void DisableSceneRedraw();
    void EnableSceneRedraw();
    int IsSceneRedrawDisabled();

    // ---- Scene: nodes. Creation broadcasts 64 and 67; deletion 68 before and 69 after each node.
    INode* GetRootNode();
    // A new node under the scene root holding obj, named after the object, on the current layer.
    INode* CreateObjectNode(Object* obj);
    INode* GetINodeByHandle(ULONG handle);
    // The first node of that name in a depth-first walk from the scene root; null when none.
    INode* GetINodeByName(const MCHAR* name);
    void DeleteNode(INode* node, BOOL redraw = TRUE, BOOL overrideSlaves = FALSE);
    // Deletes every node of the table (nodes already gone are skipped); children are re-linked to the root,
    // keeping their world transforms when keepChildTM is set.
    void DeleteNodes(INodeTab& nodes, bool keepChildTM = true, bool redraw = true, bool overrideSlaveTM = false);
    // Clones the nodes (and what they reference) in one remap operation; answers the originals and the clones.
    bool CloneNodes(INodeTab& nodes, const Point3& offset, bool expandHierarchies = true, int cloneType = NODE_COPY,
                    INodeTab* resultSource = nullptr, INodeTab* resultTarget = nullptr);

    // ---- Scene: selection (undoable while holding).
    int GetSelNodeCount();
    INode* GetSelNode(int i);
    void ClearNodeSelection(BOOL redraw = TRUE);
    void SelectNode(INode* node, int clearSel = 1);
    void SelectNodeTab(INodeTab& nodes, BOOL sel, BOOL redraw = TRUE);

    // ---- Scene: files.
    // Opens a scene file (9 ... 10); 0 on failure, with the reason in the listener.
    int LoadFromFile(const MCHAR* name, BOOL refresh = TRUE);
    // Saves the scene (174, 13 ... 14); 0 on failure.
    int SaveToFile(const MCHAR* name, BOOL clearNeedSaveFlag = TRUE, BOOL useNewFile = TRUE);
    // Resets (5 ... 6) or renews (7 ... 8) the scene.
    void FileReset(BOOL noPrompt = TRUE);
    void FileNew();
    // Merges a scene file: its top-level nodes become new last children of the root, duplicate names are kept,
    // its materials join the scene material library, layers are made or reused by name; 67 per node, 267 at the
    // end. Answers 0 when the file cannot be read.
    int MergeFromFile(const MCHAR* name, BOOL mergeAll = FALSE, BOOL selMerged = FALSE, BOOL refresh = TRUE,
                      int dupAction = MERGE_DUPS_PROMPT, void* mrgList = nullptr, int dupMtlAction = MERGE_DUP_MTL_PROMPT,
                      int reparentAction = MERGE_REPARENT_PROMPT, BOOL includeFullGroup = FALSE);
    // Writes a scene file with just these nodes (and what they need); 13 ... 14 around it.
    int SaveNodes(const INodeTab* nodes, const MCHAR* name);
    // Why the last file operation of the four above failed, as the listener showed it; empty after a success.
    MSTR GetLastFileError();
    MSTR GetCurFilePath();
    MSTR GetCurFileName();
    BOOL IsSaveRequired();
    void SetSaveRequiredFlag(BOOL required = TRUE);

    // ---- Scene: materials, layers, named selection sets.
    MtlBaseLib* GetSceneMtls();
    // The compact material editor's 24 slots.
    MtlBase* GetMtlSlot(int slot);
    void PutMtlToMtlEditor(MtlBase* mtl, int slot);
    ILayerManager* GetLayerManager();
    int GetNumNamedSelSets();
    MSTR GetNamedSelSetName(int i);
    int GetNamedSelSetItemCount(int i);
    INode* GetNamedSelSetItem(int i, int j);
    // 184 when made, 185 when removed, 188 when renamed.
    BOOL AddNewNamedSelSet(INodeTab& nodes, const MSTR& name);
    BOOL ReplaceNamedSelSet(INodeTab& nodes, const MSTR& name);
    BOOL RemoveNamedSelSet(const MSTR& name);
    BOOL SetNamedSelSetName(int i, const MSTR& name);

    // ---- Scene: the scene effects list, saved with the scene (effects with node lists: iscene_effects.h).
    int NumSceneEffects();
    // Null for an index out of range.
    ReferenceTarget* GetSceneEffect(int i);
    // Appends an effect; answers its index (-1 for no effect; an effect listed already keeps its index).
    int AddSceneEffect(ReferenceTarget* effect);
    BOOL DeleteSceneEffect(int i);

    // ---- Scene: modifier stacks. Adding or deleting broadcasts 113 ... 114 or 115 ... 116 around the change.
    // A world-space modifier goes on top of the node's world-space stack (made when missing); an object-space
    // one in front of index before of the object-space stack (0 = top; a stack is made when the node has none).
    // Answers false (changing nothing) when the node has no object or before is out of range.
    bool AddModifier(INode& node, Modifier& mod, int before = 0);
    // Deletes the modifier from whichever of the node's stacks holds it; false when none does.
    bool DeleteModifier(INode& node, Modifier& mod);

    // ---- Scene: rendering and the command panel.
    // Renders the scene: 20 before, 21 after; no image is made.
    void RenderScene();
    int GetCommandPanelTaskMode();
    void SetCommandPanelTaskMode(int mode);
    BaseObject* GetCurEditObject();
    void SetCurEditObject(BaseObject* obj);

protected:
    Interface() = default;
    ~Interface() = default;
};

// The host's one Interface.
Interface* GetCOREInterface();

// A colour of the host's user interface, components in 0..1. Colour 20 (the helper-object colour) is defined;
// every other number answers a neutral grey.
Point3 GetUIColor(int which);

namespace MaxSDK {
// The scale of the user interface (1.0 unless the host was told otherwise).
float GetUIScaleFactor();
// A size in pixels scaled by the UI scale factor (truncated).
int UIScaled(int pixels);

namespace PerformanceTools {
// Measures wall-clock time: StartTimer, then EndTimer answers the seconds since (since construction when
// StartTimer was never called).
class Timer {
public:
    Timer() : start_(std::chrono::steady_clock::now()) {}
    void StartTimer() { start_ = std::chrono::steady_clock::now(); }
    double EndTimer() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_;
};
}  // namespace PerformanceTools
}  // namespace MaxSDK
