// The application around scripts: message boxes (messageBox, queryBox, yesNoCancelBox, answered headless like
// the host's other boxes, with `hostDialogs` to script the answers), viewport redraws, memory (gc, heapSize),
// quitting (quitMax), the listener (clearListener), the machine (sysInfo), and the runtimes this host does not
// have (.NET, Python), which answer a clear error instead of undefined.
#include "maxscript/builtins.h"

#include "maxapi.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"
#include "maxscript/quit.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "platform/listener_capture.h"
#include "platform/paths.h"
#include "platform/session.h"
#include "strclass.h"
#include "winshim.h"

#include <pwd.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace hostrt::mxs {

namespace {

// Boxes of scripts carry the title "MAXScript" unless the script gives one.
int ShowBox(const CallArgs& args, const wchar_t* function, UINT type) {
    CheckArgCount(function, args, 1);
    const Value* title = args.Keyword(L"title");
    const bool titled = title && !title->Is(Kind::Unsupplied);
    const std::wstring text = DisplayForm(args.positional[0]);
    const std::wstring caption = titled ? ToText(*title) : L"MAXScript";
    if (const Value* beep = args.Keyword(L"beep"); beep && !beep->Is(Kind::Unsupplied) && ToBool(*beep))
        MessageBeep(type & MB_ICONMASK);
    return MessageBoxW(GetCOREInterface()->GetMAXHWnd(), text.c_str(), caption.c_str(), type);
}

// The answers a script can queue for the next boxes: #ok, #cancel, #yes, #no, #abort, #retry, #ignore.
int AnswerOf(const Value& v) {
    static const std::pair<const wchar_t*, int> kAnswers[] = {{L"ok", IDOK},         {L"cancel", IDCANCEL},
                                                              {L"yes", IDYES},       {L"no", IDNO},
                                                              {L"abort", IDABORT},   {L"retry", IDRETRY},
                                                              {L"ignore", IDIGNORE}};
    if (v.Is(Kind::Name))
        for (const auto& [name, id] : kAnswers)
            if (EqualsNoCase(v.Text(), name)) return id;
    throw RuntimeError(L"hostDialogs.pushAnswer wants #ok, #cancel, #yes, #no, #abort, #retry or #ignore, got: " +
                       PrintForm(v));
}

void RegisterMessageBoxes() {
    RegisterGlobalFunction(L"messageBox", [](CallContext&, CallArgs& args) {
        ShowBox(args, L"messageBox", MB_OK | MB_ICONWARNING);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"queryBox", [](CallContext&, CallArgs& args) {
        return Value::Bool(ShowBox(args, L"queryBox", MB_YESNO | MB_ICONQUESTION) == IDYES);
    });
    RegisterGlobalFunction(L"yesNoCancelBox", [](CallContext&, CallArgs& args) {
        const int answer = ShowBox(args, L"yesNoCancelBox", MB_YESNOCANCEL | MB_ICONQUESTION);
        return Value::Name(answer == IDYES ? L"yes" : answer == IDNO ? L"no" : L"cancel");
    });
    auto dialogs = std::make_shared<NamespaceObject>(L"hostDialogs");
    dialogs->Function(L"pushAnswer", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"hostDialogs.pushAnswer", args, 1);
        DialogService::Instance().PushAnswer(AnswerOf(args.positional[0]));
        return Value::Ok();
    });
    dialogs->Function(L"clearAnswers", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"hostDialogs.clearAnswers", args, 0);
        DialogService::Instance().ClearAnswers();
        return Value::Ok();
    });
    // pushFileAnswer "path" (or an array of paths): what the next file picker is answered with; undefined or
    // "" cancels it.
    dialogs->Function(L"pushFileAnswer", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"hostDialogs.pushFileAnswer", args, 1);
        const Value& v = args.positional[0];
        std::vector<std::wstring> files;
        if (v.Is(Kind::Array)) {
            for (const Value& item : v.Items()) files.push_back(ToText(item));
        } else if (!v.IsUndefined() && !ToText(v).empty()) {
            files.push_back(ToText(v));
        }
        FileDialogService::Instance().PushAnswer(std::move(files));
        return Value::Ok();
    });
    dialogs->Property(L"pendingAnswers", [] { return Value::Int(int(DialogService::Instance().PendingAnswers())); });
    // Every box so far, shown or suppressed: its text, newest last.
    dialogs->Property(L"messages", [] {
        ArrayData texts;
        for (const MessageBoxRecord& r : DialogService::Instance().MessageBoxes())
            texts.push_back(Value::String(r.request.text));
        return Value::Array(std::move(texts));
    });
    RegisterNamespace(dialogs);
}

void RegisterRedraws() {
    auto redraw = [](const wchar_t* name) {
        RegisterGlobalFunction(name, [name = std::wstring(name)](CallContext&, CallArgs& args) {
            CheckArgCount(name, args, 0);
            Interface* ip = GetCOREInterface();
            ip->RedrawViews(ip->GetTime());
            return Value::Ok();
        });
    };
    redraw(L"redrawViews");
    redraw(L"completeRedraw");
    RegisterGlobalFunction(L"disableSceneRedraw", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"disableSceneRedraw", args, 0);
        GetCOREInterface()->DisableSceneRedraw();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"enableSceneRedraw", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"enableSceneRedraw", args, 0);
        GetCOREInterface()->EnableSceneRedraw();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"isSceneRedrawDisabled", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"isSceneRedrawDisabled", args, 0);
        return Value::Bool(GetCOREInterface()->IsSceneRedrawDisabled() != 0);
    });
}

// Values are freed when the last script variable lets go of them, so there is never garbage to collect; the
// heap is what the scripts asked for (it does not limit them).
void RegisterMemory() {
    static int heapSize = 64 * 1024 * 1024;
    RegisterGlobalFunction(L"gc", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"gc", args, 0);
        return Value::Ok();
    });
    RegisterSystemVariable(L"heapSize", {[] { return Value::Int(heapSize); },
                                         [](const Value& v) {
                                             const int size = ToInt(v);
                                             if (size <= 0) throw RuntimeError(L"heapSize must be positive, got: " +
                                                                               PrintForm(v));
                                             heapSize = size;
                                         }});
    RegisterSystemVariable(L"heapFree", {[] { return Value::Int(heapSize); }, nullptr});
}

void RegisterSession() {
    // quitMax [#noPrompt] [exitCode:n]: the running script stops here and the application ends. Headless
    // there is nobody to ask about unsaved changes, so #noPrompt or not, nothing is asked.
    RegisterGlobalFunction(L"quitMax", [](CallContext&, CallArgs& args) -> Value {
        CheckArgCount(L"quitMax", args, 0, 1);
        const Value* code = args.Keyword(L"exitCode");
        const int exitCode = code && !code->Is(Kind::Unsupplied) ? ToInt(*code) : 0;
        Session::Instance().RequestQuit(exitCode);
        throw QuitSignal{exitCode};
    });
    RegisterGlobalFunction(L"clearListener", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"clearListener", args, 0);
        Listener::Instance().Clear();
        return Value::Ok();
    });
}

std::wstring ComputerName() {
    char name[HOST_NAME_MAX + 1] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return L"";
    return MaxSDK::FromUTF8(name);
}

std::wstring UserName() {
    if (const passwd* pw = ::getpwuid(::geteuid()); pw && pw->pw_name) return MaxSDK::FromUTF8(pw->pw_name);
    const char* user = std::getenv("USER");
    return user ? MaxSDK::FromUTF8(user) : L"";
}

void RegisterSysInfo() {
    auto info = std::make_shared<NamespaceObject>(L"sysInfo");
    info->Property(L"computerName", [] { return Value::String(ComputerName()); });
    info->Property(L"userName", [] { return Value::String(UserName()); });
    info->Property(L"tempDir", [] { return Value::String(GetCOREInterface()->GetDir(APP_TEMP_DIR)); });
    info->Property(L"currentDir", [] {
        std::error_code ec;
        return Value::String(hostrt::FromNativePath(std::filesystem::current_path(ec)));
    });
    info->Property(L"cpuCount", [] { return Value::Int(int(std::max(1u, std::thread::hardware_concurrency()))); });
    RegisterNamespace(info);
}

// .NET and Python are not part of this host: scripts that reach for them learn so at once.
void RegisterMissingRuntimes() {
    auto missing = [](const std::wstring& what, const std::wstring& runtime) {
        return [what, runtime](CallContext&, CallArgs&) -> Value {
            throw RuntimeError(what + L" is not available in this host: it has no " + runtime + L" runtime");
        };
    };
    for (const wchar_t* name : {L"dotNetClass", L"dotNetObject", L"dotNetControl"})
        RegisterGlobalFunction(name, missing(name, L".NET"));
    auto dotNet = std::make_shared<NamespaceObject>(L"dotNet");
    for (const wchar_t* name : {L"addEventHandler", L"loadAssembly", L"combineEnums", L"getType"})
        dotNet->Function(name, missing(std::wstring(L"dotNet.") + name, L".NET"));
    RegisterNamespace(dotNet);
    auto python = std::make_shared<NamespaceObject>(L"python");
    for (const wchar_t* name : {L"execute", L"executeFile", L"import"})
        python->Function(name, missing(std::wstring(L"python.") + name, L"Python"));
    RegisterNamespace(python);
}

}  // namespace

void RegisterEnvironmentBuiltins() {
    RegisterMessageBoxes();
    RegisterRedraws();
    RegisterMemory();
    RegisterSession();
    RegisterSysInfo();
    RegisterMissingRuntimes();
}

}  // namespace hostrt::mxs
