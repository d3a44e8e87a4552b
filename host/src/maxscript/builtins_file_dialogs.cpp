// The file pickers of MAXScript: getOpenFileName, getSaveFileName and getSavePath. A headless host answers
// them from the file dialog service, with the picks a script queued (`hostDialogs.pushFileAnswer`) in the
// order queued; with none queued the dialog counts as cancelled and the function answers undefined.
#include "maxscript/builtins.h"

#include "commdlg.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "platform/file_dialog_service.h"

namespace hostrt::mxs {

namespace {

std::wstring TextKeyword(const CallArgs& args, const wchar_t* name) {
    const Value* v = args.Keyword(name);
    return v && !v->Is(Kind::Unsupplied) && !v->IsUndefined() ? ToText(*v) : std::wstring();
}

// `types:"Scenes (*.max)|*.max|All (*.*)|*.*"`: description and pattern pairs.
std::vector<std::pair<std::wstring, std::wstring>> Filters(const std::wstring& types, const wchar_t* fn) {
    std::vector<std::wstring> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= types.size(); ++i)
        if (i == types.size() || types[i] == L'|') {
            parts.push_back(types.substr(start, i - start));
            start = i + 1;
        }
    while (!parts.empty() && parts.back().empty()) parts.pop_back();
    if (parts.size() % 2 != 0)
        throw RuntimeError(std::wstring(fn) + L": types: needs description|pattern pairs, got: \"" + types + L"\"");
    std::vector<std::pair<std::wstring, std::wstring>> out;
    for (std::size_t i = 0; i < parts.size(); i += 2) out.emplace_back(parts[i], parts[i + 1]);
    return out;
}

Value Pick(CallArgs& args, const wchar_t* fn, DWORD flags, const wchar_t* defaultCaption) {
    CheckArgCount(fn, args, 0);
    FileDialogRequest request;
    request.title = TextKeyword(args, L"caption");
    if (request.title.empty()) request.title = defaultCaption;
    request.initialDir = TextKeyword(args, L"initialDir");
    // filename: may name a folder (ending in a separator) or a file whose folder the dialog starts in.
    if (request.initialDir.empty()) request.initialDir = TextKeyword(args, L"filename");
    request.filters = Filters(TextKeyword(args, L"types"), fn);
    request.flags = flags;
    auto picked = FileDialogService::Instance().Run(request);
    if (!picked || picked->empty()) return Value::Undefined();
    return Value::String(picked->front());
}

}  // namespace

void RegisterFileDialogBuiltins() {
    RegisterGlobalFunction(L"getOpenFileName", [](CallContext&, CallArgs& args) {
        return Pick(args, L"getOpenFileName", OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST, L"Open");
    });
    RegisterGlobalFunction(L"getSaveFileName", [](CallContext&, CallArgs& args) {
        return Pick(args, L"getSaveFileName", OFN_PATHMUSTEXIST, L"Save As");
    });
    RegisterGlobalFunction(L"getSavePath", [](CallContext&, CallArgs& args) {
        return Pick(args, L"getSavePath", OFN_PATHMUSTEXIST, L"Choose Directory");
    });
}

}  // namespace hostrt::mxs
