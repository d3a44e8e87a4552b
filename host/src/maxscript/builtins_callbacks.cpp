// `callbacks`: scripts that run when the host broadcasts a notification (callbacks.addScript #filePostOpen
// "..." id:#myTool), removed by event or id (callbacks.removeScripts id:#myTool), listed by callbacks.show.
// They live as long as the application runs: they are never saved with a scene nor run from a scene file
// (persistent: is accepted and changes nothing). A failing callback script reports its error in the listener
// and the host goes on.
#include "maxscript/builtins.h"

#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"
#include "maxscript/quit.h"
#include "maxscript/registry.h"
#include "notify.h"
#include "object.h"
#include "platform/session.h"

#include <list>
#include <memory>

namespace hostrt::mxs {

namespace {

// The events scripts can name, with the notification each one stands for.
struct EventName {
    const wchar_t* name;
    int code;
};

constexpr EventName kEvents[] = {
    {L"systemPreReset", NOTIFY_SYSTEM_PRE_RESET},
    {L"systemPostReset", NOTIFY_SYSTEM_POST_RESET},
    {L"systemPreNew", NOTIFY_SYSTEM_PRE_NEW},
    {L"systemPostNew", NOTIFY_SYSTEM_POST_NEW},
    {L"preSystemShutdown", NOTIFY_SYSTEM_SHUTDOWN},
    {L"filePreOpen", NOTIFY_FILE_PRE_OPEN},
    {L"filePostOpen", NOTIFY_FILE_POST_OPEN},
    {L"filePreSave", NOTIFY_FILE_PRE_SAVE},
    {L"filePostSave", NOTIFY_FILE_POST_SAVE},
    {L"filePostMerge", NOTIFY_FILE_POST_MERGE3},
    {L"preRender", NOTIFY_PRE_RENDER},
    {L"postRender", NOTIFY_POST_RENDER},
    {L"nodeCreated", NOTIFY_NODE_CREATED},
    {L"sceneNodeAdded", NOTIFY_SCENE_ADDED_NODE},
    {L"nodePreDelete", NOTIFY_SCENE_PRE_DELETED_NODE},
    {L"nodePostDelete", NOTIFY_SCENE_POST_DELETED_NODE},
    {L"nodeRenamed", NOTIFY_NODE_RENAMED},
    {L"nodeLinked", NOTIFY_NODE_LINKED},
    {L"nodeLayerChanged", NOTIFY_NODE_LAYER_CHANGED},
    {L"layerDeleted", NOTIFY_LAYER_DELETED},
    {L"preModifierAdded", NOTIFY_PRE_MODIFIER_ADDED},
    {L"postModifierAdded", NOTIFY_POST_MODIFIER_ADDED},
    {L"preModifierDeleted", NOTIFY_PRE_MODIFIER_DELETED},
    {L"postModifierDeleted", NOTIFY_POST_MODIFIER_DELETED},
};

const EventName* FindEvent(const std::wstring& name) {
    for (const EventName& e : kEvents)
        if (EqualsNoCase(e.name, name)) return &e;
    return nullptr;
}

// One registered script. Entries are kept in a list so that their addresses (the notification's parameter)
// stay put.
struct CallbackScript {
    const EventName* event;
    std::wstring id;  // empty: no id
    Value script;     // a string or a function of no arguments
};

std::list<CallbackScript>& Scripts() {
    static std::list<CallbackScript> scripts;
    return scripts;
}

// What callbacks.notificationParam() answers while a callback script runs.
Value& CurrentParam() {
    static Value param;
    return param;
}

Value ParamOf(int code, void* callParam) {
    if (!callParam) return Value::Undefined();
    switch (code) {
    case NOTIFY_NODE_CREATED:
    case NOTIFY_SCENE_ADDED_NODE:
    case NOTIFY_SCENE_PRE_DELETED_NODE:
    case NOTIFY_NODE_LINKED: {
        const NodeConverters& nc = GetNodeConverters();
        return nc.toAnimatable ? Value::Host(nc.toAnimatable(static_cast<INode*>(callParam))) : Value::Undefined();
    }
    case NOTIFY_NODE_RENAMED: {
        const auto* change = static_cast<NameChange*>(callParam);
        return Value::Array({Value::String(change->oldName ? change->oldName : L""),
                             Value::String(change->newName ? change->newName : L"")});
    }
    case NOTIFY_FILE_PRE_SAVE:
    case NOTIFY_FILE_POST_SAVE: return Value::String(static_cast<const MCHAR*>(callParam));
    default: return Value::Undefined();
    }
}

void RunCallback(void* param, NotifyInfo* info) {
    auto* entry = static_cast<CallbackScript*>(param);
    // The script may remove its own entry: what is needed of it is copied first.
    const Value script = entry->script;
    const std::wstring eventName = entry->event->name;
    Value saved = CurrentParam();
    CurrentParam() = ParamOf(info ? info->intcode : 0, info ? info->callParam : nullptr);
    Interpreter& interp = Interpreter::Current();
    try {
        if (script.Is(Kind::Function)) {
            CallArgs none;
            interp.Call(script, none);
        } else {
            interp.Execute(script.Text(), L"callback script #" + eventName);
        }
    } catch (const ScriptError& e) {
        ListenerWrite(L"-- Error in the callback script for #" + eventName + L"\n" + e.Report());
    } catch (const QuitSignal&) {
        // The quit is noted in the session; the script that caused the notification ends the run.
    }
    CurrentParam() = saved;
}

std::wstring IdArg(const CallArgs& args) {
    const Value* id = args.Keyword(L"id");
    if (!id || id->Is(Kind::Unsupplied) || id->IsUndefined()) return L"";
    if (!id->Is(Kind::Name)) throw TypeError(L"callbacks id: wants a name, got: " + PrintForm(*id));
    return id->Text();
}

const EventName& EventArg(const Value& v) {
    if (!v.Is(Kind::Name)) throw TypeError(L"callbacks wants an event name such as #filePostOpen, got: " + PrintForm(v));
    const EventName* event = FindEvent(v.Text());
    if (!event) throw RuntimeError(L"Unknown callback event: " + PrintForm(v));
    return *event;
}

Value AddScript(CallContext&, CallArgs& args) {
    CheckArgCount(L"callbacks.addScript", args, 2);
    const EventName& event = EventArg(args.positional[0]);
    const Value& script = args.positional[1];
    if (!script.Is(Kind::String) && !script.Is(Kind::Function))
        throw TypeError(L"callbacks.addScript wants a script text or a function, got: " + PrintForm(script));
    CallbackScript& entry = Scripts().emplace_back(CallbackScript{&event, IdArg(args), script});
    RegisterNotification(RunCallback, &entry, event.code);
    return Value::Ok();
}

// callbacks.removeScripts [#event] [id:#name]: the scripts of that event and id; with neither, all of them.
Value RemoveScripts(CallContext&, CallArgs& args) {
    CheckArgCount(L"callbacks.removeScripts", args, 0, 1);
    const EventName* event = args.positional.empty() ? nullptr : &EventArg(args.positional[0]);
    const std::wstring id = IdArg(args);
    auto& scripts = Scripts();
    for (auto it = scripts.begin(); it != scripts.end();) {
        const bool match = (!event || it->event == event) && (id.empty() || EqualsNoCase(it->id, id));
        if (!match) {
            ++it;
            continue;
        }
        UnRegisterNotification(RunCallback, &*it, it->event->code);  // a broadcast running now skips it
        it = scripts.erase(it);
    }
    return Value::Ok();
}

// callbacks.show(): one line per script in the listener: event, id and the script.
Value Show(CallContext&, CallArgs& args) {
    CheckArgCount(L"callbacks.show", args, 0);
    for (const CallbackScript& s : Scripts())
        ListenerWrite(L"#" + std::wstring(s.event->name) + L": " + PrintForm(s.script) +
                      (s.id.empty() ? L"" : L"; id:#" + s.id) + L"\n");
    return Value::Ok();
}

}  // namespace

void RegisterCallbackBuiltins() {
    auto callbacks = std::make_shared<NamespaceObject>(L"callbacks");
    callbacks->Function(L"addScript", AddScript);
    callbacks->Function(L"removeScripts", RemoveScripts);
    callbacks->Function(L"show", Show);
    callbacks->Function(L"notificationParam", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"callbacks.notificationParam", args, 0);
        return CurrentParam();
    });
    RegisterNamespace(callbacks);
}

}  // namespace hostrt::mxs
