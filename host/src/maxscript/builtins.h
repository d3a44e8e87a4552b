// The built-in functions and classes of MAXScript that need no scene, registered by theme, and the small
// helpers the built-ins share.
#pragma once

#include "maxscript/registry.h"
#include "maxscript/value.h"

#include <string>
#include <utility>
#include <vector>

namespace hostrt::mxs {

// Registers every built-in (once; later calls do nothing).
void RegisterBuiltins();

void RegisterCoreBuiltins();    // print, format, classOf, superClassOf, isKindOf, throw, execute, copy, classes
void RegisterStringBuiltins();  // findString, substring, filterString, toUpper, toLower, matchPattern...
void RegisterArrayBuiltins();   // append, deleteItem, findItem, join, sort, insertItem
void RegisterMathBuiltins();    // abs, amax, amin, random, seed, timeStamp...
void RegisterFileBuiltins();    // INI settings, file names, getDir
void RegisterFileOperationBuiltins();  // getFiles, getDirectories, deleteFile, renameFile, copyFile, makeDir...
void RegisterAssertBuiltins();  // assert_true, assert_equal...
void RegisterFileStreamBuiltins();   // openFile, createFile, readLine, eof, close, fileIn
void RegisterEnvironmentBuiltins();  // message boxes, redraws, gc, heapSize, quitMax, clearListener, sysInfo
void RegisterCallbackBuiltins();     // callbacks.addScript, callbacks.removeScripts
void RegisterDiscoveryBuiltins();    // showInterface, showProperties, getPropNames, apropos, plug-in objects' names
void RegisterVectorBuiltins();  // pow, dot, cross, normalize, length, matrices, angleAxis, inverse, colours
void RegisterDictionaryBuiltins();  // Dictionary, DataPair and the dictionary functions
void RegisterBitBuiltins();     // bit.and, bit.or, bit.shift ...
void RegisterNameBuiltins();    // uniqueName
void RegisterBinaryStreamBuiltins();  // fopen, fclose, readByte/writeByte and the other binary reads and writes
void RegisterFileDialogBuiltins();    // getOpenFileName, getSaveFileName, getSavePath, hostDialogs.pushFileAnswer

// A global that groups functions under one name (`bit.and`, `macros.run`, `custAttributes.add`): reading
// it answers an object whose properties are the functions.
void RegisterFunctionSet(const std::wstring& name, std::vector<std::pair<std::wstring, NativeFn>> functions);

// The class value of v and the name of a class's superclass chain membership.
Value ClassOf(const Value& v);
Value SuperClassOf(const Value& classOrValue);
bool IsKindOf(const Value& v, const Value& cls);
// The class of a registered class descriptor of this name (the host's and the plug-ins' classes), made a
// script class on first use; nullopt when no descriptor has that name.
std::optional<Value> FindDescriptorClass(const std::wstring& name);

// Writes text to the listener as it is.
void ListenerWrite(const std::wstring& text);

// Whether text matches a pattern with '*' (any run) and '?' (any one character).
bool WildcardMatch(std::wstring_view text, std::wstring_view pattern, bool ignoreCase = true);

}  // namespace hostrt::mxs
