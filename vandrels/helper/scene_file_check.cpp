#include "helper/scene_file_check.h"

#include "maxscript/maxscript.h"
#include "maxscript/string_literal.h"

#include <string>

namespace vandrels {

namespace {

// The reason of a caught script error: "-- Runtime error: <reason>" gives "<reason>".
MSTR ReasonOf(std::wstring text) {
    if (text.rfind(L"-- ", 0) == 0) text.erase(0, 3);
    const std::size_t label = text.find(L"error: ");
    if (label != std::wstring::npos && label < 40) text.erase(0, label + 7);
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r')) text.pop_back();
    return MSTR(text.c_str());
}

}  // namespace

MSTR SceneFileReadProblem(const MSTR& path) {
    const std::wstring text = L"try (getMaxFileVersionData " + MaxScriptStringLiteral(path.data()) +
                              L" quiet:false; \"\") catch (getCurrentException())";
    FPValue result;
    if (!ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &result, FALSE))
        return path + L": the host could not check the file";
    if (result.type == TYPE_STRING && result.s && *result.s) return ReasonOf(result.s);
    return MSTR();
}

}  // namespace vandrels
