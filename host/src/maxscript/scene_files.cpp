// Scene files in MAXScript: saveMaxFile, loadMaxFile, resetMaxFile, mergeMaxFile, saveNodes, the current file
// (maxFilePath, maxFileName), the save-required flag, checkForSave and render.
#include "maxscript/scene_values.h"

#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/string_literal.h"
#include "io/file_bytes.h"
#include "io/scene_file_error.h"
#include "io/scene_format.h"
#include "io/scene_reader.h"
#include "platform/listener_capture.h"
#include "platform/paths.h"
#include "scene/merge.h"
#include "scene/scene.h"

#include <filesystem>

namespace hostrt::mxs {

namespace {

// A scene file name as scripts give it: ".max" is added when the name has no extension.
std::wstring ScenePath(const Value& v) {
    std::wstring path = ToText(v);
    if (path.empty()) throw RuntimeError(L"Empty scene file name");
    if (hostrt::PathExtension(path).empty()) path += L".max";
    return path;
}

bool HasName(const CallArgs& args, std::size_t from, const wchar_t* name) {
    for (std::size_t i = from; i < args.positional.size(); ++i)
        if (args.positional[i].Is(Kind::Name) && EqualsNoCase(args.positional[i].Text(), name)) return true;
    return false;
}

// Runs a file operation of the scene; its failure is reported in the listener and answered as false.
bool Attempt(const std::wstring& what, const std::function<bool()>& op) {
    try {
        return op();
    } catch (const ScriptError&) {
        throw;
    } catch (const MAXException& e) {
        ListenerWrite(L"-- " + what + L" failed: " + std::wstring(e.message.data()) + L"\n");
        return false;
    } catch (const std::exception& e) {
        ListenerWrite(L"-- " + what + L" failed: " + MaxSDK::FromUTF8(e.what()) + L"\n");
        return false;
    }
}

Value SaveMaxFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"saveMaxFile", args, 1);
    const std::wstring path = ScenePath(args.positional[0]);
    const Value* useNewFile = args.Keyword(L"useNewFile");
    const bool makeCurrent = !useNewFile || useNewFile->Is(Kind::Unsupplied) || ToBool(*useNewFile);
    return Value::Bool(Attempt(L"saveMaxFile " + MaxScriptStringLiteral(path), [&] {
        Scene::Instance().SaveScene(MSTR(path.c_str()), makeCurrent);
        return true;
    }));
}

Value LoadMaxFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"loadMaxFile", args, 1);
    const std::wstring path = ScenePath(args.positional[0]);
    return Value::Bool(Attempt(L"loadMaxFile " + MaxScriptStringLiteral(path), [&] {
        std::error_code ec;
        if (!std::filesystem::exists(hostrt::ToNativePath(path), ec)) throw std::runtime_error("no such file");
        Scene::Instance().OpenScene(MSTR(path.c_str()));
        return true;
    }));
}

// mergeMaxFile path [#(names)] [#select] [#skipDups|#deleteOldDups|#mergeDups]
//              [#useSceneMtlDups|#useMergedMtlDups] [mergedNodes:array]
Value MergeMaxFile(CallContext&, CallArgs& args) {
    if (args.positional.empty()) throw ArgCountRangeError(L"mergeMaxFile", 1, 8, 0);
    const std::wstring path = ScenePath(args.positional[0]);
    MergeOptions options;
    options.selectMerged = HasName(args, 1, L"select");
    if (HasName(args, 1, L"skipDups")) options.dupAction = MERGE_DUPS_SKIP;
    if (HasName(args, 1, L"deleteOldDups")) options.dupAction = MERGE_DUPS_DELOLD;
    if (HasName(args, 1, L"useSceneMtlDups")) options.dupMtlAction = MERGE_DUP_MTL_USE_SCENE_MTL;
    std::vector<std::wstring> names;
    for (std::size_t i = 1; i < args.positional.size(); ++i) {
        const Value& a = args.positional[i];
        if (a.Is(Kind::Array))
            for (const Value& n : a.Items()) names.push_back(ToText(n));
        else if (!a.Is(Kind::Name))
            throw TypeError(L"mergeMaxFile wants names of nodes and #options, got: " + PrintForm(a));
    }
    std::vector<INode*> merged;
    std::vector<AnimHandle> handles;
    const bool ok = Attempt(L"mergeMaxFile \"" + path + L"\"", [&] {
        merged = MergeSceneFile(MSTR(path.c_str()), options);
        for (INode* n : merged) handles.push_back(Animatable::GetHandleByAnim(n));
        return true;
    });
    // Given names keep only the top-level nodes of those names (and what is below them).
    if (ok && !names.empty()) {
        std::vector<INode*> unwanted;
        for (INode* n : merged) {
            INode* parent = n->GetParentNode();
            if (parent && !parent->IsRootNode()) continue;
            bool wanted = false;
            for (const std::wstring& name : names) wanted = wanted || EqualsNoCase(name, n->GetName());
            if (!wanted) unwanted.push_back(n);
        }
        INodeTab tab;
        for (INode* n : unwanted) tab.Append(1, &n);
        GetCOREInterface()->DeleteNodes(tab, false);
    }
    if (const Value* out = args.Keyword(L"mergedNodes"); out && out->Is(Kind::Array)) {
        out->Items().clear();
        for (AnimHandle h : handles)
            if (Animatable* n = Animatable::GetAnimByHandle(h)) out->Items().push_back(Value::Host(n));
    }
    return Value::Bool(ok);
}

Value SaveNodes(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"saveNodes", args, 2);
    const std::vector<INode*> nodes = NodeListArg(ctx, args.positional[0]);
    const std::wstring path = ScenePath(args.positional[1]);
    return Value::Bool(Attempt(L"saveNodes \"" + path + L"\"", [&] {
        SaveNodesToFile(nodes, MSTR(path.c_str()));
        return true;
    }));
}

// holdMaxFile / fetchMaxFile: the scene kept in the host's hold file and brought back, with the file name it
// had when it was held (the scene's own file is neither read nor written).
struct HeldScene {
    bool held = false;
    MSTR filePath;
};
HeldScene& Held() {
    static HeldScene held;
    return held;
}

std::wstring HoldFilePath() { return std::wstring(GetCOREInterface()->GetDir(APP_TEMP_DIR)) + L"maxhold.mx"; }

Value HoldMaxFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"holdMaxFile", args, 0);
    const MSTR filePath = Scene::Instance().CurFilePath();
    const bool ok = Attempt(L"holdMaxFile", [&] {
        Scene::Instance().SaveScene(MSTR(HoldFilePath().c_str()), false);
        return true;
    });
    if (ok) Held() = HeldScene{true, filePath};
    return Value::Bool(ok);
}

Value FetchMaxFile(CallContext&, CallArgs& args) {
    CheckArgCount(L"fetchMaxFile", args, 0);
    if (!Held().held) {
        ListenerWrite(L"-- fetchMaxFile failed: no scene is held\n");
        return Value::Bool(false);
    }
    const bool ok = Attempt(L"fetchMaxFile", [&] {
        Scene::Instance().OpenScene(MSTR(HoldFilePath().c_str()));
        Scene::Instance().SetCurFilePath(Held().filePath);
        return true;
    });
    return Value::Bool(ok);
}

// getMaxFileVersionData file [quiet:<bool>]: reads the whole file and checks it as a scene file without creating
// anything; answers #(format version, 0, format version). A file that cannot be read as a scene answers
// undefined, or, with quiet:false, raises an error that names the file and the reason.
Value GetMaxFileVersionData(CallContext&, CallArgs& args) {
    CheckArgCount(L"getMaxFileVersionData", args, 1);
    const Value* quiet = args.Keyword(L"quiet");
    const bool beQuiet = !quiet || quiet->Is(Kind::Unsupplied) || ToBool(*quiet);
    const MSTR path(ToText(args.positional[0]).c_str());
    try {
        ParseSceneFile(ReadFileBytes(path), path);
    } catch (const SceneFileError& e) {
        if (beQuiet) return Value::Undefined();
        throw RuntimeError(std::wstring(e.message.data()));
    }
    const int version = int(scenefile::kVersion);
    return Value::Array({Value::Int(version), Value::Int(0), Value::Int(version)});
}

}  // namespace

void RegisterSceneFileFunctions() {
    RegisterGlobalFunction(L"getMaxFileVersionData", GetMaxFileVersionData);
    RegisterGlobalFunction(L"holdMaxFile", HoldMaxFile);
    RegisterGlobalFunction(L"fetchMaxFile", FetchMaxFile);
    RegisterGlobalFunction(L"saveMaxFile", SaveMaxFile);
    RegisterGlobalFunction(L"loadMaxFile", LoadMaxFile);
    RegisterGlobalFunction(L"mergeMaxFile", MergeMaxFile);
    RegisterGlobalFunction(L"saveNodes", SaveNodes);
    RegisterGlobalFunction(L"resetMaxFile", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"resetMaxFile", args, 0, 1);
        // Headless, there is nobody to ask: #noPrompt or not, the scene is reset.
        GetCOREInterface()->FileReset(TRUE);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"checkForSave", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"checkForSave", args, 0);
        // Without a user to answer the question, going on is always allowed.
        return Value::Bool(true);
    });
    RegisterGlobalFunction(L"getSaveRequired", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getSaveRequired", args, 0);
        return Value::Bool(GetCOREInterface()->IsSaveRequired() != 0);
    });
    RegisterGlobalFunction(L"setSaveRequired", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"setSaveRequired", args, 1);
        GetCOREInterface()->SetSaveRequiredFlag(ToBool(args.positional[0]));
        return Value::Ok();
    });
    RegisterGlobalFunction(L"render", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"render", args, 0);
        GetCOREInterface()->RenderScene();
        return Value::Ok();
    });
    // The current file's folder (with its separator at the end) and its name; both "" for an untitled scene.
    RegisterSystemVariable(L"maxFilePath", {[] {
                                                const std::wstring file = Scene::Instance().CurFilePath().data();
                                                return Value::String(hostrt::PathDirectory(file));
                                            },
                                            nullptr});
    RegisterSystemVariable(L"maxFileName", {[] {
                                                const std::wstring file = Scene::Instance().CurFilePath().data();
                                                return Value::String(hostrt::PathFileName(file));
                                            },
                                            nullptr});
}

}  // namespace hostrt::mxs
