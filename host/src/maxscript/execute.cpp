// ExecuteMAXScriptScript, the plug-in primitives and the public Value and error classes of
// maxscript/maxscript.h.
#include "maxscript/maxscript.h"

#include "maxscript/convert.h"
#include "maxscript/execute.h"
#include "maxscript/fp_bridge.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "platform/dialog_service.h"
#include "platform/listener_capture.h"
#include "winshim.h"

#include <mutex>

struct Value::Impl {
    hostrt::mxs::Value value;
    mutable std::wstring text;  // what to_string answered last
};

namespace hostrt::mxs {

namespace {

struct ErrorRecords {
    std::mutex mutex;
    std::vector<std::wstring> shown;
    std::vector<std::wstring> quiet;
};

ErrorRecords& Records() {
    static ErrorRecords records;
    return records;
}

}  // namespace

::Value Public(const Value& v) {
    ::Value out;
    out.impl()->value = v;
    return out;
}

namespace {

Value Internal(const ::Value* v) { return v ? v->impl()->value : Value::Undefined(); }

ScriptError FromPublic(const ::MAXScriptException& e) {
    const std::wstring text = e.Text().str();
    if (text.rfind(L"Argument count error: ", 0) == 0) return ScriptError(ErrorKind::ArgCount, text);
    if (text.rfind(L"Type error: ", 0) == 0) return ScriptError(ErrorKind::Type, text);
    if (text.rfind(L"Runtime error: ", 0) == 0) return ScriptError(ErrorKind::Runtime, text);
    return RuntimeError(text);
}

}  // namespace

NativeFn PrimitiveFunction(MAXScriptPrimitive fn) {
    return [fn](CallContext&, CallArgs& args) -> Value {
        std::vector<::Value> values;
        for (const Value& v : args.positional) values.push_back(Public(v));
        for (const auto& [name, v] : args.keywords) {
            values.push_back(Public(Value::Name(name)));
            values.push_back(Public(v));
        }
        std::vector<::Value*> pointers;
        for (::Value& v : values) pointers.push_back(&v);
        try {
            return Internal(fn(pointers.data(), int(pointers.size())));
        } catch (const ::MAXScriptException& e) {
            throw FromPublic(e);
        }
    };
}

void RecordError(const std::wstring& report, bool quiet, bool logQuiet) {
    std::lock_guard lock(Records().mutex);
    if (quiet) {
        if (logQuiet) Records().quiet.push_back(report);
        return;
    }
    Records().shown.push_back(report);
}

std::vector<std::wstring> ShownErrors() {
    std::lock_guard lock(Records().mutex);
    return Records().shown;
}

std::vector<std::wstring> QuietErrorLog() {
    std::lock_guard lock(Records().mutex);
    return Records().quiet;
}

void ClearErrorRecords() {
    std::lock_guard lock(Records().mutex);
    Records().shown.clear();
    Records().quiet.clear();
}

void ResultToFPValue(const Value& v, FPValue& out) {
    try {
        out = ToFPValue(v);
    } catch (const ScriptError&) {
        // Functions, classes, mixed arrays...: a script value C++ cannot hold.
        out = FPValue();
        out.type = TYPE_VALUE;
        out.ptr = nullptr;
    }
}

}  // namespace hostrt::mxs

namespace mxs = hostrt::mxs;

BOOL ExecuteMAXScriptScript(const MCHAR* s, MAXScript::ScriptSource, BOOL quietErrors, FPValue* fpv,
                            BOOL logQuietErrors) {
    if (fpv) *fpv = FPValue();
    std::wstring report;
    try {
        const mxs::Value result = mxs::Interpreter::Current().Execute(s ? s : L"");
        if (fpv) mxs::ResultToFPValue(result, *fpv);
        return TRUE;
    } catch (const mxs::ScriptError& e) {
        report = e.Report();
    } catch (const MAXException& e) {
        report = mxs::FromHostException(e).Report();
    } catch (const std::exception& e) {
        report = mxs::RuntimeError(MaxSDK::FromUTF8(e.what())).Report();
    }
    mxs::RecordError(report, quietErrors != FALSE, logQuietErrors != FALSE);
    if (quietErrors) return FALSE;
    hostrt::Listener::Instance().Write(report);
    hostrt::MessageBoxRequest box;
    box.text = report;
    box.title = L"MAXScript";
    box.type = MB_OK | MB_ICONERROR;
    hostrt::DialogService::Instance().ShowMessageBox(box);
    return FALSE;
}

// ---- Public values.

Value ok = mxs::Public(mxs::Value::Ok());
Value undefined;
Value true_value = mxs::Public(mxs::Value::Bool(true));
Value false_value = mxs::Public(mxs::Value::Bool(false));

Value::Value() : impl_(new Impl) {}
Value::Value(const Value& other) : impl_(new Impl(*other.impl_)) {}
Value& Value::operator=(const Value& other) {
    if (this != &other) *impl_ = *other.impl_;
    return *this;
}
Value::~Value() { delete impl_; }

int Value::to_int() const { return mxs::ToInt(impl_->value); }
float Value::to_float() const { return mxs::ToFloat(impl_->value); }
BOOL Value::to_bool() const { return mxs::ToBool(impl_->value) ? TRUE : FALSE; }
const MCHAR* Value::to_string() const {
    impl_->text = mxs::ToText(impl_->value);
    return impl_->text.c_str();
}
FPValue Value::to_fpvalue() const {
    FPValue out;
    mxs::ResultToFPValue(impl_->value, out);
    return out;
}
bool Value::is_undefined() const { return impl_->value.IsUndefined(); }
MSTR Value::to_print_string() const { return MSTR(mxs::PrintForm(impl_->value)); }

// ---- Errors.

MAXScriptException::MAXScriptException(const MSTR& text) : text_(text), narrow_(text.ToUTF8()) {}

ArgCountError::ArgCountError(const MCHAR* fn, int wanted, int got)
    : MAXScriptException(MSTR(L"Argument count error: ") + (fn ? fn : L"") + L" wanted " +
                         MSTR(std::to_wstring(wanted)) + L", got " + MSTR(std::to_wstring(got))) {}

RuntimeError::RuntimeError(const MCHAR* message) : MAXScriptException(MSTR(L"Runtime error: ") + message) {}

TypeError::TypeError(const MCHAR* message) : MAXScriptException(MSTR(L"Type error: ") + message) {}

// ---- Primitives.

void RegisterMAXScriptPrimitive(const MCHAR* name, MAXScriptPrimitive fn) {
    if (!name || !fn) return;
    mxs::RegisterGlobalFunction(name, mxs::PrimitiveFunction(fn));
}

void UnregisterMAXScriptPrimitive(const MCHAR* name) {
    if (name) mxs::UnregisterGlobalFunction(name);
}

MAXScriptPrimitiveRegistration::MAXScriptPrimitiveRegistration(const MCHAR* name, MAXScriptPrimitive fn)
    : name_(name) {
    RegisterMAXScriptPrimitive(name, fn);
}

MAXScriptPrimitiveRegistration::~MAXScriptPrimitiveRegistration() { UnregisterMAXScriptPrimitive(name_.data()); }
