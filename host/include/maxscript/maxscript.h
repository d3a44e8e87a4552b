// MAXScript for plug-ins: running a script text (ExecuteMAXScriptScript) and adding primitives, the global
// functions a plug-in defines (def_visible_primitive), with the values and errors they use.
#pragma once

#include "ifnpub.h"
#include "strclass.h"

#include <exception>
#include <string>

namespace MAXScript {
// Where a script text comes from. The host runs every source alike.
enum class ScriptSource : int { Dynamic = 0, NonEmbedded = 1, Embedded = 2, NotSpecified = 3 };
}  // namespace MAXScript

// Runs a script text with the host's interpreter (its globals stay for later texts) and answers TRUE when it
// ran without error. The value of the last expression goes into *fpv when given: strings as TYPE_STRING,
// integers as TYPE_INT, floats as TYPE_FLOAT, booleans as TYPE_BOOL, undefined and ok as TYPE_VOID, nodes and
// objects, points, bit arrays and arrays as their types, anything else as TYPE_VALUE. On an error *fpv is
// TYPE_VOID. With quietErrors the error is swallowed (and kept in the host's quiet-error log when
// logQuietErrors is set); without it the error is shown: printed to the listener and put up in a message box.
BOOL ExecuteMAXScriptScript(const MCHAR* s, MAXScript::ScriptSource scriptSource = MAXScript::ScriptSource::NotSpecified,
                            BOOL quietErrors = FALSE, FPValue* fpv = nullptr, BOOL logQuietErrors = TRUE);

// A MAXScript value as a primitive receives it in its argument list and answers it.
class Value {
public:
    Value();
    Value(const Value& other);
    Value& operator=(const Value& other);
    virtual ~Value();

    // Conversions; each throws the script's conversion error when the value is not of that kind.
    int to_int() const;
    float to_float() const;
    BOOL to_bool() const;
    // Strings and names; the text lives as long as the value.
    const MCHAR* to_string() const;
    // The value as a function-publishing value (as ExecuteMAXScriptScript answers it).
    FPValue to_fpvalue() const;
    bool is_undefined() const;
    // The value as print shows it.
    MSTR to_print_string() const;

    struct Impl;
    Impl* impl() const { return impl_; }

private:
    Impl* impl_;
};

// The values a primitive answers: `return &ok;`.
extern Value ok;
extern Value undefined;
extern Value true_value;
extern Value false_value;

// An error a primitive raises; the script sees it as its MAXScript error (or catches it with try).
class MAXScriptException : public std::exception {
public:
    explicit MAXScriptException(const MSTR& text);
    // The error line as the listener shows it, without the leading "-- ".
    const MSTR& Text() const { return text_; }
    const char* what() const noexcept override { return narrow_.c_str(); }

private:
    MSTR text_;
    std::string narrow_;
};
// "Argument count error: <fn> wanted <wanted>, got <got>"
class ArgCountError : public MAXScriptException {
public:
    ArgCountError(const MCHAR* fn, int wanted, int got);
};
// "Runtime error: <message>"
class RuntimeError : public MAXScriptException {
public:
    explicit RuntimeError(const MCHAR* message);
};
// "Type error: <message>"
class TypeError : public MAXScriptException {
public:
    explicit TypeError(const MCHAR* message);
};

// A primitive: arguments in order (each keyword argument as its name, then its value), answering a value
// that lives beyond the call (&ok, &undefined, a static Value...).
using MAXScriptPrimitive = Value* (*)(Value** arg_list, int count);
// Adds a global function (case-insensitive name); a later registration of the name replaces the earlier.
void RegisterMAXScriptPrimitive(const MCHAR* name, MAXScriptPrimitive fn);
void UnregisterMAXScriptPrimitive(const MCHAR* name);

// Registers a primitive while its library is loaded and removes it when the library goes.
class MAXScriptPrimitiveRegistration {
public:
    MAXScriptPrimitiveRegistration(const MCHAR* name, MAXScriptPrimitive fn);
    ~MAXScriptPrimitiveRegistration();
    MAXScriptPrimitiveRegistration(const MAXScriptPrimitiveRegistration&) = delete;
    MAXScriptPrimitiveRegistration& operator=(const MAXScriptPrimitiveRegistration&) = delete;

private:
    MSTR name_;
};

// def_visible_primitive(OpenVandrelsManager, "OpenVandrelsManager");
// Value* OpenVandrelsManager_cf(Value** arg_list, int count) { check_arg_count(OpenVandrelsManager, 0, count); ... return &ok; }
#define def_visible_primitive(fn, name)            \
    Value* fn##_cf(Value** arg_list, int count);   \
    static MAXScriptPrimitiveRegistration fn##_primitive_registration(_M(name), fn##_cf)
#define check_arg_count(fn, wanted, got)                                        \
    do {                                                                        \
        if ((wanted) != (got)) throw ArgCountError(_M(#fn), (wanted), (got)); \
    } while (0)
