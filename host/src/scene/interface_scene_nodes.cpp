// The scene members of Interface for nodes, selection, files, the save-required flag, rendering and the
// command panel.
#include "io/scene_file_error.h"
#include "listener.h"
#include "maxapi.h"
#include "notify.h"
#include "object.h"
#include "scene/merge.h"
#include "scene/node.h"
#include "scene/node_operations.h"
#include "scene/scene.h"

using hostrt::Node;
using hostrt::Scene;

namespace {

std::vector<INode*> asVector(const INodeTab& nodes) { return {nodes.begin(), nodes.end()}; }

MSTR& LastFileError() {
    static MSTR text;
    return text;
}

// Runs a file operation; a failure answers 0, puts its reason in the listener and keeps it for
// GetLastFileError.
template <class F> int reportFailure(F&& f) {
    MSTR& reason = LastFileError();
    reason = MSTR();
    try {
        f();
        return 1;
    } catch (const MAXException& e) {
        reason = e.message;
    } catch (const std::exception& e) {
        reason = MSTR::FromUTF8(e.what());
    }
    mprintf(L"-- %s\n", reason.data());
    return 0;
}

}  // namespace

// ---------------------------------------------------------------------------------------------------- nodes

INode* Interface::GetRootNode() { return Scene::Instance().RootNode(); }

INode* Interface::CreateObjectNode(Object* obj) { return hostrt::CreateSceneNode(obj); }

INode* Interface::GetINodeByHandle(ULONG handle) { return Node::ByHandle(handle); }

INode* Interface::GetINodeByName(const MCHAR* name) {
    return hostrt::FindNodeByName(Scene::Instance().RootNode(), name);
}

void Interface::DeleteNode(INode* node, BOOL redraw, BOOL) {
    hostrt::DeleteSceneNodes({node}, true);
    if (redraw) RedrawViews(GetTime());
}

void Interface::DeleteNodes(INodeTab& nodes, bool keepChildTM, bool redraw, bool) {
    hostrt::DeleteSceneNodes(asVector(nodes), keepChildTM);
    if (redraw) RedrawViews(GetTime());
}

bool Interface::CloneNodes(INodeTab& nodes, const Point3& offset, bool expandHierarchies, int cloneType,
                           INodeTab* resultSource, INodeTab* resultTarget) {
    const hostrt::ClonedNodes cloned = hostrt::CloneSceneNodes(asVector(nodes), offset, expandHierarchies, cloneType);
    if (resultSource)
        for (Node* n : cloned.sources) resultSource->Append(n);
    if (resultTarget)
        for (Node* n : cloned.clones) resultTarget->Append(n);
    return !cloned.clones.empty();
}

// ------------------------------------------------------------------------------------------------ selection

int Interface::GetSelNodeCount() { return int(Scene::Instance().Selection().size()); }

INode* Interface::GetSelNode(int i) {
    const auto& sel = Scene::Instance().Selection();
    return i >= 0 && i < int(sel.size()) ? sel[std::size_t(i)] : nullptr;
}

void Interface::ClearNodeSelection(BOOL redraw) {
    Scene::Instance().SetSelection({});
    if (redraw) RedrawViews(GetTime());
}

void Interface::SelectNode(INode* node, int clearSel) {
    std::vector<Node*> sel = clearSel ? std::vector<Node*>{} : Scene::Instance().Selection();
    if (Node* n = Node::From(node)) sel.push_back(n);
    Scene::Instance().SetSelection(std::move(sel));
}

void Interface::SelectNodeTab(INodeTab& nodes, BOOL sel, BOOL redraw) {
    std::vector<Node*> next = Scene::Instance().Selection();
    for (INode* in : nodes) {
        Node* n = Node::From(in);
        if (!n) continue;
        if (sel)
            next.push_back(n);
        else
            next.erase(std::remove(next.begin(), next.end(), n), next.end());
    }
    Scene::Instance().SetSelection(std::move(next));
    if (redraw) RedrawViews(GetTime());
}

// ---------------------------------------------------------------------------------------------------- files

int Interface::LoadFromFile(const MCHAR* name, BOOL refresh) {
    const int ok = reportFailure([&] { Scene::Instance().OpenScene(MSTR(name)); });
    if (ok && refresh) RedrawViews(GetTime());
    return ok;
}

int Interface::SaveToFile(const MCHAR* name, BOOL clearNeedSaveFlag, BOOL useNewFile) {
    Scene& s = Scene::Instance();
    const bool keptFlag = s.IsSaveRequired();
    const int ok = reportFailure([&] { s.SaveScene(MSTR(name ? name : L""), useNewFile != FALSE); });
    if (ok && !clearNeedSaveFlag) s.SetSaveRequired(keptFlag);
    return ok;
}

void Interface::FileReset(BOOL) { Scene::Instance().ResetScene(); }

void Interface::FileNew() { Scene::Instance().NewScene(); }

int Interface::MergeFromFile(const MCHAR* name, BOOL mergeAll, BOOL selMerged, BOOL refresh, int dupAction,
                             void* mrgList, int dupMtlAction, int reparentAction, BOOL includeFullGroup) {
    hostrt::MergeOptions options;
    options.selectMerged = selMerged != FALSE;
    options.dupAction = dupAction;
    options.dupMtlAction = dupMtlAction;
    const int ok = reportFailure([&] { hostrt::MergeSceneFile(MSTR(name ? name : L""), options); });
    if (ok && refresh) RedrawViews(GetTime());
    return ok;
}

int Interface::SaveNodes(const INodeTab* nodes, const MCHAR* name) {
    if (!nodes) return 0;
    return reportFailure([&] { hostrt::SaveNodesToFile(asVector(*nodes), MSTR(name ? name : L"")); });
}

MSTR Interface::GetLastFileError() { return LastFileError(); }

MSTR Interface::GetCurFilePath() { return Scene::Instance().CurFilePath(); }

MSTR Interface::GetCurFileName() {
    const std::wstring& p = Scene::Instance().CurFilePath().str();
    const auto slash = p.find_last_of(L"/\\");
    return MSTR(slash == std::wstring::npos ? p : p.substr(slash + 1));
}

BOOL Interface::IsSaveRequired() { return Scene::Instance().IsSaveRequired(); }

void Interface::SetSaveRequiredFlag(BOOL required) { Scene::Instance().SetSaveRequired(required != FALSE); }

// ---------------------------------------------------------------------------------- render, command panel

void Interface::RenderScene() {
    BroadcastNotification(NOTIFY_PRE_RENDER);
    BroadcastNotification(NOTIFY_POST_RENDER);
}

int Interface::GetCommandPanelTaskMode() { return Scene::Instance().TaskMode(); }
void Interface::SetCommandPanelTaskMode(int mode) { Scene::Instance().SetTaskMode(mode); }
BaseObject* Interface::GetCurEditObject() { return Scene::Instance().CurEditObject(); }
void Interface::SetCurEditObject(BaseObject* obj) { Scene::Instance().SetCurEditObject(obj); }
Interval Interface::GetAnimRange() { return Scene::Instance().AnimRange(); }
void Interface::SetAnimRange(Interval range) { Scene::Instance().SetAnimRange(range); }
